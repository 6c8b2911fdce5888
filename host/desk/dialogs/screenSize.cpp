// SPDX-License-Identifier: MIT
#include "desk/dialogs/screenSize.h"
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

namespace meridor {

QSize boundedToScreen(const QWidget &widget, const QSize &size)
{
    const QScreen *const screen =
        widget.screen() ? widget.screen() : QGuiApplication::primaryScreen();
    if (!screen || QGuiApplication::platformName() == QLatin1String("offscreen"))
        return size;
    // A window that was not shown yet has no frame to measure: a title, and borders.
    const int frame = 2 * widget.fontMetrics().height();
    return size.boundedTo(screen->availableSize() - QSize(frame / 2, frame));
}

} // namespace meridor
