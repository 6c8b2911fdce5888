// SPDX-License-Identifier: MIT
#include "core/formats/gdalFile.h"
#include <QFileInfo>
#include <cpl_conv.h>
#include <cpl_error.h>
#include "core/formats/sourceFile.h"
#include "core/project/failure.h"

namespace meridor {
namespace {

struct FreeReference {
    void operator()(void *reference) const { OSRDestroySpatialReference(reference); }
};

void registerDrivers()
{
    static const bool registered = (GDALAllRegister(), true);
    Q_UNUSED(registered);
}

} // namespace

void CloseGdalFile::operator()(void *dataset) const
{
    GDALClose(dataset);
}

QuietGdal::QuietGdal()
{
    CPLErrorReset();
    CPLPushErrorHandler(CPLQuietErrorHandler);
    // libjpeg fills the rest of a file that ends early with grey, and only warns.
    CPLSetThreadLocalConfigOption("GDAL_ERROR_ON_LIBJPEG_WARNING", "YES");
}

QuietGdal::~QuietGdal()
{
    CPLPopErrorHandler();
}

QString QuietGdal::complaint()
{
    const QString text = QString::fromUtf8(CPLGetLastErrorMsg()).simplified();
    return text.isEmpty() ? QString() : QString(QStringLiteral(": ") + text);
}

bool looksLikeRaster(const QString &path)
{
    registerDrivers();
    return GDALIdentifyDriverEx(path.toUtf8().constData(), GDAL_OF_RASTER, nullptr, nullptr)
           != nullptr;
}

GdalFile openGdalFile(const QString &path, unsigned kinds, const char *const *options,
                      const char *const *drivers)
{
    registerDrivers();
    return GdalFile(
        GDALOpenEx(path.toUtf8().constData(), kinds | GDAL_OF_READONLY, drivers, options, nullptr));
}

void failUnread(const QString &path)
{
    if (isConnection(path))
        fail(QStringLiteral("%1: cannot be opened%2")
                 .arg(withoutPassword(path), withoutPassword(QuietGdal::complaint())));
    const bool there = QFileInfo::exists(path);
    fail(QStringLiteral("%1: %2%3")
             .arg(path,
                  there ? QStringLiteral("not a file that GDAL reads")
                        : QStringLiteral("no such file"),
                  there ? QuietGdal::complaint() : QString()));
}

QString wktOf(OGRSpatialReferenceH reference)
{
    char *text = nullptr;
    QString wkt;
    if (reference && OSRExportToWkt(reference, &text) == OGRERR_NONE)
        wkt = QString::fromUtf8(text);
    CPLFree(text);
    return wkt;
}

QString wktOf(const QString &userText)
{
    const std::unique_ptr<void, FreeReference> reference(OSRNewSpatialReference(nullptr));
    if (OSRSetFromUserInput(reference.get(), userText.toUtf8().constData()) != OGRERR_NONE)
        fail(QStringLiteral("unknown projection %1%2").arg(userText, QuietGdal::complaint()));
    return wktOf(static_cast<OGRSpatialReferenceH>(reference.get()));
}

} // namespace meridor
