// SPDX-License-Identifier: MIT
/// Makes the picture of a dataset at one time.
#pragma once
#include <QSize>
#include <QString>
#include "core/export.h"
#include "core/project/projectHost.h"
#include "core/render/mapPicture.h"

namespace meridor {

struct MapStyle {
    QString method = QStringLiteral("jenks");
    int classes = 5;
    QString palette = QStringLiteral("lagoon");
    QString subtitle;      ///< empty: the time
    bool allTimes = false; ///< same classes and extent at all times, to compare pictures
    QSize size{1600, 1000};
};

/// Objects that do not exist at the time are left out; those without a value are grey. Raises a
/// Failure, also on a cancel.
MERIDOR_EXPORT MapPicture choropleth(const MapView &view, const MapStyle &style);

/// Writes a PNG file, which is replaced atomically. Raises a Failure.
MERIDOR_EXPORT void savePicture(const QImage &image, const QString &path);

} // namespace meridor
