// SPDX-License-Identifier: MIT
// A project of grids of every kind with some of its bytes changed: loading returns, and what was
// read can be inspected, queried anywhere, saved and deleted. An input is two bytes followed by up
// to 64 patches of three bytes: two for the position, one for the new value. The bytes after the
// patches are the arguments of the queries.
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <cstdint>
#include <cstring>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/vorn_error.h"

namespace {

constexpr std::size_t kMostPatches = 64;

class Host : public ControllerBase {
public:
    Host()
    {
        InitializeCInterface(this);
        InitializeDataManager(directory.filePath(QStringLiteral("blocks")), 1000000);
        makeSeed();
    }
    ~Host() override { ClearDataManager(); }
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }
    QString path() const { return directory.filePath(QStringLiteral("project")); }

    QTemporaryDir directory;
    QByteArray seed;

private:
    void addDataset(int geography, DataType type, int bits)
    {
        const QVector<unsigned int> colors(type == RasterColorType ? 256 : 0, 0xFF336699u);
        const QByteArray cells(4 * 5 * 8, '\x3C');
        const int id =
            VORN_NewRasterDataset(geography, QStringLiteral("cells"), type, 1, bits, QString());
        auto *source =
            static_cast<MRasterDataSource *>(GetGeoData().value(geography)->GetDataSource());
        for (const qint64 start : {0, 10}) {
            const MRasterBand band(5, 4, type, bits, cells.constData(), colors);
            source->AddRasterValues(id, 0, TimeStamp(start, start + 9, true, true), band, true,
                                    true);
        }
        source->GetRasterDataset(id)->SetMissingFlag(MissingFlag(qint32(7)));
    }
    void makeSeed()
    {
        const int geography = VORN_CreateNewRasterGeography(
            QStringLiteral("grid"), 4, 5, QRectF(0, 0, 5, 4), Interval{0, 19, true, true},
            TF_Integer, QString(), QString());
        for (const int bits : {16, 32, 64})
            addDataset(geography, RasterDecimalType, bits);
        for (const int bits : {8, 16, 32, 64}) {
            addDataset(geography, RasterIntegerType, bits);
            addDataset(geography, RasterUnsignedType, bits);
        }
        addDataset(geography, RasterUnsignedType, 1);
        addDataset(geography, RasterColorType, 8);
        VORN_SaveProject(path());
        VORN_UnloadProject();
        QFile file(path());
        if (file.open(QIODevice::ReadOnly))
            seed = file.readAll();
    }
};

void lookAtValues(MRasterDataset &dataset, int id, qint64 time)
{
    QVector<double> values;
    QSet<int> missing;
    MissingFlag flag;
    datum value;
    DataSetStats stats;
    VORN_GetRasterDataAsDecimal(id, 0, time, values, flag);
    VORN_GetMissingPixels(id, 0, time, missing);
    VORN_GetRasterValue(id, 0, 2, 3, time, value);
    VORN_GetDataCount(id, time);
    if (dataset.IsNumeric() && dataset.GetRasterBitDepth() > 1) {
        double deviation = 0.0;
        VORN_GetStddev(id, 0, time, deviation);
        dataset.GetGlobalDataSetStats(0, stats);
    }
}

void lookAt(const Host &host)
{
    for (MGeoData *geography : host.GetGeoData()) {
        auto *source = dynamic_cast<MRasterDataSource *>(geography->GetDataSource());
        if (!source)
            continue;
        for (const DataId &id : source->GetDatasetIds()) {
            MRasterDataset &dataset = *source->GetRasterDataset(id);
            const QList<TimeStamp> times = dataset.GetRasterIntervals(0);
            for (const TimeStamp &time : times.mid(0, 3))
                lookAtValues(dataset, id, time.timeInInterval());
            if (dataset.IsNumeric()) {
                dataset.GetIntervalBreaks(0, 4, MDataset::Quantiles, false);
                dataset.GetIntervalBreaks(0, 4, MDataset::Jenks, false);
            }
            dataset.RecalculateFrequencies();
            dataset.HasMissing(0);
        }
    }
}

void query(int geography, const double *n)
{
    RasterPixels pixels;
    QVector<double> areas;
    VORN_QueryRasterWithRect(geography, QRectF(n[0], n[1], n[2], n[3]), pixels, &areas);
    VORN_GetPixelCentersInRect(geography, QRectF(n[0], n[1], n[2], n[3]), pixels);
    VORN_QueryRasterWithCircle(geography, QPointF(n[0], n[1]), n[2], pixels);
    VORN_QueryRasterWithEllipse(geography, QPointF(n[0], n[1]), n[2], n[3], n[4], true, pixels);
    const QVector<QPointF> ring{{n[0], n[1]}, {n[2], n[3]}, {n[4], n[5]}, {n[6], n[7]}};
    VORN_QueryRasterWithPolygon(geography, {ring}, pixels, &areas);
    VORN_GetPixelCentersInPolygon(geography, {ring}, pixels);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static int argc = 0;
    static QCoreApplication application(argc, nullptr);
    static Host host;
    QByteArray bytes = host.seed;
    std::size_t at = 0;
    for (; at + 3 <= size && at < 3 * kMostPatches; at += 3) {
        const int place = data[at] << 8 | data[at + 1];
        bytes[place % bytes.size()] = static_cast<char>(data[at + 2]);
    }
    QFile file(host.path());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(bytes);
    file.close();
    if (VORN_LoadProject(host.path())) {
        try {
            lookAt(host);
            double numbers[8];
            for (; at + sizeof numbers <= size; at += sizeof numbers) {
                std::memcpy(numbers, data + at, sizeof numbers);
                for (const int geography : host.GetGeoData().keys())
                    query(geography, numbers);
            }
            VORN_SaveProject(host.path());
        } catch (const vorn_error &) { // a block that does not match its dataset
        }
    }
    VORN_UnloadProject();
    return 0;
}
