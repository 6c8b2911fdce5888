// SPDX-License-Identifier: MIT
/// The labels of the axes of graphs.
#pragma once
#include <memory>
#include "core/export.h"

class QwtScaleDraw;

namespace meridor {

/// Numbers with digits in groups, all with the same number of decimal places; or dates.
/// @param dates  as in GraphAxis.
MERIDOR_EXPORT std::unique_ptr<QwtScaleDraw> graphScaleDraw(bool dates);

} // namespace meridor
