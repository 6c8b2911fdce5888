// SPDX-License-Identifier: MIT
/// Writes what is painted as a PNG, SVG or PDF file.
#pragma once
#include <QSize>
#include <QString>
#include <functional>
#include "core/export.h"

class QPainter;

namespace meridor {

/// Raises a Failure of kind Misused unless the name ends in .png, .svg or .pdf.
MERIDOR_EXPORT void requirePictureName(const QString &path);

/// Calls `paint` once, with a painter of `size` pixels at 96 pixels an inch, and writes the file in
/// the format of its extension. The file is replaced atomically. Raises a Failure, also on a
/// cancel, which is noticed while a PNG file is compressed. Requires a QGuiApplication.
/// @param title  of the document, for SVG and PDF.
MERIDOR_EXPORT void savePicture(const QString &path, const QSize &size, const QString &title,
                                const std::function<void(QPainter &)> &paint);

} // namespace meridor
