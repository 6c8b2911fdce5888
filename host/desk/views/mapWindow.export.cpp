// SPDX-License-Identifier: MIT
// What a map window exports: its picture, and the command line that draws the same.
#include "desk/views/mapWindow.h"
#include <QPainter>
#include <QSet>
#include <algorithm>
#include "core/project/catalog.h"
#include "core/project/text.h"
#include "core/render/choropleth.h"
#include "core/render/classes.h"
#include "core/render/mapPicture.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "desk/methods/fields.h"
#include "desk/views/canvas.h"
#include "desk/views/mapLayerView.h"

namespace meridor {

QSize MapWindow::contentSize() const
{
    return mCanvas->size().expandedTo(QSize(320, 200));
}

/// Without the time, which pictures show below it.
QString MapWindow::pictureTitle() const
{
    if (!mOwnTitle.isEmpty())
        return mOwnTitle;
    QStringList names;
    for (int i = mLayers.size() - 1; i >= 0; --i)
        if (mLayers[i]->isVisible())
            names.append(mLayers[i]->title());
    return names.join(QStringLiteral(", "));
}

void MapWindow::draw(QPainter &painter, const QSize &size)
{
    if (mLayers.isEmpty())
        return;
    const MapLayerView &base = baseLayer() ? *baseLayer() : *mLayers.first();
    const int geography = base.geography();
    const ViewTransform &view = mCanvas->view();
    MapPicture picture;
    picture.size.pixels = size;
    picture.texts.title = pictureTitle();
    picture.texts.subtitle =
        base.isTimed() ? axisOf(geography).show(base.time()) : geographyName(geography);
    if (base.classes())
        picture.texts.footnote =
            mapFootnote(base.dataset(), base.drawn(), *base.classes(),
                        base.hasAllTimes() && !datasetOf(base.dataset())->IsStatic()
                            ? QStringLiteral(" of all times")
                            : QString(),
                        base.realizationOf(base.dataset()));
    picture.geographic = isGeographic(geography);
    picture.metresPerUnit = metresPerUnit(geography);
    picture.isFramed = true;
    picture.frame = view.visible();
    MapPanel panel;
    bool isAnySelected = false;
    for (MapLayerView *const layer : std::as_const(mLayers)) {
        if (!layer->isVisible())
            continue;
        panel.layers.append(layer->pictureLayer(view));
        LegendBlock block = layer->legend();
        block.title = layer->title(); // the footnote tells the realization
        if (block.entries.isEmpty())
            block = {QString(),
                     {{colors::softInk, block.title, layer->drawn(),
                       VORN_GetGeographyProperties(layer->geography()).type == GeoProps::Points
                           ? LegendEntry::Dot
                           : LegendEntry::Line}}};
        picture.legend.insert(layer == &base ? 0 : picture.legend.size(), block);
        isAnySelected = isAnySelected || workspace().selection().count(layer->geography()) > 0;
    }
    if (isAnySelected)
        picture.legend.append({QString(), {{colors::selected, tr("selected")}}});
    panel.links = mCanvas->links();
    picture.panels.append(panel);
    drawMap(painter, picture);
}

namespace {

constexpr int kMostMarks = 500; ///< of a command line

/// The settings of the command line for classes, without their dashes, and their values; those of
/// flags are null.
QVector<QPair<QString, QString>> classSettings(const MapLayerView &layer)
{
    const ClassRule &rule = layer.rule();
    const MDataset &dataset = *datasetOf(layer.dataset());
    QVector<QPair<QString, QString>> settings;
    const auto add = [&settings](const char *name, const QString &value) {
        settings.append({QLatin1String(name), value});
    };
    if (!rule.limits.isEmpty()) {
        QStringList limits;
        for (const double limit : rule.limits)
            limits.append(exactNumber(limit));
        add("breaks", limits.join(QLatin1Char(',')));
    } else {
        if (!rule.method.isEmpty())
            add("method", rule.method);
        const bool counts = rule.method.isEmpty() || classificationNames().contains(rule.method);
        if (counts && dataset.IsNumeric() && rule.count != ClassRule().count)
            add("count", QString::number(rule.count));
    }
    if (!rule.palette.isEmpty())
        add("palette", rule.palette);
    if (rule.reversed)
        add("reverse", QString());
    if (layer.hasAllTimes() && !dataset.IsStatic())
        add("all-times", QString());
    return settings;
}

/// The word of a layer that is not the base of the map: its name, and its settings.
QString layerWord(const MapLayerView &layer, const MapLayerView &base, bool isBelow)
{
    QString word =
        layer.dataset() < 0 ? geographyName(layer.geography()) : datasetWord(layer.dataset());
    QStringList settings;
    if (layer.dataset() >= 0) {
        for (const auto &[name, value] : classSettings(layer))
            settings.append(value.isNull() ? name : name + QLatin1Char('=') + value);
        // Without settings the command chooses colours that the other layers do not have.
        const bool isNumeric = datasetOf(layer.dataset())->IsNumeric();
        if (layer.rule().limits.isEmpty() && layer.rule().method.isEmpty())
            settings.prepend(QStringLiteral("method=")
                             + (isNumeric ? QStringLiteral("jenks") : QStringLiteral("unique")));
    }
    if (layer.geography() != base.geography() && layer.isTimed())
        settings.append(QStringLiteral("at=") + axisOf(layer.geography()).show(layer.time()));
    if (isBelow)
        settings.append(QStringLiteral("below"));
    if (!settings.isEmpty())
        word += QLatin1Char(':') + settings.join(QLatin1Char(','));
    return word;
}

} // namespace

/// The lowest visible layer of a dataset, whose map a command draws; null without one.
const MapLayerView *MapWindow::baseLayer() const
{
    const auto found = std::find_if(mLayers.begin(), mLayers.end(), [](const MapLayerView *layer) {
        return layer->isVisible() && layer->dataset() >= 0;
    });
    return found == mLayers.end() ? nullptr : *found;
}

/// The selected objects of visible layers as the command names them.
QStringList MapWindow::marks(const MapLayerView &base) const
{
    QStringList words;
    QSet<int> told;
    for (const MapLayerView *const layer : mLayers) {
        const int geography = layer->geography();
        if (!layer->isVisible() || told.contains(geography))
            continue;
        told.insert(geography);
        const GeoProps props = VORN_GetGeographyProperties(geography);
        const bool isGrid = props.type == GeoProps::Raster;
        const QString prefix =
            geography == base.geography() ? QString() : geographyName(geography) + QLatin1Char('/');
        const QVector<unsigned int> selected = workspace().selection().selected(geography);
        if (selected.isEmpty() || selected.size() + words.size() > kMostMarks)
            continue;
        const QStringList keys = isGrid ? QStringList() : objectKeys(geography);
        for (const unsigned int object : selected) {
            const int cell = static_cast<int>(object);
            words.append(
                prefix
                + (isGrid
                       ? QStringLiteral("%1,%2").arg(cell % props.columns).arg(cell / props.columns)
                       : keys.value(cell)));
        }
    }
    return words;
}

QString MapWindow::untold() const
{
    if (!baseLayer())
        return tr("No command draws a map without a dataset.");
    qint64 selected = 0;
    QSet<int> geographies;
    for (const MapLayerView *const layer : mLayers)
        if (layer->isVisible() && !geographies.contains(layer->geography())) {
            geographies.insert(layer->geography());
            selected += workspace().selection().count(layer->geography());
        }
    return selected > kMostMarks
               ? tr("The picture marks %1 objects; a command line names at most %2.")
                     .arg(selected)
                     .arg(kMostMarks)
               : QString();
}

QStringList MapWindow::commandLine(const QString &picture) const
{
    const MapLayerView *const first = baseLayer();
    if (!first)
        return {};
    const MapLayerView &base = *first;
    QStringList line{QStringLiteral("map"), workspace().commandPath(), datasetWord(base.dataset()),
                     picture};
    const auto option = [&line](const char *name, const QString &value) {
        line << QLatin1String(name) << value;
    };
    if (base.isTimed())
        option("--at", axisOf(base.geography()).show(base.time()));
    for (const auto &[name, value] : classSettings(base)) {
        line << QStringLiteral("--") + name;
        if (!value.isNull())
            line << value;
    }
    for (const MapLayerView *const layer : mLayers) {
        if (layer == first || !layer->isVisible())
            continue;
        const bool isBelow = mLayers.indexOf(const_cast<MapLayerView *>(layer))
                             < mLayers.indexOf(const_cast<MapLayerView *>(first));
        option("--layer", layerWord(*layer, base, isBelow));
    }
    workspace().look([&] {
        for (const QString &mark : marks(base))
            option("--mark", mark);
    });
    if (mHasLinksOfAll && mLinkedSet >> 16 == base.geography())
        option("--links", weightSetWord(mLinkedSet));
    // Without it the command shows the whole of its dataset, in the shape of that.
    const QRectF seen = mCanvas->view().visible();
    option("--extent", QStringList{exactNumber(seen.left()), exactNumber(seen.top()),
                                   exactNumber(seen.right()), exactNumber(seen.bottom())}
                           .join(QLatin1Char(',')));
    if (pictureTitle() != datasetName(base.dataset()))
        option("--title", pictureTitle());
    line += sizeOptions(picture);
    return line + realizationOption();
}

} // namespace meridor
