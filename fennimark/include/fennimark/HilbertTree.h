// SPDX-License-Identifier: MIT
/// The index of all records of one geography: columns in the order of a Hilbert curve under a
/// packed box tree.
#pragma once
#include <QVector>
#include <memory>
#include "fennimark/HilbertTreeRecord.h"
#include "fennimark/export.h"
#include "fennimark/geometryTypes.h"

namespace fennimark {
class RecordStore;
struct StoreAccess;
} // namespace fennimark

/// Record ids are 1 to the record count; they follow the curve, so near ids are near places. Owned
/// by its Fennims.
class FENNIMARK_EXPORT HilbertTree {
public:
    ~HilbertTree();

    /// Holds a record until its CheckInRecord; calls nest. Null for an id that does not exist or
    /// was removed.
    /// @param keep  with true the live object stays among the last 64 after its final return, with
    /// all that it has computed; with false nothing is kept, which suits a single pass.
    HilbertTreeRecord *CheckOutRecord(int recordId, bool keep);
    const HilbertTreeRecord *CheckOutRecord(int recordId, bool keep) const;
    /// Surplus check-ins and unknown ids are ignored.
    void CheckInRecord(int recordId) const;

    /// The ids of all records whose box in space and time meets `box`, ascending. Edges count;
    /// times meet as intervals with inclusive and exclusive ends do. Geometry is not tested.
    void Overlaps(const RectInT &box, QVector<int> &records) const;

private:
    friend class Fennims;
    friend class HilbertTreeRecord;
    friend struct fennimark::StoreAccess;
    HilbertTree();
    Q_DISABLE_COPY(HilbertTree)

    std::unique_ptr<fennimark::RecordStore> mStore;
};
