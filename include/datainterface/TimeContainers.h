// SPDX-License-Identifier: MIT
/// Both shapes of a vector dataset's values.
#pragma once
#include "datainterface/TimeSeriesData.h"
#include "datainterface/TimeSliceData.h"
