// SPDX-License-Identifier: MIT
/// From a dataset at one time to the picture of it.
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
    QString subtitle; ///< empty: the time
    bool allTimes =
        false; ///< classes and extent of all times: pictures of a series can be compared
    QSize size{1600, 1000};
};

/// Objects that do not exist at the time are not drawn; those without a value are grey.
MERIDOR_EXPORT MapPicture choropleth(const MapView &view, const MapStyle &style);

/// As PNG, whole or not at all; raises a Failure.
MERIDOR_EXPORT void savePicture(const QImage &image, const QString &path);

} // namespace meridor
