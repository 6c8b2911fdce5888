// SPDX-License-Identifier: MIT
// The summary of a variogram model that hosts show.
#include "datainterface/VariogramModel.h"
#include <algorithm>
#include <cmath>
#include "datainterface/MGeoData.h"
#include "fennimark/geometryTypes.h"

namespace {

constexpr double kPropsEpsilon = 1e-6;
constexpr double kNoSill = -1.0;

double diagonal(const MGeoData &geography)
{
    const RectInT box = geography.GetBoundingRect();
    const double width = box.xMax - box.xMin;
    const double height = box.yMax - box.yMin;
    return std::sqrt(width * width + height * height);
}

// `maxDistance` is the diagonal of the geography, null without one. A power structure has no sill;
// its value at that distance is shown instead, infinite without a geography.
VariogramStructureProps structureProps(const VariogramBasicModel &structure,
                                       const double *maxDistance)
{
    VariogramStructureProps props;
    props.type = structure.type;
    props.sill = structure.sill;
    props.angle = structure.angle;
    props.majorRange = structure.majorRange;
    props.minorRange = structure.minorRange;
    props.epsilonRange = structure.GetEpsilonRange(kPropsEpsilon);
    if (structure.type == VariogramBasicModel::Power) {
        props.exponent = structure.minorRange;
        props.sill =
            maxDistance ? structure.GetBasicModelValue(*maxDistance, structure.angle) : HUGE_VAL;
    }
    return props;
}

VariogramModelAtTProps modelProps(const VariogramModelAtT &model, const double *maxDistance)
{
    VariogramModelAtTProps props;
    for (const VariogramBasicModel &structure : model.structures) {
        const VariogramStructureProps one = structureProps(structure, maxDistance);
        if (structure.type == VariogramBasicModel::Power) {
            props.sill = kNoSill;
            props.range = HUGE_VAL;
            props.powerValue += one.sill;
        } else {
            if (props.sill != kNoSill)
                props.sill += one.sill;
            props.range = std::max(props.range, one.epsilonRange);
        }
        props.structures.append(one);
    }
    return props;
}

template <class Test> bool anyStructure(const QMap<TimeStamp, VariogramModelAtT> &models, Test test)
{
    return std::any_of(models.begin(), models.end(), [test](const VariogramModelAtT &model) {
        return std::any_of(model.structures.begin(), model.structures.end(), test);
    });
}

} // namespace

VariogramModelProps VariogramModel::GetProperties(const MGeoData *geography) const
{
    VariogramModelProps props;
    props.id = id;
    props.name = name;
    props.dataset = dataset;
    props.locations = locations;
    props.estimator = estimator;
    props.weightsDataset = weightsDataset;
    props.lagCount = lagCount;

    const double maxDistance = geography ? diagonal(*geography) : 0.0;
    for (auto it = centroidModels.constBegin(); it != centroidModels.constEnd(); ++it)
        props.models.insert(it.key(), modelProps(it.value(), geography ? &maxDistance : nullptr));
    props.hasPowerModel = anyStructure(centroidModels, [](const VariogramBasicModel &structure) {
        return structure.type == VariogramBasicModel::Power;
    });
    props.isAnisotropic = anyStructure(centroidModels, [](const VariogramBasicModel &structure) {
        return structure.majorRange != structure.minorRange;
    });
    return props;
}
