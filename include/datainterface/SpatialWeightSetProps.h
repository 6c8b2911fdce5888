// SPDX-License-Identifier: MIT
/// The summary of a spatial weight set that a host is given.
#pragma once
#include <QString>

/// An id of -1 means that there is no such set.
struct SpatialWeightSetProps {
    int id = -1;
    QString name;
    bool isClusterSet = false;
    bool includeEgo = false;
};
