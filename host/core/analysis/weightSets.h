// SPDX-License-Identifier: MIT
/// Spatial weight sets: creation, access by name, summaries, and conversion from and to files.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include "core/export.h"
#include "core/formats/weightsFile.h"
#include "datainterface/WeightsAPI.h"

namespace meridor {

/// The options of a new set.
struct WeightSetPlan {
    QString name;
    QString information;
    QString method;  ///< "queen", "rook", "nearest" or "range"
    QString weights; ///< one of weightNames()
    int order = 1;
    int count = 5;
    double range = 0;
    bool greatCircle = false; ///< distances along geodesics, in kilometres
    bool includeEgo = false;
    double numerator = 1;
    double power = 1;
};

MERIDOR_EXPORT QStringList weightNames();
/// Creates a set. Raises a Failure that says why the geography cannot have such a set.
/// @return the id of the set.
MERIDOR_EXPORT int createWeightSet(int geography, const WeightSetPlan &plan);

/// @param name  "SET" if only one geography has a set of this name, else "GEOGRAPHY/SET". Raises a
///              Failure if there is no match or more than one.
MERIDOR_EXPORT int findWeightSet(const QString &name);
MERIDOR_EXPORT AdjacencySet &weightSetOf(int id);
/// Raises a Failure if the name is empty or a set of the geography has it.
MERIDOR_EXPORT void requireNewWeightSetName(int geography, const QString &name);
/// Raises a Failure if the name is empty or another set of the geography has it.
MERIDOR_EXPORT void renameWeightSet(int set, const QString &name);
/// @param name  empty: one of copyName().
/// @return the id of the copy.
MERIDOR_EXPORT int duplicateWeightSet(int set, const QString &name);
MERIDOR_EXPORT void removeWeightSets(const QVector<int> &sets);
/// The beginning of the information of a set whose lists the host calculated.
MERIDOR_EXPORT QString calculatedMark();
/// The definition of a set, such as "queen neighbours to order 2, weights row".
MERIDOR_EXPORT QString describe(const AdjacencySet &set);

/// Calls `visit` with each object that exists at the time and its neighbours, both ascending.
/// Raises a Failure if no object exists then, if a set of imported lists has none for that time,
/// and on a cancel.
MERIDOR_EXPORT void visitNeighbors(
    int set, qint64 time,
    const std::function<void(int object, const QVector<neighborDatum> &neighbors)> &visit);
/// The time at which to ask for the lists of a set while `time` is shown: that time if lists are
/// stored for it, else shapeTime().
MERIDOR_EXPORT qint64 listTime(int set, qint64 time);
/// The neighbours of objects while `time` is shown, with repetitions and without the objects' own
/// links to themselves; objects that do not exist then have none. Raises a Failure if the set has no
/// lists for that time, and on a cancel.
MERIDOR_EXPORT QVector<unsigned int> neighborsAt(int set, const QVector<unsigned int> &objects,
                                                 qint64 time);

struct LinkSummary {
    int objects = 0;
    qint64 links = 0;
    int least = 0;
    int most = 0;
    QVector<int> islands; ///< objects without neighbours
    double mean() const { return objects > 0 ? static_cast<double>(links) / objects : 0; }
};
MERIDOR_EXPORT LinkSummary summarize(int set, qint64 time);

/// The lists of the set at a time, with `ids` as the names of objects.
MERIDOR_EXPORT WeightsFile weightsAt(int set, qint64 time, const QStringList &ids);

struct WeightsMatch {
    int set = -1;
    qint64 links = 0;
    QStringList unknown; ///< ids in the file that no object has
    QStringList unnamed; ///< ids of objects that are not in the file
};
/// Creates a set of the lists of a file for the interval `when`. Links to unknown ids are left out.
/// Raises a Failure if no id is known; no set is added then.
/// @param ids  the ids of the objects, by object index.
/// @param standardize  divide each object's weights by their sum.
MERIDOR_EXPORT WeightsMatch adoptWeights(int geography, const QString &name,
                                         const WeightsFile &file, const QStringList &ids,
                                         const Interval &when, bool standardize);

} // namespace meridor
