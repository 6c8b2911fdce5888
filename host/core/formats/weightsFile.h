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

/// "gal", "gwt", "kwt", "csv".
MERIDOR_EXPORT QStringList weightsFormatNames();
/// The format of a name, else by the suffix of the file; CSV for a device or pipe without a suffix.
/// Raises a Failure of kind Misused for any other.
MERIDOR_EXPORT WeightsFormat weightsFormatOf(const QString &path,
                                             const QString &format = QString());

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
/// stated count, if a weight is no number or exceeds 32 bits, if an object or a link occurs twice, or
/// if the text is not UTF-8. Asks for a cancel as it reads.
/// @param format  as in weightsFormatOf.
MERIDOR_EXPORT WeightsFile readWeights(const QString &path, const QString &format = QString());
/// Reads from an open device. @param name  the name of the device in messages.
MERIDOR_EXPORT WeightsFile readWeights(QIODevice &device, WeightsFormat format,
                                       const QString &name);

/// Replaces a file atomically, or writes to a device or pipe. Raises a Failure for a write error, for
/// an empty id, and for an id with blanks or line breaks in a format other than CSV.
MERIDOR_EXPORT void writeWeights(const QString &path, const WeightsFile &weights,
                                 const QString &format = QString());

} // namespace meridor
