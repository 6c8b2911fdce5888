// SPDX-License-Identifier: MIT
// A run through all main functions with real data, as a story: shapes that change, values over time,
// grids, neighbours that follow, and a field between its wells; all in one project, which ends as a page to look at.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <memory>
#include "cli/commands/commands.h"
#include "cli/commands/demoClimate.h"
#include "cli/commands/demoHistory.h"
#include "cli/commands/demoIncome.h"
#include "cli/commands/demoMemory.h"
#include "cli/commands/demoWells.h"
#include "cli/commands/reportCommands.h"
#include "core/analysis/snapshot.h"
#include "core/import/samples.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/report/gather.h"
#include "core/report/page.h"
#include "datainterface/ProjectAPI.h"

namespace meridor {
namespace {

struct Options {
    QString directory;
    QString samples;
};

constexpr const char *kProject = "demo.vorn";
constexpr const char *kReport = "report.html";
constexpr qint64 kMostReportBytes = 5000000;
constexpr int kValues = 300000; // at least as many are compared after saving and loading

class Demo {
public:
    Demo(const Options &options, const Context &context)
        : mPlace{context, options.directory,
                 samplesDirectory({options.samples, qEnvironmentVariable("MERIDOR_SAMPLES")})},
          mSteps(context.console)
    {
        refuseStandardOutput(mPlace.directory, "a directory of results");
        makeDirectory(mPlace.directory);
        for (const char *name : {kProject, kReport})
            requireWritable(mPlace.result(name), context.overwrite);
        for (const char *name : kHistoryResults)
            requireWritable(mPlace.result(name), context.overwrite);
        for (const char *name : kIncomeResults)
            requireWritable(mPlace.result(name), context.overwrite);
        for (const char *name : kClimateResults)
            requireWritable(mPlace.result(name), context.overwrite);
        for (const char *name : kWellsResults)
            requireWritable(mPlace.result(name), context.overwrite);
    }

    /// True if all figures were right.
    bool run()
    {
        {
            Session session(mPlace.context.session, mPlace.context.user);
            story(session);
        }
        mSteps.chapter("Values larger than memory");
        compareCaches(mSteps, mPlace);
        return mSteps.finish(mPlace.result(kReport));
    }

private:
    void story(Session &session)
    {
        HistoryDemo history(mSteps, mPlace);
        IncomeDemo income(mSteps, mPlace, session);
        ClimateDemo climate(mSteps, mPlace, session);
        WellsDemo wells(mSteps, mPlace);
        mSteps.chapter("Then and now");
        history.thenAndNow();
        mSteps.chapter("Incomes converge");
        income.incomesConverge();
        mSteps.chapter("Neighbours through time");
        income.neighborsThroughTime();
        mSteps.chapter("One map out of a grid");
        climate.oneMapOutOfAGrid();
        mSteps.chapter("Levels between wells");
        wells.levelsBetweenWells();
        mSteps.chapter("Saved and loaded");
        mSteps.step("save", [&] { return save(session); });
        mSteps.step("load", [&] { return load(session); });
        mSteps.step("compare", [&] { return compare(); });
        wells.askedAgain();
        mSteps.chapter("Taken away");
        history.takenAway();
        income.takenAway();
        climate.takenAway();
        mSteps.step("report", [&] { return report(); });
    }

    QString save(Session &session)
    {
        mBefore = takeSnapshot();
        mGeographies = geographyIds().size();
        session.save(mPlace.result(kProject));
        return QStringLiteral("%1 geographies: %2, %3 KB")
            .arg(QString::number(mGeographies), QLatin1String(kProject),
                 QString::number(QFileInfo(mPlace.result(kProject)).size() / 1000));
    }

    QString load(Session &session)
    {
        session.unload();
        mSteps.expect(geographyIds().isEmpty());
        session.load(mPlace.result(kProject));
        int datasets = 0;
        for (const int geography : geographyIds())
            datasets += datasetIds(geography).size();
        mSteps.expect(geographyIds().size() == mGeographies);
        return QStringLiteral("unloaded and loaded: %1 geographies, %2 datasets")
            .arg(geographyIds().size())
            .arg(datasets);
    }

    QString compare()
    {
        const Snapshot after = takeSnapshot();
        const QStringList changed = differences(mBefore, after);
        mSteps.expect(changed.isEmpty() && after.count >= kValues);
        if (!changed.isEmpty())
            return QStringLiteral("different: %1").arg(someOf(changed, 4));
        return QStringLiteral("%1 values, every one identical").arg(after.count);
    }

    QString report()
    {
        ReportPlan plan;
        plan.project = mPlace.result(kProject);
        plan.title = QStringLiteral(
            "Two centuries of states, eighty years of income, a year of rain, a field "
            "of wells");
        plan.datasets = QStringList{QStringLiteral("terr_type"), QStringLiteral("area_sqmi"),
                                    QStringLiteral("income"),    QStringLiteral("pr_1999"),
                                    QStringLiteral("tas_1999"),  QStringLiteral("rain"),
                                    QStringLiteral("level")};
        for (const char *name : kWellsMaps)
            plan.beside.append(QLatin1String(name));
        plan.datasets += plan.beside;
        plan.sameClasses = {plan.beside.mid(0, 2)};
        for (const char *day : kThenAndNow)
            plan.sideMaps.append(QLatin1String(day));
        ReportProject project = gatherReport(plan);
        // The page begins with the maps of then and now.
        mSteps.expect(project.geographies.first().sideMaps.size() == int(std::size(kThenAndNow)));
        addCommandLines(project, QLatin1String(kProject));
        const QByteArray page = reportPage(project);
        const bool written = replaceFile(mPlace.result(kReport), [&page](const QString &beside) {
            QFile file(beside);
            return file.open(QIODevice::WriteOnly) && file.write(page) == page.size()
                   && file.flush();
        });
        mSteps.expect(written && page.size() < kMostReportBytes);
        return QStringLiteral("%1: maps, charts and tables of the whole project, %2 KB")
            .arg(QLatin1String(kReport))
            .arg(page.size() / 1000);
    }

    DemoPlace mPlace;
    DemoSteps mSteps;
    Snapshot mBefore;
    int mGeographies = 0;
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
