// SPDX-License-Identifier: MIT
#include "core/formats/cubeWriter.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <ogr_srs_api.h>
#include <unistd.h>
#include "core/formats/cellTypes.h"
#include "core/formats/cubeOutput.h"
#include "core/formats/gdalCellTypes.h"
#include "core/formats/gdalFile.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "core/project/progress.h"
#include "core/project/safeFile.h"
#include "core/project/shapeAccess.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/TimeAPI.h"

namespace meridor {
namespace {

constexpr qint64 kDay = 86400;
constexpr int kBlockSide = 512;          ///< of the cells that are packed together
constexpr int kMissingInteger = INT_MIN; ///< of objects without a value

bool isZarrFormat(const QString &path, const QString &format)
{
    return format.isEmpty() ? QFileInfo(path).suffix().toLower() == QLatin1String("zarr")
                            : format == QLatin1String("zarr");
}

/// Whether a directory holds a Zarr store, which may be replaced; any other directory may not.
bool isZarrStore(const QString &path)
{
    const QDir directory(path);
    for (const char *sign : {".zgroup", ".zarray", ".zmetadata", "zarr.json"})
        if (directory.exists(QLatin1String(sign)))
            return true;
    return false;
}

/// The linear unit of a projection as UDUNITS, which CF takes its units from, spells it.
QByteArray unitOf(OGRSpatialReferenceH reference)
{
    const double metres = OSRGetLinearUnits(reference, nullptr);
    const std::pair<double, const char *> known[] = {
        {1.0, "m"}, {1000.0, "km"}, {0.3048, "foot"}, {1200.0 / 3937, "US_survey_foot"}};
    for (const auto &[size, name] : known)
        if (std::abs(metres - size) < 1e-9 * size)
            return name;
    return exactNumber(metres).toLatin1() + " m";
}

/// The type in a file for cells of type T, which GDAL can write: signed bytes and 16-bit floats
/// have none of their own.
template <class T>
using WireOf = std::conditional_t<std::is_same_v<T, half>, float,
                                  std::conditional_t<std::is_same_v<T, qint8>, qint16, T>>;

/// Writes the datasets of one geography.
class CubeExport {
public:
    CubeExport(CubeOutput &out, const QVector<int> &datasets, qint64 start, qint64 end,
               std::optional<int> realization, const Progress &progress)
        : mOut(out),
          mProgress(progress),
          mGeography(VORN_GetGeographyId(datasets.first())),
          mProps(VORN_GetGeographyProperties(mGeography)),
          mAxis(axisOf(mGeography)),
          mDatasets(datasets),
          mRealization(realization),
          mFirst(start),
          mLast(end)
    {
    }

    void run()
    {
        mOut.setTitle(geographyName(mGeography));
        for (const int id : mDatasets)
            mToDo += qMax(1, timesOf(id).size()) * realizationsOf(id);
        isGrid() ? placeGrid() : nameObjects();
        for (const int id : mDatasets)
            rasterOf(id) ? writeRaster(id) : writeObjects(id);
    }

private:
    bool isGrid() const { return mProps.type == GeoProps::Raster; }
    QString projection() const { return projectionText(mGeography); }
    /// The number of realizations that are written.
    int realizationsOf(int id) const
    {
        return mRealization ? 1 : qMax(1, VORN_GetDatasetProperties(id).realizationCount);
    }
    int firstRealizationOf(int id) const
    {
        return mRealization && VORN_GetDatasetProperties(id).realizationCount > 1 ? *mRealization
                                                                                  : 0;
    }

    /// A name that both formats accept and no other variable has. The attribute "long_name" keeps
    /// the dataset's own.
    QByteArray uniqueName(const QString &text)
    {
        QString name = text.trimmed();
        for (QChar &letter : name)
            if (letter == QLatin1Char('/') || letter == QLatin1Char('\\') || !letter.isPrint())
                letter = QLatin1Char('_');
        if (name.isEmpty() || !(name[0].isLetterOrNumber() || name[0] == QLatin1Char('_')))
            name.prepend(QLatin1Char('_'));
        QString unique = name;
        for (int number = 2; mNames.contains(unique); ++number)
            unique = name + QLatin1Char('_') + QString::number(number);
        mNames.insert(unique);
        return unique.toUtf8();
    }

    /// The intervals of a dataset within the wished span; empty if it has no times.
    QVector<Interval> timesOf(int id) const
    {
        QVector<Interval> times;
        if (datasetOf(id)->IsStatic())
            return times;
        for (const Interval &when : dataTimes(id, firstRealizationOf(id)))
            if (lastInstantOf(when) >= mFirst && when.startTime <= mLast)
                times.append(when);
        if (times.isEmpty())
            fail(QStringLiteral("%1 holds no values from %2 to %3")
                     .arg(datasetName(id), mAxis.show(mFirst), mAxis.show(mLast)));
        for (int realization = 1; realization < realizationsOf(id); ++realization) {
            QVector<Interval> others;
            VORN_GetAllDatasetTimes(id, realization, others);
            if (others != dataTimes(id))
                fail(QStringLiteral("the realizations of %1 have different times")
                         .arg(datasetName(id)));
        }
        return times;
    }

    /// The dimension of these times; makes it when they are new.
    QByteArray timeDimension(const QVector<Interval> &times)
    {
        const int known = mTimes.indexOf(times);
        if (known >= 0)
            return mTimeNames[known];
        const QByteArray name = uniqueName(QStringLiteral("time"));
        mTimes.append(times);
        mTimeNames.append(name);
        mOut.addDimension(name, times.size(), GDAL_DIM_TYPE_TEMPORAL);
        const bool isDay = mAxis.format() == TF_Date;
        const bool isMoment = isDay || mAxis.format() == TF_DateTime;
        const qint64 zero = isMoment ? VORN_ConstructTime(TF_Date, 1970, 1, 1, 0, 0, 0) : 0;
        const qint64 unit = isDay ? kDay : 1;
        QVector<qint64> starts;
        QVector<qint64> bounds;
        bool haveLength = false;
        for (const Interval &when : times) {
            // Projects of earlier versions end spans of days at the start of their last day.
            const qint64 end = when.endTime + (isDay && when.inclusiveEnd ? kDay : 0);
            starts.append((when.startTime - zero) / unit);
            bounds << (when.startTime - zero) / unit << (end - zero) / unit;
            haveLength = haveLength || end != when.startTime;
        }
        GdalArray array = mOut.addNumbers(name, {name}, GDT_Int64);
        if (isMoment) {
            GDALMDArraySetUnit(array.get(), isDay ? "days since 1970-01-01"
                                                  : "seconds since 1970-01-01 00:00:00");
            mOut.setText(array, "calendar", QStringLiteral("proleptic_gregorian"));
            mOut.setText(array, "standard_name", QStringLiteral("time"));
        }
        mOut.setText(array, "axis", QStringLiteral("T"));
        if (haveLength) {
            const QByteArray edges = uniqueName(name + QStringLiteral("_bnds"));
            if (!mHasEdges)
                mOut.addDimension("bnds", 2);
            mHasEdges = true;
            mOut.setText(array, "bounds", edges);
            const GdalArray edge = mOut.addNumbers(edges, {name, "bnds"}, GDT_Int64);
            mOut.write(edge, {0, 0}, {times.size(), 2}, GDT_Int64, bounds.constData());
        }
        mOut.write(array, {0}, {starts.size()}, GDT_Int64, starts.constData());
        return name;
    }

    QByteArray realizationDimension(int count)
    {
        const QByteArray name = mRealizations.value(count);
        if (!name.isEmpty())
            return name;
        const QByteArray made = uniqueName(QStringLiteral("realization"));
        mRealizations.insert(count, made);
        mOut.addDimension(made, count);
        QVector<int> numbers;
        for (int i = 0; i < count; ++i)
            numbers.append(i + 1);
        const GdalArray array = mOut.addNumbers(made, {made}, GDT_Int32);
        mOut.setText(array, "standard_name", QStringLiteral("realization"));
        mOut.write(array, {0}, {count}, GDT_Int32, numbers.constData());
        return made;
    }

    void placeGrid()
    {
        const QByteArray wkt = projection().toUtf8();
        const OGRSpatialReferenceH reference =
            wkt.isEmpty() ? nullptr : OSRNewSpatialReference(wkt.constData());
        const bool inDegrees = reference && OSRIsGeographic(reference);
        const QByteArray unit = reference ? unitOf(reference) : QByteArray();
        if (reference)
            OSRDestroySpatialReference(reference);
        const double left = mProps.bounds.left();
        const double top = mProps.bounds.top() + mProps.bounds.height();
        const int columns = static_cast<int>(mProps.columns);
        const int rows = static_cast<int>(mProps.rows);
        const auto add = [&](const char *plain, const char *degrees, int count, double first,
                             double step, bool isX) {
            const QByteArray name = uniqueName(QLatin1String(inDegrees ? degrees : plain));
            mOut.addDimension(name, count,
                              isX ? GDAL_DIM_TYPE_HORIZONTAL_X : GDAL_DIM_TYPE_HORIZONTAL_Y);
            const GdalArray array = mOut.addNumbers(name, {name}, GDT_Float64);
            QVector<double> places;
            for (int i = 0; i < count; ++i)
                places.append(first + (i + 0.5) * step);
            const QString standard =
                inDegrees ? QString(isX ? "longitude" : "latitude")
                          : QString(isX ? "projection_x_coordinate" : "projection_y_coordinate");
            if (inDegrees)
                GDALMDArraySetUnit(array.get(), isX ? "degrees_east" : "degrees_north");
            else if (!wkt.isEmpty())
                GDALMDArraySetUnit(array.get(), unit.constData());
            if (!wkt.isEmpty())
                mOut.setText(array, "standard_name", standard);
            mOut.setText(array, "axis", isX ? QStringLiteral("X") : QStringLiteral("Y"));
            mOut.write(array, {0}, {count}, GDT_Float64, places.constData());
            return name;
        };
        mRow = add("y", "lat", rows, top, -mProps.pixelHeight, false);
        mColumn = add("x", "lon", columns, left, mProps.pixelWidth, true);
        if (wkt.isEmpty() || !mOut.isZarr())
            return;
        // A variable of one element, since GDAL gives those of none no names of dimensions in Zarr.
        mMapping = uniqueName(QStringLiteral("spatial_ref"));
        mOut.addDimension(mMapping, 1);
        const GdalArray mapping = mOut.addNumbers(mMapping, {mMapping}, GDT_Int32);
        mOut.setText(mapping, "crs_wkt", projection());
        mOut.setText(mapping, "spatial_ref", projection());
        if (inDegrees)
            mOut.setText(mapping, "grid_mapping_name", QStringLiteral("latitude_longitude"));
        const int zero = 0;
        mOut.write(mapping, {0}, {1}, GDT_Int32, &zero);
    }

    void nameObjects()
    {
        const QStringList keys = objectKeys(mGeography);
        mObjects = uniqueName(QStringLiteral("object"));
        mOut.addDimension(mObjects, keys.size());
        addTexts(QStringLiteral("key"), QStringLiteral("keys of the objects"), keys);
        const int names = nameDataset(mGeography);
        if (names >= 0 && !mDatasets.contains(names))
            addTexts(QStringLiteral("name"), QStringLiteral("names of the objects"),
                     objectNames(mGeography));
    }

    void addTexts(const QString &name, const QString &title, const QStringList &texts)
    {
        const GdalArray array = mOut.addTexts(uniqueName(name), {mObjects}, longest(texts));
        mOut.setText(array, "long_name", title);
        mOut.writeTexts(array, {0}, {texts.size()}, texts);
    }

    static int longest(const QStringList &texts)
    {
        int most = 0;
        for (const QString &text : texts)
            most = qMax(most, text.toUtf8().size());
        return most;
    }

    /// The dimensions of a dataset but those of its place.
    QVector<QByteArray> outerDimensions(int id, const QVector<Interval> &times)
    {
        QVector<QByteArray> names;
        if (!times.isEmpty())
            names.append(timeDimension(times));
        if (realizationsOf(id) > 1)
            names.append(realizationDimension(realizationsOf(id)));
        return names;
    }

    void describe(const GdalArray &array, int id)
    {
        const QString title = VORN_GetDatasetMetaData(id, QStringLiteral("Long name"));
        mOut.setText(array, "long_name", title.isEmpty() ? datasetName(id) : title);
        const QByteArray unit = VORN_GetDatasetMetaData(id, QStringLiteral("Unit")).toUtf8();
        if (!unit.isEmpty())
            GDALMDArraySetUnit(array.get(), unit.constData());
        if (!mMapping.isEmpty())
            mOut.setText(array, "grid_mapping", mMapping);
        else if (isGrid() && !projection().isEmpty())
            mOut.setProjection(array, projection());
    }

    /// Calls `visit` with the outer place, the realization and an instant of each grid or slice.
    template <class Visit>
    void visitSlices(int id, const QVector<Interval> &times, const Visit &visit)
    {
        const int realizations = realizationsOf(id);
        for (int time = 0; time < qMax(1, times.size()); ++time)
            for (int realization = 0; realization < realizations; ++realization) {
                mProgress.report(static_cast<int>(100 * mDone++ / mToDo), "Writing the cube...");
                QVector<qint64> place;
                if (!times.isEmpty())
                    place.append(time);
                if (realizations > 1)
                    place.append(realization);
                visit(place, firstRealizationOf(id) + realization,
                      times.isEmpty() ? 0 : instantOf(times[time]));
            }
    }

    void writeRaster(int id)
    {
        const MRasterDataset &dataset = *rasterOf(id);
        const auto known = visitCellType(dataset.GetDataType(), dataset.GetRasterBitDepth(),
                                         [&](auto zero) { writeGrids(id, dataset, zero); });
        if (!known)
            fail(QStringLiteral("%1: cells of %2 bits have no form in a cube")
                     .arg(datasetName(id), QString::number(dataset.GetRasterBitDepth())));
    }

    template <class T> void writeGrids(int id, const MRasterDataset &dataset, T)
    {
        using Wire = WireOf<T>;
        const int columns = static_cast<int>(mProps.columns);
        const int rows = static_cast<int>(mProps.rows);
        const QVector<Interval> times = timesOf(id);
        QVector<QByteArray> dimensions = outerDimensions(id, times);
        QVector<qint64> block(dimensions.size(), 1);
        dimensions << mRow << mColumn;
        block << qMin(rows, kBlockSide) << qMin(columns, kBlockSide);
        const MissingFlag &flag = dataset.GetCellFlag();
        const auto missing = static_cast<Wire>(flag.field<T>());
        const GdalArray array =
            mOut.addNumbers(uniqueName(datasetName(id)), dimensions, gdalType<Wire>(),
                            flag.type == MissingFlag::None ? nullptr : &missing, block);
        describe(array, id);
        visitSlices(id, times, [&](QVector<qint64> place, int realization, qint64 when) {
            const MRasterObservation *grid = dataset.GetConstRasterInfo(realization, when);
            if (!grid)
                fail(QStringLiteral("%1, realization %2: holds no grid at %3")
                         .arg(datasetName(id), QString::number(realization + 1), mAxis.show(when)));
            const HeldGrid hold(*grid);
            std::vector<Wire> widened;
            QVector<qint64> count(place.size(), 1);
            place << 0 << 0;
            count << 0 << columns;
            for (int row = 0; row < rows; row += kBlockSide) {
                stopIfCancelled();
                const int strip = qMin(kBlockSide, rows - row);
                const T *cells = grid->cells<T>() + std::ptrdiff_t(row) * columns;
                place[place.size() - 2] = row;
                count[count.size() - 2] = strip;
                if constexpr (std::is_same_v<T, Wire>) {
                    mOut.write(array, place, count, gdalType<Wire>(), cells);
                } else {
                    widened.assign(cells, cells + std::ptrdiff_t(strip) * columns);
                    mOut.write(array, place, count, gdalType<Wire>(), widened.data());
                }
            }
        });
    }

    void writeObjects(int id)
    {
        const DatasetProps props = VORN_GetDatasetProperties(id);
        if (props.dataType == StringType)
            writeTexts(id);
        else if (props.dataType == IntegerType)
            writeNumbers<int>(id, kMissingInteger);
        else
            writeNumbers<double>(id, std::numeric_limits<double>::quiet_NaN());
    }

    /// The objects without a value: those marked as missing, and those that do not exist.
    QSet<int> withMissing(QSet<int> missing, qint64 when, bool isStatic) const
    {
        if (isStatic)
            return missing;
        QSet<int> absent;
        for (int i = 0; i < mProps.objectCount; ++i)
            absent.insert(i);
        for (const int object : objectsAt(mGeography, when))
            absent.remove(object);
        return missing.unite(absent);
    }

    template <class T> void writeNumbers(int id, T empty)
    {
        const QVector<Interval> times = timesOf(id);
        const QVector<QByteArray> outer = outerDimensions(id, times);
        QVector<qint64> block(outer.size(), 1);
        const GdalArray array =
            mOut.addNumbers(uniqueName(datasetName(id)), outer + QVector<QByteArray>{mObjects},
                            gdalType<T>(), &empty, block << qMax(1, mProps.objectCount));
        describe(array, id);
        visitSlices(id, times, [&](QVector<qint64> place, int realization, qint64 when) {
            QVector<double> numbers;
            QSet<int> missing;
            QVector<T> values(mProps.objectCount, empty);
            if (VORN_GetNumericValues(id, realization, when, numbers, missing))
                std::copy(numbers.begin(), numbers.end(), values.begin());
            for (const int object : withMissing(missing, when, times.isEmpty()))
                if (object < values.size())
                    values[object] = empty;
            QVector<qint64> count(place.size(), 1);
            mOut.write(array, place << 0, count << values.size(), gdalType<T>(),
                       values.constData());
        });
    }

    void writeTexts(int id)
    {
        const QVector<Interval> times = timesOf(id);
        const QVector<QByteArray> outer = outerDimensions(id, times);
        const auto read = [&](int realization, qint64 when) {
            QVector<QString> texts;
            QSet<int> missing;
            VORN_GetDataValues(id, realization, when, texts, missing);
            texts.resize(mProps.objectCount);
            for (const int object : withMissing(missing, when, times.isEmpty()))
                texts[object].clear();
            return QStringList(texts.toList());
        };
        int most = 1;
        const qint64 done = mDone;
        if (mOut.isZarr()) // which needs the length of the longest text first
            visitSlices(id, times, [&](const QVector<qint64> &, int realization, qint64 when) {
                most = qMax(most, longest(read(realization, when)));
            });
        mDone = done;
        const GdalArray array =
            mOut.addTexts(uniqueName(datasetName(id)), outer + QVector<QByteArray>{mObjects}, most);
        describe(array, id);
        visitSlices(id, times, [&](QVector<qint64> place, int realization, qint64 when) {
            QVector<qint64> count(place.size(), 1);
            mOut.writeTexts(array, place << 0, count << mProps.objectCount,
                            read(realization, when));
        });
    }

    CubeOutput &mOut;
    const Progress &mProgress;
    int mGeography;
    GeoProps mProps;
    TimeAxis mAxis;
    QVector<int> mDatasets;
    std::optional<int> mRealization;
    qint64 mFirst;
    qint64 mLast;
    QSet<QString> mNames{QStringLiteral("bnds")};
    QVector<QVector<Interval>> mTimes;
    QVector<QByteArray> mTimeNames;
    QMap<int, QByteArray> mRealizations; ///< dimension by count
    QByteArray mRow;
    QByteArray mColumn;
    QByteArray mObjects;
    QByteArray mMapping;
    bool mHasEdges = false;
    qint64 mDone = 0;
    qint64 mToDo = 0;
};

void syncDirectory(const QString &path)
{
    const int handle = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    const bool synced = handle >= 0 && ::syncfs(handle) == 0;
    if (handle >= 0)
        ::close(handle);
    if (!synced)
        fail(QStringLiteral("%1: %2").arg(path, systemError()));
}

/// Calls `write` with the name of a directory to make, in a new directory beside the target, and
/// moves it to the target; one that is there is exchanged with it and removed.
void replaceStore(const QString &target, const std::function<void(const QString &)> &write)
{
    const QFileInfo given(target);
    const QString real =
        given.isSymLink() && given.exists() ? given.canonicalFilePath() : given.absoluteFilePath();
    const QFileInfo info(real);
    QTemporaryDir beside(info.absolutePath() + QStringLiteral("/.") + info.completeBaseName()
                         + QStringLiteral("-XXXXXX"));
    if (!beside.isValid())
        fail(QStringLiteral("%1: %2").arg(target, beside.errorString()));
    const QString made = beside.filePath(QStringLiteral("new.zarr"));
    write(made);
    syncDirectory(made);
    refuseUnreadable(target);
    stopIfCancelled();
    const QByteArray from = QFile::encodeName(made);
    const QByteArray to = QFile::encodeName(real);
    const bool isMoved =
        QFileInfo::exists(real)
            ? ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_EXCHANGE)
                  == 0
            : std::rename(from.constData(), to.constData()) == 0;
    if (!isMoved)
        fail(QStringLiteral("%1: %2").arg(target, systemError()));
}

} // namespace

bool isCube(const QString &path, const QString &format)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const QString name = format.isEmpty() ? suffix : format;
    return name == QLatin1String("netcdf") || name == QLatin1String("nc")
           || name == QLatin1String("zarr");
}

void requireCubeWritable(const QString &path, const QString &format, bool overwrite)
{
    const QFileInfo info(path);
    if (isZarrFormat(path, format) && isStream(path))
        failUsage(QStringLiteral("%1: a Zarr store is a directory").arg(path));
    if (!isZarrFormat(path, format) || !info.isDir()) {
        requireWritable(path, overwrite);
        return;
    }
    if (!isZarrStore(path))
        fail(QStringLiteral("%1: is a directory that holds no Zarr store").arg(path));
    if (!overwrite)
        fail(QStringLiteral("%1: is there already").arg(path), "overwrite");
}

void exportCube(const QString &path, const QString &format, const QVector<int> &datasets,
                qint64 start, qint64 end, std::optional<int> realization)
{
    const QuietGdal quiet;
    const bool isZarr = isZarrFormat(path, format);
    const Progress progress("Export", "Writing the cube...");
    const auto write = [&](const QString &beside) {
        CubeOutput out(beside, path, isZarr);
        CubeExport(out, datasets, start, end, realization, progress).run();
        out.close();
    };
    if (isZarr) {
        replaceStore(path, write);
    } else {
        replaceFile(path, [&](const QString &beside) {
            write(beside);
            stopIfCancelled();
            return true;
        });
    }
}

} // namespace meridor
