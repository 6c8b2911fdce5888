// SPDX-License-Identifier: MIT
/// Where the rows of a pick buffer hold the same object over many pixels.
#pragma once
#include <QtGlobal>
#include <vector>

namespace meridor {

class PickBuffer;

/// Colour passes over one buffer have the same pixels inside an object and the same ones at its edge,
/// whatever the colours. They are found once: a span of inner pixels is then filled, and only pixels
/// at edges are looked at. Worth it when a buffer is coloured several times, as while times are run
/// through, and when its objects are several pixels wide.
class PickSpans {
public:
    /// Instead of a number: there is another one under the pixel, or beside it if outlines count.
    static constexpr quint32 kEdge = 0xffffffffU;

    struct Span {
        quint32 number; ///< of all pixels of the buffer under these pixels of the picture
        int length;     ///< in pixels of the picture
    };
    using Row = std::vector<Span>;

    /// To be called before each pass: knows a buffer from the second pass over the same content on.
    /// @param reduced   the picture has a pixel for each four of the buffer.
    /// @param outlines  pixels at the left of or above another object are at an edge.
    /// @return whether there are spans.
    bool follow(const PickBuffer &buffer, bool reduced, bool outlines, int threads);
    /// The spans of a row of the picture, which together have its width.
    const Row &row(int y) const { return mRows[static_cast<std::size_t>(y)]; }

private:
    std::vector<Row> mRows;
    quint64 mRevision = 0; ///< of the content that was passed last
    bool mIsReduced = false;
    bool mHasOutlines = false;
    bool mIsFound = false; ///< whether the spans of that content were looked for
    bool mIsWorthIt = false;
};

} // namespace meridor
