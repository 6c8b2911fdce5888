// SPDX-License-Identifier: MIT
/// One object through time: an id and its observations, each a geometry with its time range.
#pragma once
#include <QPair>
#include <QVector>
#include "fennimark/export.h"
#include "fennimark/geometryTypes.h"

namespace fennimark {
class ObservationSource;
}

/// Made and owned by a Fennims or a VORNBuilder. A pointer to a chain is valid until the chain is
/// removed, its geography is opened anew, or its owner is deleted. The observations themselves are
/// in the owner's store.
class FENNIMARK_EXPORT FMObjectChain {
public:
    int id = -1;

    /// All observations, the earliest first, each with its range and the id of the record that
    /// holds its geometry. The ranges of one chain are disjoint.
    QVector<QPair<timeRange, int>> GetObservations() const;
    /// The observation at `time`. When the object does not exist at that time: range start 0, end
    /// -1, flags 0, record -1. O(log n) for a chain of n observations.
    QPair<timeRange, int> GetObservation(qint64 time) const;

private:
    friend class fennimark::ObservationSource;
    // The position of the first observation in the source's list; in a builder the chain's number.
    quint32 mFirst = 0;
    quint32 mCount = 0;
    const fennimark::ObservationSource *mSource = nullptr;
};
