// SPDX-License-Identifier: MIT
/// Turns a pick buffer into a picture.
#pragma once
#include <QImage>
#include <QRgb>

namespace meridor {

class ColorTable;
class PickBuffer;
class PickSpans;

struct PassStyle {
    bool outlines = false;
    QRgb outline = qRgb(110, 110, 110);
    QRgb hatch = qRgb(150, 150, 150); ///< the strokes over objects without a class
};

/// Colours an image whose format is QImage::Format_RGB32. A buffer of twice its size in each
/// direction is reduced: a pixel becomes the mean of its four. What a transparent entry of the table
/// leaves visible is what the image holds, so layers are passed over one image from the lowest up;
/// the lowest over an image that is filled with the ground.
///
/// An outline is where the number differs from that of the pixel on the right or below, in the pixels
/// of the buffer. False, with nothing changed, for an image of another format or size, and for a
/// table that is shorter than the numbers demand.
/// @param threads  of which further ones colour bands of rows.
/// @param spans    kept by the caller for further passes over the same buffer, which then are faster;
///                 may be null. The picture is the same.
bool colorPass(const PickBuffer &buffer, const ColorTable &table, const PassStyle &style,
               QImage &image, int threads = 2, PickSpans *spans = nullptr);

} // namespace meridor
