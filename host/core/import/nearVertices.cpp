// SPDX-License-Identifier: MIT
// Vertices are distributed to the cells of a grid with a few vertices in each cell, which are far
// wider than the distance. Vertices near a border of their cell are also guests of the cells beyond
// it. Within a cell they are sorted by strips as wide as the distance, so that the vertices near
// one are in two runs of the sorted list. Maps with many vertices are processed in bands, which
// bounds the memory; vertices near the border of a band are guests of the next one.
#include "core/import/nearVertices.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <tuple>
#include <vector>

namespace meridor {
namespace {

/// Vertices of a band that are in memory at a time.
constexpr qint64 kBandSize = 1 << 18;
constexpr int kBins = 1 << 14;

struct Vertex {
    double x;
    double y;
    bool isGuest; ///< counted elsewhere
};

/// Counts the vertices of one cell that have another one nearby.
class CellCounter {
public:
    explicit CellCounter(double distance) : mDistance(distance) {}

    int count(const Vertex *begin, const Vertex *end)
    {
        if (end - begin < 2)
            return 0;
        mVertices.clear();
        double left = begin->x;
        for (const Vertex *v = begin; v != end; ++v)
            left = std::min(left, v->x);
        for (const Vertex *v = begin; v != end; ++v)
            mVertices.push_back({std::floor((v->x - left) / mDistance), v->y, v->x, v->isGuest});
        std::sort(mVertices.begin(), mVertices.end(), [](const Placed &a, const Placed &b) {
            return std::tie(a.strip, a.y, a.x, a.isGuest) < std::tie(b.strip, b.y, b.x, b.isGuest);
        });
        // Of equal places the first one is kept, which is no guest if any is none.
        const auto last =
            std::unique(mVertices.begin(), mVertices.end(),
                        [](const Placed &a, const Placed &b) { return a.x == b.x && a.y == b.y; });
        mVertices.erase(last, mVertices.end());
        mNear.assign(mVertices.size(), false);
        for (size_t i = 0, next = 0; i < mVertices.size(); ++i) {
            const Placed &own = mVertices[i];
            for (size_t k = i + 1; k < mVertices.size() && mVertices[k].strip == own.strip
                                   && mVertices[k].y - own.y <= mDistance;
                 ++k)
                compare(i, k);
            while (next < mVertices.size()
                   && (mVertices[next].strip <= own.strip
                       || (mVertices[next].strip == own.strip + 1
                           && own.y - mVertices[next].y > mDistance)))
                ++next;
            for (size_t k = next; k < mVertices.size() && mVertices[k].strip == own.strip + 1
                                  && mVertices[k].y - own.y <= mDistance;
                 ++k)
                compare(i, k);
        }
        int result = 0;
        for (size_t i = 0; i < mVertices.size(); ++i)
            result += mNear[i] && !mVertices[i].isGuest;
        return result;
    }

private:
    struct Placed {
        double strip;
        double y;
        double x;
        bool isGuest;
    };

    void compare(size_t a, size_t b)
    {
        if (std::hypot(mVertices[a].x - mVertices[b].x, mVertices[a].y - mVertices[b].y)
            <= mDistance)
            mNear[a] = mNear[b] = true;
    }

    double mDistance;
    std::vector<Placed> mVertices;
    std::vector<bool> mNear;
};

/// The cells of a grid over a rectangle.
class Grid {
public:
    Grid(const QRectF &area, qint64 vertices, double distance)
        : mLeft(area.left()), mLow(area.top())
    {
        const double wanted = std::max(1.0, static_cast<double>(vertices) / 4);
        const double wide = std::max(area.width(), 4 * distance);
        const double high = std::max(area.height(), 4 * distance);
        const double side = std::max(4 * distance, std::sqrt(wide / wanted * high));
        mColumns = static_cast<int>(std::clamp(std::ceil(wide / side), 1.0, wanted));
        mRows = static_cast<int>(
            std::clamp(std::ceil(high / side), 1.0, std::max(1.0, wanted / mColumns)));
        mWidth = std::max(wide / mColumns, 4 * distance);
        mHeight = std::max(high / mRows, 4 * distance);
    }
    size_t size() const { return static_cast<size_t>(mColumns) * static_cast<size_t>(mRows); }

    /// Calls `visit` with each cell that the vertex is in or near to, and whether it is a guest.
    template <class Visit> void visitCells(const Vertex &vertex, double distance, Visit visit) const
    {
        const auto at = [](double place, double low, double side, int count) {
            return std::clamp(static_cast<int>((place - low) / side), 0, count - 1);
        };
        // The distance is stretched, since the quotients are rounded.
        const double reach = 1.001 * distance;
        const int column = at(vertex.x, mLeft, mWidth, mColumns);
        const int row = at(vertex.y, mLow, mHeight, mRows);
        const int right = at(vertex.x + reach, mLeft, mWidth, mColumns);
        const int top = at(vertex.y + reach, mLow, mHeight, mRows);
        for (int r = at(vertex.y - reach, mLow, mHeight, mRows); r <= top; ++r)
            for (int c = at(vertex.x - reach, mLeft, mWidth, mColumns); c <= right; ++c)
                visit(static_cast<size_t>(r) * static_cast<size_t>(mColumns)
                          + static_cast<size_t>(c),
                      vertex.isGuest || r != row || c != column);
    }

private:
    double mLeft, mLow, mWidth, mHeight;
    int mColumns, mRows;
};

int countInBand(const std::vector<Vertex> &vertices, const QRectF &area, double distance)
{
    const Grid grid(area, static_cast<qint64>(vertices.size()), distance);
    // Counted and distributed: the vertices of a cell become contiguous.
    std::vector<quint32> ends(grid.size() + 1);
    for (const Vertex &vertex : vertices)
        grid.visitCells(vertex, distance, [&ends](size_t cell, bool) { ++ends[cell + 1]; });
    for (size_t i = 1; i < ends.size(); ++i)
        ends[i] += ends[i - 1];
    std::vector<Vertex> sorted(ends.back());
    for (const Vertex &vertex : vertices)
        grid.visitCells(vertex, distance, [&](size_t cell, bool isGuest) {
            sorted[ends[cell]++] = {vertex.x, vertex.y, isGuest};
        });
    CellCounter counter(distance);
    int count = 0;
    for (size_t cell = 0, begin = 0; cell < grid.size(); begin = ends[cell++])
        count += counter.count(sorted.data() + begin, sorted.data() + ends[cell]);
    return count;
}

/// The upper ends of bands of about kBandSize vertices each; the last one is infinite.
std::vector<double> bandEnds(const Shapes &shapes, const QRectF &area)
{
    std::vector<double> ends;
    if (shapes.vertexCount() > kBandSize && area.height() > 0) {
        std::vector<qint64> bins(kBins);
        const double scale = kBins / area.height();
        for (int row = 0; row < shapes.size(); ++row)
            shapes.visitVertices(row, [&](double, double y) {
                ++bins[static_cast<size_t>(
                    std::clamp(static_cast<int>((y - area.top()) * scale), 0, kBins - 1))];
            });
        qint64 inBand = 0;
        for (int bin = 0; bin < kBins; ++bin) {
            const qint64 own = bins[static_cast<size_t>(bin)];
            if (inBand > 0 && inBand + own > kBandSize) {
                ends.push_back(area.top() + bin / scale);
                inBand = 0;
            }
            inBand += own;
        }
    }
    ends.push_back(std::numeric_limits<double>::infinity());
    return ends;
}

/// Vertices by band, collected in blocks in a spool.
class Bands {
public:
    explicit Bands(const std::vector<double> &ends)
        : mEnds(ends), mBlocks(ends.size()), mStored(ends.size(), Cells(mSpool))
    {
    }

    void add(const Vertex &vertex, double distance)
    {
        const auto bandOf = [this](double y) {
            return static_cast<size_t>(std::upper_bound(mEnds.begin(), mEnds.end() - 1, y)
                                       - mEnds.begin());
        };
        const size_t own = bandOf(vertex.y);
        for (size_t band = bandOf(vertex.y - 1.001 * distance);
             band <= bandOf(vertex.y + 1.001 * distance); ++band) {
            auto &block = mBlocks[band];
            block.push_back({vertex.x, vertex.y, band != own});
            if (mBlocks.size() > 1 && block.size() == kBlock) {
                mStored[band].append(
                    {reinterpret_cast<const char *>(block.data()), sizeof(Vertex) * block.size()});
                block.clear();
            }
        }
    }

    size_t size() const { return mBlocks.size(); }
    /// Takes the vertices of a band.
    std::vector<Vertex> take(size_t band)
    {
        std::vector<Vertex> vertices = std::move(mBlocks[band]);
        for (int i = 0; i < mStored[band].size(); ++i) {
            const std::string_view block = mStored[band].view(i);
            const size_t before = vertices.size();
            vertices.resize(before + block.size() / sizeof(Vertex));
            std::memcpy(vertices.data() + before, block.data(), block.size());
        }
        return vertices;
    }

private:
    static constexpr size_t kBlock = 2048;
    std::vector<double> mEnds;
    std::shared_ptr<Spool> mSpool = std::make_shared<Spool>();
    std::vector<std::vector<Vertex>> mBlocks;
    std::vector<Cells> mStored;
};

} // namespace

NearVertices countNearVertices(const Shapes &shapes, double tolerance)
{
    const QRectF area = shapes.bounds();
    NearVertices result;
    if (shapes.vertexCount() == 0)
        return result;
    result.distance = std::max(tolerance, 1e-8 * std::max(area.width(), area.height()));
    if (result.distance <= 0)
        return result;
    Bands bands(bandEnds(shapes, area));
    for (int row = 0; row < shapes.size(); ++row)
        shapes.visitVertices(row, [&](double x, double y) {
            bands.add({x, y, false}, result.distance);
        });
    for (size_t band = 0; band < bands.size(); ++band) {
        const std::vector<Vertex> vertices = bands.take(band);
        if (vertices.empty())
            continue;
        const auto [low, high] =
            std::minmax_element(vertices.begin(), vertices.end(),
                                [](const Vertex &a, const Vertex &b) { return a.y < b.y; });
        result.count += countInBand(
            vertices, QRectF(area.left(), low->y, area.width(), high->y - low->y), result.distance);
    }
    return result;
}

} // namespace meridor
