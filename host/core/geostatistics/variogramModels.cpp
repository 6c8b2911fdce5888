// SPDX-License-Identifier: MIT
#include "core/geostatistics/variogramModels.h"
#include <QJsonObject>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>
#include "core/geostatistics/covariance.h"
#include "core/geostatistics/normalScores.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/edit.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/VariogramAPI.h"

namespace meridor {
namespace {

enum FitInt : size_t { WeightsCode = 0 };
enum FitDouble : size_t { Cutoff = 0, Width = 1, Tolerance = 2, Squares = 3 };
enum FitFlag : size_t { OfScores = 3 };
constexpr VariogramBasicModel::ModelType kChoices[] = {
    VariogramBasicModel::Spherical, VariogramBasicModel::Exponential, VariogramBasicModel::Gaussian,
    VariogramBasicModel::Cubic};
constexpr int kLagCount = 15;
constexpr double kMostTolerance = 3.14159265358979323846 / 2 * (1 + 1e-12); ///< radians

/// One time's samples of the dataset and, for a cross variogram, of the other one in the same rows.
struct Observed {
    Samples samples;
    std::vector<double> others;
};

Observed observe(const VariogramPlan &plan, qint64 time)
{
    Observed observed{samplesAt(plan.dataset, time, plan.realization), {}};
    if (plan.lags.estimator == Estimator::Cross) {
        const Samples second = samplesAt(plan.other, time, 0);
        Samples both;
        size_t k = 0; // both lists ascend by object
        for (size_t i = 0; i < observed.samples.size(); ++i) {
            const int object = observed.samples.objects[i];
            while (k < second.size() && second.objects[k] < object)
                ++k;
            if (k == second.size() || second.objects[k] != object)
                continue;
            both.add({observed.samples.x[i], observed.samples.y[i]}, observed.samples.values[i],
                     object);
            observed.others.push_back(second.values[k]);
        }
        observed.samples = both;
    }
    if (plan.scores) {
        observed.samples.values = NormalScores(observed.samples.values).scores();
        if (!observed.others.empty())
            observed.others = NormalScores(observed.others).scores();
    }
    return observed;
}

/// The values by cell; NaN where there is none.
std::vector<double> cellsOf(const Samples &samples, const std::vector<double> &values, size_t count)
{
    std::vector<double> cells(count, std::numeric_limits<double>::quiet_NaN());
    for (size_t i = 0; i < samples.size(); ++i)
        cells[static_cast<size_t>(samples.objects[i])] = values[i];
    return cells;
}

class VariogramRun {
public:
    VariogramRun(const VariogramPlan &plan, const Meter &meter)
        : mPlan(plan),
          mMeter(meter),
          mGeography(VORN_GetGeographyProperties(VORN_GetGeographyId(plan.dataset)))
    {
        if (plan.times.isEmpty())
            fail(QStringLiteral("%1 holds no values").arg(datasetName(plan.dataset)));
        if ((plan.lags.estimator == Estimator::Cross) != (plan.other >= 0))
            failUsage(QStringLiteral("a cross variogram has two datasets"), "cross");
        if (plan.other >= 0 && VORN_GetGeographyId(plan.other) != VORN_GetGeographyId(plan.dataset))
            fail(QStringLiteral("%1 and %2 are of two geographies")
                     .arg(datasetName(plan.dataset), datasetName(plan.other)));
    }

    QVector<VariogramAt> run()
    {
        QVector<VariogramAt> results;
        if (mPlan.pooled) {
            results.append(at(mPlan.times));
        } else {
            for (const Interval &when : mPlan.times)
                results.append(at({when}));
        }
        return results;
    }

private:
    /// A cutoff and a width of 0 stand for those of the diagonal.
    static void requireMeaning(const LagPlan &lags)
    {
        if (!(lags.cutoff >= 0 && std::isfinite(lags.cutoff)))
            failUsage(QStringLiteral("a cutoff is a distance, not %1").arg(lags.cutoff), "cutoff");
        if (!(lags.width >= 0 && std::isfinite(lags.width)))
            failUsage(QStringLiteral("a width is a distance, not %1").arg(lags.width), "width");
        for (const double direction : lags.directions)
            if (!std::isfinite(direction))
                failUsage(QStringLiteral("a direction is not finite"), "directions");
        if (!(lags.tolerance >= 0 && lags.tolerance <= kMostTolerance))
            failUsage(QStringLiteral("a tolerance is 0 to 90 degrees"), "tolerance");
    }

    VariogramAt at(const QVector<Interval> &times)
    {
        VariogramAt result;
        result.when = times.first();
        result.when.endTime = times.last().endTime;
        result.when.inclusiveEnd = times.last().inclusiveEnd;
        result.lags = mPlan.lags;
        double diagonal = 0;
        std::vector<Observed> all;
        for (const Interval &when : times) {
            all.push_back(observe(mPlan, instantOf(when)));
            const size_t count = all.back().samples.size();
            if (times.size() == 1)
                requireTwo(count, mPlan.dataset, when, "a variogram");
            result.samples += static_cast<int>(count);
            diagonal = std::max(diagonal, diagonalOf(all.back().samples));
        }
        requireMeaning(result.lags);
        completeLags(result.lags, diagonal);
        LagSums sums(result.lags);
        for (const Observed &observed : all)
            add(sums, observed);
        result.bins = sums.bins();
        result.colocated = sums.colocated();
        if (result.bins.empty())
            fail(mPlan.lags.directions.empty()
                     ? QStringLiteral("no two places are within the cutoff")
                     : QStringLiteral("no two places are within the cutoff and the tolerance of a "
                                      "direction"),
                 "cutoff");
        if (!std::all_of(result.bins.begin(), result.bins.end(),
                         [](const LagBin &bin) { return std::isfinite(bin.value); }))
            fail(QStringLiteral("the differences of the values of %1 are too large for a variogram")
                     .arg(datasetName(mPlan.dataset)));
        if (!mPlan.given.structures.isEmpty())
            result.fitted = givenModel(result.bins, mPlan.given, mPlan.fit.weights);
        else if (mPlan.fits)
            result.fitted = fitOf(result.bins);
        return result;
    }

    void add(LagSums &sums, const Observed &observed)
    {
        const auto meter = [this](int percent) {
            mMeter((100 * mDone + percent) / mPlan.times.size());
        };
        if (mGeography.type == GeoProps::Raster) {
            const size_t count = static_cast<size_t>(mGeography.rows) * size_t(mGeography.columns);
            const double share = sums.addGrid(
                cellsOf(observed.samples, observed.samples.values, count),
                observed.others.empty() ? observed.others
                                        : cellsOf(observed.samples, observed.others, count),
                mGeography.columns, mGeography.pixelWidth, mGeography.pixelHeight, meter);
            if (share < 1)
                note(QStringLiteral("one in %1 lag vectors of the grid was used; a smaller cutoff "
                                    "uses all")
                         .arg(qRound(1 / share)));
        } else if (observed.others.empty()) {
            sums.add(observed.samples, meter);
        } else {
            sums.add(observed.samples, observed.others, meter);
        }
        ++mDone;
    }

    FittedModel fitOf(const std::vector<LagBin> &bins) const
    {
        FitPlan plan = mPlan.fit;
        plan.signedSills = mPlan.lags.estimator == Estimator::Cross;
        if (!plan.structures.isEmpty())
            return fitVariogram(bins, plan);
        std::optional<FittedModel> best;
        for (const auto type : kChoices) {
            plan.structures = {type};
            const FittedModel found = fitVariogram(bins, plan);
            if (!best || (found.converged && !best->converged)
                || (found.converged == best->converged && found.squares < best->squares))
                best = found;
        }
        return hasShare(best->model) ? *best : fitNuggetAlone(bins, plan);
    }

    /// Whether values depend on their separation according to the model.
    static bool hasShare(const VariogramModelAtT &model)
    {
        return std::any_of(model.structures.begin(), model.structures.end(),
                           [](const VariogramBasicModel &structure) {
                               return structure.type != VariogramBasicModel::Nugget
                                      && structure.sill != 0;
                           });
    }

    static FittedModel fitNuggetAlone(const std::vector<LagBin> &bins, FitPlan plan)
    {
        plan.structures = {VariogramBasicModel::Nugget};
        FittedModel found = fitVariogram(bins, plan);
        found.remark = QStringLiteral("no structure has a share: the model is a nugget alone");
        return found;
    }

    static void note(const QString &text)
    {
        if (const auto *host = dynamic_cast<const ProjectHost *>(&controller()))
            host->notes().note(text);
    }

    const VariogramPlan &mPlan;
    const Meter mMeter;
    const GeoProps mGeography;
    int mDone = 0;
};

EmpiricalVariogram storedBins(const std::vector<LagBin> &bins)
{
    EmpiricalVariogram stored;
    for (const LagBin &bin : bins)
        stored.append(
            {bin.lag, bin.direction, bin.value,
             static_cast<qint32>(std::min<qint64>(bin.pairs, std::numeric_limits<qint32>::max()))});
    return stored;
}

bool generate(VariogramModel &model, const VariogramPlan &request)
{
    VariogramPlan plan = request;
    const TimeStamp asked = plan.times.isEmpty() ? TimeStamp() : TimeStamp(plan.times.first());
    plan.times.clear();
    const bool always = datasetOf(plan.dataset)->IsStatic();
    for (const Interval &when : dataTimes(plan.dataset))
        if (always || TimeStamp(when).overlaps(asked))
            plan.times.append(when);
    double diagonal = 0;
    for (const Interval &when : plan.times)
        diagonal = std::max(diagonal, diagonalOf(samplesAt(plan.dataset, instantOf(when))));
    if (!(plan.lags.cutoff > 0))
        plan.lags.cutoff = diagonal / 3;
    plan.lags.width = plan.lags.cutoff / plan.lags.width; // given as a number of classes
    completeDirections(plan);
    // The caller in the library has opened the bar.
    const auto meter = [](int percent) {
        if (VORN_Progress::UsingProgressBar() && !VORN_Progress::UpdateProgress(percent, nullptr))
            cancelled();
        stopIfCancelled();
    };
    const VariogramModel made = modelOf(plan, VariogramRun(plan, meter).run(), model.name);
    const int id = model.id;
    model = made;
    model.id = id;
    return true;
}

} // namespace

void completeDirections(VariogramPlan &plan)
{
    constexpr double kQuarter = 3.14159265358979323846 / 4;
    const bool isGivenSo = std::any_of(plan.given.structures.begin(), plan.given.structures.end(),
                                       [](const VariogramBasicModel &structure) {
                                           return structure.majorRange != structure.minorRange;
                                       });
    if (!plan.lags.directions.empty() || !(plan.fit.anisotropic || isGivenSo))
        return;
    plan.lags.directions = {0, kQuarter, 2 * kQuarter, 3 * kQuarter};
    if (plan.lags.tolerance == 0)
        plan.lags.tolerance = kQuarter / 2;
}

QVector<VariogramAt> variogramsOf(const VariogramPlan &plan, const Meter &meter)
{
    return VariogramRun(plan, meter).run();
}

VariogramModel modelOf(const VariogramPlan &plan, const QVector<VariogramAt> &found,
                       const QString &name)
{
    VariogramModel model{DataId(plan.dataset)};
    model.name = name;
    model.estimator = static_cast<int>(plan.lags.estimator);
    model.locations = DataId(plan.other);
    model.fit.ints[WeightsCode] = static_cast<int>(plan.fit.weights);
    model.fit.flags[OfScores] = plan.scores;
    double squares = 0;
    for (const VariogramAt &at : found) {
        if (!at.fitted)
            continue;
        model.lagCount = static_cast<int>(std::ceil(at.lags.cutoff / at.lags.width * (1 - 1e-12)));
        model.fit.doubles[Cutoff] = at.lags.cutoff;
        model.fit.doubles[Width] = at.lags.width;
        model.fit.doubles[Tolerance] = at.lags.tolerance;
        squares = std::max(squares, at.fitted->squares);
        model.centroidModels.insert(TimeStamp(at.when), at.fitted->model);
        model.empiricalResults.insert(TimeStamp(at.when), storedBins(at.bins));
    }
    model.fit.doubles[Squares] = squares;
    return model;
}

VariogramModel projectModel(const QString &name, const VariogramModelAtT &model)
{
    using Limits = std::numeric_limits<qint64>;
    VariogramModel made;
    made.name = name;
    made.dataset = DataId();
    made.centroidModels.insert(TimeStamp(Limits::min(), Limits::max(), true, true), model);
    return made;
}

LagPlan lagsOf(const VariogramModel &model)
{
    const auto known = [](double value) { return std::isfinite(value) && value > 0 ? value : 0; };
    LagPlan lags;
    if (model.estimator >= int(Estimator::Classical) && model.estimator <= int(Estimator::Cross))
        lags.estimator = static_cast<Estimator>(model.estimator);
    lags.cutoff = known(model.fit.doubles[Cutoff]);
    lags.width = known(model.fit.doubles[Width]);
    return lags;
}

bool isOfScores(const VariogramModel &model)
{
    return model.fit.flags[OfScores] != 0;
}

VariogramModel findModel(int dataset, const QString &name)
{
    if (name.isEmpty())
        failUsage(QStringLiteral("a variogram model needs a name"), "model");
    VariogramModel model;
    QStringList names;
    if (dataset >= 0) {
        for (const int id : VORN_GetVariogramModelIds(dataset)) {
            datasetOf(dataset)->GetVariogramModel(id, model);
            if (model.name == name)
                return model;
            names.append(model.name);
        }
    }
    for (const int id : controller().GetNonConVariogramModelIds()) {
        controller().GetNonConVariogramModel(id, model);
        if (model.name == name)
            return model;
        names.append(model.name);
    }
    fail(names.isEmpty() ? QStringLiteral("there is no variogram model %1").arg(name)
                         : QStringLiteral("there is no variogram model %1; there are: %2")
                               .arg(name, someOf(names)),
         "model");
}

namespace {

QList<int> modelIds(int dataset)
{
    return dataset < 0 ? controller().GetNonConVariogramModelIds()
                       : QList<int>(VORN_GetVariogramModelIds(dataset));
}

QString ownerOfModels(int dataset)
{
    return dataset < 0 ? QStringLiteral("the project") : datasetName(dataset);
}

void requireNewModelName(int dataset, const QString &name)
{
    if (name.isEmpty())
        failUsage(QStringLiteral("a variogram model needs a name"));
    if (modelNames(dataset).contains(name))
        fail(QStringLiteral("%1 has a variogram model %2 already")
                 .arg(ownerOfModels(dataset), name));
}

/// Puts a model in the place of the one with its id.
void replaceModel(int dataset, VariogramModel &model)
{
    const bool isReplaced = dataset < 0 ? controller().ReplaceNonConVariogramModel(model)
                                        : geographyOf(VORN_GetGeographyId(dataset))
                                              ->GetDataSource()
                                              ->ReplaceVariogramModel(dataset, model);
    if (!isReplaced)
        fail(QStringLiteral("the variogram model %1 could not be replaced").arg(model.name));
}

} // namespace

bool modelAt(const ModelPlace &place, VariogramModel &model)
{
    if (place.dataset < 0)
        return controller().GetNonConVariogramModel(place.id, model);
    MDataset *const owner = datasetOf(place.dataset);
    return owner && owner->GetVariogramModel(place.id, model);
}

QStringList modelNames(int dataset)
{
    QStringList names;
    VariogramModel model;
    for (const int id : modelIds(dataset))
        if (modelAt({dataset, id}, model))
            names.append(model.name);
    return names;
}

ModelPlace placeOfModel(int dataset, const QString &name)
{
    const QList<int> ids = modelIds(dataset);
    const QStringList names = modelNames(dataset);
    const int found = names.indexOf(name);
    if (found >= 0)
        return {dataset, ids[found]};
    fail(names.isEmpty() ? QStringLiteral("%1 has no variogram models").arg(ownerOfModels(dataset))
                         : QStringLiteral("%1 has no variogram model %2; there are: %3")
                               .arg(ownerOfModels(dataset), name, someOf(names)));
}

void renameModel(const ModelPlace &place, const QString &name)
{
    VariogramModel model;
    if (!modelAt(place, model) || model.name == name)
        return;
    requireNewModelName(place.dataset, name);
    model.name = name;
    replaceModel(place.dataset, model);
}

ModelPlace duplicateModel(const ModelPlace &place, const QString &name)
{
    VariogramModel model;
    if (!modelAt(place, model))
        fail(QStringLiteral("there is no such variogram model"));
    model.name = name.isEmpty() ? copyName(model.name, modelNames(place.dataset)) : name;
    requireNewModelName(place.dataset, model.name);
    storeModel(model);
    return placeOfModel(place.dataset, model.name);
}

void removeModels(const QVector<ModelPlace> &places)
{
    for (const ModelPlace &place : places) {
        if (place.dataset < 0)
            controller().RemoveNonConVariogramModel(place.id);
        else if (MDataset *const owner = datasetOf(place.dataset))
            owner->RemoveVariogramModel(place.id);
    }
}

namespace {

QJsonObject describeModel(const VariogramModel &model, int dataset)
{
    QJsonArray times;
    for (auto at = model.centroidModels.begin(); at != model.centroidModels.end(); ++at) {
        QJsonObject one{{QStringLiteral("model"), structuresText(*at)}};
        if (dataset >= 0 && !datasetOf(dataset)->IsStatic())
            one.insert(QStringLiteral("time"),
                       axisOf(VORN_GetGeographyId(dataset)).show(Interval(at.key())));
        times.append(one);
    }
    QJsonObject object{{QStringLiteral("name"), model.name}, {QStringLiteral("times"), times}};
    if (dataset >= 0)
        object.insert(QStringLiteral("dataset"),
                      QString(geographyName(VORN_GetGeographyId(dataset)) + QLatin1Char('/')
                              + datasetName(dataset)));
    return object;
}

} // namespace

QJsonArray describeModels()
{
    QVector<int> owners;
    for (const int geography : geographyIds())
        owners += datasetIds(geography);
    owners.append(-1);
    QJsonArray models;
    VariogramModel model;
    for (const int owner : owners)
        for (const int id : modelIds(owner))
            if (modelAt({owner, id}, model))
                models.append(describeModel(model, owner));
    return models;
}

VariogramModelAtT structuresAt(const VariogramModel &model, qint64 time)
{
    if (model.centroidModels.size() == 1)
        return model.centroidModels.first();
    const auto found = model.centroidModels.constFind(TimeStamp(time));
    if (found == model.centroidModels.constEnd() || !found.key().contains(time)) {
        if (!model.dataset.isValid())
            fail(QStringLiteral("the variogram model %1 has no structures at that time")
                     .arg(model.name),
                 "model");
        const TimeAxis axis = axisOf(VORN_GetGeographyId(model.dataset));
        QStringList times;
        for (const TimeStamp &when : model.centroidModels.keys())
            times.append(axis.show(Interval(when)));
        fail(QStringLiteral("the variogram model %1 has no structures at %2, but at %3")
                 .arg(model.name, axis.show(time), someOf(times)),
             "model");
    }
    return *found;
}

void storeModel(VariogramModel model, bool replaces)
{
    if (model.name.isEmpty())
        failUsage(QStringLiteral("a variogram model needs a name"), "save");
    const bool conditional = datasetOf(model.dataset) != nullptr;
    const int owner = conditional ? int(model.dataset) : -1;
    if (modelNames(owner).contains(model.name)) {
        if (!replaces)
            fail(QStringLiteral("there is a variogram model %1 already").arg(model.name),
                 "replace");
        model.id = placeOfModel(owner, model.name).id;
        replaceModel(owner, model);
    } else if (!conditional) {
        controller().AddNonConVariogramModel(model);
    } else if (!datasetOf(model.dataset)->AddVariogramModel(model, true)) {
        fail(QStringLiteral("the variogram model %1 could not be stored").arg(model.name));
    }
    controller().MarkProjectDirty();
}

bool fitRequestedModel(VariogramModel &model, const VariogramRequest &request)
{
    const auto warn = [](const QString &text) {
        if (const auto *host = dynamic_cast<const ProjectHost *>(&controller()))
            host->notes().warn(text);
        return false;
    };
    if (request.estimator < int(Estimator::Classical) || request.estimator > int(Estimator::Cross))
        return warn(QStringLiteral("there is no variogram estimator %1").arg(request.estimator));
    VariogramPlan plan;
    plan.dataset = request.dataset;
    plan.times = {request.interval};
    plan.lags.estimator = static_cast<Estimator>(request.estimator);
    plan.other = plan.lags.estimator == Estimator::Cross ? request.locations : -1;
    plan.lags.cutoff = request.parameter;
    plan.lags.width = request.lagCount < 1 ? kLagCount : request.lagCount;
    plan.pooled = request.flagA;
    plan.fit.structures.clear();
    plan.fit.anisotropic = request.flagB;
    try {
        return generate(model, plan);
    } catch (const Failure &failure) {
        return warn(failure.text());
    }
}

} // namespace meridor
