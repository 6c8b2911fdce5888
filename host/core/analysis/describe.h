// SPDX-License-Identifier: MIT
/// What a project holds, as JSON: geographies, datasets, weight sets.
#pragma once
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include "core/export.h"

namespace meridor {

/// Every geography of the project: see describeGeography.
MERIDOR_EXPORT QJsonArray describeProject(const QString &at = QString());
/// Name, shapes, place, times and datasets. @param at  a time as text; the keys of the objects that
/// exist then are added under "existing". Empty: they are not.
MERIDOR_EXPORT QJsonObject describeGeography(int id, const QString &at = QString());
/// Type, storage, times and values.
MERIDOR_EXPORT QJsonObject describeDataset(int id);

/// Name, definition and the times whose lists are kept.
MERIDOR_EXPORT QJsonObject describeWeightSet(int id);
/// How many links a set has at each of the times, or at the last when none is named. The lists are
/// calculated where they are not kept yet, and stay with the set. Raises a Failure or the cancel.
MERIDOR_EXPORT QJsonArray describeLinks(int set, const QStringList &times);

} // namespace meridor
