// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>
#include <cstring>
#include "core/report/page.h"

namespace meridor {
namespace {

template <class Numbers> QJsonArray array(const Numbers &numbers)
{
    QJsonArray result;
    for (const auto &number : numbers)
        result.append(number);
    return result;
}

QJsonValue number(double value)
{
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue(QJsonValue::Null);
}

/// Values as little-endian floats in base 64, which is half as long as decimal digits.
QString packed(const QVector<double> &cells)
{
    QByteArray bytes;
    bytes.reserve(cells.size() * 4);
    for (const double cell : cells) {
        const auto narrow = static_cast<float>(cell);
        quint32 bits = 0;
        std::memcpy(&bits, &narrow, sizeof bits);
        for (int shift = 0; shift < 32; shift += 8)
            bytes.append(static_cast<char>(bits >> shift & 0xff));
    }
    return QString::fromLatin1(bytes.toBase64());
}

/// All values of a row; if most are missing, only the others with their objects.
QJsonValue row(const QVector<double> &values)
{
    QJsonArray objects;
    QJsonArray there;
    QJsonArray all;
    for (int i = 0; i < values.size(); ++i) {
        all.append(number(values[i]));
        if (std::isnan(values[i]))
            continue;
        objects.append(i);
        there.append(values[i]);
    }
    if (2 * there.size() > values.size())
        return all;
    return QJsonObject{{QStringLiteral("objects"), objects}, {QStringLiteral("values"), there}};
}

QJsonObject toJson(const ReportLayer &layer, bool isGrid)
{
    QJsonArray rows;
    for (const QVector<double> &values : layer.rows)
        rows.append(isGrid ? QJsonValue(packed(values)) : row(values));
    QJsonArray views;
    for (const LayerView &view : layer.views)
        views.append(QJsonObject{{QStringLiteral("name"), view.name},
                                 {QStringLiteral("relative"), view.relative},
                                 {QStringLiteral("breaks"), array(view.breaks)},
                                 {QStringLiteral("colors"), array(view.colors)}});
    return {{QStringLiteral("name"), layer.name},          {QStringLiteral("type"), layer.type},
            {QStringLiteral("isText"), layer.isText},      {QStringLiteral("always"), layer.always},
            {QStringLiteral("steps"), array(layer.steps)}, {QStringLiteral("rows"), rows},
            {QStringLiteral("words"), array(layer.words)}, {QStringLiteral("views"), views},
            {QStringLiteral("view"), layer.view}};
}

QJsonObject toJson(const ReportShapes &shapes)
{
    QJsonArray arcs;
    for (const QVector<int> &arc : shapes.arcs)
        arcs.append(array(arc));
    QJsonArray parts;
    for (const auto &shape : shapes.shapes) {
        QJsonArray rings;
        for (const QVector<int> &ring : shape)
            rings.append(array(ring));
        parts.append(rings);
    }
    QJsonArray places;
    for (const QPoint &place : shapes.places)
        places.append(QJsonArray{place.x(), place.y()});
    QJsonArray objects;
    for (const auto &changes : shapes.objects) {
        QJsonArray flat;
        for (const ShapeChange &change : changes) {
            flat.append(change.step);
            flat.append(change.shape);
        }
        objects.append(flat);
    }
    return {{QStringLiteral("width"), shapes.size.width()},
            {QStringLiteral("height"), shapes.size.height()},
            {QStringLiteral("arcs"), arcs},
            {QStringLiteral("shapes"), parts},
            {QStringLiteral("places"), places},
            {QStringLiteral("objects"), objects}};
}

QJsonObject toJson(const ReportLinks &links)
{
    QJsonArray states;
    for (const LinkState &state : links.states) {
        QJsonArray neighbors;
        for (const QVector<int> &list : state.neighbors)
            neighbors.append(array(list));
        states.append(QJsonObject{{QStringLiteral("step"), state.step},
                                  {QStringLiteral("objects"), state.objects},
                                  {QStringLiteral("links"), static_cast<double>(state.links)},
                                  {QStringLiteral("islands"), array(state.islands)},
                                  {QStringLiteral("neighbors"), neighbors}});
    }
    return {{QStringLiteral("name"), links.name},
            {QStringLiteral("definition"), links.definition},
            {QStringLiteral("states"), states}};
}

QJsonObject toJson(const ReportMoran &moran)
{
    QJsonArray rows;
    for (const MoranRow &row : moran.rows)
        rows.append(QJsonObject{{QStringLiteral("step"), row.step},
                                {QStringLiteral("value"), row.value},
                                {QStringLiteral("expected"), number(row.expectation)},
                                {QStringLiteral("p"), number(row.p)},
                                {QStringLiteral("low"), number(row.low)},
                                {QStringLiteral("high"), number(row.high)}});
    return {{QStringLiteral("layer"), moran.layer},
            {QStringLiteral("set"), moran.set},
            {QStringLiteral("permutations"), moran.permutations},
            {QStringLiteral("seed"), moran.seed},
            {QStringLiteral("rows"), rows}};
}

QJsonObject toJson(const ReportGeography &geography)
{
    const bool isGrid = geography.columns > 0;
    QJsonArray steps;
    for (const ReportStep &step : geography.steps)
        steps.append(QJsonObject{{QStringLiteral("text"), step.text},
                                 {QStringLiteral("start"), double(step.when.startTime)},
                                 {QStringLiteral("end"), double(step.when.endTime)},
                                 {QStringLiteral("at"), double(step.instant)}});
    QJsonArray sideMaps;
    for (const SideMap &map : geography.sideMaps)
        sideMaps.append(QJsonObject{{QStringLiteral("step"), map.step},
                                    {QStringLiteral("layer"), map.layer},
                                    {QStringLiteral("text"), map.text}});
    QJsonObject object{{QStringLiteral("name"), geography.name},
                       {QStringLiteral("first"), geography.first},
                       {QStringLiteral("sideMaps"), sideMaps},
                       {QStringLiteral("kind"), geography.kind},
                       {QStringLiteral("steps"), steps},
                       {QStringLiteral("existence"), array(geography.existence)}};
    if (isGrid) {
        object.insert(QStringLiteral("grid"),
                      QJsonObject{{QStringLiteral("rows"), geography.rows},
                                  {QStringLiteral("columns"), geography.columns},
                                  {QStringLiteral("every"), geography.every},
                                  {QStringLiteral("ratio"), geography.cellRatio}});
    } else {
        object.insert(QStringLiteral("keys"), array(geography.keys));
        object.insert(QStringLiteral("labels"), array(geography.labels));
        object.insert(QStringLiteral("shapes"), toJson(geography.shapes));
    }
    QJsonArray layers;
    for (const ReportLayer &layer : geography.layers)
        layers.append(toJson(layer, isGrid));
    QJsonArray links;
    for (const ReportLinks &set : geography.links)
        links.append(toJson(set));
    QJsonArray moran;
    for (const ReportMoran &result : geography.moran)
        moran.append(toJson(result));
    object.insert(QStringLiteral("layers"), layers);
    object.insert(QStringLiteral("links"), links);
    object.insert(QStringLiteral("moran"), moran);
    return object;
}

} // namespace

QByteArray reportJson(const ReportProject &report)
{
    QJsonArray geographies;
    for (const ReportGeography &geography : report.geographies)
        geographies.append(toJson(geography));
    const QJsonObject root{{QStringLiteral("title"), report.title},
                           {QStringLiteral("geographies"), geographies}};
    return QJsonDocument(root).toJson(QJsonDocument::Compact).replace('<', "\\u003c");
}

} // namespace meridor
