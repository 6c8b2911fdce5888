// SPDX-License-Identifier: MIT
#include "desk/draw/discs.h"
#include <algorithm>
#include <array>
#include <cmath>
#include "desk/draw/bands.h"
#include "desk/draw/pointStamp.h"
#include "desk/draw/viewTransform.h"

namespace meridor {
namespace {

constexpr QRgb kOpaque = 0xff000000U;
/// Fewer places are painted before a second thread has begun.
constexpr std::size_t kLeastShared = 1000;

/// The pixels of a disc by the quarters of them that it covers. A place lies in one of the four
/// quarters of its pixel, so that there are four patterns.
class SmoothStamp {
public:
    explicit SmoothStamp(int diameter) : mDiameter(diameter)
    {
        for (int odd = 0; odd < 4; ++odd)
            mPatterns[static_cast<std::size_t>(odd)] = pattern(odd % 2, odd / 2);
    }

    /// @param x, y  of the lattice with twice the pixels in each direction.
    /// @param area  of the lattice of the picture.
    void draw(double x, double y, QRgb color, const PickArea &area) const
    {
        const double reach = mDiameter + 2;
        if (!(x >= 2 * area.left - reach && x < 2 * area.right + reach && y >= 2 * area.top - reach
              && y < 2 * area.bottom + reach))
            return;
        const int left = floorInt(x + 0.5) - mDiameter;
        const int top = floorInt(y + 0.5) - mDiameter;
        const int oddColumn = left & 1;
        const int oddRow = top & 1;
        const int column = (left - oddColumn) / 2;
        const int row = (top - oddRow) / 2;
        const Pattern &pattern = mPatterns[static_cast<std::size_t>(oddColumn + 2 * oddRow)];
        const Mix mix(color);
        if (column >= area.left && column + pattern.size <= area.right && row >= area.top
            && row + pattern.size <= area.bottom) {
            quint32 *pixels = area.row(row) + (column - area.left);
            for (const Line &line : pattern.lines) {
                paint(pixels, line, pattern, mix);
                pixels += area.stride;
            }
            return;
        }
        for (int i = std::max(0, area.top - row); i < std::min(pattern.size, area.bottom - row);
             ++i) {
            quint32 *const pixels = area.row(row + i) - area.left;
            const Line &line = pattern.lines[static_cast<std::size_t>(i)];
            const int end = std::min(column + line.end, area.right);
            for (int at = std::max(column + line.first, area.left); at < end; ++at)
                pixels[at] = mix.over(pixels[at], pattern.quarters[line.start + at - column]);
        }
    }

private:
    /// The columns of a row: mixed, covered, mixed.
    struct Line {
        int start; ///< index of the quarters of column 0
        int first;
        int covered;
        int coveredEnd;
        int end;
    };
    struct Pattern {
        int size = 0; ///< rows and columns
        std::vector<Line> lines;
        std::vector<unsigned> quarters;
    };

    /// A colour over others. The mean is that of the four quarters, rounded as in colorPass().
    struct Mix {
        explicit Mix(QRgb plain)
            : color(plain | kOpaque), odd(plain & kOdd), green(plain >> 8 & 0xffU)
        {
        }
        QRgb over(QRgb below, unsigned quarters) const
        {
            const unsigned rest = 4 - quarters;
            const QRgb both = (below & kOdd) * rest + odd * quarters + 0x00020002U;
            const QRgb middle = (below >> 8 & 0xffU) * rest + green * quarters + 2U;
            return kOpaque | (both >> 2 & kOdd) | (middle >> 2) << 8;
        }
        static constexpr QRgb kOdd = 0x00ff00ffU;
        QRgb color;
        QRgb odd;
        QRgb green;
    };

    static void paint(quint32 *pixels, const Line &line, const Pattern &pattern, const Mix &mix)
    {
        const unsigned *const quarters = pattern.quarters.data() + line.start;
        for (int i = line.first; i < line.covered; ++i)
            pixels[i] = mix.over(pixels[i], quarters[i]);
        std::fill(pixels + line.covered, pixels + line.coveredEnd, mix.color);
        for (int i = line.coveredEnd; i < line.end; ++i)
            pixels[i] = mix.over(pixels[i], quarters[i]);
    }

    /// @param oddColumn, oddRow  whether the disc begins in the second half of a pixel.
    Pattern pattern(int oddColumn, int oddRow) const
    {
        Pattern made;
        made.size = mDiameter + std::max(oddColumn, oddRow);
        const auto size = static_cast<std::size_t>(made.size);
        made.quarters.resize(size * size);
        for (int row = 0; row < 2 * mDiameter; ++row) {
            for (int column = 0; column < 2 * mDiameter; ++column) {
                const double dx = column + 0.5 - mDiameter;
                const double dy = row + 0.5 - mDiameter;
                if (dx * dx + dy * dy <= double(mDiameter) * mDiameter)
                    ++made.quarters[static_cast<std::size_t>((row + oddRow) / 2) * size
                                    + static_cast<std::size_t>((column + oddColumn) / 2)];
            }
        }
        for (int row = 0; row < made.size; ++row) {
            const int start = row * made.size;
            const auto at = [&](int column) {
                return made.quarters[static_cast<std::size_t>(start + column)];
            };
            Line line{start, 0, 0, 0, made.size};
            while (line.first < line.end && at(line.first) == 0)
                ++line.first;
            while (line.end > line.first && at(line.end - 1) == 0)
                --line.end;
            line.covered = line.first;
            while (line.covered < line.end && at(line.covered) < 4)
                ++line.covered;
            line.coveredEnd = line.covered;
            while (line.coveredEnd < line.end && at(line.coveredEnd) == 4)
                ++line.coveredEnd;
            made.lines.push_back(line);
        }
        return made;
    }

    int mDiameter;
    std::array<Pattern, 4> mPatterns; ///< by oddColumn + 2 * oddRow
};

} // namespace

void paintDiscs(const std::vector<QPointF> &places, const ViewTransform &view, int diameter,
                bool smooth, const std::vector<QRgb> &colors, QImage &image, int threads)
{
    if (image.format() != QImage::Format_RGB32 || image.size() != view.size()
        || (colors.size() != 1 && colors.size() != places.size()))
        return;
    const int size = std::clamp(diameter, 1, 100);
    const Lattice lattice(smooth ? view.doubled() : view);
    const PointStamp plain(size);
    const SmoothStamp soft(size);
    const bool isOne = colors.size() == 1;
    auto *const pixels =
        reinterpret_cast<quint32 *>(image.bits()); // detaches before the threads begin
    const int stride = static_cast<int>(image.bytesPerLine() / sizeof(quint32));
    const auto paintRows = [&](int first, int end) {
        PickArea area;
        area.left = view.origin().x();
        area.right = area.left + image.width();
        area.top = first + view.origin().y();
        area.bottom = end + view.origin().y();
        area.stride = stride;
        area.pixels = pixels + qptrdiff(first) * stride;
        for (std::size_t i = 0; i < places.size(); ++i) {
            const double x = lattice.x(places[i].x());
            const double y = lattice.y(places[i].y());
            const QRgb color = colors[isOne ? 0 : i] | kOpaque;
            smooth ? soft.draw(x, y, color, area) : plain.draw(x, y, color, area);
        }
    };
    // Each band is a pass over all places.
    inBands(0, image.height(), places.size() < kLeastShared ? 1 : threads, 1, paintRows);
}

} // namespace meridor
