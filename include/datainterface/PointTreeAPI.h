// SPDX-License-Identifier: MIT
/// Point trees by handle: nearest neighbours, ranges, rectangles and polygons over points with
/// integer ids.
///
/// A tree lives until VORN_DeletePointTree; its handle is never given out again. An unknown handle
/// gives false, with nothing done. How hits are ordered and tied, and what is squared, tells
/// FM_PointTree.
#pragma once
#include <QPair>
#include <QPointF>
#include <QRectF>
#include <QSet>
#include <QVector>
#include "datainterface/GeoPointTree.h"
#include "datainterface/export.h"

/// An empty tree; its handle.
DATAINTERFACE_EXPORT int VORN_CreatePointTree();
/// -1 without points, for a coordinate that is not finite, when memory runs out and when the user
/// cancelled.
DATAINTERFACE_EXPORT int VORN_CreatePointTreeFromPoints(const QVector<QPair<QPointF, int>> &points,
                                                        const PT_RotationMatrix &rotation);
/// The objects of a geography at a time, as GeoPointTree::SetGeography. -1 for an unknown id, for
/// lines, and when the user cancelled.
DATAINTERFACE_EXPORT int VORN_CreatePointTreeFromCentroids(int geographyId, qint64 time,
                                                           const PT_RotationMatrix &rotation);
/// The same under a second name.
DATAINTERFACE_EXPORT int VORN_CreatePointTreeFromGeography(int geographyId, qint64 time,
                                                           const PT_RotationMatrix &rotation);
/// False for a coordinate that is not finite.
DATAINTERFACE_EXPORT bool VORN_AddToPointTree(int tree, const QPointF &point, int id,
                                              const PT_RotationMatrix &rotation);
/// One point of exactly this place and id. The place is that in the tree: with a rotation the
/// caller applies it first.
DATAINTERFACE_EXPORT bool VORN_RemoveFromPointTree(int tree, const QPointF &point, int id);

// One neighbour after the other. A cursor is finished with VORN_DoneWithPointTreeNearestNeighbors
// on the same tree, whatever came back; one that is not of this tree gives false.
/// The nearest point whose id is not in `exclude`, and the cursor that goes on from there.
DATAINTERFACE_EXPORT bool VORN_GetPointTreeFirstNearestNeighbor(int tree, const QPointF &place,
                                                                const QSet<int> &exclude,
                                                                ptTreeQueryResult &hit,
                                                                void *&cursor);
/// The set takes no part: the search goes on with the one that it began with.
DATAINTERFACE_EXPORT bool VORN_GetPointTreeNextNearestNeighbor(int tree, const QSet<int> &exclude,
                                                               ptTreeQueryResult &hit,
                                                               void *&cursor);
/// Frees the cursor.
DATAINTERFACE_EXPORT void VORN_DoneWithPointTreeNearestNeighbors(int tree, void *&cursor);

// Hits replace what `hits` held.
/// The `count` nearest with all that tie with the last of them. False when `count` is below 1 or no
/// point is left.
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
/// The polygon that an object of a geography is at `time`; false when it is none.
DATAINTERFACE_EXPORT bool VORN_QueryPointTreeWithPolygon(int tree, int geographyId, int object,
                                                         qint64 time,
                                                         QVector<ptTreeQueryResult> &hits);
/// Frees the tree.
DATAINTERFACE_EXPORT bool VORN_DeletePointTree(int tree);
