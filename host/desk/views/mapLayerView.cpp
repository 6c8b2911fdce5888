// SPDX-License-Identifier: MIT
#include "desk/views/mapLayerView.h"
#include <QPainter>
#include <QPalette>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <limits>
#include <numeric>
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/choropleth.h"
#include "core/render/theme.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/WeightsAPI.h"
#include "desk/draw/colorTable.h"
#include "desk/views/mapLayerGrid.h"
#include "desk/views/mapLayerVector.h"
#include "desk/views/viewWindow.h"

namespace meridor {
namespace {

constexpr int kMostNamed = 6; ///< neighbours in the line of text

} // namespace

MapColors::MapColors(const QPalette &palette)
{
    const QRgb base = palette.color(QPalette::Base).rgb();
    const QRgb ink = palette.color(QPalette::Text).rgb();
    ground = base;
    outline = mixed(base, ink, 0.45);
    missing = mixed(base, ink, 0.06);
    hatch = mixed(base, ink, 0.35);
    plain = mixed(base, ink, 0.22);
    selected = meridor::colors::selected.rgb();
}

MapLayerView *MapLayerView::make(Workspace &workspace, int geography, int dataset, QWidget &canvas)
{
    MapLayerView *layer = nullptr;
    if (VORN_GetGeographyProperties(geography).type == GeoProps::Raster)
        layer = new GridLayerView(workspace, geography, dataset, canvas);
    else
        layer = new VectorLayerView(workspace, geography, dataset, canvas);
    layer->join();
    return layer;
}

MapLayerView::MapLayerView(Workspace &workspace, int geography, int dataset, QWidget &canvas)
    : View(workspace, geography),
      mExtent(VORN_GetGeographyProperties(geography).bounds),
      mCanvas(canvas),
      mDataset(dataset),
      mNameDataset(nameDataset(geography)),
      mKeyDataset(keyDataset(geography))
{
    connect(&workspace, &Workspace::objectsRemoved, this, [this](int changed) {
        if (changed != this->geography())
            return;
        // The numbers of the objects are others at once; the shapes are read when the library is
        // done.
        mNeighbors.clear();
        forgetShapes();
        setStale();
        QTimer::singleShot(0, this, [this] {
            mExtent = VORN_GetGeographyProperties(this->geography()).bounds;
            this->workspace().look([this] { refresh(true); });
        });
    });
    connect(&workspace, &Workspace::shownWeightsChanged, this, [this](int changed) {
        if (changed == this->geography())
            hoverChanged();
    });
}

QString MapLayerView::title() const
{
    return mDataset < 0 ? geographyName(geography()) : datasetName(mDataset);
}

bool MapLayerView::isTimed() const
{
    return !geographyOf(geography())->IsStatic()
           || (mDataset >= 0 && !datasetOf(mDataset)->IsStatic());
}

QVector<int> MapLayerView::datasets() const
{
    return mDataset < 0 ? QVector<int>() : QVector<int>{mDataset};
}

void MapLayerView::draw(QPainter &painter, const QSize &size)
{
    MapPicture picture;
    picture.size.pixels = size;
    picture.texts.title = title();
    picture.geographic = isGeographic(geography());
    const double squeeze = squeezeOf(picture.geographic, mExtent);
    MapPanel panel;
    panel.layers.append(pictureLayer(ViewTransform::fit(mExtent, size, 0, squeeze)));
    picture.panels.append(panel);
    picture.legend.append(legend());
    drawMap(painter, picture);
}

bool MapLayerView::setRule(const ClassRule &rule, bool allTimes)
{
    const int classes = rule.limits.isEmpty() ? rule.count : rule.limits.size() + 1;
    if (classes < 1 || classes > kMostClasses) {
        workspace().tell(
            tr("A map shows 1 to %1 classes; %2 were asked for.").arg(kMostClasses).arg(classes),
            true);
        return false;
    }
    if (mDataset < 0)
        return false;
    // The library shows a progress bar of its own when this takes long.
    if (!workspace().look([&] { classify(rule, allTimes); }))
        return false;
    mRule = rule;
    mHasAllTimes = allTimes;
    mOwnColors.clear();
    workspace().look([this] { refresh(false); });
    mCanvas.update();
    return true;
}

/// The present classes remain when it raises.
void MapLayerView::classify(const ClassRule &rule, bool allTimes)
{
    const bool always = datasetOf(mDataset)->IsStatic();
    auto made = std::make_unique<Classification>(
        mDataset, allTimes && !always ? QVector<qint64>() : QVector<qint64>{time()}, rule,
        realizationOf(mDataset));
    mClasses = std::move(made);
}

void MapLayerView::setOwnColors(const QVector<QColor> &classes, const QColor &missing,
                                const QColor &line)
{
    mOwnColors = classes;
    mOwnMissing = missing;
    mOwnLine = line;
    colorsChanged();
    setStale();
    Q_EMIT legendChanged();
    mCanvas.update();
}

void MapLayerView::setPlaceSize(double size)
{
    mPlaceSize = size;
    mCanvas.update();
}

void MapLayerView::setVisible(bool visible)
{
    if (mIsVisible == visible)
        return;
    mIsVisible = visible;
    setStale();
    Q_EMIT legendChanged();
    mCanvas.update();
}

QColor MapLayerView::colorOf(int classIndex) const
{
    if (classIndex < mOwnColors.size() && mOwnColors[classIndex].isValid())
        return mOwnColors[classIndex];
    return mClasses->entries()[classIndex].color;
}

QColor MapLayerView::missingColor(const MapColors &colors) const
{
    return mOwnMissing.isValid() ? mOwnMissing : QColor::fromRgb(colors.missing);
}

QColor MapLayerView::lineColor(const MapColors &colors) const
{
    return mOwnLine.isValid() ? mOwnLine : QColor::fromRgb(colors.outline);
}

QVector<QColor> MapLayerView::classColors() const
{
    QVector<QColor> colors;
    for (int i = 0; mClasses && i < mClasses->entries().size(); ++i)
        colors.append(colorOf(i));
    return colors;
}

LegendBlock MapLayerView::legend() const
{
    if (mDataset < 0 || !mClasses)
        return {title(), {}};
    const bool fits = mIsCounted && mCounts.size() == mClasses->entries().size();
    LegendBlock block = legendOf(mDataset, *mClasses, mCounts, mMissing, fits);
    // Short, for a narrow legend.
    if (const int count = datasetOf(mDataset)->GetRealizationCount(); count > 1)
        block.title = tr("%1 (%2 of %3)")
                          .arg(block.title, QString::number(realizationOf(mDataset) + 1),
                               QString::number(count));
    for (int i = 0; i < block.entries.size(); ++i)
        if (classOfEntry(i) >= 0)
            block.entries[i].color = colorOf(classOfEntry(i));
    return block;
}

qint64 MapLayerView::drawn() const
{
    if (mDataset < 0)
        return objectsAt(geography(), shapeTime(geography(), time())).size();
    return mIsCounted ? std::accumulate(mCounts.begin(), mCounts.end(), mMissing) : -1;
}

int MapLayerView::classOfEntry(int entry) const
{
    const int count = mClasses ? mClasses->entries().size() : 0;
    if (entry < 0 || entry >= count)
        return -1;
    return mClasses->limits().isEmpty() ? entry : count - 1 - entry;
}

void MapLayerView::timeChanged()
{
    refresh(!mClasses || (!mHasAllTimes && mDataset >= 0 && !datasetOf(mDataset)->IsStatic()));
}

void MapLayerView::valuesChanged()
{
    refresh(true);
}

bool MapLayerView::holdsAt(qint64 time) const
{
    return mTrouble.isEmpty() && View::holdsAt(time);
}

void MapLayerView::refresh(bool reclassify)
{
    setStale();
    mTrouble.clear();
    mCounts.clear();
    mMissing = 0;
    try {
        readShapes();
        if (mDataset >= 0) {
            if (reclassify)
                classify(mRule, mHasAllTimes);
            if (mClasses->entries().isEmpty())
                setTrouble(tr("%1 has no values").arg(datasetName(mDataset)));
            mCounts.fill(0, mClasses->entries().size());
            readValues();
        }
    } catch (const Failure &failure) {
        mTrouble = failure.kind() == FailureKind::Cancelled ? tr("The map was cancelled.")
                                                            : failure.text();
    }
    colorsChanged();
    hoverChanged();
    Q_EMIT legendChanged();
}

void MapLayerView::selectionChanged()
{
    colorsChanged();
    setStale();
}

void MapLayerView::hoverChanged()
{
    mNeighbors.clear();
    const int object = workspace().selection().hovered(geography());
    const int set = workspace().shownWeights(geography());
    if (workspace().isBusy())
        return;
    if (object >= 0 && set >= 0)
        workspace().look(
            [&] { mNeighbors = neighborsOf(set, static_cast<unsigned int>(object), time()); });
    Q_EMIT hoverDescribed();
}

namespace {

constexpr int kFloatDigits = std::numeric_limits<float>::digits10 + 1;

/// Empty for a missing value.
QString valueText(int dataset, int realization, unsigned int object, qint64 time)
{
    const auto value = valueOf(dataset, realization, object, time);
    if (!value)
        return {};
    if (!datasetOf(dataset)->IsNumeric())
        return textOf(*value);
    const MRasterDataset *const grid = rasterOf(dataset);
    const double number = textOf(*value).toDouble();
    // The digits that a float has.
    const bool isFloat = grid && value->type == 0 && grid->GetRasterBitDepth() == 32;
    return shortNumber(isFloat ? QString::number(number, 'g', kFloatDigits).toDouble() : number, 6);
}

} // namespace

QString MapLayerView::describe(unsigned int object)
{
    QString text;
    workspace().look([&] {
        const auto nameOf = [this](unsigned int which) {
            for (const int names : {mNameDataset, mKeyDataset}) {
                const QString name =
                    names >= 0 && datasetOf(names) ? valueText(names, 0, which, time()) : QString();
                if (!name.isEmpty())
                    return name;
            }
            return QString::number(which + 1);
        };
        const bool isGrid = rasterOf(mDataset);
        const GeoProps props = isGrid ? VORN_GetGeographyProperties(geography()) : GeoProps();
        // From 0 at the top left, as in the command line.
        text = isGrid ? tr("column %1, row %2")
                            .arg(static_cast<int>(object) % props.columns)
                            .arg(static_cast<int>(object) / props.columns)
                      : nameOf(object);
        if (mDataset >= 0) {
            const QString value = valueText(mDataset, realizationOf(mDataset), object, time());
            text =
                tr("%1: %2 %3")
                    .arg(text, datasetName(mDataset), value.isEmpty() ? tr("has no value") : value);
        }
        const int set = workspace().shownWeights(geography());
        if (set < 0 || static_cast<int>(object) != workspace().selection().hovered(geography()))
            return;
        QStringList names;
        for (const unsigned int neighbor : std::as_const(mNeighbors)) {
            if (isGrid || names.size() == kMostNamed)
                break;
            names.append(nameOf(neighbor));
        }
        if (mNeighbors.size() > names.size() && !names.isEmpty())
            names.append(QStringLiteral("\u2026"));
        text += QStringLiteral("; ")
                + counted(mNeighbors.size(), tr("%1 neighbour"), tr("%1 neighbours"));
        if (!names.isEmpty())
            text += QStringLiteral(": ") + names.join(QStringLiteral(", "));
    });
    return text;
}

} // namespace meridor
