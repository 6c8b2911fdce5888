// SPDX-License-Identifier: MIT
#include "desk/views/mapWindow.h"
#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QLabel>
#include <QScrollArea>
#include <QSplitter>
#include <QTimer>
#include <QToolBar>
#include <algorithm>
#include <cmath>
#include <memory>
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/classes.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"
#include "desk/views/canvas.h"
#include "desk/views/classPanel.h"
#include "desk/views/legendPanel.h"
#include "desk/views/mapLayerView.h"
#include "desk/views/viewFactory.h"

namespace meridor {
namespace {

constexpr int kLeastWithLegend = 26; ///< widths, in heights of the font
constexpr int kMostLinks = 400'000;  ///< drawn at once

QJsonObject toJson(const ClassRule &rule)
{
    QJsonArray limits;
    for (const double limit : rule.limits)
        limits.append(limit);
    return {{QStringLiteral("method"), rule.method},
            {QStringLiteral("count"), rule.count},
            {QStringLiteral("limits"), limits},
            {QStringLiteral("palette"), rule.palette},
            {QStringLiteral("reversed"), rule.reversed}};
}

ClassRule ruleOf(const QJsonObject &json)
{
    ClassRule rule;
    rule.method = json.value(QStringLiteral("method")).toString();
    rule.count = json.value(QStringLiteral("count")).toInt(rule.count);
    for (const QJsonValue &limit : json.value(QStringLiteral("limits")).toArray())
        rule.limits.append(limit.toDouble());
    rule.palette = json.value(QStringLiteral("palette")).toString();
    rule.reversed = json.value(QStringLiteral("reversed")).toBool();
    return rule;
}

/// -1 if there is no geography of this name.
int geographyNamed(const QString &name)
{
    for (const int id : geographyIds())
        if (geographyName(id) == name)
            return id;
    return -1;
}

int datasetNamed(int geography, const QString &name)
{
    for (const int id : datasetIds(geography))
        if (datasetName(id) == name)
            return id;
    return -1;
}

} // namespace

MapWindow::MapWindow(Workspace &workspace, QWidget *parent)
    : ViewWindow(workspace, {Tool::Rectangle, Tool::Lasso, Tool::Circle, Tool::Move}, parent),
      mCanvas(new MapCanvas(workspace)),
      mLegend(new LegendPanel),
      mClasses(new ClassPanel),
      mWeights(new QComboBox)
{
    setObjectName(QStringLiteral("mapWindow"));
    auto *const split = new QSplitter(Qt::Horizontal, this);
    auto *const side = new QSplitter(Qt::Vertical);
    auto *const scroll = new QScrollArea;
    scroll->setAccessibleName(tr("Classes and neighbours"));
    scroll->setWidget(mClasses);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    side->addWidget(mLegend);
    side->addWidget(scroll);
    side->setStretchFactor(0, 1);
    scroll->hide();
    mClassForm = scroll;
    mSide = side;
    split->addWidget(mCanvas);
    split->addWidget(side);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 0);
    setContent(split);
    setFocusProxy(mCanvas);

    toolBar().addSeparator();
    addTool(ViewIcon::Fit, tr("Show the whole map"), "zoomAll", QKeySequence(Qt::Key_Home),
            [this] { zoomToAll(); });
    addTool(ViewIcon::Focus, tr("Zoom to the selection"), "zoomSelection", QKeySequence(Qt::Key_Z),
            [this] { zoomToSelection(); });
    QAction *const edit = addTool(ViewIcon::Classes, tr("Edit the classes"), "editClasses",
                                  QKeySequence(Qt::Key_E), [] {});
    edit->setCheckable(true);
    connect(edit, &QAction::toggled, this, &MapWindow::editClasses);
    mWeights->setObjectName(QStringLiteral("weights"));
    mWeights->setAccessibleName(tr("Weight set whose neighbours are shown"));
    mWeights->setToolTip(mWeights->accessibleName());
    mWeights->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    toolBar().addWidget(mWeights);

    connect(this, &ViewWindow::toolChanged, this, [this] { mCanvas->setTool(tool()); });
    connect(mCanvas, &MapCanvas::regionDrawn, this, &MapWindow::selectRegion);
    connect(mCanvas, &MapCanvas::pointed, this, &MapWindow::point);
    connect(mCanvas, &MapCanvas::stepped, this, &MapWindow::step);
    connect(mCanvas, &MapCanvas::chosen, this, [this](SelectionMode mode) {
        const int hovered =
            mActive ? this->workspace().selection().hovered(mActive->geography()) : -1;
        if (hovered >= 0)
            mActive->choose({static_cast<unsigned int>(hovered)}, mode);
    });
    connect(mLegend, &LegendPanel::activeChanged, this, &MapWindow::setActiveLayer);
    connect(mLegend, &LegendPanel::classChosen, this, &MapWindow::selectClass);
    connect(mLegend, &LegendPanel::moveWanted, this, &MapWindow::moveLayer);
    // The legend is filled anew while it handles the key.
    connect(mLegend, &LegendPanel::removeWanted, this, &MapWindow::removeLayer,
            Qt::QueuedConnection);
    connect(mClasses, &ClassPanel::ruleChanged, this, [this](const ClassRule &rule, bool allTimes) {
        if (mActive && !mActive->setRule(rule, allTimes))
            activeChanged(); // shows the rule that remains
    });
    connect(mWeights, QOverload<int>::of(&QComboBox::activated), this,
            [this](int row) { chooseWeights(mWeights->itemData(row).toInt()); });
    connect(&workspace, &Workspace::weightSetsChanged, this, [this](int geography) {
        if (mActive && mActive->geography() == geography)
            fillWeights();
    });
    connect(&workspace, &Workspace::shownWeightsChanged, this, [this](int geography) {
        if (!mActive || mActive->geography() != geography)
            return;
        fillWeights();
        if (mDescribed)
            describeHovered(*mDescribed);
        mCanvas->update();
    });
    connect(&workspace, &Workspace::weightSetDying, this, [this](int, int set) {
        if (set != mLinkedSet)
            return;
        mLinkedSet = -1;
        mHasLinksOfAll = false;
        mCanvas->setLinks({});
    });
    connect(&workspace, &Workspace::datasetRenamed, this, [this] { layersChanged(); });
    connect(&workspace, &Workspace::geographyRenamed, this, [this] { layersChanged(); });
    activeChanged();
}

MapWindow::~MapWindow()
{
    mCanvas->setLayers({});
    mLegend->setLayers({}, nullptr);
}

MapLayerView *MapWindow::activeLayer() const
{
    return mActive;
}

View *MapWindow::currentView() const
{
    return mActive;
}

QString MapWindow::refusal(int dataset) const
{
    return datasetOf(dataset) ? QString() : tr("There is no such dataset.");
}

MapLayerView *MapWindow::addLayer(int dataset)
{
    if (!datasetOf(dataset)) {
        workspace().tell(tr("There is no such dataset."), true);
        return nullptr;
    }
    MapLayerView *const layer =
        MapLayerView::make(workspace(), VORN_GetGeographyId(dataset), dataset, *mCanvas);
    adopt(layer);
    return layer;
}

MapLayerView *MapWindow::addOutlines(int geography)
{
    if (!geographyOf(geography))
        return nullptr;
    if (VORN_GetGeographyProperties(geography).type == GeoProps::Raster) {
        workspace().tell(tr("A grid has no outlines; choose one of its datasets."), true);
        return nullptr;
    }
    MapLayerView *const layer = MapLayerView::make(workspace(), geography, -1, *mCanvas);
    adopt(layer);
    return layer;
}

void MapWindow::adopt(MapLayerView *layer)
{
    mLayers.append(layer);
    mActive = layer;
    connect(layer, &MapLayerView::legendChanged, this, [this, layer] {
        mLegend->setLayers(mLayers, mActive);
        if (layer == mActive)
            showClasses();
    });
    connect(layer, &MapLayerView::hoverDescribed, this, [this, layer] { describeHovered(*layer); });
    connect(layer, &View::shownTimeChanged, this, [this, layer] {
        if (mHasLinksOfAll && layer->geography() == mLinkedSet >> 16)
            readLinks();
    });
    addView(layer);
    layersChanged();
    activeChanged();
}

void MapWindow::removeLayer(MapLayerView *layer)
{
    if (mLayers.contains(layer))
        removeView(layer);
}

void MapWindow::viewLeaves(View *view)
{
    auto *const layer = static_cast<MapLayerView *>(view);
    mLayers.removeAll(layer);
    if (mLinkedSet >= 0 && mLinkedSet >> 16 == layer->geography()) {
        mLinkedSet = -1;
        mHasLinksOfAll = false;
        mCanvas->setLinks({});
    }
    if (mDescribed == layer) {
        mDescribed = nullptr;
        setReadout(QString());
    }
    if (mActive == layer)
        mActive = mLayers.isEmpty() ? nullptr : mLayers.last();
    layersChanged();
    // Values are not read while the library removes something.
    QTimer::singleShot(0, this, [this] { activeChanged(); });
}

void MapWindow::moveLayer(MapLayerView *layer, int up)
{
    const int from = mLayers.indexOf(layer);
    const int to = from + up;
    if (from < 0 || to < 0 || to >= mLayers.size())
        return;
    mLayers.move(from, to);
    layersChanged();
}

void MapWindow::layersChanged()
{
    mCanvas->setLayers(mLayers);
    mLegend->setLayers(mLayers, mActive);
    Q_EMIT titleChanged(title());
}

void MapWindow::setActiveLayer(MapLayerView *layer)
{
    if (mActive == layer || !mLayers.contains(layer))
        return;
    mActive = layer;
    mLegend->setLayers(mLayers, mActive);
    activeChanged();
    Q_EMIT titleChanged(title()); // has the time of this layer
    Q_EMIT viewsChanged();        // another one is the current view
}

void MapWindow::activeChanged()
{
    fillWeights();
    showClasses();
}

void MapWindow::fitParts()
{
    ViewWindow::fitParts();
    mSide->setVisible(mClassForm->isVisibleTo(mSide)
                      || width() >= kLeastWithLegend * fontMetrics().height());
    // In a narrow map the form is scrolled, so that it is not cut off.
    const int needed =
        mClasses->minimumSizeHint().width() + style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    const int room = width() - mCanvas->minimumSizeHint().width() - fontMetrics().height();
    mClassForm->setMinimumWidth(std::max(0, std::min(needed, room)));
}

void MapWindow::editClasses(bool edit)
{
    mClassForm->setVisible(edit);
    fitParts();
    showClasses();
}

void MapWindow::showClasses()
{
    const bool hasClasses = mActive && mActive->dataset() >= 0 && datasetOf(mActive->dataset());
    mClasses->setEnabled(hasClasses);
    if (!hasClasses || mClassForm->isHidden())
        return;
    const MDataset &dataset = *datasetOf(mActive->dataset());
    mClasses->show(mActive->rule(),
                   dataset.IsStatic() ? std::nullopt : std::make_optional(mActive->hasAllTimes()),
                   dataset.IsNumeric());
    QVector<double> sample;
    QVector<QColor> colors;
    const Classification *const classes = mActive->classes();
    for (int i = 0; classes && i < classes->entries().size(); ++i)
        colors.append(mActive->colorOf(i));
    workspace().look([&] { sample = mActive->valueSample(); });
    mClasses->showValues(sample, classes ? classes->limits() : QVector<double>(), colors);
}

QString MapWindow::title() const
{
    if (!mOwnTitle.isEmpty())
        return mOwnTitle;
    QStringList names;
    for (int i = mLayers.size() - 1; i >= 0; --i)
        names.append(mLayers[i]->title());
    QString text = names.isEmpty() ? tr("Map") : names.join(QStringLiteral(", "));
    if (mActive && mActive->isTimed())
        text += QStringLiteral(" \u2013 ") + axisOf(mActive->geography()).show(mActive->time());
    return withRealization(text);
}

void MapWindow::setOwnTitle(const QString &title)
{
    mOwnTitle = title;
    Q_EMIT titleChanged(this->title());
}

void MapWindow::zoomToAll()
{
    mCanvas->fit();
}

void MapWindow::zoomToSelection()
{
    QRectF hull;
    bool isAny = false;
    for (const MapLayerView *const layer : std::as_const(mLayers)) {
        const QVector<unsigned int> selected = workspace().selection().selected(layer->geography());
        if (selected.isEmpty() || !layer->isVisible())
            continue;
        const QRectF own = layer->extentOf(selected);
        if (own.isNull() && own.topLeft().isNull())
            continue;
        hull =
            isAny ? QRectF(
                QPointF(std::min(hull.left(), own.left()), std::min(hull.top(), own.top())),
                QPointF(std::max(hull.right(), own.right()), std::max(hull.bottom(), own.bottom())))
                  : own;
        isAny = true;
    }
    if (isAny)
        mCanvas->show(hull);
    else
        workspace().tell(tr("Nothing is selected that could be zoomed to."), true);
}

/// Marks the uppermost object under the mouse and describes it.
void MapWindow::point(const QPoint &pixel)
{
    MapLayerView *found = nullptr;
    int object = -1;
    for (int i = mLayers.size() - 1; i >= 0 && object < 0; --i) {
        if (!mLayers[i]->isVisible())
            continue;
        object = pixel.x() < 0 ? -1 : mLayers[i]->objectAt(pixel);
        found = mLayers[i];
    }
    for (MapLayerView *const layer : std::as_const(mLayers))
        if (!found || layer->geography() != found->geography() || object < 0)
            layer->hover(-1);
    mDescribed = object < 0 ? nullptr : found;
    if (object < 0) {
        setReadout(QString());
        return;
    }
    if (workspace().selection().hovered(found->geography()) == object)
        describeHovered(*found);
    else
        found->hover(object);
}

/// In the layer that was pointed at; otherwise, when another view was, in the uppermost layer of the
/// geography.
void MapWindow::describeHovered(MapLayerView &layer)
{
    const int object = workspace().selection().hovered(layer.geography());
    const bool isSame = mDescribed && mDescribed->geography() == layer.geography();
    if (object < 0) {
        if (isSame || !mDescribed)
            setReadout(QString());
        return;
    }
    if (isSame && mDescribed != &layer)
        return; // its own signal comes
    if (!isSame)
        for (MapLayerView *const each : std::as_const(mLayers)) // the uppermost is the last
            if (each->isVisible() && each->geography() == layer.geography())
                mDescribed = each;
    if (mDescribed && mDescribed->geography() == layer.geography())
        setReadout(mDescribed->describe(static_cast<unsigned int>(object)));
}

void MapWindow::step(int direction)
{
    if (!mActive)
        return;
    const int object =
        mActive->nextObject(workspace().selection().hovered(mActive->geography()), direction);
    if (object < 0)
        return;
    mDescribed = mActive;
    mActive->hover(object);
    describeHovered(*mActive);
    const QRectF box = mActive->extentOf({static_cast<unsigned int>(object)});
    const QPointF center = mCanvas->view().toPixel(box.center());
    const QSize size = mCanvas->view().size();
    if (!QRectF(QPointF(), QSizeF(size)).contains(center))
        mCanvas->pan(static_cast<int>(size.width() / 2.0 - center.x()),
                     static_cast<int>(size.height() / 2.0 - center.y()));
}

void MapWindow::selectRegion(const QPainterPath &region, SelectionMode mode)
{
    if (!mActive)
        return;
    if (region.elementCount() > 1) {
        mActive->brush(region, mode);
        return;
    }
    // A click selects what is seen, in whatever layer.
    for (int i = mLayers.size() - 1; i >= 0; --i) {
        MapLayerView *const layer = mLayers[i];
        QVector<unsigned int> found;
        if (layer->isVisible())
            workspace().look([&] { found = layer->objectsIn(region); });
        if (found.isEmpty())
            continue;
        setActiveLayer(layer);
        layer->choose(found, mode);
        return;
    }
    if (mode == SelectionMode::Replace)
        clearSelection();
}

void MapWindow::selectClass(MapLayerView *layer, int classIndex, Qt::KeyboardModifiers keys)
{
    QVector<unsigned int> objects;
    if (layer && workspace().look([&] { objects = layer->objectsOfClass(classIndex); }))
        layer->choose(objects, keys & Qt::ControlModifier ? SelectionMode::Toggle
                               : keys & Qt::ShiftModifier ? SelectionMode::Add
                                                          : SelectionMode::Replace);
}

void MapWindow::fillWeights()
{
    mWeights->clear();
    mWeights->addItem(tr("No neighbours"), -1);
    if (mActive) {
        const GeoProps props = VORN_GetGeographyProperties(mActive->geography());
        for (auto set = props.weightSets.begin(); set != props.weightSets.end(); ++set)
            mWeights->addItem(tr("Neighbours: %1").arg(set->name), set.key());
        const int shown = workspace().shownWeights(mActive->geography());
        mWeights->setCurrentIndex(std::max(0, mWeights->findData(shown)));
    }
    mWeights->setEnabled(mWeights->count() > 1);
}

void MapWindow::chooseWeights(int set)
{
    if (!mActive)
        return;
    // The lists are calculated here, with the library's progress bar, and not by the first move of
    // the mouse.
    bool isReady = set < 0;
    if (!isReady)
        workspace().look([&] {
            isReady = VORN_PrecalculateSpatialWeights(set, listTime(set, mActive->time()), true);
        });
    workspace().setShownWeights(mActive->geography(), isReady ? set : -1);
    fillWeights();
}

bool MapWindow::showWeights(int weightSet, int object)
{
    const int geography = weightSet >> 16;
    MapLayerView *shown = nullptr;
    for (MapLayerView *const layer : std::as_const(mLayers))
        if (layer->geography() == geography)
            shown = layer;
    if (!shown || VORN_GetSpatialWeightSetProperties(weightSet).id < 0)
        return false;
    setActiveLayer(shown);
    chooseWeights(weightSet);
    if (workspace().shownWeights(geography) != weightSet)
        return false;
    if (object >= 0) {
        if (static_cast<unsigned int>(object) >= geographyOf(geography)->GetObjectCount())
            return false;
        mDescribed = shown;
        shown->hover(object);
        describeHovered(*shown);
        return true;
    }
    mLinkedSet = weightSet;
    mHasLinksOfAll = true;
    readLinks();
    return true;
}

void MapWindow::readLinks()
{
    QVector<QLineF> links;
    MapLayerView *shown = nullptr;
    for (MapLayerView *const layer : std::as_const(mLayers))
        if (layer->geography() == mLinkedSet >> 16)
            shown = layer;
    if (shown && mHasLinksOfAll)
        workspace().look([&] {
            visitNeighbors(
                mLinkedSet, listTime(mLinkedSet, shown->time()),
                [&](int object, const QVector<neighborDatum> &neighbors) {
                    const QPointF from =
                        shown->extentOf({static_cast<unsigned int>(object)}).center();
                    for (const neighborDatum &neighbor : neighbors) {
                        if (neighbor.id == object || links.size() >= kMostLinks)
                            continue;
                        const QPointF to =
                            shown->extentOf({static_cast<unsigned int>(neighbor.id)}).center();
                        links.append(QLineF(from, to));
                    }
                });
        });
    if (links.size() >= kMostLinks)
        workspace().tell(tr("Only the first %1 links are drawn.").arg(kMostLinks), true);
    mCanvas->setLinks(links);
}

QJsonObject MapWindow::state() const
{
    QJsonArray layers;
    for (const MapLayerView *const layer : mLayers)
        layers.append(QJsonObject{
            {QStringLiteral("geography"), geographyName(layer->geography())},
            {QStringLiteral("dataset"),
             layer->dataset() < 0 ? QJsonValue() : QJsonValue(datasetName(layer->dataset()))},
            {QStringLiteral("classes"), toJson(layer->rule())},
            {QStringLiteral("allTimes"), layer->hasAllTimes()},
            {QStringLiteral("visible"), layer->isVisible()}});
    QJsonObject state = ViewWindow::state();
    state.insert(QStringLiteral("kind"), QStringLiteral("map"));
    state.insert(QStringLiteral("title"), mOwnTitle);
    state.insert(QStringLiteral("layers"), layers);
    state.insert(QStringLiteral("active"), mLayers.indexOf(mActive));
    state.insert(QStringLiteral("tool"), static_cast<int>(tool()));
    if (!mCanvas->isFitted()) {
        const QRectF seen = mCanvas->shown();
        state.insert(QStringLiteral("extent"),
                     QJsonArray{seen.left(), seen.top(), seen.right(), seen.bottom()});
    }
    return state;
}

void MapWindow::restore(const QJsonObject &state)
{
    ViewWindow::restore(state);
    const QVector<MapLayerView *> before = mLayers;
    for (const QJsonValue &value : state.value(QStringLiteral("layers")).toArray()) {
        const QJsonObject json = value.toObject();
        const int geography = geographyNamed(json.value(QStringLiteral("geography")).toString());
        const QJsonValue name = json.value(QStringLiteral("dataset"));
        const int dataset = geography < 0 ? -1 : datasetNamed(geography, name.toString());
        if (geography < 0 || (name.isString() && dataset < 0))
            continue;
        MapLayerView *const layer = dataset < 0 ? addOutlines(geography) : addLayer(dataset);
        if (!layer)
            continue;
        if (dataset >= 0)
            layer->setRule(ruleOf(json.value(QStringLiteral("classes")).toObject()),
                           json.value(QStringLiteral("allTimes")).toBool(true));
        layer->setVisible(json.value(QStringLiteral("visible")).toBool(true));
    }
    if (mLayers.size() == before.size())
        return;
    for (MapLayerView *const layer : before)
        removeLayer(layer);
    setOwnTitle(state.value(QStringLiteral("title")).toString());
    setTool(static_cast<Tool>(std::clamp(state.value(QStringLiteral("tool")).toInt(), 0, 3)));
    if (MapLayerView *const active = mLayers.value(state.value(QStringLiteral("active")).toInt(-1)))
        setActiveLayer(active);
    const QJsonArray extent = state.value(QStringLiteral("extent")).toArray();
    if (extent.size() == 4)
        mCanvas->show(QRectF(QPointF(extent[0].toDouble(), extent[1].toDouble()),
                             QPointF(extent[2].toDouble(), extent[3].toDouble())),
                      0);
}

namespace {

QColor colorOf(quint32 rgb)
{
    return QColor::fromRgb(rgb | 0xff000000U);
}

} // namespace

bool MapWindow::addLayer(int dataset, const ColorSchemeInfo &fill, const ColorSchemeInfo &line,
                         const SymbolSchemeInfo &symbols)
{
    MapLayerView *const layer = addLayer(dataset);
    if (!layer)
        return false;
    ClassRule rule = layer->rule();
    bool isAllTimes = layer->hasAllTimes();
    const bool isNumeric = datasetOf(dataset)->IsNumeric();
    if (isNumeric && fill.classLimits.size() > 1) {
        rule.limits = fill.classLimits.mid(1, fill.classLimits.size() - 2);
        if (rule.limits.isEmpty())
            rule.limits = fill.classLimits;
    } else if (isNumeric && fill.classCount > 1) {
        rule.count = fill.classCount;
        switch (fill.classification) {
        case MDataset::EqualIntervals:
            rule.method = QStringLiteral("equal");
            break;
        case MDataset::Quantiles:
            rule.method = QStringLiteral("quantile");
            break;
        default:
            rule.method = QStringLiteral("jenks");
        }
    }
    if (isNumeric && (!rule.limits.isEmpty() || fill.classCount > 1))
        layer->setRule(rule, isAllTimes); // refused with a sentence: the usual classes remain
    QVector<QColor> colors;
    const QVector<quint32> &given = fill.classColors.isEmpty() ? fill.colors : fill.classColors;
    for (const quint32 color : given)
        colors.append(colorOf(color));
    layer->setOwnColors(colors, fill.missingColor != 0 ? colorOf(fill.missingColor) : QColor(),
                        line.colors.isEmpty() ? QColor() : colorOf(line.colors.first()));
    if (!symbols.symbols.isEmpty() && symbols.symbols.first().size > 0
        && symbols.symbols.first().size < 100)
        layer->setPlaceSize(symbols.symbols.first().size);
    return true;
}

MapWindow *openMap(Workspace &workspace, int dataset)
{
    auto window = std::make_unique<MapWindow>(workspace);
    return window->addLayer(dataset) ? window.release() : nullptr;
}

} // namespace meridor
