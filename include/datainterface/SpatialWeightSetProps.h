// SPDX-License-Identifier: MIT
/// What a host is shown of a spatial weight set.
#pragma once
#include <QString>

/// An id of -1 says that there is none.
struct SpatialWeightSetProps {
    int id = -1;
    QString name;
    bool isClusterSet = false;
    bool includeEgo = false;
};
