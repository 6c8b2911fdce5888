// SPDX-License-Identifier: MIT
/// Both containers of a vector dataset's values.
#pragma once
#include "datainterface/TimeSeriesData.h"
#include "datainterface/TimeSliceData.h"
