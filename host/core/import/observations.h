// SPDX-License-Identifier: MIT
/// The rows of a table of observations by object.
#pragma once
#include "core/import/importPlan.h"

namespace meridor {

struct Observation {
    int row; ///< of the table
    Interval when;
};

/// For each object of the plan the rows that have a value, in order of time. Raises a Failure for a
/// row without a time, for an end before its start, and for two values at one time.
QVector<QVector<Observation>> observationsOf(const ImportPlan &plan, const ObservationSpec &spec);

} // namespace meridor
