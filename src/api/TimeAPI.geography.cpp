// SPDX-License-Identifier: MIT
#include "datainterface/TimeAPI.h"
#include <QSet>
#include <cmath>
#include <fennimark/Fennims.h>
#include <limits>
#include "api/callFrame.h"
#include "datainterface/MVectorData.h"

using datainterface::onGeography;
using datainterface::onSource;

namespace {

bool staticRange(const MVectorData &vectors, qint64 t, timeRange &range)
{
    range.start = HUGE_VAL;
    range.end = -HUGE_VAL;
    range.flags = 0;
    return vectors.GetFennims()->GetCommonStaticTimeStamp(t, range);
}

// Narrows `interval` to `by`. `start` and `end` are the ends of `by` in the type, qint64 or double,
// in which they are compared.
template <class Time> void narrow(Interval &interval, Time start, Time end, const TimeStamp &by)
{
    const auto oldStart = static_cast<Time>(interval.startTime);
    if (start > oldStart || (start == oldStart && !by.inclusiveStart)) {
        interval.startTime = by.startTime;
        interval.inclusiveStart = by.inclusiveStart;
    }
    const auto oldEnd = static_cast<Time>(interval.endTime);
    if (end < oldEnd || (end == oldEnd && !by.inclusiveEnd)) {
        interval.endTime = by.endTime;
        interval.inclusiveEnd = by.inclusiveEnd;
    }
}

// Narrows to the time in which no object changes; false when no object exists at `t`. The objects
// of a raster never change.
bool narrowByObjects(const MGeoData &geography, qint64 t, Interval &interval)
{
    const auto *vectors = dynamic_cast<const MVectorData *>(&geography);
    if (!vectors)
        return true;
    timeRange range;
    if (vectors->GetFennims()->GetObservationsAtTime(t).isEmpty()
        || !staticRange(*vectors, t, range))
        return false;
    narrow(interval, range.start, range.end, TimeStamp(range));
    return true;
}

bool narrowByValues(const MDataSource &source, int dataId, qint64 t, Interval &interval)
{
    TimeStamp stamp;
    if (!source.GetCommonTimeStamp(dataId, 0, t, stamp))
        return false;
    narrow(interval, stamp.startTime, stamp.endTime, stamp);
    return true;
}

} // namespace

bool VORN_GetTimeStepString(int geographyId, const TimeStep &step, QString &text)
{
    return onGeography(geographyId, false, [&](MGeoData &geography) {
        text = geography.TimeStepToString(step);
        return true;
    });
}

bool VORN_GetStaticObjectInterval(int geographyId, qint64 t, Interval &interval)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &vectors) {
        timeRange range;
        const bool found = staticRange(vectors, t, range);
        interval = TimeStamp(range);
        return found;
    });
}

bool VORN_GetNoChangeInterval(const QVector<int> &dataIds, qint64 t, Interval &interval)
{
    interval = {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max(), true, true};
    bool known = true;
    QSet<int> geographyIds;
    for (const int id : dataIds)
        geographyIds.insert(datainterface::geographyIdOf(id));
    for (const int id : qAsConst(geographyIds)) {
        known &= onGeography(id, false, [&](const MGeoData &geography) {
            return narrowByObjects(geography, t, interval);
        });
    }
    for (const int id : dataIds) {
        known &= onSource(id, false, [&](const MDataSource &source) {
            return narrowByValues(source, id, t, interval);
        });
    }
    return known;
}
