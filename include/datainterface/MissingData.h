// SPDX-License-Identifier: MIT
/// Which objects or cells have no value, in one dataset and in several together.
#pragma once
#include <QByteArray>
#include <QSet>
#include <QSharedData>
#include <QSharedDataPointer>
#include "datainterface/GeoProps.h"
#include "datainterface/export.h"

class VORN_ConstDataContainer;
class VORN_DataContainer;

/// The data that handles share: a set of ids for a vector geography, one bit for each cell of a
/// raster.
class DATAINTERFACE_EXPORT MissingData : public QSharedData {
public:
    enum dataType : qint32 { None = 0, Raster = 1, Vector = 2 };

    MissingData() = default;
    /// Raster: `n` cells, none of them missing. Vector: `n` is not used.
    MissingData(dataType type, int n);
    explicit MissingData(const QSet<int> &ids);
    /// Copies only the form in use.
    MissingData(const MissingData &other);
    MissingData &operator=(const MissingData &) = delete;

    /// Marks nothing as missing; the form and the size do not change.
    void clear();

    QSet<int> ids;
    QByteArray bits; ///< Cell i is bit i % 8 of byte i / 8, least significant bit first.
    int version = 1;
    dataType type = None;
};

/// A handle that shares its data and detaches before a write. While nothing is missing, isMissing
/// costs one test.
class DATAINTERFACE_EXPORT VORN_MissingData {
public:
    /// Not valid, with nothing missing.
    VORN_MissingData();
    /// The form for this geography, with nothing missing.
    VORN_MissingData(const GeoProps &geography);
    VORN_MissingData(MissingData::dataType type, int n);
    VORN_MissingData(const QSet<int> &ids);

    bool isValid() const { return md->type != MissingData::None; }
    bool noneMissing() const { return mMissingCount == 0; }
    /// True only after setAllMissing, not for a set that happens to contain all ids.
    bool isAllMissing() const { return mAllMissing; }
    int missingCount() const { return mMissingCount; }
    bool isMissing(int id) const;
    /// Raises "isValid()" without a form. Ids beyond a raster's cells are ignored.
    void setMissing(int id);
    /// Raises as setMissing does.
    /// @param count  the number of objects; needed to list all other ids after setAllMissing.
    void unsetMissing(int id, int count);
    /// Marks nothing as missing, but does not change isAllMissing.
    void clearMissing();
    void setAllMissing(int count);
    /// The ids of the vector form; empty after setAllMissing, so test isAllMissing first.
    QSet<int> missingIds() const;
    /// The bits of the raster form, (cells + 7) / 8 bytes, valid until the next change.
    const unsigned char *missingPixels() const;

    /// The union of both.
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

/// Collects the missing ids of several datasets, for analyses of the objects at which all of them
/// have a value.
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
    /// Adds these ids. Raises as VORN_MissingData::operator+= does.
    void addMissingData(const VORN_MissingData &missing);
    /// True when the object is missing in at least one dataset.
    bool checkId(int id) const { return mSum.isMissing(id); }
    void setMissing(int id) { mSum.setMissing(id); }
    operator VORN_MissingData() const { return mSum; }

private:
    template <class Container> bool add(const Container &container);

    VORN_MissingData mSum;
};
