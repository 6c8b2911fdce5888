// SPDX-License-Identifier: MIT
/// Spatial weight sets and cluster sets by id. The upper 16 bits of a set's id are the id of its
/// geography.
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

// Each function adds a set to a geography, which announces it. The result is the id of the set, or
// -1, with nothing changed, for an unknown geography, a geography of another kind, and weights that
// do not suit the method. `numerator` and `power` apply to inverse distances: numerator / (1 +
// distance to the power).

/// Points: the `neighborCount` nearest, with all that tie with the last of them. Tied neighbours
/// share the remaining places through smaller weights.
DATAINTERFACE_EXPORT int VORN_CreateNearestNeighborWeightSet(
    int geographyId, const QString &name, const QString &information, int neighborCount,
    spatialWeightType weights, bool includeEgo, double numerator, double power);
/// Points or a raster: all neighbours whose distance is at most `range`, in map units.
DATAINTERFACE_EXPORT int VORN_CreateRangeWeightSet(int geographyId, const QString &name,
                                                   const QString &information, double range,
                                                   spatialWeightType weights, bool includeEgo,
                                                   double numerator, double power);
/// Polygons: all neighbours within `ringCount` steps of contiguity. Weights by distance rank are
/// accepted here but raise "Invalid weight set type" when they are calculated. The last two
/// arguments are not used.
/// @param queen  true if any common boundary point counts, false if only a common border of
///               positive length does.
DATAINTERFACE_EXPORT int VORN_CreatePolygonWeightSet(int geographyId, const QString &name,
                                                     const QString &information, int ringCount,
                                                     bool queen, spatialWeightType weights,
                                                     bool includeEgo, double numerator,
                                                     double power);
/// A raster: the adjacent cells.
/// @param method  RookNeighbors or QueenNeighbors.
DATAINTERFACE_EXPORT int
VORN_CreateAdjacentPixelWeightSet(int geographyId, const QString &name, const QString &information,
                                  neighborMethodType method, spatialWeightType weights,
                                  bool includeEgo, double numerator, double power);
/// Any geography: an empty set for the host to fill.
DATAINTERFACE_EXPORT int VORN_CreateClusterSet(int geographyId, const QString &name,
                                               const QString &information);

// The functions below return false for an unknown set unless their comments say otherwise.

/// Removes and deletes the set, whatever its kind.
DATAINTERFACE_EXPORT bool VORN_RemoveClusterSet(int setId);
/// Stores the list of object `id` over an interval. Also false for an unknown object and for an
/// interval that overlaps another one of the set without being equal to it.
DATAINTERFACE_EXPORT bool VORN_AddToClusterSet(int setId, int id, const Interval &interval,
                                               const QVector<neighborDatum> &list);
/// Calls ControllerBase::ShowSpatialWeightsInMap without an object (-1).
DATAINTERFACE_EXPORT bool VORN_ShowClusterSetInLayer(int window, int setId);
/// Whether only the host can fill the set.
DATAINTERFACE_EXPORT bool VORN_IsCustomWeightSet(int setId);
/// A default record for an unknown set.
DATAINTERFACE_EXPORT SpatialWeightSetProps VORN_GetSpatialWeightSetProperties(int setId);

// Lists are calculated when a time is first requested, which raises as
// AdjacencySet::PrecalcSpatialWeights does.

/// Calculates the lists of a time. Also false when the user cancelled.
DATAINTERFACE_EXPORT bool VORN_PrecalculateSpatialWeights(int setId, qint64 t, bool showProgress);
/// The neighbours of an object that are not missing; see AdjacencySet::GetSpatialWeights.
DATAINTERFACE_EXPORT bool VORN_GetSpatialWeights(int setId, unsigned int id, qint64 t,
                                                 QVector<neighborDatum> &list,
                                                 const VORN_MissingData &missing);
/// A handle for loops over objects; null for an unknown set and on failure.
DATAINTERFACE_EXPORT WeightsAtT VORN_GetSpatialWeightsHandle(int setId, qint64 t,
                                                             bool showProgress);
/// False for a handle that is not, or no longer, valid and for an unknown object.
DATAINTERFACE_EXPORT bool VORN_GetSpatialWeights(WeightsAtT handle, unsigned int id,
                                                 QVector<neighborDatum> &list,
                                                 const VORN_MissingData &missing);
/// The size in bytes of all lists of that time in the block store.
DATAINTERFACE_EXPORT bool VORN_GetSpatialWeightsSize(WeightsAtT handle, int &size);
