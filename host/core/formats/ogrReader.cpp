// SPDX-License-Identifier: MIT
#include "core/formats/ogrReader.h"
#include <cmath>
#include <cpl_error.h>
#include <cpl_string.h>
#include <memory>
#include <ogr_api.h>
#include "core/formats/gdalFile.h"
#include "core/formats/ogrShapes.h"
#include "core/formats/values.h"
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

struct FreeFeature {
    void operator()(void *feature) const { OGR_F_Destroy(feature); }
};
using FeaturePtr = std::unique_ptr<std::remove_pointer_t<OGRFeatureH>, FreeFeature>;

GdalFile open(const QString &path)
{
    // Cells are read as texts: their types are determined by one rule for all formats.
    const char *const options[] = {"HEADERS=YES", "AUTODETECT_TYPE=NO", "EMPTY_STRING_AS_NULL=YES",
                                   "KEEP_GEOM_COLUMNS=NO", nullptr};
    const bool isText = path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive)
                        || path.endsWith(QLatin1String(".tsv"), Qt::CaseInsensitive);
    return openGdalFile(path, GDAL_OF_VECTOR, isText ? options : nullptr);
}

OGRLayerH chooseLayer(GDALDatasetH dataset, const ReadOptions &options, const QString &file)
{
    QStringList names;
    for (int i = 0; i < GDALDatasetGetLayerCount(dataset); ++i) {
        OGRLayerH layer = GDALDatasetGetLayer(dataset, i);
        names.append(QString::fromUtf8(OGR_L_GetName(layer)));
        if (names.last() == options.layer)
            return layer;
    }
    if (names.isEmpty())
        fail(file + QStringLiteral(": holds no layer"));
    if (!options.layer.isEmpty())
        fail(QStringLiteral("%1: no layer %2; there are: %3")
                 .arg(file, options.layer, someOf(names)));
    if (names.size() > 1)
        fail(QStringLiteral("%1: several layers, one is to be chosen: %2").arg(file, someOf(names)),
             "layer");
    return GDALDatasetGetLayer(dataset, 0);
}

Column describe(OGRFieldDefnH field)
{
    Column column;
    column.name = QString::fromUtf8(OGR_Fld_GetNameRef(field));
    switch (OGR_Fld_GetType(field)) {
    case OFTInteger:
        column.typed = true;
        column.kind = ValueKind::Integer;
        break;
    case OFTReal:
        column.typed = true;
        column.kind = ValueKind::Decimal;
        break;
    case OFTInteger64:
        break; // may exceed the library's 32 bits, so the cells decide
    default:
        column.typed = OGR_Fld_GetType(field) != OFTString;
        break;
    }
    return column;
}

QString isoTime(OGRFeatureH feature, int field, bool dateOnly)
{
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, zone = 0;
    float second = 0;
    OGR_F_GetFieldAsDateTimeEx(feature, field, &year, &month, &day, &hour, &minute, &second, &zone);
    const auto two = [](int number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    };
    QString text =
        QStringLiteral("%1-%2-%3").arg(year, 4, 10, QLatin1Char('0')).arg(two(month), two(day));
    if (dateOnly)
        return text;
    text += QStringLiteral("T%1:%2:%3").arg(two(hour), two(minute), two(static_cast<int>(second)));
    if (zone > 1) { // in quarters of an hour, 100 is UTC; 0 and 1: no zone is given
        const int quarters = std::abs(zone - 100);
        text += QLatin1Char(zone < 100 ? '-' : '+') + two(quarters / 4) + QLatin1Char(':')
                + two(quarters % 4 * 15);
    }
    return text;
}

/// The text of a field; empty if it is missing.
QByteArray cell(OGRFeatureH feature, int field, OGRFieldType type)
{
    if (!OGR_F_IsFieldSetAndNotNull(feature, field))
        return QByteArray();
    switch (type) {
    case OFTReal: {
        const double value = OGR_F_GetFieldAsDouble(feature, field);
        return std::isfinite(value) ? exactNumber(value).toLatin1() : QByteArray();
    }
    case OFTDate:
        return isoTime(feature, field, true).toLatin1();
    case OFTDateTime:
        return isoTime(feature, field, false).toLatin1();
    default:
        return QByteArray(OGR_F_GetFieldAsString(feature, field));
    }
}

/// Reads the rows of a layer into a table whose columns are already described.
class RowReader {
public:
    RowReader(FeatureTable &table, OGRLayerH layer, const ReadOptions &options)
        : mTable(table), mLayer(layer), mOptions(options)
    {
        OGRFeatureDefnH definition = OGR_L_GetLayerDefn(layer);
        for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i) {
            OGRFieldDefnH field = OGR_FD_GetFieldDefn(definition, i);
            mTypes.append(OGR_Fld_GetType(field));
            table.columns.append(describe(field));
        }
        for (const QString &text : options.missing)
            mMissing.append(text.toUtf8());
        mX = coordinate(options.xColumn);
        mY = coordinate(options.yColumn);
        const QSet<int> chosen = options.choose ? options.choose(table) : QSet<int>();
        for (int i = 0; i < mTypes.size(); ++i)
            if (!options.choose || chosen.contains(i))
                mKept.append(i);
    }

    void read()
    {
        const auto expected = OGR_L_GetFeatureCount(mLayer, 0);
        OGR_L_ResetReading(mLayer);
        while (FeaturePtr feature{OGR_L_GetNextFeature(mLayer)}) {
            take(feature.get());
            ++mTable.rows;
            if (mTable.rows % 256 == 0) {
                stopIfCancelled();
                mOptions.progress(expected > 0 ? static_cast<int>(100 * mTable.rows / expected)
                                               : 0);
            }
        }
        if (CPLGetLastErrorType() >= CE_Failure)
            fail(QStringLiteral("%1: broken behind row %2%3")
                     .arg(mTable.file)
                     .arg(mTable.rows)
                     .arg(QuietGdal::complaint()));
    }

private:
    int coordinate(const QString &name) const
    {
        if (name.isEmpty())
            return -1;
        const int index = mTable.indexOf(name);
        if (index < 0)
            fail(QStringLiteral("%1: no field %2; there are: %3")
                     .arg(mTable.file, name, someOf(mTable.columnNames())));
        return index;
    }

    void take(OGRFeatureH feature)
    {
        for (const int i : mKept) {
            const QByteArray text = cell(feature, i, mTypes[i]);
            mTable.columns[i].cells.append(mMissing.contains(text) ? QByteArray() : text);
        }
        if (!mOptions.shapes)
            return;
        if (mX >= 0) {
            const double x = number(mX);
            const double y = number(mY);
            mTable.shapeKind = ShapeKind::Points;
            mTable.shapes.append(ShapeParts{{QPointF(x, y)}});
        } else {
            takeShape(mTable, OGR_F_GetGeometryRef(feature));
        }
    }

    double number(int column) const
    {
        const Cells &cells = mTable.columns[column].cells;
        const auto value = toDecimal(cells.view(mTable.rows));
        if (!value)
            fail(QStringLiteral("%1: \"%2\" is no coordinate")
                     .arg(place(mTable, mTable.columns[column], mTable.rows), cells[mTable.rows]));
        return *value;
    }

    FeatureTable &mTable;
    OGRLayerH mLayer;
    const ReadOptions &mOptions;
    QVector<OGRFieldType> mTypes;
    QVector<int> mKept;
    QList<QByteArray> mMissing;
    int mX = -1;
    int mY = -1;
};

} // namespace

FeatureTable readFeatures(const QString &path, const ReadOptions &options)
{
    const QuietGdal quiet;
    if (options.xColumn.isEmpty() != options.yColumn.isEmpty())
        failUsage(QStringLiteral("the fields of x and y go together"), "x");
    const GdalFile dataset = open(path);
    if (!dataset)
        failUnread(path);
    OGRLayerH layer = chooseLayer(dataset.get(), options, path);

    FeatureTable table;
    table.file = path;
    table.layer = QString::fromUtf8(OGR_L_GetName(layer));
    CPLErrorReset();
    RowReader(table, layer, options).read();
    if (options.shapes)
        table.projection = options.projection.isEmpty() ? wktOf(OGR_L_GetSpatialRef(layer))
                                                        : wktOf(options.projection);
    return table;
}

} // namespace meridor
