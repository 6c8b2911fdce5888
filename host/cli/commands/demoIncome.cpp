// SPDX-License-Identifier: MIT
// Income per head of the 48 contiguous states over 81 years, and the dates of their admission to the
// Union. Expected figures were computed with other software.
#include "cli/commands/demoIncome.h"
#include <QFile>
#include <QFileInfo>
#include <cmath>
#include <tuple>
#include <utility>
#include "core/analysis/moranOverTime.h"
#include "core/analysis/statistics.h"
#include "core/analysis/weightsExchange.h"
#include "core/formats/ogrReader.h"
#include "core/import/mapImporter.h"
#include "core/import/samples.h"
#include "core/plot/plots.h"
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

constexpr int kStates = 48;
constexpr int kYears = 81;
constexpr std::tuple<const char *, int, int> kQueenLinks[] = {
    {"1800", 16, 52}, {"1850", 31, 112}, {"1912", 48, 214}, {"2000", 48, 214}};
constexpr std::pair<const char *, double> kMoran[] = {
    {"1929", 0.626927}, {"1934", 0.666630}, {"1981", 0.248167}, {"2009", 0.428769}};
constexpr int kSeed = 1929;
constexpr std::pair<const char *, double> kMeans[] = {
    {"1929", 615.208}, {"1981", 10725.917}, {"2009", 37205.021}};

/// The number of lines after the title, the number of columns and the column names.
int geoEasRows(const QString &file)
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

/// The number of rows of an exported table, read through GDAL.
int tableRows(const QString &file)
{
    ReadOptions options;
    options.shapes = false;
    return readFeatures(file, options).rows;
}

} // namespace

void IncomeDemo::incomesConverge()
{
    mSteps.step("import", [this] { return import(); });
    for (const auto &[year, mean] : kMeans)
        mSteps.step("statistics", [&, year = year, mean = mean] { return statistics(year, mean); });
    mSteps.step("classes", [this] {
        return classes("1929", {271, 401.5, 541.5, 713.5, 890, 1152});
    });
    mSteps.step("classes", [this] {
        return classes("2009", {29318, 32892.5, 35829.5, 39460, 45027.5, 52736});
    });
    mSteps.step("map", [this] { return map(); });
    mSteps.step("series", [this] { return series(); });
    WeightSetPlan plan;
    plan.name = plan.method = QStringLiteral("queen");
    plan.weights = QStringLiteral("row");
    mQueen = createWeightSet(geography(), plan);
    mSteps.step("moran", [this] { return moranOfAllYears(); });
    mSteps.step("plot", [this] { return moranScatterOf2009(); });
}

void IncomeDemo::neighborsThroughTime()
{
    for (const auto &[year, objects, links] : kQueenLinks)
        mSteps.step("neighbours", [&, year = year, objects = objects, links = links] {
            return linksAt(year, objects, links);
        });
    mSteps.step("weights", [this] { return weightsFile(); });
}

void IncomeDemo::takenAway()
{
    mIncome = findDataset(QStringLiteral("income"));
    mSteps.step("export", [this] { return exportAs("income.csv", TableFormat::Csv); });
    mSteps.step("export", [this] { return exportAs("income.dat", TableFormat::GeoEas); });
    mSteps.step("export", [this] { return exportAs("income.dbf", TableFormat::Dbf); });
}

int IncomeDemo::geography() const
{
    return VORN_GetGeographyId(mIncome);
}

QString IncomeDemo::import()
{
    const ImportOptions options = sampleImport(Sample::Income, mPlace.samples);
    Console silent = mPlace.context.console;
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

QString IncomeDemo::statistics(const char *year, double mean)
{
    const Statistics found = statisticsAt(mIncome, chooseTime(mIncome, QLatin1String(year)));
    mSteps.expect(found.count == kStates && std::abs(found.mean - mean) < 0.0006);
    return QStringLiteral("%1: mean %2, standard deviation %3, %4 to %5")
        .arg(QLatin1String(year), shortNumber(found.mean), shortNumber(found.deviation),
             shortNumber(found.minimum), shortNumber(found.maximum));
}

QString IncomeDemo::classes(const char *year, const QVector<double> &expected)
{
    const qint64 time = chooseTime(mIncome, QLatin1String(year));
    const QVector<double> breaks = breaksAt(mIncome, time, MDataset::Jenks, expected.size() - 1);
    mSteps.expect(breaks == expected);
    QStringList texts;
    for (const double limit : breaks)
        texts.append(exactNumber(limit));
    return QStringLiteral("%1: natural breaks %2")
        .arg(QLatin1String(year), texts.join(QLatin1Char(' ')));
}

QString IncomeDemo::map()
{
    MapStyle style;
    style.subtitle = QStringLiteral("US dollars of the year, 48 contiguous states, 2009");
    mSession.controller().painter = [&](const MapView &view) {
        savePicture(choropleth(view, style), mPlace.result("income_2009.png"));
        return true;
    };
    const int window = VORN_DisplayMap(mIncome, chooseTime(mIncome, QStringLiteral("2009")),
                                       QStringLiteral("Personal income per head"),
                                       ColorSchemeInfo(), ColorSchemeInfo(), SymbolSchemeInfo());
    mSession.controller().painter = nullptr;
    mSteps.expect(window > 0 && QFileInfo(mPlace.result("income_2009.png")).size() > 0);
    return QStringLiteral("2009 in 5 classes: income_2009.png");
}

QString IncomeDemo::series()
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

QString IncomeDemo::linksAt(const char *year, int objects, int links)
{
    const QString lastDay = QLatin1String(year) + QStringLiteral("-12-31");
    const LinkSummary found = summarize(mQueen, chooseTimeOf(geography(), lastDay));
    mSteps.expect(found.objects == objects && found.links == links);
    return QStringLiteral("%1: %2 queen links of %3 states, %4 to %5 each, mean %6, %7 islands")
        .arg(QLatin1String(year), QString::number(found.links), QString::number(found.objects),
             QString::number(found.least), QString::number(found.most), shortNumber(found.mean()),
             QString::number(found.islands.size()));
}

QString IncomeDemo::weightsFile()
{
    const QString file = mPlace.result("queen_2000.gal");
    const WrittenWeights written =
        exportWeights(mQueen, file, QString(), QStringLiteral("2000-12-31"));
    WeightsImport options;
    options.standardize = true;
    const QString name = QStringLiteral("queen of 2000, from a file");
    const WeightsMatch match = importWeights(geography(), name, readWeights(file), file, options);
    mSteps.expect(match.links == written.links && match.unknown.isEmpty()
                  && match.unnamed.isEmpty());
    return QStringLiteral("queen_2000.gal: %1 links of %2 states written and read back")
        .arg(match.links)
        .arg(written.objects);
}

QString IncomeDemo::moranOfAllYears()
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
    return QStringLiteral("%1 years, I %2 in 1929, %3 in 2009, largest p %4 of %5 permutations, "
                          "seed %6")
        .arg(byYear.size())
        .arg(byYear.value(QStringLiteral("1929")), 0, 'f', 6)
        .arg(byYear.value(QStringLiteral("2009")), 0, 'f', 6)
        .arg(exactNumber(largestP))
        .arg(plan.permutations)
        .arg(plan.seed);
}

QString IncomeDemo::moranScatterOf2009()
{
    const QVector<Interval> years = dataTimes(mIncome);
    Plot plot = moranScatter(mIncome, mQueen, years.last(),
                             findDataset(geography(), QStringLiteral("abbr")));
    plot.graph.texts.title = QStringLiteral("Income per head of 2009, and that of the neighbours");
    savePicture(plot.graph, mPlace.result("moran_2009.svg"));
    mSteps.expect(QFileInfo(mPlace.result("moran_2009.svg")).size() > 0);
    return QStringLiteral("Moran scatter plot of 2009: moran_2009.svg");
}

bool IncomeDemo::replaceBytes(const char *name, const QByteArray &bytes) const
{
    return replaceFile(mPlace.result(name), [&bytes](const QString &beside) {
        QFile file(beside);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
    });
}

QString IncomeDemo::exportAs(const char *name, TableFormat format)
{
    RowPlan plan;
    plan.geography = geography();
    plan.datasets = {mIncome};
    const WrittenTable written = exportTable(mPlace.result(name), format, plan,
                                             QStringLiteral("-999"), [](const QString &) {});
    const int rows = format == TableFormat::GeoEas ? geoEasRows(mPlace.result(name))
                                                   : tableRows(mPlace.result(name));
    mSteps.expect(rows == kStates * kYears && written.rows == rows);
    return QStringLiteral("%1: %2 rows, read back").arg(QLatin1String(name)).arg(rows);
}

} // namespace meridor
