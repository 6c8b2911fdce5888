// SPDX-License-Identifier: MIT
/// Which objects or cells have no value, and the sum of the holes of several datasets.
#pragma once
#include <QByteArray>
#include <QSet>
#include <QSharedData>
#include <QSharedDataPointer>
#include "datainterface/GeoProps.h"
#include "datainterface/export.h"

class VORN_ConstDataContainer;
class VORN_DataContainer;

/// The shared body: a set of ids for a vector geography, one bit a cell for a raster.
class DATAINTERFACE_EXPORT MissingData : public QSharedData {
public:
    enum dataType : qint32 { None = 0, Raster = 1, Vector = 2 };

    MissingData() = default;
    /// Raster: `n` cells, none missing. Vector: `n` is not needed.
    MissingData(dataType type, int n);
    explicit MissingData(const QSet<int> &ids);
    /// Copies the form in use alone.
    MissingData(const MissingData &other);
    MissingData &operator=(const MissingData &) = delete;

    /// Nothing is missing; the form and the size stay.
    void clear();

    QSet<int> ids;
    QByteArray bits; ///< Cell i is bit i % 8 of byte i / 8, least significant bit first.
    int version = 1;
    dataType type = None;
};

/// The handle: shares its body and detaches before a write. Costs one test while nothing is
/// missing.
class DATAINTERFACE_EXPORT VORN_MissingData {
public:
    /// Says nothing about anything: not valid, nothing missing.
    VORN_MissingData();
    /// The form that suits the geography, nothing missing.
    VORN_MissingData(const GeoProps &geography);
    VORN_MissingData(MissingData::dataType type, int n);
    VORN_MissingData(const QSet<int> &ids);

    bool isValid() const { return md->type != MissingData::None; }
    bool noneMissing() const { return mMissingCount == 0; }
    /// Set by setAllMissing alone, not by a set that happens to hold all.
    bool isAllMissing() const { return mAllMissing; }
    int missingCount() const { return mMissingCount; }
    bool isMissing(int id) const;
    /// Raises "isValid()" without a form. Ids beyond a raster's cells are ignored.
    void setMissing(int id);
    /// @param count  number of objects, to unfold setAllMissing. Raises as setMissing.
    void unsetMissing(int id, int count);
    /// isAllMissing stays as it was.
    void clearMissing();
    void setAllMissing(int count);
    /// The ids of a vector form; empty after setAllMissing: ask isAllMissing first.
    QSet<int> missingIds() const;
    /// The bits of a raster form, (cells + 7) / 8 bytes, valid until the next change.
    const unsigned char *missingPixels() const;

    /// The union of the holes.
    VORN_MissingData operator+(const VORN_MissingData &other) const;
    /// A raster of another size adds nothing; mixing the forms raises "md->type !=
    /// MissingData::..." of this one.
    VORN_MissingData operator+=(const VORN_MissingData &other);

private:
    friend class VORN_MissingValueChecker;
    void addRaster(const VORN_MissingData &other);
    void addVector(const VORN_MissingData &other);

    QSharedDataPointer<MissingData> md;
    bool mAllMissing = false;
    int mMissingCount = 0;
};

/// Adds up the holes of several datasets, so that an analysis runs where all of them have a value.
class DATAINTERFACE_EXPORT VORN_MissingValueChecker {
public:
    VORN_MissingValueChecker() = default;
    VORN_MissingValueChecker(const GeoProps &geography);
    VORN_MissingValueChecker(int objectCount);
    VORN_MissingValueChecker(const VORN_ConstDataContainer &container);
    VORN_MissingValueChecker(const VORN_DataContainer &container);

    /// False, with nothing changed, for a container without data and for a raster of another size.
    bool addDataset(const VORN_ConstDataContainer &container);
    bool addDataset(const VORN_DataContainer &container);
    /// The union with these holes. Raises as VORN_MissingData::operator+=.
    void addMissingData(const VORN_MissingData &missing);
    /// True: the object cannot be used.
    bool checkId(int id) const { return mSum.isMissing(id); }
    void setMissing(int id) { mSum.setMissing(id); }
    operator VORN_MissingData() const { return mSum; }

private:
    template <class Container> bool add(const Container &container);

    VORN_MissingData mSum;
};
