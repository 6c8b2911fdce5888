// SPDX-License-Identifier: MIT
/// A vector geography: objects (chains) whose geometries hold over spans of time, with their index
/// and projection.
#pragma once
#include <QList>
#include <QMap>
#include <QPointF>
#include <QSet>
#include <QString>
#include <QVector>
#include <memory>
#include "fennimark/FMObjectChain.h"
#include "fennimark/FM_PointTree.h"
#include "fennimark/HilbertTree.h"
#include "fennimark/export.h"
#include "fennimark/geometryTypes.h"

class FMObject;
class FMProjectionInfo;
class QDataStream;

/// Queries return record ids (HilbertTree) for one time, given in the ticks of the geography.
/// Distances are planar, in map units, and squared where a name says so; degrees are used as they
/// are, and nothing wraps at the antimeridian. A progress callback takes a percentage and a text,
/// where null keeps the present text. When it returns false, the operation stops and its result is
/// false. Callbacks may be null. A Fennims must not be used from two threads at a time.
class FENNIMARK_EXPORT Fennims {
public:
    enum GeoTypes { PointGeography = 1, PolygonGeography = 2, LineGeography = 3 };
    using Progress = fennimark::ProgressCallback;

    Fennims();
    virtual ~Fennims();

    /// Reads what Save or VORNBuilder::Finish wrote, in one pass and not a byte past its end mark.
    /// False for a damaged, cut or foreign stream; this geography is then empty.
    virtual bool Open(QDataStream &in, Progress progress);
    /// Writes all that is not removed. Record ids of the written form are counted anew.
    virtual bool Save(QDataStream &out, Progress progress);
    /// Removes and frees a chain of this geography; others are left alone. Its records can no
    /// longer be found.
    virtual void RemoveChain(FMObjectChain *chain);

    /// The records of all objects that exist at the time, ascending by chain id. Repeated calls for
    /// times without a change between them share one vector.
    virtual QVector<int> GetObservationsAtTime(qint64 time);
    /// The longest span around `time` in which no observation of any object begins or ends. False,
    /// with `range` left as it is, when nothing exists at `time`.
    virtual bool GetCommonStaticTimeStamp(qint64 time, timeRange &range);
    /// The distinct starts and ends of all observations, truncated, ascending.
    virtual QList<qint64> GetAllObjectTimes();

    /// The records within `order` steps of contiguity around `record` at `time`, ascending: the
    /// record itself too unless excluded. Excluded records drop from the result, not from the walk.
    /// Empty for a record that is no polygon of that time.
    /// @param queen  with true any common boundary point makes neighbours, with false only a common
    /// border of positive length.
    virtual QVector<int> CalculatePolygonAdjacencies(int record, qint64 time, bool queen, int order,
                                                     const QSet<int> &exclude);
    /// The same for every polygon at `time`; each has its entry in `neighbors`, also an empty one.
    virtual bool CalculatePolygonAdjacencies(bool queen, qint64 time, int order, bool includeEgo,
                                             QMap<int, QVector<int>> &neighbors, Progress progress);
    /// For every point at `time` those no farther than `range`, by distance. Keys and hit ids are
    /// record ids.
    virtual bool CalculatePointAdjacenciesByRange(double range, qint64 time, bool includeEgo,
                                                  QMap<int, QVector<ptTreeQueryResult>> &neighbors,
                                                  Progress progress);
    /// For every point at `time` the `count` nearest, with all ties at the last.
    virtual bool
    CalculatePointAdjacenciesByNearestNeighbor(int count, qint64 time, bool includeEgo,
                                               QMap<int, QVector<ptTreeQueryResult>> &neighbors,
                                               Progress progress);
    /// Element i: the polygons exactly i + 1 steps of contiguity away; empty sets behind the last
    /// that can be reached.
    virtual QVector<QSet<int>> CalculatePolygonNeighborRings(int record, qint64 time, bool queen,
                                                             int rings);
    /// For each record of `source` the min(count, n) nearest records of this geography at `time`,
    /// by distance and then record id; not extended by ties. A record of this geography finds
    /// itself.
    virtual bool CalculateNearestNeighborsToObjects(HilbertTree *source,
                                                    const QVector<int> &records, qint64 time,
                                                    int count, QMap<int, QVector<int>> &neighbors,
                                                    Progress progress);
    /// The same with all records no farther than `range`.
    virtual bool CalculateRangeNeighborsToObjects(HilbertTree *source, const QVector<int> &records,
                                                  qint64 time, double range,
                                                  QMap<int, QVector<int>> &neighbors,
                                                  Progress progress);
    /// The min(count, n) nearest records, by distance and then record id. False when there are
    /// none.
    virtual bool CalculateNearestNeighborsToPoint(const QPointF &point, qint64 time, int count,
                                                  QVector<int> &records);
    /// Writes a geometry file of the given chains, which keep their ids. False, with no file, for
    /// an unknown id, when writing fails, and when the callback returns false.
    /// @param path  in the local 8-bit encoding
    virtual bool CreateSubsetFromIds(const char *path, const QVector<int> &chainIds,
                                     Progress progress);

    QString GetName() const;
    void SetName(const char *name); ///< in the local 8-bit encoding
    int GetChainCount() const;
    FMObjectChain *GetChainById(int id);
    const FMObjectChain *GetChainById(int id) const; ///< null when there is none
    GeoTypes GetGeographyType() const;
    /// The hull of all records in space and time. Of an empty geography: a zero rectangle, start 0,
    /// end -1.
    RectInT GetBoundingRect() const;
    timeRange GetTimeBounds() const;
    FMProjectionInfo GetProjectionSettings() const;
    /// See VORNBuilder::SetAdjacencyTolerance.
    double GetAdjacencyTolerance() const;

    /// Records at `time` whose geometry meets the closed rectangle; ids ascend.
    void RectQuery(const Rect2D &rect, qint64 time, QVector<int> &records) const;
    /// Records at `time` whose bounding box meets the closed rectangle.
    void OverlapsMBRs(const Rect2D &rect, qint64 time, QVector<int> &records) const;
    /// Records at `time` whose geometry meets the closed disc. Nothing for a negative radius.
    void CircleQuery(double x, double y, double radius, qint64 time, QVector<int> &records) const;
    /// Records at `time` whose geometry has a point in common with `object`.
    void ObjectQuery(const FMObject &object, qint64 time, QVector<int> &records) const;

    /// Where stores above 4 MiB keep their bytes, in files without a name or deleted on close. Made
    /// when missing. Empty, the default: the system's directory for temporary files. Holds for
    /// stores made from then on.
    static void SetScratchDirectory(const QString &directory);

    HilbertTree *mTree;                 ///< owned; the same object for this geography's whole life
    QMap<int, FMObjectChain *> mChains; ///< by chain id; owned

protected:
    /// Gives records that belong to no chain (those of a removed one) to a new chain. Id -1: one
    /// above the largest. Null when the id is in use, the type is another, a record is in use, or a
    /// range is not the record's own.
    virtual FMObjectChain *AddChain(const QVector<QPair<timeRange, int>> &observations, int id,
                                    GeoTypes type);

private:
    Q_DISABLE_COPY(Fennims)
    class Private;
    std::unique_ptr<Private> d;
};
