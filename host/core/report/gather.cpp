// SPDX-License-Identifier: MIT
#include "core/report/gather.h"
#include <QFileInfo>
#include <QSet>
#include <algorithm>
#include <cmath>
#include "core/analysis/moranOverTime.h"
#include "core/analysis/weightSets.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "core/project/shapeAccess.h"
#include "core/project/timeMessages.h"
#include "core/report/gatherLayers.h"
#include "core/report/gatherShapes.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"

namespace meridor {
namespace {

/// The name of the coordinate system of a WKT text; any other text unchanged.
QString projectionName(const QString &text)
{
    const int open = text.indexOf(QLatin1String("[\""));
    return open > 0 && !text.left(open).contains(QLatin1Char(' '))
               ? text.section(QLatin1Char('"'), 1, 1)
               : text;
}

bool before(const Interval &a, const Interval &b)
{
    return a.startTime != b.startTime ? a.startTime < b.startTime : a.endTime < b.endTime;
}

class GeographyReport {
public:
    GeographyReport(int id, const QVector<int> &datasets, const ReportPlan &plan)
        : mId(id),
          mDatasets(datasets),
          mPlan(plan),
          mAxis(axisOf(id)),
          mProps(VORN_GetGeographyProperties(id)),
          mIsGrid(mProps.type == GeoProps::Raster)
    {
    }

    ReportGeography gather()
    {
        mShown.name = geographyName(mId);
        mShown.kind = QLatin1String(shapeName(mProps.type));
        mShown.objects = mProps.objectCount;
        mShown.projection =
            projectionName(mProps.metaData.value(QStringLiteral("Projection")).toString());
        mShown.history = mProps.metaData.value(QStringLiteral("History")).toString();
        addSteps();
        if (mIsGrid) {
            chooseCells(mId, std::max(1, static_cast<int>(mShown.steps.size())), mShown);
            mShown.cellRatio = cellRatio();
        } else {
            mShown.keys = objectKeys(mId);
            mShown.labels = labels();
            mShown.shapes = gatherShapes(mId, mShown.steps, mPlan.simplify, &stopIfCancelled);
        }
        for (const int dataset : mDatasets) {
            ReportLayer layer =
                gatherLayer(dataset, realizationOf(dataset), mShown, &stopIfCancelled);
            if (!layer.rows.isEmpty())
                mShown.layers.append(layer);
        }
        mShown.first = firstLayer();
        for (const QStringList &group : mPlan.sameClasses)
            shareClasses(group);
        addSideLayers();
        if (mShown.sideMaps.isEmpty())
            addSideMaps();
        if (!mIsGrid)
            for (const int set : geographyOf(mId)->GetSpatialWeightsIds())
                addWeightSet(set);
        return mShown;
    }

private:
    bool isWanted(const Interval &when, const QVector<Interval> &wanted) const
    {
        return wanted.isEmpty()
               || std::any_of(wanted.begin(), wanted.end(), [&](const Interval &span) {
                      return TimeStamp(span).overlaps(TimeStamp(when));
                  });
    }

    int realizationOf(int dataset) const
    {
        return std::min(mPlan.realization, std::max(1, datasetOf(dataset)->GetRealizationCount()))
               - 1;
    }

    /// Adds the times at which datasets have values, and those at which objects change.
    void addSteps()
    {
        QVector<Interval> wanted;
        for (const QString &text : mPlan.times)
            if (const auto span = mAxis.range(text))
                wanted.append(*span);
        QVector<Interval> times;
        for (const int dataset : mDatasets)
            if (!datasetOf(dataset)->IsStatic())
                times += dataTimes(dataset, realizationOf(dataset));
        QVector<Interval> changes;
        if (!mIsGrid && !mProps.isStatic)
            VORN_GetAllObjectTimes(mId, changes);
        times += changes;
        std::sort(times.begin(), times.end(), &before);
        times.erase(std::unique(times.begin(), times.end()), times.end());
        for (const Interval &when : times) {
            if (!isWanted(when, wanted))
                continue;
            if (changes.contains(when))
                mShown.existence.append(mShown.steps.size());
            mShown.steps.append({when, instantOf(when), mAxis.show(when)});
        }
        if (mShown.steps.isEmpty() && !times.isEmpty())
            fail(QStringLiteral("%1 has nothing at these times").arg(mShown.name));
        if (mShown.steps.isEmpty())
            mShown.steps.append({Interval(), 0, QStringLiteral("always")});
        if (mShown.existence.isEmpty())
            mShown.existence.append(mShown.steps.size() - 1);
    }

    /// The index of the layer of a dataset, -1 for one of another geography.
    int layerNamed(const QString &name) const
    {
        for (int i = 0; i < mShown.layers.size(); ++i)
            if (name == mShown.layers[i].name
                || name == mShown.name + QLatin1Char('/') + mShown.layers[i].name)
                return i;
        return -1;
    }

    void shareClasses(const QStringList &group)
    {
        QVector<int> layers;
        for (const QString &name : group)
            if (const int layer = layerNamed(name); layer >= 0)
                layers.append(layer);
        if (layers.isEmpty())
            return;
        if (layers.size() < group.size())
            fail(QStringLiteral("%1 are datasets of different geographies")
                     .arg(group.join(QStringLiteral(", "))),
                 "same-classes");
        LayerView shared = mShown.layers[layers.first()].views.first();
        for (const int i : qAsConst(layers)) {
            const ReportLayer &layer = mShown.layers[i];
            if (layer.isText)
                fail(QStringLiteral("%1 holds texts").arg(layer.name), "same-classes");
            for (const QVector<double> &row : layer.rows)
                for (const double value : row)
                    if (!std::isnan(value)) {
                        shared.breaks.first() = std::min(shared.breaks.first(), value);
                        shared.breaks.last() = std::max(shared.breaks.last(), value);
                    }
        }
        for (const int i : qAsConst(layers)) {
            ReportLayer &layer = mShown.layers[i];
            layer.view = 0;
            layer.views.first() = shared;
            if (i == layers.first())
                continue;
            layer.classesOf = mShown.layers[layers.first()].name;
            layer.views.first().name = QStringLiteral("Classes of ") + layer.classesOf;
        }
    }

    /// The first layer that the plan names; if it names none, the one with most times, numbers
    /// before texts.
    int firstLayer() const
    {
        for (const QString &name : mPlan.datasets)
            if (const int layer = layerNamed(name); layer >= 0)
                return layer;
        const auto rank = [](const ReportLayer &layer) {
            return layer.rows.size() + (layer.isText ? 0 : 1);
        };
        int best = -1;
        for (int i = 0; i < mShown.layers.size(); ++i)
            if (best < 0 || rank(mShown.layers[i]) > rank(mShown.layers[best]))
                best = i;
        return best;
    }

    /// More polygons than a page can show several times at once have no small maps.
    bool canStandBeside() const
    {
        constexpr int kMostObjects = 800;
        return mIsGrid
               || (mShown.kind == QLatin1String("polygons") && mShown.objects <= kMostObjects);
    }

    /// A small map of each dataset of the plan that is one of this geography.
    void addSideLayers()
    {
        for (const QString &name : mPlan.beside) {
            const int layer = layerNamed(name);
            if (layer < 0)
                continue;
            if (!canStandBeside())
                fail(QStringLiteral("maps of %1 cannot stand side by side: these are maps of grids "
                                    "and of at most 800 polygons")
                         .arg(mShown.name),
                     "beside");
            const QVector<int> &steps = mShown.layers[layer].steps;
            mShown.sideMaps.append({steps.isEmpty() ? mShown.existence.last() : steps.last(),
                                    mShown.layers[layer].name, layer});
        }
    }

    /// The steps of the grid that the plan's times are in.
    void addSideSteps()
    {
        for (const QString &text : mPlan.sideMaps)
            if (const auto span = mAxis.range(text))
                for (int step = 0; step < mShown.steps.size(); ++step)
                    if (TimeStamp(mShown.steps[step].when).contains(span->startTime))
                        mShown.sideMaps.append({step, text});
    }

    /// Chooses the steps of the small maps, if shapes change.
    void addSideMaps()
    {
        if (mIsGrid) {
            addSideSteps();
            return;
        }
        constexpr int kMaps = 4;
        const bool changes =
            std::any_of(mShown.shapes.objects.begin(), mShown.shapes.objects.end(),
                        [](const QVector<ShapeChange> &shapes) { return shapes.size() > 2; });
        if (!canStandBeside() || !changes)
            return;
        for (const QString &text : mPlan.sideMaps)
            if (const auto span = mAxis.range(text))
                if (const int step = changeBefore(span->startTime); step >= 0)
                    mShown.sideMaps.append({step, text});
        if (!mPlan.sideMaps.isEmpty() || mShown.existence.size() < kMaps)
            return;
        const double first = static_cast<double>(instantAt(mShown.existence.first()));
        const double last = static_cast<double>(instantAt(mShown.existence.last()));
        for (int map = 0; map < kMaps; ++map) {
            const double wanted = first + (last - first) * map / (kMaps - 1);
            const int step = changeBefore(static_cast<qint64>(wanted));
            if (mShown.sideMaps.isEmpty() || mShown.sideMaps.last().step != step)
                mShown.sideMaps.append(
                    {step, mShown.steps[step].text.section(QLatin1Char('/'), 0, 0)});
        }
    }

    qint64 instantAt(int step) const { return mShown.steps[step].instant; }

    /// The last change of shapes that starts at the time or before; -1 if there is none.
    int changeBefore(qint64 time) const
    {
        int found = -1;
        for (const int step : mShown.existence)
            if (mShown.steps[step].when.startTime <= time)
                found = step;
        return found;
    }

    /// The ratio of width and height of a cell; for degrees at the middle latitude.
    double cellRatio() const
    {
        const QString projection = projectionText(mId).toUpper();
        const bool degrees = projection.contains(QLatin1String("GEOG"))
                             && !projection.contains(QLatin1String("PROJ"));
        constexpr double kRadian = 3.14159265358979323846 / 180;
        const double middle = qBound(-80.0, mProps.bounds.center().y(), 80.0);
        const double ratio = mProps.pixelHeight > 0 ? mProps.pixelWidth / mProps.pixelHeight : 1;
        return ratio * (degrees ? std::cos(middle * kRadian) : 1);
    }

    /// Display names of the objects: their names, else their keys.
    QStringList labels() const
    {
        const QStringList names = objectNames(mId);
        QStringList texts = mShown.keys;
        for (int i = 0; i < names.size() && i < texts.size(); ++i)
            if (!names[i].isNull())
                texts[i] = names[i];
        return texts;
    }

    /// The steps at which the lists may differ from those of the step before.
    QVector<int> statesOf(const AdjacencySet &set) const
    {
        QSet<int> changed{0};
        for (const QVector<ShapeChange> &changes : mShown.shapes.objects)
            for (const ShapeChange &change : changes)
                changed.insert(change.step);
        QVector<int> steps;
        for (int step = 0; step < mShown.steps.size(); ++step)
            if (set.IsCustom() || changed.contains(step))
                steps.append(step);
        return steps;
    }

    bool existsAt(int step) const
    {
        return std::any_of(mShown.shapes.objects.begin(), mShown.shapes.objects.end(),
                           [step](const QVector<ShapeChange> &changes) {
                               const auto next = std::find_if(changes.begin(), changes.end(),
                                                              [step](const ShapeChange &change) {
                                                                  return change.step > step;
                                                              });
                               return next != changes.begin() && (next - 1)->shape >= 0;
                           });
    }

    void addWeightSet(int id)
    {
        const AdjacencySet &set = weightSetOf(id);
        ReportLinks links{set.GetName(), describe(set), {}};
        for (const int step : statesOf(set)) {
            LinkState state{step, 0, 0, 0, 0, {}, QVector<QVector<int>>(mProps.objectCount)};
            if (existsAt(step) && !neighborsAt(id, step, state))
                continue;
            if (links.states.isEmpty() || links.states.last().neighbors != state.neighbors
                || links.states.last().objects != state.objects)
                links.states.append(state);
        }
        mShown.links.append(links);
        // If there are datasets over time, static ones are mostly codes and areas, and are left
        // out.
        const bool moves = std::any_of(mDatasets.begin(), mDatasets.end(), [](int dataset) {
            return datasetOf(dataset)->IsNumeric() && !datasetOf(dataset)->IsStatic();
        });
        for (const int dataset : mDatasets)
            if (!moves || !datasetOf(dataset)->IsStatic())
                addMoran(dataset, id);
    }

    /// False if an imported set has no lists at the time.
    bool neighborsAt(int id, int step, LinkState &state) const
    {
        try {
            visitNeighbors(id, shapeTime(mId, mShown.steps[step].instant),
                           [&](int object, const QVector<neighborDatum> &neighbors) {
                               const int count = neighbors.size();
                               state.least = state.objects == 0 ? count : qMin(state.least, count);
                               state.most = qMax(state.most, count);
                               state.links += count;
                               ++state.objects;
                               if (count == 0)
                                   state.islands.append(object);
                               for (const neighborDatum &neighbor : neighbors)
                                   state.neighbors[object].append(neighbor.id);
                           });
        } catch (const Failure &failure) {
            if (failure.kind() == FailureKind::Cancelled || !weightSetOf(id).IsCustom())
                throw;
            return false;
        }
        return true;
    }

    void addMoran(int dataset, int set)
    {
        const MDataset &values = *datasetOf(dataset);
        if (!values.IsNumeric() || dataset == keyDataset(mId))
            return;
        MoranPlan plan;
        plan.dataset = dataset;
        plan.weightSet = set;
        plan.permutations = mPlan.permutations;
        plan.seed = mPlan.seed;
        QVector<int> steps;
        plan.realization = realizationOf(dataset);
        const QVector<Interval> times = dataTimes(dataset, plan.realization);
        for (int step = 0; step < mShown.steps.size() && !values.IsStatic(); ++step)
            if (times.contains(mShown.steps[step].when)) {
                plan.times.append(mShown.steps[step].when);
                steps.append(step);
            }
        if (values.IsStatic())
            plan.times = times;
        if (plan.times.isEmpty())
            return;
        ReportMoran moran{
            datasetName(dataset), weightSetOf(set).GetName(), plan.permutations, plan.seed, {}};
        const Progress progress("Moran", "Permuting...");
        for (const MoranAt &found : moranOverTime(plan, progress)) {
            const MoranTest &test = found.whole;
            if (!std::isfinite(test.value))
                continue; // all values are equal, such as those of stored results of moran
            const int position = static_cast<int>(
                std::find(plan.times.begin(), plan.times.end(), found.when) - plan.times.begin());
            moran.rows.append(
                {steps.value(position, -1),
                 values.IsStatic() ? QStringLiteral("always") : mAxis.show(found.when),
                 static_cast<int>(found.objects.size()), test.value, test.expectation, test.deviate,
                 test.p, test.low, test.high});
        }
        if (!moran.rows.isEmpty())
            mShown.moran.append(moran);
    }

    int mId;
    QVector<int> mDatasets;
    const ReportPlan &mPlan;
    TimeAxis mAxis;
    GeoProps mProps;
    bool mIsGrid;
    ReportGeography mShown;
};

/// The datasets of the plan by geography; all datasets in the order of the project if it names
/// none.
QVector<QPair<int, QVector<int>>> chosenDatasets(const ReportPlan &plan)
{
    QVector<QPair<int, QVector<int>>> chosen;
    QSet<int> wanted;
    for (const QString &name : plan.datasets)
        wanted.insert(findDataset(name));
    for (const int geography : geographyIds()) {
        QVector<int> ids;
        for (const int id : datasetIds(geography))
            if (wanted.isEmpty() || wanted.contains(id))
                ids.append(id);
        if (wanted.isEmpty() || !ids.isEmpty())
            chosen.append({geography, ids});
    }
    if (chosen.isEmpty())
        fail(QStringLiteral("the project holds no geography"));
    return chosen;
}

void requireTimes(const ReportPlan &plan, const QVector<QPair<int, QVector<int>>> &chosen)
{
    for (const QString &text : plan.times + plan.sideMaps)
        if (std::none_of(chosen.begin(), chosen.end(), [&](const auto &entry) {
                return axisOf(entry.first).range(text).has_value();
            }))
            failUsage(chosen.size() == 1 ? whyNoRange(axisOf(chosen.first().first), text)
                                         : QStringLiteral("%1 is no time of the project").arg(text),
                      plan.times.contains(text) ? "times" : "maps");
}

/// Raises a Failure for a realization that a dataset with several does not have, or that none has.
void requireRealization(const ReportPlan &plan, const QVector<QPair<int, QVector<int>>> &chosen)
{
    QVector<int> all;
    for (const auto &entry : chosen)
        all += entry.second;
    for (const int dataset : std::as_const(all))
        realizationIndex(dataset, plan.realization, all);
}

/// Raises a Failure for datasets beside each other, or with the same classes, that are not in the
/// report.
void requireShown(const ReportPlan &plan, const QVector<QPair<int, QVector<int>>> &chosen)
{
    const auto require = [&chosen](const QString &name, const char *setting) {
        const int id = findDataset(name);
        if (std::none_of(chosen.begin(), chosen.end(),
                         [id](const auto &entry) { return entry.second.contains(id); }))
            fail(QStringLiteral("%1 is not in the report").arg(name), setting);
    };
    for (const QString &name : plan.beside)
        require(name, "beside");
    for (const QStringList &group : plan.sameClasses)
        for (const QString &name : group)
            require(name, "same-classes");
}

/// Raises a Failure for a time of the plan that no small map shows.
void requireSideMaps(const ReportPlan &plan, const ReportProject &report)
{
    for (const QString &text : plan.sideMaps)
        if (std::none_of(report.geographies.begin(), report.geographies.end(),
                         [&text](const ReportGeography &geography) {
                             return std::any_of(
                                 geography.sideMaps.begin(), geography.sideMaps.end(),
                                 [&text](const SideMap &map) { return map.text == text; });
                         }))
            fail(QStringLiteral(
                     "there is no small map of %1: small maps are of grids and of at most "
                     "800 polygons that change, at times that these have")
                     .arg(text),
                 "maps");
}

} // namespace

ReportProject gatherReport(const ReportPlan &plan)
{
    const auto chosen = chosenDatasets(plan);
    requireTimes(plan, chosen);
    requireShown(plan, chosen);
    requireRealization(plan, chosen);
    const QFileInfo file(plan.project);
    ReportProject report;
    report.title = plan.title.isEmpty() ? file.completeBaseName() : plan.title;
    report.file = file.fileName();
    report.bytes = file.size();
    for (const auto &[geography, datasets] : chosen)
        report.geographies.append(GeographyReport(geography, datasets, plan).gather());
    requireSideMaps(plan, report);
    return report;
}

} // namespace meridor
