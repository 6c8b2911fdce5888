// SPDX-License-Identifier: MIT
/// Writes a new vector geography: chains of observations in, one geometry file out.
#pragma once
#include <QVector>
#include <memory>
#include "fennimark/FMObjectChain.h"
#include "fennimark/export.h"
#include "fennimark/geometryTypes.h"

class Fennims;
class FMProjectionInfo;
class TreeObject;

/// Vertices of lines and polygons go to a scratch file as they come. What stays in memory until
/// Finish is 12 bytes a record, 32 a chain, 24 a distinct time range, and 16 a point or 8 a line or
/// polygon; Finish takes about 40 bytes a record more. Observations may come in any order of time,
/// each in O(log n) of its chain.
class FENNIMARK_EXPORT VORNBuilder {
public:
    /// @param bounds      the expected extent, which scales the order of the records. Geometry
    /// outside is accepted.
    /// @param like        may be null; else the new geography takes its name, its adjacency
    /// tolerance and, without `projection`, its projection. Only read here.
    /// @param projection  may be null; copied.
    VORNBuilder(const RectInT &bounds, const Fennims *like, const FMProjectionInfo *projection);
    ~VORNBuilder();

    /// A new chain with the given observations, as AddObjectsToChain takes them. Id -1 lets the
    /// builder choose: one above the largest so far, from 0. Null for an id in use or below -1, and
    /// for objects that cannot be added. The builder deletes the objects, also when the result is
    /// null.
    FMObjectChain *CreateChain(const QVector<TreeObject *> &objects,
                               const QVector<timeRange> &ranges, int id);

    /// Adds observations, pairwise. Null, with nothing added, for: an unknown chain; lists of
    /// unequal length; null objects; ends that cross; times or coordinates that are not finite; a
    /// second kind of geometry; a line part with less than 2 vertices or a ring with less than 3
    /// distinct ones; a range that overlaps one of the chain. Ranges that share just one inclusive
    /// end are told apart: the earlier one becomes exclusive there, or, where it is a single
    /// instant, the later one does.
    /// @param takeOver  with true the builder deletes the objects, also when the result is null; with
    /// false the caller keeps them.
    FMObjectChain *AddObjectsToChain(int chainId, const QVector<TreeObject *> &objects,
                                     const QVector<timeRange> &ranges, bool takeOver);

    /// Places no farther apart than this, in map units, are one place for contiguity and shared
    /// borders. 0, the default: rounding slack only. Kept in the file; vertices stay as given.
    /// Negative or not finite: 0.
    void SetAdjacencyTolerance(double tolerance);

    /// At least one chain has an observation.
    bool IsValid() const;

    /// Writes the file that Fennims::Open reads, under a temporary name first. False, with no file
    /// left, when nothing was built, when writing fails, and when the callback (may be null) returns
    /// false.
    /// @param path  in the local 8-bit encoding
    bool Finish(const char *path, bool (*progress)(int percent, const char *text));

private:
    Q_DISABLE_COPY(VORNBuilder)
    class Q_DECL_HIDDEN Private;
    std::unique_ptr<Private> d;
};
