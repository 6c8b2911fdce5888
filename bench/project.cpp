// SPDX-License-Identifier: MIT
// What does the model cost over its bytes? Saving is compared with qCompress of the same blocks,
// loading with qUncompress, and reading one value through the public function with one look-up in a
// hash table. Also measured is the memory of a dataset of ten times the size of the cache while it
// is filled and read.
#include <QByteArray>
#include <QCoreApplication>
#include <QHash>
#include <QVector>
#include <cmath>
#include <cstdio>
#include <random>
#include <sys/resource.h>
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/MDataSource.h"
#include "datainterface/ProjectAPI.h"
#include "pointHost.h"
#include "ratios.h"

namespace {

constexpr int kObjects = 10000;
constexpr int kSlices = 200;
constexpr int kCache = 8000000;

// Measurements with two decimals, each close to the one before it.
void fill(const PointHost &host, int slices)
{
    std::mt19937 random(20240501);
    std::normal_distribution<double> step(0.0, 1.0);
    QVector<double> values(kObjects, 100.0);
    for (int t = 0; t < slices; ++t) {
        for (double &value : values)
            value = std::round((value + step(random)) * 100.0) / 100.0;
        VORN_AddDataValues(host.dataset, 0, {t, t + 1, true, false}, values, {}, true, false);
    }
}

// The same blocks as in the store.
QVector<QByteArray> blocks()
{
    QVector<QByteArray> all;
    QByteArray bytes;
    for (int id = 0; all.size() < kSlices && id < 10 * kSlices; ++id)
        if (ReadDataBlock(id, bytes))
            all.append(bytes);
    return all;
}

double peakMiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void reportMemory()
{
    constexpr int kManySlices = 1000;
    const double before = peakMiB();
    const PointHost host(kObjects, kCache);
    fill(host, kManySlices);
    QVector<double> values;
    QSet<int> missing;
    for (int t = 0; t < kManySlices; ++t)
        VORN_GetDataValues(host.dataset, 0, t, values, missing);
    std::printf("%d slices of %d decimals, %.0f MiB, filled and read under a cache of %.0f MiB: "
                "the process grew by "
                "%.1f MiB\n",
                kManySlices, kObjects, kManySlices * sizeof(double) * kObjects / 1048576.0,
                kCache / 1048576.0, peakMiB() - before);
}

// The order in which the values of one slice are read: objects at random.
QVector<unsigned int> order()
{
    std::mt19937 random(20240501);
    QVector<unsigned int> objects(kObjects);
    for (unsigned int &object : objects)
        object = static_cast<unsigned int>(random() % kObjects);
    return objects;
}

ratios::Body save(const PointHost &host)
{
    return ratios::repeat([&host] {
        if (!VORN_SaveProject(host.path()))
            std::abort();
    });
}

ratios::Body load(const PointHost &host)
{
    return [&host](benchmark::State &state) {
        for (auto _ : state) {
            state.PauseTiming();
            VORN_UnloadProject();
            state.ResumeTiming();
            if (!VORN_LoadProject(host.path()))
                state.SkipWithError("not loaded");
        }
    };
}

ratios::Body lookUp(const QHash<int, double> &table)
{
    return ratios::repeat([&table, objects = order()] {
        double sum = 0.0;
        for (unsigned int object : objects)
            sum += table.constFind(static_cast<int>(object)).value();
        benchmark::DoNotOptimize(sum);
    });
}

ratios::Body values(const PointHost &host)
{
    return [&host, objects = order()](benchmark::State &state) {
        host.source().CheckOutDataset(host.dataset, 0, 0);
        for (auto _ : state) {
            double sum = 0.0;
            for (unsigned int object : objects) {
                double value = 0.0;
                VORN_GetDataValue(host.dataset, 0, object, kSlices / 2, value);
                sum += value;
            }
            benchmark::DoNotOptimize(sum);
        }
        host.source().CheckInDataset(host.dataset, 0, 0);
    };
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    reportMemory();
    const PointHost host(kObjects, kCache);
    fill(host, kSlices);
    const QVector<QByteArray> plain = blocks();
    QVector<QByteArray> packed;
    for (const QByteArray &block : plain)
        packed.append(qCompress(block, 9));
    VORN_SaveProject(host.path());
    QHash<int, double> oneSlice;
    for (int i = 0; i < kObjects; ++i)
        oneSlice.insert(i, i);
    return ratios::run(argc, argv,
                       {{"save a project", "qCompress(9) of its blocks alone", 1.03, save(host),
                         ratios::repeat([&plain] {
                             for (const QByteArray &block : plain)
                                 benchmark::DoNotOptimize(qCompress(block, 9).size());
                         })},
                        {"load a project", "qUncompress of its blocks alone", 0.7, load(host),
                         ratios::repeat([&packed] {
                             for (const QByteArray &block : packed)
                                 benchmark::DoNotOptimize(qUncompress(block).size());
                         })},
                        {"one value of a checked-out slice", "look-up in a QHash of the slice",
                         10.0, values(host), lookUp(oneSlice)}});
}
