// SPDX-License-Identifier: MIT
// Vector datasets compared with a banded raster file, an ordered map and a hash: filled slice by
// slice, read through time, counted, and read cell by cell.
#include <QHash>
#include <QTemporaryDir>
#include <gdal_priv.h>
#include <random>
#include <vector>
#include "datainterface/MVectorDataset.h"
#include "pointHost.h"
#include "ratios.h"

namespace {

constexpr int kSlices = 1000;
constexpr int kObjects = 10000;
constexpr int kRounds = 5;
constexpr int kCacheBytes = 64 << 20;

class Dataset : public MVectorDataset {
public:
    explicit Dataset(int objectCount)
        : MVectorDataset(nullptr, TimeSlice, 0, DecimalType, "bench", "/", 1, objectCount)
    {
    }
};

QVector<double> drawn(int count, int keys)
{
    std::mt19937 engine(1);
    QVector<double> values(count);
    for (double &value : values)
        value = static_cast<double>(engine() % static_cast<unsigned>(keys)) / 16.0;
    return values;
}

void fill(MVectorDataset &dataset, const QVector<double> &values)
{
    for (int t = 0; t < kSlices; ++t)
        dataset.AddTimeSliceValues(0, TimeStamp(t), values, {}, true, false);
}

GDALDataset *writeBands(const QByteArray &path, QVector<double> values)
{
    char **options = CSLSetNameValue(nullptr, "INTERLEAVE", "BAND");
    GDALDriver *driver = GetGDALDriverManager()->GetDriverByName("GTiff");
    GDALDataset *file =
        driver->Create(path.constData(), kObjects / 100, 100, kSlices, GDT_Float64, options);
    CSLDestroy(options);
    for (int t = 1; t <= kSlices; ++t) {
        if (file->GetRasterBand(t)->RasterIO(GF_Write, 0, 0, kObjects / 100, 100, values.data(),
                                             kObjects / 100, 100, GDT_Float64, 0, 0)
            != CE_None)
            std::abort();
    }
    return file;
}

/// The values of one object at every time, in nanoseconds a value; each round reads another object.
double readThroughTime(const QVector<double> &values, int cacheBytes)
{
    const PointHost host(kObjects, cacheBytes);
    for (int t = 0; t < kSlices; ++t)
        VORN_AddDataValues(host.dataset, 0, {t, t, true, true}, values, {}, true, false);
    QVector<Interval> intervals;
    QVector<datum> found;
    unsigned int object = 4321;
    return ratios::best(kRounds, kSlices, [&] {
        if (!VORN_GetObjectDataValues(host.dataset, 0, object++, intervals, found)
            || found.size() != kSlices)
            std::abort();
    });
}

/// One cell of each band, in nanoseconds a band. With `isAnew` the file is opened before, outside
/// the measured time; otherwise its blocks are in GDAL's cache.
double readBands(const QByteArray &path, int cacheBytes, bool isAnew)
{
    GDALSetCacheMax64(cacheBytes);
    double least = 1e300;
    GDALDataset *file = nullptr;
    for (int round = 0; round < kRounds; ++round) {
        if (!file || isAnew) {
            GDALClose(file);
            file = static_cast<GDALDataset *>(GDALOpen(path.constData(), GA_ReadOnly));
        }
        least = std::min(least, ratios::best(1, kSlices, [&] {
                             for (int t = 1; t <= kSlices; ++t) {
                                 double value = 0.0;
                                 if (file->GetRasterBand(t)->RasterIO(GF_Read, 21, 43, 1, 1, &value,
                                                                      1, 1, GDT_Float64, 0, 0)
                                     != CE_None)
                                     std::abort();
                             }
                         }));
    }
    GDALClose(file);
    GDALSetCacheMax64(kCacheBytes);
    return least;
}

void fillAndReadThroughTime()
{
    constexpr int kSmallCache = 8 << 20;
    constexpr int kLargeCache = 128 << 20;
    const QTemporaryDir directory;
    const QByteArray path = directory.filePath("bands.tif").toLocal8Bit();
    const QVector<double> values = drawn(kObjects, 1 << 30);
    const double total = static_cast<double>(kSlices) * kObjects;

    const double ours = ratios::best(kRounds, total, [&] {
        ResetDataManager();
        Dataset dataset(kObjects);
        fill(dataset, values);
    });
    const double theirs =
        ratios::best(kRounds, total, [&] { GDALClose(writeBands(path, values)); });
    ratios::row("a value of 1,000 slices of 10,000 decimals written", ours,
                "GeoTIFF, a band a slice", theirs, 1.0);

    const double cached = readThroughTime(values, kLargeCache);
    ratios::row("one object at one of 1,000 times, in the cache", cached, "GeoTIFF, opened anew",
                readBands(path, kLargeCache, true), 0.05);
    ratios::row("", cached, "GeoTIFF, in its cache", readBands(path, kLargeCache, false), 1.0);
    ratios::row("the same, cache a tenth of the values", readThroughTime(values, kSmallCache),
                "GeoTIFF, as small a cache", readBands(path, kSmallCache, true), 1.0);
}

void count()
{
    constexpr int kKeys = 5000;
    constexpr int kValues = 1000000;
    const QVector<double> values = drawn(kValues, kKeys);
    QVector<QVector<double>> slices;
    for (int from = 0; from < kValues; from += kObjects)
        slices.append(values.mid(from, kObjects));

    const double ours = ratios::best(kRounds, kValues, [&] {
        ResetDataManager();
        Dataset dataset(kObjects);
        for (int t = 0; t < slices.size(); ++t)
            dataset.AddTimeSliceValues(0, TimeStamp(t), slices.at(t), {}, true, true);
    });
    const double theirs = ratios::best(kRounds, kValues, [&] {
        QMap<double, int> table;
        for (const double value : values)
            ++table[value];
        if (table.size() != kKeys)
            std::abort();
    });
    ratios::row("a value added and counted among 5,000 keys", ours, "one QMap increment", theirs,
                0.25);
}

/// Values are set object by object, each at all times: first while the other values are missing, then
/// all of them again.
void addCells(int objects, int times, const char *name)
{
    double first = 1e300;
    double second = 1e300;
    for (int round = 0; round < kRounds; ++round) {
        ResetDataManager();
        Dataset dataset(objects);
        const auto addAll = [&] {
            for (int id = 0; id < objects; ++id)
                for (int time = 0; time < times; ++time)
                    dataset.AddDataValue(0, id, TimeStamp(time), MDatum(id / 8.0), true, false);
        };
        first = std::min(first, ratios::best(1, objects * times, addAll));
        second = std::min(second, ratios::best(1, objects * times, addAll));
        if (dataset.GetDataCount(0, 0) != objects)
            std::abort();
    }
    ratios::row(name, first, "a second time", second, 3.0);
}

/// All objects between 300 slices, half of them never observed, compared with one pass over the
/// slices.
void interpolate()
{
    constexpr int kTimes = 300;
    constexpr int kPoints = 20000;
    ResetDataManager();
    Dataset dataset(kPoints);
    QSet<int> missing;
    for (int id = 0; id < kPoints; id += 2)
        missing.insert(id);
    for (int t = 0; t < kTimes; ++t)
        dataset.AddTimeSliceValues(0, TimeStamp(2 * t), drawn(kPoints, 1 << 30), missing, true,
                                   false);
    QVector<double> values;
    QSet<int> absent;
    const auto [ours, theirs] = ratios::bestInTurns(
        kRounds, kTimes,
        [&] {
            if (!dataset.GetValues(0, kTimes + 1, values, absent, true)
                || absent.size() != kPoints / 2)
                std::abort();
        },
        [&] {
            for (int t = 0; t < kTimes; ++t)
                dataset.GetValues(0, 2 * t, values, absent, false);
        });
    ratios::row("20,000 objects interpolated, a slice", ours, "the slice read", theirs, 3.0);
}

void readCells()
{
    ResetDataManager();
    Dataset dataset(kObjects);
    fill(dataset, drawn(kObjects, 1 << 30));
    dataset.CheckOutTimeSlice(0, 500, 0);
    QHash<int, double> hash;
    std::mt19937 engine(1);
    QVector<int> ids(kObjects);
    for (int id = 0; id < kObjects; ++id) {
        hash.insert(id, id);
        ids[id] = static_cast<int>(engine() % kObjects);
    }
    double sum = 0.0;
    const double ours = ratios::best(kRounds, kObjects, [&] {
        for (const int id : ids)
            sum += dataset.GetValue(id, 500, 0).decimalValue();
    });
    const double theirs = ratios::best(kRounds, kObjects, [&] {
        for (const int id : ids)
            sum += hash.value(id);
    });
    dataset.CheckInTimeSlice(0, 500, 0);
    ratios::row("a value of a checked-out slice", ours, "one hash look-up", theirs, 10.0);
    if (!(std::abs(sum) < 1e300))
        std::abort();
}

} // namespace

int main()
{
    GDALAllRegister();
    GDALSetCacheMax64(kCacheBytes);
    const QTemporaryDir scratch;
    InitializeDataManager(scratch.path(), kCacheBytes);
    ratios::head("Vector datasets");
    count();
    readCells();
    addCells(20000, 1, "a value added to a slice of 20,000 missing");
    addCells(200000, 1, "the same of 200,000");
    addCells(20000, 10, "the same of 20,000 at ten times");
    interpolate();
    fillAndReadThroughTime();
    ClearDataManager();
    return ratios::missed > 0;
}
