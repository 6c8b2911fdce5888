// SPDX-License-Identifier: MIT
#include "exchange/exportTable.h"
#include <QDate>
#include <algorithm>
#include <cmath>
#include <limits>
#include "datainterface/MGeoData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/MVectorDataset.h"
#include "frame/frameState.h"
#include "frame/notes.h"
#include "frame/progressSection.h"

namespace datainterface {
namespace {

constexpr qint64 kDaySeconds = 86400;

// Rounds down, so that an instant before the epoch keeps its day.
qint64 dayOf(qint64 t)
{
    return t / kDaySeconds - (t % kDaySeconds < 0 ? 1 : 0);
}

qint64 dateNumber(qint64 t)
{
    const QDate date = MGeoData::ConvertToDate(dayOf(t) * kDaySeconds);
    return date.year() * 10000LL + date.month() * 100LL + date.day();
}

qint64 timeNumber(qint64 t)
{
    const qint64 seconds = t - dayOf(t) * kDaySeconds;
    return seconds / 3600 * 10000 + seconds / 60 % 60 * 100 + seconds % 60;
}

void appendTime(TimeFormat format, qint64 t, QVector<qint64> &columns)
{
    if (format == TF_Date || format == TF_DateTime)
        columns.append(dateNumber(t));
    if (format == TF_Time || format == TF_DateTime)
        columns.append(timeNumber(t));
    if (format == TF_Integer)
        columns.append(t);
}

bool writeRows(const ExportTable &table, ExportWriter &writer)
{
    const QList<TimeStamp> &times = table.times();
    return table.visitTimes([&](int index, const ExportTable::Values &values) {
        if (!reportProgress(static_cast<int>(100LL * index / times.size())))
            return false;
        const QVector<qint64> timeNumbers = table.timesOf(times[index]);
        for (int object = 0; object < table.objectCount(); ++object) {
            if (!writer.writeRow({object, timeNumbers, values}))
                return false;
        }
        return true;
    });
}

// Finds which values of a column are valid at a time: returns the index of their interval, or, for
// a time in a gap, the complement of the index of the next interval. The search starts at `next`,
// since times ascend.
int placeOf(const TimeStamp &stamp, const QList<TimeStamp> &intervals, int &next)
{
    while (next < intervals.size() && intervals[next] < stamp)
        ++next;
    return next < intervals.size() && !(stamp < intervals[next]) ? next : ~next;
}

} // namespace

bool isMissingCell(const VORN_ConstDataContainer &values, int object)
{
    return values.isMissing(object)
           || (values.type() == VORN_DataContainer::DoubleData
               && !std::isfinite(values.value(object)));
}

/// Keeps all series of a realization checked out for a scope. The dataset is looked up again at the
/// end, since a slot of the host that runs while progress is shown may remove it.
class ExportTable::HeldSeries {
public:
    HeldSeries(const MVectorDataSource &source, int id, int realization)
        : mSource(source),
          mId(id),
          mRealization(realization),
          mIsHeld(source.GetVectorDataset(id)->CheckOutRealization(realization, 0))
    {
    }
    // The series were not changed, so no data are lost if a check-in fails.
    ~HeldSeries()
    {
        try {
            const MVectorDataset *dataset = mSource.GetVectorDataset(mId);
            if (mIsHeld && dataset)
                dataset->CheckInRealization(mRealization, 0);
        } catch (...) {
        }
    }
    HeldSeries(const HeldSeries &) = delete;
    HeldSeries &operator=(const HeldSeries &) = delete;

private:
    const MVectorDataSource &mSource;
    const int mId;
    const int mRealization;
    const bool mIsHeld;
};

ExportTable::ExportTable(MVectorDataSource &source, const ExportRequest &request)
    : mRequest(request), mObjectCount(static_cast<int>(source.GetObjectCount()))
{
    mIsComplete = request.start <= request.end
                  && std::all_of(request.ids.begin(), request.ids.end(),
                                 [&](const DataId &id) { return addColumn(source, id); });
    // Without objects there are no rows, even if intervals remain.
    if (mIsComplete && mObjectCount > 0)
        mTimes = timesInRange();
}

ExportTable::~ExportTable() = default;

bool ExportTable::addColumn(MVectorDataSource &source, int id)
{
    const MVectorDataset *dataset = source.GetVectorDataset(id);
    if (!dataset || mRequest.realization < 0
        || mRequest.realization >= dataset->GetRealizationCount())
        return false;
    if (dataset->GetStorageType() == MVectorDataset::TimeSeries)
        mHeld.emplace_back(source, id, mRequest.realization);
    mColumns.append({id, dataset->GetDataType(), source.GetDisplayName(id), dataset->IsStatic(),
                     source.GetCommonTimeStamps(id, mRequest.realization)});
    return true;
}

QList<TimeStamp> ExportTable::timesInRange() const
{
    QList<QList<TimeStamp>> lists;
    for (const ExportColumn &column : mColumns)
        lists.append(column.times);
    const QList<TimeStamp> merged = TimeStamp::MergeTimeStamps(lists);
    // An empty list would mean all times.
    return merged.isEmpty() ? merged
                            : TimeStamp::TimeStampIntersection(
                                merged, {TimeStamp(mRequest.start, mRequest.end, true, true)});
}

QStringList ExportTable::timeColumns() const
{
    if (mRequest.format == TF_DateTime)
        return {QStringLiteral("StartDate"), QStringLiteral("StartTime"), QStringLiteral("EndDate"),
                QStringLiteral("EndTime")};
    return {QStringLiteral("Start"), QStringLiteral("End")};
}

bool ExportTable::visitTimes(const std::function<bool(int, const Values &)> &visit) const
{
    constexpr int kNothingRead = std::numeric_limits<int>::min();
    Values values(static_cast<size_t>(mColumns.size()));
    QVector<int> next(mColumns.size(), 0);
    QVector<int> read(mColumns.size(), kNothingRead);
    for (int i = 0; i < mTimes.size(); ++i) {
        if (isCanceled())
            return false;
        for (int column = 0; column < mColumns.size(); ++column) {
            const int place = mColumns[column].isStatic
                                  ? 0
                                  : placeOf(mTimes[i], mColumns[column].times, next[column]);
            if (read[column] == place)
                continue;
            auto &held = values[static_cast<size_t>(column)];
            held = {}; // release the last slice before the next is read
            held = VORN_ConstDataContainer(mColumns[column].id, mTimes[i].timeInInterval(),
                                           mRequest.realization, false);
            read[column] = place;
        }
        if (!visit(i, values))
            return false;
    }
    return true;
}

QVector<qint64> ExportTable::timesOf(const TimeStamp &stamp) const
{
    QVector<qint64> numbers;
    appendTime(mRequest.format, stamp.startTime, numbers);
    appendTime(mRequest.format, stamp.endTime, numbers);
    return numbers;
}

bool runExport(MVectorDataSource &source, const ExportRequest &request, ExportWriter &writer)
{
    const ExportTable table(source, request);
    if (!table.isComplete())
        return false;
    if (!writer.open(table)) {
        warnUser(QStringLiteral("The file could not be created"));
        return false;
    }
    const VORN_Progress progress("Export", "Exporting datasets...", "Cancel");
    bool isDone = false;
    try {
        isDone = writer.writeHead(table) && writeRows(table, writer);
    } catch (...) {
        writer.close(true);
        throw;
    }
    return writer.close(!isDone) && isDone;
}

} // namespace datainterface
