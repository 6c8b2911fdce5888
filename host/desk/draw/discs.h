// SPDX-License-Identifier: MIT
/// Discs of a graph, painted without a pick buffer.
#pragma once
#include <QImage>
#include <QPointF>
#include <QRgb>
#include <vector>

namespace meridor {

class ViewTransform;

/// Paints a disc about each place, later ones over earlier ones, into an image whose format is
/// QImage::Format_RGB32 and whose size is that of the view. Places that are not finite are left out.
/// This is faster than a colour pass where the places change more often than the mouse points at
/// them, as they do while times are run through.
/// @param diameter  pixels, 1 to 100.
/// @param smooth    whether the pixels at the edge are mixed with what is below, by the quarters of
///                  them that the disc covers.
/// @param colors    one for each place, or one for all.
/// @param threads   of which further ones paint bands of rows.
void paintDiscs(const std::vector<QPointF> &places, const ViewTransform &view, int diameter,
                bool smooth, const std::vector<QRgb> &colors, QImage &image, int threads = 2);

} // namespace meridor
