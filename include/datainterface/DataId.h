// SPDX-License-Identifier: MIT
/// The identifier of a dataset: the geography's id in the upper 16 bits.
#pragma once
#include <QDataStream>
#include <QHash>
#include <QtGlobal>
#include "datainterface/export.h"

/// One signed 32-bit integer. -1 is invalid; 0 is the first dataset of the first geography.
class DATAINTERFACE_EXPORT DataId {
public:
    DataId() = default;
    DataId(int id) : mId(id) {}
    operator int() const { return mId; }
    bool isValid() const { return mId != -1; }
    /// The upper 16 bits as a signed number.
    int GeoId() const { return static_cast<qint16>(static_cast<quint32>(mId) >> 16); }
    bool operator==(const DataId &other) const { return mId == other.mId; }
    bool operator!=(const DataId &other) const { return mId != other.mId; }
    bool operator<(const DataId &other) const { return mId < other.mId; }

private:
    qint32 mId = -1;
};

DATAINTERFACE_EXPORT uint qHash(const DataId &id, uint seed = 0);
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const DataId &id);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, DataId &id);
