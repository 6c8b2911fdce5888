// SPDX-License-Identifier: MIT
#include "desk/views/graphView.h"
#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QScopedValueRollback>
#include <QtMath>
#include <algorithm>
#include <cmath>
#include <qwt_date_scale_engine.h>
#include <qwt_plot.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_renderer.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>
#include <qwt_text_label.h>
#include <utility>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/graph.h"
#include "core/render/graphScale.h"
#include "core/render/theme.h"
#include "datainterface/MDataset.h"
#include "desk/draw/colorTable.h"
#include "desk/views/graphCanvas.h"

namespace meridor {
namespace {

/// Differences of larger values are beyond the largest double.
constexpr double kLargest = 1e307;
/// Shorter ranges, relative to the values, have no distinct ticks.
constexpr double kLeastRange = 1e-13;
constexpr int kLeastWithFooter = 10;   ///< heights of the font
constexpr int kLeastWithAxisTitle = 8; ///< the same
constexpr int kMostFooterLines = 3;

QColor between(const QColor &a, const QColor &b, double share)
{
    return QColor(mixed(a.rgb(), b.rgb(), share));
}

/// Repaints its texts when the colours of the desktop change.
class PlotWidget : public QwtPlot {
public:
    PlotWidget()
    {
        setObjectName(QStringLiteral("graph"));
        setBackgroundRole(QPalette::Base);
        setAutoFillBackground(true);
        plotLayout()->setAlignCanvasToScales(true);
        QFont font = this->font();
        font.setBold(false);
        titleLabel()->setFont(font);
        const int margin = fontMetrics().height() / 2;
        setContentsMargins(margin, margin / 2, margin, margin / 2);
    }
    /// Changes the text without a new layout when it needs the same room.
    void showFooter(const QwtText &text)
    {
        const QwtText present = footer();
        if (text == present)
            return;
        if (present.font() != text.font()
            || present.text().count(QLatin1Char('\n')) != text.text().count(QLatin1Char('\n'))) {
            setFooter(text);
            return;
        }
        QCoreApplication::sendPostedEvents(this, QEvent::LayoutRequest);
        footerLabel()->setText(text);
        QCoreApplication::removePostedEvents(this, QEvent::LayoutRequest);
    }
    /// The view that is complete now.
    void setView(GraphView &view) { mView = &view; }

protected:
    void changeEvent(QEvent *event) override
    {
        QwtPlot::changeEvent(event);
        if (mView
            && (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange))
            mView->refreshColors();
    }

    void resizeEvent(QResizeEvent *event) override
    {
        QwtPlot::resizeEvent(event);
        if (mView)
            mView->fitTexts();
    }

private:
    GraphView *mView = nullptr;
};

QwtText plainText(const QString &text, const QFont &font, const QColor &color, int alignment)
{
    QwtText shown(text, QwtText::PlainText);
    shown.setFont(font);
    shown.setColor(color);
    shown.setRenderFlags(alignment | Qt::AlignVCenter);
    return shown;
}

/// Room for the labels at the ends of an axis. The widget itself only gives up what it has taken when
/// its place changes.
void setBorders(QwtScaleWidget &axis, int start, int end)
{
    axis.setMinBorderDist(start, end);
    axis.getBorderDistHint(start, end);
    axis.setBorderDist(start, end);
}

} // namespace

GraphColors::GraphColors(const QPalette &palette)
    : ground(palette.color(QPalette::Base)), ink(palette.color(QPalette::Text))
{
    const bool dark = ground.lightness() < 128;
    softInk = between(ink, ground, 0.3);
    grid = between(ground, ink, 0.15);
    plain = legible(lineColor(0));
    fill = between(plain, ground, 0.55);
    selected = QColor(ColorRule().selected);
    selectedInk = dark ? selected : lineColor(1);
}

QColor GraphColors::legible(const QColor &color) const
{
    return ground.lightness() < 128 ? color.lighter(170) : color;
}

GraphView::GraphView(Workspace &workspace, int geography)
    : View(workspace, geography),
      mPlot(new PlotWidget()),
      mPlotWidget(mPlot),
      mCanvas(new GraphCanvas(*this, mPlot)),
      mColors(mPlot->palette()),
      mNames(geography)
{
    mPlot->setCanvas(mCanvas);
    auto *const grid = new QwtPlotGrid();
    grid->setZ(0);
    grid->attach(mPlot);
    static_cast<PlotWidget *>(mPlot)->setView(*this);
    refreshColors();
    const auto forget = [this] { mNames.forget(); };
    connect(&workspace, &Workspace::datasetsAdded, this, forget);
    connect(&workspace, &Workspace::datasetsDying, this, forget);
    connect(&workspace, &Workspace::datasetRenamed, this, [this](int dataset) {
        mNames.forget();
        if (datasets().contains(dataset) && mTrouble.isEmpty()) {
            showScales();
            redraw();
        }
    });
    connect(&workspace, &Workspace::objectsRemoved, this, [this](int changed) {
        if (changed == this->geography())
            rereadSoon();
    });
    connect(&workspace, &Workspace::idle, this, [this] {
        if (mMustReread)
            rereadSoon();
    });
}

GraphView::~GraphView()
{
    delete mPlotWidget.data();
}

QWidget *GraphView::widget() const
{
    return mCanvas;
}

void GraphView::refreshColors()
{
    mColors = GraphColors(mPlot->palette());
    mPlot->setCanvasBackground(mColors.ground);
    for (QwtPlotItem *const item : mPlot->itemList(QwtPlotItem::Rtti_PlotGrid))
        static_cast<QwtPlotGrid *>(item)->setPen(mColors.grid, 0);
    for (const int axis : {QwtPlot::xBottom, QwtPlot::yLeft}) {
        mPlot->setAxisFont(axis, mPlot->font());
        QPalette palette = mPlot->palette();
        palette.setColor(QPalette::WindowText, mColors.softInk);
        mPlot->axisWidget(axis)->setPalette(palette);
    }
    mMustMakeScales = true;
    if (mIsRead && mTrouble.isEmpty()) {
        fitTicks();
        recolor();
        selectionChanged();
    }
}

void GraphView::valuesChanged()
{
    const QScopedValueRollback<bool> freeing(mKeepsRoom, false);
    timeChanged();
}

void GraphView::timeChanged()
{
    if (!hasAllTimes() || !mTrouble.isEmpty()) {
        reread();
        return;
    }
    const QScopedValueRollback<bool> reading(mIsReading, true);
    timePassed();
}

bool GraphView::holdsAt(qint64 time) const
{
    return mTrouble.isEmpty() && View::holdsAt(time);
}

void GraphView::reread()
{
    QString trouble;
    try {
        read();
    } catch (const Failure &failure) {
        trouble = failure.text();
    } catch (const std::bad_alloc &) {
        trouble = tr("There is not enough memory for this graph.");
    }
    mIsRead = true;
    setTrouble(trouble);
    if (!trouble.isEmpty()) {
        Q_EMIT pointedAt(QString()); // what it said was about other values
        return;
    }
    const QScopedValueRollback<bool> reading(mIsReading, true);
    recolor();
    showScales();
    selectionChanged();
    if (hoveredObject() >= 0)
        Q_EMIT pointedAt(textOf(hoveredObject()));
}

void GraphView::rereadSoon()
{
    mMustReread = workspace().isBusy();
    if (!mMustReread)
        workspace().look([this] { valuesChanged(); });
}

void GraphView::setTrouble(const QString &text)
{
    mTrouble = text.isEmpty() || text.endsWith(QLatin1Char('.')) ? text : text + QLatin1Char('.');
    for (QwtPlotItem *const item : mPlot->itemList())
        item->setVisible(mTrouble.isEmpty());
    mPlot->enableAxis(QwtPlot::xBottom, mTrouble.isEmpty());
    mPlot->enableAxis(QwtPlot::yLeft, mTrouble.isEmpty());
    if (!mTrouble.isEmpty()) {
        setSummary(QString(), QString());
        redraw();
    }
}

void GraphView::selectionChanged()
{
    if (!mTrouble.isEmpty())
        return;
    markSelected();
    redraw();
}

void GraphView::setSummary(const QString &all, const QString &selected)
{
    const QString note = realizationNote();
    mSummary = note.isEmpty() || all.isEmpty() ? all : note + QStringLiteral("; ") + all;
    mSelectedSummary = selected;
}

QString GraphView::summary() const
{
    return mSelectedSummary.isEmpty() ? mSummary
                                      : mSummary + QStringLiteral("; ") + mSelectedSummary;
}

void GraphView::hoverChanged()
{
    mCanvas->refreshMarks();
    const int object = hoveredObject();
    if (!mTrouble.isEmpty())
        Q_EMIT pointedAt(QString());
    else if (const std::optional<QPoint> place = mCanvas->pointed())
        Q_EMIT pointedAt(textAt(*place));
    else
        Q_EMIT pointedAt(object >= 0 ? textOf(object) : QString());
}

void GraphView::redraw()
{
    fitTexts();
    mCanvas->setAccessibleName(title());
    mCanvas->setAccessibleDescription(mTrouble.isEmpty() ? summary() : mTrouble);
    updateAxes();
    QCoreApplication::sendPostedEvents(mPlot, QEvent::LayoutRequest); // before the canvas is drawn
    mCanvas->replot();
    mCanvas->refreshMarks();
}

void GraphView::fitTexts()
{
    const QFontMetrics metrics = mPlot->fontMetrics();
    const int room = std::max(1, mCanvas->width() - metrics.height() / 2);
    const bool isShown = mIsRead && mTrouble.isEmpty();
    const auto text = [&](const QString &words, const QColor &color, int alignment) {
        return plainText(words, mPlot->font(), color, alignment);
    };
    const auto elided = [&](const QString &title) {
        return metrics.elidedText(title, Qt::ElideRight, room);
    };
    // The name of the vertical axis stands above it, so that it is read without turning the head.
    const QwtText title =
        text(isShown ? elided(yScale().title) : QString(), mColors.ink, Qt::AlignLeft);
    if (title != mPlot->title())
        mPlot->setTitle(title);
    const bool hasAxisTitle = isShown && mPlot->height() >= kLeastWithAxisTitle * metrics.height();
    const QwtText axisTitle =
        text(hasAxisTitle ? elided(xScale().title) : QString(), mColors.ink, Qt::AlignRight);
    if (axisTitle != mPlot->axisTitle(QwtPlot::xBottom)) {
        mPlot->setAxisTitle(QwtPlot::xBottom, axisTitle);
        mAreAxesStale = true;
    }
    QString figures;
    if (mPlot->height() >= kLeastWithFooter * metrics.height()) {
        const auto broken = [&](const QString &all, int most) {
            const QStringList lines = brokenLines(all, mPlot->font(), room, most);
            return lines.isEmpty() ? QString(QChar(0xa0)) : lines.join(QLatin1Char('\n'));
        };
        // There is a line for the selected objects without any, too: a selection must not change the
        // size of the canvas.
        figures =
            broken(mSummary, kMostFooterLines) + QLatin1Char('\n') + broken(mSelectedSummary, 1);
    }
    const QwtText footer = text(figures, mColors.softInk, Qt::AlignLeft);
    static_cast<PlotWidget *>(mPlot)->showFooter(footer);
}

/// QwtPlot::replot() measures the labels of all axes each time.
void GraphView::updateAxes()
{
    if (std::exchange(mAreAxesStale, false))
        mPlot->updateAxes();
}

// Scales

void GraphView::apply(int axis, const GraphScale &scale)
{
    if (scale.dates != mHasDates && axis == QwtPlot::xBottom) {
        mHasDates = scale.dates;
        mMustMakeScales = true;
        mPlot->setAxisScaleEngine(
            axis, scale.dates ? static_cast<QwtScaleEngine *>(new QwtDateScaleEngine(Qt::UTC))
                              : new QwtLinearScaleEngine());
    }
    if (mIsZoomed)
        return;
    double low = std::clamp(scale.low, -kLargest, kLargest);
    double high = std::clamp(scale.high, -kLargest, kLargest);
    const double least = std::max(std::abs(low), std::abs(high)) * kLeastRange;
    if (!(high - low > least)) {
        const double room = scale.dates ? 86400000.0 : std::max(1e-12, std::abs(low) * 0.05);
        low -= room;
        high += room;
    }
    if (!scale.exact && !scale.dates) {
        const double margin = (high - low) * 0.02; // no disc lies on the frame
        low = low >= 0 ? std::max(0.0, low - margin) : low - margin;
        high += margin;
        double step = 0;
        mPlot->axisScaleEngine(axis)->autoScale(8, low, high, step);
    }
    setInterval(axis, low, high);
}

void GraphView::setInterval(int axis, double low, double high)
{
    if (!std::isfinite(low) || !std::isfinite(high)
        || !(high - low > std::max(std::abs(low), std::abs(high)) * kLeastRange)
        || high - low > 4 * kLargest)
        return;
    const QwtInterval present = mPlot->axisInterval(axis);
    if (!mMustMakeScales && !mAreAxesStale && present.minValue() == low
        && present.maxValue() == high)
        return;
    mPlot->setAxisScale(axis, low, high);
    mAreAxesStale = true;
}

void GraphView::showScales()
{
    apply(QwtPlot::xBottom, xScale());
    apply(QwtPlot::yLeft, yScale());
    makeScales();
    updateAxes();
    keepRoom();
}

/// While time passes, the labels keep the room of the widest ones, and of one at each end of an axis,
/// so that the canvas has one size.
void GraphView::keepRoom()
{
    const QFont font = mPlot->axisFont(QwtPlot::yLeft);
    QwtScaleDraw &beside = *mPlot->axisScaleDraw(QwtPlot::yLeft);
    const QwtScaleDraw &below = *mPlot->axisScaleDraw(QwtPlot::xBottom);
    const double room = beside.minimumExtent();
    const double last = mLastLabel;
    if (!mKeepsRoom) {
        beside.setMinimumExtent(0);
        mLastLabel = 0;
    }
    beside.setMinimumExtent(beside.extent(font));
    const QList<double> ticks = below.scaleDiv().ticks(QwtScaleDiv::MajorTick);
    if (!ticks.isEmpty())
        mLastLabel = std::max(mLastLabel, below.labelSize(font, ticks.last()).width());
    const int half = (QFontMetrics(font).height() + 1) / 2;
    setBorders(*mPlot->axisWidget(QwtPlot::yLeft), half, half);
    // In a narrow plot the canvas needs the room more than a label that may come.
    const double beyond = std::min(mLastLabel / 2, mPlot->width() / 20.0);
    setBorders(*mPlot->axisWidget(QwtPlot::xBottom), 0, qCeil(beyond));
    if (beside.minimumExtent() != room || mLastLabel != last)
        QCoreApplication::postEvent(mPlot, new QEvent(QEvent::LayoutRequest));
}

void GraphView::fitTicks()
{
    mAreAxesStale = true;
    makeScales();
    updateAxes();
    keepRoom();
    // The labels may need other room; a plot that is not shown yet does not ask for it itself.
    QCoreApplication::postEvent(mPlot, new QEvent(QEvent::LayoutRequest));
}

/// Labels of the present font and values, as many as there is room for.
void GraphView::makeScales()
{
    for (const int axis : {QwtPlot::xBottom, QwtPlot::yLeft}) {
        if (mMustMakeScales) {
            auto draw = graphScaleDraw(axis == QwtPlot::xBottom && mHasDates);
            draw->enableComponent(QwtAbstractScaleDraw::Backbone, false);
            draw->setTickLength(QwtScaleDiv::MinorTick, 0);
            draw->setTickLength(QwtScaleDiv::MediumTick, 0);
            mPlot->setAxisScaleDraw(axis, draw.release());
        }
        // Of the plot, not of the canvas: its size depends on the labels, which would depend on it.
        const QFontMetrics metrics = mPlot->fontMetrics();
        const int width = metrics.horizontalAdvance(QStringLiteral("00 000.000"));
        const int room = axis == QwtPlot::xBottom ? mPlot->width() / width - 1
                                                  : mPlot->height() / (2 * metrics.height())
                                                        - 3; // texts below and above
        const int most = std::clamp(room, 2, 10);
        mAreAxesStale |= mMustMakeScales || most != mPlot->axisMaxMajor(axis);
        mPlot->setAxisMaxMajor(axis, most);
        mPlot->setAxisMaxMinor(axis, 0);
    }
    mMustMakeScales = false;
}

void GraphView::zoom(double factor, const QPointF &pixel)
{
    if (!mTrouble.isEmpty() || !(factor > 0))
        return;
    mIsZoomed = true;
    for (const int axis : {QwtPlot::xBottom, QwtPlot::yLeft}) {
        const QwtScaleMap map = mPlot->canvasMap(axis);
        const double at = map.invTransform(axis == QwtPlot::xBottom ? pixel.x() : pixel.y());
        setInterval(axis, at - (at - map.s1()) / factor, at + (map.s2() - at) / factor);
    }
    redraw();
}

void GraphView::pan(const QPointF &pixels)
{
    if (!mTrouble.isEmpty())
        return;
    mIsZoomed = true;
    for (const int axis : {QwtPlot::xBottom, QwtPlot::yLeft}) {
        const QwtScaleMap map = mPlot->canvasMap(axis);
        const double by = axis == QwtPlot::xBottom ? pixels.x() : pixels.y();
        const double shift = map.invTransform(map.p1() - by) - map.s1();
        setInterval(axis, map.s1() + shift, map.s2() + shift);
    }
    redraw();
}

void GraphView::showAll()
{
    mIsZoomed = false;
    if (!mTrouble.isEmpty())
        return;
    const QScopedValueRollback<bool> freeing(mKeepsRoom, false);
    showScales();
    redraw();
}

QPointF GraphView::valueAt(const QPointF &pixel) const
{
    return {xMap().invTransform(pixel.x()), yMap().invTransform(pixel.y())};
}

QPointF GraphView::pixelOf(const QPointF &value) const
{
    return {xMap().transform(value.x()), yMap().transform(value.y())};
}

QRectF GraphView::shownRange() const
{
    const QwtScaleMap x = xMap();
    const QwtScaleMap y = yMap();
    return QRectF(QPointF(x.s1(), y.s1()), QPointF(x.s2(), y.s2()));
}

void GraphView::setShownRange(const QRectF &range)
{
    mIsZoomed = true;
    setInterval(QwtPlot::xBottom, range.left(), range.right());
    setInterval(QwtPlot::yLeft, range.top(), range.bottom());
    redraw();
}

QwtScaleMap GraphView::xMap() const
{
    return mPlot->canvasMap(QwtPlot::xBottom);
}

QwtScaleMap GraphView::yMap() const
{
    return mPlot->canvasMap(QwtPlot::yLeft);
}

// Objects

QVector<unsigned int> GraphView::objectsIn(const QPainterPath &region)
{
    return mTrouble.isEmpty() ? objectsWithin(region) : QVector<unsigned int>();
}

const unsigned char *GraphView::selectedFlags()
{
    return flagBytes(workspace().selection().attributes(geography()), attribute::kSelected, mFlags);
}

int GraphView::hoveredObject() const
{
    return workspace().selection().hovered(geography());
}

QString GraphView::nameOf(int object)
{
    QString name;
    if (mIsReading || !workspace().isBusy())
        workspace().look([&] { name = mNames.of(object, time()); });
    return name;
}

void GraphView::failWithoutValues(int dataset) const
{
    if (workspace().stepsOf(geography()).size() < 2)
        fail(tr("%1 holds no values").arg(datasetName(dataset)));
    fail(
        tr("%1 holds no values at %2").arg(datasetName(dataset), axisOf(geography()).show(time())));
}

QString GraphView::textAt(const QPoint &pixel)
{
    const int object = mTrouble.isEmpty() ? objectAt(pixel) : -1;
    return object >= 0 ? textOf(object) : QString();
}

QString GraphView::textOf(int object)
{
    return nameOf(object);
}

QString GraphView::valueText(int dataset, double value)
{
    return QStringLiteral("%1: %2").arg(
        datasetName(dataset), std::isfinite(value) ? shortNumber(value, 6) : tr("no value"));
}

void GraphView::step(int by)
{
    const int limit = objectLimit();
    if (limit == 0 || !mTrouble.isEmpty())
        return;
    const int start = hoveredObject() >= 0 ? hoveredObject() : by > 0 ? -1 : limit;
    for (int tried = 1; tried <= limit; ++tried) {
        const int object = ((start + by * tried) % limit + limit) % limit;
        if (shows(object)) {
            hover(object);
            return;
        }
    }
}

QVector<unsigned int> GraphView::marked() const
{
    const int object = hoveredObject();
    return object >= 0 ? QVector<unsigned int>{static_cast<unsigned int>(object)}
                       : QVector<unsigned int>();
}

QStringList GraphView::timeOptions() const
{
    const QVector<int> shown = datasets();
    const bool isStatic = std::all_of(shown.begin(), shown.end(), [](int id) {
        const MDataset *const dataset = meridor::datasetOf(id);
        return dataset && dataset->IsStatic();
    });
    return isStatic ? QStringList()
                    : QStringList{QStringLiteral("--at"), axisOf(geography()).show(time())};
}

void GraphView::draw(QPainter &painter, const QSize &size)
{
    // Files are for paper: dark on white, whatever the desktop's colours.
    QPalette light;
    light.setColor(QPalette::Base, Qt::white);
    light.setColor(QPalette::Window, Qt::white);
    light.setColor(QPalette::Text, meridor::colors::ink);
    light.setColor(QPalette::WindowText, meridor::colors::ink);
    const QPalette present = mPlot->palette();
    const bool hasOwn = mPlot->testAttribute(Qt::WA_SetPalette);
    painter.fillRect(QRectF(QPointF(), size), Qt::white);
    if (!mTrouble.isEmpty()) {
        painter.setPen(meridor::colors::softInk);
        painter.drawText(QRectF(QPointF(), size), Qt::AlignCenter | Qt::TextWordWrap, mTrouble);
        return;
    }
    mPlot->setPalette(light);
    setExporting(true);
    QwtPlotRenderer renderer;
    renderer.setDiscardFlags(QwtPlotRenderer::DiscardBackground
                             | QwtPlotRenderer::DiscardCanvasBackground);
    const double margin = std::min(mPlot->fontMetrics().height() / 2.0, size.width() / 20.0);
    renderer.render(mPlot, &painter,
                    QRectF(QPointF(), size).adjusted(margin, margin, -2 * margin, -margin));
    setExporting(false);
    mPlot->setPalette(hasOwn ? present : QPalette());
}

} // namespace meridor
