// SPDX-License-Identifier: MIT
#include "desk/views/canvas.h"
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>
#include <algorithm>
#include <cmath>
#include <utility>
#include "core/render/choropleth.h"
#include "core/render/mapPicture.h"

namespace meridor {
namespace {

constexpr double kFast = 25; ///< milliseconds; a slower drawing waits for rest
constexpr double kSlow = 5;  ///< milliseconds; a third of a frame
constexpr int kRest = 120;   ///< milliseconds
constexpr int kPanStep = 64; ///< pixels of a key
constexpr double kZoomStep = 1.5;
constexpr double kMargin = 0.03; ///< around the whole map

SelectionMode modeOf(Qt::KeyboardModifiers keys)
{
    return keys & Qt::ControlModifier ? SelectionMode::Toggle
           : keys & Qt::ShiftModifier ? SelectionMode::Add
                                      : SelectionMode::Replace;
}

} // namespace

MapCanvas::MapCanvas(Workspace &workspace, QWidget *parent) : QWidget(parent), mWorkspace(workspace)
{
    setObjectName(QStringLiteral("map"));
    setAccessibleName(tr("Map"));
    setAccessibleDescription(
        tr("Arrows move the map, plus and minus zoom, page keys go through the objects, space "
           "selects."));
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setCursor(Qt::CrossCursor);
    mRest.setSingleShot(true);
    mRest.setInterval(kRest);
    connect(&mRest, &QTimer::timeout, this, [this] { mSlice.start(0); });
    connect(&mSlice, &QTimer::timeout, this, &MapCanvas::drawSlice);
    connect(&mWorkspace, &Workspace::idle, this, [this] {
        if (!mIsSharp && !mRest.isActive() && !mSlice.isActive()) {
            mRest.start();
            update();
        }
    });
}

QSize MapCanvas::sizeHint() const
{
    return fontMetrics().averageCharWidth() * QSize(80, 55);
}

QSize MapCanvas::minimumSizeHint() const
{
    return fontMetrics().averageCharWidth() * QSize(16, 12);
}

QSize MapCanvas::deviceSize() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

void MapCanvas::setLayers(const QVector<MapLayerView *> &layers)
{
    const bool isFirst = mLayers.isEmpty();
    mLayers = layers;
    mIsDrawn = false;
    mIsSharp = false;
    if (isFirst || mIsFitted)
        fit();
    else
        moved();
    update();
}

void MapCanvas::setTool(ViewWindow::Tool tool)
{
    mTool = tool;
    setCursor(tool == ViewWindow::Tool::Move ? Qt::OpenHandCursor : Qt::CrossCursor);
}

void MapCanvas::setLinks(const QVector<QLineF> &links)
{
    mLinks = links;
    update();
}

QRectF MapCanvas::extent() const
{
    QRectF hull;
    for (const MapLayerView *const layer : mLayers) {
        const QRectF own = layer->extent();
        if (!std::isfinite(own.width()) || !std::isfinite(own.height()))
            continue;
        // QRectF::united ignores a rectangle without area, such as that of a point.
        hull = hull.isNull() ? own
                             : QRectF(QPointF(std::min(hull.left(), own.left()),
                                              std::min(hull.top(), own.top())),
                                      QPointF(std::max(hull.right(), own.right()),
                                              std::max(hull.bottom(), own.bottom())));
    }
    return hull;
}

double MapCanvas::squeeze(const QRectF &extent) const
{
    return squeezeOf(!mLayers.isEmpty() && isGeographic(mLayers.first()->geography()), extent);
}

void MapCanvas::fit()
{
    const QRectF whole = extent();
    mView = ViewTransform::fit(whole, deviceSize(),
                               static_cast<int>(kMargin * deviceSize().width()), squeeze(whole));
    mIsFitted = true;
    mAsked.reset();
    moved();
}

void MapCanvas::show(const QRectF &extent, double margin)
{
    if (!std::isfinite(extent.width()) || !std::isfinite(extent.height())
        || (extent.isNull() && extent.topLeft().isNull()))
        return;
    // A single point is shown with its surroundings, and with the squeeze of the whole map, so that
    // the shapes keep their proportions.
    QRectF shown = extent;
    const QRectF whole = this->extent();
    const double least = 1e-3 * std::max(whole.width(), whole.height());
    if (shown.width() < least && shown.height() < least)
        shown.adjust(-least, -least, least, least);
    mView = ViewTransform::fit(shown, deviceSize(), static_cast<int>(margin * deviceSize().width()),
                               squeeze(whole));
    mIsFitted = false;
    mAsked = {extent, margin};
    moved();
}

QRectF MapCanvas::shown() const
{
    QRectF extent = mView.visible();
    extent.moveCenter(mView.toMap(QPointF(mView.size().width() / 2, mView.size().height() / 2)));
    return extent;
}

void MapCanvas::zoom(double factor, const QPointF &place)
{
    mView.zoom(place * devicePixelRatioF(), factor);
    mIsFitted = false;
    mAsked.reset();
    moved();
}

void MapCanvas::pan(int dx, int dy)
{
    mView.pan(dx, dy);
    mIsFitted = false;
    mAsked.reset();
    moved();
}

void MapCanvas::moved()
{
    mIsSharp = false;
    mSlice.stop();
    mRest.start();
    update();
    Q_EMIT viewChanged();
}

void MapCanvas::drawQuick()
{
    if (mWorkspace.isBusy()
        && std::any_of(mLayers.begin(), mLayers.end(),
                       [](const MapLayerView *layer) { return layer->readsLibrary(); }))
        return;
    QElapsedTimer clock;
    clock.start();
    for (MapLayerView *const layer : std::as_const(mLayers))
        if (layer->isVisible())
            layer->drawQuick(mView);
    mCost = static_cast<double>(clock.nsecsElapsed()) / 1e6;
    mDrawn = mView;
    mIsDrawn = true;
}

/// One layer's slice at a time, so that a new event ends the drawing.
void MapCanvas::drawSlice()
{
    if (mWorkspace.isBusy()) {
        mSlice.stop(); // continued when the workspace is idle
        return;
    }
    if (!mIsDrawn || mDrawn != mView) {
        drawQuick();
        update();
        return;
    }
    for (MapLayerView *const layer : std::as_const(mLayers))
        if (layer->isVisible() && !layer->drawSharp(mView))
            return;
    mSlice.stop();
    mIsSharp = mIsFinished = true;
    if (mIsHurried)
        mImageView = ViewTransform(); // another picture of the same view
    update();
}

void MapCanvas::finish()
{
    mRest.stop();
    mIsSharp = mIsSharp && !isStale();
    while (!mIsSharp && !mWorkspace.isBusy())
        drawSlice();
}

void MapCanvas::compose()
{
    const bool isStale = mImageView != mDrawn || mImage.size() != mDrawn.size()
                         || std::any_of(mLayers.begin(), mLayers.end(),
                                        [](const MapLayerView *layer) { return layer->isStale(); });
    if (!isStale || mDrawn.size().isEmpty())
        return;
    // Colours that change again within a moment, such as those of times that are run through, are
    // shown coarsely if the sharp picture takes long, and, when the map rests, sharply.
    mIsHurried = mImageView == mDrawn && !mIsSharp && mSharpCost > kSlow && mComposed.isValid()
                 && mComposed.elapsed() < kRest;
    mComposed.start();
    if (mIsHurried)
        mRest.start();
    const MapColors colors(palette());
    if (mImage.size() != mDrawn.size())
        mImage = QImage(mDrawn.size(), QImage::Format_RGB32);
    bool isLowest = true;
    for (MapLayerView *const layer : std::as_const(mLayers)) {
        layer->setFresh();
        if (!layer->isVisible())
            continue;
        if (std::exchange(isLowest, false))
            layer->paintLowest(mDrawn, colors, mIsHurried, mImage);
        else
            layer->paint(mDrawn, colors, mIsHurried, mImage);
    }
    if (isLowest)
        mImage.fill(colors.ground);
    if (!mIsHurried)
        mSharpCost = static_cast<double>(mComposed.nsecsElapsed()) / 1e6;
    mImageView = mDrawn;
}

/// Whether a layer has another picture than the one that is shown.
bool MapCanvas::isStale() const
{
    return std::any_of(mLayers.begin(), mLayers.end(), [](const MapLayerView *layer) {
        return layer->isStale() && layer->isVisible();
    });
}

bool MapCanvas::areSharp() const
{
    return std::all_of(mLayers.begin(), mLayers.end(), [this](const MapLayerView *layer) {
        return !layer->isVisible() || layer->isSharp(mView);
    });
}

void MapCanvas::paintEvent(QPaintEvent *)
{
    // A change of values or shapes needs another drawing of the same view.
    const bool isStale = this->isStale();
    if (!mIsDrawn || (mDrawn != mView && mCost < kFast) || (isStale && mDrawn == mView)) {
        drawQuick();
        // What has just become sharp needs no rest.
        if (isStale && mIsSharp && !(mIsFinished && !mWorkspace.isBusy() && areSharp())) {
            mIsSharp = false;
            mRest.start();
        }
    }
    mIsFinished = false;
    if (mIsDrawn)
        compose();

    QPainter painter(this);
    const double ratio = devicePixelRatioF();
    painter.scale(1 / ratio, 1 / ratio);
    if (mImageView == mView && !mImage.isNull()) {
        painter.drawImage(QPoint(), mImage);
    } else {
        painter.fillRect(QRect(QPoint(), deviceSize()), palette().color(QPalette::Base));
        const QRectF old = mImageView.visible();
        if (!mImage.isNull())
            painter.drawImage(QRectF(mView.toPixel(QPointF(old.left(), old.bottom())),
                                     mView.toPixel(QPointF(old.right(), old.top()))),
                              mImage);
    }
    paintMarks(painter);
    painter.resetTransform();
    paintTroubles(painter);
}

void MapCanvas::paintMarks(QPainter &painter)
{
    const double ratio = devicePixelRatioF();
    const QColor ink = palette().color(QPalette::Text);
    const QColor ground = palette().color(QPalette::Base);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!mLinks.isEmpty()) {
        painter.setPen(QPen(ink, ratio));
        const QRectF window{QPointF(), QSizeF(deviceSize())};
        for (const QLineF &link : std::as_const(mLinks)) {
            const QLineF line(mView.toPixel(link.p1()), mView.toPixel(link.p2()));
            const QRectF box = QRectF(line.p1(), line.p2()).normalized().adjusted(-1, -1, 1, 1);
            if (box.intersects(window) && line.length() < 1e6)
                painter.drawLine(line);
        }
    }
    // A light line under a dark one is seen on every colour.
    const auto mark = [&](const QPainterPath &path, double width, Qt::PenStyle style) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(ground, (width + 2) * ratio));
        painter.drawPath(path);
        painter.setPen(QPen(ink, width * ratio, style));
        painter.drawPath(path);
    };
    for (const MapLayerView *const layer : std::as_const(mLayers)) {
        const int hovered = mWorkspace.selection().hovered(layer->geography());
        if (hovered < 0 || !layer->isVisible())
            continue;
        for (const unsigned int neighbor : layer->hoveredNeighbors())
            mark(layer->shapeOf(neighbor, mView), 1.2, Qt::SolidLine);
        mark(layer->shapeOf(static_cast<unsigned int>(hovered), mView), 2.5, Qt::SolidLine);
    }
    if (mDrag == Drag::Region && mIsDragged) {
        QPainterPath band = region();
        painter.scale(ratio, ratio);
        QColor fill = palette().color(QPalette::Highlight);
        fill.setAlpha(50);
        painter.fillPath(band, fill);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(band);
        painter.scale(1 / ratio, 1 / ratio);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2 * ratio));
        painter.drawRect(
            QRectF(QPointF(), QSizeF(deviceSize())).adjusted(ratio, ratio, -ratio, -ratio));
    }
}

void MapCanvas::paintTroubles(QPainter &painter)
{
    QStringList sentences;
    for (const MapLayerView *const layer : std::as_const(mLayers))
        if (layer->isVisible() && !layer->trouble().isEmpty())
            sentences.append(layer->trouble());
    if (mLayers.isEmpty())
        sentences.append(tr("Drop a dataset here to see its map."));
    if (sentences.isEmpty())
        return;
    const QString text = sentences.join(QLatin1Char('\n'));
    const int margin = fontMetrics().height();
    const QRect room = rect().adjusted(margin, margin, -margin, -margin);
    const QRect box = painter.boundingRect(room, Qt::AlignCenter | Qt::TextWordWrap, text)
                          .adjusted(-margin, -margin / 2, margin, margin / 2);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Window));
    painter.drawRoundedRect(box, margin / 3.0, margin / 3.0);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(box, Qt::AlignCenter | Qt::TextWordWrap, text);
}

void MapCanvas::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (mIsFitted) {
        fit();
        return;
    }
    if (const auto asked = mAsked) {
        show(asked->first, asked->second);
        return;
    }
    mView.resize(deviceSize());
    moved();
}

bool MapCanvas::event(QEvent *event)
{
    // Escape ends a drag before it clears the selection.
    if (event->type() == QEvent::ShortcutOverride && mDrag != Drag::None
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void MapCanvas::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        mImageView = ViewTransform(); // composed in other colours
        update();
    }
}

QPainterPath MapCanvas::region() const
{
    QPainterPath path;
    if (!mIsDragged) {
        path.moveTo(mPress);
    } else if (mTool == ViewWindow::Tool::Lasso) {
        path.addPolygon(mLasso);
        path.closeSubpath();
    } else if (mTool == ViewWindow::Tool::Circle) {
        const double radius = QLineF(mPress, mLast).length();
        path.addEllipse(QPointF(mPress), radius, radius);
    } else {
        path.addRect(QRectF(mPress, mLast).normalized());
    }
    return path;
}

void MapCanvas::mousePressEvent(QMouseEvent *event)
{
    const bool moves = event->button() == Qt::MiddleButton
                       || (event->button() == Qt::LeftButton && mTool == ViewWindow::Tool::Move);
    if (mDrag != Drag::None || (!moves && event->button() != Qt::LeftButton)) {
        QWidget::mousePressEvent(event);
        return;
    }
    mDrag = moves ? Drag::Move : Drag::Region;
    mIsDragged = false;
    mPress = mLast = event->pos();
    mLasso = QPolygonF({QPointF(mPress)});
    if (moves)
        setCursor(Qt::ClosedHandCursor);
}

void MapCanvas::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint place = event->pos();
    if (mDrag == Drag::None) {
        const QPointF device = QPointF(place) * devicePixelRatioF();
        Q_EMIT pointed(device.toPoint());
        return;
    }
    const int reach = QGuiApplication::styleHints()->startDragDistance();
    mIsDragged = mIsDragged || (place - mPress).manhattanLength() >= reach;
    if (mDrag == Drag::Move) {
        const QPointF shift = QPointF(place - mLast) * devicePixelRatioF();
        mLast = place;
        pan(static_cast<int>(std::lround(shift.x())), static_cast<int>(std::lround(shift.y())));
        return;
    }
    mLast = place;
    if (place != mLasso.last().toPoint())
        mLasso.append(place);
    update();
}

void MapCanvas::mouseReleaseEvent(QMouseEvent *event)
{
    if (mDrag == Drag::None)
        return;
    const Drag drag = mDrag;
    if (drag == Drag::Region)
        mLast = event->pos();
    const QPainterPath drawn = region();
    mDrag = Drag::None;
    setTool(mTool);
    update();
    if (drag == Drag::Region)
        Q_EMIT regionDrawn(drawn, modeOf(event->modifiers()));
}

void MapCanvas::wheelEvent(QWheelEvent *event)
{
    const int delta = event->angleDelta().y();
    if (delta == 0)
        return;
    zoom(std::pow(kZoomStep, delta / 120.0), event->position());
    event->accept();
}

void MapCanvas::keyPressEvent(QKeyEvent *event)
{
    const QPointF center = QRectF(rect()).center();
    const int step = static_cast<int>(std::lround(kPanStep * devicePixelRatioF()));
    switch (event->key()) {
    case Qt::Key_Left:
        return pan(step, 0);
    case Qt::Key_Right:
        return pan(-step, 0);
    case Qt::Key_Up:
        return pan(0, step);
    case Qt::Key_Down:
        return pan(0, -step);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return zoom(kZoomStep, center);
    case Qt::Key_Minus:
        return zoom(1 / kZoomStep, center);
    case Qt::Key_PageDown:
        Q_EMIT stepped(1);
        return;
    case Qt::Key_PageUp:
        Q_EMIT stepped(-1);
        return;
    case Qt::Key_Space:
        Q_EMIT chosen(SelectionMode::Toggle);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Q_EMIT chosen(modeOf(event->modifiers()));
        return;
    case Qt::Key_Escape:
        if (mDrag != Drag::None) {
            mDrag = Drag::None;
            setTool(mTool);
            update();
            return;
        }
        break;
    default:
        break;
    }
    QWidget::keyPressEvent(event);
}

void MapCanvas::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    Q_EMIT pointed(QPoint(-1, -1));
}

} // namespace meridor
