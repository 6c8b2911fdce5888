// SPDX-License-Identifier: MIT
#include "desk/draw/colorPass.h"
#include <algorithm>
#include <cstring>
#include <numeric>
#include "desk/draw/bands.h"
#include "desk/draw/colorTable.h"
#include "desk/draw/pickBuffer.h"
#include "desk/draw/pickSpans.h"

namespace meridor {
namespace {

constexpr QRgb kOpaque = 0xff000000U;
constexpr int kHatchStep = 6; // pixels from one stroke to the next
constexpr int kBandsPerThread = 4;

bool isHatched(QRgb color)
{
    return ColorTable::alphaOf(color) == ColorTable::Hatched;
}

bool isStroke(int x, int y)
{
    return (x + y) % kHatchStep == 0;
}

/// The first pixel of a stroke in a row, from `x` on.
int firstStroke(int x, int y)
{
    return x + kHatchStep - 1 - (x + y + kHatchStep - 1) % kHatchStep;
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
          mTable(table),
          mColors(table.data()),
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
        if (mTable.isPlain()) {
            for (int x = 0; x < width; ++x)
                out[x] = mColors[numbers[x]] | kOpaque;
        }
        for (int x = 0; x < width && !mTable.isPlain(); ++x) {
            const QRgb color = mColors[numbers[x]];
            hatches |= color & ~(color >> 1); // bit 24 alone of the lowest two of an alpha
            out[x] = ColorTable::alphaOf(color) != 0 ? color | kOpaque : out[x];
        }
        if (hatches >> 24 & 1U) {
            for (int x = firstStroke(0, y); x < width; x += kHatchStep) {
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
        const Four<Outlines> four(*this, y);
        const int width = mBuffer.width() / 2;
        constexpr int kStep = 4;
        const bool leavesGround = ColorTable::alphaOf(mColors[0]) == ColorTable::Transparent;
        int x = 0;
        for (; leavesGround && x + kStep < width; x += kStep) {
            if (four.isEmpty(x, kStep)) // most of a scatter plot
                continue;
            for (int i = x; i < x + kStep; ++i)
                if (!four.isEmpty(i, 1))
                    out[i] = four.colorAt(i, out[i]);
        }
        for (; x < width; ++x)
            out[x] = four.colorAt(x, out[x]);
    }

    void colorSpans(const PickSpans::Row &spans, int y, bool reduced, QRgb *out) const
    {
        if (reduced)
            mStyle.outlines ? fill(spans, y, out, Four<true>(*this, y))
                            : fill(spans, y, out, Four<false>(*this, y));
        else if (mStyle.outlines && mTable.showsAll())
            fill(spans, y, out, Outline(*this));
        else
            mStyle.outlines ? fill(spans, y, out, One<true>(*this, y))
                            : fill(spans, y, out, One<false>(*this, y));
    }

private:
    /// @param edge  the colours of pixels at an edge.
    template <class Edge>
    void fill(const PickSpans::Row &spans, int y, QRgb *out, const Edge &edge) const
    {
        mTable.isOpaque() ? fillSpans<true>(spans, y, out, edge)
                          : fillSpans<false>(spans, y, out, edge);
    }

    template <bool Opaque, class Edge>
    void fillSpans(const PickSpans::Row &spans, int y, QRgb *out, const Edge &edge) const
    {
        const QRgb *const rowEnd = out + (Opaque ? widthOf(spans) : 0);
        int x = 0;
        for (const PickSpans::Span &span : spans) {
            const bool isEdge = span.number == PickSpans::kEdge;
            const int end = x + span.length;
            if (isEdge && !Edge::kIsConstant) {
                for (; x < end; ++x)
                    out[x] = edge.colorAt(x, out[x]);
                continue;
            }
            const QRgb color = isEdge ? edge.colorAt(x, 0) : mColors[span.number];
            if constexpr (Opaque)
                fillBeyond(out + x, out + end, rowEnd, color | kOpaque);
            else if (ColorTable::alphaOf(color) != ColorTable::Transparent)
                std::fill(out + x, out + end, color | kOpaque);
            for (int i = firstStroke(x, y); isHatched(color) && i < end; i += kHatchStep)
                out[i] = mHatch;
            x = end;
        }
    }

    static int widthOf(const PickSpans::Row &spans)
    {
        return std::accumulate(
            spans.begin(), spans.end(), 0,
            [](int sum, const PickSpans::Span &span) { return sum + span.length; });
    }

    /// Fills pixels and some after them, up to the end of the row: those are written next. The lengths
    /// of spans are hardly predicted by the processor, so that an exact fill waits at each end.
    static void fillBeyond(QRgb *from, QRgb *end, const QRgb *rowEnd, QRgb color)
    {
        constexpr int kChunk = 16;
        for (; from < end && rowEnd - from >= kChunk; from += kChunk)
            std::fill(from, from + kChunk, color);
        if (from < end)
            std::fill(from, end, color);
    }

    /// Pixels at an edge where all objects are shown.
    class Outline {
    public:
        static constexpr bool kIsConstant = true;
        explicit Outline(const Pass &pass) : mColor(pass.mOutline) {}
        QRgb colorAt(int, QRgb) const { return mColor; }

    private:
        const QRgb mColor;
    };

    /// The colours of pixels of the buffer in row `y`.
    template <bool Outlines> class One {
    public:
        static constexpr bool kIsConstant = false;
        One(const Pass &pass, int y)
            : mPass(pass),
              mY(y),
              mNumbers(pass.mBuffer.row(y)),
              mBelow(pass.rowBelow(y)),
              mLast(pass.mBuffer.width() - 1)
        {
        }
        QRgb colorAt(int x, QRgb behind) const
        {
            QRgb color = mPass.seen(mNumbers[x], x, mY, behind);
            if constexpr (Outlines)
                mPass.outline(color, mNumbers[x], mNumbers[std::min(x + 1, mLast)], mBelow[x]);
            return color;
        }

    private:
        const Pass &mPass;
        const int mY;
        const quint32 *const mNumbers;
        const quint32 *const mBelow;
        const int mLast;
    };

    /// The colours of row `y` of an image of half the size.
    template <bool Outlines> class Four {
    public:
        static constexpr bool kIsConstant = false;
        Four(const Pass &pass, int y)
            : mPass(pass),
              mY(y),
              mUpper(pass.mBuffer.row(2 * y)),
              mLower(pass.mBuffer.row(2 * y + 1)),
              mBelow(pass.rowBelow(2 * y + 1)),
              mLast(pass.mBuffer.width() - 1)
        {
        }
        QRgb colorAt(int x, QRgb behind) const
        {
            const quint32 *const a = mUpper;
            const quint32 *const b = mLower;
            const quint32 *const c = mBelow;
            const int left = 2 * x;
            const int right = left + 1;
            const int next = std::min(left + 2, mLast);
            const quint32 first = a[left];
            quint32 differs = (a[right] ^ first) | (b[left] ^ first) | (b[right] ^ first);
            if constexpr (Outlines)
                differs |=
                    (a[next] ^ first) | (b[next] ^ first) | (c[left] ^ first) | (c[right] ^ first);
            if (differs == 0)
                return mPass.seen(first, x, mY, behind);
            QRgb colors[4] = {mPass.seen(first, x, mY, behind), mPass.seen(a[right], x, mY, behind),
                              mPass.seen(b[left], x, mY, behind),
                              mPass.seen(b[right], x, mY, behind)};
            if constexpr (Outlines) {
                mPass.outline(colors[0], first, a[right], b[left]);
                mPass.outline(colors[1], a[right], a[next], b[right]);
                mPass.outline(colors[2], b[left], b[right], c[left]);
                mPass.outline(colors[3], b[right], b[next], c[right]);
            }
            return meanOf(colors[0], colors[1], colors[2], colors[3]);
        }

        /// Whether pixels of the image, before the last one, have no object.
        bool isEmpty(int x, int count) const
        {
            quint64 any = Outlines ? mUpper[2 * (x + count)] | mLower[2 * (x + count)] : 0;
            for (int i = 2 * x; i < 2 * (x + count); i += 2) {
                any |= pair(mUpper + i) | pair(mLower + i);
                if constexpr (Outlines)
                    any |= pair(mBelow + i);
            }
            return any == 0;
        }

    private:
        static quint64 pair(const quint32 *numbers)
        {
            quint64 both;
            std::memcpy(&both, numbers, sizeof both);
            return both;
        }

        const Pass &mPass;
        const int mY;
        const quint32 *const mUpper;
        const quint32 *const mLower;
        const quint32 *const mBelow;
        const int mLast;
    };

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
    const ColorTable &mTable;
    const QRgb *const mColors;
    const PassStyle mStyle;
    const QRgb mOutline;
    const QRgb mHatch;
};

} // namespace

bool colorPass(const PickBuffer &buffer, const ColorTable &table, const PassStyle &style,
               QImage &image, int threads, PickSpans *spans)
{
    const QSize size(buffer.width(), buffer.height());
    const bool reduced = image.size() * 2 == size && !size.isEmpty();
    if (image.format() != QImage::Format_RGB32 || (!reduced && image.size() != size)
        || table.size() <= static_cast<std::size_t>(buffer.objectLimit()))
        return false;
    const Pass pass(buffer, table, style);
    const bool hasSpans = spans && spans->follow(buffer, reduced, style.outlines, threads);
    uchar *const bytes = image.bits(); // detaches before the threads begin
    const int stride = image.bytesPerLine();
    inBands(0, image.height(), threads, kBandsPerThread, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            auto *out = reinterpret_cast<QRgb *>(bytes + qptrdiff(y) * stride);
            if (hasSpans)
                pass.colorSpans(spans->row(y), y, reduced, out);
            else if (!reduced)
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
