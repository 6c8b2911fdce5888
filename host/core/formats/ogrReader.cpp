// SPDX-License-Identifier: MIT
#include "core/formats/ogrReader.h"
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cpl_error.h>
#include <cpl_string.h>
#include <memory>
#include <ogr_api.h>
#include "core/formats/delimitedFile.h"
#include "core/formats/gdalFile.h"
#include "core/formats/ogrShapes.h"
#include "core/formats/sourceFile.h"
#include "core/formats/tableWriter.h"
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

/// Tables of texts are read by DelimitedFile, since GDAL assumes their encoding and accepts records
/// with too many or too few fields and quotation marks that are not closed.
bool isTextTable(const QString &path)
{
    for (const char *ending : {".csv", ".tsv", ".psv", ".txt"})
        if (path.endsWith(QLatin1String(ending), Qt::CaseInsensitive))
            return !QFileInfo(path).isDir();
    return false;
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
    // Databases find tables by name that they do not list.
    if (!options.layer.isEmpty())
        if (OGRLayerH layer =
                GDALDatasetGetLayerByName(dataset, options.layer.toUtf8().constData()))
            return layer;
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

void setType(Column &column, OGRFieldType type)
{
    column.decimal = type == OFTString ? column.decimal : '.';
    switch (type) {
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
        column.typed = type != OFTString;
        break;
    }
}

QByteArray isoTime(OGRFeatureH feature, int field, bool dateOnly)
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
        return text.toLatin1();
    text += QStringLiteral("T%1:%2:%3").arg(two(hour), two(minute), two(static_cast<int>(second)));
    if (zone > 1) { // in quarters of an hour, 100 is UTC; 0 and 1: no zone is given
        const int quarters = std::abs(zone - 100);
        text += QLatin1Char(zone < 100 ? '-' : '+') + two(quarters / 4) + QLatin1Char(':')
                + two(quarters % 4 * 15);
    }
    return text.toLatin1();
}

/// The text of a number in a buffer of its own.
class NumberText {
public:
    std::string_view of(qint64 value)
    {
        return {mText.data(),
                size_t(std::to_chars(mText.begin(), mText.end(), value).ptr - mText.data())};
    }
    /// From this text the same number is read. Integers have no exponent, since they may be keys.
    std::string_view of(double value)
    {
        if (!std::isfinite(value))
            return {};
        if (std::abs(value) < 1e15 && value == std::floor(value))
            return of(static_cast<qint64>(value));
        return {mText.data(),
                size_t(std::to_chars(mText.begin(), mText.end(), value).ptr - mText.data())};
    }

private:
    std::array<char, 32> mText;
};

/// Reads the rows of a layer.
class LayerReader {
public:
    LayerReader(FeatureTable &table, OGRLayerH layer, const ReadOptions &options,
                const QString &encoding)
        : mTable(table), mLayer(layer), mOptions(options), mWriter(table, options, encoding)
    {
        OGRFeatureDefnH definition = OGR_L_GetLayerDefn(layer);
        for (int i = 0; i < OGR_FD_GetFieldCount(definition); ++i) {
            OGRFieldDefnH field = OGR_FD_GetFieldDefn(definition, i);
            mTypes.append(OGR_Fld_GetType(field));
            setType(mWriter.addColumn(OGR_Fld_GetNameRef(field)), mTypes.last());
        }
        // The number of a feature is a field of a database; GDAL keeps it apart.
        mNumbers = !options.key.isEmpty() && table.indexOf(options.key) < 0
                   && options.key == QString::fromUtf8(OGR_L_GetFIDColumn(layer));
        if (mNumbers)
            mWriter.addColumn(OGR_L_GetFIDColumn(layer));
        mWriter.startRows();
        ignoreUnused(definition);
    }

    void read()
    {
        const auto expected = OGR_L_GetFeatureCount(mLayer, 0);
        CPLErrorReset();
        OGR_L_ResetReading(mLayer);
        while (FeaturePtr feature{OGR_L_GetNextFeature(mLayer)}) {
            stopIfBroken();
            take(feature.get());
            mWriter.endRow(expected > 0 ? static_cast<int>(100 * mTable.rows / expected) : 0);
        }
        stopIfBroken();
    }

private:
    void stopIfBroken() const
    {
        if (CPLGetLastErrorType() >= CE_Failure)
            fail(QStringLiteral("%1: broken behind row %2%3")
                     .arg(mTable.file, QString::number(mTable.rows), QuietGdal::complaint()));
    }

    void ignoreUnused(OGRFeatureDefnH definition)
    {
        if (!OGR_L_TestCapability(mLayer, OLCIgnoreFields))
            return;
        CPLStringList ignored;
        for (int i = 0; i < mTypes.size(); ++i)
            if (!mWriter.isKept(i))
                ignored.AddString(OGR_Fld_GetNameRef(OGR_FD_GetFieldDefn(definition, i)));
        if (!mOptions.shapes || !mOptions.xColumn.isEmpty())
            ignored.AddString("OGR_GEOMETRY");
        OGR_L_SetIgnoredFields(mLayer, const_cast<const char **>(ignored.List()));
    }

    void take(OGRFeatureH feature)
    {
        for (int i = 0; i < mTypes.size(); ++i)
            if (mWriter.isKept(i))
                takeCell(feature, i);
        if (mNumbers && mWriter.isKept(mTypes.size()))
            mWriter.addCell(mTypes.size(), mNumber.of(qint64(OGR_F_GetFID(feature))));
        if (mOptions.shapes && !mWriter.addPoint())
            takeShape(mTable, OGR_F_GetGeometryRef(feature));
    }

    void takeCell(OGRFeatureH feature, int field)
    {
        if (!OGR_F_IsFieldSetAndNotNull(feature, field))
            return mWriter.addCell(field, {});
        switch (mTypes[field]) {
        case OFTInteger:
        case OFTInteger64:
            return mWriter.addCell(field,
                                   mNumber.of(qint64(OGR_F_GetFieldAsInteger64(feature, field))));
        case OFTReal:
            return mWriter.addCell(field, mNumber.of(OGR_F_GetFieldAsDouble(feature, field)));
        case OFTDate:
        case OFTDateTime: {
            const QByteArray text = isoTime(feature, field, mTypes[field] == OFTDate);
            return mWriter.addCell(field, {text.constData(), size_t(text.size())});
        }
        default:
            return mWriter.addCell(field, OGR_F_GetFieldAsString(feature, field));
        }
    }

    FeatureTable &mTable;
    OGRLayerH mLayer;
    const ReadOptions &mOptions;
    TableWriter mWriter;
    QVector<OGRFieldType> mTypes;
    NumberText mNumber;
    bool mNumbers = false;
};

/// Reads the records of a table of texts. A field "WKT" holds the shapes of a map.
class RecordReader {
public:
    RecordReader(FeatureTable &table, const QString &path, const ReadOptions &options,
                 const QString &encoding)
        : mTable(table),
          mOptions(options),
          mFile(path, table.file),
          mWriter(table, options, encoding)
    {
        const auto names = mFile.heading();
        if (names.empty())
            fail(table.file + QStringLiteral(": holds no fields"));
        for (const std::string_view name : names) {
            const bool isShape = mShape < 0 && options.xColumn.isEmpty() && trimmed(name) == "WKT";
            mColumns.push_back(isShape ? -1 : mTable.columns.size());
            if (isShape)
                mShape = static_cast<int>(mColumns.size()) - 1;
            else
                mWriter.addColumn(name);
        }
        mWriter.startRows();
    }

    void read()
    {
        std::vector<std::string_view> fields;
        while (mFile.next(fields)) {
            requireFields(fields);
            for (size_t i = 0; i < mColumns.size(); ++i)
                if (mColumns[i] >= 0 && mWriter.isKept(mColumns[i]))
                    mWriter.addCell(mColumns[i], fields[i]);
            if (mOptions.shapes && !mWriter.addPoint())
                takeText(mShape < 0 ? std::string_view() : fields[static_cast<size_t>(mShape)]);
            mWriter.endRow(mFile.percent());
        }
    }

private:
    /// Separators at the end of a record add empty fields, which are accepted.
    void requireFields(const std::vector<std::string_view> &fields) const
    {
        const size_t wanted = mColumns.size();
        const bool more = std::any_of(fields.begin() + std::min(wanted, fields.size()),
                                      fields.end(), [](auto field) { return !field.empty(); });
        if (fields.size() < wanted || more)
            fail(QStringLiteral("%1: %2, but %3 in the heading")
                     .arg(place(mTable, mTable.rows),
                          counted(static_cast<qint64>(fields.size()), "field"),
                          QString::number(wanted)));
    }

    void takeText(std::string_view text)
    {
        if (trimmed(text).empty())
            return takeShape(mTable, nullptr);
        std::string ended(text);
        char *rest = ended.data();
        OGRGeometryH geometry = nullptr;
        const OGRErr result = OGR_G_CreateFromWkt(&rest, nullptr, &geometry);
        const std::unique_ptr<void, FreeShape> owned(geometry);
        if (result != OGRERR_NONE || !geometry)
            fail(QStringLiteral("%1, field WKT, row %2: no shape")
                     .arg(mTable.file, QString::number(mTable.rows + 1)));
        takeShape(mTable, geometry);
    }

    struct FreeShape {
        void operator()(void *shape) const
        {
            OGR_G_DestroyGeometry(static_cast<OGRGeometryH>(shape));
        }
    };

    FeatureTable &mTable;
    const ReadOptions &mOptions;
    DelimitedFile mFile;
    TableWriter mWriter;
    std::vector<int> mColumns; ///< for each field its column; -1 for the shapes
    int mShape = -1;           ///< the field of the shapes
};

/// The encoding that a shapefile or DBF table declares, in its .cpg file or its heading; empty if
/// it declares none or one that is unknown.
QString declaredEncoding(OGRLayerH layer)
{
    for (const char *item : {"ENCODING_FROM_CPG", "CPG_VALUE", "ENCODING_FROM_LDID"}) {
        const char *const value = GDALGetMetadataItem(layer, item, "SHAPEFILE");
        const QString name = QString::fromLatin1(value).trimmed();
        if (!name.isEmpty() && isEncoding(name))
            return name;
    }
    return QString();
}

/// A source and what is known of it.
class FeatureReader {
public:
    FeatureReader(const QString &path, const ReadOptions &options)
        : mPath(path),
          mOptions(options),
          mSource(openSource(path, options.encoding)),
          mIsText(isTextTable(path))
    {
        if (!mIsText)
            openLayers();
        if (!mIsText)
            mLayer = chooseLayer(mDataset.get(), options, withoutPassword(path));
    }

    FeatureTable read()
    {
        if (mSource.converted)
            mOptions.encoding.clear();
        const bool stated = !mOptions.encoding.isEmpty();
        try {
            return readAs(stated ? mOptions.encoding : QStringLiteral("UTF-8"));
        } catch (const WrongEncoding &) {
            if (!stated)
                mOptions.encoding = fallback();
        }
        try {
            return readAs(mOptions.encoding);
        } catch (const WrongEncoding &) {
            fail(QStringLiteral("%1: the names of its fields are not in %2")
                     .arg(shownPath(), mOptions.encoding),
                 "encoding");
        }
    }

private:
    QString shownPath() const { return withoutPassword(mPath); }

    /// The encoding of a file that is not in UTF-8.
    QString fallback() const
    {
        const QString declared = mLayer ? declaredEncoding(mLayer) : sidecarEncoding();
        if (!declared.isEmpty() && !TextDecoder(declared).isUtf8())
            return declared;
        const QString encoding = QStringLiteral("Windows-1252");
        const QString what = declared.isEmpty()
                                 ? QStringLiteral("not UTF-8")
                                 : QStringLiteral("declares %1 but is not in it").arg(declared);
        if (mOptions.notes)
            mOptions.notes->note(
                QStringLiteral("%1: %2, read as %3").arg(shownPath(), what, encoding));
        return encoding;
    }

    void openLayers()
    {
        // Without this option GDAL converts the texts of DBF tables, and losslessly only if the
        // declared encoding is true.
        const char *const raw[] = {"ENCODING=", nullptr};
        const bool isDbf = mPath.endsWith(QLatin1String(".shp"), Qt::CaseInsensitive)
                           || mPath.endsWith(QLatin1String(".dbf"), Qt::CaseInsensitive)
                           || mPath.endsWith(QLatin1String(".shx"), Qt::CaseInsensitive);
        mDataset = openGdalFile(mSource.path, GDAL_OF_VECTOR, isDbf ? raw : nullptr);
        if (CPLGetLastErrorType() >= CE_Failure)
            mComplaint = QuietGdal::complaint();
        if (mDataset)
            return;
        if (!mSource.copy && !mPath.startsWith(QLatin1String("/dev/")))
            failUnread(mPath);
        mIsText = true; // a stream has no name that tells its format
    }

    /// The encoding in the .cpg file beside a table of texts.
    QString sidecarEncoding() const
    {
        const QFileInfo info(mPath);
        QFile file(info.path() + QLatin1Char('/') + info.completeBaseName()
                   + QLatin1String(".cpg"));
        const QString name = file.open(QIODevice::ReadOnly)
                                 ? QString::fromLatin1(file.read(64)).trimmed()
                                 : QString();
        return !name.isEmpty() && isEncoding(name) ? name : QString();
    }

    FeatureTable readAs(const QString &encoding)
    {
        FeatureTable table;
        table.file = shownPath();
        if (mIsText) {
            table.layer = QFileInfo(mPath).completeBaseName();
            if (!mOptions.layer.isEmpty() && mOptions.layer != table.layer)
                fail(QStringLiteral("%1: no layer %2; there are: %3")
                         .arg(table.file, mOptions.layer, table.layer));
            RecordReader(table, mSource.path, mOptions, encoding).read();
        } else {
            // The layer of a copy has the name of the scratch file.
            table.layer = mSource.copy && mOptions.layer.isEmpty()
                              ? QFileInfo(mPath).completeBaseName()
                              : QString::fromUtf8(OGR_L_GetName(mLayer));
            LayerReader(table, mLayer, mOptions, encoding).read();
            // Some readers open a damaged file as an empty one.
            if (table.rows == 0 && !mComplaint.isEmpty())
                fail(table.file + QStringLiteral(": broken") + mComplaint);
        }
        if (!mOptions.projection.isEmpty())
            table.projection = wktOf(mOptions.projection);
        else if (mOptions.shapes && mLayer)
            table.projection = wktOf(OGR_L_GetSpatialRef(mLayer));
        return table;
    }

    QString mPath;
    ReadOptions mOptions;
    SourceFile mSource;
    bool mIsText;
    GdalFile mDataset;
    QString mComplaint; ///< of GDAL while it opened the file
    OGRLayerH mLayer = nullptr;
};

GdalFile openVectorFile(const QString &path)
{
    GdalFile file = openGdalFile(path, GDAL_OF_VECTOR);
    if (!file)
        failUnread(path);
    return file;
}

} // namespace

FeatureTable readFeatures(const QString &path, const ReadOptions &options)
{
    const QuietGdal quiet;
    if (options.xColumn.isEmpty() != options.yColumn.isEmpty())
        failUsage(QStringLiteral("the fields of x and y go together"), "x");
    return FeatureReader(path, options).read();
}

QStringList layerNames(const QString &path)
{
    if (isTextTable(path))
        return {};
    const QuietGdal quiet;
    const GdalFile file = openVectorFile(path);
    QStringList names;
    for (int i = 0; i < GDALDatasetGetLayerCount(file.get()); ++i)
        names.append(QString::fromUtf8(OGR_L_GetName(GDALDatasetGetLayer(file.get(), i))));
    return names;
}

bool canHaveShapes(const QString &path, const QString &layer)
{
    const QuietGdal quiet;
    const GdalFile file = openVectorFile(path);
    const OGRLayerH found = layer.isEmpty()
                                ? GDALDatasetGetLayer(file.get(), 0)
                                : GDALDatasetGetLayerByName(file.get(), layer.toUtf8().constData());
    return found && OGR_L_GetGeomType(found) != wkbNone;
}

} // namespace meridor
