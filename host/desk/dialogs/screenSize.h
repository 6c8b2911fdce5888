// SPDX-License-Identifier: MIT
/// Sizes of windows and dialogs as they open.
#pragma once
#include <QSize>

class QWidget;

namespace meridor {

/// The size, or less of it where the widget's screen has no room for it and a frame. The nominal
/// screen of the platform without a display bounds nothing.
QSize boundedToScreen(const QWidget &widget, const QSize &size);

} // namespace meridor
