// SPDX-License-Identifier: MIT
/// The plan that the parameters of the variogram method stand for.
#pragma once
#include "core/geostatistics/variogramModels.h"
#include "desk/methods/method.h"

namespace meridor {

/// Of all times of the dataset. Raises a Failure if none is chosen.
VariogramPlan variogramPlanOf(const MethodArguments &arguments);

} // namespace meridor
