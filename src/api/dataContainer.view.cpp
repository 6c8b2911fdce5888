// SPDX-License-Identifier: MIT
#include <QScopeGuard>
#include "cells/cellForms.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/MVectorDataset.h"
#include "datasets/dataContainer.elements.h"
#include "frame/frameState.h"

using namespace datainterface;

namespace {

MGeoData *geographyOf(int dataSourceId)
{
    return controller() ? controller()->GetGeoData().value(dataSourceId, nullptr) : nullptr;
}

MDataset *datasetOf(int dataId)
{
    MGeoData *geography = geographyOf(DataId(dataId).GeoId());
    require(geography, "Invalid geography id");
    MDataset *dataset =
        geography->GetDataSource() ? geography->GetDataSource()->GetDataset(dataId) : nullptr;
    require(dataset, "Invalid dataset type");
    return dataset;
}

bool checkOut(const MDataset *dataset, int realization, qint64 time, int arg)
{
    if (const auto *raster = dynamic_cast<const MRasterDataset *>(dataset)) {
        const MRasterObservation *grid = raster->GetConstRasterInfo(realization, time);
        return grid && grid->CheckOutObservation();
    }
    const auto *vector = dynamic_cast<const MVectorDataset *>(dataset);
    require(vector, "Invalid dataset type");
    return vector->GetStorageType() == MVectorDataset::TimeSlice
               ? vector->CheckOutTimeSlice(realization, time, arg)
               : vector->CheckOutRealization(realization, arg);
}

bool checkIn(const MDataset *dataset, int realization, qint64 time, int arg)
{
    if (const auto *raster = dynamic_cast<const MRasterDataset *>(dataset)) {
        const MRasterObservation *grid = raster->GetConstRasterInfo(realization, time);
        return grid && grid->CheckInObservation();
    }
    const auto *vector = dynamic_cast<const MVectorDataset *>(dataset);
    require(vector, "Invalid dataset type");
    return vector->GetStorageType() == MVectorDataset::TimeSlice
               ? vector->CheckInTimeSlice(realization, time, arg)
               : vector->CheckInRealization(realization, arg);
}

/// The container's code for cells of type T that it borrows from a grid.
template <class T> VORN_DataContainer::DataType borrowedType()
{
    VORN_DataContainer::DataType type = VORN_DataContainer::NoData;
    const auto tryForm = [&type](auto form) {
        if constexpr (std::is_same_v<ElementOfForm<decltype(form)>, T>)
            type = form.borrowed;
    };
    std::apply([&](auto... form) { (tryForm(form), ...); }, ContainerForms{});
    return type;
}

quint8 channel(unsigned int color, int shift)
{
    return static_cast<quint8>(color >> shift);
}

} // namespace

VORN_ConstDataContainer::VORN_ConstDataContainer(int dataId, qint64 time, int realization,
                                                 bool interp)
{
    LoadFromDataset(datasetOf(dataId), time, realization, interp);
}

VORN_ConstDataContainer::VORN_ConstDataContainer(void *dataset, qint64 time, int realization)
{
    LoadFromDataset(dataset, time, realization, false);
}

VORN_ConstDataContainer::VORN_ConstDataContainer(const VORN_ConstDataContainer &other)
{
    *this = other;
}

VORN_ConstDataContainer &VORN_ConstDataContainer::operator=(const VORN_ConstDataContainer &other)
{
    if (this == &other)
        return *this;
    release();
    copyFields(other);
    if (other.mHeld > 0)
        CheckOutData(mRealization, mTime, 0);
    return *this;
}

VORN_ConstDataContainer::~VORN_ConstDataContainer()
{
    release();
}

void VORN_ConstDataContainer::copyFields(const VORN_ConstDataContainer &other)
{
    mType = other.mType;
    mDataSourceId = other.mDataSourceId;
    mDatasetId = other.mDatasetId;
    mInterp = other.mInterp;
    mTime = other.mTime;
    mRealization = other.mRealization;
    nObjects = other.nObjects;
    mRows = other.mRows;
    mColumns = other.mColumns;
    mSampleStep = other.mSampleStep;
    mSampleWindow = other.mSampleWindow;
    data = other.data;
    mCells = other.mCells;
    mGrid = other.mGrid;
    mColorTable = other.mColorTable;
    mMissing = other.mMissing;
}

void VORN_ConstDataContainer::LoadFromDataset(void *dataset, qint64 time, int realization,
                                              bool interp)
{
    auto *source = static_cast<MDataset *>(dataset);
    require(source, "Invalid dataset type");
    const MGeoData *geography = geographyOf(DataId(source->GetId()).GeoId());
    require(geography, "Invalid geography id");

    *this = VORN_ConstDataContainer();
    nObjects = static_cast<int>(geography->GetObjectCount());
    require(nObjects > 0, "nObjects");
    require(!(interp && dynamic_cast<MRasterDataset *>(source)), "!(interp and rds)");
    mDataSourceId = DataId(source->GetId()).GeoId();
    mDatasetId = source->GetId();
    mInterp = interp;
    mTime = time;
    mRealization = realization;
    auto undo = qScopeGuard([this] { *this = VORN_ConstDataContainer(); });
    // Checked out before the values are read, so that they are paged in once.
    CheckOutData(realization, time, 0);
    if (auto *vector = dynamic_cast<MVectorDataset *>(source))
        loadVector(*vector);
    else if (auto *raster = dynamic_cast<MRasterDataset *>(source))
        loadRaster(*raster);
    else
        fail("Invalid dataset type");
    undo.dismiss();
}

void VORN_ConstDataContainer::loadVector(const MVectorDataset &dataset)
{
    QSet<int> missing;
    switch (dataset.GetDataType()) {
    case DecimalType:
        mType = VORN_DataContainer::DoubleData;
        dataset.GetValues(mRealization, mTime, data.doubleVectorData, missing, mInterp);
        require(data.doubleVectorData.size() == nObjects,
                "data.doubleVectorData.size() == nObjects");
        break;
    case IntegerType:
        mType = VORN_DataContainer::Int32Data;
        dataset.GetValues(mRealization, mTime, data.int32VectorData, missing, mInterp);
        require(data.int32VectorData.size() == nObjects, "data.int32VectorData.size() == nObjects");
        break;
    case StringType:
        mType = VORN_DataContainer::StringData;
        dataset.GetValues(mRealization, mTime, data.stringVectorData, missing);
        require(data.stringVectorData.size() == nObjects,
                "data.stringVectorData.size() == nObjects");
        break;
    default:
        fail("Invalid data type");
    }
    mMissing = VORN_MissingData(missing);
}

void VORN_ConstDataContainer::loadRaster(const MRasterDataset &dataset)
{
    unsigned int columns = 0;
    unsigned int rows = 0;
    dataset.GetRasterDims(columns, rows);
    mColumns = static_cast<int>(columns);
    mRows = static_cast<int>(rows);
    mMissing = VORN_MissingData(MissingData::Raster, nObjects);
    const MRasterObservation *grid = dataset.GetConstRasterInfo(mRealization, mTime);
    const bool isKnown =
        visitCellForm(dataset.GetDataType(), dataset.GetRasterBitDepth(), [&](auto form) {
            using T = CellOf<decltype(form)>;
            mType = borrowedType<T>();
            if (!grid) {
                mMissing.setAllMissing(nObjects);
                return;
            }
            mGrid = grid->GetData();
            mColorTable = grid->GetColorMap();
            const T *cells = reinterpret_cast<const T *>(mGrid.constData());
            std::get<const T *>(mCells) = cells;
            const CellTest<const T *> test(dataset.GetCellFlag());
            visitMissing(cells, nObjects, test, [this](int id) { mMissing.setMissing(id); });
        });
    require(isKnown, "Invalid bit depth");
}

const MDataset *VORN_ConstDataContainer::dataset() const
{
    const MGeoData *geography = geographyOf(mDataSourceId);
    const MDataSource *source = geography ? geography->GetDataSource() : nullptr;
    return source ? source->GetDataset(mDatasetId) : nullptr;
}

bool VORN_ConstDataContainer::CheckOutData(int realization, qint64 time, int arg) const
{
    const bool done = checkOut(dataset(), realization, time, arg);
    mHeld += done && realization == mRealization && time == mTime;
    return done;
}

bool VORN_ConstDataContainer::CheckInData(int realization, qint64 time, int arg) const
{
    const bool done = checkIn(dataset(), realization, time, arg);
    if (mHeld > 0 && realization == mRealization && time == mTime)
        --mHeld;
    return done;
}

// A failure to write back is ignored: the slice keeps its changed values in memory, so nothing is
// lost.
void VORN_ConstDataContainer::release() noexcept
{
    try {
        while (mHeld > 0 && dataset())
            CheckInData(mRealization, mTime, 0);
    } catch (...) {
    }
    mHeld = 0;
}

int VORN_ConstDataContainer::validCount() const
{
    require(!ContainerAccess::isEmpty(*this), "Empty data container");
    return nObjects - mMissing.missingCount();
}

double VORN_ConstDataContainer::value(int objectId) const
{
    return ContainerAccess::readElement(*this, objectId, "Missing data value",
                                        [](const auto &element) { return toNumber(element); });
}

qint64 VORN_ConstDataContainer::intvalue(int objectId) const
{
    return ContainerAccess::readElement(
        *this, objectId, "Data value is missing",
        [](const auto &element) { return toInteger<qint64>(element); });
}

quint64 VORN_ConstDataContainer::uintvalue(int objectId) const
{
    return ContainerAccess::readElement(
        *this, objectId, "Data value is missing",
        [](const auto &element) { return toInteger<quint64>(element); });
}

QString VORN_ConstDataContainer::strvalue(int objectId) const
{
    return ContainerAccess::readElement(*this, objectId, "Data value is missing",
                                        [](const auto &element) { return textOf(element); });
}

void VORN_ConstDataContainer::colorValues(int objectId, unsigned short &red, unsigned short &green,
                                          unsigned short &blue, unsigned short &alpha) const
{
    require(hasColorTable(), "hasColorTable()");
    const quint64 index = uintvalue(objectId);
    const unsigned int color = index < static_cast<quint64>(mColorTable.size())
                                   ? mColorTable.at(static_cast<int>(index))
                                   : 0u;
    red = channel(color, 16);
    green = channel(color, 8);
    blue = channel(color, 0);
    alpha = channel(color, 24);
}

const void *VORN_ConstDataContainer::getNumericDataPtr() const
{
    require(mType != VORN_DataContainer::StringData, "Invalid data type");
    return getDataPtr();
}

const void *VORN_ConstDataContainer::getDataPtr() const
{
    const void *first = nullptr;
    ContainerAccess::visitValues(*this, [&first](const auto *values) { first = values; });
    return first;
}

bool VORN_ConstDataContainer::compareData(const VORN_ConstDataContainer &other) const
{
    return ContainerAccess::equalData(*this, other);
}

int VORN_ConstDataContainer::compareValues(int id1, int id2) const
{
    return ContainerAccess::compare(*this, id1, id2);
}

void VORN_ConstDataContainer::incSampleIndex(double &index, double &row, double &column) const
{
    if (mSampleStep == 1.0) {
        index += 1.0;
        return;
    }
    column += mSampleStep;
    if (std::trunc(column) >= mColumns) {
        row += mSampleStep;
        column = 0.0;
        index = std::trunc(row) * mColumns;
    } else {
        index = std::trunc(row) * mColumns + std::trunc(column);
    }
}

void VORN_ConstDataContainer::getSortedIndices(QVector<int> &indices) const
{
    ContainerAccess::sortedIndices(*this, indices);
}
