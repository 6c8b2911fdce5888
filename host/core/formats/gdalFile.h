// SPDX-License-Identifier: MIT
/// What readers and writers of foreign files share: GDAL's handles, and its silence.
#pragma once
#include <QString>
#include <gdal.h>
#include <ogr_srs_api.h>
#include "core/formats/gdalHandle.h"

namespace meridor {

/// GDAL speaks through us: its last complaint ends up in our own message, and nowhere else.
class QuietGdal {
public:
    QuietGdal();
    ~QuietGdal();
    QuietGdal(const QuietGdal &) = delete;
    QuietGdal &operator=(const QuietGdal &) = delete;
    /// ": what went wrong", or nothing.
    static QString complaint();
};

/// For reading. @param kinds  GDAL_OF_VECTOR or GDAL_OF_RASTER
/// @return null when GDAL cannot read the file as any of these
GdalFile openGdalFile(const QString &path, unsigned kinds, const char *const *options = nullptr);
/// "not a file that GDAL reads: ...", or that there is none.
[[noreturn]] void failUnread(const QString &path);

/// Empty for no reference.
QString wktOf(OGRSpatialReferenceH reference);
/// Of "EPSG:4326", WKT or a PROJ text; raises a Failure.
QString wktOf(const QString &userText);

} // namespace meridor
