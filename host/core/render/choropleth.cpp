// SPDX-License-Identifier: MIT
#include "core/render/choropleth.h"
#include <QBuffer>
#include <QFile>
#include <QMap>
#include <algorithm>
#include <cmath>
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/render/classes.h"
#include "core/render/palette.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"

namespace meridor {
namespace {

constexpr int kMostNames = 12;

MapShape toMapShape(const TreeObject *object)
{
    MapShape shape;
    if (const auto *polygon = dynamic_cast<const FMPolygon *>(object)) {
        for (const QPolygonF &ring : polygon->GetVertices())
            shape.parts.append(ring);
    } else if (const auto *line = dynamic_cast<const FMLine *>(object)) {
        shape.kind = MapShape::Line;
        for (const auto &part : line->GetVertices())
            shape.parts.append(part);
    } else if (const auto *point = dynamic_cast<const FMPoint *>(object)) {
        shape.kind = MapShape::Place;
        shape.parts.append({QPointF(point->x, point->y)});
    }
    return shape;
}

QString classText(double low, double high, int decimals)
{
    if (low == high)
        return grouped(low, decimals);
    return grouped(low, decimals) + QStringLiteral(" \u2013 ") + grouped(high, decimals);
}

/// Classes of the values and the class of each object.
struct Classified {
    QVector<LegendEntry> legend;
    QVector<int> classes; ///< by object; -1: no value
};

Classified classifyNumbers(const MapView &view, const MapStyle &style, const ValuesAt &values)
{
    const auto method = classificationOf(style.method);
    const QVector<double> breaks = style.allTimes
                                       ? breaksOfAll(view.dataset, method, style.classes)
                                       : breaksAt(view.dataset, view.time, method, style.classes);
    Classified result;
    if (breaks.size() > 1) {
        const int decimals = decimalsFor(breaks);
        const QVector<QColor> colors = sequentialColors(style.palette, breaks.size() - 1);
        for (int i = 0; i + 1 < breaks.size(); ++i)
            result.legend.append({colors[i], classText(breaks[i], breaks[i + 1], decimals), 0});
    }
    for (int i = 0; i < values.numbers.size(); ++i)
        result.classes.append(values.missing.contains(i) ? -1 : classOf(values.numbers[i], breaks));
    return result;
}

Classified classifyTexts(const ValuesAt &values, const QVector<int> &existing)
{
    QMap<QString, int> counts;
    for (const int object : existing)
        if (!values.missing.contains(object))
            ++counts[values.texts.value(object)];
    QStringList names = counts.keys();
    std::stable_sort(names.begin(), names.end(), [&counts](const QString &a, const QString &b) {
        return counts[a] > counts[b];
    });
    const bool tooMany = names.size() > kMostNames;
    if (tooMany)
        names = names.mid(0, kMostNames - 1);
    Classified result;
    const QVector<QColor> colors = categoricalColors(names.size());
    for (int i = 0; i < names.size(); ++i)
        result.legend.prepend(
            {colors[i], names[i], 0}); // the legend is drawn from its last entry to its first
    if (tooMany)
        result.legend.prepend({QColor(0xe8, 0xe6, 0xdf), QStringLiteral("others"), 0});
    const int last = result.legend.size() - 1;
    for (int i = 0; i < values.texts.size(); ++i) {
        const int known = names.indexOf(values.texts[i]);
        result.classes.append(values.missing.contains(i) ? -1 : known < 0 ? 0 : last - known);
    }
    return result;
}

QString methodText(const MapStyle &style)
{
    QString text = style.method == QLatin1String("equal") ? QStringLiteral(", equal intervals")
                   : style.method == QLatin1String("quantile")
                       ? QStringLiteral(", classes of equal size")
                       : QStringLiteral(", natural breaks");
    if (style.allTimes)
        text += QStringLiteral(" of all times");
    return text;
}

/// The extent of the whole geography with a margin.
QRectF wholeExtent(const Fennims &shapes)
{
    const RectInT box = shapes.GetBoundingRect();
    const double room = 0.03 * std::max(box.xMax - box.xMin, box.yMax - box.yMin);
    return QRectF(box.xMin, box.yMin, box.xMax - box.xMin, box.yMax - box.yMin)
        .adjusted(-room, -room, room, room);
}

void addShapes(MapPicture &picture, const MVectorData &geography, qint64 time,
               const QVector<int> &existing, const QVector<int> &classes)
{
    const Fennims &shapes = *geography.GetFennims();
    for (const int object : existing) {
        const FMObjectChain *chain =
            shapes.GetChainById(geography.GetFennimId(static_cast<unsigned int>(object)));
        const fennimark::HeldObject held(*shapes.mTree, chain->GetObservation(time).second);
        MapShape shape = toMapShape(held.get());
        shape.classIndex = classes.value(object, -1);
        if (shape.classIndex < 0)
            ++picture.missingCount;
        else
            ++picture.legend[shape.classIndex].count;
        picture.shapes.append(shape);
    }
}

} // namespace

MapPicture choropleth(const MapView &view, const MapStyle &style)
{
    const int id = VORN_GetGeographyId(view.dataset);
    const auto *geography = dynamic_cast<const MVectorData *>(geographyOf(id));
    if (!geography)
        fail(QStringLiteral("%1 is no vector geography").arg(geographyName(id)));
    const TimeAxis axis = axisOf(id);
    const ValuesAt values = valuesAt(view.dataset, view.time);
    const qint64 time = shapeTime(id, view.time);
    const QVector<int> existing = objectsAt(id, time);
    if (existing.isEmpty())
        fail(QStringLiteral("no object of %1 exists at %2")
                 .arg(geographyName(id), axis.show(view.time)));
    const Classified classified =
        values.numeric ? classifyNumbers(view, style, values) : classifyTexts(values, existing);
    const Fennims &shapes = *geography->GetFennims();
    const FMProjectionInfo projection = shapes.GetProjectionSettings();

    MapPicture picture;
    picture.title = view.title;
    picture.subtitle = style.subtitle;
    picture.legendTitle = datasetName(view.dataset);
    picture.legend = classified.legend;
    picture.size = style.size;
    picture.geographic =
        projection.GetProjectionName().isEmpty() && !projection.GetGeographicCSName().isEmpty();
    // The points of one time do not show the extent of the map, so the whole extent is used.
    if (style.allTimes || shapes.GetGeographyType() == Fennims::PointGeography)
        picture.frame = wholeExtent(shapes);
    addShapes(picture, *geography, time, existing, classified.classes);
    picture.footnote = QStringLiteral("%1 %2 of %3%4")
                           .arg(picture.shapes.size())
                           .arg(QLatin1String(shapeName(VORN_GetGeographyProperties(id).type)),
                                geographyName(id), values.numeric ? methodText(style) : QString());
    return picture;
}

void savePicture(const QImage &image, const QString &path)
{
    const bool written = replaceFile(path, [&image](const QString &beside) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        QFile file(beside);
        return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG")
               && file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()
               && file.flush();
    });
    if (!written)
        fail(QStringLiteral("%1: could not be written").arg(path));
}

} // namespace meridor
