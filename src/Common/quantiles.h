// SPDX-License-Identifier: MIT
/// Classes of equal count for map legends.
#pragma once
#include <QMap>
#include <QPair>
#include <QVector>
#include "Common/valueRuns.h"

/// Cuts `sorted` (ascending) into `classes` classes of about equal count. Equal values never fall
/// into two classes: groups of them are fused, small ones first.
/// @param result  class index to its lowest and highest value; replaced.
/// @return false, with no classes, when the list is not ascending or `classes` is below 1. False
///         also when it holds fewer different values than classes; each of them is a class then.
/// Takes O(n + r log r) for r different values.
bool quantiles(const QVector<double> &sorted, int classes,
               QMap<int, QPair<double, double>> &result);
/// The same for a list that is given by its different values and their counts.
bool quantiles(const datainterface::ValueRuns &sorted, int classes,
               QMap<int, QPair<double, double>> &result);
