// SPDX-License-Identifier: MIT
/// Neighbour lists and weights as this field exchanges them.
///
/// GAL: a heading, then for each object its id and its number of neighbours, and on the next line
/// their ids. GWT and KWT: a heading, then a line "from to weight" for each link; in GWT the number
/// is most often a distance, in KWT a kernel's weight. CSV: the columns from, to and weight, a line
/// for each link; one without `to` names an object without neighbours. The heading of the others is
/// "0 COUNT NAME KEY", or the count alone.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include "core/export.h"

class QIODevice;

namespace meridor {

enum class WeightsFormat { Gal, Gwt, Kwt, Csv };

/// By the file's ending; raises a usage Failure for another.
MERIDOR_EXPORT WeightsFormat weightsFormatOf(const QString &path);

/// Objects stand in the order of the file; ids are texts and never positions.
struct WeightsFile {
    struct Link {
        QString to;
        double weight = 1;
    };
    struct Ego {
        QString id;
        QVector<Link> links;
    };
    QString name; ///< of the map
    QString key;  ///< what the ids are called there
    QVector<Ego> egos;
};

/// Raises a Failure that names the line: another count than the heading or an object says, a weight
/// that is no number of 32 bits, an object told twice, the same link told twice.
MERIDOR_EXPORT WeightsFile readWeights(const QString &path);
/// The same from an open device; `name` stands for it in messages.
MERIDOR_EXPORT WeightsFile readWeights(QIODevice &device, WeightsFormat format,
                                       const QString &name);

/// Ids with blanks fit in CSV alone. Raises a Failure for those in another format, and when the
/// disk refuses.
MERIDOR_EXPORT void writeWeights(const QString &path, const WeightsFile &weights);

} // namespace meridor
