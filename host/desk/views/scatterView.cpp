// SPDX-License-Identifier: MIT
#include "desk/views/scatterView.h"
#include <algorithm>
#include <cmath>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/render/classes.h"
#include "core/render/theme.h"
#include "datainterface/DataAPI.h"
#include "desk/methods/fields.h"
#include "desk/views/valueHistory.h"

namespace meridor {

ScatterView::ScatterView(Workspace &workspace, int xDataset, int yDataset)
    : PointView(workspace, VORN_GetGeographyId(xDataset)), mX(xDataset), mY(yDataset)
{
    join();
}

QString ScatterView::title() const
{
    return tr("%1 and %2").arg(datasetName(mX), datasetName(mY));
}

PointView::Points ScatterView::points()
{
    const QVector<double> x = numbersAt(shown(mX), time());
    const QVector<double> y = mX == mY ? x : numbersAt(shown(mY), time());
    Points points;
    points.places.resize(static_cast<std::size_t>(std::min(x.size(), y.size())));
    bool any = false;
    for (std::size_t i = 0; i < points.places.size(); ++i) {
        const int object = static_cast<int>(i);
        points.places[i] = QPointF(x[object], y[object]);
        any = any || (std::isfinite(x[object]) && std::isfinite(y[object]));
    }
    if (!any && workspace().stepsOf(geography()).size() < 2)
        fail(tr("No object has a value of both %1 and %2").arg(datasetName(mX), datasetName(mY)));
    if (!any)
        fail(tr("No object has a value of both %1 and %2 at %3")
                 .arg(datasetName(mX), datasetName(mY), axisOf(geography()).show(time())));
    if (mLimits.size() == mClassColors.size() + 1) {
        points.classColors = mClassColors;
        for (const double value : x)
            points.classes.append(classOf(value, mLimits));
        points.classes.resize(static_cast<int>(points.places.size()));
    }
    return points;
}

void ScatterView::setClasses(const QVector<double> &limits, const QVector<QColor> &colors)
{
    mLimits = limits;
    mClassColors = colors;
    workspace().look([this] { timeChanged(); });
}

QString ScatterView::lineText(const Line &line) const
{
    QString text = tr("slope %1").arg(line.slope, 0, 'g', 6);
    if (std::isfinite(line.r))
        text = QStringLiteral("r = %1, ").arg(grouped(line.r, 3)) + text;
    return text;
}

QString ScatterView::textOf(int object)
{
    if (!shows(object))
        return nameOf(object);
    const QPointF &place = places()[static_cast<std::size_t>(object)];
    return QStringLiteral("%1 \u2014 %2, %3")
        .arg(nameOf(object), valueText(mX, place.x()), valueText(mY, place.y()));
}

GraphScale ScatterView::xScale() const
{
    return {datasetName(mX), range().left(), range().right()};
}

GraphScale ScatterView::yScale() const
{
    return {datasetName(mY), range().top(), range().bottom()};
}

QStringList ScatterView::commandLine(const QString &picture) const
{
    return QStringList{QStringLiteral("plot"), QStringLiteral("scatter"), workspace().commandPath(),
                       datasetWord(mX),        datasetName(mY),           picture}
           + timeOptions();
}

} // namespace meridor
