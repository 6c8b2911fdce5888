// SPDX-License-Identifier: MIT
/// Geographies by id, and the making of new vector geographies.
#pragma once
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include "datainterface/GeoProps.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/export.h"

/// A default record for an unknown id.
DATAINTERFACE_EXPORT GeoProps VORN_GetGeographyProperties(int geographyId);

// One geography is built at a time: start, add chains (one an object) and their geometries, finish or abort.

/// With the extent and the projection of another vector geography. False when one is being built already, for an
/// unknown id and for another kind.
DATAINTERFACE_EXPORT bool VORN_StartNewVectorGeography(int likeGeography);
/// @param bounds          the expected extent; objects outside are accepted.
/// @param projectionFrom  the vector geography whose projection is taken over; negative: none.
DATAINTERFACE_EXPORT bool VORN_StartNewVectorGeography(const QRectF &bounds, qint64 start, qint64 end,
                                                       int projectionFrom);
/// Gives the geography that is being built a projection from well-known text. It must be called before the first chain;
/// false then, with nothing being built, and when the text does not parse.
DATAINTERFACE_EXPORT bool VORN_SetNewGeographyProjection(const QString &wkt);
/// Places no farther apart than this, in map units, will be one place for contiguity and shared borders. 0, the default:
/// rounding slack only. False with nothing being built, or for a negative or infinite tolerance.
DATAINTERFACE_EXPORT bool VORN_SetAdjacencyTolerance(double tolerance);
/// A new object without geometry. @return its chain id; -1 with nothing being built.
DATAINTERFACE_EXPORT int VORN_CreateNewObjectChain();

// The geometry of an object over an interval. False with nothing being built, for an unknown chain, an interval that
// overlaps one of the chain, and a geometry that is of another kind or no geometry.
DATAINTERFACE_EXPORT bool VORN_AddPointToChain(unsigned int chain, const QPointF &point, const Interval &interval);
DATAINTERFACE_EXPORT bool VORN_AddLineToChain(unsigned int chain, const QList<QList<QPointF>> &parts,
                                              const Interval &interval);
DATAINTERFACE_EXPORT bool VORN_AddPolygonToChain(unsigned int chain, const QList<QList<QPointF>> &rings,
                                                 const Interval &interval);
DATAINTERFACE_EXPORT bool VORN_AddPolygonToChain(unsigned int chain, const QList<QPointF> &ring,
                                                 const Interval &interval);
/// False with nothing being built.
DATAINTERFACE_EXPORT bool VORN_AbortNewVectorGeography();
/// Writes a scratch file and opens it through ControllerBase::AddNewVectorGeography, as any geometry file.
/// @return the new geography's id; -1 when nothing was added or the file cannot be made; 0 with nothing being built.
DATAINTERFACE_EXPORT int VORN_FinishVectorGeography(const QString &name, const QString &history,
                                                    TimeFormat format);
