// SPDX-License-Identifier: MIT
#include "desk/views/graphCanvas.h"
#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <cmath>
#include <qwt_plot.h>

namespace meridor {

SelectionMode selectionModeOf(Qt::KeyboardModifiers modifiers)
{
    return modifiers & Qt::ControlModifier ? SelectionMode::Toggle
           : modifiers & Qt::ShiftModifier ? SelectionMode::Add
                                           : SelectionMode::Replace;
}

/// A transparent widget over the canvas.
class GraphCanvas::Marks : public QWidget {
public:
    explicit Marks(GraphCanvas &canvas) : QWidget(&canvas), mCanvas(canvas)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        mCanvas.drawMarks(painter);
    }

private:
    GraphCanvas &mCanvas;
};

GraphCanvas::GraphCanvas(GraphView &view, QwtPlot *plot)
    : QwtPlotCanvas(plot), mView(view), mMarks(new Marks(*this))
{
    setFrameStyle(QFrame::NoFrame);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setFocusIndicator(QwtPlotCanvas::NoFocusIndicator); // drawn over the picture instead
    setCursor(Qt::CrossCursor);
    setObjectName(QStringLiteral("graphCanvas"));
}

void GraphCanvas::refreshMarks()
{
    mMarks->update();
}

void GraphCanvas::drawMarks(QPainter &painter)
{
    painter.setRenderHint(QPainter::Antialiasing);
    const GraphColors &colors = mView.colors();
    if (!mView.trouble().isEmpty()) {
        const int margin = fontMetrics().height() * 2;
        painter.setPen(colors.softInk);
        painter.drawText(rect().adjusted(margin, 0, -margin, 0), Qt::AlignCenter | Qt::TextWordWrap,
                         mView.trouble());
    } else {
        mView.drawMark(painter, mView.hoveredObject());
    }
    if (mDrag == Drag::Region) {
        QColor fill = colors.selected;
        fill.setAlpha(40);
        painter.setBrush(fill);
        painter.setPen(QPen(colors.ink, 1, Qt::DashLine));
        painter.drawPath(mRegion);
    }
    if (hasFocus()) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(palette().color(QPalette::Highlight));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

bool GraphCanvas::event(QEvent *event)
{
    // A region that is being drawn is given up by the key that otherwise clears the selection.
    if (event->type() == QEvent::ShortcutOverride && mDrag != Drag::None
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
        event->accept();
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        mMarks->update();
    return QwtPlotCanvas::event(event);
}

void GraphCanvas::resizeEvent(QResizeEvent *event)
{
    QwtPlotCanvas::resizeEvent(event);
    mMarks->setGeometry(rect());
    mView.fitTicks();
    mView.fitTexts();
}

void GraphCanvas::mousePressEvent(QMouseEvent *event)
{
    setFocus(Qt::MouseFocusReason);
    mStart = mLast = event->pos();
    mRegion = QPainterPath();
    mRegion.moveTo(mStart);
    const bool moves =
        event->button() == Qt::MiddleButton
        || (event->button() == Qt::LeftButton && mView.tool() == ViewWindow::Tool::Move);
    if (event->button() == Qt::LeftButton && mView.trouble().isEmpty() && mView.grab(mStart)) {
        mDrag = Drag::Grabbed;
        return;
    }
    mDrag = moves ? Drag::Move : event->button() == Qt::LeftButton ? Drag::Region : Drag::None;
}

void GraphCanvas::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint at = event->pos();
    mPointed = at;
    if (mDrag == Drag::None) {
        const int object =
            rect().contains(at) && mView.trouble().isEmpty() ? mView.objectAt(at) : -1;
        mView.hover(object);
        Q_EMIT mView.pointedAt(mView.textAt(at)); // which may be of no object, such as a bar
        return;
    }
    if (mDrag == Drag::Grabbed) {
        mView.dragGrabbed(at);
        return;
    }
    if (mDrag == Drag::Move) {
        mView.pan(at - mLast);
    } else if (mView.tool() == ViewWindow::Tool::Lasso) {
        mRegion.lineTo(at);
    } else {
        mRegion = QPainterPath();
        mRegion.addRect(QRectF(mStart, at).normalized());
    }
    mLast = at;
    mMarks->update();
}

void GraphCanvas::mouseReleaseEvent(QMouseEvent *event)
{
    const Drag drag = mDrag;
    endDrag();
    if (drag != Drag::Region)
        return;
    QPainterPath region = mRegion;
    const QRectF box = region.boundingRect();
    if (std::max(box.width(), box.height()) < QApplication::startDragDistance() / 2.0) {
        region = QPainterPath();
        region.moveTo(mStart);
    } else if (mView.tool() == ViewWindow::Tool::Lasso) {
        region.closeSubpath();
    }
    mView.brush(region, selectionModeOf(event->modifiers()));
}

void GraphCanvas::mouseDoubleClickEvent(QMouseEvent *event)
{
    endDrag();
    if (event->button() == Qt::LeftButton && mView.trouble().isEmpty()
        && mView.objectAt(event->pos()) < 0 && !mView.openAt(event->pos()))
        mView.showAll();
}

void GraphCanvas::leaveEvent(QEvent *event)
{
    QwtPlotCanvas::leaveEvent(event);
    mPointed.reset();
    mView.hover(-1);
    Q_EMIT mView.pointedAt(QString());
}

void GraphCanvas::wheelEvent(QWheelEvent *event)
{
    mView.zoom(std::pow(1.2, event->angleDelta().y() / 120.0), event->position());
    event->accept();
}

void GraphCanvas::keyPressEvent(QKeyEvent *event)
{
    const QPointF middle = QRectF(rect()).center();
    const double step = std::min(width(), height()) / 8.0;
    if (event->modifiers() & Qt::ControlModifier && mView.trouble().isEmpty()
        && mView.moveByKey(static_cast<Qt::Key>(event->key())))
        return;
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        mView.zoom(1.25, middle);
        break;
    case Qt::Key_Minus:
        mView.zoom(0.8, middle);
        break;
    case Qt::Key_0:
    case Qt::Key_Home:
        mView.showAll();
        break;
    case Qt::Key_Left:
        mView.pan(QPointF(step, 0));
        break;
    case Qt::Key_Right:
        mView.pan(QPointF(-step, 0));
        break;
    case Qt::Key_Up:
        mView.pan(QPointF(0, step));
        break;
    case Qt::Key_Down:
        mView.pan(QPointF(0, -step));
        break;
    case Qt::Key_PageDown:
        mView.step(1);
        break;
    case Qt::Key_PageUp:
        mView.step(-1);
        break;
    case Qt::Key_Space:
        mView.choose(mView.marked(), selectionModeOf(event->modifiers()));
        break;
    case Qt::Key_Escape:
        if (mDrag != Drag::None) {
            endDrag();
            break;
        }
        event->ignore();
        break;
    default:
        QwtPlotCanvas::keyPressEvent(event);
    }
}

void GraphCanvas::endDrag()
{
    mDrag = Drag::None;
    mMarks->update();
}

} // namespace meridor
