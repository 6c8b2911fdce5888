// SPDX-License-Identifier: MIT
// The values of variogram models. The shape of a structure is a function of the relative lag u = h
// / r for the lag h and the range r in its direction. The epsilon ranges of the spherical and the
// cubic shape are found by Newton's method; the others have a closed form.
#include "datainterface/VariogramModel.h"
#include <cmath>
#include "Common/detail/failure.h"

using datainterface::fail;

namespace {

constexpr char kInvalidType[] = "Invalid variogram model type";
constexpr double kNewtonStart = 0.9;
constexpr double kNewtonTolerance = 1e-5;
constexpr int kNewtonSteps = 30;

double spherical(double u)
{
    return u * (1.5 - 0.5 * u * u);
}

double cubic(double u)
{
    const double u2 = u * u;
    return u2 * (7.0 - u * (8.75 + u2 * (-3.5 + 0.75 * u2)));
}

double sphericalSlope(double u)
{
    return 1.5 * (1.0 - u * u);
}

double cubicSlope(double u)
{
    const double u2 = u * u;
    return 14.0 * u - 26.25 * u2 + 17.5 * u2 * u2 - 5.25 * u2 * u2 * u2;
}

// The lag at which the shape reaches `target`; `range` when Newton's method does not converge in
// kNewtonSteps or ends at a lag that is not positive.
template <class Shape, class Slope>
double newtonRange(double range, double target, Shape shape, Slope slope)
{
    double x = kNewtonStart * range;
    int steps = 0;
    double moved = 0.0;
    do {
        const double u = x / range;
        moved = (shape(u) - target) / (slope(u) / range);
        x -= moved;
        ++steps;
    } while (!(std::abs(moved) < kNewtonTolerance) && steps < kNewtonSteps);
    return x > 0.0 && steps < kNewtonSteps ? x : range;
}

// The range in the direction `theta`, in radians. It is minorRange along `angle` and majorRange
// across it: models in project files depend on this orientation.
double effectiveRange(const VariogramBasicModel &model, double theta)
{
    const double a = model.majorRange;
    const double b = model.minorRange;
    if (a == b)
        return b;
    const double c = std::cos(theta - model.angle);
    return std::sqrt(a * a * b * b / (b * b + (a * a - b * b) * c * c));
}

bool modelValue(const QMap<TimeStamp, VariogramModelAtT> &models, qint64 t, double h, double theta,
                double &value)
{
    const auto found = models.constFind(TimeStamp(t));
    if (found == models.constEnd() || !found.key().contains(t))
        return false;
    value = found->GetModelValue(h, theta);
    return true;
}

} // namespace

VariogramBasicModel::VariogramBasicModel(ModelType modelType, double modelSill, double modelAngle,
                                         double major, double minor)
    : sill(modelSill), angle(modelAngle), majorRange(major), minorRange(minor), type(modelType)
{
}

double VariogramBasicModel::GetBasicModelValue(double h, double theta) const
{
    if (majorRange == 0.0 || minorRange == 0.0)
        return sill;
    const double r = effectiveRange(*this, theta);
    const double u = h / r;
    switch (type) {
    case Nugget:
        return h == 0.0 ? 0.0 : sill;
    case Spherical:
        return h < r ? sill * spherical(u) : sill;
    case Exponential:
        return sill * (1.0 - std::exp(-3.0 * h / r));
    case Gaussian:
        return sill * (1.0 - std::exp(-3.0 * u * u));
    case Power:
        return sill * std::pow(h, r);
    case Cubic:
        return h < r ? sill * cubic(u) : sill;
    }
    fail(kInvalidType);
}

double VariogramBasicModel::GetEpsilonRange(double epsilon) const
{
    const double a = minorRange;
    switch (type) {
    case Power:
        return HUGE_VAL;
    case Nugget:
        return 0.0;
    case Exponential:
        return -a * std::log(epsilon) / 3.0;
    case Gaussian:
        return std::sqrt(-a * a * std::log(epsilon) / 3.0);
    case Spherical:
        return newtonRange(a, 1.0 - epsilon, spherical, sphericalSlope);
    case Cubic:
        return newtonRange(a, 1.0 - epsilon, cubic, cubicSlope);
    }
    fail(kInvalidType);
}

bool VariogramBasicModel::operator==(const VariogramBasicModel &other) const
{
    return sill == other.sill && angle == other.angle && majorRange == other.majorRange
           && minorRange == other.minorRange && type == other.type;
}

double VariogramModelAtT::GetModelValue(double h, double theta) const
{
    double sum = 0.0;
    for (const VariogramBasicModel &structure : structures)
        sum += structure.GetBasicModelValue(h, theta);
    return sum;
}

bool VariogramModelAtT::GetEpsilonRange(double epsilon, double &range) const
{
    range = 0.0;
    for (const VariogramBasicModel &structure : structures) {
        if (structure.type == VariogramBasicModel::Power) {
            range = HUGE_VAL;
            return false;
        }
        range = std::max(range, structure.GetEpsilonRange(epsilon / structures.size()));
    }
    return true;
}

double VariogramModelAtT::GetSill() const
{
    double sum = 0.0;
    for (const VariogramBasicModel &structure : structures) {
        if (structure.type == VariogramBasicModel::Power)
            return -1.0;
        sum += structure.sill;
    }
    return sum;
}

VariogramModel::VariogramModel() = default;
VariogramModel::VariogramModel(const VariogramModel &other) = default;
VariogramModel &VariogramModel::operator=(const VariogramModel &other) = default;
VariogramModel::~VariogramModel() = default;

VariogramModel::VariogramModel(const DataId &modelDataset)
    : name(QStringLiteral("variogram model")), dataset(modelDataset)
{
}

VariogramModel::VariogramModel(const QString &modelName, const DataId &modelDataset,
                               const DataId &modelLocations, int modelEstimator,
                               const DataId &modelWeights, int lags, int fitA, int fitB,
                               const DataId &fitDataset, int fitC, int fitD)
    : name(modelName),
      dataset(modelDataset),
      locations(modelLocations),
      estimator(modelEstimator),
      weightsDataset(modelWeights),
      lagCount(lags)
{
    // In the stream the last argument comes before the dataset's id.
    const std::array<qint32, 5> given{fitA, fitB, fitD, fitDataset, fitC};
    std::copy(given.begin(), given.end(), fit.ints.end() - given.size());
}

bool VariogramModel::GetCentroidModelValue(qint64 t, double h, double theta, double &value) const
{
    return modelValue(centroidModels, t, h, theta, value);
}

bool VariogramModel::GetDeconvolutionModelValue(qint64 t, double h, double theta,
                                                double &value) const
{
    return modelValue(deconvolutionModels, t, h, theta, value);
}
