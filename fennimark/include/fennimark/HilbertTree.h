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

/// Record ids are 1 to the record count. They follow the curve, so records with close ids are close
/// to one another. Owned by its Fennims.
class FENNIMARK_EXPORT HilbertTree {
public:
    ~HilbertTree();

    /// Holds a record until CheckInRecord is called; every check-out needs its own check-in. Null
    /// for an id that does not exist or was removed.
    /// @param keep  true: after its final return the live object, with all that it has computed, is
    /// kept among the 64 that were returned last. false: nothing is kept, which suits a single
    /// pass.
    HilbertTreeRecord *CheckOutRecord(int recordId, bool keep);
    const HilbertTreeRecord *CheckOutRecord(int recordId, bool keep) const;
    /// Surplus check-ins and unknown ids are ignored.
    void CheckInRecord(int recordId) const;

    /// The ids of all records whose box in space and time meets `box`, ascending. Boxes that touch
    /// meet; time ranges meet according to their inclusive and exclusive ends. The geometry is not
    /// tested.
    void Overlaps(const RectInT &box, QVector<int> &records) const;

private:
    friend class Fennims;
    friend class HilbertTreeRecord;
    friend struct fennimark::StoreAccess;
    HilbertTree();
    Q_DISABLE_COPY(HilbertTree)

    std::unique_ptr<fennimark::RecordStore> mStore;
};
