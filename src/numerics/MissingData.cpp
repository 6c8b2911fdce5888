// SPDX-License-Identifier: MIT
#include "datainterface/MissingData.h"
#include <QtAlgorithms>
#include "Common/detail/failure.h"
#include "datainterface/GeoProps.h"

using datainterface::require;

namespace {

int bytesFor(int cells)
{
    return cells / 8 + (cells % 8 != 0);
}

/// The bit of a cell in its byte.
char bitOf(int cell)
{
    return static_cast<char>(1 << (cell % 8));
}

bool holdsCell(const MissingData &body, int cell)
{
    return cell >= 0 && cell / 8 < body.bits.size();
}

VORN_MissingData formFor(const GeoProps &geography)
{
    if (geography.type != GeoProps::Raster)
        return {MissingData::Vector, geography.objectCount};
    return {MissingData::Raster, geography.rows * geography.columns};
}

} // namespace

MissingData::MissingData(dataType form, int n) : type(form)
{
    if (form == Raster)
        bits = QByteArray(bytesFor(qMax(n, 0)), 0);
}

MissingData::MissingData(const QSet<int> &missing) : ids(missing), type(Vector)
{
}

MissingData::MissingData(const MissingData &other) : QSharedData(other), type(other.type)
{
    if (type == Vector)
        ids = other.ids;
    else if (type == Raster)
        bits = other.bits;
}

void MissingData::clear()
{
    ids.clear();
    bits.fill(0);
}

VORN_MissingData::VORN_MissingData() : md(new MissingData)
{
}

VORN_MissingData::VORN_MissingData(const GeoProps &geography) : VORN_MissingData(formFor(geography))
{
}

VORN_MissingData::VORN_MissingData(MissingData::dataType type, int n) : md(new MissingData(type, n))
{
}

VORN_MissingData::VORN_MissingData(const QSet<int> &ids)
    : md(new MissingData(ids)), mMissingCount(ids.size())
{
}

bool VORN_MissingData::isMissing(int id) const
{
    if (!isValid())
        return false;
    if (mAllMissing)
        return true;
    if (mMissingCount == 0)
        return false;
    if (md->type == MissingData::Vector)
        return md->ids.contains(id);
    return holdsCell(*md, id) && (md->bits.at(id / 8) & bitOf(id));
}

void VORN_MissingData::setMissing(int id)
{
    if (mAllMissing)
        return;
    require(isValid(), "isValid()");
    if (md->type == MissingData::Vector) {
        md->ids.insert(id);
        mMissingCount = md->ids.size();
        return;
    }
    if (!holdsCell(*md.constData(), id))
        return;
    char &byte = md->bits.data()[id / 8];
    mMissingCount += !(byte & bitOf(id));
    byte = static_cast<char>(byte | bitOf(id));
}

void VORN_MissingData::unsetMissing(int id, int count)
{
    require(isValid(), "isValid()");
    if (!mAllMissing && mMissingCount == 0)
        return;
    const bool unfold = mAllMissing;
    mAllMissing = false;
    if (md->type == MissingData::Vector) {
        for (int i = 0; unfold && i < count; ++i)
            md->ids.insert(i);
        md->ids.remove(id);
        mMissingCount = md->ids.size();
        return;
    }
    if (unfold) {
        md->bits.fill(static_cast<char>(0xFF));
        mMissingCount = count;
    }
    if (!holdsCell(*md.constData(), id))
        return;
    char &byte = md->bits.data()[id / 8];
    mMissingCount -= (byte & bitOf(id)) != 0;
    byte = static_cast<char>(byte & ~bitOf(id));
}

void VORN_MissingData::clearMissing()
{
    md->clear();
    mMissingCount = 0;
}

void VORN_MissingData::setAllMissing(int count)
{
    md->clear();
    mMissingCount = count;
    mAllMissing = true;
}

QSet<int> VORN_MissingData::missingIds() const
{
    require(md->type == MissingData::Vector, "md->type == MissingData::Vector");
    return md->ids;
}

const unsigned char *VORN_MissingData::missingPixels() const
{
    require(md->type == MissingData::Raster, "md->type == MissingData::Raster");
    return reinterpret_cast<const unsigned char *>(md->bits.constData());
}

VORN_MissingData VORN_MissingData::operator+(const VORN_MissingData &other) const
{
    VORN_MissingData sum = *this;
    sum += other;
    return sum;
}

VORN_MissingData VORN_MissingData::operator+=(const VORN_MissingData &other)
{
    if (mAllMissing || !other.isValid())
        return *this;
    if (other.mAllMissing) {
        if (!isValid())
            md = new MissingData(*other.md);
        setAllMissing(other.mMissingCount);
    } else if (other.md->type == MissingData::Raster) {
        addRaster(other);
    } else {
        addVector(other);
    }
    return *this;
}

void VORN_MissingData::addRaster(const VORN_MissingData &other)
{
    require(md.constData()->type != MissingData::Vector, "md->type != MissingData::Vector");
    if (!isValid()) {
        md = other.md;
        mMissingCount = other.mMissingCount;
        return;
    }
    const QByteArray &added = other.md.constData()->bits;
    if (added.size() != md.constData()->bits.size())
        return;
    char *bits = md->bits.data();
    mMissingCount = 0;
    for (int i = 0; i < added.size(); ++i) {
        bits[i] = static_cast<char>(bits[i] | added[i]);
        mMissingCount += static_cast<int>(qPopulationCount(static_cast<quint8>(bits[i])));
    }
}

void VORN_MissingData::addVector(const VORN_MissingData &other)
{
    require(md.constData()->type != MissingData::Raster, "md->type != MissingData::Raster");
    if (!isValid())
        md = other.md;
    else
        md->ids.unite(other.md.constData()->ids);
    mMissingCount = md.constData()->ids.size();
}

VORN_MissingValueChecker::VORN_MissingValueChecker(const GeoProps &geography) : mSum(geography)
{
}

VORN_MissingValueChecker::VORN_MissingValueChecker(int objectCount)
    : mSum(MissingData::Vector, objectCount)
{
}

void VORN_MissingValueChecker::addMissingData(const VORN_MissingData &missing)
{
    mSum += missing;
}
