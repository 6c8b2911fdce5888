// SPDX-License-Identifier: MIT
/// A spatial weight set: the neighbours of every object of a geography, and their weights, at every
/// time at which the objects differ.
#pragma once
#include <QDataStream>
#include <QList>
#include <QObject>
#include <QPointF>
#include <QString>
#include <QVector>
#include <map>
#include <memory>
#include <vector>
#include "datainterface/MissingData.h"
#include "datainterface/SpatialWeightSetProps.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/WeightsAtT.h"
#include "datainterface/export.h"
#include "datainterface/neighborDatum.h"

class MGeoData;
class MRasterData;
class MRasterDataSource;
class MVectorData;
namespace datainterface {
struct LoadContext;
struct WeightRule;
} // namespace datainterface

/// How neighbours are found. The numbers are file format.
enum neighborMethodType : qint32 {
    PolygonNeighbors = 0, ///< polygons that touch, out to a number of rings
    NearestNeighbors = 1, ///< the nearest points, with all ties at the last
    RangeNeighbors = 2,   ///< points or cells within a distance
    RookNeighbors = 3,    ///< the four cells that share a side
    QueenNeighbors = 4,   ///< the eight cells around
    CustomNeighbors = 99  ///< chosen by the host
};

/// How neighbours are weighted. The numbers are file format.
enum spatialWeightType : qint32 {
    ConstantWeight = 0,        ///< 1
    RowStandardizedWeight = 1, ///< 1 / number of neighbours
    DistanceRankWeight = 2,    ///< 1 / rank by distance; equal distances share a rank
    InverseDistanceWeight = 3, ///< numerator / (1 + distance to the power)
    BorderLengthWeight = 4,    ///< length of the shared border
    BorderShareWeight = 5,     ///< shared border / border shared with all neighbours
    CustomWeight = 99          ///< chosen by the host
};

/// The definition of a set and its neighbour lists: one vector of lists for each span of time in
/// which the objects do not change. The lists of a time are calculated when they are first
/// requested. They are kept in the block store, so that a set of any size takes memory only for the
/// list that is being read. Custom and cluster sets are never calculated: the host fills them.
///
/// A set belongs to one geography, which owns it. Lists may be read from several threads; all other
/// operations are for the main thread.
class DATAINTERFACE_EXPORT AdjacencySet : public QObject {
    Q_OBJECT
public:
    enum GeographyType : qint32 { PointGeography = 0, PolygonGeography = 1, RasterGeography = 2 };

    /// Makes an empty set to restore into.
    AdjacencySet();
    // Each of these constructors takes the next id and connects RenamedSignal to the geography's
    // WeightSetRenamedSignal. A null geography raises "Geography not defined". Weights that do not
    // suit the method raise "Invalid weight set type": inverse distances between polygons, border
    // lengths of points and cells. `numerator` and `power` apply to inverse distances.
    /// A custom or cluster set.
    AdjacencySet(const QString &name, MGeoData *geography, bool isClusterSet, bool includeEgo);
    /// Contiguity of polygons.
    /// @param queen  true if any common boundary point counts, false if only a border of positive
    ///               length does.
    AdjacencySet(const QString &name, MVectorData *geography, int ringCount, bool queen,
                 spatialWeightType weights, bool includeEgo);
    /// Nearest points.
    AdjacencySet(const QString &name, MVectorData *geography, int neighborCount,
                 spatialWeightType weights, bool includeEgo, double numerator, double power);
    /// Points no farther than `range`, in map units.
    AdjacencySet(const QString &name, MVectorData *geography, double range,
                 spatialWeightType weights, bool includeEgo, double numerator, double power);
    /// Cells whose centres are no farther than `range`, in map units.
    AdjacencySet(const QString &name, MRasterData *geography, double range,
                 spatialWeightType weights, bool includeEgo, double numerator, double power);
    /// @param method  RookNeighbors or QueenNeighbors.
    AdjacencySet(const QString &name, MRasterData *geography, neighborMethodType method,
                 spatialWeightType weights, bool includeEgo, double numerator, double power);
    /// Copies every field, including the id. Stored lists are copied into new blocks.
    AdjacencySet(const AdjacencySet &other);
    AdjacencySet &operator=(const AdjacencySet &) = delete;
    /// Frees the lists.
    ~AdjacencySet() override;

    virtual bool SaveToStream(QDataStream &out) const;
    /// Reads the form of dataInterfaceVersionLoading; the lists of files before 201042 are dropped.
    /// Also restores the counter from which the next set takes its id.
    virtual bool RestoreFromStream(QDataStream &in);

    /// Assigns a new id, whose upper 16 bits are the geography's id. Raises "Geography not defined"
    /// without a geography and "Weight set id not defined" when all numbers are used up.
    void CreateId();
    /// @param notify  whether RenamedSignal is emitted.
    void SetName(const QString &name, bool notify);
    void SetGeoData(MGeoData *geography);
    /// Frees the lists of all times; the next read calculates them again. Lists that a host has
    /// stored are lost.
    void ClearSpatialWeights();
    /// Stores the list of one object over a span of time, in place of the present list of that
    /// span.
    /// @param replace  whether the lists of other spans that overlap this one are freed. If not,
    ///                 such a span makes the call return false.
    /// @return false, with nothing changed, also for an unknown object and for a span without an
    ///         instant.
    bool AddToSpatialWeights(int id, const QVector<neighborDatum> &list, const TimeStamp &stamp,
                             bool replace);
    /// Whether lists are stored for that time.
    bool HasPrecalculatedSpatialWeights(qint64 t) const;
    /// Calculates the lists of that time unless they are stored. If `showProgress` is set and no
    /// progress bar is open, it opens one. Returns false when the user cancelled and for a set that
    /// only the host can fill. Raises as PrecalcSpatialWeights does.
    bool PrecalculateSpatialWeights(qint64 t, bool showProgress);
    /// Calculates the lists of the span around `t` in which the objects do not change; a raster has
    /// one span, its own time. Raises "Invalid time stamp" when no object exists at `t`, "Invalid
    /// weight set type" for weights that need distances where the method gives none, "Invalid pixel
    /// id" for a range that is not a distance, and "Geography not defined" without a geography.
    bool PrecalcSpatialWeights(qint64 t, bool showProgress);
    /// Returns the neighbours that are not missing, weighted as if the missing ones did not exist.
    QVector<neighborDatum> RecalculateNeighborWeights(const QVector<neighborDatum> &list,
                                                      const VORN_MissingData &missing) const;
    /// Returns the neighbours of the cell in column `x` and row `y`, with weight 0. `centre` is the
    /// centre of that cell in map units.
    QVector<neighborDatum> CalculatePixelNeighbors(const MRasterDataSource *source,
                                                   const QPointF &centre, int x, int y) const;
    /// A null handle on failure.
    WeightsAtT GetSpatialWeightsHandle(qint64 t, bool showProgress);
    /// Reads the list of one object; the lists are calculated when needed. Missing neighbours are
    /// left out and the weights of the others are calculated again, except in a custom set, whose
    /// weights stay. Returns false, with `list` empty, when there are no lists or no such object.
    bool GetSpatialWeights(unsigned int id, qint64 t, QVector<neighborDatum> &list,
                           const VORN_MissingData &missing, bool showProgress);
    /// Returns false, with `list` empty, for a handle that is no longer valid and for an unknown
    /// object.
    bool GetSpatialWeights(const WeightsAtT &handle, unsigned int id, QVector<neighborDatum> &list,
                           const VORN_MissingData &missing) const;
    /// The size in bytes of all lists of that time in the block store. Returns false for a handle
    /// that is not valid.
    bool GetSpatialWeightSetSize(const WeightsAtT &handle, int &size) const;
    /// The times for which lists are stored, ascending.
    QList<TimeStamp> GetAdjacencyTimes() const;
    SpatialWeightSetProps GetProperties() const;
    /// Whether only the host can fill the set: the method or the weights are custom.
    bool IsCustom() const
    {
        return mDefinition.neighborType == CustomNeighbors
               || mDefinition.weightType == CustomWeight;
    }
    bool IsEmpty() const { return mWeights.empty(); }
    /// Whether every time has exactly `objectCount` lists. This is false only for a set from a
    /// damaged file.
    bool HoldsListsOf(unsigned int objectCount) const;

    /// Appends the ids of the blocks that hold the lists.
    void AppendBlockIds(QVector<int> &ids) const;

    int GetId() const { return mId; }
    QString GetName() const { return mName; }
    MGeoData *GetGeoData() const { return mGeoData; }
    QString GetInformation() const { return mInformation; }
    /// Appends to the text that describes the origin of the set.
    void AddInformation(const QString &text) { mInformation += text; }
    GeographyType GeoType() const { return mDefinition.geoType; }
    neighborMethodType NeighborType() const { return mDefinition.neighborType; }
    spatialWeightType WeightType() const { return mDefinition.weightType; }
    /// Lists that are stored stay as they are.
    void SetWeightType(spatialWeightType type) { mDefinition.weightType = type; }
    int NeighborCount() const { return mDefinition.neighborCount; }
    int RingCount() const { return mDefinition.ringCount; }
    bool QueenNeighbor() const { return mDefinition.queenNeighbor; }
    double Range() const { return mDefinition.range; }
    double InverseDistanceNumerator() const { return mDefinition.inverseDistanceNumerator; }
    double InverseDistancePower() const { return mDefinition.inverseDistancePower; }
    bool IncludeEgo() const { return mDefinition.includeEgo; }
    /// Lists that are stored stay as they are.
    void SetIncludeEgo(bool includeEgo) { mDefinition.includeEgo = includeEgo; }
    bool IsClusterSet() const { return mDefinition.isClusterSet; }
    void SetIsClusterSet(bool isClusterSet) { mDefinition.isClusterSet = isClusterSet; }

Q_SIGNALS:
    void RenamedSignal(MGeoData *geography, qint32 id, const char *name);

private:
    /// How the neighbours of a set are found and weighted.
    struct Definition {
        GeographyType geoType = PointGeography;
        neighborMethodType neighborType = CustomNeighbors;
        spatialWeightType weightType = CustomWeight;
        int neighborCount = 0;
        int ringCount = 0;
        bool queenNeighbor = false;
        double range = 0.0;
        double inverseDistanceNumerator = 1.0;
        double inverseDistancePower = 1.0;
        bool includeEgo = false;
        bool isClusterSet = false;
    };
    /// All public constructors except the default and the copy constructor delegate to this one.
    /// @param suits  whether the weights suit the method.
    Q_DECL_HIDDEN AdjacencySet(const QString &name, MGeoData *geography,
                               const Definition &definition, bool suits);

    static constexpr int kIdCount = 1 << 16; ///< set numbers; the geography's id is above
    using NeighborLists = std::vector<datainterface::egoNeighbors>;
    using ListsPointer = std::shared_ptr<NeighborLists>;

    ListsPointer listsAt(qint64 t) const;
    ListsPointer prepareLists(const TimeStamp &stamp, bool replace);
    void store(NeighborLists &lists, int id, const neighborDatum *list, int count);
    template <class Build>
    bool calculate(const TimeStamp &stamp, bool showProgress, bool keepsCancelled, Build build);
    bool calculateVector(MVectorData &geography, qint64 t, bool showProgress);
    bool calculateRaster(MRasterData &geography, qint64 t, bool showProgress);
    bool readList(const NeighborLists &lists, unsigned int id, QVector<neighborDatum> &list,
                  const VORN_MissingData &missing) const;
    datainterface::WeightRule weightRule() const;
    friend class MGeoData;
    bool Restore(QDataStream &in, const datainterface::LoadContext &context);
    bool readDefinition(QDataStream &in, const datainterface::LoadContext &context);
    bool readLists(QDataStream &in);
    void renumberWeights();

    static int sNextId; ///< of the process; outside 0 to kIdCount - 1 no id is left

    QString mName;
    Definition mDefinition;
    int mId = -1;
    MGeoData *mGeoData = nullptr;
    QString mInformation;
    std::map<TimeStamp, ListsPointer> mWeights; ///< Keys do not overlap.
};

/// Calls SaveToStream or RestoreFromStream of the set.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const AdjacencySet *set);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, AdjacencySet *set);
