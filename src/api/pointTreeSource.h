// SPDX-License-Identifier: MIT
/// Fills a point tree from a geography.
#pragma once
#include <QtGlobal>

class FM_PointTree;
class MGeoData;
struct PT_RotationMatrix;

namespace datainterface {

/// Adds the points of point objects, the centroids of polygons or the centres of cells, rotated,
/// under their object index. False for lines and when the user cancels.
bool setPointTree(FM_PointTree &tree, MGeoData &geography, qint64 time,
                  const PT_RotationMatrix &rotation);

} // namespace datainterface
