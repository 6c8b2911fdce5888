// SPDX-License-Identifier: MIT
// How fast does the desktop draw? Each picture is compared with the plain way to draw the same.
#include <QApplication>
#include "datainterface/FrameAPI.h"
#include "desk/scenes.h"
#include "ratios.h"

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    VORN_InitializeForTesting();
    scenes::mapRows();
    scenes::scatterRows();
    scenes::gridRows();
    return ratios::missed > 0;
}
