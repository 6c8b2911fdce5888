// SPDX-License-Identifier: MIT
/// How many objects have values in each of several bars of equal width, and how many of them are
/// selected.
#pragma once
#include <QPointer>
#include <QVector>
#include "core/plot/plotValues.h"
#include "desk/views/graphView.h"
#include "desk/views/mapLayerView.h"

namespace meridor {

class HistogramView final : public GraphView {
    Q_OBJECT
public:
    HistogramView(Workspace &workspace, int dataset);

    QString title() const override;
    QVector<int> datasets() const override { return {mDataset}; }
    QStringList commandLine(const QString &picture) const override;
    /// Colours the bars by classes.
    /// @param limits  ascending, one more than colors; empty: no classes.
    void setClasses(const QVector<double> &limits, const QVector<QColor> &colors);
    /// Shows the classes of the map of the dataset, as long as there is one; a limit that is dragged
    /// here moves there, too.
    void setFollowsMap(bool follows);
    bool followsMap() const { return mFollowsMap; }
    /// The layer whose classes are shown; null without one.
    MapLayerView *mapLayer() const { return mLayer.data(); }
    /// Where a limit between two classes is on the canvas.
    double limitAt(int inner) const;

    int objectAt(const QPoint &) const override { return -1; }
    QString textAt(const QPoint &pixel) override;
    QString textOf(int object) override;
    void drawMark(QPainter &painter, int object) override;
    bool grab(const QPoint &pixel) override;
    void dragGrabbed(const QPoint &pixel) override;
    /// Up and down choose a limit, left and right move it.
    bool moveByKey(Qt::Key key) override;
    void step(int by) override;
    QVector<unsigned int> marked() const override;

    const Bins &bins() const { return mBins; }
    const QVector<int> &counts() const { return mCounts; }
    const QVector<int> &selectedCounts() const { return mSelected; }
    /// A bar on the canvas.
    QRectF barRect(int bar) const;

protected:
    void read() override;
    void markSelected() override;
    QVector<unsigned int> objectsWithin(const QPainterPath &region) override;
    GraphScale xScale() const override;
    GraphScale yScale() const override;

private:
    class Bars;
    void countClasses();
    void findLayer();
    void takeClasses();
    void moveGrabbed(double value);
    int barAt(const QPointF &pixel) const;
    QString textOfBar(int bar) const;
    QVector<unsigned int> objectsOf(const QVector<bool> &bars) const;

    int mDataset;
    bool mFollowsMap = false;
    QPointer<MapLayerView> mLayer; ///< that is followed
    int mGrabbed = -1;             ///< the inner limit that is dragged, or chosen by key
    QVector<double> mLimits;
    QVector<QColor> mClassColors;
    QVector<double> mValues; ///< by object
    QVector<qint16> mBarOf;  ///< by object; -1: none
    Bins mBins;
    QVector<int> mCounts;               ///< by bar
    QVector<QVector<int>> mClassCounts; ///< by bar, then class; empty without classes
    QVector<int> mSelected;             ///< by bar
    int mPointed = -1;                  ///< the bar that the keys marked
};

} // namespace meridor
