// SPDX-License-Identifier: MIT
#include "weights/egoNeighbors.h"
#include "Common/DataManager.h"
#include "Common/detail/failure.h"
#include "containers/imageCursor.h"
#include "datainterface/DataBlocks.h"

namespace datainterface {
namespace {

constexpr int kCountBytes = sizeof(qint32);
constexpr int kDatumBytes = sizeof(qint32) + 3 * sizeof(double); // floats are written as doubles

quint64 doubleBits(float value)
{
    const double wide = static_cast<double>(value);
    quint64 bits = 0;
    std::memcpy(&bits, &wide, sizeof bits);
    return bits;
}

float floatFrom(const char *bytes)
{
    const auto bits = qFromBigEndian<quint64>(bytes);
    double value = 0.0;
    std::memcpy(&value, &bits, sizeof value);
    return static_cast<float>(value);
}

} // namespace

egoNeighbors::egoNeighbors(const neighborDatum *list, int count)
{
    ImageWriter image(kCountBytes + kDatumBytes * qint64(count));
    image.integer<qint32>(count);
    for (const neighborDatum *datum = list; datum != list + count; ++datum) {
        image.integer<qint32>(datum->id);
        image.integer(doubleBits(datum->weight));
        image.integer(doubleBits(datum->angle));
        image.integer(doubleBits(datum->distance));
    }
    mBlockId = SaveDataBlock(image.image());
}

egoNeighbors &egoNeighbors::operator=(egoNeighbors &&other) noexcept
{
    if (this != &other) {
        freeBlock();
        mBlockId = other.release();
    }
    return *this;
}

void egoNeighbors::freeBlock()
{
    if (mBlockId >= 0)
        DeleteDataBlock(release());
}

egoNeighbors egoNeighbors::copy() const
{
    QByteArray bytes;
    if (mBlockId >= 0 && ReadDataBlock(mBlockId, bytes))
        return egoNeighbors(SaveDataBlock(bytes));
    require(mBlockId < 0 || !blockStore().Holds(mBlockId), "Invalid block id");
    return egoNeighbors();
}

bool egoNeighbors::read(QVector<neighborDatum> &list) const
{
    QByteArray bytes;
    list.clear();
    if (mBlockId < 0)
        return true;
    if (!ReadDataBlock(mBlockId, bytes))
        return !blockStore().Holds(mBlockId);
    if (bytes.size() < kCountBytes)
        return true;
    const char *from = bytes.constData();
    const auto count = qFromBigEndian<qint32>(from);
    if (count < 0 || bytes.size() != kCountBytes + kDatumBytes * qint64(count))
        return true;
    list.resize(count);
    from += kCountBytes;
    for (neighborDatum &datum : list) {
        datum.id = qFromBigEndian<qint32>(from);
        datum.weight = floatFrom(from + 4);
        datum.angle = floatFrom(from + 12);
        datum.distance = floatFrom(from + 20);
        from += kDatumBytes;
    }
    return true;
}

int egoNeighbors::storedBytes() const
{
    QByteArray bytes;
    return mBlockId >= 0 && ReadDataBlock(mBlockId, bytes) ? bytes.size() : 0;
}

} // namespace datainterface
