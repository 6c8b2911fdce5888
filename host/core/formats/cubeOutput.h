// SPDX-License-Identifier: MIT
/// A multidimensional file that is being written: dimensions and variables by name.
#pragma once
#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVector>
#include "core/formats/gdalArray.h"
#include "core/formats/gdalHandle.h"

namespace meridor {

/// Every operation raises a Failure that names the target if GDAL cannot do it.
class CubeOutput {
public:
    /// @param path    of the file to make. @param target  the name for messages.
    CubeOutput(const QString &path, const QString &target, bool isZarr);

    bool isZarr() const { return mIsZarr; }
    void addDimension(const QByteArray &name, qint64 size, const char *type = "",
                      const char *direction = "");
    /// @param fill   one cell that means no data; null for none. In Zarr such an array gets one
    ///               that no value should have, since GDAL leaves out blocks of zeros, and readers
    ///               take what they like for blocks that are not there.
    /// @param block  the extent of a block by dimension; empty: the driver's choice.
    GdalArray addNumbers(const QByteArray &name, const QVector<QByteArray> &dimensions,
                         GDALDataType type, const void *fill = nullptr,
                         const QVector<qint64> &block = {});
    /// @param most  the length of the longest text in bytes.
    GdalArray addTexts(const QByteArray &name, const QVector<QByteArray> &dimensions, int most);
    void setText(const GdalArray &array, const char *name, const QString &text);
    void setTitle(const QString &title);
    /// Describes the projection at an array of a grid. In NetCDF GDAL writes a variable for it.
    void setProjection(const GdalArray &array, const QString &wkt);

    /// Writes a part of an array.
    template <class T>
    void write(const GdalArray &array, const QVector<qint64> &start, const QVector<qint64> &count,
               GDALDataType type, const T *values)
    {
        write(array, start, count, numericType(type).get(), values, sizeof(T));
    }
    void writeTexts(const GdalArray &array, const QVector<qint64> &start,
                    const QVector<qint64> &count, const QStringList &texts);
    /// Writes what is buffered. All arrays must have been released.
    void close();

private:
    GdalArray addArray(const QByteArray &name, const QVector<QByteArray> &dimensions,
                       const GdalCellType &type, const QVector<qint64> &block, bool isPacked);
    void nameDimensions(const GdalArray &array, const QVector<QByteArray> &dimensions);
    void write(const GdalArray &array, const QVector<qint64> &start, const QVector<qint64> &count,
               GDALExtendedDataTypeH type, const void *values, size_t bytesEach);
    [[noreturn]] void failWritten() const;

    QString mTarget;
    QString mPath;
    bool mIsZarr;
    GdalFile mFile;
    GdalGroup mRoot;
    QMap<QByteArray, GDALDimensionH> mNames;
    std::vector<GdalDimension> mDimensions;
};

} // namespace meridor
