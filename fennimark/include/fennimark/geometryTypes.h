// SPDX-License-Identifier: MIT
/// The plain value types of the geometry library: boxes in space, in time and in both, and grids of
/// equal cells. Coordinates are planar and in map units throughout the library: degrees are used as
/// they are, and nothing wraps at the antimeridian.
#pragma once
#include <QRectF>
#include <QtGlobal>

/// A closed rectangle.
struct Rect2D {
    constexpr Rect2D() = default;
    constexpr Rect2D(double left, double right, double bottom, double top)
        : xMin(left), xMax(right), yMin(bottom), yMax(top)
    {
    }
    /// The same extent; top and bottom of a QRectF are its least and its greatest y.
    constexpr Rect2D(const QRectF &rect)
        : Rect2D(rect.left(), rect.right(), rect.top(), rect.bottom())
    {
    }

    double xMin = 0.0;
    double xMax = 0.0;
    double yMin = 0.0;
    double yMax = 0.0;
};

/// A span of time. The start is inclusive when the upper four bits of `flags` are set, the end when
/// the lower four are. A range whose end is below its start holds no time.
struct timeRange {
    double start = 0.0;
    double end = 0.0;
    unsigned char flags = 0;
};

/// A box in space and time.
struct RectInT : Rect2D, timeRange {};

/// An axis-aligned grid of equal cells, in map units. Queries of cell centres count rows down from
/// `top`, queries of cell areas count rows up from `bottom`. The grid holds both edges, so that
/// rounding is the same as in the expressions that the callers evaluate.
struct FMGrid {
    double left = 0.0;
    double bottom = 0.0;
    double top = 0.0;
    double cellWidth = 0.0;
    double cellHeight = 0.0;
};

/// A block of cells of a grid; the last column and row belong to it.
struct FMGridWindow {
    unsigned int firstColumn = 0;
    unsigned int firstRow = 0;
    unsigned int lastColumn = 0;
    unsigned int lastRow = 0;
};

/// A cell and the area of it that an object covers, in squared map units.
struct FMCellArea {
    unsigned int column = 0;
    unsigned int row = 0;
    double area = 0.0;
};
Q_DECLARE_TYPEINFO(FMCellArea, Q_PRIMITIVE_TYPE); // a QVector of them grows by realloc
