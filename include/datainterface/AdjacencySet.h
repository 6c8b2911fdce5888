// SPDX-License-Identifier: MIT
/// A spatial weight set: for every object of a geography, at every time at which its objects
/// differ, who its neighbours are and with what weight.
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
    CustomNeighbors = 99  ///< as the host says
};

/// How neighbours are weighted. The numbers are file format.
enum spatialWeightType : qint32 {
    ConstantWeight = 0,        ///< 1
    RowStandardizedWeight = 1, ///< 1 / number of neighbours
    DistanceRankWeight = 2,    ///< 1 / rank by distance; equal distances share a rank
    InverseDistanceWeight = 3, ///< numerator / (1 + distance to the power)
    BorderLengthWeight = 4,    ///< length of the shared border
    BorderShareWeight = 5,     ///< shared border / border shared with all neighbours
    CustomWeight = 99          ///< as the host says
};

/// The definition of a set and the lists found by it, one vector of lists for each span of time in
/// which the objects do not change. Lists are calculated when a time is first asked for and lie in
/// the block store, so that a set of any size takes memory only for the list in hand. A custom or
/// cluster set is filled by the host and never calculated.
///
/// Belongs to one geography, which owns it. Lists may be read from several threads; all else is the
/// main thread's.
class DATAINTERFACE_EXPORT AdjacencySet : public QObject {
    Q_OBJECT
public:
    enum GeographyType : qint32 { PointGeography = 0, PolygonGeography = 1, RasterGeography = 2 };

    /// Blank, for restoring.
    AdjacencySet();
    // Each of these takes the next id and connects RenamedSignal to the geography's
    // WeightSetRenamedSignal; a null geography raises "Geography not defined". Weights that do not
    // suit the kind raise "Invalid weight set type": an inverse distance between polygons, borders
    // of points and cells. `numerator` and `power` are of inverse distances.
    /// A custom or cluster set.
    AdjacencySet(const QString &name, MGeoData *geography, bool isClusterSet, bool includeEgo);
    /// Contiguity of polygons. @param queen  any common boundary point counts; else a border of
    /// positive length.
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
    /// Every field, the id too; stored lists are copied into blocks of their own.
    AdjacencySet(const AdjacencySet &other);
    AdjacencySet &operator=(const AdjacencySet &) = delete;
    /// Frees the lists.
    ~AdjacencySet() override;

    virtual bool SaveToStream(QDataStream &out) const;
    /// By dataInterfaceVersionLoading; files below 201042 give no lists. Also sets the number of
    /// the next set's id.
    virtual bool RestoreFromStream(QDataStream &in);

    /// A new id: the geography's in the upper 16 bits. Raises "Geography not defined" without one,
    /// and "Weight set id not defined" when all numbers are used up.
    void CreateId();
    /// `notify` emits RenamedSignal.
    void SetName(const QString &name, bool notify);
    void SetGeoData(MGeoData *geography);
    /// Frees all lists of all times: the next read calculates again. What a host has put in is
    /// lost.
    void ClearSpatialWeights();
    /// Stores one object's list over a span of time, replacing the one that stood there.
    /// @param replace  gives up the lists of another span that overlaps this one; else such a span
    /// makes the call false.
    /// @return false, with nothing changed, also for an object that is not there and a span without
    /// an instant.
    bool AddToSpatialWeights(int id, const QVector<neighborDatum> &list, const TimeStamp &stamp,
                             bool replace);
    /// Whether lists are stored for that time.
    bool HasPrecalculatedSpatialWeights(qint64 t) const;
    /// Calculates when needed, under a progress bar of its own if `showProgress` asks for one and
    /// none is there. False when the user cancelled and for a set that only the host can fill.
    /// Raises as PrecalcSpatialWeights.
    bool PrecalculateSpatialWeights(qint64 t, bool showProgress);
    /// Calculates the lists of the span around `t` in which the objects do not change; of a raster,
    /// of its own time. Raises "Invalid time stamp" when no object exists then, "Invalid weight set
    /// type" for weights that the method has no distances for, "Invalid pixel id" for a range that
    /// is not a distance, "Geography not defined" without one.
    bool PrecalcSpatialWeights(qint64 t, bool showProgress);
    /// The neighbours that are not missing, with weights as if the others had never been there.
    QVector<neighborDatum> RecalculateNeighborWeights(const QVector<neighborDatum> &list,
                                                      const VORN_MissingData &missing) const;
    /// The neighbours of the cell (x, y) with `centre` as its place, weights 0.
    QVector<neighborDatum> CalculatePixelNeighbors(const MRasterDataSource *source,
                                                   const QPointF &centre, int x, int y) const;
    /// A null handle on failure.
    WeightsAtT GetSpatialWeightsHandle(qint64 t, bool showProgress);
    /// The list of one object, calculated when needed. Missing neighbours are left out and the
    /// others weighted anew; of a custom set they keep their weights. False, with `list` empty,
    /// when there are no lists or no such object.
    bool GetSpatialWeights(unsigned int id, qint64 t, QVector<neighborDatum> &list,
                           const VORN_MissingData &missing, bool showProgress);
    /// False, with `list` empty, for a handle that no longer holds and for an object that is not
    /// there.
    bool GetSpatialWeights(const WeightsAtT &handle, unsigned int id, QVector<neighborDatum> &list,
                           const VORN_MissingData &missing) const;
    /// The bytes of all lists of that time in the block store. False for a handle that does not
    /// hold.
    bool GetSpatialWeightSetSize(const WeightsAtT &handle, int &size) const;
    /// The times that lists are stored for, ascending.
    QList<TimeStamp> GetAdjacencyTimes() const;
    SpatialWeightSetProps GetProperties() const;
    /// Filled by the host: the method or the weights are custom.
    bool IsCustom() const
    {
        return mDefinition.neighborType == CustomNeighbors
               || mDefinition.weightType == CustomWeight;
    }
    bool IsEmpty() const { return mWeights.empty(); }
    /// Whether the lists of each time are as many as that, as in every set that was not damaged.
    bool HoldsListsOf(unsigned int objectCount) const;

    /// The blocks of the block store that hold its lists.
    void AppendBlockIds(QVector<int> &ids) const;

    int GetId() const { return mId; }
    QString GetName() const { return mName; }
    MGeoData *GetGeoData() const { return mGeoData; }
    QString GetInformation() const { return mInformation; }
    /// Appends to the text that tells where the set comes from.
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
    /// All the others but the blank one and the copy. @param suits  the weights suit the kind.
    Q_DECL_HIDDEN AdjacencySet(const QString &name, MGeoData *geography,
                               const Definition &definition, bool suits);

    static constexpr int kIdCount = 1 << 16; ///< numbers of sets; a geography's id stands above
    using NeighborLists = std::vector<datainterface::egoNeighbors>;
    using ListsPointer = std::shared_ptr<NeighborLists>;

    ListsPointer listsAt(qint64 t) const;
    ListsPointer prepareLists(const TimeStamp &stamp, bool replace);
    void store(NeighborLists &lists, int id, const neighborDatum *list, int count);
    template <class Run>
    bool calculate(const TimeStamp &stamp, bool showProgress, bool keepsCancelled, Run run);
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

    static int sNextId; ///< of the process; negative: not set up

    QString mName;
    Definition mDefinition;
    int mId = -1;
    MGeoData *mGeoData = nullptr;
    QString mInformation;
    std::map<TimeStamp, ListsPointer> mWeights; ///< Keys do not overlap.
};

/// SaveToStream and RestoreFromStream of the set itself.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const AdjacencySet *set);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, AdjacencySet *set);
