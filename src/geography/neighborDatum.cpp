// SPDX-License-Identifier: MIT
#include "datainterface/neighborDatum.h"

QDataStream &operator<<(QDataStream &out, const neighborDatum &datum)
{
    return out << qint32(datum.id) << datum.weight << datum.angle << datum.distance;
}

QDataStream &operator>>(QDataStream &in, neighborDatum &datum)
{
    return in >> datum.id >> datum.weight >> datum.angle >> datum.distance;
}
