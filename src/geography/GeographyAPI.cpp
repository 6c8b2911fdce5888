// SPDX-License-Identifier: MIT
#include "datainterface/GeographyAPI.h"
#include "frame/callFrame.h"

using namespace datainterface;

GeoProps VORN_GetGeographyProperties(int geographyId)
{
    return onGeography(geographyId, GeoProps(), [](MGeoData &geography) { return geography.GetProperties(); });
}
