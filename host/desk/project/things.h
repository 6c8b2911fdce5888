// SPDX-License-Identifier: MIT
/// What a project holds, as a user names it, and the changes that a user makes to it. Each change
/// marks the project and notes its command line.
#pragma once
#include <QString>
#include <QVector>
#include "core/project/edit.h"

namespace meridor {

class Workspace;

struct Thing {
    enum Kind { None, Geography, Dataset, WeightSet, Model };
    Kind kind = None;
    int id = -1;    ///< of a model: among those of its dataset
    int owner = -1; ///< the dataset of a model; -1: a model of the project
};
inline bool operator==(const Thing &a, const Thing &b)
{
    return a.kind == b.kind && a.id == b.id && a.owner == b.owner;
}

/// Of the thing or of what it belongs to; -1 for a model of the project.
int geographyOfThing(const Thing &thing);
QString nameOf(const Thing &thing);
/// One line, such as "decimal, 81 times".
QString summaryOf(const Thing &thing);
/// "dataset", "weight set", ... for people.
QString kindText(Thing::Kind kind);

/// Each tells the user why not if it returns false or None.
bool renameThing(Workspace &workspace, const Thing &thing, const QString &name);
bool removeThings(Workspace &workspace, const QVector<Thing> &things);
/// Geographies are not duplicated.
Thing duplicateThing(Workspace &workspace, const Thing &thing);

/// The one-line description and the history of a dataset; the history of a geography, the
/// information of a weight set.
Description descriptionOf(const Thing &thing);
bool describeThing(Workspace &workspace, const Thing &thing, const Description &description);

} // namespace meridor
