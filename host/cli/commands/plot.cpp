// SPDX-License-Identifier: MIT
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "cli/commands/pictureOptions.h"
#include "core/analysis/weightSets.h"
#include "core/grids/valuesAt.h"
#include "core/plot/plots.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/render/pictureFile.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString dataset;
    QString other;
    QString output;
    QString at;
    QStringList times;
    QStringList objects;
    QString label;
    QString title;
    QString subtitle;
    int realization = 1;
    ClassOptions classes;
    SizeOptions size;
};

/// The dataset and those beside it, with the realizations that the options choose.
ShownDataset shownOf(int dataset, const Options &options, const QVector<int> &beside = {})
{
    return {dataset,
            realizationIndex(dataset, options.realization, beside + QVector<int>{dataset})};
}

qint64 timeOf(const ShownDataset &shown, const QString &at)
{
    return datasetOf(shown.id)->IsStatic() ? chooseTimeOf(VORN_GetGeographyId(shown.id), at)
                                           : chooseTime(shown.id, at, shown.realization);
}

/// The text of a time; the geography for what holds for good.
QString timeText(const ShownDataset &shown, const QString &at)
{
    const int geography = VORN_GetGeographyId(shown.id);
    return !at.isEmpty()                     ? at
           : datasetOf(shown.id)->IsStatic() ? geographyName(geography)
                                             : axisOf(geography).show(timeOf(shown, at));
}

/// Makes a plot and its title and subtitle, if the options state none.
using Make = Plot (*)(int dataset, const Options &options, PictureTexts &texts);

Plot makeHistogram(int dataset, const Options &options, PictureTexts &texts)
{
    const ShownDataset shown = shownOf(dataset, options);
    texts = {datasetName(dataset), timeText(shown, options.at), {}};
    return histogram(shown, timeOf(shown, options.at), options.classes.rule());
}

Plot makeBoxes(int dataset, const Options &options, PictureTexts &texts)
{
    const ShownDataset shown = shownOf(dataset, options);
    QVector<Interval> times;
    if (datasetOf(dataset)->IsStatic()) { // of the objects that exist at one time
        const qint64 time = timeOf(shown, options.times.value(0));
        times.append({time, time, true, true});
    } else {
        times = dataTimesAt(dataset, options.times, shown.realization);
    }
    texts = {datasetName(dataset), geographyName(VORN_GetGeographyId(dataset)), {}};
    return boxesOverTime(shown, times);
}

int labelOf(int dataset, const Options &options)
{
    return options.label.isEmpty() ? -1 : findDataset(VORN_GetGeographyId(dataset), options.label);
}

/// The label with its realization; none without one.
ShownDataset shownLabel(int label, const Options &options, const QVector<int> &beside)
{
    return label < 0 ? ShownDataset(-1) : shownOf(label, options, beside);
}

Plot makeScatter(int dataset, const Options &options, PictureTexts &texts)
{
    const int other = findDataset(VORN_GetGeographyId(dataset), options.other);
    const int label = labelOf(dataset, options);
    QVector<int> together{dataset, other};
    if (label >= 0)
        together.append(label);
    const ShownDataset x = shownOf(dataset, options, together);
    const ShownDataset y = shownOf(other, options, together);
    // Of two datasets the one that changes decides on the time.
    const ShownDataset timed = datasetOf(dataset)->IsStatic() ? y : x;
    texts = {QStringLiteral("%1 and %2").arg(datasetName(dataset), datasetName(other)),
             timeText(timed, options.at),
             {}};
    return scatter(x, y, timeOf(timed, options.at), shownLabel(label, options, together));
}

Plot makeTimePlot(int dataset, const Options &options, PictureTexts &texts)
{
    const int geography = VORN_GetGeographyId(dataset);
    QVector<int> objects;
    for (const QString &object : options.objects)
        objects.append(findObject(geography, object));
    texts = {datasetName(dataset), geographyName(geography), {}};
    Plot plot = timePlot(shownOf(dataset, options), objects);
    for (int i = 0; i < objects.size(); ++i)
        plot.graph.series[i].name = options.objects[i];
    return plot;
}

Plot makeMoran(int dataset, const Options &options, PictureTexts &texts)
{
    const int label = labelOf(dataset, options);
    QVector<int> together{dataset};
    if (label >= 0)
        together.append(label);
    const ShownDataset shown = shownOf(dataset, options, together);
    const qint64 time = timeOf(shown, options.at);
    const auto times = shapeTimesAt(
        dataset, options.at.isEmpty() ? QStringList() : QStringList{options.at}, shown.realization);
    texts = {QStringLiteral("Moran scatter of %1").arg(datasetName(dataset)),
             timeText(shown, options.at),
             {}};
    const Interval when =
        datasetOf(dataset)->IsStatic() ? Interval{time, time, true, true} : times.last();
    return moranScatter(shown, findWeightSet(options.other), when,
                        shownLabel(label, options, together));
}

void run(const Options &options, Make make, const Context &context)
{
    requirePictureName(options.output);
    options.classes.rule();
    requireWritable(options.output, context.overwrite);
    refuseInput(options.output, {options.project});
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int dataset = findDataset(options.dataset);
    PictureTexts texts;
    Plot plot = make(dataset, options, texts);
    texts.footnote = plot.graph.texts.footnote;
    const QString realization = realizationText(dataset, options.realization - 1);
    if (!realization.isEmpty())
        texts.subtitle += QStringLiteral(", ") + realization;
    if (!options.title.isEmpty())
        texts.title = options.title;
    if (!options.subtitle.isEmpty())
        texts.subtitle = options.subtitle;
    plot.graph.texts = texts;
    plot.graph.size = options.size.size();
    savePicture(plot.graph, options.output);
    if (context.console.json) {
        plot.numbers.insert(QStringLiteral("file"), options.output);
        context.console.print(plot.numbers);
    } else {
        context.console.print(options.output + QStringLiteral(": ") + plot.summary);
    }
}

/// Declares one kind of plot with what all have.
class Kind {
public:
    Kind(const Command &plot, Context &context, const char *name, const char *help, Make make)
        : mCommand(plot.verb(name, help)), mOptions(std::make_shared<Options>())
    {
        projectArgument(mCommand, mOptions->project);
        datasetArgument(mCommand, mOptions->dataset);
        auto options = mOptions;
        mCommand.chosen([options, make, &context] {
            context.run = [options, make](const Context &c) { run(*options, make, c); };
        });
    }
    Options *operator->() const { return mOptions.get(); }
    const Command &command() const { return mCommand; }
    /// The arguments after the datasets, and the common options.
    void finish(Context &context, const char *footer) const
    {
        mCommand.text("PICTURE", mOptions->output, "The file to write: .png, .svg or .pdf")
            .required();
        realizationOption(mCommand, mOptions->realization);
        mCommand.text("--title", mOptions->title, "Title (default: the dataset's name)");
        mCommand.text("--subtitle", mOptions->subtitle, "Text below the title");
        mOptions->size.addTo(mCommand);
        overwriteOption(mCommand, context);
        mCommand.footer(footer);
    }
    void timeOption() const
    {
        mCommand.text("--at", mOptions->at, "The time (default: the dataset's last)");
    }
    void labelOption() const
    {
        mCommand.text("--label", mOptions->label,
                      "A dataset whose values are drawn beside the points");
    }

private:
    Command mCommand;
    std::shared_ptr<Options> mOptions;
};

} // namespace

void addPlot(const Command &app, Context &context)
{
    const Command plot = app.verb("plot", "Draw statistical graphs of datasets");
    plot.needsVerb();
    plot.footer("Example:\n  meridor plot histogram income.vorn income values.png --at 2009");

    const Kind bars(plot, context, "histogram", "The values of a time and their classes",
                    &makeHistogram);
    bars.timeOption();
    bars->classes.addTo(bars.command(), 64);
    bars.finish(context,
                "Example:\n  meridor plot histogram income.vorn income values.png --at 2009");

    const Kind boxes(plot, context, "boxes", "The distribution of values at each time", &makeBoxes);
    boxes.command()
        .texts("--times", boxes->times, "Times, separated by commas (default: all)")
        .partedBy(',');
    boxes.finish(context, "Example:\n  meridor plot boxes income.vorn income boxes.svg");

    const Kind points(plot, context, "scatter", "Two datasets, their line and correlation",
                      &makeScatter);
    points.command().text("OTHER", points->other, "The dataset on the vertical axis").required();
    points.timeOption();
    points.labelOption();
    points.finish(context, "Example:\n  meridor plot scatter counties.vorn BIR74 SID74 deaths.png");

    const Kind lines(plot, context, "time", "The values of objects over time", &makeTimePlot);
    lines.command().texts("--object", lines->objects, "An object, by key or name; repeatable");
    lines.finish(context, "Example:\n  meridor plot time income.vorn income lines.png --object "
                          "Virginia --object Utah");

    const Kind moran(plot, context, "moran", "Values beside those of their neighbours", &makeMoran);
    moran.command().text("SET", moran->other, "The weight set").required();
    moran.timeOption();
    moran.labelOption();
    moran.finish(context,
                 "Example:\n  meridor plot moran income.vorn income queen moran.png --at 2009");
}

} // namespace meridor
