// SPDX-License-Identifier: MIT
/// Owning handles of GDAL's multidimensional interface.
#pragma once
#include <QString>
#include <QVector>
#include <gdal.h>
#include <memory>
#include "datainterface/DataType.h"

namespace meridor {

template <auto Release> struct ReleaseHandle {
    template <class T> void operator()(T *handle) const { Release(handle); }
};
using GdalGroup = std::unique_ptr<GDALGroupHS, ReleaseHandle<GDALGroupRelease>>;
using GdalArray = std::unique_ptr<GDALMDArrayHS, ReleaseHandle<GDALMDArrayRelease>>;
using GdalDimension = std::unique_ptr<GDALDimensionHS, ReleaseHandle<GDALDimensionRelease>>;
using GdalAttribute = std::unique_ptr<GDALAttributeHS, ReleaseHandle<GDALAttributeRelease>>;
using GdalCellType =
    std::unique_ptr<GDALExtendedDataTypeHS, ReleaseHandle<GDALExtendedDataTypeRelease>>;

GdalCellType numericType(GDALDataType type);
/// The numeric type of an array; GDT_Unknown for texts and records.
GDALDataType numericTypeOf(const GdalArray &array);
/// The type and depth of cells of a GDAL type; false for complex numbers and texts.
bool cellFormOf(GDALDataType gdal, DataType &type, int &bits);

/// Empty if there is no such attribute.
QString textAttribute(const GdalArray &array, const char *name);
QVector<double> numberAttribute(const GdalArray &array, const char *name);

std::vector<GdalDimension> dimensionsOf(const GdalArray &array);
/// All elements of an array as doubles, in the order of the file. Empty if it cannot be read.
QVector<double> numbersOf(const GdalArray &array);
QStringList textsOf(const GdalArray &array);

} // namespace meridor
