// SPDX-License-Identifier: MIT
/// What readers and writers of foreign files share: GDAL's handles and its error messages.
#pragma once
#include <QString>
#include <gdal.h>
#include <ogr_srs_api.h>
#include "core/formats/gdalHandle.h"

namespace meridor {

/// Keeps GDAL from printing messages for a scope; its last one becomes part of our own message.
class QuietGdal {
public:
    QuietGdal();
    ~QuietGdal();
    QuietGdal(const QuietGdal &) = delete;
    QuietGdal &operator=(const QuietGdal &) = delete;
    /// GDAL's last error message after ": "; empty if there is none.
    static QString complaint();
};

/// Opens a file for reading.
/// @param kinds    GDAL_OF_VECTOR, GDAL_OF_RASTER, GDAL_OF_MULTIDIM_RASTER, or several of them.
/// @param drivers  the only drivers that are tried; null: all.
/// @return null if GDAL cannot read the file as one of these.
GdalFile openGdalFile(const QString &path, unsigned kinds, const char *const *options = nullptr,
                      const char *const *drivers = nullptr);
/// Whether a raster driver recognises the beginning of a file. Opening would read all of some files.
bool looksLikeRaster(const QString &path);
/// Raises a Failure which says that the file does not exist, or that GDAL cannot read it.
[[noreturn]] void failUnread(const QString &path);

/// Empty for a null reference.
QString wktOf(OGRSpatialReferenceH reference);
/// From "EPSG:4326", WKT or a PROJ text. Raises a Failure if the text is none of these.
QString wktOf(const QString &userText);

} // namespace meridor
