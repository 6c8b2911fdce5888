// SPDX-License-Identifier: MIT
// Rain and temperature of 1999 in cells of an eighth of a degree. Expected figures of the grids are
// those of the source; those of counties were computed in a spatial database by intersecting cells
// and counties.
#include "cli/commands/demoClimate.h"
#include <QFileInfo>
#include <cmath>
#include <utility>
#include "core/analysis/statistics.h"
#include "core/analysis/zonal.h"
#include "core/formats/rasterReader.h"
#include "core/formats/rasterWriter.h"
#include "core/import/rasterImporter.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/render/choropleth.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {
namespace {

constexpr int kMonths = 12;
constexpr int kCells = 33 * 81;
constexpr int kLand = 2080;
constexpr int kCounties = 100;
constexpr const char *kWettest = "1999-09"; // the month of hurricane Floyd
constexpr std::pair<const char *, double> kCountyRain[] = {
    {"Buncombe", 56.7457400159}, {"Wake", 512.2323984231}, {"Edgecombe", 756.99152346}};

bool near(double a, double b, double tolerance)
{
    return std::abs(a - b) <= tolerance;
}

} // namespace

void ClimateDemo::oneMapOutOfAGrid()
{
    mSteps.step("import", [this] { return import(); });
    mSteps.step("missing", [this] { return missing(); });
    mSteps.step("statistics", [this] { return january(); });
    mSteps.step("statistics", [this] { return extremes(); });
    mSteps.step("import", [this] { return counties(); });
    mSteps.step("zonal", [this] { return means(); });
    for (const auto &[name, expected] : kCountyRain)
        mSteps.step("zonal",
                    [&, name = name, expected = expected] { return county(name, expected); });
    mSteps.step("map", [this] { return map(); });
}

void ClimateDemo::takenAway()
{
    mRain = findDataset(QStringLiteral("pr_1999"));
    mSteps.step("export", [this] { return exported(); });
}

int ClimateDemo::importGrid(Sample sample)
{
    const Progress progress("Import", "Importing...");
    return importRaster(sampleImport(sample, mPlace.samples), mPlace.context.console, progress)
        .datasets.value(0, -1);
}

QString ClimateDemo::import()
{
    mRain = importGrid(Sample::Rain);
    mTemperature = importGrid(Sample::Temperature);
    const GeoProps props = VORN_GetGeographyProperties(VORN_GetGeographyId(mRain));
    const int months = dataTimes(mRain).size();
    mSteps.expect(props.objectCount == kCells && months == kMonths
                  && dataTimes(mTemperature).size() == kMonths);
    return QStringLiteral("rain and temperature of %1 months, %2").arg(months).arg(gridText(props));
}

QString ClimateDemo::missing() const
{
    bool same = true;
    for (const Interval &month : dataTimes(mRain))
        same = same && static_cast<int>(VORN_GetDataCount(mRain, instantOf(month))) == kLand;
    mSteps.expect(same);
    return QStringLiteral("the sea: %1 % of the cells, every month")
        .arg(100.0 * (kCells - kLand) / kCells, 0, 'f', 2);
}

QString ClimateDemo::january() const
{
    const Statistics found = statisticsAt(mRain, chooseTime(mRain, QStringLiteral("1999-01")));
    mSteps.expect(near(found.mean, 155.113, 0.0006) && near(found.deviation, 37.124, 0.0006)
                  && near(found.minimum, 36.9, 1e-5) && near(found.maximum, 332.8, 1e-4));
    return QStringLiteral("rain in January: mean %1, standard deviation %2, %3 to %4 mm")
        .arg(shortNumber(found.mean), shortNumber(found.deviation), shortNumber(found.minimum),
             shortNumber(found.maximum));
}

QString ClimateDemo::extremes()
{
    const Statistics rain = statisticsOfAll(mRain);
    const Statistics temperature = statisticsOfAll(mTemperature);
    mSteps.expect(near(rain.minimum, 0.6, 1e-5) && near(rain.maximum, 848.6, 1e-4)
                  && near(temperature.minimum, -0.42, 1e-5)
                  && near(temperature.maximum, 29.39, 1e-5));
    return QStringLiteral("the year: %1 to %2 mm a month, %3 to %4 degrees")
        .arg(shortNumber(rain.minimum), shortNumber(rain.maximum), shortNumber(temperature.minimum),
             shortNumber(temperature.maximum));
}

QString ClimateDemo::counties()
{
    const ImportOptions options = sampleImport(Sample::Counties, mPlace.samples);
    const Progress progress("Import", "Importing...");
    const ImportReport report = importMap(options, mPlace.context.console, progress);
    mCounties = report.geography;
    mSteps.expect(report.objects == kCounties);
    return QStringLiteral("%1 counties").arg(report.objects);
}

QString ClimateDemo::means()
{
    const Progress progress("Zonal statistics", "Cutting cells...");
    const auto times = zonalStatistics(mRain, mCounties, dataTimes(mRain), progress);
    mMeans = keepZonal(times, mRain, mCounties, QStringLiteral("rain"), QStringLiteral("mean"));
    int count = 0;
    for (const ZonesAtTime &at : times)
        for (const ZoneStatistics &zone : at.zones)
            count += zone.cells > 0;
    mSteps.expect(count == kCounties * kMonths);
    return QStringLiteral("means of rain over counties: %1").arg(count);
}

QString ClimateDemo::county(const char *name, double expected) const
{
    datum value;
    const int object = findObject(mCounties, QLatin1String(name));
    const bool there = VORN_GetDataValue(mMeans, 0, static_cast<unsigned>(object),
                                         chooseTime(mMeans, QLatin1String(kWettest)), value);
    mSteps.expect(there && near(value.decimalValue, expected, 1e-6));
    return QStringLiteral("%1 in September: %2 mm")
        .arg(QLatin1String(name), shortNumber(value.decimalValue));
}

QString ClimateDemo::map() const
{
    MapStyle style;
    style.subtitle = QStringLiteral("mm in September 1999, means over the counties of North "
                                    "Carolina from a grid of an eighth of a degree");
    mSession.controller().painter = [&](const MapView &view) {
        savePicture(choropleth(view, style), mPlace.result("rain_1999_09.png"));
        return true;
    };
    const int window = VORN_DisplayMap(mMeans, chooseTime(mMeans, QLatin1String(kWettest)),
                                       QStringLiteral("The rain of hurricane Floyd"),
                                       ColorSchemeInfo(), ColorSchemeInfo(), SymbolSchemeInfo());
    mSession.controller().painter = nullptr;
    mSteps.expect(window > 0 && QFileInfo(mPlace.result("rain_1999_09.png")).size() > 0);
    return QStringLiteral("September in 5 classes: rain_1999_09.png");
}

QString ClimateDemo::exported() const
{
    const qint64 time = chooseTime(mRain, QLatin1String(kWettest));
    exportGrid(mPlace.result("rain_1999_09.tif"), mRain, time);
    const RasterReader reader(mPlace.result("rain_1999_09.tif"), RasterReadOptions());
    const GeoProps props = VORN_GetGeographyProperties(VORN_GetGeographyId(mRain));
    mSteps.expect(reader.rows() == props.rows && reader.columns() == props.columns
                  && reader.bounds() == props.bounds && reader.bands().first().bits == 32
                  && reader.bands().first().missing.matches(-9999.0f));
    return QStringLiteral("rain_1999_09.tif, %1 rows, %2 columns")
        .arg(reader.rows())
        .arg(reader.columns());
}

} // namespace meridor
