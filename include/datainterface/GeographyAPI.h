// SPDX-License-Identifier: MIT
/// Geographies by id: their objects and times, queries in space and time, polygon operations, and
/// the creation of vector geographies.
///
/// Objects are given by their index. An unknown id, an object that does not exist (at the time) and
/// an object or geography of another kind return false, -1, 0 or an empty handle. Outputs are
/// replaced on success and otherwise unchanged. Places are planar and in map units.
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

struct FMShapes; // fennimark/FMShapes.h

/// The summary of a geography; a default record for an unknown id.
DATAINTERFACE_EXPORT GeoProps VORN_GetGeographyProperties(int geographyId);
/// The MGeoData, which the controller continues to own; null for an unknown id.
DATAINTERFACE_EXPORT void *VORN_GetGeography(int geographyId);
/// The ids of all geographies, ascending.
DATAINTERFACE_EXPORT QVector<int> VORN_GetGeographyIds();
/// Calls ControllerBase::RemoveGeography.
DATAINTERFACE_EXPORT bool VORN_RemoveGeography(int geographyId);

/// The intervals over which the object has one geometry each, in order of time. Raises "Invalid
/// object chain" when the geometry does not have the object.
DATAINTERFACE_EXPORT bool VORN_GetObservationTimes(int geographyId, unsigned int object,
                                                   QVector<Interval> &intervals);
/// Whether the object has a geometry at the time.
DATAINTERFACE_EXPORT bool VORN_ObjectExistsAtTime(int geographyId, unsigned int object,
                                                  qint64 time);
/// The objects of a vector geography that have a geometry at the time, ascending. Several times as
/// fast as VORN_ObjectExistsAtTime for each object. They are the same over
/// VORN_GetStaticObjectInterval.
DATAINTERFACE_EXPORT bool VORN_GetExistingObjects(int geographyId, qint64 time,
                                                  QVector<unsigned int> &objects);
/// The disjoint intervals, in order of time, over each of which the objects and their shapes do not
/// change; for a raster its one span of time.
DATAINTERFACE_EXPORT bool VORN_GetAllObjectTimes(int geographyId, QVector<Interval> &intervals);
/// The number of objects that exist at the time; for a raster the number of cells.
DATAINTERFACE_EXPORT unsigned int VORN_GetObjectCount(int geographyId, qint64 time);

// The geometry that an object of a vector geography has at a time.
/// Checks the geometry out. The caller returns it once with VORN_ReturnObject, before the geography
/// is deleted.
DATAINTERFACE_EXPORT VORN_Object VORN_GetObject(int geographyId, unsigned int object, qint64 time);
/// Checks the geometry in. Does nothing for an empty handle.
DATAINTERFACE_EXPORT void VORN_ReturnObject(VORN_Object object);
/// The place of a point.
DATAINTERFACE_EXPORT bool VORN_GetPointVertex(int geographyId, unsigned int object, qint64 time,
                                              QPointF &point);
/// One list of vertices for each part.
DATAINTERFACE_EXPORT bool VORN_GetLineVertices(int geographyId, unsigned int object, qint64 time,
                                               QList<QVector<QPointF>> &parts);
/// Top left is the smallest x and the smallest y.
DATAINTERFACE_EXPORT bool VORN_GetObjectBounds(int geographyId, unsigned int object, qint64 time,
                                               QRectF &bounds);

/// The geometries of all objects of a vector geography at a time, with object indices as `ids`, in
/// the order of the geography's records: neighbours in space are near to one another. They stay
/// valid over VORN_GetStaticObjectInterval. An object without a geometry has no entry. False when
/// memory does not hold them, or when the scratch file cannot be read.
DATAINTERFACE_EXPORT bool VORN_GetAllShapes(int geographyId, qint64 time, FMShapes &shapes);

// Polygons by handle. Areas and overlays need simple polygons (FMPolygon::IsSimple).
/// The rings in the order and direction in which they were given.
DATAINTERFACE_EXPORT bool VORN_GetPolygonVertices(VORN_Object polygon,
                                                  QList<QVector<QPointF>> &rings);
/// The centre of gravity; the centre of the bounds if the area is 0.
DATAINTERFACE_EXPORT bool VORN_GetPolygonCentroid(VORN_Object polygon, QPointF &centroid);
/// In squared map units. For a polygon that is not simple, and for a handle without a polygon, the
/// result is false and the area is set to 0.
DATAINTERFACE_EXPORT bool VORN_GetPolygonArea(VORN_Object polygon, double &area);
/// Points drawn uniformly from the area of the polygon with VORN_GetUniformDeviate. False when none
/// can be drawn.
DATAINTERFACE_EXPORT bool VORN_GetRandomPointsInPolygon(VORN_Object polygon, int count,
                                                        QVector<QPointF> &points);
/// The pieces that both boundaries have in common, in the direction of the first polygon. True even
/// if there is none.
DATAINTERFACE_EXPORT bool VORN_GetCommonPolygonBorder(VORN_Object a, VORN_Object b,
                                                      QList<QLineF> &border);
// Overlays return closed rings: shells counter-clockwise, each followed by its holes. False when a
// polygon is not simple.
/// False when the polygons have no area in common.
/// @param area  the area of the intersection.
DATAINTERFACE_EXPORT bool VORN_GetPolygonIntersection(VORN_Object a, VORN_Object b,
                                                      QList<QVector<QPointF>> &rings, double &area);
/// The same with a rectangle.
DATAINTERFACE_EXPORT bool VORN_GetPolygonRectIntersection(VORN_Object polygon, const QRectF &rect,
                                                          QList<QVector<QPointF>> &rings,
                                                          double &area);
/// A single polygon returns its own rings, even if it is not simple. False without polygons.
DATAINTERFACE_EXPORT bool VORN_GetPolygonUnion(const QVector<VORN_Object> &polygons,
                                               QList<QVector<QPointF>> &rings);

// Objects of a vector geography at a time, by place. Shapes include their boundaries, so objects
// that only touch are found. A rectangle whose extent is negative or NaN meets nothing.
/// Objects that have a point in common with the rectangle.
DATAINTERFACE_EXPORT bool VORN_RectQuery(int geographyId, const QRectF &rect, qint64 time,
                                         QVector<unsigned int> &objects);
/// Objects whose bounding boxes have a point in common with the rectangle.
DATAINTERFACE_EXPORT bool VORN_MBRQuery(int geographyId, const QRectF &rect, qint64 time,
                                        QVector<unsigned int> &objects);
/// The same for all times from `start` to `end`, both included. An object is listed once for each
/// of its geometries.
DATAINTERFACE_EXPORT bool VORN_RectTimeQuery(int geographyId, const QRectF &rect, qint64 start,
                                             qint64 end, QVector<unsigned int> &objects);
/// Objects that have a point in common with the disc. For a raster the cells (row * columns +
/// column) whose centres are in the disc; false when the disc does not meet the grid.
DATAINTERFACE_EXPORT bool VORN_CircleQuery(int geographyId, const QPointF &center, double radius,
                                           qint64 time, QVector<unsigned int> &objects);
/// The objects of another geography, or of the same, that have a point in common with the object.
DATAINTERFACE_EXPORT bool VORN_ObjectQuery(int geographyId, unsigned int object, int otherGeography,
                                           qint64 time, QVector<unsigned int> &objects);
/// The objects that have a point in common with the polygon; for a raster the cells whose centres
/// are in the polygon, and false when there is none. A handle without a polygon raises "Invalid
/// object type".
/// @param overlap  may be null. Receives the area that each object shares with the polygon if the
///                 polygon is simple and the objects are polygons; otherwise it is unchanged.
DATAINTERFACE_EXPORT bool VORN_PolygonQuery(VORN_Object polygon, int geographyId, qint64 time,
                                            QVector<unsigned int> &objects,
                                            QVector<double> *overlap);

// Neighbours with their squared distances. Weights are 0; angles are 0 except between two points.
// Ties are not added beyond the requested number.
/// The nearest `count` objects, the nearest first. False when `count` is below 1 or there is no
/// object.
DATAINTERFACE_EXPORT bool VORN_NearestNeighborQuery(int geographyId, const QPointF &place,
                                                    qint64 time, int count,
                                                    QVector<neighborDatum> &neighbors);
// For each object of `from` its neighbours in `to`, ordered by distance; an object that does not
// exist at the time has none. If both are the same geography an object is its own neighbour. True,
// with nothing done, when `from` has no object at the time; false when the user cancelled.
/// False when `count` is below 1.
DATAINTERFACE_EXPORT bool
VORN_NearestNeighborObjectQuery(int from, int to, qint64 time, int count,
                                QVector<QVector<neighborDatum>> &neighbors, bool showProgress);
/// All neighbours within `range`, in map units. False for a negative range and for NaN.
DATAINTERFACE_EXPORT bool VORN_RangeObjectQuery(int from, int to, qint64 time, double range,
                                                QVector<QVector<neighborDatum>> &neighbors,
                                                bool showProgress);
/// Element i: the polygons exactly i + 1 steps of contiguity away, ascending. False when `rings` is
/// below 1.
/// @param queen  whether a common point is a step; otherwise only a common border is.
DATAINTERFACE_EXPORT bool VORN_GetPolygonNeighborRings(int geographyId, unsigned int object,
                                                       qint64 time, int rings, bool queen,
                                                       QVector<QVector<unsigned int>> &neighbors);

// Only one geography is built at a time: start, add chains (one for each object) and their
// geometries, then finish or abort.

/// Starts a geography with the extent and the projection of another one. False when one is being
/// built already, for an unknown id and for a raster.
DATAINTERFACE_EXPORT bool VORN_StartNewVectorGeography(int likeGeography);
/// @param bounds          the expected extent; objects outside are accepted.
/// @param projectionFrom  the vector geography whose projection is taken over; negative: none.
DATAINTERFACE_EXPORT bool VORN_StartNewVectorGeography(const QRectF &bounds, qint64 start,
                                                       qint64 end, int projectionFrom);
/// Sets the projection of the geography that is being built from well-known text. False after the
/// first chain, when nothing is being built, and when the text does not parse.
DATAINTERFACE_EXPORT bool VORN_SetNewGeographyProjection(const QString &wkt);
/// Sets the distance, in map units, up to which two places are the same place for contiguity and
/// shared borders. The default, 0, allows only for rounding. False when nothing is being built and
/// for a negative or infinite tolerance.
DATAINTERFACE_EXPORT bool VORN_SetAdjacencyTolerance(double tolerance);
/// Adds an object without geometry.
/// @return its chain id; -1 when nothing is being built.
DATAINTERFACE_EXPORT int VORN_CreateNewObjectChain();

// Add the geometry of an object over an interval. False when nothing is being built, for an unknown
// chain, for an interval that overlaps another of the chain, and for a geometry that is invalid or
// of another kind than those before.
/// A point.
DATAINTERFACE_EXPORT bool VORN_AddPointToChain(unsigned int chain, const QPointF &point,
                                               const Interval &interval);
/// A line, with one list of vertices for each part.
DATAINTERFACE_EXPORT bool VORN_AddLineToChain(unsigned int chain,
                                              const QList<QList<QPointF>> &parts,
                                              const Interval &interval);
/// A polygon, with one list of vertices for each ring.
DATAINTERFACE_EXPORT bool VORN_AddPolygonToChain(unsigned int chain,
                                                 const QList<QList<QPointF>> &rings,
                                                 const Interval &interval);
DATAINTERFACE_EXPORT bool VORN_AddPolygonToChain(unsigned int chain, const QList<QPointF> &ring,
                                                 const Interval &interval);
/// Discards the geography. False when nothing is being built.
DATAINTERFACE_EXPORT bool VORN_AbortNewVectorGeography();
/// Writes a scratch file and opens it through ControllerBase::AddNewVectorGeography like any
/// geometry file.
/// @return the id of the geography; -1 when nothing was added or the file cannot be created; 0 when
///         nothing is being built.
DATAINTERFACE_EXPORT int VORN_FinishVectorGeography(const QString &name, const QString &history,
                                                    TimeFormat format);
