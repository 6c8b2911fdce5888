// SPDX-License-Identifier: MIT
// Separable least squares: for given ranges, directions and exponents the model is linear in its
// sills, whose best values at or above 0 follow from a small linear problem. Only the other
// parameters, one or three of each structure, are searched for, with the method of Levenberg and
// Marquardt of Eigen. G. H. Golub and V. Pereyra (1973), SIAM J. Numer. Anal. 10, 413-432.
//
// The search runs over unbounded parameters: logarithms of ranges, the logit of half an exponent,
// directions as they are. It starts from the best points of a fixed lattice of relative ranges, so
// that no start has to be given.
//
// There are at most four sills (with the nugget), so the linear problem with bounds is solved by
// trying each subset of sills above 0: the bounded problem is convex, and its solution is the best
// of the subsets' solutions that have no negative sill.
#include "core/geostatistics/variogramFit.h"
#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <limits>
#include <unsupported/Eigen/NonLinearOptimization>
#include <unsupported/Eigen/NumericalDiff>
#include "core/geostatistics/covariance.h"
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

using Type = VariogramBasicModel::ModelType;
using Eigen::MatrixXd;
using Eigen::VectorXd;

constexpr int kMostStructures = 3;
constexpr int kStarts = 4;     ///< of the lattice from which a search starts
constexpr int kReweights = 60; ///< most rounds in which the weights follow the model
constexpr double kSettled = 1e-9;
/// Factors by which the range of a Gaussian structure may be moved from that of least squares.
constexpr double kFirstStep = 1.002;
constexpr double kMostStep = 3;
constexpr double kFarRange = 10; ///< relative to the largest lag: the values do not level off
constexpr double kPi = 3.14159265358979323846;
/// Ranges of the lattice, relative to the largest lag.
constexpr double kLattice[] = {0.04, 0.08, 0.15, 0.25, 0.4, 0.6, 0.8, 1.0, 1.4, 2.5};
constexpr double kExponents[] = {0.3, 0.7, 1.0, 1.4, 1.8};
constexpr double kRatios[] = {0.3, 0.6};
constexpr int kAngles = 6;

class Residuals {
public:
    using Scalar = double;
    using InputType = VectorXd;
    using ValueType = VectorXd;
    using JacobianType = MatrixXd;
    enum { InputsAtCompileTime = Eigen::Dynamic, ValuesAtCompileTime = Eigen::Dynamic };

    Residuals(const std::vector<LagBin> &bins, const FitPlan &plan)
        : mBins(bins), mPlan(plan), mRoots(VectorXd::Ones(Eigen::Index(bins.size())))
    {
        setWeights(nullptr);
    }

    int inputs() const { return mPlan.structures.size() * each(); }
    /// NumericalDiff and the search need at least as many values as parameters.
    int values() const { return static_cast<int>(mBins.size()); }

    /// With the weights of the plan; Cressie's need a model, and start as pairs by distance.
    void setWeights(const VariogramModelAtT *model)
    {
        for (size_t i = 0; i < mBins.size(); ++i) {
            const LagBin &bin = mBins[i];
            const auto n = static_cast<double>(bin.pairs);
            double weight = 1;
            if (mPlan.weights == FitWeights::Pairs)
                weight = n;
            else if (mPlan.weights == FitWeights::Cressie && model)
                weight =
                    n / std::max(std::pow(model->GetModelValue(bin.lag, bin.direction), 2), 1e-24);
            else if (mPlan.weights != FitWeights::Equal)
                weight = n / (bin.lag * bin.lag);
            mRoots[Eigen::Index(i)] = std::sqrt(weight);
        }
    }

    /// The weighted residuals with the best sills.
    int operator()(const VectorXd &parameters, VectorXd &residuals) const
    {
        VectorXd sills;
        residuals = solve(parameters, sills);
        return 0;
    }

    double squares(const VectorXd &parameters) const
    {
        VectorXd sills;
        return solve(parameters, sills).squaredNorm();
    }

    double squaresOf(const VariogramModelAtT &model) const
    {
        double sum = 0;
        for (size_t i = 0; i < mBins.size(); ++i) {
            const LagBin &bin = mBins[i];
            const double rest = bin.value - model.GetModelValue(bin.lag, bin.direction);
            sum += std::pow(mRoots[Eigen::Index(i)] * rest, 2);
        }
        return sum;
    }

    /// The sum that is 0 at the range of a single isotropic Gaussian structure.
    double gaussianMoment(const VectorXd &parameters) const
    {
        VectorXd sills;
        const VectorXd residuals = solve(parameters, sills);
        const double range = shape(parameters, 0).minorRange;
        double sum = 0;
        for (Eigen::Index i = 0; i < residuals.size(); ++i) {
            const double u = mBins[size_t(i)].lag / range;
            sum += mRoots[i] * residuals[i] * u * std::exp(-3 * u * u);
        }
        return sum;
    }

    VariogramModelAtT model(const VectorXd &parameters) const
    {
        VectorXd sills;
        solve(parameters, sills);
        VariogramModelAtT model;
        const double nugget = mPlan.nugget ? *mPlan.nugget : sills[0];
        model.structures.append({VariogramBasicModel::Nugget, nugget, 0, 1, 1});
        for (int k = 0; k < mPlan.structures.size(); ++k) {
            VariogramBasicModel structure = shape(parameters, k);
            structure.sill = sills[k + !mPlan.nugget];
            model.structures.append(structure);
        }
        return model;
    }

private:
    int each() const { return mPlan.anisotropic ? 3 : 1; }

    /// The structure with a sill of 1.
    VariogramBasicModel shape(const VectorXd &parameters, int k) const
    {
        const double first = parameters[k * each()];
        VariogramBasicModel structure(mPlan.structures[k], 1, 0, 1, 1);
        if (structure.type == VariogramBasicModel::Power) {
            structure.minorRange = structure.majorRange = 2 / (1 + std::exp(-first));
            return structure;
        }
        structure.minorRange = structure.majorRange = std::exp(std::clamp(first, -600.0, 600.0));
        if (mPlan.anisotropic) {
            structure.majorRange = std::exp(std::clamp(parameters[k * each() + 1], -600.0, 600.0));
            structure.angle = parameters[k * each() + 2];
        }
        return structure;
    }

    /// Finds the sills at or above 0 with the least squares. @return their residuals.
    VectorXd solve(const VectorXd &parameters, VectorXd &sills) const
    {
        const int free = mPlan.nugget ? 0 : 1;
        const int count = mPlan.structures.size() + free;
        const auto n = Eigen::Index(mBins.size());
        MatrixXd basis(n, count);
        VectorXd target(n);
        for (Eigen::Index i = 0; i < n; ++i) {
            const LagBin &bin = mBins[size_t(i)];
            target[i] = mRoots[i] * (bin.value - mPlan.nugget.value_or(0));
            if (free)
                basis(i, 0) = mRoots[i];
        }
        for (int k = 0; k < mPlan.structures.size(); ++k) {
            const VariogramBasicModel structure = shape(parameters, k);
            for (Eigen::Index i = 0; i < n; ++i) {
                const LagBin &bin = mBins[size_t(i)];
                const double value = structure.GetBasicModelValue(bin.lag, bin.direction);
                basis(i, k + free) = mRoots[i] * (std::isfinite(value) ? value : 0);
            }
        }
        sills = VectorXd::Zero(count);
        VectorXd best = target;
        for (unsigned subset = 1; subset < (1u << count); ++subset)
            trySubset(basis, target, subset, sills, best);
        return best;
    }

    void trySubset(const MatrixXd &basis, const VectorXd &target, unsigned subset, VectorXd &sills,
                   VectorXd &best) const
    {
        std::vector<Eigen::Index> members;
        for (Eigen::Index k = 0; k < basis.cols(); ++k)
            if (subset & (1u << k))
                members.push_back(k);
        MatrixXd part(basis.rows(), Eigen::Index(members.size()));
        for (size_t k = 0; k < members.size(); ++k)
            part.col(Eigen::Index(k)) = basis.col(members[k]);
        const Eigen::ColPivHouseholderQR<MatrixXd> decomposed(part);
        if (decomposed.rank() < part.cols())
            return;
        const VectorXd found = decomposed.solve(target);
        if (!found.allFinite() || (!mPlan.signedSills && found.minCoeff() < 0))
            return;
        const VectorXd residuals = target - part * found;
        if (!(residuals.squaredNorm() < best.squaredNorm()))
            return;
        best = residuals;
        sills.setZero();
        for (size_t k = 0; k < members.size(); ++k)
            sills[members[k]] = found[Eigen::Index(k)];
    }

    const std::vector<LagBin> &mBins;
    const FitPlan &mPlan;
    VectorXd mRoots; ///< of the weights
};

/// The parameters of one structure from which a search may start.
std::vector<VectorXd> latticeOf(Type type, bool anisotropic, double farthest)
{
    std::vector<VectorXd> lattice;
    if (type == VariogramBasicModel::Power) {
        for (const double exponent : kExponents)
            lattice.push_back(VectorXd::Constant(1, -std::log(2 / exponent - 1)));
        return lattice;
    }
    for (const double range : kLattice) {
        const double log = std::log(range * farthest);
        if (!anisotropic) {
            lattice.push_back(VectorXd::Constant(1, log));
            continue;
        }
        for (const double ratio : kRatios)
            for (int angle = 0; angle < kAngles; ++angle)
                lattice.push_back(
                    Eigen::Vector3d(log, log + std::log(ratio), angle * kPi / kAngles));
    }
    return lattice;
}

struct Start {
    VectorXd parameters;
    double squares;
};

/// The best combinations of the structures' lattices. Equal types are combined in one order only.
std::vector<Start> startsOf(const Residuals &residuals, const FitPlan &plan, double farthest)
{
    std::vector<std::vector<VectorXd>> lattices;
    for (const Type type : plan.structures)
        lattices.push_back(latticeOf(type, plan.anisotropic, farthest));
    // Anisotropic nested models would have too many combinations: each n-th is taken.
    double combinations = 1;
    for (const auto &lattice : lattices)
        combinations *= static_cast<double>(lattice.size());
    const auto step = static_cast<size_t>(std::max(1.0, std::ceil(combinations / 3000)));
    std::vector<Start> starts;
    for (size_t index = 0; index < static_cast<size_t>(combinations); index += step) {
        VectorXd parameters(residuals.inputs());
        size_t rest = index;
        Eigen::Index at = 0;
        for (const auto &lattice : lattices) {
            const VectorXd &part = lattice[rest % lattice.size()];
            rest /= lattice.size();
            parameters.segment(at, part.size()) = part;
            at += part.size();
        }
        const double squares = residuals.squares(parameters);
        if (std::isfinite(squares))
            starts.push_back({parameters, squares});
    }
    if (starts.empty())
        fail(QStringLiteral("the semivariances or the nugget are too large for a fit"), "nugget");
    const size_t kept = std::min<size_t>(kStarts, starts.size());
    std::partial_sort(starts.begin(), starts.begin() + std::ptrdiff_t(kept), starts.end(),
                      [](const Start &a, const Start &b) { return a.squares < b.squares; });
    starts.resize(kept);
    return starts;
}

/// @return whether the search ended at a minimum.
bool search(const Residuals &residuals, Start &start)
{
    Eigen::NumericalDiff<Residuals, Eigen::Central> slopes(residuals);
    Eigen::LevenbergMarquardt<Eigen::NumericalDiff<Residuals, Eigen::Central>> method(slopes);
    method.parameters.xtol = 1e-10;
    method.parameters.ftol = 1e-14;
    method.parameters.maxfev = 2000;
    VectorXd parameters = start.parameters;
    const auto status = method.minimize(parameters);
    const double squares = residuals.squares(parameters);
    if (squares <= start.squares) {
        start.parameters = parameters;
        start.squares = squares;
    }
    using namespace Eigen::LevenbergMarquardtSpace;
    return status != TooManyFunctionEvaluation && status != ImproperInputParameters
           && status != UserAsked;
}

/// Moves the range of a single isotropic Gaussian structure to the zero of its moment nearest to the
/// least sum of squares; leaves it where it is if there is none. The sills stay those of least
/// squares. Least squares weigh the residuals by h^2 there, and so let the classes near the range
/// determine it; weighed by h, those near the origin count more, where the curvature determines how
/// smooth predictions are.
void settleGaussian(const Residuals &residuals, Start &found)
{
    const double middle = found.parameters[0];
    const auto momentAt = [&](double range) {
        return residuals.gaussianMoment(VectorXd::Constant(1, range));
    };
    const double atMinimum = momentAt(middle);
    for (double step = std::log(kFirstStep), before = 0; step < std::log(kMostStep);
         before = step, step *= 1.3) {
        for (const double side : {-1.0, 1.0}) {
            double low = middle + side * before;
            double high = middle + side * step;
            if ((momentAt(high) > 0) == (atMinimum > 0))
                continue;
            for (int halving = 0; halving < 60; ++halving) {
                const double half = (low + high) / 2;
                ((momentAt(half) > 0) == (atMinimum > 0) ? low : high) = half;
            }
            found.parameters[0] = high;
            found.squares = residuals.squares(found.parameters);
            return;
        }
    }
}

/// The larger range is stored across the direction, and the direction within half a turn.
void normalise(VariogramModelAtT &model)
{
    for (VariogramBasicModel &structure : model.structures) {
        if (structure.majorRange < structure.minorRange) {
            std::swap(structure.majorRange, structure.minorRange);
            structure.angle += kPi / 2;
        }
        if (structure.majorRange == structure.minorRange)
            structure.angle = 0;
        structure.angle = std::remainder(structure.angle, kPi);
        if (structure.angle < 0)
            structure.angle += kPi;
    }
}

QString doubtOf(const VariogramModelAtT &model, double nearest, double farthest)
{
    for (const VariogramBasicModel &structure : model.structures) {
        if (structure.type == VariogramBasicModel::Nugget
            || structure.type == VariogramBasicModel::Power)
            continue;
        const QString name = QLatin1String(structureName(structure.type));
        if (structure.sill == 0)
            return QStringLiteral("the %1 structure has no share; its range is arbitrary")
                .arg(name);
        if (structure.majorRange > kFarRange * farthest)
            return QStringLiteral("the values do not level off: the range of the %1 structure is "
                                  "beyond %2 times the largest lag")
                .arg(name)
                .arg(kFarRange);
        if (structure.minorRange < nearest / kFarRange)
            return QStringLiteral("the range of the %1 structure is far below the smallest lag")
                .arg(name);
    }
    return QString();
}

bool isNuggetAlone(const FitPlan &plan)
{
    return plan.structures == QVector<Type>{VariogramBasicModel::Nugget};
}

void requireFit(const std::vector<LagBin> &bins, const FitPlan &plan)
{
    if (plan.structures.isEmpty() || plan.structures.size() > kMostStructures)
        failUsage(QStringLiteral("a model has one to %1 structures besides the nugget")
                      .arg(kMostStructures),
                  "model");
    if (plan.nugget && (!std::isfinite(*plan.nugget) || (*plan.nugget < 0 && !plan.signedSills)))
        failUsage(QStringLiteral("a nugget is 0 or above"), "nugget");
    int parameters = plan.nugget ? 0 : 1;
    for (const Type type : plan.structures) {
        if (type == VariogramBasicModel::Nugget && !isNuggetAlone(plan))
            failUsage(QStringLiteral("the nugget is part of every model; alone it is a model "
                                     "without structures"),
                      "model");
        if (type == VariogramBasicModel::Power && plan.anisotropic)
            failUsage(QStringLiteral("a power structure is isotropic"), "model");
        if (type != VariogramBasicModel::Nugget)
            parameters += plan.anisotropic ? 4 : 2;
    }
    if (bins.size() < size_t(parameters))
        fail(QStringLiteral("%1 of pairs %2 too few for %3")
                 .arg(counted(static_cast<qint64>(bins.size()), "class"),
                      bins.size() == 1 ? QStringLiteral("is") : QStringLiteral("are"),
                      counted(parameters, "parameter")),
             "width");
    const bool varies =
        std::any_of(bins.begin(), bins.end(), [](const LagBin &bin) { return bin.value != 0; });
    if (!varies)
        fail(QStringLiteral("all values are equal; there is no variogram to fit"));
}

/// The weighted mean of the semivariances, or the nugget that is fixed.
FittedModel fitNugget(const std::vector<LagBin> &bins, FitPlan plan)
{
    plan.structures.clear();
    Residuals residuals(bins, plan);
    FittedModel found;
    found.model = residuals.model(VectorXd());
    // Cressie's weights of one value are in proportion to the numbers of pairs: one round settles.
    if (plan.weights == FitWeights::Cressie) {
        residuals.setWeights(&found.model);
        found.model = residuals.model(VectorXd());
    }
    found.squares = residuals.squares(VectorXd());
    found.converged = true;
    return found;
}

} // namespace

FittedModel givenModel(const std::vector<LagBin> &bins, const VariogramModelAtT &model,
                       FitWeights weights)
{
    FitPlan plan;
    plan.weights = weights;
    Residuals residuals(bins, plan);
    residuals.setWeights(&model);
    return {model, residuals.squaresOf(model), true, QString()};
}

FittedModel fitVariogram(const std::vector<LagBin> &bins, const FitPlan &plan)
{
    requireFit(bins, plan);
    if (isNuggetAlone(plan))
        return fitNugget(bins, plan);
    const auto byLag = [](const LagBin &a, const LagBin &b) { return a.lag < b.lag; };
    const auto ends = std::minmax_element(bins.begin(), bins.end(), byLag);
    Residuals residuals(bins, plan);
    FittedModel best;
    Start found{{}, std::numeric_limits<double>::infinity()};
    for (Start &start : startsOf(residuals, plan, ends.second->lag)) {
        const bool converged = search(residuals, start);
        if (start.squares < found.squares) {
            found = start;
            best.converged = converged;
        }
    }
    if (plan.weights == FitWeights::Cressie) {
        bool settled = false;
        for (int round = 0; round < kReweights && !settled; ++round) {
            const VariogramModelAtT before = residuals.model(found.parameters);
            residuals.setWeights(&before);
            found.squares = residuals.squares(found.parameters);
            const VectorXd was = found.parameters;
            best.converged = search(residuals, found);
            settled = (found.parameters - was).norm() <= kSettled * (1 + was.norm());
        }
        if (!settled)
            best.converged = false;
    }
    const bool isGaussian = plan.structures == QVector<Type>{VariogramBasicModel::Gaussian};
    if (isGaussian && !plan.anisotropic && !plan.exactMinimum)
        settleGaussian(residuals, found);
    best.model = residuals.model(found.parameters);
    best.squares = found.squares;
    normalise(best.model);
    best.remark = doubtOf(best.model, ends.first->lag, ends.second->lag);
    if (!best.converged)
        best.remark = QStringLiteral("the fit did not converge");
    else if (!best.remark.isEmpty())
        best.converged = false;
    return best;
}

} // namespace meridor
