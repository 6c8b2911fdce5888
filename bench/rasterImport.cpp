// SPDX-License-Identifier: MIT
// The import of a grid compared with gdal_translate to a plain GeoTIFF: wall time and the largest
// resident size of each process. The import is this program, started with a file: it copies band
// after band from GDAL to the block store. Another row shows the host's verb, which also packs and
// saves the project.
#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <gdal_priv.h>
#include <random>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "ratios.h"

namespace {

QByteArray ownProgram;

struct Run {
    double seconds;
    double megabytes; ///< the largest resident size
};

Run run(std::vector<QByteArray> words)
{
    std::vector<char *> arguments;
    for (QByteArray &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    int status = -1;
    rusage usage{};
    if (posix_spawnp(&child, arguments.front(), &quiet, nullptr, arguments.data(), environ) != 0
        || wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "%s failed\n", arguments.front());
        std::abort();
    }
    posix_spawn_file_actions_destroy(&quiet);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    return {took.count(), static_cast<double>(usage.ru_maxrss) / 1000};
}

/// Measured values: smooth, with noise in the lower half of their bits.
void writeBands(const QByteArray &path, int side, int bands)
{
    std::mt19937 engine(1);
    std::vector<float> cells(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
    char **options = CSLSetNameValue(nullptr, "INTERLEAVE", "BAND");
    GDALDataset *file = GetGDALDriverManager()->GetDriverByName("GTiff")->Create(
        path.constData(), side, side, bands, GDT_Float32, options);
    CSLDestroy(options);
    for (int band = 1; band <= bands; ++band) {
        for (std::size_t i = 0; i < cells.size(); ++i)
            cells[i] = static_cast<float>(band) + static_cast<float>(engine() % 65536) / 65536.0f;
        if (file->GetRasterBand(band)->RasterIO(GF_Write, 0, 0, side, side, cells.data(), side,
                                                side, GDT_Float32, 0, 0)
            != CE_None)
            std::abort();
    }
    GDALClose(file);
}

class Host : public ControllerBase {
public:
    void RemoveGeography(int) override {}
};

/// The child process.
int import(const QByteArray &path)
{
    constexpr int kCacheBytes = 64 << 20;
    const QTemporaryDir scratch;
    Host host;
    InitializeCInterface(&host);
    InitializeDataManager(scratch.path(), kCacheBytes);
    GDALSetCacheMax64(32 << 20);
    auto *file = static_cast<GDALDataset *>(GDALOpen(path.constData(), GA_ReadOnly));
    const int columns = file->GetRasterXSize();
    const int rows = file->GetRasterYSize();
    const int bands = file->GetRasterCount();
    const int grid = VORN_CreateNewRasterGeography(
        "grid", static_cast<unsigned>(rows), static_cast<unsigned>(columns),
        QRectF(0, 0, columns, rows), Interval{0, bands, true, true}, TF_Integer, "", "");
    const int id = VORN_NewRasterDataset(grid, "cells", RasterDecimalType, 1, 32, "");
    QVector<float> cells(columns * rows);
    bool good = true;
    for (int band = 1; good && band <= bands; ++band)
        good = file->GetRasterBand(band)->RasterIO(GF_Read, 0, 0, columns, rows, cells.data(),
                                                   columns, rows, GDT_Float32, 0, 0)
                   == CE_None
               && VORN_AddRasterValues(id, 0, Interval{band, band, true, true}, cells, -9999.0f,
                                       true, false);
    GDALClose(file);
    VORN_UnloadProject();
    ClearDataManager();
    return good ? 0 : 1;
}

void compare(const char *name, int side, int bands, double memoryLimit)
{
    const QTemporaryDir directory;
    const auto file = [&](const char *own) {
        return directory.filePath(QString::fromLatin1(own)).toLocal8Bit();
    };
    writeBands(file("source.tif"), side, bands);
    Run ours{1e9, 0};
    Run theirs{1e9, 0};
    Run whole{1e9, 0};
    const auto keepFaster = [](Run &best, const Run &run) {
        best = run.seconds < best.seconds ? run : best;
    };
    for (int round = 0; round < 3; ++round) {
        keepFaster(ours, run({ownProgram, file("source.tif")}));
        keepFaster(theirs, run({"gdal_translate", "-q", file("source.tif"), file("copy.tif")}));
        keepFaster(whole, run({MERIDOR_PROGRAM, "import", file("source.tif"), file("ours.vorn"),
                               "--times", "auto", "--overwrite", "--quiet", "--cache", "64",
                               "--scratch", file("scratch")}));
    }
    ratios::row(name, ours.seconds, "gdal_translate", theirs.seconds, 1.5, "s");
    ratios::row("its memory", ours.megabytes, "what it may take", memoryLimit, 1.0, "MB");
    std::printf("    meridor import, packed to %lld MB: %.2f s, %.2f of gdal_translate, %.0f MB; "
                "gdal_translate: %.0f MB\n",
                QFile(file("ours.vorn")).size() / 1000000, whole.seconds,
                whole.seconds / theirs.seconds, whole.megabytes, theirs.megabytes);
}

} // namespace

int main(int argc, char **argv)
{
    GDALAllRegister();
    if (argc == 2)
        return import(argv[1]);
    ownProgram = QByteArray(argv[0]);
    GDALSetCacheMax64(16 << 20); // the largest size of a child includes that of its parent
    ratios::head("Import of grids");
    compare("10,000 bands of 100 x 100 floats", 100, 10000, 64 + 150);
    compare("one band of 8,000 x 8,000 floats", 8000, 1, 2 * 256 + 64 + 100);
    return ratios::missed > 0;
}
