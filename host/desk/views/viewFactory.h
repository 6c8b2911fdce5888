// SPDX-License-Identifier: MIT
/// The windows that show datasets. The caller owns a window until it is given to a parent. Null,
/// after the user was told why, if there is nothing to show.
#pragma once
#include <QVector>

namespace meridor {

class GraphWindow;
class MapWindow;
class TableWindow;
class Workspace;

enum class GraphKind { Scatter, BoxPlot, Histogram, TimePlot, Moran };

MapWindow *openMap(Workspace &workspace, int dataset);
/// @param datasets  one; a scatter plot has two, of one geography.
/// @param weights   the weight set of a Moran scatter plot; -1: none.
GraphWindow *openGraph(Workspace &workspace, GraphKind kind, const QVector<int> &datasets,
                       int weights = -1);
TableWindow *openTable(Workspace &workspace, int geography);

} // namespace meridor
