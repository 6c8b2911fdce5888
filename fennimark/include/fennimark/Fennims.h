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
#include "fennimark/ProgressCallback.h"
#include "fennimark/export.h"
#include "fennimark/geometryTypes.h"

class FMObject;
class FMProjectionInfo;
class QDataStream;
struct FMShapes;

/// Queries return the ids of records (see HilbertTree) at one time, which is given in the ticks of
/// the geography. Distances are planar, in map units, and squared where a name says so; degrees are
/// used as they are, and nothing wraps at the antimeridian. A progress callback receives a
/// percentage and a text; a null text keeps the present one. When it returns false, the operation
/// stops and returns false. Callbacks may be null. A Fennims must not be used by two threads at the
/// same time.
class FENNIMARK_EXPORT Fennims {
public:
    enum GeoTypes { PointGeography = 1, PolygonGeography = 2, LineGeography = 3 };
    using Progress = fennimark::ProgressCallback;

    Fennims();
    virtual ~Fennims();

    /// Replaces the content by what Save or VORNBuilder::Finish wrote. The stream is read in one
    /// pass and not beyond the end mark. False for a stream that is damaged, cut short or not a
    /// geometry file; this geography is then empty.
    virtual bool Open(QDataStream &in, Progress progress);
    /// Writes all chains and records that are not removed. The records get new ids in the file.
    virtual bool Save(QDataStream &out, Progress progress);
    /// Removes a chain and its records; queries no longer find them, and `chain` must not be used
    /// afterwards. Null and chains of other geographies are ignored.
    virtual void RemoveChain(FMObjectChain *chain);

    /// The records of all objects that exist at `time`, in ascending order of chain id. The lists
    /// of the last 8 spans without a change are kept and shared by repeated calls.
    virtual QVector<int> GetObservationsAtTime(qint64 time);
    /// The longest span around `time` in which no observation of any object begins or ends. False,
    /// with `range` unchanged, when no object exists at `time`.
    virtual bool GetCommonStaticTimeStamp(qint64 time, timeRange &range);
    /// The distinct starts and ends of all observations, truncated, ascending.
    virtual QList<qint64> GetAllObjectTimes();

    /// The records within `order` steps of contiguity around `record` at `time`, ascending. The
    /// record itself is among them unless it is excluded. Records in `exclude` are left out of the
    /// result, but the walk passes through them. Empty when `record` is not a polygon that exists
    /// at `time`.
    /// @param queen  true: polygons with a common boundary point are neighbours. false: only those
    /// that share a piece of border, as in FMPolygon::BordersPolygon.
    virtual QVector<int> CalculatePolygonAdjacencies(int record, qint64 time, bool queen, int order,
                                                     const QSet<int> &exclude);
    /// The same for every polygon at `time`. Each of them has an entry in `neighbors`, also when it
    /// has no neighbour.
    virtual bool CalculatePolygonAdjacencies(bool queen, qint64 time, int order, bool includeEgo,
                                             QMap<int, QVector<int>> &neighbors, Progress progress);
    /// For every point at `time` the points no farther than `range`, in order of distance. Keys and
    /// the ids of hits are record ids.
    virtual bool CalculatePointAdjacenciesByRange(double range, qint64 time, bool includeEgo,
                                                  QMap<int, QVector<ptTreeQueryResult>> &neighbors,
                                                  Progress progress);
    /// For every point at `time` the `count` nearest points and all that are tied with the last.
    virtual bool
    CalculatePointAdjacenciesByNearestNeighbor(int count, qint64 time, bool includeEgo,
                                               QMap<int, QVector<ptTreeQueryResult>> &neighbors,
                                               Progress progress);
    /// Element i holds the polygons exactly i + 1 steps of contiguity away. The sets after the last
    /// ring that can be reached are empty.
    virtual QVector<QSet<int>> CalculatePolygonNeighborRings(int record, qint64 time, bool queen,
                                                             int rings);
    /// For each given record of `source` the min(count, n) nearest records of this geography at
    /// `time`, by distance and then record id. Ties do not extend the list. A record of this
    /// geography is among its own neighbours. Records that do not exist have no entry.
    virtual bool CalculateNearestNeighborsToObjects(HilbertTree *source,
                                                    const QVector<int> &records, qint64 time,
                                                    int count, QMap<int, QVector<int>> &neighbors,
                                                    Progress progress);
    /// The same with all records no farther than `range`.
    virtual bool CalculateRangeNeighborsToObjects(HilbertTree *source, const QVector<int> &records,
                                                  qint64 time, double range,
                                                  QMap<int, QVector<int>> &neighbors,
                                                  Progress progress);
    /// The min(count, n) nearest records, by distance and then record id. False when there is none.
    virtual bool CalculateNearestNeighborsToPoint(const QPointF &point, qint64 time, int count,
                                                  QVector<int> &records);
    /// Writes a geometry file of the given chains, which keep their ids. False, with no new file
    /// under `path`, for an unknown id, when writing fails, and when the callback returns false.
    /// @param path  in the local 8-bit encoding
    virtual bool CreateSubsetFromIds(const char *path, const QVector<int> &chainIds,
                                     Progress progress);

    QString GetName() const;
    void SetName(const char *name); ///< in the local 8-bit encoding
    int GetChainCount() const;
    FMObjectChain *GetChainById(int id);
    const FMObjectChain *GetChainById(int id) const; ///< null for an unknown id, in both forms
    GeoTypes GetGeographyType() const;
    /// The hull of all records in space and time. For an empty geography: a zero rectangle, start
    /// 0, end -1.
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

    /// All geometries at `time` in ascending order of record id, in which neighbours in space are
    /// near to one another; `ids` are chain ids. Nothing is checked out, so this takes a quarter of
    /// the time of the records one by one. False, with `shapes` empty, when the scratch file cannot
    /// be read and when there are 2^32 vertices or more.
    bool GetShapesAtTime(qint64 time, FMShapes &shapes) const;

    /// Sets the directory of the scratch files in which geographies larger than 4 MiB keep their
    /// bytes. The files have no name or are deleted on close; the directory is created when it is
    /// missing. An empty string, the default, stands for the system's directory for temporary
    /// files. The setting applies to files that are made afterwards.
    static void SetScratchDirectory(const QString &directory);

    HilbertTree *mTree; ///< owned; the same object during the whole life of this geography
    QMap<int, FMObjectChain *> mChains; ///< by chain id; owned

protected:
    /// Makes a new chain of records that belong to no chain because theirs was removed. Id -1
    /// stands for one above the largest id. Null when the id or a record is in use, when `type` is
    /// not that of the geography, when a range is not the one of its record, and when ranges
    /// overlap or descend.
    virtual FMObjectChain *AddChain(const QVector<QPair<timeRange, int>> &observations, int id,
                                    GeoTypes type);

private:
    Q_DISABLE_COPY(Fennims)
    class Private;
    std::unique_ptr<Private> d;
};
