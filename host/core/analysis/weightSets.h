// SPDX-License-Identifier: MIT
/// Spatial weight sets as people name them, and what their lists add up to.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include "core/export.h"
#include "core/formats/weightsFile.h"
#include "datainterface/WeightsAPI.h"

namespace meridor {

/// What a user asks of a new set.
struct WeightSetPlan {
    QString name;
    QString information;
    QString method;  ///< "queen", "rook", "nearest" or "range"
    QString weights; ///< a name of weightNames()
    int order = 1;
    int count = 5;
    double range = 0;
    bool includeEgo = false;
    double numerator = 1;
    double power = 1;
};

MERIDOR_EXPORT QStringList weightNames();
/// Raises a Failure that says why a set of that kind cannot be on the geography. @return its id
MERIDOR_EXPORT int createWeightSet(int geography, const WeightSetPlan &plan);

/// "SET" when the name is there once, else "GEOGRAPHY/SET". Raises a Failure.
MERIDOR_EXPORT int findWeightSet(const QString &name);
MERIDOR_EXPORT AdjacencySet &weightSetOf(int id);
/// Raises a Failure for an empty name and one that a set of the geography has.
MERIDOR_EXPORT void requireNewWeightSetName(int geography, const QString &name);
/// "queen neighbours to order 2, weights row".
MERIDOR_EXPORT QString describe(const AdjacencySet &set);

/// Calls with each object of the time and its neighbours, ascending. Raises a Failure when nothing
/// exists then, when a set that was filled by hand has nothing then, and the cancel.
MERIDOR_EXPORT void visitNeighbors(
    int set, qint64 time,
    const std::function<void(int object, const QVector<neighborDatum> &neighbors)> &visit);

struct LinkSummary {
    int objects = 0;
    qint64 links = 0;
    int least = 0;
    int most = 0;
    QVector<int> islands; ///< without a neighbour
    double mean() const { return objects > 0 ? static_cast<double>(links) / objects : 0; }
};
MERIDOR_EXPORT LinkSummary summarize(int set, qint64 time);

/// The set at a time with its objects called by `ids`.
MERIDOR_EXPORT WeightsFile weightsAt(int set, qint64 time, const QStringList &ids);

struct WeightsMatch {
    int set = -1;
    qint64 links = 0;
    QStringList unknown; ///< ids of the file that no object has
    QStringList unnamed; ///< objects that the file does not name
};
/// A set of a file's lists over a span, found by the objects' `ids`; links to unknown ids are left
/// out. @param standardize  each object's weights are divided by their sum. Raises a Failure, with
/// no set made, when no id is known.
MERIDOR_EXPORT WeightsMatch adoptWeights(int geography, const QString &name,
                                         const WeightsFile &file, const QStringList &ids,
                                         const Interval &when, bool standardize);

} // namespace meridor
