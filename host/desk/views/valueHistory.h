// SPDX-License-Identifier: MIT
/// The numbers of a dataset, by object or cell, at one time and at all times.
#pragma once
#include <QVector>
#include <functional>
#include "core/plot/plots.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

/// NaN for objects without a value and for those that do not exist then. Raises a Failure for texts,
/// for a grid of too many cells, and if the dataset has no values at that time.
QVector<double> numbersAt(ShownDataset shown, qint64 time);

/// The values at all times of a dataset. They are kept if they are few enough, else read when they
/// are asked for.
class ValueHistory {
public:
    /// Raises a Failure as numbersAt(), and on a cancel.
    /// @param now    the time of a static dataset, which has one step.
    /// @param visit  receives the values of each step, in order.
    void load(ShownDataset shown, qint64 now,
              const std::function<void(int step, const QVector<double> &values)> &visit);
    int steps() const { return mTimes.size(); }
    const Interval &when(int step) const { return mTimes[step]; }
    /// The step that contains a time; -1: none.
    int stepAt(qint64 time) const;
    /// Whether values() does not read the library.
    bool isKept() const { return mIsKept; }
    /// See numbersAt(); to be called within Workspace::look() unless isKept().
    QVector<double> values(int step) const;
    /// The value of an object; NaN if it is not kept.
    double value(int step, int object) const;

private:
    ShownDataset mShown = -1;
    bool mIsKept = false;
    QVector<Interval> mTimes;
    QVector<QVector<double>> mValues;
};

} // namespace meridor
