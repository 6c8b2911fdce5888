// SPDX-License-Identifier: MIT
/// The canvas of a graph: what the mouse and the keys do there.
#pragma once
#include <QPainterPath>
#include <QPoint>
#include <optional>
#include <qwt_plot_canvas.h>
#include "desk/views/graphView.h"

class QwtPlot;

namespace meridor {

/// Draws the region under the mouse and the marked object over the picture of the plot, which is not
/// drawn anew for them.
class GraphCanvas : public QwtPlotCanvas {
    Q_OBJECT
public:
    GraphCanvas(GraphView &view, QwtPlot *plot);
    /// Draws what stands over the picture anew.
    void refreshMarks();
    /// Where the mouse is, if it is over the graph.
    std::optional<QPoint> pointed() const { return mPointed; }

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    class Marks;
    enum class Drag { None, Region, Move, Grabbed };

    void drawMarks(QPainter &painter);
    void endDrag();

    GraphView &mView;
    Marks *mMarks;
    Drag mDrag = Drag::None;
    QPoint mStart;
    QPoint mLast;
    std::optional<QPoint> mPointed;
    QPainterPath mRegion;
};

/// Shift adds to the selection, control toggles.
SelectionMode selectionModeOf(Qt::KeyboardModifiers modifiers);

} // namespace meridor
