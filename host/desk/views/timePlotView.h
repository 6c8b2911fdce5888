// SPDX-License-Identifier: MIT
/// The values of selected objects over time, beside the mean of all.
#pragma once
#include <QVector>
#include "core/plot/plotValues.h"
#include "desk/views/historyView.h"

namespace meridor {

/// Each selected object is a line; of more than a few the mean, and the band within one standard
/// deviation of it, are drawn instead. Without a selection the lines of all objects are drawn if they
/// are few. A double click shows the time there in all linked views.
class TimePlotView final : public HistoryView {
    Q_OBJECT
public:
    TimePlotView(Workspace &workspace, int dataset);

    QString title() const override;
    QStringList commandLine(const QString &picture) const override;

    int objectAt(const QPoint &pixel) const override;
    void drawMark(QPainter &painter, int object) override;
    bool openAt(const QPoint &pixel) override;
    /// The objects that have a line.
    const QVector<int> &lines() const { return mLines; }
    /// The names that stand at a few lines.
    const QStringList &names() const { return mNames; }
    /// The place on the canvas of a value.
    QPointF placeOf(int step, double value) const;

protected:
    void load() override;
    bool hasAllTimes() const override { return isLoaded(); }
    void timePassed() override;
    void setExporting(bool exporting) override { mIsExporting = exporting; }
    void markSelected() override;
    bool shows(int object) const override;
    QVector<unsigned int> objectsWithin(const QPainterPath &region) override;
    GraphScale xScale() const override;

private:
    class Lines;
    struct Summary {
        History mean;
        QVector<double> deviations; ///< beside the points of the mean
    };
    void drawNow(QPainter &painter, const QwtScaleMap &xMap, const QRectF &canvas) const;
    Summary summarize(const unsigned char *flags) const;
    QVector<QPointF> pointsOf(int object) const;

    bool mIsExporting = false;
    TimeScale mScale;
    QVector<QPointF> mMean; ///< of all objects
    QVector<int> mLines;
    QVector<QVector<QPointF>> mPoints; ///< of mLines
    QStringList mNames;                ///< of mLines; empty for many
    QVector<QPointF> mSelectedMean;
    QVector<double> mDeviations; ///< of mSelectedMean
    bool mHasSelected = false;
};

} // namespace meridor
