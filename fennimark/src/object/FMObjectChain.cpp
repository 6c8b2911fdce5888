// SPDX-License-Identifier: MIT
#include "fennimark/FMObjectChain.h"
#include "base/timeRules.h"
#include "object/observationSource.h"

QVector<QPair<timeRange, int>> FMObjectChain::GetObservations() const
{
    QVector<QPair<timeRange, int>> observations;
    observations.reserve(int(mCount));
    for (quint32 i = 0; i < mCount; ++i)
        observations.append(mSource->observation(mFirst, i));
    return observations;
}

QPair<timeRange, int> FMObjectChain::GetObservation(qint64 time) const
{
    const auto instant = static_cast<double>(time);
    // Finds the first observation that ends at the time or later. When its end is exclusive, the
    // next observation may contain the time instead.
    quint32 low = 0;
    for (quint32 high = mCount; low < high;) {
        const quint32 middle = low + (high - low) / 2;
        if (mSource->observation(mFirst, middle).first.end < instant)
            low = middle + 1;
        else
            high = middle;
    }
    for (; low < mCount; ++low) {
        const QPair<timeRange, int> observation = mSource->observation(mFirst, low);
        if (fennimark::contains(observation.first, instant))
            return observation;
        if (observation.first.start > instant)
            break;
    }
    return {fennimark::kNoTime, -1};
}
