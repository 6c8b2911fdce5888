// SPDX-License-Identifier: MIT
#include "render/choropleth.h"
#include <QBuffer>
#include <QFile>
#include <QMap>
#include <algorithm>
#include <cmath>
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "failure.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "model.h"
#include "render/classes.h"
#include "render/palette.h"
#include "safeFile.h"

namespace meridor {
namespace {

constexpr int kMostNames = 12;

/// A geometry for a scope: checked out and in again in pairs.
class ShapeAccess {
public:
    ShapeAccess(const HilbertTree &tree, int record)
        : mTree(tree), mRecordId(record), mRecord(tree.CheckOutRecord(record, true)),
          mObject(mRecord ? mRecord->GetTreeObject(&tree) : nullptr)
    {
    }
    ~ShapeAccess()
    {
        if (mObject)
            mRecord->ReturnTreeObject(&mTree);
        if (mRecordId > 0)
            mTree.CheckInRecord(mRecordId);
    }
    ShapeAccess(const ShapeAccess &) = delete;
    ShapeAccess &operator=(const ShapeAccess &) = delete;
    const TreeObject *object() const { return mObject; }

private:
    const HilbertTree &mTree;
    int mRecordId;
    const HilbertTreeRecord *mRecord;
    const TreeObject *mObject;
};

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

/// Decimals that tell the limits apart.
int decimalsFor(const QVector<double> &breaks)
{
    double step = breaks.last() - breaks.first();
    for (int i = 1; i < breaks.size(); ++i)
        if (breaks[i] > breaks[i - 1])
            step = std::min(step, breaks[i] - breaks[i - 1]);
    if (step <= 0 || step >= 20)
        return 0;
    return qBound(0, 2 - static_cast<int>(std::floor(std::log10(step))), 8);
}

/// Thousands in groups of three, parted by a thin space.
QString grouped(double value, int decimals)
{
    QString text = QString::number(value, 'f', decimals);
    const int point = text.indexOf(QLatin1Char('.'));
    const int first = text.startsWith(QLatin1Char('-')) ? 1 : 0;
    for (int at = (point < 0 ? text.size() : point) - 3; at > first; at -= 3)
        text.insert(at, QChar(0x2009));
    return text;
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
    QVector<int> classes; ///< by object, -1 without a value
};

Classified classifyNumbers(const MapView &view, const MapStyle &style, const ValuesAt &values)
{
    const auto method = classificationOf(style.method);
    const QVector<double> breaks = style.breaksOfAllTimes ? breaksOfAll(view.dataset, method, style.classes)
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

Classified classifyTexts(const ValuesAt &values)
{
    QMap<QString, int> counts;
    for (int i = 0; i < values.texts.size(); ++i)
        if (!values.missing.contains(i))
            ++counts[values.texts[i]];
    QStringList names = counts.keys();
    std::stable_sort(names.begin(), names.end(),
                     [&counts](const QString &a, const QString &b) { return counts[a] > counts[b]; });
    const bool tooMany = names.size() > kMostNames;
    if (tooMany)
        names = names.mid(0, kMostNames - 1);
    Classified result;
    const QVector<QColor> colors = categoricalColors(names.size());
    for (int i = 0; i < names.size(); ++i)
        result.legend.append({colors[i], names[i], 0});
    if (tooMany)
        result.legend.append({QColor(0xe8, 0xe6, 0xdf), QStringLiteral("others"), 0});
    for (int i = 0; i < values.texts.size(); ++i) {
        const int known = names.indexOf(values.texts[i]);
        result.classes.append(values.missing.contains(i) ? -1 : known < 0 ? names.size() : known);
    }
    return result;
}

QString methodText(const MapStyle &style)
{
    QString text = style.method == QLatin1String("equal") ? QStringLiteral(", equal intervals")
        : style.method == QLatin1String("quantile")       ? QStringLiteral(", classes of equal size")
                                                          : QStringLiteral(", natural breaks");
    if (style.breaksOfAllTimes)
        text += QStringLiteral(" of all times");
    return text;
}

void addShapes(MapPicture &picture, const MVectorData &geography, const MapView &view, const QVector<int> &classes)
{
    const Fennims &shapes = *geography.GetFennims();
    for (const int object : objectsAt(geography.GetId(), view.time)) {
        const FMObjectChain *chain = shapes.GetChainById(geography.GetFennimId(static_cast<unsigned int>(object)));
        const ShapeAccess access(*shapes.mTree, chain->GetObservation(view.time).second);
        MapShape shape = toMapShape(access.object());
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
    const Classified classified = values.numeric ? classifyNumbers(view, style, values) : classifyTexts(values);

    MapPicture picture;
    picture.title = view.title;
    picture.subtitle = style.subtitle;
    picture.legendTitle = datasetName(view.dataset);
    picture.legend = classified.legend;
    picture.size = style.size;
    picture.geographic = geography->GetFennims()->GetProjectionSettings().GetProjectionName().isEmpty()
        && !geography->GetFennims()->GetProjectionSettings().GetGeographicCSName().isEmpty();
    addShapes(picture, *geography, view, classified.classes);
    if (picture.shapes.isEmpty())
        fail(QStringLiteral("no object of %1 exists at %2").arg(geographyName(id), axis.show(view.time)));
    picture.footnote = QStringLiteral("%1 %2 of %3%4")
                           .arg(picture.shapes.size())
                           .arg(QLatin1String(shapeName(VORN_GetGeographyProperties(id).type)), geographyName(id),
                                values.numeric ? methodText(style) : QString());
    return picture;
}

void savePicture(const QImage &image, const QString &path)
{
    const bool written = replaceFile(path, [&image](const QString &beside) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        QFile file(beside);
        return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG") && file.open(QIODevice::WriteOnly)
            && file.write(bytes) == bytes.size() && file.flush();
    });
    if (!written)
        fail(QStringLiteral("%1: could not be written").arg(path));
}

} // namespace meridor
