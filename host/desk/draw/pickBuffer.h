// SPDX-License-Identifier: MIT
/// The picture of a layer as object numbers.
#pragma once
#include <QPoint>
#include <QRect>
#include <functional>
#include <vector>
#include "desk/draw/viewTransform.h"

namespace meridor {

class FlatGeometry;

/// How places and lines are drawn, in pixels of the buffer.
struct PickStyle {
    int placeSize = 5;      ///< diameter of a disc, 1 to 255
    double lineWidth = 1.0; ///< up to 255; below 1.5 a chain of single pixels
    /// Not null: only objects with a flag are drawn, into a buffer of their own over that of all. A
    /// scatter plot keeps its selected places on top in this way. The flags have one byte for each
    /// object; a drawing that is continued or followed must have the flags that it began with.
    const unsigned char *only = nullptr;

    /// The same for a view with twice as many pixels in each direction.
    PickStyle doubled() const { return {placeSize * 2, lineWidth * 2.0, only}; }
    bool operator==(const PickStyle &other) const
    {
        return placeSize == other.placeSize && lineWidth == other.lineWidth && only == other.only;
    }
    bool operator!=(const PickStyle &other) const { return !(*this == other); }
};

/// A quint32 for each pixel of a view: the object index + 1 of the last shape there, in the order
/// of the shapes, and 0 where there is none. The colours of a picture are a pass over it
/// (colorPass.h), so that neither classes nor a selection draw geometry again.
///
/// A drawing is done in slices of rows, from the top, between which the caller may attend to
/// events:
///
///     buffer.begin(view, style);
///     while (!buffer.isComplete() && !eventsWait())
///         buffer.drawSlice(geometry, 128);
class PickBuffer {
public:
    static constexpr quint32 kNothing = 0;

    /// Further threads draw bands of rows; the picture is the same with any number.
    explicit PickBuffer(int threads = 2) : mThreads(threads) {}

    /// Draws all of it. False when `stop`, which is asked between slices, returned true; the rows
    /// that are not drawn yet hold nothing.
    bool draw(const FlatGeometry &geometry, const ViewTransform &view, const PickStyle &style,
              const std::function<bool()> &stop = {});
    /// The same, but pixels that the present picture shares with the new view, of the same geometry,
    /// are moved instead of drawn: after a pan, or in a window of another size.
    bool follow(const FlatGeometry &geometry, const ViewTransform &view, const PickStyle &style,
                const std::function<bool()> &stop = {});

    /// Empties the buffer. Its size is that of the view; a negative size counts as none.
    void begin(const ViewTransform &view, const PickStyle &style);
    /// Draws the next `rows` rows. A slice of places that lie in no spatial order costs a pass over
    /// all of them.
    void drawSlice(const FlatGeometry &geometry, int rows);
    bool isComplete() const { return mDrawnRows >= height(); }

    const ViewTransform &view() const { return mView; }
    int width() const { return mWidth; }
    int height() const { return mHeight; }
    const quint32 *row(int y) const
    {
        return mPixels.data() + mStart + std::size_t(y) * std::size_t(mWidth);
    }
    /// The number of the present content: no other content of any buffer has it.
    quint64 revision() const { return mRevision; }
    /// All objects of the buffer are below.
    int objectLimit() const { return mObjectLimit; }
    /// The object at a pixel; -1 where there is none and outside.
    int objectAt(const QPoint &pixel) const;
    /// The object whose pixel is nearest, no farther than `reach`; -1 when there is none. For lines
    /// and small places, which a pointer hardly meets.
    int objectNear(const QPoint &pixel, int reach) const;

private:
    void drawRect(const FlatGeometry &geometry, const QRect &rect);
    void redraw(const FlatGeometry &geometry, const QRect &rect);
    /// Moves to another view of the same lattice. @return the pixels that both have, in the new one.
    QRect moveTo(const ViewTransform &view);
    void slide(qptrdiff distance);
    void changed();
    void allocate(const QSize &size);
    quint32 *pixelsFrom(int x, int y)
    {
        return mPixels.data() + mStart + std::size_t(y) * std::size_t(mWidth) + std::size_t(x);
    }

    int mThreads;
    ViewTransform mView;
    PickStyle mStyle;
    int mWidth = 0;
    int mHeight = 0;
    int mDrawnRows = 0;
    int mObjectLimit = 0;
    quint64 mRevision = 0;        // of an empty buffer
    std::vector<quint32> mPixels; // the rows of the window, with spare rows before and behind
    std::size_t mStart = 0;       // of the first row
};

} // namespace meridor
