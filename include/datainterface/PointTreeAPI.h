// SPDX-License-Identifier: MIT
/// Point trees by handle: nearest neighbours, ranges, rectangles and polygons over points with
/// integer ids.
///
/// A tree exists until VORN_DeletePointTree; its handle is never reused. An unknown handle returns
/// false, with nothing done. FM_PointTree documents the order of hits, ties, and which distances
/// are squared.
#pragma once
#include <QPair>
#include <QPointF>
#include <QRectF>
#include <QSet>
#include <QVector>
#include "datainterface/GeoPointTree.h"
#include "datainterface/export.h"

/// Creates an empty tree.
/// @return its handle.
DATAINTERFACE_EXPORT int VORN_CreatePointTree();
/// Creates a tree from points with their ids. Returns -1 without points, for a coordinate that is
/// not finite, when memory runs out and when the user cancelled.
DATAINTERFACE_EXPORT int VORN_CreatePointTreeFromPoints(const QVector<QPair<QPointF, int>> &points,
                                                        const PT_RotationMatrix &rotation);
/// Creates a tree from the objects of a geography at a time, as GeoPointTree::SetGeography does.
/// Returns -1 for an unknown id, for lines, and when the user cancelled.
DATAINTERFACE_EXPORT int VORN_CreatePointTreeFromCentroids(int geographyId, qint64 time,
                                                           const PT_RotationMatrix &rotation);
/// The same under another name.
DATAINTERFACE_EXPORT int VORN_CreatePointTreeFromGeography(int geographyId, qint64 time,
                                                           const PT_RotationMatrix &rotation);
/// Adds a point. False for a coordinate that is not finite.
DATAINTERFACE_EXPORT bool VORN_AddToPointTree(int tree, const QPointF &point, int id,
                                              const PT_RotationMatrix &rotation);
/// Removes one point with exactly this place and id. The place is that in the tree, so the caller
/// applies a rotation first.
DATAINTERFACE_EXPORT bool VORN_RemoveFromPointTree(int tree, const QPointF &point, int id);

// Neighbours one at a time. A cursor is freed with VORN_DoneWithPointTreeNearestNeighbors on the
// same tree, whatever the result was. A cursor of another tree returns false.
/// The nearest point whose id is not in `exclude`, and a cursor for the next ones.
DATAINTERFACE_EXPORT bool VORN_GetPointTreeFirstNearestNeighbor(int tree, const QPointF &place,
                                                                const QSet<int> &exclude,
                                                                ptTreeQueryResult &hit,
                                                                void *&cursor);
/// The next point. `exclude` is not used: the search continues with the set that it began with.
DATAINTERFACE_EXPORT bool VORN_GetPointTreeNextNearestNeighbor(int tree, const QSet<int> &exclude,
                                                               ptTreeQueryResult &hit,
                                                               void *&cursor);
/// Frees the cursor.
DATAINTERFACE_EXPORT void VORN_DoneWithPointTreeNearestNeighbors(int tree, void *&cursor);

// Hits replace what `hits` held.
/// The `count` nearest points, and all that tie with the last of them. False when `count` is below
/// 1 or no point remains.
DATAINTERFACE_EXPORT bool VORN_GetPointTreeNearestNeighbors(int tree, const QPointF &place,
                                                            int count, const QSet<int> &exclude,
                                                            QVector<ptTreeQueryResult> &hits);
/// All points within `range`, in map units. False for a negative range and for NaN.
DATAINTERFACE_EXPORT bool VORN_GetPointTreeRangeNeighbors(int tree, const QPointF &place,
                                                          double range, const QSet<int> &exclude,
                                                          QVector<ptTreeQueryResult> &hits);
/// The points in a rectangle.
DATAINTERFACE_EXPORT bool VORN_QueryPointTreeWithRect(int tree, const QRectF &rect,
                                                      QVector<ptTreeQueryResult> &hits);
/// The points in the polygon of an object at `time`; false when the object is not a polygon.
DATAINTERFACE_EXPORT bool VORN_QueryPointTreeWithPolygon(int tree, int geographyId, int object,
                                                         qint64 time,
                                                         QVector<ptTreeQueryResult> &hits);
/// Frees the tree.
DATAINTERFACE_EXPORT bool VORN_DeletePointTree(int tree);
