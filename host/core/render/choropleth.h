// SPDX-License-Identifier: MIT
/// Makes maps of datasets at one or several times.
#pragma once
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>
#include <memory>
#include <optional>
#include "core/export.h"
#include "core/project/projectHost.h"
#include "core/render/classification.h"
#include "core/render/mapPicture.h"

namespace meridor {

/// A further layer, drawn above those before it, or below the dataset.
struct MapLayerStyle {
    int geography = -1;
    int dataset = -1;    ///< -1: only the outlines of the geography
    QString palette;     ///< empty: one that the other layers do not have
    int realization = 0; ///< of the dataset
    /// Without one: the usual one, with the number of classes of the map.
    std::optional<ClassRule> rule;
    bool allTimes = false;      ///< classes of all times
    std::optional<qint64> time; ///< of its geography; without one: that of the map
    bool isBelow = false;       ///< below the dataset
};

struct MapStyle {
    ClassRule rule;
    QString subtitle;      ///< empty: the time, or the geography if there are several times
    bool allTimes = false; ///< classes and extent of all times of the dataset
    QVector<MapLayerStyle> layers;
    int weightSet = -1;  ///< of the dataset's geography: its links are drawn
    int realization = 0; ///< of the dataset
    QRectF extent;       ///< in map coordinates; empty: that of the dataset's geography
    int labelField = -1; ///< a dataset of the same geography: its values are drawn beside objects
    int labelRealization = 0;
    QHash<int, QSet<int>> marked; ///< objects or cells by geography, drawn as selected
    PictureSize size;
};

class FurtherLayers;

/// Pictures of a dataset with the same classes and the same extent. Objects that do not exist at a
/// time are left out; those without a value are hatched. Layers of other geographies are clipped at
/// the extent of the dataset's.
class MERIDOR_EXPORT MapMaker {
public:
    /// @param times  those that the classes are made of, unless the style asks for all times.
    MapMaker(int dataset, const QVector<qint64> &times, const QString &title,
             const MapStyle &style);
    ~MapMaker();
    /// A panel for each time. Raises a Failure, also on a cancel.
    /// @param captions  of several panels; empty: the times.
    MapPicture picture(const QVector<qint64> &times, const QStringList &captions = {}) const;

private:
    MapPanel panelAt(qint64 time, bool isSingle, QVector<LegendBlock> &legend) const;

    int mDataset;
    int mGeography;
    QString mTitle;
    MapStyle mStyle;
    bool mManyTimes;
    Classification mClasses;
    std::unique_ptr<FurtherLayers> mFurther;
};

/// The block of a legend for the classes of a dataset, those of numbers with the largest on top.
/// @param counts  by class; not shown unless `isCounted`.
MERIDOR_EXPORT LegendBlock legendOf(int dataset, const Classification &classes,
                                    const QVector<qint64> &counts, qint64 missing, bool isCounted);

/// What a map of a dataset shows: its objects, its classes and the realization.
/// @param drawn  the number of objects or cells; -1: not told.
/// @param whose  of which times the classes are, such as " of all times".
MERIDOR_EXPORT QString mapFootnote(int dataset, qint64 drawn, const Classification &classes,
                                   const QString &whose, int realization);

/// Whether the projection of a geography says that its coordinates are degrees.
MERIDOR_EXPORT bool isGeographic(int geography);

/// The length of a unit of the coordinates of a geography; 0 if it is not known.
MERIDOR_EXPORT double metresPerUnit(int geography);

/// The picture of one time.
MERIDOR_EXPORT MapPicture choropleth(const MapView &view, const MapStyle &style);

} // namespace meridor
