// SPDX-License-Identifier: MIT
// What does an export cost over writing its text? A dataset stored as slices, and the same values
// stored as series, are compared with a loop that prints the same rows.
#include <QCoreApplication>
#include <QFile>
#include <cstdio>
#include "datainterface/MVectorDataSource.h"
#include "pointHost.h"
#include "ratios.h"

namespace {

constexpr int kObjects = 5000;
constexpr int kTimes = 300;
constexpr int kRounds = 3;
constexpr int kCacheBytes = 256 << 20;
constexpr double kCells = double(kObjects) * kTimes;

double valueAt(int object, int time)
{
    return (object * 7919 + time * 104729) % 100003 / 8.0;
}

int addDataset(int geography, StorageType storage)
{
    const int id =
        VORN_NewVectorDataset(geography, QStringLiteral("v"), storage, DecimalType, 1, QString());
    for (int object = 0; storage == TimeSeries && object < kObjects; ++object) {
        QVector<QPair<Interval, double>> values;
        for (int t = 0; t < kTimes; ++t)
            values.append({{t, t, true, true}, valueAt(object, t)});
        VORN_AddDataValues(id, 0, static_cast<unsigned>(object), values, true, false);
    }
    for (int t = 0; storage == TimeSlice && t < kTimes; ++t) {
        QVector<double> values(kObjects);
        for (int object = 0; object < kObjects; ++object)
            values[object] = valueAt(object, t);
        VORN_AddDataValues(id, 0, {t, t, true, true}, values, {}, true, false);
    }
    return id;
}

void print(const QByteArray &path)
{
    std::FILE *file = std::fopen(path.constData(), "w");
    for (int t = 0; t < kTimes; ++t) {
        for (int object = 0; object < kObjects; ++object)
            std::fprintf(file, "%d,%d,%d,%.7g\n", object, t, t, valueAt(object, t));
    }
    if (std::fclose(file) != 0)
        std::abort();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const PointHost host(kObjects, kCacheBytes);
    const int geography = VORN_GetGeographyId(host.dataset);
    auto &source = dynamic_cast<MVectorDataSource &>(host.source());
    const QString path = host.directory.filePath(QStringLiteral("out"));
    const auto csv = [&](int id) {
        return ratios::best(kRounds, kCells, [&] {
            if (!source.ExportDatasetsAsCSV(path, {id}, TF_Integer, 0, kTimes, QString(), 0))
                std::abort();
        });
    };
    const int slices = addDataset(geography, TimeSlice);
    const int series = addDataset(geography, TimeSeries);
    const double printed = ratios::best(kRounds, kCells, [&] { print(QFile::encodeName(path)); });
    const double ofSlices = csv(slices);
    const double dbf = ratios::best(kRounds, kCells, [&] {
        if (!source.ExportDatasetsAsDBF(path, {slices}, TF_Integer, 0, kTimes, QString(), 0))
            std::abort();
    });
    ratios::head("5,000 objects at 300 times, for a value");
    ratios::row("slices as CSV", ofSlices, "the rows printed in a loop", printed, 1.5);
    ratios::row("series as CSV", csv(series), "slices as CSV", ofSlices, 1.5);
    ratios::row("slices as DBF, measured and written", dbf, "slices as CSV", ofSlices, 4.0);
    return ratios::missed;
}
