// SPDX-License-Identifier: MIT
/// All values of one realization at one time, in the element type of the data. Datasets and
/// analyses exchange values in this form. VORN_ConstDataContainer is a view of a dataset;
/// VORN_DataContainer owns its values.
#pragma once
#include <QByteArray>
#include <QRect>
#include <QString>
#include <QVector>
#include <tuple>
#include "datainterface/MissingData.h"
#include "datainterface/export.h"
#include "datainterface/half.h"

class MDataset;
class MRasterDataset;
class MVectorDataset;
class VORN_ConstDataContainer;

/// A container that owns its values. A read of a value raises "id>=0 and id<nObjects" for an id out
/// of range and "Empty data container" for an empty container.
class DATAINTERFACE_EXPORT VORN_DataContainer {
public:
    /// Element types. `...Data` are vectors that the container owns, `...Cells` are cells in the
    /// memory of a raster.
    enum DataType : qint32 {
        NoData = 0,
        DoubleData = 0x1,
        FloatData = 0x2,
        HalfData = 0x3,
        Int8Data = 0x10,
        Int16Data = 0x20,
        Int32Data = 0x30,
        Int64Data = 0x40,
        StringData = 0x8000,
        DoubleCells = 0x10000,
        FloatCells = 0x20000,
        HalfCells = 0x30000,
        Int8Cells = 0x100000,
        Int16Cells = 0x200000,
        Int32Cells = 0x300000,
        Int64Cells = 0x400000,
        UInt8Cells = 0x1000000,
        UInt16Cells = 0x2000000,
        UInt32Cells = 0x3000000,
        UInt64Cells = 0x4000000,
        UInt8Data = 0x10000000,
        UInt16Data = 0x20000000,
        UInt32Data = 0x30000000,
        UInt64Data = 0x40000000
    };

    VORN_DataContainer() = default;
    /// Makes `count` zeros or empty texts. All constructors raise "Invalid data type" for an
    /// unknown code.
    VORN_DataContainer(DataType type, int count);
    /// Copies the values of a view into vectors of the same element type.
    VORN_DataContainer(const VORN_ConstDataContainer &other);
    VORN_DataContainer(DataType type, const QVector<double> &values,
                       const VORN_MissingData &missing);
    VORN_DataContainer(DataType type, const QVector<float> &values,
                       const VORN_MissingData &missing);
    /// Bit patterns of the half-float form.
    VORN_DataContainer(DataType type, const QVector<unsigned short> &values,
                       const VORN_MissingData &missing);
    VORN_DataContainer(DataType type, const QVector<int> &values, const VORN_MissingData &missing);
    VORN_DataContainer(DataType type, const QVector<qint64> &values,
                       const VORN_MissingData &missing);
    VORN_DataContainer(DataType type, const QVector<signed char> &values,
                       const VORN_MissingData &missing);
    VORN_DataContainer(DataType type, const QVector<short> &values,
                       const VORN_MissingData &missing);
    VORN_DataContainer(const QVector<unsigned char> &values, const QVector<unsigned int> &colors,
                       const VORN_MissingData &missing);
    VORN_DataContainer(const QVector<unsigned short> &values, const QVector<unsigned int> &colors,
                       const VORN_MissingData &missing);
    VORN_DataContainer(const QVector<unsigned int> &values, const VORN_MissingData &missing);
    VORN_DataContainer(const QVector<quint64> &values, const VORN_MissingData &missing);
    VORN_DataContainer(const QVector<QString> &values, const VORN_MissingData &missing);
    VORN_DataContainer(const QString *values, int count, const VORN_MissingData &missing);
    /// Copies `count` elements of the type from `values`.
    VORN_DataContainer(DataType type, const void *values, int count,
                       const VORN_MissingData &missing);
    VORN_DataContainer(DataType type, const void *values, int count,
                       const QVector<unsigned int> &colors, const VORN_MissingData &missing);

    DataType type() const { return mType; }
    int count() const { return nObjects; }
    bool hasColorTable() const { return !mColorTable.isEmpty(); }
    QVector<unsigned int> getColorTable() const { return mColorTable; }
    void setColorTable(const QVector<unsigned int> &colors) { mColorTable = colors; }
    bool isMissing(int id) const { return mMissing.isMissing(id); }
    /// The missing ids.
    const VORN_MissingData &missingData() const { return mMissing; }
    VORN_MissingData &missingData() { return mMissing; }
    int validCount() const { return nObjects - mMissing.missingCount(); }

    /// The value as a number. A text is parsed in the C locale and gives 0 when it does not parse.
    /// A missing id raises "Missing data value".
    double value(int id) const;
    double operator[](int id) const { return value(id); }
    /// The value as an integer. A missing id raises "Data value is missing" in this function and
    /// the two below.
    qint64 intvalue(int id) const;
    /// The same without a sign.
    quint64 uintvalue(int id) const;
    /// As a text; numbers are written out.
    QString strvalue(int id) const;
    /// The first element of a numeric vector; raises "Invalid data type" for texts.
    const void *getNumericDataPtr() const;
    const void *getDataPtr() const;
    /// The same for writing. The pointer is valid until the container is copied or changed.
    void *getDataPtr();
    /// Whether the two hold as many elements, of the same type, and all of them equal.
    bool compareData(const VORN_ConstDataContainer &other) const;
    /// -1, 0 or 1. A missing value is greater than every present one.
    int compareValues(int id1, int id2) const;
    /// Advances to the next id; the other two arguments do not change.
    void incSampleIndex(double &index, double &row, double &column) const;
    /// The ids of values that are not missing and, for numbers, finite, in ascending order of
    /// value. The order of equal values is not defined.
    void getSortedIndices(QVector<int> &indices) const;

    /// Stores a value, converted to the element type; the id is no longer missing. False for an id
    /// out of range, and for a number in a container of texts or a text in one of numbers.
    bool setValue(int id, double value);
    bool setValue(int id, signed char value);
    bool setValue(int id, short value);
    bool setValue(int id, int value);
    bool setValue(int id, qint64 value);
    bool setValue(int id, const QString &value);
    /// Adds to a value. Also false for a missing id, which stays missing.
    bool incValue(int id, double value);
    bool incValue(int id, char value);
    bool incValue(int id, short value);
    bool incValue(int id, int value);
    bool incValue(int id, qint64 value);
    void setMissing(int id) { mMissing.setMissing(id); }
    /// Writes one of the two values at each missing id, which stays marked as missing.
    void fillMissingValues(double decimal, qint64 integer);

private:
    friend struct ContainerAccess;

    int nObjects = 0;
    DataType mType = NoData;
    std::tuple<QVector<double>, QVector<float>, QVector<half>, QVector<qint8>, QVector<qint16>,
               QVector<qint32>, QVector<qint64>, QVector<quint8>, QVector<quint16>,
               QVector<quint32>, QVector<quint64>, QVector<QString>>
        mVectors;
    QVector<unsigned int> mColorTable;
    VORN_MissingData mMissing;
};

/// A view of a dataset at one time. It keeps the data checked out from loading to destruction and
/// must not outlive the controller through which it was loaded. Reads of values raise as those of
/// VORN_DataContainer do.
class DATAINTERFACE_EXPORT VORN_ConstDataContainer {
public:
    using DataType = VORN_DataContainer::DataType;

    /// Empty: dataset id -1, no objects.
    VORN_ConstDataContainer() = default;
    /// Raises "Invalid geography id" for an unknown geography and "Invalid dataset type" for an
    /// unknown dataset.
    VORN_ConstDataContainer(int dataId, qint64 time, int realization, bool interp);
    /// @param dataset  an MDataset.
    VORN_ConstDataContainer(void *dataset, qint64 time, int realization);
    /// A copy makes a check-out of its own.
    VORN_ConstDataContainer(const VORN_ConstDataContainer &other);
    VORN_ConstDataContainer &operator=(const VORN_ConstDataContainer &other);
    ~VORN_ConstDataContainer();

    /// Replaces the content by the values of a dataset at a time.
    /// @param dataset  an MDataset.
    /// @param interp  whether values are interpolated in time.
    void LoadFromDataset(void *dataset, qint64 time, int realization, bool interp);
    /// Checks the data out through the dataset. Raises "Invalid dataset type" if the dataset does
    /// not exist. The last argument is not used.
    bool CheckOutData(int realization, qint64 time, int arg) const;
    /// Ends CheckOutData. Raises as CheckOutData does.
    bool CheckInData(int realization, qint64 time, int arg) const;

    DataType type() const { return mType; }
    int id() const { return mDatasetId; }
    int dataSourceId() const { return mDataSourceId; }
    int count() const { return nObjects; }
    bool hasColorTable() const { return !mColorTable.isEmpty(); }
    QVector<unsigned int> getColorTable() const { return mColorTable; }
    bool isMissing(int objectId) const { return mMissing.isMissing(objectId); }
    const VORN_MissingData &missingData() const { return mMissing; }
    int validCount() const;

    /// Reads and comparisons work as in VORN_DataContainer, here and below.
    double value(int objectId) const;
    double operator[](int objectId) const { return value(objectId); }
    /// The value as an integer.
    qint64 intvalue(int objectId) const;
    /// The same without a sign.
    quint64 uintvalue(int objectId) const;
    /// As a text; numbers are written out.
    QString strvalue(int objectId) const;
    /// The colour of a cell, 8 bits a channel. Raises "hasColorTable()" without a table. Alpha is
    /// in the high byte of the table's 32 bits, blue in the low one.
    void colorValues(int objectId, unsigned short &red, unsigned short &green, unsigned short &blue,
                     unsigned short &alpha) const;
    const void *getNumericDataPtr() const;
    const void *getDataPtr() const;
    /// Whether the two hold as many elements, of the same type, and all of them equal.
    bool compareData(const VORN_ConstDataContainer &other) const;
    /// -1, 0 or 1. A missing value is greater than every present one.
    int compareValues(int id1, int id2) const;
    /// Advances to the next sample of a raster, row by row, in steps of sampleStep(); with step 1
    /// to the next id.
    void incSampleIndex(double &index, double &row, double &column) const;
    void getSortedIndices(QVector<int> &indices) const;

    double sampleStep() const { return mSampleStep; }
    void setSampleStep(double step) { mSampleStep = step; }
    QRect sampleWindow() const { return mSampleWindow; }
    void setSampleWindow(const QRect &window) { mSampleWindow = window; }

private:
    friend struct ContainerAccess;
    const MDataset *dataset() const;
    void copyFields(const VORN_ConstDataContainer &other);
    void loadVector(const MVectorDataset &dataset);
    void loadRaster(const MRasterDataset &dataset);
    void release() noexcept;

    DataType mType = VORN_DataContainer::NoData;
    int mDataSourceId = -1;
    int mDatasetId = -1;
    bool mInterp = false;
    /// The number of check-outs of the values at mTime that this container must check in.
    mutable int mHeld = 0;
    qint64 mTime = 0;
    int mRealization = 0;
    int nObjects = 0;
    int mRows = 0;
    int mColumns = 0;
    double mSampleStep = 1.0;
    QRect mSampleWindow;
    struct {
        QVector<double> doubleVectorData;
        QVector<int> int32VectorData;
        QVector<QString> stringVectorData;
    } data;
    std::tuple<const double *, const float *, const half *, const qint8 *, const qint16 *,
               const qint32 *, const qint64 *, const quint8 *, const quint16 *, const quint32 *,
               const quint64 *>
        mCells{}; ///< of a raster observation; only the pointer of mType is set
    /// Shares the bytes of the cells, so that they stay valid whatever happens to the observation.
    QByteArray mGrid;
    QVector<unsigned int> mColorTable;
    VORN_MissingData mMissing;
};
