// SPDX-License-Identifier: MIT
#include "core/geostatistics/covariance.h"
#include <QStringList>
#include <cmath>
#include "core/formats/values.h"
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

using Type = VariogramBasicModel::ModelType;

constexpr double kDegree = 3.14159265358979323846 / 180;
constexpr double kMostRange = 1e150; ///< the squares of ranges and of their reciprocals are finite
constexpr double kNuggetRange = 1;   ///< a nugget with ranges of 0 would not be 0 at separation 0
/// The constant in place of a missing sill, relative to the largest value of the structure. Once it
/// exceeds that value by far, its size only affects rounding.
constexpr double kShift = 10;

struct Name {
    const char *name;
    Type type;
};
constexpr Name kNames[] = {{"nugget", VariogramBasicModel::Nugget},
                           {"spherical", VariogramBasicModel::Spherical},
                           {"exponential", VariogramBasicModel::Exponential},
                           {"gaussian", VariogramBasicModel::Gaussian},
                           {"power", VariogramBasicModel::Power},
                           {"cubic", VariogramBasicModel::Cubic}};

double spherical(double u)
{
    return u < 1 ? 1 - u * (1.5 - 0.5 * u * u) : 0;
}

double cubic(double u2)
{
    if (u2 >= 1)
        return 0;
    const double u = std::sqrt(u2);
    return 1 - u2 * (7 - u * (8.75 + u2 * (-3.5 + 0.75 * u2)));
}

void requireUsable(const VariogramBasicModel &structure)
{
    const QString name = QLatin1String(structureName(structure.type));
    if (!std::isfinite(structure.sill) || structure.sill < 0)
        fail(QStringLiteral("the sill of a %1 structure is %2")
                 .arg(name, exactNumber(structure.sill)));
    if (structure.type == VariogramBasicModel::Nugget)
        return;
    for (const double range : {structure.majorRange, structure.minorRange})
        if (!(range > 0 && range < kMostRange)
            || (structure.type != VariogramBasicModel::Power && range < 1 / kMostRange))
            fail(QStringLiteral("the range of a %1 structure is %2").arg(name, exactNumber(range)));
    if (!std::isfinite(structure.angle))
        fail(QStringLiteral("the direction of a %1 structure is no number").arg(name));
    if (structure.type != VariogramBasicModel::Power)
        return;
    if (structure.majorRange != structure.minorRange)
        fail(QStringLiteral("the exponent of a power structure depends on the direction"));
    if (structure.majorRange >= 2)
        fail(QStringLiteral("the exponent of a power structure is %1; it must be below 2")
                 .arg(exactNumber(structure.majorRange)));
}

} // namespace

const char *structureName(Type type)
{
    for (const Name &known : kNames)
        if (known.type == type)
            return known.name;
    fail(QStringLiteral("the model has a structure of unknown type %1").arg(int(type)));
}

Type structureNamed(const QString &name)
{
    QStringList names;
    for (const Name &known : kNames) {
        if (name == QLatin1String(known.name))
            return known.type;
        names.append(QLatin1String(known.name));
    }
    failUsage(QStringLiteral("%1 is no structure; there are: %2").arg(name, someOf(names)),
              "model");
}

VariogramModelAtT parseStructures(const QString &text)
{
    VariogramModelAtT model;
    for (const QString &part : text.split(QLatin1Char(','))) {
        const QStringList fields = part.trimmed().split(QLatin1Char(':'));
        if (part.trimmed().isEmpty())
            failUsage(QStringLiteral("%1: a structure is empty").arg(text), "model");
        const Type type = structureNamed(fields[0]);
        QVector<double> numbers;
        for (const QString &field : fields.mid(1)) {
            const auto number = toDecimal(field.toStdString());
            if (!number || !std::isfinite(*number))
                failUsage(QStringLiteral("%1: %2 is no number").arg(part, field), "model");
            numbers.append(*number);
        }
        if (type == VariogramBasicModel::Nugget && numbers.size() == 1)
            numbers.append(kNuggetRange);
        if (numbers.size() != 2 && numbers.size() != 4)
            failUsage(QStringLiteral("%1: not TYPE:SILL:RANGE or TYPE:SILL:RANGE:MAJOR:DEGREES")
                          .arg(part),
                      "model");
        const bool turned = numbers.size() == 4;
        model.structures.append({type, numbers[0], turned ? numbers[3] * kDegree : 0,
                                 turned ? numbers[2] : numbers[1], numbers[1]});
    }
    const Covariance checked(model);
    return model;
}

double degreesOf(double radians)
{
    const double degrees = radians / kDegree;
    const double rounded = std::round(degrees * 1e9) / 1e9;
    return rounded * kDegree == radians ? rounded : degrees;
}

QString structuresText(const VariogramModelAtT &model)
{
    QStringList parts;
    for (const VariogramBasicModel &structure : model.structures) {
        QStringList fields{QLatin1String(structureName(structure.type)),
                           exactNumber(structure.sill)};
        if (structure.type != VariogramBasicModel::Nugget)
            fields.append(exactNumber(structure.minorRange));
        if (structure.majorRange != structure.minorRange)
            fields.append(
                {exactNumber(structure.majorRange), exactNumber(degreesOf(structure.angle))});
        parts.append(fields.join(QLatin1Char(':')));
    }
    return parts.join(QLatin1Char(','));
}

Covariance::Covariance(const VariogramModelAtT &model, double reach)
{
    if (model.structures.isEmpty())
        fail(QStringLiteral("the variogram model has no structures"));
    for (const VariogramBasicModel &structure : model.structures) {
        requireUsable(structure);
        if (structure.type == VariogramBasicModel::Nugget) {
            mNugget += structure.sill;
            continue;
        }
        if (structure.type == VariogramBasicModel::Power) {
            mBounded = false;
            mShift += kShift * structure.sill * std::pow(reach, structure.minorRange);
            mStructures.push_back(
                {structure.type, structure.sill, 1, 0, 1, structure.minorRange / 2});
            continue;
        }
        const double across = 1 / (structure.majorRange * structure.majorRange);
        const double more = 1 / (structure.minorRange * structure.minorRange) - across;
        const double c = std::cos(structure.angle);
        const double s = std::sin(structure.angle);
        mStructures.push_back({structure.type, structure.sill, across + more * c * c,
                               2 * more * c * s, across + more * s * s, 0});
        mSmoothSill += structure.sill;
    }
    mSmoothSill += mShift;
    if (!(sill() > 0) && mBounded)
        fail(QStringLiteral("all sills of the variogram model are 0"));
}

double Covariance::smoothAt(double dx, double dy) const
{
    double sum = mShift;
    for (const Structure &structure : mStructures) {
        // Rounding can leave less than 0 along a range that is far larger than the other one.
        const double u2 =
            std::fmax(0, structure.xx * dx * dx + structure.xy * dx * dy + structure.yy * dy * dy);
        switch (structure.type) {
        case VariogramBasicModel::Spherical:
            sum += structure.sill * spherical(std::sqrt(u2));
            break;
        case VariogramBasicModel::Exponential:
            sum += structure.sill * std::exp(-3 * std::sqrt(u2));
            break;
        case VariogramBasicModel::Gaussian:
            sum += structure.sill * std::exp(-3 * u2);
            break;
        case VariogramBasicModel::Power:
            sum -= structure.sill * std::pow(u2, structure.exponent);
            break;
        case VariogramBasicModel::Cubic:
            sum += structure.sill * cubic(u2);
            break;
        case VariogramBasicModel::Nugget:
            break;
        }
    }
    return sum;
}

double Covariance::at(double dx, double dy) const
{
    return smoothAt(dx, dy) + (dx == 0 && dy == 0 ? mNugget : 0);
}

void Covariance::fill(double x, double y, const double *xs, const double *ys, int count,
                      double *out) const
{
    if (mStructures.size() == 1 && mStructures[0].type == VariogramBasicModel::Spherical) {
        // The most frequent model, without a branch on the type in the loop.
        const Structure s = mStructures[0];
        for (int i = 0; i < count; ++i) {
            const double dx = x - xs[i];
            const double dy = y - ys[i];
            const double u =
                std::sqrt(std::fmax(0, s.xx * dx * dx + s.xy * dx * dy + s.yy * dy * dy));
            const double bounded = u < 1 ? u : 1;
            out[i] = s.sill * (1 - bounded * (1.5 - 0.5 * bounded * bounded));
        }
    } else {
        for (int i = 0; i < count; ++i)
            out[i] = smoothAt(x - xs[i], y - ys[i]);
    }
    if (mNugget > 0)
        for (int i = 0; i < count; ++i)
            out[i] += x == xs[i] && y == ys[i] ? mNugget : 0;
}

} // namespace meridor
