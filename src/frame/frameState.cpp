// SPDX-License-Identifier: MIT
#include "frame/frameState.h"
#include <QApplication>

namespace datainterface {
namespace {

ControllerBase *gController = nullptr;
bool gTesting = false;

} // namespace

ControllerBase *controller()
{
    return gController;
}

void setController(ControllerBase *controller)
{
    gController = controller;
}

bool isTesting()
{
    return gTesting;
}

void setTesting(bool testing)
{
    gTesting = testing;
}

bool canShowWidgets()
{
    return qobject_cast<QApplication *>(QCoreApplication::instance()) != nullptr;
}

} // namespace datainterface
