// SPDX-License-Identifier: MIT
#include "core/formats/featureWriter.h"
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>
#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_string.h>
#include <memory>
#include <ogr_api.h>
#include <ogr_geometry.h>
#include "core/formats/fieldWidths.h"
#include "core/formats/gdalFile.h"
#include "core/formats/ogrShapes.h"
#include "core/formats/sourceFile.h"
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"

namespace meridor {
namespace {

constexpr int kRowsOfTransaction = 20000;

struct FreeReference {
    void operator()(void *reference) const { OSRRelease(reference); }
};
struct FreeFeature {
    void operator()(void *feature) const { OGR_F_Destroy(feature); }
};

const char *driverOf(FeatureFormat format)
{
    switch (format) {
    case FeatureFormat::GeoPackage:
        return "GPKG";
    case FeatureFormat::GeoJson:
        return "GeoJSON";
    case FeatureFormat::FlatGeobuf:
        return "FlatGeobuf";
    default:
        return "ESRI Shapefile";
    }
}

bool isDbase(FeatureFormat format)
{
    return format == FeatureFormat::Dbf || format == FeatureFormat::Shapefile;
}

OGRwkbGeometryType geometryType(const FeatureTarget &target)
{
    const bool single =
        target.format == FeatureFormat::Shapefile || target.format == FeatureFormat::GeoJson;
    if (target.format == FeatureFormat::Dbf)
        return wkbNone;
    switch (target.kind) {
    case ShapeKind::Points:
        return wkbPoint;
    case ShapeKind::Lines:
        return single ? wkbLineString : wkbMultiLineString;
    case ShapeKind::Polygons:
        return single ? wkbPolygon : wkbMultiPolygon;
    default:
        return wkbNone;
    }
}

/// A name that no field has, for the columns that a format adds.
QByteArray freeName(const QString &wanted, const QVector<TableColumn> &columns)
{
    QString name = wanted;
    const auto taken = [&] {
        return std::any_of(columns.begin(), columns.end(), [&name](const TableColumn &column) {
            return column.name.compare(name, Qt::CaseInsensitive) == 0;
        });
    };
    while (taken())
        name += QLatin1Char('_');
    return name.toUtf8();
}

/// @param path  of the file; empty for a database.
[[noreturn]] void failLayer(const FeatureTarget &target, const QString &path)
{
    if (!path.isEmpty())
        failWriting(target.path, path, QuietGdal::complaint());
    stopIfCancelled();
    fail(QStringLiteral("%1: could not be written%2")
             .arg(withoutPassword(target.path), QuietGdal::complaint()));
}

/// Fills a layer of an open dataset.
class LayerSink : public TableSink {
public:
    /// @param path  of the file; empty for a database.
    LayerSink(GDALDatasetH file, const QString &path, const FeatureTarget &target,
              const FieldWidths *widths)
        : mFile(file), mPath(path), mTarget(target), mWidths(widths), mType(geometryType(target))
    {
    }

    void begin(const QVector<TableColumn> &columns) override
    {
        const std::unique_ptr<void, FreeReference> reference(makeReference());
        char **options = layerOptions(columns);
        mLayer = GDALDatasetCreateLayer(mFile, mTarget.layer.toUtf8().constData(), reference.get(),
                                        mType, options);
        CSLDestroy(options);
        if (!mLayer)
            failWriting();
        for (int i = 0; i < columns.size(); ++i)
            addField(columns[i], i);
        mBatches = mTarget.format == FeatureFormat::GeoPackage;
        if (mBatches)
            GDALDatasetStartTransaction(mFile, 0);
    }

    void row(const std::vector<TableCell> &cells, const ShapeParts *shape) override
    {
        const std::unique_ptr<void, FreeFeature> feature(OGR_F_Create(OGR_L_GetLayerDefn(mLayer)));
        for (size_t i = 0; i < cells.size(); ++i)
            set(feature.get(), static_cast<int>(i), cells[i]);
        if (shape && mType != wkbNone)
            if (auto geometry = geometryOf(*shape, mTarget.kind, mType))
                OGR_F_SetGeometryDirectly(feature.get(), OGRGeometry::ToHandle(geometry.release()));
        if (OGR_L_CreateFeature(mLayer, feature.get()) != OGRERR_NONE)
            failWriting();
        ++mRows;
        if (mBatches && mRows % kRowsOfTransaction == 0
            && (GDALDatasetCommitTransaction(mFile) != OGRERR_NONE
                || GDALDatasetStartTransaction(mFile, 0) != OGRERR_NONE))
            failWriting();
    }

    void end() override
    {
        if (mBatches && GDALDatasetCommitTransaction(mFile) != OGRERR_NONE)
            failWriting();
        if (mBatches && mType != wkbNone)
            addIndex();
        GDALFlushCache(mFile);
        if (CPLGetLastErrorType() >= CE_Failure)
            failWriting();
    }

private:
    /// Indexes the shapes of a GeoPackage. GDAL would do so when the file is closed, also one that
    /// a cancel leaves incomplete, for which the user would wait.
    void addIndex()
    {
        stopIfCancelled();
        const auto quoted = [](QByteArray name) -> QByteArray {
            return '\'' + name.replace("'", "''") + '\'';
        };
        const QByteArray sql = "SELECT CreateSpatialIndex(" + quoted(mTarget.layer.toUtf8()) + ", "
                               + quoted(OGR_L_GetGeometryColumn(mLayer)) + ')';
        if (OGRLayerH result = GDALDatasetExecuteSQL(mFile, sql.constData(), nullptr, nullptr))
            GDALDatasetReleaseResultSet(mFile, result);
    }

    [[noreturn]] void failWriting() const { failLayer(mTarget, mPath); }

    void *makeReference() const
    {
        if (mTarget.projection.isEmpty() || mType == wkbNone)
            return nullptr;
        OGRSpatialReferenceH reference = OSRNewSpatialReference(nullptr);
        if (OSRSetFromUserInput(reference, mTarget.projection.toUtf8().constData())
            != OGRERR_NONE) {
            OSRRelease(reference);
            return nullptr;
        }
        OSRSetAxisMappingStrategy(reference, OAMS_TRADITIONAL_GIS_ORDER);
        return reference;
    }

    char **layerOptions(const QVector<TableColumn> &columns) const
    {
        char **options = nullptr;
        const auto add = [&options](const char *name, const QByteArray &value) {
            options = CSLSetNameValue(options, name, value.constData());
        };
        switch (mTarget.format) {
        case FeatureFormat::GeoPackage:
            add("FID", freeName(QStringLiteral("fid"), columns));
            add("GEOMETRY_NAME", freeName(QStringLiteral("geom"), columns));
            add("SPATIAL_INDEX", "NO"); // see addIndex
            break;
        case FeatureFormat::Database:
            add("FID", freeName(QStringLiteral("fid"), columns));
            add("GEOMETRY_NAME", freeName(QStringLiteral("geom"), columns));
            add("LAUNDER", "NO");
            add("OVERWRITE", mTarget.overwrite ? "YES" : "NO");
            break;
        case FeatureFormat::GeoJson:
            add("SIGNIFICANT_FIGURES", "17");
            break;
        case FeatureFormat::FlatGeobuf:
            break;
        default:
            add("ENCODING", "UTF-8");
            break;
        }
        return options;
    }

    OGRFieldType fieldType(CellKind kind) const
    {
        switch (kind) {
        case CellKind::Integer:
            return OFTInteger64;
        case CellKind::Decimal:
            return OFTReal;
        case CellKind::Date:
            return OFTDate;
        case CellKind::Moment:
            return isDbase(mTarget.format) ? OFTString : OFTDateTime;
        default:
            return OFTString;
        }
    }

    void addField(const TableColumn &column, int index)
    {
        const QString name = mWidths ? mWidths->name(index) : column.name;
        OGRFieldDefnH field = OGR_Fld_Create(name.toUtf8().constData(), fieldType(column.kind));
        if (mWidths && column.kind != CellKind::Date) {
            OGR_Fld_SetWidth(field, mWidths->width(index));
            OGR_Fld_SetPrecision(field, mWidths->decimals(index));
        }
        const OGRErr error = OGR_L_CreateField(mLayer, field, 0);
        OGR_Fld_Destroy(field);
        if (error != OGRERR_NONE)
            failWriting();
        mKinds.append(column.kind);
    }

    void set(OGRFeatureH feature, int index, const TableCell &cell) const
    {
        if (isMissing(cell))
            return OGR_F_SetFieldNull(feature, index);
        if (const auto *number = std::get_if<qint64>(&cell))
            return OGR_F_SetFieldInteger64(feature, index, *number);
        if (const auto *number = std::get_if<double>(&cell))
            return OGR_F_SetFieldDouble(feature, index, *number);
        const QString &text = std::get<QString>(cell);
        const bool isMoment = mKinds[index] == CellKind::Moment && !isDbase(mTarget.format);
        if (isMoment)
            setMoment(feature, index, text);
        else
            OGR_F_SetFieldString(feature, index, text.toUtf8().constData());
    }

    /// Moments are kept in UTC, which is marked in the file.
    static void setMoment(OGRFeatureH feature, int index, const QString &text)
    {
        constexpr int kUtc = 100;
        const auto part = [&text](int from, int size) {
            return text.midRef(text.size() - 19 + from, size).toInt();
        };
        OGR_F_SetFieldDateTimeEx(feature, index, text.leftRef(text.size() - 15).toInt(), part(5, 2),
                                 part(8, 2), part(11, 2), part(14, 2),
                                 static_cast<float>(part(17, 2)), kUtc);
    }

    GDALDatasetH mFile;
    QString mPath;
    const FeatureTarget &mTarget;
    const FieldWidths *mWidths;
    OGRwkbGeometryType mType;
    OGRLayerH mLayer = nullptr;
    QVector<CellKind> mKinds;
    bool mBatches = false;
    qint64 mRows = 0;
};

/// Undoes a transaction that was not committed.
class Transaction {
public:
    explicit Transaction(GDALDatasetH file) : mFile(file)
    {
        mOpen = GDALDatasetStartTransaction(mFile, 0) == OGRERR_NONE;
    }
    ~Transaction()
    {
        if (mOpen)
            GDALDatasetRollbackTransaction(mFile);
    }
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    bool isOpen() const { return mOpen; }
    bool commit()
    {
        mOpen = false;
        return GDALDatasetCommitTransaction(mFile) == OGRERR_NONE;
    }

private:
    GDALDatasetH mFile;
    bool mOpen = false;
};

void writeTable(const FeatureTarget &target, const std::function<void(TableSink &)> &pass)
{
    const GdalFile file(GDALOpenEx(target.path.toUtf8().constData(),
                                   GDAL_OF_VECTOR | GDAL_OF_UPDATE, nullptr, nullptr, nullptr));
    if (!file)
        fail(QStringLiteral("%1: no database that GDAL can write%2")
                 .arg(withoutPassword(target.path), QuietGdal::complaint()));
    if (!target.overwrite
        && GDALDatasetGetLayerByName(file.get(), target.layer.toUtf8().constData()))
        fail(QStringLiteral("%1: the table %2 is there already")
                 .arg(withoutPassword(target.path), target.layer),
             "overwrite");
    CPLErrorReset();
    Transaction transaction(file.get());
    if (!transaction.isOpen())
        fail(QStringLiteral("%1: the database has no transactions%2")
                 .arg(withoutPassword(target.path), QuietGdal::complaint()));
    LayerSink sink(file.get(), QString(), target, nullptr);
    pass(sink);
    stopIfCancelled();
    if (!transaction.commit())
        failLayer(target, QString());
}

/// GDAL's writers check the writes of their buffers in part only, so the end of the file is read
/// again: a file that was cut by a full disk has none.
bool isWhole(const QString &path, FeatureFormat format)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const qint64 size = file.size();
    const auto big32 = [&file](qint64 at) {
        file.seek(at);
        const QByteArray b = file.read(4);
        return b.size() < 4 ? quint32(0)
                            : quint32(uchar(b[0])) << 24 | quint32(uchar(b[1])) << 16
                                  | quint32(uchar(b[2])) << 8 | quint32(uchar(b[3]));
    };
    if (format == FeatureFormat::GeoJson) {
        file.seek(std::max<qint64>(0, size - 8));
        return file.readAll().trimmed().endsWith('}');
    }
    if (format == FeatureFormat::Shapefile)
        return size >= 100 && qint64(big32(24)) * 2 == size;
    if (format == FeatureFormat::Dbf) {
        file.seek(4);
        const QByteArray b = file.read(8);
        const auto little = [&b](int at, int bytes) {
            qint64 value = 0;
            for (int i = 0; i < bytes; ++i)
                value |= qint64(uchar(b[at + i])) << 8 * i;
            return value;
        };
        return b.size() == 8 && size >= little(4, 2) + little(0, 4) * little(6, 2);
    }
    return size > 0;
}

void writeFile(const FeatureTarget &target, const QString &path,
               const std::function<void(TableSink &)> &pass, const FieldWidths *widths)
{
    CPLErrorReset();
    GdalFile file(GDALCreate(GDALGetDriverByName(driverOf(target.format)),
                             path.toUtf8().constData(), 0, 0, 0, GDT_Unknown, nullptr));
    if (!file)
        failLayer(target, path);
    LayerSink sink(file.get(), path, target, widths);
    pass(sink);
    stopIfCancelled();
    file.reset(); // closing writes the buffered rest
    const QString table = QFileInfo(path).path() + QLatin1Char('/')
                          + QFileInfo(path).completeBaseName() + QStringLiteral(".dbf");
    const bool whole =
        CPLGetLastErrorType() < CE_Failure && isWhole(path, target.format)
        && (target.format != FeatureFormat::Shapefile || isWhole(table, FeatureFormat::Dbf));
    if (!whole)
        failLayer(target, path);
}

QStringList suffixesOf(FeatureFormat format)
{
    if (format == FeatureFormat::Shapefile)
        return {QStringLiteral(".shx"), QStringLiteral(".dbf"), QStringLiteral(".prj"),
                QStringLiteral(".cpg")};
    return format == FeatureFormat::Dbf ? QStringList{QStringLiteral(".cpg")} : QStringList();
}

/// What readers keep beside a file and what would describe the old content.
QStringList staleOf(FeatureFormat format)
{
    QStringList stale = suffixesOf(format);
    if (format == FeatureFormat::Shapefile)
        stale << QStringLiteral(".sbn") << QStringLiteral(".sbx") << QStringLiteral(".qix")
              << QStringLiteral(".idm") << QStringLiteral(".ind");
    return stale;
}

void noteLosses(const FeatureTarget &target, const std::function<void(const QString &)> &note)
{
    if (target.projection.isEmpty() || geometryType(target) == wkbNone)
        return;
    const std::unique_ptr<void, FreeReference> reference(OSRNewSpatialReference(nullptr));
    if (OSRSetFromUserInput(reference.get(), target.projection.toUtf8().constData())
        != OGRERR_NONE) {
        note(QStringLiteral("%1: the projection of the map is not one that GDAL knows; it is left "
                            "out")
                 .arg(withoutPassword(target.path)));
        return;
    }
    OSRAutoIdentifyEPSG(reference.get());
    if (target.format == FeatureFormat::GeoJson && !OSRGetAuthorityCode(reference.get(), nullptr))
        note(QStringLiteral("%1: GeoJSON names projections by their codes, and this one has none")
                 .arg(withoutPassword(target.path)));
}

} // namespace

bool isDatabase(const QString &target)
{
    for (const char *prefix : {"PG:", "postgresql://", "MYSQL:", "MSSQL:"})
        if (target.startsWith(QLatin1String(prefix), Qt::CaseInsensitive))
            return true;
    return false;
}

QStringList filesOf(const FeatureTarget &target)
{
    if (target.format == FeatureFormat::Database)
        return {};
    QStringList files{target.path};
    const QFileInfo main(target.path);
    for (const QString &suffix : suffixesOf(target.format))
        files.append(main.path() + QLatin1Char('/') + main.completeBaseName() + suffix);
    return files;
}

void writeFeatures(const FeatureTarget &target, const std::function<void(TableSink &)> &pass,
                   const std::function<void(const QString &)> &note)
{
    const QuietGdal quiet;
    GDALAllRegister();
    noteLosses(target, note);
    if (target.format == FeatureFormat::Database)
        return writeTable(target, pass);
    FieldWidths widths(target.path);
    if (isDbase(target.format)) {
        pass(widths);
        widths.tell(note);
    }
    const FieldWidths *fields = isDbase(target.format) ? &widths : nullptr;
    if (!isStream(target.path)) {
        replaceFiles(target.path, staleOf(target.format), [&](const QString &beside) {
            writeFile(target, beside, pass, fields);
            return true;
        });
        return;
    }
    if (!suffixesOf(target.format).isEmpty())
        fail(QStringLiteral("%1: this format consists of several files").arg(target.path));
    QTemporaryDir scratch;
    const QString whole = scratch.filePath(QStringLiteral("layer"));
    writeFile(target, whole, pass, fields);
    QFile file(whole);
    if (!scratch.isValid() || !file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("%1: %2").arg(target.path, file.errorString()));
    StreamDevice device(target.path);
    while (!file.atEnd())
        writeWhole(device, file.read(1 << 20), target.path);
}

} // namespace meridor
