// SPDX-License-Identifier: MIT
/// Descriptions of geographies, datasets and weight sets as JSON.
#pragma once
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include "core/export.h"

namespace meridor {

/// All geographies of the project; see describeGeography.
MERIDOR_EXPORT QJsonArray describeProject(const QString &at = QString());
/// Name, kind of shapes, extent, times and datasets.
/// @param at  a time as text: the keys of the objects that exist then are added as "existing".
///            Empty: they are left out.
MERIDOR_EXPORT QJsonObject describeGeography(int id, const QString &at = QString());
/// Type, storage, times and number of distinct values. What only a count of a large grid would tell
/// is null ("missing", "uniqueValues").
MERIDOR_EXPORT QJsonObject describeDataset(int id);

/// Name, definition and the times whose lists are stored.
MERIDOR_EXPORT QJsonObject describeWeightSet(int id);
/// The number of links of a set at each of the times; at the last time if `times` is empty. Lists
/// that are not stored yet are calculated and stored in the set. Raises a Failure, also on a
/// cancel.
MERIDOR_EXPORT QJsonArray describeLinks(int set, const QStringList &times);

} // namespace meridor
