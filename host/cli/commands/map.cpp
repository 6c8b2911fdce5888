// SPDX-License-Identifier: MIT
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <cmath>
#include <memory>
#include "cli/commands/commands.h"
#include "cli/commands/pictureOptions.h"
#include "core/analysis/weightSets.h"
#include "core/grids/gridValues.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/geographyTimes.h"
#include "core/project/progress.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"
#include "core/render/choropleth.h"
#include "core/render/pictureFile.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString dataset;
    QString output;
    QString at;
    QStringList times;
    QString frames;
    QString format = QStringLiteral("png");
    QString title;
    QString subtitle;
    QStringList layers;
    QStringList layerPalettes;
    QStringList marks;
    QString links;
    QString label;
    QString extent;
    bool allTimes = false;
    int realization = 1;
    ClassOptions classes;
    SizeOptions size;
};

constexpr int kMostClasses = 64;

/// A time that is drawn, and what it is called.
struct Moment {
    qint64 time;
    QString name;
};

QRectF extentOf(const QString &text)
{
    QVector<double> numbers;
    for (const QString &part : text.split(QLatin1Char(','))) {
        bool isNumber = false;
        numbers.append(part.toDouble(&isNumber));
        if (!isNumber || !std::isfinite(numbers.last()))
            failUsage(QStringLiteral("--extent: %1 is no number").arg(part));
    }
    if (numbers.size() != 4 || numbers[0] >= numbers[2] || numbers[1] >= numbers[3])
        failUsage(QStringLiteral("--extent is LEFT,BOTTOM,RIGHT,TOP in map coordinates"));
    return {QPointF(numbers[0], numbers[1]), QPointF(numbers[2], numbers[3])};
}

void check(const Options &options)
{
    if (options.output.isEmpty() == options.frames.isEmpty())
        failUsage(QStringLiteral("name either a picture or a directory with --frames"));
    if (!options.at.isEmpty() && (!options.times.isEmpty() || !options.frames.isEmpty()))
        failUsage(QStringLiteral("--at is one time; it excludes --times and --frames"));
    if (options.layerPalettes.size() > options.layers.size())
        failUsage(QStringLiteral("--layer-palette: there are more palettes than layers"));
    if (!options.extent.isEmpty())
        extentOf(options.extent);
    if (!options.output.isEmpty())
        requirePictureName(options.output);
}

/// The times of the options; without any the last time, or all times of the frames.
QVector<Moment> momentsOf(int dataset, int realization, const Options &options)
{
    const int geography = VORN_GetGeographyId(dataset);
    const TimeAxis axis = axisOf(geography);
    const bool always = datasetOf(dataset)->IsStatic();
    QVector<Moment> moments;
    for (const QString &text : options.times)
        moments.append({requireSpan(axis, text).startTime, text});
    if (!moments.isEmpty())
        return moments;
    if (!options.frames.isEmpty()) {
        const QVector<Interval> all =
            always ? objectTimes(geography) : dataTimes(dataset, realization);
        for (const Interval &interval : all)
            moments.append({instantOf(interval), axis.show(interval)});
        if (moments.isEmpty())
            fail(QStringLiteral("dataset %1 holds no values").arg(datasetName(dataset)));
        return moments;
    }
    const qint64 time =
        always ? chooseTimeOf(geography, options.at) : chooseTime(dataset, options.at, realization);
    // What holds for good in a geography that never changes has no time to show.
    const bool timeless =
        always && VORN_GetGeographyProperties(geography).isStatic && options.at.isEmpty();
    moments.append({time, timeless                ? geographyName(geography)
                          : !options.at.isEmpty() ? options.at
                                                  : axis.show(time)});
    return moments;
}

/// Whether a geography or a dataset has this name.
bool isName(const QString &text)
{
    for (const int id : geographyIds()) {
        if (geographyName(id) == text)
            return true;
        for (const int dataset : datasetIds(id))
            if (datasetName(dataset) == text
                || geographyName(id) + QLatin1Char('/') + datasetName(dataset) == text)
                return true;
    }
    return false;
}

/// Cuts the settings off the name of a layer, which may contain colons itself.
QString takeSettings(QString &name)
{
    if (isName(name) || !name.contains(QLatin1Char(':')))
        return QString();
    int at = name.lastIndexOf(QLatin1Char(':'));
    while (at > 0 && !isName(name.left(at)))
        at = name.left(at).lastIndexOf(QLatin1Char(':'));
    if (at <= 0)
        at = name.indexOf(QLatin1Char(':'));
    const QString settings = name.mid(at + 1);
    name.truncate(at);
    return settings;
}

/// Reads settings such as "method=quantile,count=4,reverse". The values of a list follow each other.
void applySettings(const QString &settings, const QString &prefix, MapLayerStyle &layer)
{
    static const QStringList known{
        QStringLiteral("method"),  QStringLiteral("count"),     QStringLiteral("breaks"),
        QStringLiteral("palette"), QStringLiteral("at"),        QStringLiteral("reverse"),
        QStringLiteral("below"),   QStringLiteral("all-times"),
    };
    constexpr int kFirstFlag = 5;
    QMap<QString, QStringList> given;
    QString last;
    for (const QString &part : settings.split(QLatin1Char(','))) {
        const QString key = part.section(QLatin1Char('='), 0, 0);
        const bool isKnown =
            known.contains(key)
            && (known.indexOf(key) < kFirstFlag) == part.contains(QLatin1Char('='));
        if (!isKnown && (last != QLatin1String("breaks") || part.contains(QLatin1Char('='))))
            failUsage(QStringLiteral("%1 has no setting %2; there are: method=, count=, breaks=, "
                                     "palette=, at=, reverse, all-times, below")
                          .arg(prefix.chopped(1), part));
        if (isKnown)
            last = key;
        given[last].append(isKnown ? part.section(QLatin1Char('='), 1) : part);
    }
    const auto value = [&given](const char *key) {
        return given.value(QLatin1String(key)).join(QLatin1Char(','));
    };
    layer.isBelow = given.contains(QStringLiteral("below"));
    layer.allTimes = given.contains(QStringLiteral("all-times"));
    if (given.contains(QStringLiteral("at")))
        layer.time = requireSpan(axisOf(layer.geography), value("at")).startTime;
    const bool hasClasses = given.size() > int(layer.isBelow) + int(layer.time.has_value());
    if (layer.dataset < 0 && hasClasses)
        failUsage(QStringLiteral("%1 outlines have no classes").arg(prefix));
    if (!hasClasses)
        return;
    ClassRule rule;
    rule.method = value("method");
    rule.palette = value("palette");
    rule.reversed = given.contains(QStringLiteral("reverse"));
    const bool isCounted = given.contains(QStringLiteral("count"));
    bool isNumber = true;
    if (isCounted)
        rule.count = value("count").toInt(&isNumber);
    if (!isNumber || rule.count < 1 || rule.count > kMostClasses)
        failUsage(QStringLiteral("%1count=%2 is no number from 1 to %3")
                      .arg(prefix, value("count"))
                      .arg(kMostClasses));
    layer.rule = checkedRule(rule, value("breaks"), isCounted, prefix);
}

/// The layers of the options, without realizations.
QVector<MapLayerStyle> layersOf(const Options &options)
{
    QVector<MapLayerStyle> layers;
    for (int i = 0; i < options.layers.size(); ++i) {
        MapLayerStyle layer;
        QString name = options.layers[i];
        const QString settings = takeSettings(name);
        for (const int id : geographyIds())
            if (geographyName(id) == name)
                layer.geography = id;
        if (layer.geography < 0) {
            layer.dataset = findDataset(name);
            layer.geography = VORN_GetGeographyId(layer.dataset);
        }
        layer.palette = options.layerPalettes.value(i);
        if (!settings.isEmpty())
            applySettings(settings, QStringLiteral("--layer %1:").arg(name), layer);
        layers.append(layer);
    }
    return layers;
}

/// An object or cell by its name.
int objectNamed(int geography, const QString &name)
{
    const GeoProps props = VORN_GetGeographyProperties(geography);
    if (props.type != GeoProps::Raster)
        return findObject(geography, name);
    const auto cell = findCell(geography, name);
    return static_cast<int>(cell.second) * props.columns + static_cast<int>(cell.first);
}

/// Marks an object of the dataset's geography, or of that of a layer as GEOGRAPHY/OBJECT.
void mark(const QString &text, int geography, MapStyle &style)
{
    const MapLayerStyle *owner = nullptr;
    for (const MapLayerStyle &layer : qAsConst(style.layers))
        if (text.startsWith(geographyName(layer.geography) + QLatin1Char('/')))
            owner = &layer;
    try {
        style.marked[geography].insert(objectNamed(geography, text));
    } catch (const Failure &) {
        if (!owner)
            throw;
        style.marked[owner->geography].insert(
            objectNamed(owner->geography, text.mid(geographyName(owner->geography).size() + 1)));
    }
}

/// What is drawn at all times, with the realizations of all datasets.
MapStyle contentOf(int dataset, const Options &options)
{
    MapStyle style;
    style.layers = layersOf(options);
    QVector<int> shown{dataset};
    for (const MapLayerStyle &layer : qAsConst(style.layers))
        if (layer.dataset >= 0)
            shown.append(layer.dataset);
    if (!options.label.isEmpty()) {
        style.labelField = findDataset(VORN_GetGeographyId(dataset), options.label);
        shown.append(style.labelField);
    }
    const auto realizationOf = [&](int id) {
        return realizationIndex(id, options.realization, shown);
    };
    style.realization = realizationOf(dataset);
    for (MapLayerStyle &layer : style.layers)
        layer.realization = layer.dataset < 0 ? 0 : realizationOf(layer.dataset);
    style.labelRealization = style.labelField < 0 ? 0 : realizationOf(style.labelField);
    return style;
}

MapStyle styleOf(int dataset, const Options &options, const Context &context)
{
    const int geography = VORN_GetGeographyId(dataset);
    MapStyle style = contentOf(dataset, options);
    style.rule = options.classes.rule();
    style.subtitle = options.subtitle;
    style.allTimes = options.allTimes;
    style.size = options.size.size();
    if (!options.extent.isEmpty())
        style.extent = extentOf(options.extent);
    for (const QString &text : options.marks)
        mark(text, geography, style);
    if (!options.links.isEmpty()) {
        style.weightSet = findWeightSet(options.links);
        if (style.weightSet >> 16 != geography)
            fail(QStringLiteral("weight set %1 is not one of %2")
                     .arg(options.links, geographyName(geography)));
    }
    if (options.allTimes && datasetOf(dataset)->IsStatic())
        context.console.note(QStringLiteral("%1 holds for good, so its classes are those of all "
                                            "objects")
                                 .arg(datasetName(dataset)));
    return style;
}

QJsonObject toJson(const QString &file, const MapPicture &picture, const MapDrawing &drawing)
{
    QJsonArray legend;
    for (const LegendEntry &entry : picture.legend.first().entries) {
        QJsonObject json{{QStringLiteral("text"), entry.text}};
        if (entry.color.isValid())
            json.insert(QStringLiteral("color"), entry.color.name());
        if (entry.count >= 0)
            json.insert(QStringLiteral("count"), entry.count);
        legend.append(json);
    }
    QJsonArray panels;
    qint64 missing = 0;
    qint64 drawn = 0;
    for (const MapPanel &panel : picture.panels) {
        panels.append(QJsonObject{{QStringLiteral("caption"), panel.caption},
                                  {QStringLiteral("drawn"), panel.drawn},
                                  {QStringLiteral("missing"), panel.missing},
                                  {QStringLiteral("links"), panel.linkCount}});
        missing += panel.missing;
        drawn += panel.drawn;
    }
    return {{QStringLiteral("file"), file},
            {QStringLiteral("width"), picture.size.pixels.width()},
            {QStringLiteral("height"), picture.size.pixels.height()},
            {QStringLiteral("legend"), legend},
            {QStringLiteral("panels"), panels},
            {QStringLiteral("missing"), missing},
            {QStringLiteral("drawn"), drawn},
            {QStringLiteral("labels"), drawing.labelsDrawn},
            {QStringLiteral("labelsOmitted"), drawing.labelsOmitted}};
}

QString textOf(const QString &file, const MapPicture &picture)
{
    qint64 missing = 0;
    qint64 drawn = 0;
    for (const MapPanel &panel : picture.panels) {
        missing += panel.missing;
        drawn += panel.drawn;
    }
    const bool several = picture.panels.size() > 1;
    const auto classes = picture.panels.first().counts.size();
    return QStringLiteral("%1: %2%3 in %4, %5 without a value")
        .arg(file, several ? QStringLiteral("%1 maps, ").arg(picture.panels.size()) : QString(),
             counted(drawn, "object"), counted(classes, "class"), QString::number(missing));
}

/// Writes one picture. @return its JSON.
QJsonObject drawOne(const MapMaker &maker, const QVector<Moment> &moments, const QString &file,
                    const Context &context)
{
    QVector<qint64> times;
    QStringList captions;
    for (const Moment &moment : moments) {
        times.append(moment.time);
        captions.append(moment.name);
    }
    const MapPicture picture = maker.picture(times, captions);
    const MapDrawing drawing = savePicture(picture, file);
    if (!context.console.json) {
        context.console.print(textOf(file, picture));
        for (const MapPanel &panel : picture.panels)
            if (picture.panels.size() > 1)
                context.console.print(QStringLiteral("  %1: %2").arg(panel.caption, panel.note));
    }
    if (drawing.labelsOmitted > 0)
        context.console.note(
            QStringLiteral("%1 of %2 left out, for want of room")
                .arg(drawing.labelsOmitted)
                .arg(counted(drawing.labelsOmitted + drawing.labelsDrawn, "label")));
    return toJson(file, picture, drawing);
}

QString frameName(const Options &options, const QString &time)
{
    QString name = time;
    name.replace(QLatin1Char('/'), QLatin1Char('_')).remove(QLatin1Char(':'));
    return QDir(options.frames).filePath(name + QLatin1Char('.') + options.format);
}

void run(const Options &options, const Context &context)
{
    check(options);
    options.classes.rule();
    refuseStandardOutput(options.frames, "a directory of pictures");
    if (!options.output.isEmpty()) {
        requireWritable(options.output, context.overwrite);
        refuseInput(options.output, {options.project});
    }
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int dataset = findDataset(options.dataset);
    const MapStyle style = styleOf(dataset, options, context);
    const QVector<Moment> moments = momentsOf(dataset, style.realization, options);
    QVector<qint64> times;
    for (const Moment &moment : moments)
        times.append(moment.time);
    if (!options.frames.isEmpty()) {
        makeDirectory(options.frames);
        for (const Moment &moment : moments)
            requireWritable(frameName(options, moment.name), context.overwrite);
    }
    const MapMaker maker(dataset, times,
                         options.title.isEmpty() ? datasetName(dataset) : options.title, style);
    const Progress progress("Map", "Drawing..."); // the library has bars of its own for classes
    QJsonArray files;
    if (options.frames.isEmpty()) {
        files.append(drawOne(maker, moments, options.output, context));
    } else {
        for (int i = 0; i < moments.size(); ++i) {
            progress.report(100 * i / moments.size());
            files.append(
                drawOne(maker, {moments[i]}, frameName(options, moments[i].name), context));
        }
    }
    if (context.console.json)
        context.console.print(options.frames.isEmpty()
                                  ? files.first().toObject()
                                  : QJsonObject{{QStringLiteral("frames"), files}});
}

} // namespace

void addMap(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("map", "Draw a dataset as a map");
    projectArgument(command, options->project);
    datasetArgument(command, options->dataset);
    command.text("PICTURE", options->output, "The file to write: .png, .svg or .pdf");
    command.text("--at", options->at, "The time (default: the dataset's last)");
    command.texts("--times", options->times, "Several times, separated by commas: a map for each")
        .partedBy(',');
    command.text("--frames", options->frames,
                 "Instead of PICTURE: a directory for a picture of each time");
    command.text("--format", options->format, "Format of --frames")
        .shown("png")
        .oneOf({"png", "svg", "pdf"});
    command.text("--title", options->title, "Title (default: the dataset's name)");
    command.text("--subtitle", options->subtitle, "Text below the title (default: the time)");
    command.texts(
        "--layer", options->layers,
        "A further dataset, or a geography whose outlines are drawn; repeatable. Settings "
        "may follow: NAME:method=quantile,count=4,palette=ember,reverse");
    command.texts("--mark", options->marks,
                  "An object that is drawn as selected, by key or name, or a cell as COLUMN,ROW; "
                  "repeatable");
    command.texts("--layer-palette", options->layerPalettes, "Colours of each --layer, in order");
    command.text("--links", options->links, "A weight set whose links are drawn");
    command.text("--label", options->label, "A dataset whose values are drawn beside the objects");
    realizationOption(command, options->realization);
    options->classes.addTo(command, kMostClasses);
    command.flag("--all-times", options->allTimes,
                 "Classes and extent of all times, to compare pictures");
    command.text("--extent", options->extent,
                 "The part of the map that is drawn: LEFT,BOTTOM,RIGHT,TOP");
    options->size.addTo(command);
    overwriteOption(command, context);
    command.footer("Example:\n  meridor map income.vorn income 2009.png --at 2009 --title \"Income "
                   "per head\"");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
