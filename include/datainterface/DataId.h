// SPDX-License-Identifier: MIT
/// The id of a dataset, which has the geography's id in its upper 16 bits.
#pragma once
#include <QDataStream>
#include <QHash>
#include <QtGlobal>
#include <type_traits>
#include "datainterface/export.h"

/// One signed 32-bit integer. -1 is invalid; 0 is the first dataset of the first geography.
class DATAINTERFACE_EXPORT DataId {
    template <class Number> using IfWhole = std::enable_if_t<std::is_integral_v<Number>, int>;

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
    // Comparisons with integers of any width. Without them a comparison would be ambiguous: the
    // integer converts to an id, and the id to an integer.
    template <class Number, IfWhole<Number> = 0> bool operator==(Number number) const
    {
        return mId == static_cast<qint64>(number);
    }
    template <class Number, IfWhole<Number> = 0> bool operator!=(Number number) const
    {
        return mId != static_cast<qint64>(number);
    }
    template <class Number, IfWhole<Number> = 0> bool operator<(Number number) const
    {
        return mId < static_cast<qint64>(number);
    }

private:
    qint32 mId = -1;
};

/// The hash of the whole number.
DATAINTERFACE_EXPORT uint qHash(const DataId &id, uint seed = 0);
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const DataId &id);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, DataId &id);
