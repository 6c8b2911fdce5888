// SPDX-License-Identifier: MIT
#include "datainterface/WaitCursor.h"
#include <QCursor>
#include <QGuiApplication>

namespace {

bool hasCursor()
{
    return qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr;
}

} // namespace

WaitCursor::WaitCursor()
{
    if (hasCursor())
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
}

WaitCursor::~WaitCursor()
{
    if (hasCursor())
        QGuiApplication::restoreOverrideCursor();
}
