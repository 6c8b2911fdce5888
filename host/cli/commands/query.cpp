// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonObject>
#include <cmath>
#include <memory>
#include "cli/commands/commands.h"
#include "core/formats/ogrReader.h"
#include "core/grids/cellShares.h"
#include "core/grids/gridValues.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "core/project/shapeAccess.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/MVectorData.h"
#include "datainterface/RasterAPI.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString dataset;
    QString at;
    QString rect;
    QString circle;
    QString ellipse;
    QString polygon;
    QString in;
    bool centers = false;
    int realization = 1;
};

constexpr double kRadian = 3.14159265358979323846 / 180;

/// The result of a query: cells and the areas that they share with a rectangle or polygon. No areas
/// for circles, ellipses and queries by cell centres.
struct FoundCells {
    RasterPixels pixels;
    QVector<double> areas;
};

/// The rings of all polygons of a file.
QList<QVector<QPointF>> ringsOfFile(const QString &path)
{
    QList<QVector<QPointF>> rings;
    const FeatureTable table = readFeatures(path, ReadOptions());
    if (table.shapeKind != ShapeKind::Polygons)
        fail(path + QStringLiteral(": holds no polygons"));
    for (int row = 0; row < table.rows; ++row)
        rings += table.shapes->parts(row).toList();
    return rings;
}

/// The rings of an object named as "GEOGRAPHY/OBJECT".
QList<QVector<QPointF>> ringsOfObject(const QString &text, qint64 time)
{
    const int slash = text.lastIndexOf(QLatin1Char('/'));
    if (slash < 1)
        failUsage(QStringLiteral("--in %1: not GEOGRAPHY/OBJECT").arg(text));
    const int geography = findGeography(text.left(slash));
    const auto *vector = dynamic_cast<const MVectorData *>(geographyOf(geography));
    if (!vector)
        fail(QStringLiteral("%1 has no polygons").arg(geographyName(geography)));
    const int object = findObject(geography, text.mid(slash + 1));
    const auto rings = ringsOf(*vector, object, shapeTime(geography, time));
    if (rings.isEmpty())
        fail(QStringLiteral("%1 is no polygon at that time").arg(text));
    return rings;
}

FoundCells ofShares(const QVector<CellShare> &shares)
{
    FoundCells cells;
    for (const CellShare &share : shares) {
        cells.pixels.append({share.column, share.row});
        cells.areas.append(share.area);
    }
    return cells;
}

FoundCells inPolygon(int geography, const QList<QVector<QPointF>> &rings, bool centers)
{
    if (!centers)
        return ofShares(CellShares(geography).of(rings));
    FoundCells cells;
    VORN_GetPixelCentersInPolygon(geography, rings, cells.pixels);
    return cells;
}

FoundCells ask(const Options &options, int geography, qint64 time)
{
    FoundCells cells;
    if (!options.rect.isEmpty()) {
        const auto n = numbersOf(options.rect, 4, QStringLiteral("--rect"));
        if (n[0] == n[2] || n[1] == n[3])
            failUsage(QStringLiteral("--rect %1: has no area").arg(options.rect));
        const QRectF rect = QRectF(QPointF(n[0], n[1]), QPointF(n[2], n[3])).normalized();
        if (!options.centers)
            return ofShares(sharesWithRect(geography, rect));
        cells.pixels = centersInRect(geography, rect);
    } else if (!options.circle.isEmpty()) {
        const auto n = numbersOf(options.circle, 3, QStringLiteral("--circle"));
        if (n[2] <= 0)
            failUsage(QStringLiteral("--circle %1: the radius is above 0").arg(options.circle));
        VORN_QueryRasterWithCircle(geography, QPointF(n[0], n[1]), n[2], cells.pixels);
    } else if (!options.ellipse.isEmpty()) {
        const auto n = numbersOf(options.ellipse, 5, QStringLiteral("--ellipse"));
        if (n[2] <= 0 || n[3] <= 0)
            failUsage(QStringLiteral("--ellipse %1: its axes are above 0").arg(options.ellipse));
        VORN_QueryRasterWithEllipse(geography, QPointF(n[0], n[1]), n[2], n[3], n[4] * kRadian,
                                    false, cells.pixels);
    } else if (!options.polygon.isEmpty()) {
        return inPolygon(geography, ringsOfFile(options.polygon), options.centers);
    } else {
        return inPolygon(geography, ringsOfObject(options.in, time), options.centers);
    }
    return cells;
}

void print(const FoundCells &cells, int dataset, qint64 time, int realization,
           const Console &console)
{
    const int geography = VORN_GetGeographyId(dataset);
    const auto &source =
        *dynamic_cast<const MRasterDataSource *>(geographyOf(geography)->GetDataSource());
    CellReader values(dataset, time, realization);
    QJsonArray json;
    TextTable table({{QStringLiteral("column"), TextTable::Right},
                     {QStringLiteral("row"), TextTable::Right},
                     {QStringLiteral("x"), TextTable::Right},
                     {QStringLiteral("y"), TextTable::Right},
                     {QStringLiteral("area"), TextTable::Right},
                     {QStringLiteral("value"), TextTable::Right}});
    for (int i = 0; i < cells.pixels.size(); ++i) {
        const auto [column, row] = cells.pixels[i];
        QPointF center;
        source.GetPixelCenter(column, row, center);
        const double value = values.at(column, row);
        QJsonObject cell{{QStringLiteral("column"), static_cast<int>(column)},
                         {QStringLiteral("row"), static_cast<int>(row)},
                         {QStringLiteral("x"), center.x()},
                         {QStringLiteral("y"), center.y()},
                         {QStringLiteral("value"), jsonNumber(value)}};
        if (!cells.areas.isEmpty())
            cell.insert(QStringLiteral("area"), cells.areas[i]);
        json.append(cell);
        table.add({QString::number(column), QString::number(row), shortNumber(center.x(), 9),
                   shortNumber(center.y(), 9),
                   cells.areas.isEmpty() ? QStringLiteral("-") : shortNumber(cells.areas[i], 9),
                   std::isnan(value) ? QStringLiteral("-") : cellText(dataset, value)});
    }
    if (console.json)
        console.print(QJsonObject{{QStringLiteral("dataset"), datasetName(dataset)},
                                  {QStringLiteral("count"), cells.pixels.size()},
                                  {QStringLiteral("cells"), json}});
    else
        table.print(console);
}

void run(const Options &options, const Context &context)
{
    int places = 0;
    for (const QString &place :
         {options.rect, options.circle, options.ellipse, options.polygon, options.in})
        places += !place.isEmpty();
    if (places != 1)
        failUsage(QStringLiteral("one of --rect, --circle, --ellipse, --polygon and --in"));
    if (options.centers && !(options.circle.isEmpty() && options.ellipse.isEmpty()))
        failUsage(
            QStringLiteral("--centers does not apply to circles and ellipses, whose cells are "
                           "always those with their centre inside"));
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int dataset = findDataset(options.dataset);
    if (!rasterOf(dataset))
        fail(QStringLiteral("%1 is no grid").arg(datasetName(dataset)));
    const int realization = realizationIndex(dataset, options.realization);
    const qint64 time = chooseTime(dataset, options.at, realization);
    print(ask(options, VORN_GetGeographyId(dataset), time), dataset, time, realization,
          context.console);
}

} // namespace

void addQuery(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("query", "List the cells of a grid in an area");
    projectArgument(command, options->project);
    command.text("DATASET", options->dataset, "The raster dataset").required();
    command.text("--rect", options->rect, "X0,Y0,X1,Y1: cells that intersect the rectangle");
    command.text("--circle", options->circle, "X,Y,RADIUS: cells with their centre in the circle");
    command.text("--ellipse", options->ellipse,
                 "X,Y,A,B,DEGREES: cells with their centre in the ellipse; A is the semi-axis "
                 "along the angle");
    command.text("--polygon", options->polygon, "A file of polygons: cells that share area");
    command.text("--in", options->in, "GEOGRAPHY/OBJECT of the project: the same");
    command.flag("--centers", options->centers,
                 "Cells with their centre in the rectangle or polygon");
    command.text("--at", options->at, "The time (default: the dataset's last)");
    realizationOption(command, options->realization);
    command.footer("Example:\n  meridor query rain.vorn pr_1999 --circle -80.8,35.2,0.5 --at "
                   "1999-09");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
