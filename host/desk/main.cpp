// SPDX-License-Identifier: MIT
#include "desk/window/application.h"
#include "desk/window/mainWindow.h"

int main(int argc, char **argv)
{
    meridor::Application application(argc, argv);
    application.window().show();
    return meridor::Application::exec();
}
