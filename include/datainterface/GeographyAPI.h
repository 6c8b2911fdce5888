// SPDX-License-Identifier: MIT
/// Geographies by id: their objects and times, queries in space and time, polygon operations, and
/// the making of new vector geographies.
///
/// Objects are given by their index. An unknown id, an object that is not there (at the time) and
/// an object or geography of another kind give false, -1, 0 or an empty handle. Outputs are
/// replaced on success and stay as they are otherwise. Places are planar and in map units.
#pragma once
#include <QLineF>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>
#include "datainterface/GeoProps.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/VORN_Object.h"
#include "datainterface/export.h"
#include "datainterface/neighborDatum.h"

/// A default record for an unknown id.
DATAINTERFACE_EXPORT GeoProps VORN_GetGeographyProperties(int geographyId);
/// The MGeoData; null for an unknown id. It stays its owner's.
DATAINTERFACE_EXPORT void *VORN_GetGeography(int geographyId);
/// Ascending.
DATAINTERFACE_EXPORT QVector<int> VORN_GetGeographyIds();
/// Through ControllerBase::RemoveGeography.
DATAINTERFACE_EXPORT bool VORN_RemoveGeography(int geographyId);

/// The intervals in which the object has one geometry each, the earliest first. Raises "Invalid
/// object chain" when the geometry has lost the object.
DATAINTERFACE_EXPORT bool VORN_GetObservationTimes(int geographyId, unsigned int object,
                                                   QVector<Interval> &intervals);
/// Whether the object has a geometry at the time.
DATAINTERFACE_EXPORT bool VORN_ObjectExistsAtTime(int geographyId, unsigned int object,
                                                  qint64 time);
/// The disjoint intervals, in order, on each of which the set of objects and their shapes stays the
/// same; of a raster its one span of time.
DATAINTERFACE_EXPORT bool VORN_GetAllObjectTimes(int geographyId, QVector<Interval> &intervals);
/// Objects that exist at the time; of a raster all cells.
DATAINTERFACE_EXPORT unsigned int VORN_GetObjectCount(int geographyId, qint64 time);

// The geometry that an object of a vector geography has at a time.
/// Checks it out. The caller gives it back with VORN_ReturnObject, once, before the geography goes.
DATAINTERFACE_EXPORT VORN_Object VORN_GetObject(int geographyId, unsigned int object, qint64 time);
/// An empty handle is left alone.
DATAINTERFACE_EXPORT void VORN_ReturnObject(VORN_Object object);
/// The place of a point.
DATAINTERFACE_EXPORT bool VORN_GetPointVertex(int geographyId, unsigned int object, qint64 time,
                                              QPointF &point);
/// One list a part.
DATAINTERFACE_EXPORT bool VORN_GetLineVertices(int geographyId, unsigned int object, qint64 time,
                                               QList<QVector<QPointF>> &parts);
/// Top left is the smallest x and the smallest y.
DATAINTERFACE_EXPORT bool VORN_GetObjectBounds(int geographyId, unsigned int object, qint64 time,
                                               QRectF &bounds);

// Polygons by handle. Areas and overlays are of simple polygons alone (FMPolygon::IsSimple).
/// The rings as they were given.
DATAINTERFACE_EXPORT bool VORN_GetPolygonVertices(VORN_Object polygon,
                                                  QList<QVector<QPointF>> &rings);
/// The centre of gravity; the middle of the bounds where the area is 0.
DATAINTERFACE_EXPORT bool VORN_GetPolygonCentroid(VORN_Object polygon, QPointF &centroid);
/// In squared map units. Of a polygon that is not simple, and without one: false, and the area is
/// set to 0.
DATAINTERFACE_EXPORT bool VORN_GetPolygonArea(VORN_Object polygon, double &area);
/// Uniform draws from the polygon's area, by VORN_GetUniformDeviate. False when none can be drawn.
DATAINTERFACE_EXPORT bool VORN_GetRandomPointsInPolygon(VORN_Object polygon, int count,
                                                        QVector<QPointF> &points);
/// The pieces in which both boundaries run together, in the first one's direction. True without
/// any.
DATAINTERFACE_EXPORT bool VORN_GetCommonPolygonBorder(VORN_Object a, VORN_Object b,
                                                      QList<QLineF> &border);
// Overlays: closed rings, shells counter-clockwise, each followed by its holes. False when a
// polygon is not simple.
/// @param area  of the intersection. False when there is no common area.
DATAINTERFACE_EXPORT bool VORN_GetPolygonIntersection(VORN_Object a, VORN_Object b,
                                                      QList<QVector<QPointF>> &rings, double &area);
/// The same with a rectangle.
DATAINTERFACE_EXPORT bool VORN_GetPolygonRectIntersection(VORN_Object polygon, const QRectF &rect,
                                                          QList<QVector<QPointF>> &rings,
                                                          double &area);
/// A single polygon gives its own rings, also when it is not simple. False without polygons.
DATAINTERFACE_EXPORT bool VORN_GetPolygonUnion(const QVector<VORN_Object> &polygons,
                                               QList<QVector<QPointF>> &rings);

// Objects of a vector geography at a time, by place. Sets are closed: touching counts. A rectangle
// with a negative or no numeric extent meets nothing.
/// Objects that have a point in common with the rectangle.
DATAINTERFACE_EXPORT bool VORN_RectQuery(int geographyId, const QRectF &rect, qint64 time,
                                         QVector<unsigned int> &objects);
/// Objects whose bounding boxes meet the rectangle.
DATAINTERFACE_EXPORT bool VORN_MBRQuery(int geographyId, const QRectF &rect, qint64 time,
                                        QVector<unsigned int> &objects);
/// The same for all times from `start` to `end`, both included: an object stands once for each of
/// its geometries.
DATAINTERFACE_EXPORT bool VORN_RectTimeQuery(int geographyId, const QRectF &rect, qint64 start,
                                             qint64 end, QVector<unsigned int> &objects);
/// Of a raster the cells (row * columns + column) with their centres in the disc, and false when it
/// misses the grid.
DATAINTERFACE_EXPORT bool VORN_CircleQuery(int geographyId, const QPointF &center, double radius,
                                           qint64 time, QVector<unsigned int> &objects);
/// The objects of another geography, or of the same, that have a point in common with the object.
DATAINTERFACE_EXPORT bool VORN_ObjectQuery(int geographyId, unsigned int object, int otherGeography,
                                           qint64 time, QVector<unsigned int> &objects);
/// The objects that have a point in common with the polygon; of a raster the cells with their
/// centres in it, and false without any. A handle that holds no polygon raises "Invalid object
/// type".
/// @param overlap  may be null; takes the area that each object shares with the polygon when that
///                 is simple and the objects are polygons, and stays as it is otherwise.
DATAINTERFACE_EXPORT bool VORN_PolygonQuery(VORN_Object polygon, int geographyId, qint64 time,
                                            QVector<unsigned int> &objects,
                                            QVector<double> *overlap);

// Neighbours with their squared distances; weights are 0, and so are angles but between two points.
// Ties do not add to the number that is asked for.
/// The nearest `count` objects, the nearest first. False when `count` is below 1 or there is no
/// object.
DATAINTERFACE_EXPORT bool VORN_NearestNeighborQuery(int geographyId, const QPointF &place,
                                                    qint64 time, int count,
                                                    QVector<neighborDatum> &neighbors);
// For each object of `from` its neighbours in `to`, by distance; an object that does not exist at
// the time has none. An object of the same geography finds itself. True, with nothing done, when
// `from` has no object at the time; false when the user cancelled.
/// False when `count` is below 1.
DATAINTERFACE_EXPORT bool
VORN_NearestNeighborObjectQuery(int from, int to, qint64 time, int count,
                                QVector<QVector<neighborDatum>> &neighbors, bool showProgress);
/// All within `range`, in map units. False for a negative range and for NaN.
DATAINTERFACE_EXPORT bool VORN_RangeObjectQuery(int from, int to, qint64 time, double range,
                                                QVector<QVector<neighborDatum>> &neighbors,
                                                bool showProgress);
/// Element i: the polygons exactly i + 1 steps of contiguity away, ascending. False when `rings` is
/// below 1.
/// @param queen  a common point is a step; otherwise only a common border is.
DATAINTERFACE_EXPORT bool VORN_GetPolygonNeighborRings(int geographyId, unsigned int object,
                                                       qint64 time, int rings, bool queen,
                                                       QVector<QVector<unsigned int>> &neighbors);

// One geography is built at a time: start, add chains (one an object) and their geometries, finish
// or abort.

/// With the extent and the projection of another vector geography. False when one is being built
/// already, for an unknown id and for another kind.
DATAINTERFACE_EXPORT bool VORN_StartNewVectorGeography(int likeGeography);
/// @param bounds          the expected extent; objects outside are accepted.
/// @param projectionFrom  the vector geography whose projection is taken over; negative: none.
DATAINTERFACE_EXPORT bool VORN_StartNewVectorGeography(const QRectF &bounds, qint64 start,
                                                       qint64 end, int projectionFrom);
/// Gives the geography that is being built a projection from well-known text. It must be called
/// before the first chain; false then, with nothing being built, and when the text does not parse.
DATAINTERFACE_EXPORT bool VORN_SetNewGeographyProjection(const QString &wkt);
/// Places no farther apart than this, in map units, will be one place for contiguity and shared
/// borders. 0, the default: rounding slack only. False with nothing being built, or for a negative
/// or infinite tolerance.
DATAINTERFACE_EXPORT bool VORN_SetAdjacencyTolerance(double tolerance);
/// A new object without geometry. @return its chain id; -1 with nothing being built.
DATAINTERFACE_EXPORT int VORN_CreateNewObjectChain();

// The geometry of an object over an interval. False with nothing being built, for an unknown chain,
// an interval that overlaps one of the chain, and a geometry that is of another kind or no
// geometry.
/// A point.
DATAINTERFACE_EXPORT bool VORN_AddPointToChain(unsigned int chain, const QPointF &point,
                                               const Interval &interval);
/// A line, one list a part.
DATAINTERFACE_EXPORT bool VORN_AddLineToChain(unsigned int chain,
                                              const QList<QList<QPointF>> &parts,
                                              const Interval &interval);
/// A polygon, one list a ring.
DATAINTERFACE_EXPORT bool VORN_AddPolygonToChain(unsigned int chain,
                                                 const QList<QList<QPointF>> &rings,
                                                 const Interval &interval);
DATAINTERFACE_EXPORT bool VORN_AddPolygonToChain(unsigned int chain, const QList<QPointF> &ring,
                                                 const Interval &interval);
/// False with nothing being built.
DATAINTERFACE_EXPORT bool VORN_AbortNewVectorGeography();
/// Writes a scratch file and opens it through ControllerBase::AddNewVectorGeography, as any
/// geometry file.
/// @return the new geography's id; -1 when nothing was added or the file cannot be made; 0 with
/// nothing being built.
DATAINTERFACE_EXPORT int VORN_FinishVectorGeography(const QString &name, const QString &history,
                                                    TimeFormat format);
