// SPDX-License-Identifier: MIT
/// What graphs of one dataset over all its times have in common.
#pragma once
#include <QVector>
#include <functional>
#include "desk/views/graphView.h"
#include "desk/views/valueHistory.h"

namespace meridor {

/// The values are read once: another time only marks another step. Those of a static dataset are read
/// for each time, since other objects may exist then.
class HistoryView : public GraphView {
    Q_OBJECT
public:
    QVector<int> datasets() const override { return {mDataset}; }
    QString textOf(int object) override;

protected:
    HistoryView(Workspace &workspace, int dataset);

    /// Reads the values of all times with loadHistory(). Raises a Failure if there are none.
    virtual void load() = 0;
    void read() final;
    void valuesChanged() final;
    int objectLimit() const final { return mObjects; }
    GraphScale yScale() const final;

    int dataset() const { return mDataset; }
    /// Whether the history is that of the present values.
    bool isLoaded() const { return mIsLoaded; }
    const ValueHistory &history() const { return mHistory; }
    /// Reads the values and their range. See ValueHistory::load().
    void loadHistory(const std::function<void(int step, const QVector<double> &values)> &visit);
    QVector<int> selectedObjects();
    /// What lies across the canvas of a step, in pixels; reversed: nothing.
    struct Span {
        double left;
        double right;
    };
    /// The objects with a value, at a step that the region meets, whose place in the middle of what
    /// the two have in common lies in the region.
    QVector<unsigned int> objectsWhere(const QPainterPath &region,
                                       const std::function<Span(int step)> &spanOf) const;

private:
    int mDataset;
    bool mIsLoaded = false;
    ValueHistory mHistory;
    double mLow = 0;
    double mHigh = 0;
    int mObjects = 0;
};

} // namespace meridor
