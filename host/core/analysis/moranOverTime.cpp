// SPDX-License-Identifier: MIT
#include "core/analysis/moranOverTime.h"
#include <QSet>
#include <cmath>
#include <limits>
#include "core/analysis/weightSets.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/StatisticsAPI.h"
#include "datainterface/dataContainer.h"

namespace meridor {
namespace {

// Parameters of the joint error fraction. An object is flagged by chance with twice the probability
// of its own level, since either tail counts; if that were the level of the family, no family would
// pass.
constexpr double kFalseFraction = 0.1; ///< largest false fraction of a family's flags
constexpr double kOwnLevel = 0.1;      ///< level of an object's own test / level of the family
constexpr qint64 kMostFlags = qint64(64) << 20; ///< largest number of objects times permutations

struct Observed {
    QVector<int> objects;
    std::vector<double> values;
    QSet<int> missing; ///< all other objects
};

Observed observe(int dataset, qint64 time, int realization)
{
    const VORN_ConstDataContainer values(dataset, time, realization, false);
    Observed observed;
    for (int i = 0; i < values.count(); ++i)
        observed.missing.insert(i);
    for (const int object : objectsAt(VORN_GetGeographyId(dataset), time)) {
        if (object >= values.count() || values.isMissing(object)
            || !std::isfinite(values.value(object)))
            continue;
        observed.objects.append(object);
        observed.values.push_back(values.value(object));
        observed.missing.remove(object);
    }
    return observed;
}

bool isOne(double sum)
{
    return std::abs(sum - 1) < 1e-5; // a list holds floats
}

/// Whether the given weights of every object that has neighbours sum to 1.
bool isStandardized(const WeightsAtT &handle, const QVector<int> &objects)
{
    const VORN_MissingData noneMissing;
    QVector<neighborDatum> neighbors;
    for (const int object : objects) {
        double sum = 0;
        VORN_GetSpatialWeights(handle, static_cast<unsigned int>(object), neighbors, noneMissing);
        for (const neighborDatum &neighbor : qAsConst(neighbors))
            sum += static_cast<double>(neighbor.weight);
        if (!neighbors.isEmpty() && !isOne(sum))
            return false;
    }
    return true;
}

/// The weights of the set among the observed objects, calculated as if there were no others. The
/// library leaves given weights as they are; those of a standardized set sum to 1 again here.
SparseWeights weightsAmong(int set, qint64 time, const Observed &observed)
{
    const WeightsAtT handle = VORN_GetSpatialWeightsHandle(set, time, true);
    const VORN_MissingData missing(observed.missing);
    QVector<int> row(observed.objects.isEmpty() ? 0 : observed.objects.last() + 1, -1);
    for (int i = 0; i < observed.objects.size(); ++i)
        row[observed.objects[i]] = i;
    const bool standardizes =
        weightSetOf(set).IsCustom() && isStandardized(handle, observed.objects);
    SparseWeights weights;
    QVector<neighborDatum> neighbors;
    for (const int object : observed.objects) {
        stopIfCancelled();
        if (!VORN_GetSpatialWeights(handle, static_cast<unsigned int>(object), neighbors, missing))
            fail(QStringLiteral("weight set %1 has nothing at %2")
                     .arg(weightSetOf(set).GetName(), axisOf(set >> 16).show(time)));
        double sum = 0;
        for (const neighborDatum &neighbor : qAsConst(neighbors))
            if (row.value(neighbor.id, -1) >= 0)
                sum += static_cast<double>(neighbor.weight);
        const double scale = standardizes && sum > 0 && !isOne(sum) ? 1 / sum : 1;
        for (const neighborDatum &neighbor : qAsConst(neighbors))
            if (const int other = row.value(neighbor.id, -1); other >= 0)
                weights.addNeighbor(other, scale * static_cast<double>(neighbor.weight));
        weights.endRow();
    }
    return weights;
}

using Correct = QVector<int> (*)(const QVector<double> &, const VORN_MissingData &, double);

QVector<int> uncorrected(const QVector<double> &p, const VORN_MissingData &missing, double alpha)
{
    QVector<int> passing;
    for (int i = 0; i < p.size(); ++i)
        if (!missing.isMissing(i) && p[i] <= alpha)
            passing.append(i);
    return passing;
}

/// VORN_PerformSimesCorrection returns the tests that fail; this returns the others.
QVector<int> simes(const QVector<double> &p, const VORN_MissingData &missing, double alpha)
{
    const QVector<int> passedOver = VORN_PerformSimesCorrection(p, missing, alpha);
    const QSet<int> failing(passedOver.begin(), passedOver.end());
    QVector<int> passing;
    for (int i = 0; i < p.size(); ++i)
        if (!missing.isMissing(i) && !failing.contains(i))
            passing.append(i);
    return passing;
}

struct Correction {
    const char *name;
    Correct correct; ///< null for the joint error fraction, which needs the randomizations
};
constexpr Correction kCorrections[] = {
    {"none", &uncorrected},
    {"bonferroni", &VORN_PerformBonferroniCorrection},
    {"holm", &VORN_PerformHolmCorrection},
    {"simes", &simes},
    {"fdr", &VORN_PerformFDRCorrection},
    {"jef", nullptr},
};

class MoranRun {
public:
    MoranRun(const MoranPlan &plan, const Progress &progress) : mPlan(plan), mProgress(progress)
    {
        VORN_SetRandomSeed(plan.seed);
    }

    bool at(const Interval &when, MoranAt &result)
    {
        const qint64 time = instantOf(when);
        const Observed observed = observe(mPlan.dataset, time, mPlan.realization);
        if (observed.objects.isEmpty())
            return false;
        const SparseWeights weights = weightsAmong(mPlan.weightSet, time, observed);
        result.when = when;
        result.objects = observed.objects;
        for (int row = 0; row < weights.rows(); ++row)
            if (weights.count(row) == 0)
                result.islands.append(observed.objects[row]);
        result.whole = moran(observed.values, weights, mPlan.permutations, meter(), mPlan.islands);
        if (mPlan.local) {
            result.local = localMoran(observed.values, weights, mPlan.permutations, meter());
            judge(observed, weights, result);
        }
        return true;
    }
    void timeDone() { ++mDone; }

private:
    /// Reports the same percentage within one time, in order to poll for a cancel.
    Meter meter() const
    {
        return [this](int) { mProgress.report(100 * mDone / qMax(1, mPlan.times.size())); };
    }

    void judge(const Observed &observed, const SparseWeights &weights, MoranAt &result) const
    {
        const QVector<double> p(result.local.p.begin(), result.local.p.end());
        QSet<int> untested;
        for (int i = 0; i < p.size(); ++i)
            if (std::isnan(p[i]))
                untested.insert(i);
        result.significant.fill(false, p.size());
        QVector<int> passing;
        for (const Correction &known : kCorrections)
            if (mPlan.correction == QLatin1String(known.name))
                passing = known.correct ? known.correct(p, VORN_MissingData(untested), mPlan.alpha)
                                        : jointErrors(observed, weights, p, untested);
        for (const int i : passing)
            result.significant[i] = !untested.contains(i);
    }

    /// The joint error fraction: among the objects that pass their own test, those that are rarely
    /// flagged by chance.
    QVector<int> jointErrors(const Observed &observed, const SparseWeights &weights,
                             const QVector<double> &p, QSet<int> untested) const
    {
        if (qint64(mPlan.permutations) * p.size() > kMostFlags)
            fail(QStringLiteral("%1 objects are too many for jef with %2 permutations")
                     .arg(p.size())
                     .arg(mPlan.permutations));
        if (mPlan.permutations == 0)
            return {};
        const double ownLevel = kOwnLevel * mPlan.alpha;
        for (int i = 0; i < p.size(); ++i)
            if (!(p[i] <= ownLevel))
                untested.insert(i);
        QVector<QVector<bool>> flags;
        for (const std::vector<bool> &row :
             flagsOfChance(observed.values, weights, mPlan.permutations, ownLevel, meter()))
            flags.append(QVector<bool>(row.begin(), row.end()));
        return VORN_PerformJEFCorrection(flags, VORN_MissingData(untested), mPlan.alpha,
                                         kFalseFraction);
    }

    const MoranPlan &mPlan;
    const Progress &mProgress;
    int mDone = 0;
};

/// Creates a dataset with the values of `valueOf` at the tested objects of each time.
template <class T, class ValueOf>
int store(const MoranPlan &plan, const QVector<MoranAt> &results, const QString &name,
          DataType type, ValueOf valueOf)
{
    const int geography = VORN_GetGeographyId(plan.dataset);
    const DatasetProps props = VORN_GetDatasetProperties(plan.dataset);
    const int objects = VORN_GetGeographyProperties(geography).objectCount;
    const int id = VORN_NewVectorDataset(geography, name, TimeSlice, type, 1, props.path);
    if (id < 0)
        fail(QStringLiteral("dataset %1 could not be made").arg(name));
    if (props.isStatic && VORN_GetGeographyProperties(geography).isStatic)
        datasetOf(id)->SetStatic(true);
    for (const MoranAt &result : results) {
        QVector<T> values(objects);
        QSet<int> missing;
        for (int i = 0; i < objects; ++i)
            missing.insert(i);
        for (int i = 0; i < result.objects.size(); ++i) {
            const int object = result.objects[i];
            values[object] = valueOf(result, i);
            if constexpr (std::is_same_v<T, double>)
                if (!std::isfinite(values[object]))
                    continue;
            missing.remove(object);
        }
        if (missing.size() < objects)
            VORN_AddDataValues(id, 0, result.when, values, missing, true, false);
    }
    VORN_RecalculateDataFrequencies(id);
    VORN_AppendToLongDescription(
        id, QStringLiteral("Moran's I of %1, weights %2, %3 permutations, seed %4\n")
                .arg(datasetName(plan.dataset), weightSetOf(plan.weightSet).GetName(),
                     QString::number(plan.permutations), QString::number(plan.seed)));
    VORN_NewDatasetCreated(id);
    return id;
}

} // namespace

QVector<MoranAt> moranOverTime(const MoranPlan &plan, const Progress &progress)
{
    if (!datasetOf(plan.dataset)->IsNumeric())
        fail(QStringLiteral("%1 holds texts").arg(datasetName(plan.dataset)));
    MoranRun run(plan, progress);
    QVector<MoranAt> results;
    for (const Interval &when : plan.times) {
        MoranAt result;
        if (run.at(when, result))
            results.append(result);
        run.timeDone();
    }
    return results;
}

QString clusterName(const MoranAt &result, int position)
{
    if (!result.significant[position])
        return QStringLiteral("not significant");
    const auto i = static_cast<size_t>(position);
    return QStringLiteral("%1-%2").arg(
        result.local.z[i] > 0 ? QStringLiteral("high") : QStringLiteral("low"),
        result.local.lags[i] > 0 ? QStringLiteral("high") : QStringLiteral("low"));
}

QVector<int> storeMoran(const MoranPlan &plan, const QVector<MoranAt> &results, const QString &name)
{
    const int geography = VORN_GetGeographyId(plan.dataset);
    if (VORN_GetGeographyProperties(geography).type == GeoProps::Raster)
        fail(QStringLiteral("%1 is a grid: its results are printed alone")
                 .arg(geographyName(geography)));
    QStringList wanted{QStringLiteral("I"), QStringLiteral("p")};
    if (plan.local)
        wanted += {QStringLiteral("local I"), QStringLiteral("local p"), QStringLiteral("cluster")};
    for (QString &each : wanted) {
        each.prepend(name + QLatin1Char(' '));
        requireNewDatasetName(geography, each); // before anything is stored
    }
    using At = const MoranAt &;
    const auto local = [](const std::vector<double> &values, int i) {
        return values[static_cast<size_t>(i)];
    };
    QVector<int> ids{
        store<double>(plan, results, wanted[0], DecimalType,
                      [](At r, int) { return r.whole.value; }),
        store<double>(plan, results, wanted[1], DecimalType, [](At r, int) { return r.whole.p; })};
    if (!plan.local)
        return ids;
    ids.append(store<double>(plan, results, wanted[2], DecimalType,
                             [&](At r, int i) { return local(r.local.values, i); }));
    ids.append(store<double>(plan, results, wanted[3], DecimalType,
                             [&](At r, int i) { return local(r.local.p, i); }));
    ids.append(store<QString>(plan, results, wanted[4], StringType, &clusterName));
    return ids;
}

} // namespace meridor
