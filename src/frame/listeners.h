// SPDX-License-Identifier: MIT
/// Connects listeners, which are plain QObjects, by the texts of their slots.
#pragma once
#include <QObject>

namespace datainterface {

/// A signal and the slot to connect it to, in the form that SIGNAL() and SLOT() give them.
struct Connection {
    const char *signal;
    const char *slot;
};

/// Connects in order and stops at the first failure. @return whether all were connected.
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
