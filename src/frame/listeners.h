// SPDX-License-Identifier: MIT
/// Listeners are plain QObjects that are found by the texts of their slots.
#pragma once
#include <QObject>

namespace datainterface {

/// One signal and the slot that it goes to, as SIGNAL() and SLOT() make them.
struct Connection {
    const char *signal;
    const char *slot;
};

/// Connects in order, each only if the one before succeeded. @return whether all did.
template <class Connections>
bool connectAll(QObject *sender, QObject *listener, const Connections &connections)
{
    for (const Connection &connection : connections)
        if (!listener || !QObject::connect(sender, connection.signal, listener, connection.slot))
            return false;
    return true;
}

template <class Connections>
void disconnectAll(QObject *sender, QObject *listener, const Connections &connections)
{
    if (!listener)
        return;
    for (const Connection &connection : connections)
        QObject::disconnect(sender, connection.signal, listener, connection.slot);
}

} // namespace datainterface
