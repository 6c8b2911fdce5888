// SPDX-License-Identifier: MIT
/// A variogram model as a covariance, prepared for many evaluations.
#pragma once
#include <QString>
#include <vector>
#include "core/export.h"
#include "datainterface/VariogramModel.h"

namespace meridor {

/// Parses "TYPE:SILL:RANGE" or "TYPE:SILL:RANGE:MAJOR:DEGREES", several separated by commas, such as
/// "nugget:0.05,spherical:0.59:897". The range of a nugget may be left out; that of a power
/// structure is its exponent. With five parts, RANGE applies along the direction DEGREES
/// (counter-clockwise from the x axis) and MAJOR across it. Raises a Failure of kind Misused.
MERIDOR_EXPORT VariogramModelAtT parseStructures(const QString &text);
/// The form that parseStructures reads.
MERIDOR_EXPORT QString structuresText(const VariogramModelAtT &model);
/// An angle in degrees with as few decimals as give the same radians: 30, and not 29.999999999999996.
MERIDOR_EXPORT double degreesOf(double radians);
/// "spherical"
MERIDOR_EXPORT const char *structureName(VariogramBasicModel::ModelType type);
/// Raises a Failure of kind Misused for an unknown name.
MERIDOR_EXPORT VariogramBasicModel::ModelType structureNamed(const QString &name);

/// C(h) = sill - gamma(h). A power structure has no sill: in its place is a constant so large that
/// the matrices of systems whose weights sum to 1 are positive definite; the constant cancels out
/// in such systems.
class MERIDOR_EXPORT Covariance {
public:
    /// Raises a Failure for a model without structures, a negative or infinite number, a range of 0,
    /// an exponent that is not between 0 and 2, and a power structure whose ranges differ. A nugget
    /// may have any range.
    /// @param reach  the largest separation that will be asked for, if a power structure is used.
    explicit Covariance(const VariogramModelAtT &model, double reach = 0);

    bool isBounded() const { return mBounded; }
    /// The covariance at the same place.
    double sill() const { return mNugget + mSmoothSill; }
    double nugget() const { return mNugget; }
    /// The limit of the covariance at short separations.
    double smoothSill() const { return mSmoothSill; }
    double at(double dx, double dy) const;
    /// The same without the nugget at separation 0: for averages over blocks, in which the nugget
    /// has no share.
    double smoothAt(double dx, double dy) const;
    /// out[i] = at(x - xs[i], y - ys[i])
    void fill(double x, double y, const double *xs, const double *ys, int count, double *out) const;

private:
    /// u^2 = xx dx^2 + xy dx dy + yy dy^2 for the lag u relative to the range in its direction.
    struct Structure {
        VariogramBasicModel::ModelType type;
        double sill;
        double xx;
        double xy;
        double yy;
        double exponent; ///< half that of a power structure
    };
    std::vector<Structure> mStructures; ///< without nuggets
    double mNugget = 0;
    double mSmoothSill = 0;
    double mShift = 0; ///< in place of the sills of power structures
    bool mBounded = true;
};

} // namespace meridor
