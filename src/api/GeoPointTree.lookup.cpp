// SPDX-License-Identifier: MIT
#include "datainterface/GeoPointTree.h"
#include "api/callFrame.h"
#include "api/pointTreeSource.h"

bool GeoPointTree::SetGeography(int geographyId, qint64 time, const PT_RotationMatrix &rotation)
{
    return datainterface::onGeography(geographyId, false, [&](MGeoData &geography) {
        return datainterface::setPointTree(*this, geography, time, rotation);
    });
}
