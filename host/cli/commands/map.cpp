// SPDX-License-Identifier: MIT
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/render/choropleth.h"
#include "core/render/palette.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString dataset;
    QString output;
    QString at;
    QString title;
    MapStyle style;
    int width = 1600;
    int height = 1000;
};

QJsonObject toJson(const MapPicture &picture, const Options &options)
{
    QJsonArray legend;
    for (const LegendEntry &entry : picture.legend)
        legend.append(QJsonObject{{QStringLiteral("text"), entry.text},
                                  {QStringLiteral("color"), entry.color.name()},
                                  {QStringLiteral("count"), entry.count}});
    return {{QStringLiteral("file"), options.output},
            {QStringLiteral("width"), options.style.size.width()},
            {QStringLiteral("height"), options.style.size.height()},
            {QStringLiteral("legend"), legend},
            {QStringLiteral("missing"), picture.missingCount},
            {QStringLiteral("drawn"), picture.shapes.size()}};
}

void run(Options options, const Context &context)
{
    if (QFileInfo(options.output).suffix().toLower() != QLatin1String("png"))
        failUsage(QStringLiteral("%1: a map is a PNG picture; its name ends in .png")
                      .arg(options.output));
    requireWritable(options.output, context.overwrite);
    refuseInput(options.output, {options.project});
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int dataset = findDataset(options.dataset);
    const qint64 time = chooseTime(dataset, options.at);
    options.style.size = QSize(options.width, options.height);
    const TimeAxis axis = axisOf(VORN_GetGeographyId(dataset));
    options.style.subtitle = !options.at.isEmpty() ? options.at
                             : datasetOf(dataset)->IsStatic()
                                 ? geographyName(VORN_GetGeographyId(dataset))
                                 : axis.show(time);

    MapPicture picture;
    session.controller().painter = [&](const MapView &view) {
        picture = choropleth(view, options.style);
        savePicture(draw(picture), options.output);
        return true;
    };
    const QString title = options.title.isEmpty() ? datasetName(dataset) : options.title;
    if (VORN_DisplayMap(dataset, time, title, ColorSchemeInfo(), ColorSchemeInfo(),
                        SymbolSchemeInfo())
        == 0)
        fail(QStringLiteral("%1: could not be drawn").arg(options.output));
    session.controller().painter = nullptr;
    if (context.console.json)
        context.console.print(toJson(picture, options));
    else
        context.console.print(QStringLiteral("%1: %2 objects in %3 classes, %4 without a value")
                                  .arg(options.output, QString::number(picture.shapes.size()),
                                       QString::number(picture.legend.size()),
                                       QString::number(picture.missingCount)));
}

} // namespace

void addMap(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("map", "Draw a dataset at one time as a picture");
    projectArgument(command, options->project);
    datasetArgument(command, options->dataset);
    command.text("PICTURE", options->output, "The PNG file to write").required();
    command.text("--at", options->at, "The time (default: the dataset's last)");
    command.text("--title", options->title, "Title (default: the dataset's name)");
    command.text("--method", options->style.method, "Method of classification")
        .shown("jenks")
        .oneOf({"equal", "quantile", "jenks"});
    command.number("--count", options->style.classes, "Number of classes").shown().range(1, 64);
    command.flag("--all-times", options->style.allTimes,
                 "Classes and extent of all times, to compare pictures");
    command.text("--palette", options->style.palette, "Colours")
        .shown(options->style.palette.toUtf8().constData())
        .oneOf(paletteNames());
    command.number("--width", options->width, "Pixels").shown().range(320, 8000);
    command.number("--height", options->height, "Pixels").shown().range(200, 8000);
    overwriteOption(command, context);
    command.footer("Example:\n  meridor map income.vorn income 2009.png --at 2009 --title \"Income "
                   "per head\"");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
