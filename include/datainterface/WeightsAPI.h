// SPDX-License-Identifier: MIT
/// Spatial weight sets and cluster sets by id. A set's id has its geography's in the upper 16 bits.
#pragma once
#include <QString>
#include <QVector>
#include "datainterface/AdjacencySet.h"
#include "datainterface/MissingData.h"
#include "datainterface/SpatialWeightSetProps.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/WeightsAtT.h"
#include "datainterface/export.h"
#include "datainterface/neighborDatum.h"

// Each makes a set on a geography, which announces it. @return the set's id; -1, with nothing
// changed, for an unknown geography, one of another kind, and weights that the method cannot have.
// `numerator` and `power` are of inverse distances: numerator / (1 + distance to the power).

/// On points: the `neighborCount` nearest, with all ties at the last; the ties share the places
/// that are left.
DATAINTERFACE_EXPORT int VORN_CreateNearestNeighborWeightSet(
    int geographyId, const QString &name, const QString &information, int neighborCount,
    spatialWeightType weights, bool includeEgo, double numerator, double power);
/// On points or a raster: all within `range`, in map units, inclusive.
DATAINTERFACE_EXPORT int VORN_CreateRangeWeightSet(int geographyId, const QString &name,
                                                   const QString &information, double range,
                                                   spatialWeightType weights, bool includeEgo,
                                                   double numerator, double power);
/// On polygons: all within `ringCount` steps of contiguity. Weights by distance rank are accepted
/// here and raise "Invalid weight set type" when they are calculated. The last two take no part.
/// @param queen  any common boundary point counts; else a common border of positive length.
DATAINTERFACE_EXPORT int VORN_CreatePolygonWeightSet(int geographyId, const QString &name,
                                                     const QString &information, int ringCount,
                                                     bool queen, spatialWeightType weights,
                                                     bool includeEgo, double numerator,
                                                     double power);
/// On a raster. @param method  RookNeighbors or QueenNeighbors.
DATAINTERFACE_EXPORT int
VORN_CreateAdjacentPixelWeightSet(int geographyId, const QString &name, const QString &information,
                                  neighborMethodType method, spatialWeightType weights,
                                  bool includeEgo, double numerator, double power);
/// On any geography: an empty set for the host to fill.
DATAINTERFACE_EXPORT int VORN_CreateClusterSet(int geographyId, const QString &name,
                                               const QString &information);

// All below are false for an unknown set, unless they say otherwise.

/// Removes and deletes the set, whatever its kind.
DATAINTERFACE_EXPORT bool VORN_RemoveClusterSet(int setId);
/// Stores the list of object `id` over an interval. False also for an object that is not there and
/// for an interval that overlaps another one of the set without being the same.
DATAINTERFACE_EXPORT bool VORN_AddToClusterSet(int setId, int id, const Interval &interval,
                                               const QVector<neighborDatum> &list);
/// ControllerBase::ShowSpatialWeightsInMap of no object in particular (-1).
DATAINTERFACE_EXPORT bool VORN_ShowClusterSetInLayer(int window, int setId);
/// Whether only the host can fill the set.
DATAINTERFACE_EXPORT bool VORN_IsCustomWeightSet(int setId);
/// A default record for an unknown set.
DATAINTERFACE_EXPORT SpatialWeightSetProps VORN_GetSpatialWeightSetProperties(int setId);

// Lists are calculated when a time is first asked for; see AdjacencySet::PrecalcSpatialWeights for
// what that raises.

/// False also when the user cancelled.
DATAINTERFACE_EXPORT bool VORN_PrecalculateSpatialWeights(int setId, qint64 t, bool showProgress);
/// The neighbours of an object that are not missing; see AdjacencySet::GetSpatialWeights.
DATAINTERFACE_EXPORT bool VORN_GetSpatialWeights(int setId, unsigned int id, qint64 t,
                                                 QVector<neighborDatum> &list,
                                                 const VORN_MissingData &missing);
/// For loops over objects. A null handle for an unknown set and on failure.
DATAINTERFACE_EXPORT WeightsAtT VORN_GetSpatialWeightsHandle(int setId, qint64 t,
                                                             bool showProgress);
/// False for a handle that does not hold (any more) and for an object that is not there.
DATAINTERFACE_EXPORT bool VORN_GetSpatialWeights(WeightsAtT handle, unsigned int id,
                                                 QVector<neighborDatum> &list,
                                                 const VORN_MissingData &missing);
/// The bytes of all lists of that time in the block store.
DATAINTERFACE_EXPORT bool VORN_GetSpatialWeightsSize(WeightsAtT handle, int &size);
