// SPDX-License-Identifier: MIT
// A run through all main functions with real data: per-capita income of the 48 contiguous states of
// the USA over 81 years and the dates of their admission to the Union; then rain over the
// Carolinas. The expected results were computed with other software.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cmath>
#include <memory>
#include <utility>
#include "cli/commands/commands.h"
#include "cli/commands/demoClimate.h"
#include "cli/samples.h"
#include "core/analysis/moranOverTime.h"
#include "core/analysis/snapshot.h"
#include "core/analysis/statistics.h"
#include "core/analysis/tables.h"
#include "core/analysis/weightSets.h"
#include "core/formats/ogrReader.h"
#include "core/import/mapImporter.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/render/choropleth.h"
#include "core/render/classes.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {
namespace {

struct Options {
    QString directory;
    QString samples;
};

constexpr int kStates = 48;
constexpr int kYears = 81;
constexpr std::pair<const char *, int> kExisting[] = {{"1800", 16}, {"1850", 31}, {"1912", 48}};
constexpr std::pair<const char *, int> kQueenLinks[] = {
    {"1800", 52}, {"1850", 112}, {"1912", 214}, {"2000", 214}};
constexpr std::pair<const char *, double> kMoran[] = {
    {"1929", 0.626927}, {"1934", 0.666630}, {"1981", 0.248167}, {"2009", 0.428769}};
constexpr int kSeed = 1929;
constexpr std::pair<const char *, double> kMeans[] = {
    {"1929", 615.208}, {"1981", 10725.917}, {"2009", 37205.021}};

class Demo {
public:
    Demo(const Options &options, const Context &context)
        : mContext(context),
          mDirectory(options.directory),
          mSamples(samplesDirectory(options.samples)),
          mSession(context.session, context.user),
          mSteps(context.console)
    {
        if (!QDir().mkpath(mDirectory))
            fail(QStringLiteral("%1: cannot be made").arg(mDirectory));
        for (const char *name : {"income.vorn", "income_2009.png", "income_moran.csv", "income.csv",
                                 "income.dat", "income.dbf"})
            requireWritable(path(name), context.overwrite);
        for (const char *name : kClimateResults)
            requireWritable(path(name), context.overwrite);
    }

    /// True if all figures were right.
    bool run()
    {
        mSteps.step("import", [this] { return import(); });
        for (const auto &[year, count] : kExisting)
            mSteps.step("exists", [&, year = year, count = count] { return exists(year, count); });
        for (const auto &[year, mean] : kMeans)
            mSteps.step("statistics",
                        [&, year = year, mean = mean] { return statistics(year, mean); });
        mSteps.step("classes", [this] {
            return classes("1929", {271, 401.5, 541.5, 713.5, 890, 1152});
        });
        mSteps.step("classes", [this] {
            return classes("2009", {29318, 32892.5, 35829.5, 39460, 45027.5, 52736});
        });
        mSteps.step("map", [this] { return map(); });
        mSteps.step("series", [this] { return series(); });
        for (const auto &[year, links] : kQueenLinks)
            mSteps.step("neighbours",
                        [&, year = year, links = links] { return neighbors(year, links); });
        mSteps.step("moran", [this] { return moranOfAllYears(); });
        mSteps.step("save", [this] { return save(); });
        mSteps.step("load", [this] { return load(); });
        mSteps.step("compare", [this] { return compare(); });
        mSteps.step("export", [this] { return exportAs("income.csv", TableFormat::Csv); });
        mSteps.step("export", [this] { return exportAs("income.dat", TableFormat::GeoEas); });
        mSteps.step("export", [this] { return exportAs("income.dbf", TableFormat::Dbf); });
        ClimateDemo(mSteps, mSession, mContext, mDirectory, mSamples).run();
        return mSteps.finish();
    }

private:
    QString path(const char *name) const
    {
        return mDirectory + QLatin1Char('/') + QLatin1String(name);
    }

    QString import()
    {
        ImportOptions options;
        options.map = mSamples + QStringLiteral("/us_income/states48.geojson");
        options.name = QStringLiteral("states");
        options.key = QStringLiteral("fips");
        options.tables = QStringList{mSamples + QStringLiteral("/us_income/income_1929_2009.csv"),
                                     mSamples + QStringLiteral("/us_income/admission.csv")};
        options.series = QStringList{QStringLiteral("income=1929..2009")};
        options.start = QStringLiteral("admitted");
        options.times = QStringLiteral("auto");
        options.strict = true;
        Console silent = mContext.console;
        silent.quiet = true; // no notes that the tables repeat the column of names
        const Progress progress("Import", "Importing...");
        const ImportReport report = importMap(options, silent, progress);
        mIncome = findDataset(report.geography, QStringLiteral("income"));
        const int years = dataTimes(mIncome).size();
        mSteps.expect(report.objects == kStates && years == kYears);
        return QStringLiteral("%1 states, income of %2 years, admission dates")
            .arg(report.objects)
            .arg(years);
    }

    QString exists(const char *year, int expected)
    {
        const QString lastDay = QLatin1String(year) + QStringLiteral("-12-31");
        const int count = objectsAt(geography(), chooseTime(mIncome, lastDay)).size();
        mSteps.expect(count == expected);
        return QStringLiteral("%1 states at the end of %2").arg(count).arg(QLatin1String(year));
    }

    QString statistics(const char *year, double mean)
    {
        const Statistics found = statisticsAt(mIncome, chooseTime(mIncome, QLatin1String(year)));
        mSteps.expect(found.count == kStates && std::abs(found.mean - mean) < 0.0006);
        return QStringLiteral("%1: mean %2, standard deviation %3, %4 to %5")
            .arg(QLatin1String(year), shortNumber(found.mean), shortNumber(found.deviation),
                 shortNumber(found.minimum), shortNumber(found.maximum));
    }

    QString classes(const char *year, const QVector<double> &expected)
    {
        const qint64 time = chooseTime(mIncome, QLatin1String(year));
        const QVector<double> breaks =
            breaksAt(mIncome, time, MDataset::Jenks, expected.size() - 1);
        mSteps.expect(breaks == expected);
        QStringList texts;
        for (const double limit : breaks)
            texts.append(exactNumber(limit));
        return QStringLiteral("%1: natural breaks %2")
            .arg(QLatin1String(year), texts.join(QLatin1Char(' ')));
    }

    QString map()
    {
        MapStyle style;
        style.subtitle = QStringLiteral("US dollars of the year, 48 contiguous states, 2009");
        mSession.controller().painter = [&](const MapView &view) {
            savePicture(choropleth(view, style), path("income_2009.png"));
            return true;
        };
        const int window =
            VORN_DisplayMap(mIncome, chooseTime(mIncome, QStringLiteral("2009")),
                            QStringLiteral("Personal income per head"), ColorSchemeInfo(),
                            ColorSchemeInfo(), SymbolSchemeInfo());
        mSession.controller().painter = nullptr;
        mSteps.expect(window > 0 && QFileInfo(path("income_2009.png")).size() > 0);
        return QStringLiteral("2009 in 5 classes: income_2009.png");
    }

    QString series()
    {
        const auto virginia =
            static_cast<unsigned int>(findObject(geography(), QStringLiteral("Virginia")));
        QVector<Interval> intervals;
        QVector<datum> values;
        VORN_GetObjectDataValues(mIncome, 0, virginia, intervals, values);
        if (values.isEmpty()) {
            mSteps.expect(false);
            return QStringLiteral("Virginia: no values");
        }
        const auto number = [](const datum &value) {
            return value.type == 1 ? static_cast<double>(value.integerValue) : value.decimalValue;
        };
        mSteps.expect(values.size() == kYears && number(values.first()) == 434
                      && number(values.last()) == 43211);
        const TimeAxis axis = axisOf(geography());
        return QStringLiteral("Virginia: %1 values, %2 in %3, %4 in %5")
            .arg(values.size())
            .arg(exactNumber(number(values.first())), axis.show(intervals.first()),
                 exactNumber(number(values.last())), axis.show(intervals.last()));
    }

    QString neighbors(const char *year, int links)
    {
        if (mQueen < 0) {
            WeightSetPlan plan;
            plan.name = plan.method = QStringLiteral("queen");
            plan.weights = QStringLiteral("row");
            mQueen = createWeightSet(geography(), plan);
        }
        const QString lastDay = QLatin1String(year) + QStringLiteral("-12-31");
        const LinkSummary found = summarize(mQueen, chooseTimeOf(geography(), lastDay));
        mSteps.expect(found.links == links);
        return QStringLiteral("%1: %2 queen links of %3 states, %4 to %5 each, mean %6, %7 islands")
            .arg(QLatin1String(year))
            .arg(found.links)
            .arg(found.objects)
            .arg(found.least)
            .arg(found.most)
            .arg(shortNumber(found.mean()))
            .arg(found.islands.size());
    }

    QString moranOfAllYears()
    {
        MoranPlan plan;
        plan.dataset = mIncome;
        plan.weightSet = mQueen;
        plan.times = dataTimes(mIncome);
        plan.seed = kSeed;
        const Progress progress("Moran", "Permuting...");
        const QVector<MoranAt> found = moranOverTime(plan, progress);
        storeMoran(plan, found, QStringLiteral("income Moran"));
        const TimeAxis axis = axisOf(geography());
        QMap<QString, double> byYear;
        QByteArray table = "year,I,z,p\n";
        double largestP = 0;
        for (const MoranAt &result : found) {
            const QString year = axis.show(result.when);
            byYear.insert(year, result.whole.value);
            largestP = qMax(largestP, result.whole.p);
            table +=
                QStringLiteral("%1,%2,%3,%4\n")
                    .arg(year, QString::number(result.whole.value, 'f', 6),
                         QString::number(result.whole.deviate, 'f', 4), exactNumber(result.whole.p))
                    .toUtf8();
        }
        mSteps.expect(byYear.size() == kYears && replaceBytes("income_moran.csv", table));
        for (const auto &[year, value] : kMoran)
            mSteps.expect(std::abs(byYear.value(QLatin1String(year)) - value) < 6e-7);
        return QStringLiteral(
                   "%1 years, I %2 in 1929, %3 in 2009, largest p %4 of %5 permutations, "
                   "seed %6")
            .arg(byYear.size())
            .arg(byYear.value(QStringLiteral("1929")), 0, 'f', 6)
            .arg(byYear.value(QStringLiteral("2009")), 0, 'f', 6)
            .arg(exactNumber(largestP))
            .arg(plan.permutations)
            .arg(plan.seed);
    }

    bool replaceBytes(const char *name, const QByteArray &bytes) const
    {
        return replaceFile(path(name), [&bytes](const QString &beside) {
            QFile file(beside);
            return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()
                   && file.flush();
        });
    }

    QString save()
    {
        mBefore = takeSnapshot();
        mSession.save(path("income.vorn"));
        return QStringLiteral("income.vorn, %1 bytes").arg(QFileInfo(path("income.vorn")).size());
    }

    QString load()
    {
        mSession.unload();
        mSteps.expect(geographyIds().isEmpty());
        mSession.load(path("income.vorn"));
        mIncome = findDataset(QStringLiteral("income"));
        const int datasets = datasetIds(geography()).size();
        mSteps.expect(VORN_GetGeographyProperties(geography()).objectCount == kStates);
        return QStringLiteral("unloaded and loaded: %1 states, %2 datasets")
            .arg(kStates)
            .arg(datasets);
    }

    QString compare()
    {
        const Snapshot after = takeSnapshot();
        const QStringList changed = differences(mBefore, after);
        mSteps.expect(changed.isEmpty() && after.count >= qint64(kStates) * kYears);
        if (!changed.isEmpty())
            return QStringLiteral("different: %1").arg(someOf(changed, 4));
        return QStringLiteral("%1 values, every one identical").arg(after.count);
    }

    QString exportAs(const char *name, TableFormat format)
    {
        RowPlan plan;
        plan.geography = geography();
        plan.datasets = {mIncome};
        const bool isGeoEas = format == TableFormat::GeoEas;
        exportTable(path(name), format, plan, isGeoEas ? QStringLiteral("-999") : QString(),
                    [](const QString &) {});
        const int rows =
            format == TableFormat::GeoEas ? geoEasRows(path(name)) : tableRows(path(name));
        mSteps.expect(rows == kStates * kYears);
        return QStringLiteral("%1, %2 rows").arg(QLatin1String(name)).arg(rows);
    }

    /// The number of rows of an exported table, read through GDAL.
    static int tableRows(const QString &file)
    {
        ReadOptions options;
        options.shapes = false;
        return readFeatures(file, options).rows;
    }

    /// The number of lines after the title, the number of columns and the column names.
    static int geoEasRows(const QString &file)
    {
        QFile lines(file);
        if (!lines.open(QIODevice::ReadOnly))
            return 0;
        lines.readLine();
        const int columns = lines.readLine().trimmed().toInt();
        int count = -columns;
        while (!lines.atEnd())
            count += !lines.readLine().trimmed().isEmpty();
        return count;
    }

    int geography() const { return VORN_GetGeographyId(mIncome); }

    const Context &mContext;
    QString mDirectory;
    QString mSamples;
    Session mSession;
    int mIncome = -1;
    int mQueen = -1;
    Snapshot mBefore;
    DemoSteps mSteps;
};

} // namespace

void addDemo(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("demo", "Run the main functions on sample data and check every result");
    command
        .text("DIR", options->directory, "Directory of the results; created if it does not exist")
        .required();
    command.text("--samples", options->samples, "Directory of the sample data");
    overwriteOption(command, context);
    command.footer("Example:\n  meridor demo results");
    command.chosen([options, &context] {
        context.run = [options](const Context &c) {
            if (!Demo(*options, c).run())
                fail(QStringLiteral("the demo found wrong figures"));
        };
    });
}

} // namespace meridor
