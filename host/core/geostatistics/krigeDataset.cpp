// SPDX-License-Identifier: MIT
#include "core/geostatistics/krigeDataset.h"
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include "core/geostatistics/storedValues.h"
#include "core/geostatistics/variogramModels.h"
#include "core/grids/gridValues.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/shapeAccess.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/StatisticsAPI.h"

namespace meridor {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr int kMostBlock = 100;
/// Most rows that each have a system of all other samples.
constexpr size_t kMostGlobalFolds = 600;

/// The value of a grid at a place; NaN outside and where it is missing.
class DriftGrid {
public:
    DriftGrid(int dataset, qint64 time) : mGrid(gridOf(VORN_GetGeographyId(dataset)))
    {
        const bool always = datasetOf(dataset)->IsStatic();
        mValues = gridValues(dataset, always ? 0 : time);
    }
    double at(double x, double y) const
    {
        const double column = std::floor((x - mGrid.left) / mGrid.cellWidth);
        const double row = std::floor((mGrid.top - y) / mGrid.cellHeight);
        if (!(column >= 0 && column < mGrid.columns && row >= 0 && row < mGrid.rows))
            return kNone;
        return mValues[static_cast<int>(row) * mGrid.columns + static_cast<int>(column)];
    }

private:
    SimulationGrid mGrid;
    QVector<double> mValues;
};

/// The even-odd rule.
bool contains(const QList<QVector<QPointF>> &rings, double x, double y)
{
    bool inside = false;
    for (const QVector<QPointF> &ring : rings) {
        for (int i = 0, j = ring.size() - 1; i < ring.size(); j = i++) {
            if ((ring[i].y() > y) == (ring[j].y() > y))
                continue;
            const double cross =
                ring[i].x()
                + (y - ring[i].y()) / (ring[j].y() - ring[i].y()) * (ring[j].x() - ring[i].x());
            inside = inside != (x < cross);
        }
    }
    return inside;
}

/// The points of a lattice over the polygon's bounds that are inside, as offsets from the place;
/// the place itself if none is.
std::vector<QPointF> pointsInside(const QList<QVector<QPointF>> &rings, double x, double y,
                                  int side)
{
    QRectF bounds;
    for (const QVector<QPointF> &ring : rings)
        bounds |= QPolygonF(ring).boundingRect();
    std::vector<QPointF> points;
    for (int row = 0; row < side; ++row) {
        for (int column = 0; column < side; ++column) {
            const double px = bounds.left() + (column + 0.5) / side * bounds.width();
            const double py = bounds.top() + (row + 0.5) / side * bounds.height();
            if (contains(rings, px, py))
                points.emplace_back(px - x, py - y);
        }
    }
    if (points.empty())
        points.emplace_back(0, 0);
    return points;
}

/// The numbers of the model at a time of the request.
VariogramModelAtT modelAt(const KrigeRequest &request, qint64 time)
{
    if (request.model.contains(QLatin1Char(':')))
        return parseStructures(request.model);
    const VariogramModel model = findModel(request.dataset, request.model);
    if (isOfScores(model))
        fail(QStringLiteral("the variogram model %1 is of normal scores, not of values")
                 .arg(model.name),
             "model");
    return structuresAt(model, time);
}

class KrigeRun {
public:
    KrigeRun(const KrigeRequest &request, const Progress &progress)
        : mRequest(request),
          mProgress(progress),
          mTarget(VORN_GetGeographyProperties(request.target))
    {
        if (request.block < 0 || request.block > kMostBlock)
            failUsage(QStringLiteral("a block has 0 to %1 points along a side").arg(kMostBlock),
                      "block");
        if (request.block > 0 && mTarget.type == GeoProps::Points)
            fail(QStringLiteral("%1 consists of points, which are no blocks").arg(mTarget.name),
                 "block");
        if (request.external >= 0 && !rasterOf(request.external))
            fail(QStringLiteral("%1 is no grid").arg(datasetName(request.external)), "external");
        if (request.times.isEmpty())
            fail(QStringLiteral("%1 holds no values").arg(datasetName(request.dataset)));
    }

    Kriged run()
    {
        const bool always = datasetOf(mRequest.dataset)->IsStatic();
        alignTimeFormat(mRequest.dataset, mRequest.target);
        StoredValues predictions(mRequest.target, mRequest.name, 1, always);
        StoredValues variances(mRequest.target, mRequest.name + QStringLiteral(" variance"), 1,
                               always);
        Kriged result;
        for (const Interval &when : mRequest.times) {
            std::vector<double> values, variance;
            result.times.append(predictAt(when, values, variance));
            predictions.add(0, when, values);
            variances.add(0, when, variance);
        }
        const QString history = QStringLiteral("Kriging of %1, model %2")
                                    .arg(datasetName(mRequest.dataset), mRequest.model);
        result.prediction = predictions.finish(history);
        result.variance = variances.finish(history);
        return result;
    }

    Validation validate(int folds, int seed)
    {
        VORN_SetRandomSeed(seed);
        const int geography = VORN_GetGeographyId(mRequest.dataset);
        const bool always = datasetOf(mRequest.dataset)->IsStatic();
        std::unique_ptr<StoredValues> residuals, deviates;
        if (!mRequest.name.isEmpty()) {
            residuals = std::make_unique<StoredValues>(
                geography, mRequest.name + QStringLiteral(" residual"), 1, always);
            deviates = std::make_unique<StoredValues>(
                geography, mRequest.name + QStringLiteral(" deviate"), 1, always);
        }
        const GeoProps props = VORN_GetGeographyProperties(geography);
        const size_t objects = props.type == GeoProps::Raster
                                   ? size_t(props.rows) * size_t(props.columns)
                                   : size_t(props.objectCount);
        Validation result;
        Sums sums;
        for (const Interval &when : mRequest.times) {
            std::vector<double> errors(objects, kNone), ratios(objects, kNone);
            result.times.append(validateAt(when, folds, errors, ratios, sums));
            if (residuals) {
                residuals->add(0, when, errors);
                deviates->add(0, when, ratios);
            }
        }
        sums.finish(result);
        if (residuals) {
            const QString history = QStringLiteral("Cross-validation of %1, model %2")
                                        .arg(datasetName(mRequest.dataset), mRequest.model);
            result.residuals = residuals->finish(history);
            result.deviates = deviates->finish(history);
        }
        return result;
    }

private:
    struct Sums {
        double n = 0, error = 0, square = 0, ratio = 0, rated = 0;
        double z = 0, p = 0, zz = 0, pp = 0, zp = 0;

        void add(double value, const Estimate &estimate)
        {
            const double d = estimate.value - value;
            n += 1;
            error += d;
            square += d * d;
            if (estimate.variance > 0) {
                ratio += d * d / estimate.variance;
                rated += 1;
            }
            z += value;
            p += estimate.value;
            zz += value * value;
            pp += estimate.value * estimate.value;
            zp += value * estimate.value;
        }
        void finish(Validation &result) const
        {
            if (!(n > 0))
                fail(QStringLiteral("no value could be predicted from the others"));
            result.meanError = error / n;
            result.meanSquare = square / n;
            result.meanRatio = rated > 0 ? ratio / rated : kNone;
            const double spread = (zz - z * z / n) * (pp - p * p / n);
            result.correlation = spread > 0 ? (zp - z * p / n) / std::sqrt(spread) : kNone;
        }
    };

    /// The samples of a time and the plan for them.
    Samples prepare(const Interval &when, KrigingPlan &plan, KrigedAt &report)
    {
        const qint64 time = instantOf(when);
        report.when = when;
        Samples samples = withoutColocated(samplesAt(mRequest.dataset, time, mRequest.realization),
                                           report.merged);
        plan = mRequest.plan;
        plan.model = modelAt(mRequest, time);
        if (mRequest.external >= 0) {
            mDrift = std::make_unique<DriftGrid>(mRequest.external, time);
            Samples kept;
            for (size_t i = 0; i < samples.size(); ++i) {
                const double drift = mDrift->at(samples.x[i], samples.y[i]);
                if (!std::isfinite(drift)) {
                    ++report.withoutDrift;
                    continue;
                }
                kept.add({samples.x[i], samples.y[i]}, samples.values[i], samples.objects[i]);
                plan.sampleDrift.push_back(drift);
            }
            samples = kept;
        }
        report.samples = static_cast<int>(samples.size());
        return samples;
    }

    Targets targetsAt(qint64 time, std::vector<int> &objects)
    {
        const Places places = placesAt(mRequest.target, time);
        Targets targets;
        targets.x = places.x;
        targets.y = places.y;
        objects = places.objects;
        const int side = mRequest.block;
        if (side > 0 && mTarget.type == GeoProps::Raster) {
            for (int row = 0; row < side; ++row)
                for (int column = 0; column < side; ++column)
                    targets.block.emplace_back(((column + 0.5) / side - 0.5) * mTarget.pixelWidth,
                                               ((row + 0.5) / side - 0.5) * mTarget.pixelHeight);
        } else if (side > 0) {
            const auto &geography = dynamic_cast<const MVectorData &>(*geographyOf(mTarget.id));
            for (size_t i = 0; i < places.size(); ++i)
                targets.blocks.push_back(
                    pointsInside(ringsOf(geography, places.objects[i], shapeTime(mTarget.id, time)),
                                 places.x[i], places.y[i], side));
        }
        if (mDrift)
            for (size_t i = 0; i < targets.size(); ++i)
                targets.drift.push_back(driftOf(targets, i));
        return targets;
    }

    double driftOf(const Targets &targets, size_t i) const
    {
        const std::vector<QPointF> here{QPointF(0, 0)};
        const std::vector<QPointF> &points = !targets.blocks.empty()  ? targets.blocks[i]
                                             : !targets.block.empty() ? targets.block
                                                                      : here;
        double sum = 0;
        for (const QPointF &offset : points)
            sum += mDrift->at(targets.x[i] + offset.x(), targets.y[i] + offset.y());
        return sum / static_cast<double>(points.size());
    }

    Meter meter() const
    {
        return [this](int percent) {
            mProgress.report((100 * mDone + percent) / mRequest.times.size());
        };
    }

    static void count(const Kriging &kriging, KrigedAt &report)
    {
        report.remarks.alone += kriging.remarks().alone;
        report.remarks.undetermined += kriging.remarks().undetermined;
        report.remarks.dropped += kriging.remarks().dropped;
    }

    KrigedAt predictAt(const Interval &when, std::vector<double> &values,
                       std::vector<double> &variances)
    {
        KrigedAt report;
        KrigingPlan plan;
        const Samples samples = prepare(when, plan, report);
        report.apart = isApart(samples, mTarget.id);
        std::vector<int> objects;
        const Targets targets = targetsAt(instantOf(when), objects);
        Kriging kriging(samples, plan);
        const std::vector<Estimate> found = kriging.predict(targets, meter());
        const size_t count = mTarget.type == GeoProps::Raster
                                 ? size_t(mTarget.rows) * size_t(mTarget.columns)
                                 : size_t(mTarget.objectCount);
        values.assign(count, kNone);
        variances.assign(count, kNone);
        for (size_t i = 0; i < found.size(); ++i) {
            if (!std::isfinite(found[i].value)) {
                ++report.missing;
                continue;
            }
            values[size_t(objects[i])] = found[i].value;
            variances[size_t(objects[i])] = found[i].variance;
            report.meanVariance += found[i].variance;
            ++report.predictions;
        }
        report.meanVariance =
            report.predictions > 0 ? report.meanVariance / report.predictions : kNone;
        this->count(kriging, report);
        ++mDone;
        return report;
    }

    KrigedAt validateAt(const Interval &when, int folds, std::vector<double> &errors,
                        std::vector<double> &ratios, Sums &sums)
    {
        KrigedAt report;
        KrigingPlan plan;
        const Samples samples = prepare(when, plan, report);
        const auto n = static_cast<int>(samples.size());
        requireTwo(samples.size(), mRequest.dataset, when, "a cross-validation");
        if (folds < 0 || folds == 1)
            failUsage(QStringLiteral("a cross-validation needs two folds"), "validate");
        const bool each = folds == 0 || folds >= n;
        if (each && plan.neighborhood.most == 0 && std::isinf(plan.neighborhood.radius)
            && samples.size() > kMostGlobalFolds)
            fail(
                QStringLiteral("%1 systems of %1 samples are too many; limit the neighbours or the "
                               "folds")
                    .arg(n),
                "neighbors");
        const auto take = [&](const Targets &targets, const std::vector<Estimate> &found,
                              const std::vector<int> &rows) {
            for (size_t i = 0; i < targets.size(); ++i) {
                const auto row = static_cast<size_t>(rows[i]);
                if (!std::isfinite(found[i].value)) {
                    ++report.missing;
                    continue;
                }
                ++report.predictions;
                const auto object = static_cast<size_t>(samples.objects[row]);
                errors[object] = samples.values[row] - found[i].value;
                if (found[i].variance > 0)
                    ratios[object] = errors[object] / std::sqrt(found[i].variance);
                sums.add(samples.values[row], found[i]);
            }
        };
        const QVector<int> shuffled = VORN_ShuffleIds(static_cast<unsigned>(n));
        const int count = each ? 1 : folds;
        for (int fold = 0; fold < count; ++fold) {
            Samples kept;
            KrigingPlan part = plan;
            part.sampleDrift.clear();
            Targets targets;
            std::vector<int> rows;
            for (int row = 0; row < n; ++row) {
                const auto i = static_cast<size_t>(row);
                const bool out = each || shuffled[row] % folds == fold;
                if (out) {
                    rows.push_back(row);
                    targets.x.push_back(samples.x[i]);
                    targets.y.push_back(samples.y[i]);
                    if (mDrift)
                        targets.drift.push_back(plan.sampleDrift[i]);
                    if (each)
                        targets.leftOut.push_back(row);
                }
                if (!out || each) {
                    kept.add({samples.x[i], samples.y[i]}, samples.values[i], samples.objects[i]);
                    if (mDrift)
                        part.sampleDrift.push_back(plan.sampleDrift[i]);
                }
            }
            Kriging kriging(kept, part);
            take(targets, kriging.predict(targets, meter()), rows);
            this->count(kriging, report);
        }
        ++mDone;
        return report;
    }

    const KrigeRequest &mRequest;
    const Progress &mProgress;
    const GeoProps mTarget;
    std::unique_ptr<DriftGrid> mDrift;
    int mDone = 0;
};

} // namespace

Kriged krigeDataset(const KrigeRequest &request, const Progress &progress)
{
    return KrigeRun(request, progress).run();
}

Validation crossValidate(const KrigeRequest &request, int folds, int seed, const Progress &progress)
{
    if (seed < 0)
        failUsage(QStringLiteral("a seed is 0 to 2147483647"), "seed");
    return KrigeRun(request, progress).validate(folds, seed);
}

} // namespace meridor
