// SPDX-License-Identifier: MIT
// Shapes of 93 states and territories from 1783 to 2000. Expected figures are those of the source,
// computed with other software.
#include "cli/commands/demoHistory.h"
#include <QFileInfo>
#include <tuple>
#include "core/analysis/tables.h"
#include "core/analysis/weightSets.h"
#include "core/formats/ogrReader.h"
#include "core/import/mapImporter.h"
#include "core/import/samples.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/render/choropleth.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {
namespace {

constexpr int kObjects = 93;
constexpr int kShapes = 213;
constexpr std::tuple<int, int> kObjectsAndLinks[] = {{17, 62}, {41, 178}, {50, 224}, {49, 218}};

} // namespace

void HistoryDemo::thenAndNow()
{
    mSteps.step("import", [this] { return import(); });
    for (size_t i = 0; i < std::size(kThenAndNow); ++i) {
        const auto [objects, links] = kObjectsAndLinks[i];
        mSteps.step("exist", [&, i, objects = objects, links = links] {
            return linksAt(kThenAndNow[i], objects, links);
        });
    }
    mSteps.step("map", [this] { return maps(); });
}

QString HistoryDemo::import()
{
    const ImportOptions options = sampleImport(Sample::History, mPlace.samples);
    const Progress progress("Import", "Importing...");
    const ImportReport report = importMap(options, mPlace.context.console, progress);
    mGeography = report.geography;
    mSteps.expect(report.objects == kObjects);
    return QStringLiteral("%1 states and territories, whose borders change from 1783 to 2000")
        .arg(report.objects);
}

QString HistoryDemo::linksAt(const char *day, int objects, int links)
{
    if (mQueen < 0) {
        WeightSetPlan plan;
        plan.name = plan.method = QStringLiteral("queen");
        plan.weights = QStringLiteral("row");
        mQueen = createWeightSet(mGeography, plan);
    }
    const LinkSummary found = summarize(mQueen, chooseTimeOf(mGeography, QLatin1String(day)));
    mSteps.expect(found.objects == objects && found.links == links);
    return QStringLiteral("%1: %2 objects, %3 queen links, %4 each, %5 islands")
        .arg(QLatin1String(day), QString::number(found.objects), QString::number(found.links),
             QString::number(found.mean(), 'f', 2), QString::number(found.islands.size()));
}

QString HistoryDemo::maps()
{
    QVector<qint64> times;
    QStringList captions;
    for (const char *day : kThenAndNow) {
        captions.append(QString::fromLatin1(day).left(4));
        times.append(chooseTimeOf(mGeography, QLatin1String(day)));
    }
    MapStyle style;
    style.weightSet = mQueen;
    style.subtitle = QStringLiteral("with lines between queen neighbours");
    const MapMaker maker(findDataset(mGeography, QStringLiteral("terr_type")), times,
                         QStringLiteral("States and territories, then and now"), style);
    savePicture(maker.picture(times, captions), mPlace.result("then_and_now.png"));
    mSteps.expect(QFileInfo(mPlace.result("then_and_now.png")).size() > 0);
    return QStringLiteral("1790, 1860, 1900 and 2000 with their neighbours: then_and_now.png");
}

void HistoryDemo::takenAway()
{
    mSteps.step("export", [this] { return shapes(); });
}

QString HistoryDemo::shapes()
{
    FeatureTarget target;
    target.path = mPlace.result("states_history.gpkg");
    target.format = FeatureFormat::GeoPackage;
    target.overwrite = true; // it was asked for when the demo began
    RowPlan plan;
    plan.geography = findGeography(sampleImport(Sample::History, {}).name);
    const auto ignored = [](const QString &) {};
    const WrittenTable written = exportShapes(target, plan, ignored);
    const FeatureTable read = readFeatures(target.path, ReadOptions());
    mSteps.expect(written.rows == kShapes && read.rows == kShapes
                  && read.projection.contains(QLatin1String("5070")));
    return QStringLiteral("states_history.gpkg: %1 shapes with their days, read back")
        .arg(read.rows);
}

} // namespace meridor
