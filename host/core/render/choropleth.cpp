// SPDX-License-Identifier: MIT
#include "core/render/choropleth.h"
#include <algorithm>
#include <cmath>
#include "core/grids/valuesAt.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/shapeAccess.h"
#include "core/project/text.h"
#include "core/render/classes.h"
#include "core/render/mapGeometry.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/MVectorData.h"
#include "datainterface/WeightsAPI.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "fennimark/HeldObject.h"

namespace meridor {
namespace {

constexpr int kMostCells = 4096; ///< rows and columns of a grid that are kept for drawing
/// Palettes of the layers above the first one.
constexpr const char *kLayerPalettes[] = {"ember", "heather", "YlGn", "slate"};

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

/// The shape of an object that exists at the time.
MapShape shapeOf(const MVectorData &geography, int object, qint64 time)
{
    const Fennims &shapes = *geography.GetFennims();
    const FMObjectChain *chain =
        shapes.GetChainById(geography.GetFennimId(static_cast<unsigned int>(object)));
    const fennimark::HeldObject held(*shapes.mTree, chain->GetObservation(time).second);
    return toMapShape(held.get());
}

const MVectorData &vectorOf(int geography)
{
    const auto *vector = dynamic_cast<const MVectorData *>(geographyOf(geography));
    if (!vector)
        fail(QStringLiteral("%1 is a grid, whose cells have neither labels nor links on a map")
                 .arg(geographyName(geography)));
    return *vector;
}

QVector<QColor> colorsOf(const Classification &classes)
{
    QVector<QColor> colors;
    for (const LegendEntry &entry : classes.entries())
        colors.append(entry.color);
    return colors;
}

FMProjectionInfo projectionOf(int geography)
{
    FMProjectionInfo info;
    if (const auto *vector = dynamic_cast<const MVectorData *>(geographyOf(geography)))
        info = vector->GetFennims()->GetProjectionSettings();
    else
        FMProjectionInfo::FromWkt(projectionText(geography), info);
    return info;
}

/// 0 if the unit is not known.
double metresPerUnit(const FMProjectionInfo &projection)
{
    if (projection.GetProjectionName().isEmpty())
        return 0;
    const QString unit = projection.GetLinUnitName().toLower().remove(QLatin1Char('_'));
    if (unit.contains(QLatin1String("kilomet")))
        return 1000;
    if (unit.startsWith(QLatin1String("met")) || unit == QLatin1String("m"))
        return 1;
    if (unit.contains(QLatin1String("foot")) || unit.contains(QLatin1String("feet")))
        return unit.contains(QLatin1String("us")) ? 1200.0 / 3937 : 0.3048;
    return 0;
}

/// A time of one geography among the times of another.
qint64 translated(qint64 time, int from, int to)
{
    const TimeAxis source = axisOf(from);
    const TimeAxis target = axisOf(to);
    if (source.format() == target.format() || geographyOf(to)->IsStatic())
        return time;
    const auto span = target.span(source.show(time));
    if (!span)
        fail(QStringLiteral("%1 is no time of %2").arg(source.show(time), geographyName(to)));
    return span->startTime;
}

/// The extent of the whole geography; with a margin unless it is a grid.
QRectF wholeExtent(int geography)
{
    const auto *vector = dynamic_cast<const MVectorData *>(geographyOf(geography));
    if (!vector)
        return VORN_GetGeographyProperties(geography).bounds;
    const RectInT box = vector->GetFennims()->GetBoundingRect();
    const double room = 0.03 * std::max(box.xMax - box.xMin, box.yMax - box.yMin);
    return QRectF(box.xMin, box.yMin, box.xMax - box.xMin, box.yMax - box.yMin)
        .adjusted(-room, -room, room, room);
}

/// What a layer holds at a time, and how many values are in each class.
struct LayerAt {
    MapLayer layer;
    QVector<qint64> counts;
    qint64 missing = 0;
    qint64 drawn = 0;
};

LayerAt gridAt(int dataset, qint64 time, const Classification &classes, int realization,
               const QSet<int> &marked)
{
    const MRasterDataset &raster = *rasterOf(dataset);
    const MRasterObservation *observation = raster.GetConstRasterInfo(realization, time);
    const int geography = VORN_GetGeographyId(dataset);
    if (!observation)
        fail(QStringLiteral("%1 holds no grid at %2")
                 .arg(datasetName(dataset), axisOf(geography).show(time)));
    const HeldGrid hold(*observation);
    const GeoProps props = VORN_GetGeographyProperties(geography);
    LayerAt result;
    result.counts.resize(classes.entries().size());
    result.layer.colors = colorsOf(classes);
    MapGrid &grid = result.layer.grid;
    grid.bounds = props.bounds;
    grid.rows = std::min(props.rows, kMostCells);
    grid.columns = std::min(props.columns, kMostCells);
    grid.classes.fill(MapGrid::kMissing, grid.rows * grid.columns);
    const MissingFlag flag = raster.GetMissingFlag();
    const auto classAt = [&](int column, int row) {
        double value = 0;
        return observation->GetValueAsDecimal(column, row, value, flag) ? classes.of(value) : -1;
    };
    for (int row = 0; row < props.rows; ++row) {
        if (row % 16 == 0)
            stopIfCancelled();
        for (int column = 0; column < props.columns; ++column) {
            const int index = classAt(column, row);
            ++(index < 0 ? result.missing : result.counts[index]);
        }
    }
    for (int row = 0; row < grid.rows; ++row) {
        const int from = static_cast<int>((row + 0.5) * props.rows / grid.rows);
        for (int column = 0; column < grid.columns; ++column) {
            const int across = static_cast<int>((column + 0.5) * props.columns / grid.columns);
            const int index = classAt(across, from);
            quint8 &cell = grid.classes[row * grid.columns + column];
            if (!marked.isEmpty() && marked.contains(from * props.columns + across))
                cell = MapGrid::kMarked;
            else if (index >= 0)
                cell = static_cast<quint8>(index);
        }
    }
    result.drawn = static_cast<qint64>(props.rows) * props.columns;
    return result;
}

/// The shapes of the objects that exist at a time; without classes if there is no classification.
LayerAt shapesAt(int geography, qint64 time, int dataset, const Classification *classes,
                 int realization, const QSet<int> &marked)
{
    const MVectorData &vector = vectorOf(geography);
    const qint64 when = shapeTime(geography, time);
    const QVector<int> existing = objectsAt(geography, when);
    LayerAt result;
    ValuesAt values;
    if (classes) {
        values = valuesAt(dataset, time, realization);
        result.layer.colors = colorsOf(*classes);
        result.counts.resize(classes->entries().size());
    }
    for (int i = 0; i < existing.size(); ++i) {
        if (i % 64 == 0)
            stopIfCancelled();
        MapShape shape = shapeOf(vector, existing[i], when);
        if (classes) {
            shape.classIndex = classes->of(values, existing[i]);
            ++(shape.classIndex < 0 ? result.missing : result.counts[shape.classIndex]);
        }
        shape.isMarked = marked.contains(existing[i]);
        result.layer.shapes.append(shape);
    }
    result.drawn = existing.size();
    return result;
}

LayerAt layerAt(int dataset, qint64 time, const Classification &classes, int realization,
                const QHash<int, QSet<int>> &marked)
{
    const int geography = VORN_GetGeographyId(dataset);
    return rasterOf(dataset)
               ? gridAt(dataset, time, classes, realization, marked.value(geography))
               : shapesAt(geography, time, dataset, &classes, realization, marked.value(geography));
}

/// A place for the ends of links: the centroid of an area, else the middle of the extent.
QPointF middleOf(const TreeObject *object, const MapShape &shape)
{
    double x = 0;
    double y = 0;
    const auto *polygon = dynamic_cast<const FMPolygon *>(object);
    return polygon && polygon->GetCentroid(x, y) ? QPointF(x, y) : boundsOf(shape.parts).center();
}

/// Draws each pair of neighbours once. @return the number of links, each direction counted.
qint64 addLinks(MapPanel &panel, int set, qint64 time)
{
    const int geography = set >> 16;
    const MVectorData &vector = vectorOf(geography);
    const Fennims &shapes = *vector.GetFennims();
    const qint64 when = shapeTime(geography, time);
    const QVector<int> existing = objectsAt(geography, when);
    QVector<QPointF> middles(static_cast<int>(vector.GetObjectCount()));
    for (const int object : existing) {
        stopIfCancelled();
        const FMObjectChain *chain =
            shapes.GetChainById(vector.GetFennimId(static_cast<unsigned int>(object)));
        const fennimark::HeldObject held(*shapes.mTree, chain->GetObservation(when).second);
        middles[object] = middleOf(held.get(), toMapShape(held.get()));
    }
    const WeightsAtT lists = VORN_GetSpatialWeightsHandle(set, when, true);
    stopIfCancelled();
    qint64 count = 0;
    QSet<QPair<int, int>> drawn;
    QVector<neighborDatum> neighbors;
    for (const int object : existing) {
        stopIfCancelled();
        if (!VORN_GetSpatialWeights(lists, static_cast<unsigned int>(object), neighbors,
                                    VORN_MissingData()))
            fail(QStringLiteral("the weight set has no lists at %1")
                     .arg(axisOf(geography).show(time)));
        int others = 0;
        for (const neighborDatum &neighbor : neighbors) {
            if (neighbor.id == object || neighbor.id < 0 || neighbor.id >= middles.size())
                continue;
            ++others;
            const auto pair =
                qMakePair(std::min(object, neighbor.id), std::max(object, neighbor.id));
            if (drawn.contains(pair))
                continue;
            drawn.insert(pair);
            panel.links.append(QLineF(middles[object], middles[neighbor.id]));
        }
        count += others;
        if (others == 0)
            panel.islands.append(middles[object]);
    }
    return count;
}

void addLabels(MapPanel &panel, int field, qint64 time, int realization)
{
    const int geography = VORN_GetGeographyId(field);
    const MVectorData &vector = vectorOf(geography);
    const ValuesAt values = valuesAt(field, time, realization);
    const qint64 when = shapeTime(geography, time);
    for (const int object : objectsAt(geography, when)) {
        stopIfCancelled();
        if (values.missing.contains(object))
            continue;
        const MapShape shape = shapeOf(vector, object, when);
        panel.labels.append(
            {values.numeric ? shortNumber(values.numbers[object]) : values.texts[object],
             shape.parts, shape.kind == MapShape::Area});
    }
}

QString numbered(qint64 count, const QString &what)
{
    return grouped(static_cast<double>(count), 0) + QLatin1Char(' ') + what;
}

/// @param plural a noun that ends in "s".
QString counted(qint64 count, const QString &plural)
{
    return numbered(count, count == 1 ? plural.chopped(1) : plural);
}

} // namespace

LegendBlock legendOf(int dataset, const Classification &classes, const QVector<qint64> &counts,
                     qint64 missing, bool isCounted)
{
    LegendBlock block{datasetName(dataset), classes.entries()};
    const int type = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).type;
    for (int i = 0; i < block.entries.size(); ++i) {
        block.entries[i].count = isCounted ? counts[i] : -1;
        block.entries[i].symbol = type == GeoProps::Points  ? LegendEntry::Dot
                                  : type == GeoProps::Lines ? LegendEntry::Line
                                                            : LegendEntry::Box;
    }
    if (!classes.limits().isEmpty()) // the largest class is on top
        std::reverse(block.entries.begin(), block.entries.end());
    if (missing > 0)
        block.entries.append(
            {QColor(), QStringLiteral("no value"), isCounted ? missing : -1, LegendEntry::Hatch});
    return block;
}

bool isGeographic(int geography)
{
    const FMProjectionInfo projection = projectionOf(geography);
    return projection.GetProjectionName().isEmpty() && !projection.GetGeographicCSName().isEmpty();
}

double metresPerUnit(int geography)
{
    return metresPerUnit(projectionOf(geography));
}

QString mapFootnote(int dataset, qint64 drawn, const Classification &classes, const QString &whose,
                    int realization)
{
    const int geography = VORN_GetGeographyId(dataset);
    const auto type = VORN_GetGeographyProperties(geography).type;
    const QString kind = type == GeoProps::Raster ? QStringLiteral("cells")
                                                  : QString(QLatin1String(shapeName(type)));
    QString note = (drawn >= 0 ? counted(drawn, kind) : kind) + QStringLiteral(" of ")
                   + geographyName(geography);
    if (!classes.description().isEmpty())
        note += QStringLiteral(", ") + classes.description() + whose;
    const QString shown = realizationText(dataset, realization);
    return shown.isEmpty() ? note : note + QStringLiteral(", ") + shown;
}

/// The layers above and below the first one, with their classes.
class FurtherLayers {
public:
    FurtherLayers(int source, const MapStyle &style, const QVector<qint64> &times)
        : mSource(source), mLayers(style.layers), mMarked(style.marked)
    {
        for (int i = 0; i < mLayers.size(); ++i) {
            const MapLayerStyle &layer = mLayers[i];
            if (layer.dataset < 0) {
                mClasses.append(nullptr);
                continue;
            }
            ClassRule rule = layer.rule.value_or(ClassRule());
            if (!layer.rule) {
                rule.count = style.rule.count;
                if (datasetOf(layer.dataset)->IsNumeric())
                    rule.palette = QLatin1String(kLayerPalettes[i % 4]);
            }
            if (!layer.palette.isEmpty())
                rule.palette = layer.palette;
            QVector<qint64> own;
            for (int t = 0; t < times.size() && !layer.allTimes; ++t)
                own.append(timeOf(layer, times[t]));
            mClasses.append(
                std::make_shared<Classification>(layer.dataset, own, rule, layer.realization));
        }
    }
    /// How many are below the dataset.
    int countBelow() const
    {
        return static_cast<int>(
            std::count_if(mLayers.begin(), mLayers.end(),
                          [](const MapLayerStyle &each) { return each.isBelow; }));
    }
    /// Adds a layer to the panel, which holds that of the dataset, and a block to the legend for
    /// each.
    void addTo(MapPanel &panel, qint64 time, QVector<LegendBlock> &legend, bool isCounted) const
    {
        int below = 0;
        for (int i = 0; i < mLayers.size(); ++i) {
            const MapLayerStyle &layer = mLayers[i];
            const qint64 own = timeOf(layer, time);
            const LayerAt found =
                mClasses[i] ? layerAt(layer.dataset, own, *mClasses[i], layer.realization, mMarked)
                            : shapesAt(layer.geography, own, -1, nullptr, 0,
                                       mMarked.value(layer.geography));
            panel.layers.insert(layer.isBelow ? below++ : panel.layers.size(), found.layer);
            if (mClasses[i])
                legend.append(
                    legendOf(layer.dataset, *mClasses[i], found.counts, found.missing, isCounted));
            else
                legend.append(
                    {QString(),
                     {{colors::softInk, geographyName(layer.geography),
                       isCounted ? found.drawn : -1,
                       VORN_GetGeographyProperties(layer.geography).type == GeoProps::Points
                           ? LegendEntry::Dot
                           : LegendEntry::Line}}});
        }
    }

private:
    /// @param time  of the dataset.
    qint64 timeOf(const MapLayerStyle &layer, qint64 time) const
    {
        return layer.time ? *layer.time : translated(time, mSource, layer.geography);
    }

    int mSource;
    QVector<MapLayerStyle> mLayers;
    QHash<int, QSet<int>> mMarked;
    QVector<std::shared_ptr<Classification>> mClasses;
};

MapMaker::MapMaker(int dataset, const QVector<qint64> &times, const QString &title,
                   const MapStyle &style)
    : mDataset(dataset),
      mGeography(VORN_GetGeographyId(dataset)),
      mTitle(title),
      mStyle(style),
      mManyTimes(times.size() > 1),
      mClasses(dataset, style.allTimes ? QVector<qint64>() : times, style.rule, style.realization),
      mFurther(std::make_unique<FurtherLayers>(mGeography, style, times))
{
}

MapMaker::~MapMaker() = default;

MapPicture MapMaker::picture(const QVector<qint64> &times, const QStringList &captions) const
{
    const bool isSingle = times.size() == 1;
    const GeoProps props = VORN_GetGeographyProperties(mGeography);
    const TimeAxis axis = axisOf(mGeography);
    MapPicture picture;
    picture.base = mFurther->countBelow();
    picture.size = mStyle.size;
    picture.geographic = isGeographic(mGeography);
    picture.metresPerUnit = meridor::metresPerUnit(mGeography);
    // The points of one time do not show the extent of the map, so the whole extent is used.
    picture.isFramed = props.type == GeoProps::Raster || props.type == GeoProps::Points;
    if (mStyle.allTimes || picture.isFramed || (isSingle && mManyTimes))
        picture.frame = wholeExtent(mGeography);
    if (!mStyle.extent.isEmpty()) {
        picture.isFramed = true;
        picture.frame = mStyle.extent;
    }

    qint64 missing = 0;
    QVector<LegendBlock> others;
    for (int i = 0; i < times.size(); ++i) {
        stopIfCancelled();
        picture.panels.append(panelAt(times[i], isSingle, others));
        missing += picture.panels.last().missing;
        if (!isSingle)
            picture.panels.last().caption = captions.value(i, axis.show(times[i]));
    }
    picture.legend.append(
        legendOf(mDataset, mClasses, picture.panels.first().counts, missing, isSingle));
    // Each panel appends the same further blocks.
    picture.legend += others.mid(0, others.size() / times.size());
    if (!mStyle.marked.isEmpty())
        picture.legend.append({QString(), {{colors::selected, QStringLiteral("selected")}}});

    const QString note =
        mapFootnote(mDataset, isSingle ? picture.panels.first().drawn : -1, mClasses,
                    mStyle.allTimes ? QStringLiteral(" of all times")
                    : mManyTimes    ? QStringLiteral(" of these times")
                                    : QString(),
                    mStyle.realization);
    picture.texts = {mTitle,
                     !mStyle.subtitle.isEmpty() ? mStyle.subtitle
                     : isSingle                 ? captions.value(0, axis.show(times.first()))
                                                : geographyName(mGeography),
                     note};
    return picture;
}

MapPanel MapMaker::panelAt(qint64 time, bool isSingle, QVector<LegendBlock> &legend) const
{
    const bool isGrid = rasterOf(mDataset);
    if (!isGrid && objectsAt(mGeography, shapeTime(mGeography, time)).isEmpty())
        fail(QStringLiteral("no object of %1 exists at %2")
                 .arg(geographyName(mGeography), axisOf(mGeography).show(time)));
    MapPanel panel;
    const LayerAt first = layerAt(mDataset, time, mClasses, mStyle.realization, mStyle.marked);
    panel.layers.append(first.layer);
    panel.counts = first.counts;
    panel.missing = first.missing;
    panel.drawn = first.drawn;
    QStringList notes;
    if (!isGrid)
        notes.append(counted(
            first.drawn, QLatin1String(shapeName(VORN_GetGeographyProperties(mGeography).type))));
    if (first.missing > 0)
        notes.append(numbered(first.missing, QStringLiteral("without a value")));
    mFurther->addTo(panel, time, legend, isSingle);
    if (mStyle.weightSet >= 0) {
        panel.linkCount = addLinks(panel, mStyle.weightSet, time);
        notes.append(counted(panel.linkCount, QStringLiteral("links")));
        LegendBlock links{QString(),
                          {{colors::ink, QStringLiteral("links"), isSingle ? panel.linkCount : -1,
                            LegendEntry::Line}}};
        if (isSingle && !panel.islands.isEmpty())
            links.entries.append({Qt::white, QStringLiteral("no neighbours"), panel.islands.size(),
                                  LegendEntry::Dot});
        legend.append(links);
    }
    if (mStyle.labelField >= 0)
        addLabels(panel, mStyle.labelField, time, mStyle.labelRealization);
    if (!isSingle)
        panel.note = notes.join(QStringLiteral(", "));
    return panel;
}

MapPicture choropleth(const MapView &view, const MapStyle &style)
{
    const QVector<qint64> times{view.time};
    return MapMaker(view.dataset, times, view.title, style).picture(times);
}

} // namespace meridor
