// SPDX-License-Identifier: MIT
/// The plain value types of the geometry library: boxes in space, in time and in both, grids of
/// equal cells. Places are planar and in map units throughout the library: degrees are used as they
/// are, and nothing wraps at the antimeridian.
#pragma once
#include <QtGlobal>

/// A closed rectangle.
struct Rect2D {
    double xMin = 0.0;
    double xMax = 0.0;
    double yMin = 0.0;
    double yMax = 0.0;
};

/// A span of time. The upper four bits of `flags` all set: the start is inclusive; the lower four:
/// the end is. A range whose end is below its start is no time at all.
struct timeRange {
    double start = 0.0;
    double end = 0.0;
    unsigned char flags = 0;
};

/// A box in space and time.
struct RectInT : Rect2D, timeRange {};

/// An axis-aligned grid of equal cells. `top` is told beside `bottom` because rows of cell centres
/// count down from the top and rows of cell rectangles up from the bottom, each by the expression
/// that its users evaluate.
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

/// A cell and how much of it an object covers, in squared map units.
struct FMCellArea {
    unsigned int column = 0;
    unsigned int row = 0;
    double area = 0.0;
};
Q_DECLARE_TYPEINFO(FMCellArea,
                   Q_PRIMITIVE_TYPE); // long vectors of them are grown and moved as bytes
