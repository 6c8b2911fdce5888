// SPDX-License-Identifier: MIT
// The conversion of a dataset to another type, and through a map of objects, compared with a plain
// read of the same values from a project file in the present form and with a copy of the dataset.
// None of the values are in the cache.
#include <QTemporaryDir>
#include <numeric>
#include <random>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/ProjectAPI.h"
#include "ratios.h"

namespace {

constexpr int kTimes = 400;
constexpr int kObjects = 10000;
constexpr int kRounds = 3;
constexpr int kCacheBytes = 8 << 20;
constexpr double kValues = static_cast<double>(kTimes) * kObjects;

template <class T> QVector<T> drawn(unsigned int seed, int count)
{
    std::mt19937 engine(seed);
    QVector<T> values(count);
    for (T &value : values) {
        const double number = static_cast<double>(engine() % 1000000) / 16.0;
        if constexpr (std::is_same_v<T, QString>)
            value = QString::number(number);
        else
            value = static_cast<T>(number);
    }
    return values;
}

/// A project with one dataset of T, saved.
template <class T> class Host : public ControllerBase {
public:
    Host(DataType type, StorageType storage) : mStorage(storage)
    {
        InitializeCInterface(this);
        InitializeDataManager(mDirectory.filePath(QStringLiteral("blocks")), kCacheBytes);
        VORN_SetProjectCompression(1);
        VORN_StartNewVectorGeography(QRectF(0, 0, 100, 100), 0, kTimes, -1);
        for (int i = 0; i < kObjects; ++i) {
            const auto chain = static_cast<unsigned int>(VORN_CreateNewObjectChain());
            VORN_AddPointToChain(chain, QPointF(i % 100, i / 100), {0, kTimes, true, true});
        }
        const int geography =
            VORN_FinishVectorGeography(QStringLiteral("points"), QString(), TF_Integer);
        mDataset =
            VORN_NewVectorDataset(geography, QStringLiteral("values"), storage, type, 1, QString());
        fill();
        VORN_SaveProject(path());
    }
    ~Host() override
    {
        VORN_UnloadProject();
        ClearDataManager();
    }
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }

    int dataset() const { return mDataset; }
    MVectorDataSource &source() const
    {
        return *dynamic_cast<MVectorDataSource *>(GetGeoData().first()->GetDataSource());
    }
    /// Nanoseconds a value.
    double readFromProject()
    {
        return ratios::best(kRounds, kValues, [this] {
            VORN_UnloadProject();
            VORN_LoadProject(path());
            for (int i = 0; i < (mStorage == TimeSlice ? kTimes : kObjects); ++i)
                if (!readContainer(i))
                    std::abort();
        });
    }
    double copied() const
    {
        return made([this] { return VORN_MigrateDataset(mDataset, mDataset >> 16, false); });
    }
    /// The time of `make`, whose dataset is removed afterwards.
    template <class Make> double made(Make make) const
    {
        return ratios::best(kRounds, kValues, [&] {
            const int id = make();
            if (id == -1)
                std::abort();
            VORN_RemoveDataset(id);
        });
    }

private:
    QString path() const { return mDirectory.filePath(QStringLiteral("project")); }
    void fill() const
    {
        const int containers = mStorage == TimeSlice ? kTimes : kObjects;
        for (int i = 0; i < containers; ++i) {
            const QVector<T> values =
                drawn<T>(static_cast<unsigned int>(i), static_cast<int>(kValues) / containers);
            if (mStorage == TimeSlice) {
                VORN_AddDataValues(mDataset, 0, {i, i, true, true}, values, {}, true, false);
                continue;
            }
            QMap<Interval, T> history;
            for (int t = 0; t < kTimes; ++t)
                history.insert({t, t, true, true}, values[t]);
            VORN_SetTimeSeriesData(mDataset, 0, static_cast<unsigned int>(i), history);
        }
    }
    bool readContainer(int i) const
    {
        if (mStorage == TimeSlice) {
            QVector<T> values;
            QSet<int> missing;
            return VORN_GetDataValues(mDataset, 0, i, values, missing);
        }
        const MVectorDataset &dataset = *source().GetVectorDataset(mDataset);
        if constexpr (std::is_same_v<T, double>)
            return dataset.GetTimeSeriesDecimalData(0)->value(i)->GetEntries().size() == kTimes;
        else
            return false;
    }

    QTemporaryDir mDirectory;
    const StorageType mStorage;
    int mDataset = -1;
};

void rows(const char *name, double ours, double copied, double read)
{
    ratios::row(name, ours, "the dataset copied as it is", copied, 2.5);
    ratios::row("", ours, "read from a project", read, 2.0);
}

template <class T> void convert(const char *name, DataType from, DataType to, StorageType storage)
{
    Host<T> host(from, storage);
    const double ours = host.made([&] {
        return host.source().ConvertDataset(host.dataset(), QStringLiteral("converted"), to, 3);
    });
    if constexpr (std::is_same_v<T, QString>) {
        const QVector<QString> texts = drawn<QString>(1, kObjects);
        double sum = 0.0;
        const double alone = ratios::best(kRounds, kObjects, [&] {
            for (const QString &text : texts)
                sum += text.toDouble();
        });
        if (!(sum > 0.0))
            std::abort();
        ratios::row(name, ours, "QString::toDouble alone", alone, 2.0);
    } else {
        const double copied = host.copied();
        rows(name, ours, copied, host.readFromProject());
    }
}

void import(const char *name, StorageType storage)
{
    Host<double> host(DecimalType, storage);
    QVector<int> turned(kObjects);
    std::iota(turned.rbegin(), turned.rend(), 0);
    const double ours = host.made([&] {
        return host.source().ImportDatasetFromDataSource(&host.source(), host.dataset(), turned,
                                                         false);
    });
    const double copied = host.copied();
    rows(name, ours, copied, host.readFromProject());
}

} // namespace

int main()
{
    ratios::head("Conversions of 4,000,000 values, a value");
    convert<double>("a decimal to an integer, slices", DecimalType, IntegerType, TimeSlice);
    convert<int>("an integer to a decimal, slices", IntegerType, DecimalType, TimeSlice);
    convert<double>("a decimal to an integer, series", DecimalType, IntegerType, TimeSeries);
    import("a decimal through a map of objects, slices", TimeSlice);
    import("a decimal through a map of objects, series", TimeSeries);
    convert<QString>("a text to a decimal, slices", StringType, DecimalType, TimeSlice);
    return ratios::missed > 0;
}
