// SPDX-License-Identifier: MIT
/// One stored geometry while it is checked out.
#pragma once
#include <QtGlobal>
#include "fennimark/export.h"

class HilbertTree;
class TreeObject;

/// Handed out by HilbertTree::CheckOutRecord and valid until the matching CheckInRecord.
class FENNIMARK_EXPORT HilbertTreeRecord {
public:
    int recordId = -1;
    int chainId = -1;

    /// The live geometry: an FMPoint, or an FMLine or FMPolygon that views the store's bytes. The
    /// record owns it; each call needs one ReturnTreeObject. Null when the bytes cannot be read.
    TreeObject *GetTreeObject(const HilbertTree *tree);
    const TreeObject *GetTreeObject(const HilbertTree *tree) const;
    /// A surplus return is ignored.
    void ReturnTreeObject(const HilbertTree *tree) const;

protected:
    HilbertTreeRecord() = default;
    ~HilbertTreeRecord() = default;
    Q_DISABLE_COPY(HilbertTreeRecord)
};
