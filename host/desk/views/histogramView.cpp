// SPDX-License-Identifier: MIT
#include "desk/views/histogramView.h"
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <qwt_plot.h>
#include <qwt_plot_item.h>
#include <qwt_scale_map.h>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/classes.h"
#include "core/render/theme.h"
#include "datainterface/DataAPI.h"
#include "desk/methods/fields.h"
#include "desk/views/classLimits.h"
#include "desk/views/graphCanvas.h"
#include "desk/views/mapLayerView.h"
#include "desk/views/valueHistory.h"

namespace meridor {

class HistogramView::Bars : public QwtPlotItem {
public:
    explicit Bars(const HistogramView &view) : mView(view) { setZ(20); }

    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &) const override
    {
        const GraphColors &colors = mView.colors();
        const auto fill = [&](int bar, double from, double to, const QColor &color) {
            const QRectF part(
                QPointF(xMap.transform(mView.mBins.start + bar * mView.mBins.width),
                        yMap.transform(to)),
                QPointF(xMap.transform(mView.mBins.start + (bar + 1) * mView.mBins.width),
                        yMap.transform(from)));
            // A gap of one pixel tells bars apart, unless they are thin.
            const double gap = part.width() > 4 ? 1 : 0;
            painter->fillRect(part.adjusted(0, 0, -gap, 0), color);
        };
        for (int bar = 0; bar < mView.mCounts.size(); ++bar) {
            if (mView.mClassCounts.isEmpty()) {
                fill(bar, 0, mView.mCounts[bar], colors.fill);
            } else {
                int below = 0;
                for (int i = 0; i < mView.mClassColors.size(); ++i) {
                    const int count = mView.mClassCounts[bar][i];
                    if (count > 0)
                        fill(bar, below, below + count, mView.mClassColors[i]);
                    below += count;
                }
                if (below < mView.mCounts[bar])
                    fill(bar, below, mView.mCounts[bar], meridor::colors::missing);
            }
            if (mView.mSelected.value(bar) > 0)
                fill(bar, 0, mView.mSelected[bar], colors.selected);
        }
        painter->setPen(QPen(colors.ink, 0, Qt::DashLine));
        for (const double limit : innerLimits(mView.mLimits))
            painter->drawLine(QPointF(xMap.transform(limit), yMap.p1()),
                              QPointF(xMap.transform(limit), yMap.p2()));
    }

private:
    const HistogramView &mView;
};

HistogramView::HistogramView(Workspace &workspace, int dataset)
    : GraphView(workspace, VORN_GetGeographyId(dataset)), mDataset(dataset)
{
    (new Bars(*this))->attach(plot());
    connect(&workspace, &Workspace::idle, this, [this] { findLayer(); });
    join();
}

QString HistogramView::title() const
{
    return tr("Histogram of %1").arg(datasetName(mDataset));
}

void HistogramView::read()
{
    mValues = numbersAt(shown(mDataset), time());
    QVector<double> present;
    std::copy_if(mValues.begin(), mValues.end(), std::back_inserter(present),
                 [](double value) { return std::isfinite(value); });
    if (present.isEmpty())
        failWithoutValues(mDataset);
    mBins = binsOf(present);
    mCounts.fill(0, mBins.count);
    mBarOf.fill(-1, mValues.size());
    for (int i = 0; i < mValues.size(); ++i) {
        if (!std::isfinite(mValues[i]))
            continue;
        const int bar = mBins.of(mValues[i]);
        mBarOf[i] = static_cast<qint16>(bar);
        ++mCounts[bar];
    }
    mPointed = std::min(mPointed, mBins.count - 1);
    countClasses();
}

void HistogramView::countClasses()
{
    mClassCounts.clear();
    if (mClassColors.isEmpty())
        return;
    mClassCounts.fill(QVector<int>(mClassColors.size()), mBins.count);
    for (int i = 0; i < mBarOf.size(); ++i)
        if (const int of = mBarOf[i] < 0 ? -1 : classOf(mValues[i], mLimits); of >= 0)
            ++mClassCounts[mBarOf[i]][of];
}

void HistogramView::setClasses(const QVector<double> &limits, const QVector<QColor> &colors)
{
    const bool fits = limits.size() == colors.size() + 1;
    mLimits = fits ? limits : QVector<double>();
    mClassColors = fits ? colors : QVector<QColor>();
    if (!trouble().isEmpty())
        return;
    countClasses();
    redraw();
}

void HistogramView::setFollowsMap(bool follows)
{
    mFollowsMap = follows;
    if (!follows) {
        if (mLayer)
            mLayer->disconnect(this);
        mLayer = nullptr;
        setClasses({}, {});
        return;
    }
    findLayer();
    if (!mLayer)
        workspace().tell(
            tr("No map shows %1; the classes are shown when one does.").arg(datasetName(mDataset)));
}

/// The youngest map of the dataset with limits between its classes.
void HistogramView::findLayer()
{
    if (!mFollowsMap || mLayer)
        return;
    for (MLinker *const view : workspace().views())
        if (auto *const layer = qobject_cast<MapLayerView *>(view);
            layer && layer->dataset() == mDataset && layer->classes())
            mLayer = layer;
    if (!mLayer)
        return;
    connect(mLayer, &MapLayerView::legendChanged, this, &HistogramView::takeClasses);
    connect(mLayer, &QObject::destroyed, this, [this] {
        mLayer = nullptr;
        setClasses({}, {});
        findLayer();
    });
    takeClasses();
}

void HistogramView::takeClasses()
{
    if (!mLayer || !mLayer->classes())
        return;
    QVector<QColor> colors;
    for (int i = 0; i < mLayer->classes()->entries().size(); ++i)
        colors.append(mLayer->colorOf(i));
    setClasses(mLayer->classes()->limits(), colors);
}

double HistogramView::limitAt(int inner) const
{
    return xMap().transform(innerLimits(mLimits).value(inner));
}

bool HistogramView::grab(const QPoint &pixel)
{
    mGrabbed = -1;
    double nearest = plot()->fontMetrics().height() / 3.0;
    for (int i = 0; mLayer && i < innerLimits(mLimits).size(); ++i) {
        const double away = std::abs(limitAt(i) - pixel.x());
        if (away < nearest) {
            nearest = away;
            mGrabbed = i;
        }
    }
    return mGrabbed >= 0;
}

void HistogramView::dragGrabbed(const QPoint &pixel)
{
    if (mLayer)
        moveGrabbed(valueAt(pixel).x());
}

bool HistogramView::moveByKey(Qt::Key key)
{
    constexpr double kSteps = 100; // over all classes
    const QVector<double> inner = innerLimits(mLimits);
    const bool chooses = key == Qt::Key_Up || key == Qt::Key_Down;
    if (!mLayer || inner.isEmpty() || !(chooses || key == Qt::Key_Left || key == Qt::Key_Right))
        return false;
    const int last = inner.size() - 1;
    if (mGrabbed < 0 || mGrabbed > last)
        mGrabbed = key == Qt::Key_Down ? last : 0;
    else if (chooses)
        mGrabbed = std::clamp(mGrabbed + (key == Qt::Key_Up ? 1 : -1), 0, last);
    const double step = (mLimits.last() - mLimits.first()) / kSteps;
    if (!chooses)
        moveGrabbed(inner[mGrabbed] + (key == Qt::Key_Right ? step : -step));
    redraw();
    Q_EMIT pointedAt(tr("limit %1").arg(shortNumber(innerLimits(mLimits).value(mGrabbed), 6)));
    return true;
}

/// Here and in the map.
void HistogramView::moveGrabbed(double value)
{
    const double least = std::abs(valueAt(QPointF(1, 0)).x() - valueAt(QPointF(0, 0)).x());
    const auto moved = withMovedLimit(innerLimits(mLimits), mGrabbed, value, mLimits.first(),
                                      mLimits.last(), least);
    if (!moved)
        return;
    ClassRule rule = mLayer->rule();
    rule.method.clear();
    rule.limits = *moved;
    mLayer->setRule(rule, mLayer->hasAllTimes());
}

void HistogramView::markSelected()
{
    const unsigned char *const selected = selectedFlags();
    mSelected.fill(0, mBins.count);
    int chosen = 0;
    for (int i = 0; selected && i < mBarOf.size(); ++i) {
        if (selected[i] && mBarOf[i] >= 0) {
            ++mSelected[mBarOf[i]];
            ++chosen;
        }
    }
    int count = 0;
    for (const int of : std::as_const(mCounts))
        count += of;
    setSummary(counted(count, tr("%1 value in bars %2 wide"), tr("%1 values in bars %2 wide"))
                   .arg(shortNumber(mBins.width, 6)),
               chosen > 0 ? tr("%1 selected").arg(chosen) : QString());
}

QRectF HistogramView::barRect(int bar) const
{
    const QwtScaleMap x = xMap();
    const QwtScaleMap y = yMap();
    return QRectF(QPointF(x.transform(mBins.start + bar * mBins.width), y.transform(mCounts[bar])),
                  QPointF(x.transform(mBins.start + (bar + 1) * mBins.width), y.transform(0)));
}

int HistogramView::barAt(const QPointF &pixel) const
{
    constexpr double kReach = 3; // a bar of few objects is hardly a pixel high
    const double value = xMap().invTransform(pixel.x());
    const double at = std::floor((value - mBins.start) / mBins.width);
    if (!(at >= 0 && at < mBins.count))
        return -1;
    const int bar = static_cast<int>(at);
    const QRectF rect = barRect(bar);
    return mCounts[bar] > 0 && pixel.y() >= rect.top() - kReach
                   && pixel.y() <= rect.bottom() + kReach
               ? bar
               : -1;
}

QString HistogramView::textOfBar(int bar) const
{
    const double low = mBins.start + bar * mBins.width;
    QString text = tr("%1 to %2: ").arg(shortNumber(low, 6), shortNumber(low + mBins.width, 6))
                   + counted(mCounts[bar], tr("%1 value"), tr("%1 values"));
    if (mSelected[bar] > 0)
        text += QStringLiteral(", ") + tr("%1 selected").arg(mSelected[bar]);
    return text;
}

QString HistogramView::textAt(const QPoint &pixel)
{
    const int bar = trouble().isEmpty() ? barAt(pixel) : -1;
    return bar >= 0 ? textOfBar(bar) : QString();
}

QString HistogramView::textOf(int object)
{
    const double value = object < mValues.size() ? mValues[object] : std::nan("");
    return QStringLiteral("%1 \u2014 %2").arg(nameOf(object), valueText(mDataset, value));
}

void HistogramView::drawMark(QPainter &painter, int object)
{
    if (mLayer && mGrabbed >= 0 && mGrabbed < innerLimits(mLimits).size() && widget()->hasFocus()) {
        painter.setPen(QPen(colors().ink, 3));
        painter.drawLine(QPointF(limitAt(mGrabbed), 0),
                         QPointF(limitAt(mGrabbed), widget()->height()));
    }
    const int bar = object >= 0 ? static_cast<int>(mBarOf.value(object, -1)) : mPointed;
    if (bar < 0 || bar >= mBins.count)
        return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colors().ink, 2));
    painter.drawRect(barRect(bar));
}

void HistogramView::step(int by)
{
    if (!trouble().isEmpty())
        return;
    const int start = mPointed >= 0 ? mPointed : by > 0 ? -1 : mBins.count;
    for (int tried = 1; tried <= mBins.count; ++tried) {
        const int bar = ((start + by * tried) % mBins.count + mBins.count) % mBins.count;
        if (mCounts[bar] == 0)
            continue;
        mPointed = bar;
        static_cast<GraphCanvas *>(widget())->refreshMarks();
        Q_EMIT pointedAt(textOfBar(bar));
        return;
    }
}

QVector<unsigned int> HistogramView::marked() const
{
    if (mPointed < 0 || mPointed >= mBins.count)
        return {};
    QVector<bool> bars(mBins.count);
    bars[mPointed] = true;
    return objectsOf(bars);
}

QVector<unsigned int> HistogramView::objectsOf(const QVector<bool> &bars) const
{
    QVector<unsigned int> objects;
    for (int i = 0; i < mBarOf.size(); ++i)
        if (mBarOf[i] >= 0 && bars[mBarOf[i]])
            objects.append(static_cast<unsigned int>(i));
    return objects;
}

QVector<unsigned int> HistogramView::objectsWithin(const QPainterPath &region)
{
    QVector<bool> bars(mBins.count);
    if (region.boundingRect().isEmpty()) {
        const int bar = region.elementCount() > 0 ? barAt(QPointF(region.elementAt(0))) : -1;
        if (bar < 0)
            return {};
        bars[bar] = true;
        return objectsOf(bars);
    }
    for (int bar = 0; bar < mBins.count; ++bar)
        bars[bar] = mCounts[bar] > 0
                    && region.intersects(barRect(bar).adjusted(0, -1, 0, 0)); // at least one pixel
    return objectsOf(bars);
}

GraphScale HistogramView::xScale() const
{
    return {datasetName(mDataset), mBins.start, mBins.start + mBins.count * mBins.width, false,
            true};
}

GraphScale HistogramView::yScale() const
{
    const int most = mCounts.isEmpty() ? 1 : *std::max_element(mCounts.begin(), mCounts.end());
    return {rasterOf(mDataset) ? tr("number of cells") : tr("number of objects"), 0, most * 1.05,
            false, true};
}

QStringList HistogramView::commandLine(const QString &picture) const
{
    QStringList line{QStringLiteral("plot"), QStringLiteral("histogram"), workspace().commandPath(),
                     datasetWord(mDataset), picture};
    if (!mLimits.isEmpty()) {
        QStringList limits;
        for (const double limit : mLimits)
            if (limits.isEmpty() || limits.last() != exactNumber(limit))
                limits.append(exactNumber(limit));
        line << QStringLiteral("--breaks") << limits.join(QLatin1Char(','));
        if (mLayer && !mLayer->rule().palette.isEmpty())
            line << QStringLiteral("--palette") << mLayer->rule().palette;
        if (mLayer && mLayer->rule().reversed)
            line << QStringLiteral("--reverse");
    } else {
        line << QStringLiteral("--method") << QStringLiteral("equal") << QStringLiteral("--count")
             << QStringLiteral("1");
    }
    return line + timeOptions();
}

} // namespace meridor
