// SPDX-License-Identifier: MIT
/// Which window of which datasets is wanted, also as JSON with names, for layouts and scripts.
#pragma once
#include <QJsonObject>
#include <QString>
#include <QVector>

namespace meridor {

class ViewWindow;
class Workspace;

enum class ViewKind { Map, Table, Histogram, BoxPlot, Scatter, TimePlot, Moran };

struct ViewRequest {
    ViewKind kind = ViewKind::Map;
    QVector<int> datasets;
    int geography = -1; ///< of a table
    int weights = -1;   ///< of a Moran scatter plot
};

QString viewKindName(ViewKind kind); ///< "map", "table", "histogram", "boxes", "scatter", ...
QJsonObject toJson(const ViewRequest &request);
/// Raises a Failure for a kind or a name that does not exist.
ViewRequest viewRequestOf(const QJsonObject &json);

/// Null after telling the user why not. The caller owns the window.
ViewWindow *makeView(Workspace &workspace, const ViewRequest &request);

} // namespace meridor
