// SPDX-License-Identifier: MIT
#include "datainterface/MissingFlag.h"
#include "Common/detail/failure.h"

namespace {

/// The type in which a value is streamed: unsigned values of 8 and 16 bits and halves are written
/// as signed integers.
template <class T> struct Wire {
    using type = T;
};
template <> struct Wire<quint8> {
    using type = qint8;
};
template <> struct Wire<quint16> {
    using type = qint16;
};

template <class T> void write(QDataStream &out, T value)
{
    if constexpr (std::is_same_v<T, half>)
        out << static_cast<qint16>(value.bits);
    else
        out << static_cast<typename Wire<T>::type>(value);
}

template <class T> void read(QDataStream &in, T &value)
{
    if constexpr (std::is_same_v<T, half>) {
        qint16 bits = 0;
        in >> bits;
        value.bits = static_cast<quint16>(bits);
    } else {
        typename Wire<T>::type wire{};
        in >> wire;
        value = static_cast<T>(wire);
    }
}

/// Calls `visit` with the value that the flag's type code selects. None selects no value; an
/// unknown code raises "Invalid data type".
template <class Flag, class Visit> void visitValue(Flag &flag, Visit visit)
{
    if (flag.type == MissingFlag::None)
        return;
    const bool found = std::apply(
        [&](auto &...value) {
            return ((flag.type == MissingFlag::codeOf(std::decay_t<decltype(value)>())
                     && (visit(value), true))
                    || ...);
        },
        flag.fields());
    datainterface::require(found, "Invalid data type");
}

} // namespace

QDataStream &operator<<(QDataStream &out, const MissingFlag &flag)
{
    out << flag.type;
    visitValue(flag, [&out](const auto &value) { write(out, value); });
    return out;
}

QDataStream &operator>>(QDataStream &in, MissingFlag &flag)
{
    flag = MissingFlag();
    in >> flag.type;
    visitValue(flag, [&in](auto &value) { read(in, value); });
    return in;
}
