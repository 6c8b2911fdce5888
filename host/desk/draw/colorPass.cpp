// SPDX-License-Identifier: MIT
#include "desk/draw/colorPass.h"
#include <algorithm>
#include "desk/draw/bands.h"
#include "desk/draw/colorTable.h"
#include "desk/draw/pickBuffer.h"

namespace meridor {
namespace {

constexpr QRgb kOpaque = 0xff000000U;
constexpr int kHatchStep = 6; // pixels from one stroke to the next

bool isHatched(QRgb color)
{
    return ColorTable::alphaOf(color) == ColorTable::Hatched;
}

bool isStroke(int x, int y)
{
    return (x + y) % kHatchStep == 0;
}

QRgb meanOf(QRgb a, QRgb b, QRgb c, QRgb d)
{
    constexpr QRgb kOdd = 0x00ff00ffU;
    const QRgb odd = (a & kOdd) + (b & kOdd) + (c & kOdd) + (d & kOdd) + 0x00020002U;
    const QRgb green =
        ((a >> 8) & 0xffU) + ((b >> 8) & 0xffU) + ((c >> 8) & 0xffU) + ((d >> 8) & 0xffU) + 2U;
    return kOpaque | ((odd >> 2) & kOdd) | ((green >> 2) << 8);
}

class Pass {
public:
    Pass(const PickBuffer &buffer, const ColorTable &table, const PassStyle &style)
        : mBuffer(buffer),
          mColors(table.data()),
          mIsPlain(table.isPlain()),
          mStyle(style),
          mOutline(style.outline | kOpaque),
          mHatch(style.hatch | kOpaque)
    {
    }

    void colorRow(int y, QRgb *out) const
    {
        const quint32 *numbers = mBuffer.row(y);
        const int width = mBuffer.width();
        QRgb hatches = 0;
        if (mIsPlain) {
            for (int x = 0; x < width; ++x)
                out[x] = mColors[numbers[x]] | kOpaque;
        }
        for (int x = 0; x < width && !mIsPlain; ++x) {
            const QRgb color = mColors[numbers[x]];
            hatches |= color & ~(color >> 1); // bit 24 alone of the lowest two of an alpha
            out[x] = ColorTable::alphaOf(color) != 0 ? color | kOpaque : out[x];
        }
        if (hatches >> 24 & 1U) {
            for (int x = kHatchStep - 1 - (y + kHatchStep - 1) % kHatchStep; x < width;
                 x += kHatchStep) {
                if (isHatched(mColors[numbers[x]]))
                    out[x] = mHatch;
            }
        }
        if (!mStyle.outlines)
            return;
        const quint32 *below = rowBelow(y);
        for (int x = 0; x < width; ++x) {
            const quint32 number = numbers[x];
            const quint32 right = numbers[std::min(x + 1, width - 1)];
            if ((number != right || number != below[x])
                && (isSeen(number) || isSeen(right) || isSeen(below[x])))
                out[x] = mOutline;
        }
    }

    /// Row `y` of an image of half the size.
    template <bool Outlines> void reduceRow(int y, QRgb *out) const
    {
        const quint32 *a = mBuffer.row(2 * y);
        const quint32 *b = mBuffer.row(2 * y + 1);
        const quint32 *c = rowBelow(2 * y + 1);
        const int width = mBuffer.width() / 2;
        for (int x = 0; x < width; ++x) {
            const int left = 2 * x;
            const int right = left + 1;
            const int next = std::min(left + 2, mBuffer.width() - 1);
            const quint32 first = a[left];
            quint32 differs = (a[right] ^ first) | (b[left] ^ first) | (b[right] ^ first);
            if constexpr (Outlines)
                differs |=
                    (a[next] ^ first) | (b[next] ^ first) | (c[left] ^ first) | (c[right] ^ first);
            if (differs == 0) {
                out[x] = seen(first, x, y, out[x]);
                continue;
            }
            QRgb colors[4] = {seen(first, x, y, out[x]), seen(a[right], x, y, out[x]),
                              seen(b[left], x, y, out[x]), seen(b[right], x, y, out[x])};
            if constexpr (Outlines) {
                outline(colors[0], first, a[right], b[left]);
                outline(colors[1], a[right], a[next], b[right]);
                outline(colors[2], b[left], b[right], c[left]);
                outline(colors[3], b[right], b[next], c[right]);
            }
            out[x] = meanOf(colors[0], colors[1], colors[2], colors[3]);
        }
    }

private:
    const quint32 *rowBelow(int y) const
    {
        return mBuffer.row(std::min(y + 1, mBuffer.height() - 1));
    }
    bool isSeen(quint32 number) const { return ColorTable::isObject(mColors[number]); }
    QRgb seen(quint32 number, int x, int y, QRgb behind) const
    {
        const QRgb color = mColors[number];
        if (ColorTable::alphaOf(color) == ColorTable::Transparent)
            return behind;
        return isHatched(color) && isStroke(x, y) ? mHatch : color | kOpaque;
    }
    void outline(QRgb &color, quint32 number, quint32 right, quint32 below) const
    {
        if ((number != right || number != below)
            && (isSeen(number) || isSeen(right) || isSeen(below)))
            color = mOutline;
    }

    const PickBuffer &mBuffer;
    const QRgb *const mColors;
    const bool mIsPlain;
    const PassStyle mStyle;
    const QRgb mOutline;
    const QRgb mHatch;
};

} // namespace

bool colorPass(const PickBuffer &buffer, const ColorTable &table, const PassStyle &style,
               QImage &image, int threads)
{
    const QSize size(buffer.width(), buffer.height());
    const bool reduced = image.size() * 2 == size && !size.isEmpty();
    if (image.format() != QImage::Format_RGB32 || (!reduced && image.size() != size)
        || table.size() <= static_cast<std::size_t>(buffer.objectLimit()))
        return false;
    const Pass pass(buffer, table, style);
    uchar *const bytes = image.bits(); // detaches before the threads begin
    const int stride = image.bytesPerLine();
    inBands(0, image.height(), threads, 1, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            auto *out = reinterpret_cast<QRgb *>(bytes + qptrdiff(y) * stride);
            if (!reduced)
                pass.colorRow(y, out);
            else if (style.outlines)
                pass.reduceRow<true>(y, out);
            else
                pass.reduceRow<false>(y, out);
        }
    });
    return true;
}

} // namespace meridor
