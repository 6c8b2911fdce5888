// SPDX-License-Identifier: MIT
#include "desk/views/moranScatterView.h"
#include <cmath>
#include <limits>
#include <qwt_plot.h>
#include <qwt_plot_marker.h>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/graph.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/WeightsAPI.h"
#include "desk/methods/fields.h"

namespace meridor {

MoranScatterView::MoranScatterView(Workspace &workspace, int dataset, int weights)
    : PointView(workspace, VORN_GetGeographyId(dataset)),
      mDataset(dataset),
      mWeights(weights),
      mCross(new QwtPlotMarker())
{
    mCross->setLineStyle(QwtPlotMarker::Cross);
    mCross->setValue(0, 0);
    mCross->setZ(26);
    mCross->attach(plot());
    connect(&workspace, &Workspace::weightSetDying, this, [this](int owner, int set) {
        if (owner == geography() && (set == mWeights || set == (mWeights & 0xffff))) {
            mWeights = -1;
            rereadSoon();
        }
    });
    connect(&workspace, &Workspace::weightSetsChanged, this, [this](int owner) {
        if (owner == geography())
            rereadSoon();
    });
    join();
}

QString MoranScatterView::title() const
{
    return tr("Moran scatter of %1").arg(datasetName(mDataset));
}

PointView::Points MoranScatterView::points()
{
    if (mWeights < 0)
        fail(tr("The weight set of this graph was removed; choose another one"));
    const Progress progress("Moran scatter", "Calculating...");
    const MoranPlaces moran =
        moranPlaces(shown(mDataset), mWeights, Interval{time(), time(), true, true}, progress);
    mMoran = moran.moran;
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    const auto count =
        static_cast<std::size_t>(VORN_GetGeographyProperties(geography()).objectCount);
    Points points;
    points.places.assign(count, QPointF(kNone, kNone));
    points.classes.fill(-1, static_cast<int>(count));
    // The colours of core/plot: high among high, low among low, high among low, low among high.
    points.classColors = {lineColor(5), lineColor(0), lineColor(1), lineColor(2)};
    for (int i = 0; i < moran.objects.size(); ++i) {
        const QPointF &place = moran.places[i];
        const bool high = place.x() > 0;
        points.places[static_cast<std::size_t>(moran.objects[i])] = place;
        points.classes[moran.objects[i]] =
            high == (place.y() > 0) ? (high ? 0 : 1) : (high ? 2 : 3);
    }
    return points;
}

void MoranScatterView::recolor()
{
    mCross->setLinePen(colors().softInk);
    PointView::recolor();
}

QString MoranScatterView::lineText(const Line &line) const
{
    const QString slope = tr("slope %1").arg(shortNumber(line.slope, 3));
    return &line == &this->line()
               ? tr("Moran's I %1").arg(shortNumber(mMoran, 3)) + QStringLiteral(", ") + slope
               : slope;
}

QString MoranScatterView::textOf(int object)
{
    if (!shows(object))
        return nameOf(object);
    const QPointF &place = places()[static_cast<std::size_t>(object)];
    return tr("%1 \u2014 %2 standard deviations, neighbours %3")
        .arg(nameOf(object), shortNumber(place.x()), shortNumber(place.y()));
}

GraphScale MoranScatterView::xScale() const
{
    return {tr("%1, standard deviations from the mean").arg(datasetName(mDataset)), range().left(),
            range().right()};
}

GraphScale MoranScatterView::yScale() const
{
    return {tr("weighted sum of the neighbours"), range().top(), range().bottom()};
}

QStringList MoranScatterView::commandLine(const QString &picture) const
{
    if (mWeights < 0)
        return {};
    return QStringList{QStringLiteral("plot"), QStringLiteral("moran"), workspace().commandPath(),
                       datasetWord(mDataset),  weightSetWord(mWeights), picture}
           + timeOptions();
}

} // namespace meridor
