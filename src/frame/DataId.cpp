// SPDX-License-Identifier: MIT
#include "datainterface/DataId.h"

uint qHash(const DataId &id, uint seed)
{
    return ::qHash(static_cast<int>(id), seed);
}

QDataStream &operator<<(QDataStream &out, const DataId &id)
{
    return out << qint32(id);
}

QDataStream &operator>>(QDataStream &in, DataId &id)
{
    qint32 number = -1;
    in >> number;
    id = DataId(number);
    return in;
}
