// SPDX-License-Identifier: MIT
/// One object's identity through time: an id and the observations in which its geometries hold.
#pragma once
#include <QPair>
#include <QVector>
#include "fennimark/export.h"
#include "fennimark/geometryTypes.h"

namespace fennimark {
class ObservationSource;
}

/// Made and owned by a Fennims or a VORNBuilder; gone when its chain is removed. The observations
/// themselves stay in the owner's store.
class FENNIMARK_EXPORT FMObjectChain {
public:
    int id = -1;

    /// All observations, the earliest first: the range and the id of the record that carries the
    /// geometry. Ranges of one chain are disjoint.
    QVector<QPair<timeRange, int>> GetObservations() const;
    /// The observation at `time`. When the object does not exist then: range start 0, end -1, flags
    /// 0, record -1. O(log n) in the chain's observations.
    QPair<timeRange, int> GetObservation(qint64 time) const;

private:
    friend class fennimark::ObservationSource;
    quint32 mFirst = 0; // position in the source's list; of a builder, the chain's number
    quint32 mCount = 0;
    const fennimark::ObservationSource *mSource = nullptr;
};
