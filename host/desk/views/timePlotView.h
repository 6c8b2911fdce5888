// SPDX-License-Identifier: MIT
/// The values of selected objects over time, beside the mean of all.
#pragma once
#include <QVector>
#include "core/plot/plotValues.h"
#include "desk/views/graphView.h"
#include "desk/views/valueHistory.h"

namespace meridor {

/// Each selected object is a line; of more than a few the mean, and the band within one standard
/// deviation of it, are drawn instead. Without a selection the lines of all objects are drawn if they
/// are few. A double click shows the time there in all linked views.
class TimePlotView final : public GraphView {
    Q_OBJECT
public:
    TimePlotView(Workspace &workspace, int dataset);

    QString title() const override;
    QVector<int> datasets() const override { return {mDataset}; }
    QStringList commandLine(const QString &picture) const override;

    int objectAt(const QPoint &pixel) const override;
    QString textOf(int object) override;
    void drawMark(QPainter &painter, int object) override;
    bool openAt(const QPoint &pixel) override;
    /// The objects that have a line.
    const QVector<int> &lines() const { return mLines; }
    /// The names that stand at a few lines.
    const QStringList &names() const { return mNames; }
    /// The place on the canvas of a value.
    QPointF placeOf(int step, double value) const;

protected:
    void read() override;
    void valuesChanged() override;
    void markSelected() override;
    int objectLimit() const override { return mObjects; }
    bool shows(int object) const override;
    QVector<unsigned int> objectsWithin(const QPainterPath &region) override;
    GraphScale xScale() const override;
    GraphScale yScale() const override;

private:
    class Lines;
    struct Summary {
        History mean;
        QVector<double> deviations; ///< beside the points of the mean
    };
    Summary summarize(const unsigned char *flags) const;
    QVector<QPointF> pointsOf(int object) const;

    int mDataset;
    bool mIsLoaded = false;
    ValueHistory mHistory;
    TimeScale mScale;
    QVector<QPointF> mMean; ///< of all objects
    QVector<int> mLines;
    QVector<QVector<QPointF>> mPoints; ///< of mLines
    QStringList mNames;                ///< of mLines; empty for many
    QVector<QPointF> mSelectedMean;
    QVector<double> mDeviations; ///< of mSelectedMean
    bool mHasSelected = false;
    double mLow = 0;
    double mHigh = 0;
    int mObjects = 0;
};

} // namespace meridor
