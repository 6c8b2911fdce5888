// SPDX-License-Identifier: MIT
// [all]
#include <sys/resource.h>
#include "frame.h"

/// The largest amount of memory that the process has used until now, in MiB.
static long peakMemory()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

int main()
{
    Host host;
    const Library library(host, 8 << 20); // a cache of 8 MiB
    const long before = peakMemory();

    // 96 grids of 500 by 1000 decimals: 384 MB of values
    const int rows = 500, columns = 1000, times = 96;
    const int sea = VORN_CreateNewRasterGeography("sea", rows, columns, QRectF(0, 0, columns, rows),
                                                  {0, times, true, false}, TF_Integer, "", "");
    const int level = VORN_NewRasterDataset(sea, "level", RasterDecimalType, 1, 64, "");
    QVector<double> cells(rows * columns);
    for (int t = 0; t < times; ++t) {
        for (int i = 0; i < cells.size(); ++i)
            cells[i] = t + i % columns;
        // The last argument: distinct values are not counted. Their table can be larger than the
        // values.
        VORN_AddRasterValues(level, 0, {t, t + 1, true, false}, cells, -9999.0, true, false);
    }

    // One time after the other. A view holds the cells of its time, and only while it exists.
    double sum = 0;
    for (int t = 0; t < times; ++t) {
        const VORN_ConstDataContainer view(level, t, 0, false);
        for (int i = 0; i < view.count(); ++i)
            sum += view.value(i);
    }
    std::printf("mean of %d cells: %.1f\n", times * rows * columns, sum / times / rows / columns);

    // A single cell is read in its place: its grid is not read.
    double value = 0;
    VORN_GetRasterValue(level, 0, 40, 17, 63, value);
    std::printf("column 40, row 17 at 63: %g\n", value);

    const QString path = library.path("sea.vorn");
    VORN_SetProjectCompression(1);
    const bool saved = VORN_SaveProject(path);
    VORN_UnloadProject();
    VORN_SetProjectLoading(true); // the values stay in the file until they are read
    const bool loaded = VORN_LoadProject(path);
    VORN_GetRasterValue(level, 0, 40, 17, 95, value);
    std::printf("saved %s, loaded %s, at 95: %g\n", saved ? "yes" : "no", loaded ? "yes" : "no",
                value);
    std::printf("memory of the process grew by less than 64 MiB: %s\n",
                peakMemory() - before < 64 ? "yes" : "no");
}
