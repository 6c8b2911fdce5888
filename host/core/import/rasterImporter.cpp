// SPDX-License-Identifier: MIT
#include "core/import/rasterImporter.h"
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>
#include "core/formats/cellTypes.h"
#include "core/formats/rasterReader.h"
#include "core/import/bandTimes.h"
#include "core/import/gridBuilder.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/RasterAPI.h"

namespace meridor {
namespace {

/// The missing value of decimal cells if the file marks missing cells with NaN: the largest number
/// of the type.
template <class T> T missingNumber()
{
    if constexpr (std::is_same_v<T, half>)
        return half::fromBits(0x7BFF); // the largest finite value
    else if constexpr (std::is_floating_point_v<T>)
        return std::numeric_limits<T>::max();
    else
        return T();
}

/// Replaces NaN by the missing value `by`. @return the number of cells replaced.
template <class T> qint64 replaceNaN(T *cells, qint64 count, T by)
{
    qint64 found = 0;
    for (qint64 i = 0; i < count; ++i) {
        if (std::isnan(static_cast<double>(cells[i]))) {
            cells[i] = by;
            ++found;
        }
    }
    return found;
}

class RasterImport {
public:
    RasterImport(const ImportOptions &options, const Notes &notes, const Progress &progress)
        : mOptions(options),
          mNotes(notes),
          mProgress(progress),
          mReader(options.map, {options.projection, options.noData}),
          mTimes(bandTimes(mReader, options))
    {
        for (const QString &note : mReader.notes())
            notes.note(note);
    }

    ImportReport run()
    {
        mReport.geography = addGridGeography(
            mOptions, {mReader.rows(), mReader.columns(), mReader.bounds(), mReader.projection(),
                       mTimes.hull, mTimes.format, !mOptions.bandsAreTimes});
        try {
            mOptions.bandsAreTimes ? importTimes() : importDatasets();
        } catch (...) {
            controller().RemoveGeography(mReport.geography);
            throw;
        }
        mReport.objects = mReader.columns() * mReader.rows();
        mReport.datasets = mDatasets;
        return mReport;
    }

private:
    QString baseName() const { return QFileInfo(mOptions.map).completeBaseName(); }

    int createDataset(const QString &name, const RasterBand &band)
    {
        const int id = addGridDataset(mReport.geography, name, band.type, band.bits, 1, band.unit);
        mDatasets.append(id);
        return id;
    }

    /// Imports all bands as times of one dataset; they must have the same form.
    void importTimes()
    {
        const RasterBand &first = mReader.bands().first();
        for (int i = 1; i < mReader.bands().size(); ++i) {
            const RasterBand &band = mReader.bands()[i];
            if (band.type != first.type || band.bits != first.bits
                || band.missing.fields() != first.missing.fields()
                || band.missing.type != first.missing.type || band.colors != first.colors)
                fail(QStringLiteral("%1, band %2: is of another type or has another no-data value "
                                    "than band 1; times of one dataset are alike")
                         .arg(mOptions.map, QString::number(i + 1)));
        }
        const int id =
            createDataset(mOptions.dataset.isEmpty() ? baseName() : mOptions.dataset, first);
        addBands(id, 0, mReader.bands().size());
        finish(id);
    }

    void importDatasets()
    {
        QStringList names;
        for (int i = 0; i < mReader.bands().size(); ++i)
            names.append(nameOf(i, names));
        const QVector<int> chosen = chosenBands(names);
        for (int i = 0; i < chosen.size(); ++i) {
            const int id = createDataset(names[chosen[i]], mReader.bands()[chosen[i]]);
            dynamic_cast<MRasterDataset *>(datasetOf(id))->SetStatic(true);
            mDone = i;
            mToDo = chosen.size();
            addBands(id, chosen[i], 1);
            finish(id);
        }
    }

    /// The dataset name of a band: its name in the file, else "band N"; if that is taken, with its
    /// number added.
    QString nameOf(int band, const QStringList &taken) const
    {
        const QString own = mReader.bands()[band].name;
        const QString number = QString::number(band + 1);
        if (mReader.bands().size() == 1)
            return !mOptions.dataset.isEmpty() ? mOptions.dataset
                   : own.isEmpty()             ? baseName()
                                               : own;
        if (own.isEmpty())
            return QStringLiteral("band ") + number;
        return taken.contains(own) ? QString(own + QLatin1Char(' ') + number) : own;
    }

    QVector<int> chosenBands(const QStringList &names) const
    {
        QVector<int> bands;
        for (const QString &name : mOptions.fields) {
            const int band = names.indexOf(name);
            if (band < 0)
                fail(QStringLiteral("%1: no band %2; there are: %3")
                         .arg(mOptions.map, name, someOf(names)));
            bands.append(band);
        }
        for (int band = 0; mOptions.fields.isEmpty() && band < names.size(); ++band)
            bands.append(band);
        return bands;
    }

    void addBands(int id, int first, int count)
    {
        auto &dataset = *dynamic_cast<MRasterDataset *>(datasetOf(id));
        dataset.SetMissingFlag(mReader.bands()[first].missing);
        for (int band = first; band < first + count;) {
            const int together = qMin(mReader.groupAt(band), first + count - band);
            const auto report = [&](int percent) {
                const int done = 100 * (band - first) + percent * together;
                mProgress.report((100 * mDone + done / count) / mToDo, "Reading the grid...");
            };
            const RasterBand &form = mReader.bands()[band];
            if (together == 1) {
                GridBuffer grid(mReader.columns(), mReader.rows(), form.type, form.bits);
                grid.SetColorMap(form.colors);
                mReader.read(band, 1, grid.bytes(), report);
                addGrid(dataset, band, grid);
            } else {
                std::vector<char> cells(static_cast<size_t>(mReader.bytesOf(band) * together));
                mReader.read(band, together, cells.data(), report);
                for (int i = 0; i < together; ++i) {
                    GridBuffer grid(mReader.columns(), mReader.rows(), form.type, form.bits,
                                    cells.data() + mReader.bytesOf(band) * i, form.colors);
                    addGrid(dataset, band + i, grid);
                }
            }
            band += together;
        }
    }

    void addGrid(MRasterDataset &dataset, int index, GridBuffer &grid)
    {
        const RasterBand &band = mReader.bands()[index];
        if (band.type == RasterDecimalType)
            markNaN(dataset, band, grid.bytes());
        const Interval when = mTimes.of.isEmpty() ? mTimes.hull : mTimes.of[index];
        if (!dataset.AddRasterValues(0, TimeStamp(when), grid, true, false))
            fail(QStringLiteral("%1, band %2: the grid could not be kept")
                     .arg(mOptions.map, QString::number(index + 1)));
    }

    /// Replaces NaN by the file's no-data value, or by missingNumber() if it has none.
    void markNaN(MRasterDataset &dataset, const RasterBand &band, char *cells)
    {
        visitCellType(band.type, band.bits, [&](auto zero) {
            using T = decltype(zero);
            if constexpr (!std::is_integral_v<T>) {
                const bool named = band.missing.type != MissingFlag::None;
                const T by = named ? band.missing.field<T>() : missingNumber<T>();
                const qint64 count = qint64(mReader.columns()) * mReader.rows();
                mNotNumbers += replaceNaN(reinterpret_cast<T *>(cells), count, by);
                if ((mNotNumbers > 0 || band.missingIsNaN)
                    && dataset.GetMissingFlag().type == MissingFlag::None)
                    dataset.SetMissingFlag(MissingFlag(by));
            }
        });
    }

    void finish(int id)
    {
        if (mNotNumbers > 0)
            mNotes.note(QStringLiteral("%1: %2 without a number, missing here")
                            .arg(datasetName(id), counted(mNotNumbers, "cell")));
        mNotNumbers = 0;
        finishGridDataset(id, qint64(mReader.columns()) * mReader.rows()
                                  * qMax(1, dataTimes(id).size()));
    }

    const ImportOptions &mOptions;
    const Notes &mNotes;
    const Progress &mProgress;
    RasterReader mReader;
    BandTimes mTimes;
    ImportReport mReport;
    QVector<int> mDatasets;
    qint64 mNotNumbers = 0; ///< NaN cells of the present dataset
    int mDone = 0;          ///< datasets imported
    int mToDo = 1;          ///< datasets in all
};

} // namespace

ImportReport importRaster(const ImportOptions &options, const Notes &notes,
                          const Progress &progress)
{
    return RasterImport(options, notes, progress).run();
}

} // namespace meridor
