// SPDX-License-Identifier: MIT
#include "core/formats/gdalArray.h"
#include <QStringList>
#include <cpl_conv.h>
#include <cpl_string.h>

namespace meridor {
namespace {

constexpr quint64 kMostPlaces = 16 << 20; ///< of a coordinate

/// Reads all elements of an array in the order of the file.
template <class T> bool readAll(const GdalArray &array, GDALExtendedDataTypeH type, QVector<T> &out)
{
    const quint64 total = GDALMDArrayGetTotalElementsCount(array.get());
    if (total == 0 || total > kMostPlaces)
        return false;
    const auto dimensions = dimensionsOf(array);
    std::vector<GUInt64> start(dimensions.size() + 1, 0);
    std::vector<size_t> count(dimensions.size() + 1, 1);
    for (size_t i = 0; i < dimensions.size(); ++i)
        count[i] = static_cast<size_t>(GDALDimensionGetSize(dimensions[i].get()));
    out.resize(static_cast<int>(total));
    return GDALMDArrayRead(array.get(), start.data(), count.data(), nullptr, nullptr, type,
                           out.data(), out.data(), static_cast<size_t>(total) * sizeof(T))
           != 0;
}

} // namespace

GdalCellType numericType(GDALDataType type)
{
    return GdalCellType(GDALExtendedDataTypeCreate(type));
}

GDALDataType numericTypeOf(const GdalArray &array)
{
    const GdalCellType type(GDALMDArrayGetDataType(array.get()));
    return GDALExtendedDataTypeGetClass(type.get()) == GEDTC_NUMERIC
               ? GDALExtendedDataTypeGetNumericDataType(type.get())
               : GDT_Unknown;
}

bool cellFormOf(GDALDataType gdal, DataType &type, int &bits)
{
    bits = GDALGetDataTypeSizeBits(gdal);
    switch (gdal) {
    case GDT_Byte:
    case GDT_UInt16:
    case GDT_UInt32:
    case GDT_UInt64:
        type = RasterUnsignedType;
        return true;
    case GDT_Int16:
    case GDT_Int32:
    case GDT_Int64:
        type = RasterIntegerType;
        return true;
    case GDT_Float32:
    case GDT_Float64:
        type = RasterDecimalType;
        return true;
    default:
        return false;
    }
}

QString textAttribute(const GdalArray &array, const char *name)
{
    const GdalAttribute attribute(GDALMDArrayGetAttribute(array.get(), name));
    return attribute ? QString::fromUtf8(GDALAttributeReadAsString(attribute.get())) : QString();
}

QVector<double> numberAttribute(const GdalArray &array, const char *name)
{
    QVector<double> numbers;
    const GdalAttribute attribute(GDALMDArrayGetAttribute(array.get(), name));
    if (!attribute)
        return numbers;
    size_t count = 0;
    double *read = GDALAttributeReadAsDoubleArray(attribute.get(), &count);
    for (size_t i = 0; read && i < count; ++i)
        numbers.append(read[i]);
    CPLFree(read);
    return numbers;
}

std::vector<GdalDimension> dimensionsOf(const GdalArray &array)
{
    size_t count = 0;
    GDALDimensionH *handles = GDALMDArrayGetDimensions(array.get(), &count);
    std::vector<GdalDimension> dimensions;
    for (size_t i = 0; i < count; ++i)
        dimensions.emplace_back(handles[i]);
    CPLFree(handles);
    return dimensions;
}

QVector<double> numbersOf(const GdalArray &array)
{
    QVector<double> numbers;
    const GdalCellType type = numericType(GDT_Float64);
    if (numericTypeOf(array) == GDT_Unknown || !readAll(array, type.get(), numbers))
        numbers.clear();
    return numbers;
}

QStringList textsOf(const GdalArray &array)
{
    QStringList texts;
    const GdalCellType own(GDALMDArrayGetDataType(array.get()));
    if (GDALExtendedDataTypeGetClass(own.get()) != GEDTC_STRING)
        return texts;
    const GdalCellType type(GDALExtendedDataTypeCreateString(0));
    QVector<char *> read;
    if (readAll(array, type.get(), read))
        for (const char *text : qAsConst(read))
            texts.append(QString::fromUtf8(text));
    for (char *text : qAsConst(read))
        CPLFree(text);
    return texts;
}

} // namespace meridor
