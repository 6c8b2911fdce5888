// SPDX-License-Identifier: MIT
#include "desk/draw/pickSpans.h"
#include <algorithm>
#include <atomic>
#include <cstring>
#include "desk/draw/bands.h"
#include "desk/draw/pickBuffer.h"

namespace meridor {
namespace {

constexpr int kSpanCost = 3; ///< of a span, in pixels of an edge

/// The rows of the buffer that decide about one row of the picture.
class RowReader {
public:
    RowReader(const PickBuffer &buffer, int y, bool reduced, bool outlines)
        : mFirst(buffer.row(reduced ? 2 * y : y)),
          mSecond(buffer.row(reduced ? 2 * y + 1 : y)),
          mBelow(outlines ? buffer.row(std::min(reduced ? 2 * y + 2 : y + 1, buffer.height() - 1))
                          : mSecond),
          mIsReduced(reduced)
    {
    }

    quint32 number(int x) const { return mFirst[mIsReduced ? 2 * x : x]; }
    /// Whether the pixel, and what is below it if that counts, hold one number.
    bool isOf(int x, quint32 number) const
    {
        if (!mIsReduced)
            return mFirst[x] == number && mBelow[x] == number;
        const quint64 both = quint64(number) << 32 | number;
        return pair(mFirst + 2 * x) == both && pair(mSecond + 2 * x) == both
               && pair(mBelow + 2 * x) == both;
    }
    bool startsWith(int x, quint32 number) const
    {
        return this->number(x) == number && mSecond[mIsReduced ? 2 * x : x] == number;
    }

private:
    static quint64 pair(const quint32 *numbers)
    {
        quint64 both;
        std::memcpy(&both, numbers, sizeof both);
        return both;
    }

    const quint32 *mFirst;
    const quint32 *mSecond;
    const quint32 *mBelow;
    bool mIsReduced;
};

void append(PickSpans::Row &row, quint32 number, int length)
{
    if (number == PickSpans::kEdge && !row.empty() && row.back().number == PickSpans::kEdge)
        row.back().length += length;
    else
        row.push_back({number, length});
}

/// @return the cost of a pass over the row.
int findSpans(const RowReader &reader, int width, bool outlines, PickSpans::Row &row)
{
    row.clear();
    int edges = 0;
    for (int x = 0; x < width;) {
        const int start = x;
        const quint32 number = reader.number(x);
        while (x < width && reader.isOf(x, number))
            ++x;
        if (outlines && x > start && x < width && !reader.startsWith(x, number))
            --x; // the last one has an outline on its right
        if (x > start)
            append(row, number, x - start);
        else
            append(row, PickSpans::kEdge, 1);
        edges += x == start;
        x += x == start;
    }
    return kSpanCost * static_cast<int>(row.size()) + edges;
}

} // namespace

bool PickSpans::follow(const PickBuffer &buffer, bool reduced, bool outlines, int threads)
{
    if (mRevision != buffer.revision() || mIsReduced != reduced || mHasOutlines != outlines) {
        mRevision = buffer.revision();
        mIsReduced = reduced;
        mHasOutlines = outlines;
        mIsFound = mIsWorthIt = false;
        return false;
    }
    if (mIsFound)
        return mIsWorthIt;
    const int width = reduced ? buffer.width() / 2 : buffer.width();
    const int height = reduced ? buffer.height() / 2 : buffer.height();
    mRows.resize(static_cast<std::size_t>(height));
    const qint64 most = qint64(width) * height; // without spans
    std::atomic<qint64> cost{0};
    inBands(0, height, threads, 1, [&](int first, int end) {
        qint64 found = 0;
        for (int y = first; y < end; ++y) {
            found += findSpans(RowReader(buffer, y, reduced, outlines), width, outlines,
                               mRows[static_cast<std::size_t>(y)]);
            if (found > qint64(y - first + 64) * width) { // small objects everywhere
                found = most + 1;
                break;
            }
        }
        cost += found;
    });
    mIsFound = true;
    mIsWorthIt = cost <= most;
    if (!mIsWorthIt)
        mRows = {};
    return mIsWorthIt;
}

} // namespace meridor
