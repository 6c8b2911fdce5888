// SPDX-License-Identifier: MIT
// Rain with an error of measurement in fifty realizations. Their values are larger than the
// smaller cache, so most of them are written to the scratch file and read from it again.
#include "cli/commands/demoMemory.h"
#include <QDirIterator>
#include <algorithm>
#include <cmath>
#include "core/geostatistics/realizations.h"
#include "core/geostatistics/storedValues.h"
#include "core/grids/gridValues.h"
#include "core/import/rasterImporter.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/StatisticsAPI.h"

namespace meridor {
namespace {

constexpr int kRealizations = 50;
constexpr double kError = 0.1; // standard deviation, in parts of the value
constexpr double kFlood = 500; // mm in a month
constexpr int kSeed = 1999;
constexpr int kSmallCache = 1;
constexpr int kLargeCache = 100;

struct Outcome {
    QVector<RealizationAnswer> answers;
    qint64 valueBytes = 0;
    qint64 scratchBytes = 0;
};

qint64 bytesIn(const QString &directory)
{
    qint64 bytes = 0;
    for (QDirIterator file(directory, QDir::Files, QDirIterator::Subdirectories); file.hasNext();) {
        file.next();
        bytes += file.fileInfo().size();
    }
    return bytes;
}

Outcome askWith(int cacheMegabytes, const DemoPlace &place)
{
    SessionOptions options = place.context.session;
    options.cacheMegabytes = cacheMegabytes;
    Session session(options, place.context.user);
    ImportOptions import;
    import.map = place.sample("carolina_climate/pr_1999.tif");
    import.times = QStringLiteral("date");
    import.bandsAreTimes = true;
    int rain = -1;
    {
        const Progress progress("Import", "Importing...");
        rain = importRaster(import, place.context.console, progress).datasets.value(0, -1);
    }
    Outcome outcome;
    StoredValues stored(VORN_GetGeographyId(rain), QStringLiteral("rain with error"), kRealizations,
                        false);
    VORN_SetRandomSeed(kSeed);
    const QVector<Interval> months = dataTimes(rain);
    for (const Interval &month : months) {
        const QVector<double> cells = gridValues(rain, instantOf(month));
        for (int realization = 0; realization < kRealizations; ++realization) {
            const QVector<double> errors = VORN_GetNormalDeviates(cells.size());
            std::vector<double> values(static_cast<size_t>(cells.size()));
            for (int i = 0; i < cells.size(); ++i)
                values[static_cast<size_t>(i)] = cells[i] * (1 + kError * errors[i]);
            stored.add(realization, month, values);
            outcome.valueBytes += qint64(values.size() * sizeof(double));
        }
    }
    const int dataset = stored.finish(QStringLiteral("Rain with an error of a tenth of its value"));
    RealizationQuestions questions;
    questions.mean = questions.deviation = true;
    questions.above = {kFlood};
    const Progress progress("Realizations", "Asking...");
    outcome.answers = askRealizations(dataset, months[8], questions, progress.part(0, 100));
    outcome.scratchBytes = bytesIn(session.controller().scratch());
    return outcome;
}

bool isSame(const Outcome &a, const Outcome &b)
{
    if (a.answers.size() != b.answers.size())
        return false;
    for (int i = 0; i < a.answers.size(); ++i) {
        const std::vector<double> &x = a.answers[i].values;
        const std::vector<double> &y = b.answers[i].values;
        if (!std::equal(x.begin(), x.end(), y.begin(), y.end(), [](double p, double q) {
                return p == q || (std::isnan(p) && std::isnan(q));
            }))
            return false;
    }
    return true;
}

QString megabytes(qint64 bytes)
{
    return QString::number(double(bytes) * 1e-6, 'f', 1);
}

} // namespace

void compareCaches(DemoSteps &steps, const DemoPlace &place)
{
    Outcome small;
    Outcome large;
    steps.step("1 MB", [&] {
        small = askWith(kSmallCache, place);
        steps.expect(small.scratchBytes > small.valueBytes / 2);
        return QStringLiteral("%1 realizations of 12 months of rain, %2 MB: %3 MB go through the "
                              "scratch file")
            .arg(QString::number(kRealizations), megabytes(small.valueBytes),
                 megabytes(small.scratchBytes));
    });
    steps.step("100 MB", [&] {
        large = askWith(kLargeCache, place);
        steps.expect(large.scratchBytes < small.scratchBytes / 10);
        return QStringLiteral("the same in memory: %1 MB go through the scratch file")
            .arg(megabytes(large.scratchBytes));
    });
    steps.step("compare", [&] {
        const std::vector<double> &above = large.answers.last().values;
        const auto cells =
            std::count_if(above.begin(), above.end(), [](double p) { return p > 0.5; });
        steps.expect(isSame(small, large) && cells > 0);
        return QStringLiteral(
                   "mean, deviation and probability are the same to the last bit; %1 cells "
                   "have %2 mm probably")
            .arg(cells)
            .arg(kFlood);
    });
}

} // namespace meridor
