// SPDX-License-Identifier: MIT
/// The plain value types of the geometry library: boxes in space, in time and in both.
#pragma once

/// A closed rectangle.
struct Rect2D {
    double xMin = 0.0;
    double xMax = 0.0;
    double yMin = 0.0;
    double yMax = 0.0;
};

/// A span of time. The upper four bits of `flags` all set: the start is inclusive; the lower four: the end is. A range
/// whose end is below its start is no time at all.
struct timeRange {
    double start = 0.0;
    double end = 0.0;
    unsigned char flags = 0;
};

/// A box in space and time.
struct RectInT : Rect2D, timeRange {
};
