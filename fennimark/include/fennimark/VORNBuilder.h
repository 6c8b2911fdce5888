// SPDX-License-Identifier: MIT
/// Collects chains of observations and writes them as one geometry file.
#pragma once
#include <QVector>
#include <memory>
#include "fennimark/FMObjectChain.h"
#include "fennimark/ProgressCallback.h"
#include "fennimark/export.h"
#include "fennimark/geometryTypes.h"

class Fennims;
class FMProjectionInfo;
class TreeObject;

/// The vertices of lines and polygons are written to a scratch file at once. Kept in memory until
/// Finish: 12 bytes for each record, 32 for each chain, 24 for each distinct time range, and 16 for
/// a point or 8 for a line or polygon. Finish needs about 40 bytes more for each record.
/// Observations may be added in any order of time, each in O(log n) for a chain of n observations.
class FENNIMARK_EXPORT VORNBuilder {
public:
    /// @param bounds      the expected extent, which sets the grid of the Hilbert curve that orders
    /// the records. Geometry outside of it is accepted.
    /// @param like        may be null; otherwise the new geography takes its name, its adjacency
    /// tolerance and, when `projection` is null, its projection. Not used after the constructor.
    /// @param projection  may be null; it is copied.
    VORNBuilder(const RectInT &bounds, const Fennims *like, const FMProjectionInfo *projection);
    ~VORNBuilder();

    /// Makes a chain of the given observations, under the rules of AddObjectsToChain. Id -1 stands
    /// for one above the largest id so far, the first being 0. Null for an id that is in use or
    /// below -1, and for objects that cannot be added. The builder deletes the objects, also when
    /// the result is null.
    FMObjectChain *CreateChain(const QVector<TreeObject *> &objects,
                               const QVector<timeRange> &ranges, int id);

    /// Adds one observation for each object and the range at the same index. Null, with nothing
    /// added, for an unknown chain, lists of unequal length, null objects, a range that ends before
    /// it starts, times or coordinates that are not finite, a second kind of geometry, a line part
    /// of less than 2 vertices, a ring of less than 3 distinct vertices, and a range that overlaps
    /// another one of the chain. Two ranges that share one inclusive end and nothing else are
    /// separated there: the end of the earlier one becomes exclusive or, when the earlier one is a
    /// single instant, the start of the later one does.
    /// @param takeOver  true: the builder deletes the objects, also when the result is null. false:
    /// the caller keeps them.
    FMObjectChain *AddObjectsToChain(int chainId, const QVector<TreeObject *> &objects,
                                     const QVector<timeRange> &ranges, bool takeOver);

    /// Sets the distance, in map units, within which two points count as one for contiguity and
    /// shared borders. 0, the default, leaves the rounding slack alone. The tolerance is stored in
    /// the file; vertices are not changed. Negative values and values that are not finite count as
    /// 0.
    void SetAdjacencyTolerance(double tolerance);

    /// Whether at least one chain has an observation.
    bool IsValid() const;

    /// Writes the file that Fennims::Open reads, first under a temporary name in the same
    /// directory. No observation can be added afterwards. False, with a file already at `path` left
    /// as it is, when nothing was built, when writing fails, and when the callback (may be null)
    /// returns false.
    /// @param path  in the local 8-bit encoding
    bool Finish(const char *path, fennimark::ProgressCallback progress);

private:
    Q_DISABLE_COPY(VORNBuilder)
    class Q_DECL_HIDDEN Private;
    std::unique_ptr<Private> d;
};
