// SPDX-License-Identifier: MIT
/// Classes of equal count for map legends.
#pragma once
#include <QMap>
#include <QPair>
#include <QVector>

/// Cuts `sorted` (ascending) into `classes` classes of about equal count. Equal values never fall into two classes:
/// runs of them are fused, the small ones first.
/// @param result  class index to its lowest and highest value; replaced.
/// @return false when the list is not ascending (no classes then), and when it holds fewer different values than
///         classes (each value then is a class). O(n + r^2) for r different values.
bool quantiles(const QVector<double> &sorted, int classes, QMap<int, QPair<double, double>> &result);
