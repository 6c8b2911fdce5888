// SPDX-License-Identifier: MIT
#include "desk/views/historyView.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <qwt_scale_map.h>
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {

HistoryView::HistoryView(Workspace &workspace, int dataset)
    : GraphView(workspace, VORN_GetGeographyId(dataset)), mDataset(dataset)
{
}

void HistoryView::valuesChanged()
{
    mIsLoaded = false;
    GraphView::valuesChanged();
}

void HistoryView::read()
{
    if (mIsLoaded && !meridor::datasetOf(mDataset)->IsStatic())
        return;
    mIsLoaded = false;
    load();
    mIsLoaded = true;
}

void HistoryView::loadHistory(const std::function<void(int, const QVector<double> &)> &visit)
{
    mObjects = VORN_GetGeographyProperties(geography()).objectCount;
    mLow = std::numeric_limits<double>::infinity();
    mHigh = -mLow;
    mHistory.load(shown(mDataset), time(), [&](int step, const QVector<double> &values) {
        for (const double value : values) {
            if (!std::isfinite(value))
                continue;
            mLow = std::min(mLow, value);
            mHigh = std::max(mHigh, value);
        }
        visit(step, values);
    });
}

GraphScale HistoryView::yScale() const
{
    return {datasetName(mDataset), mLow, mHigh};
}

QString HistoryView::textOf(int object)
{
    const int step = mHistory.stepAt(time());
    return step < 0 || !mHistory.isKept()
               ? nameOf(object)
               : QStringLiteral("%1 \u2014 %2")
                     .arg(nameOf(object), valueText(mDataset, mHistory.value(step, object)));
}

QVector<int> HistoryView::selectedObjects()
{
    const unsigned char *const selected = selectedFlags();
    QVector<int> objects;
    for (int i = 0; selected && i < mObjects; ++i)
        if (selected[i])
            objects.append(i);
    return objects;
}

QVector<unsigned int> HistoryView::objectsWhere(const QPainterPath &region,
                                                const std::function<Span(int step)> &spanOf) const
{
    const QwtScaleMap y = yMap();
    const QRectF area = region.boundingRect();
    QPainterPath rectangle;
    rectangle.addRect(area);
    const bool isRectangle = region == rectangle;
    const double low = y.invTransform(area.bottom());
    const double high = y.invTransform(area.top());
    QVector<bool> found(mObjects);
    for (int step = 0; step < mHistory.steps(); ++step) {
        const Span span = spanOf(step);
        const double left = std::max(span.left, area.left());
        const double right = std::min(span.right, area.right());
        if (!(left <= right))
            continue;
        const QVector<double> values = mHistory.values(step);
        for (int i = 0; i < std::min(mObjects, values.size()); ++i)
            if (values[i] >= low && values[i] <= high
                && (isRectangle
                    || region.contains(QPointF((left + right) / 2, y.transform(values[i])))))
                found[i] = true;
    }
    QVector<unsigned int> objects;
    for (int i = 0; i < mObjects; ++i)
        if (found[i])
            objects.append(static_cast<unsigned int>(i));
    return objects;
}

} // namespace meridor
