// SPDX-License-Identifier: MIT
/// The times of a cube's dimensions as intervals of a geography.
#pragma once
#include <QStringList>
#include <QVector>
#include "core/formats/cubeReader.h"
#include "core/import/importOptions.h"
#include "core/project/times.h"

namespace meridor {

struct GridTimes {
    TimeFormat format = TF_Integer;
    Interval hull{0, 0, true, true};
    QVector<QVector<Interval>> of; ///< by CubeReader::times(), then by place
};

/// A place with bounds holds from the one to the other; one without them for its day if all are
/// days, else at its moment. If `options.end` is "next" it ends at the start of the next one.
/// @param notes  receives messages for the user.
/// Raises a Failure for two places that hold at one time, for a time that is none, and for
/// dimensions with times of different kinds.
GridTimes cubeTimes(const CubeReader &reader, const ImportOptions &options, QStringList &notes);

} // namespace meridor
