// SPDX-License-Identifier: MIT
/// A table of observations, object by object.
#pragma once
#include "core/import/importPlan.h"

namespace meridor {

struct Observation {
    int row; ///< of the table
    Interval when;
};

/// For each object of the plan its rows that hold a value, in the order of time. Raises a Failure
/// for a row without a time, an end before its start, and two values at one time.
QVector<QVector<Observation>> observationsOf(const ImportPlan &plan, const ObservationSpec &spec);

} // namespace meridor
