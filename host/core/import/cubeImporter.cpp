// SPDX-License-Identifier: MIT
#include "core/import/cubeImporter.h"
#include <vector>
#include "core/formats/cubeReader.h"
#include "core/import/cubeTimes.h"
#include "core/import/gridBuilder.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MRasterDataset.h"

namespace meridor {
namespace {

class CubeImport {
public:
    CubeImport(const ImportOptions &options, const Notes &notes, const Progress &progress)
        : mOptions(options),
          mProgress(progress),
          mReader(options.map, {options.projection, options.noData, options.fields,
                                options.realizations, options.packed})
    {
        QStringList told = mReader.notes();
        mTimes = cubeTimes(mReader, options, told);
        for (const QString &note : qAsConst(told))
            notes.note(note);
        for (const CubeGrid &grid : mReader.grids())
            mToDo += gridsOf(grid);
    }

    ImportReport run()
    {
        const bool isStatic = mReader.times().isEmpty();
        mReport.geography = addGridGeography(mOptions, {mReader.rows(), mReader.columns(),
                                                        mReader.bounds(), mReader.projection(),
                                                        mTimes.hull, mTimes.format, isStatic});
        try {
            for (const CubeGrid &grid : mReader.grids())
                importGrid(grid);
        } catch (...) {
            controller().RemoveGeography(mReport.geography);
            throw;
        }
        mReport.objects = mReader.columns() * mReader.rows();
        return mReport;
    }

private:
    int timesOf(const CubeGrid &grid) const
    {
        return grid.times < 0 ? 1 : mReader.times()[grid.times].count;
    }
    qint64 gridsOf(const CubeGrid &grid) const { return qint64(timesOf(grid)) * grid.realizations; }

    void importGrid(const CubeGrid &grid)
    {
        const bool isOnly = mReader.grids().size() == 1 && !mOptions.dataset.isEmpty();
        const int id = addGridDataset(mReport.geography, isOnly ? mOptions.dataset : grid.name,
                                      grid.type, grid.bits, grid.realizations, grid.unit);
        mReport.datasets.append(id);
        if (!grid.title.isEmpty())
            VORN_SetDatasetMetaData(id, QStringLiteral("Long name"), grid.title);
        MRasterDataset &dataset = *rasterOf(id);
        dataset.SetStatic(mReader.times().isEmpty());
        dataset.SetMissingFlag(grid.missing);
        const int together = mReader.timesTogether(grid);
        for (int realization = 0; realization < grid.realizations; ++realization)
            for (int time = 0; time < timesOf(grid); time += together)
                addTimes(dataset, grid, realization, time, qMin(together, timesOf(grid) - time));
        finishGridDataset(id, gridsOf(grid) * mReader.columns() * mReader.rows());
    }

    void addTimes(MRasterDataset &dataset, const CubeGrid &grid, int realization, int time,
                  int count)
    {
        const auto report = [&](int percent) {
            mProgress.report(static_cast<int>((100 * mDone + qint64(percent) * count) / mToDo),
                             "Reading the grids...");
        };
        if (count == 1) {
            GridBuffer band(mReader.columns(), mReader.rows(), grid.type, grid.bits);
            mark(dataset, mReader.read(grid, realization, time, 1, band.bytes(), report));
            add(dataset, grid, realization, time, band);
        } else {
            std::vector<char> cells(static_cast<size_t>(mReader.bytesOf(grid) * count));
            mark(dataset, mReader.read(grid, realization, time, count, cells.data(), report));
            for (int i = 0; i < count; ++i)
                add(dataset, grid, realization, time + i,
                    MRasterBand(mReader.columns(), mReader.rows(), grid.type, grid.bits,
                                cells.data() + mReader.bytesOf(grid) * i, {}));
        }
        mDone += count;
    }

    static void mark(MRasterDataset &dataset, const MissingFlag &missing)
    {
        if (missing.type != MissingFlag::None && dataset.GetMissingFlag().type == MissingFlag::None)
            dataset.SetMissingFlag(missing);
    }

    void add(MRasterDataset &dataset, const CubeGrid &grid, int realization, int time,
             const MRasterBand &band) const
    {
        const Interval when = grid.times < 0 ? mTimes.hull : mTimes.of[grid.times][time];
        if (!dataset.AddRasterValues(realization, TimeStamp(when), band, true, false))
            fail(QStringLiteral("%1, variable %2: the grid of place %3 could not be kept")
                     .arg(mOptions.map, grid.name, QString::number(time + 1)));
    }

    const ImportOptions &mOptions;
    const Progress &mProgress;
    CubeReader mReader;
    GridTimes mTimes;
    ImportReport mReport;
    qint64 mDone = 0; ///< grids
    qint64 mToDo = 0;
};

} // namespace

ImportReport importCube(const ImportOptions &options, const Notes &notes, const Progress &progress)
{
    return CubeImport(options, notes, progress).run();
}

} // namespace meridor
