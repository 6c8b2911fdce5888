// SPDX-License-Identifier: MIT
/// Files of neighbour lists and weights.
///
/// GAL: a heading; then for each object a line with its id and its number of neighbours, and a line
/// with their ids. GWT, KWT: a heading; then a line "from to weight" for each link. The weight in
/// GWT is most often a distance, in KWT the weight of a kernel. CSV: the columns from, to and
/// weight; a line for each link. A line without `to` is an object without neighbours.
///
/// The heading of GAL, GWT and KWT is "0 COUNT NAME KEY", or the count alone.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include "core/export.h"

class QIODevice;

namespace meridor {

enum class WeightsFormat { Gal, Gwt, Kwt, Csv };

/// The format by the suffix of the file name; raises a Failure of kind Misused for any other
/// suffix.
MERIDOR_EXPORT WeightsFormat weightsFormatOf(const QString &path);

/// The content of a file, objects in its order. Ids are texts; they are never positions of objects.
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
    QString key;  ///< the name of the field of ids in the map
    QVector<Ego> egos;
};

/// Raises a Failure that names the line if the number of objects or neighbours differs from the
/// stated count, if a weight is no number or exceeds 32 bits, or if an object or a link occurs
/// twice.
MERIDOR_EXPORT WeightsFile readWeights(const QString &path);
/// Reads from an open device. @param name  the name of the device in messages.
MERIDOR_EXPORT WeightsFile readWeights(QIODevice &device, WeightsFormat format,
                                       const QString &name);

/// Writes a file, in the format of its suffix. Raises a Failure for a write error, and for an id
/// with blanks in a format other than CSV.
MERIDOR_EXPORT void writeWeights(const QString &path, const WeightsFile &weights);

} // namespace meridor
