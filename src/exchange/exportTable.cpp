// SPDX-License-Identifier: MIT
#include "exchange/exportTable.h"
#include <QDate>
#include "datainterface/ControllerBase.h"
#include "datainterface/DiagnosticsAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/VersionAPI.h"
#include "frame/dialogs.h"
#include "frame/frameState.h"
#include "frame/progressSection.h"

namespace datainterface {
namespace {

constexpr qint64 kDaySeconds = 86400;

// Down, so that an instant before the epoch keeps its own day.
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

bool isCanceled()
{
    return VORN_Progress::UsingProgressBar() && !isTesting()
           && VORN_Progress::ProgressBarCanceled();
}

// False after a cancel.
bool writeRows(const ExportTable &table, ExportWriter &writer)
{
    const QList<TimeStamp> &times = table.times();
    for (int i = 0; i < times.size(); ++i) {
        if (isCanceled() || !reportProgress(static_cast<int>(100LL * i / times.size())))
            return false;
        const std::vector<VORN_ConstDataContainer> values = table.valuesAt(times[i]);
        const QVector<qint64> timeNumbers = table.timesOf(times[i]);
        for (int object = 0; object < table.objectCount(); ++object)
            writer.writeRow({object, timeNumbers, values});
    }
    return true;
}

} // namespace

ExportTable::ExportTable(MVectorDataSource &source, const ExportRequest &request)
    : mRequest(request), mObjectCount(static_cast<int>(source.GetObjectCount()))
{
    for (const DataId &id : request.ids) {
        ExportColumn column;
        column.id = id;
        if (!source.GetDataType(id, column.type))
            return;
        column.name = source.GetDisplayName(id);
        source.GetDataWidths(id, column.width, column.decimals);
        mColumns.append(column);
    }
    mTimes = timesInRange(source);
}

QList<TimeStamp> ExportTable::timesInRange(MVectorDataSource &source) const
{
    QList<QList<TimeStamp>> lists;
    for (const ExportColumn &column : mColumns)
        lists.append(source.GetCommonTimeStamps(column.id, mRequest.realization));
    const QList<TimeStamp> merged = TimeStamp::MergeTimeStamps(lists);
    // An empty list would stand for all times.
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

std::vector<VORN_ConstDataContainer> ExportTable::valuesAt(const TimeStamp &stamp) const
{
    std::vector<VORN_ConstDataContainer> values;
    values.reserve(static_cast<size_t>(mColumns.size()));
    for (const ExportColumn &column : mColumns)
        values.emplace_back(column.id, stamp.timeInInterval(), mRequest.realization, false);
    return values;
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
        if (hostDialogs() || controller()->HasGUI())
            VORN_ShowWarningDialog(applicationName,
                                   QStringLiteral("The file could not be created"));
        return false;
    }
    const VORN_Progress progress("Export", "Exporting datasets...", "Cancel");
    bool isDone = false;
    try {
        isDone = writeRows(table, writer);
    } catch (...) {
        writer.close(true);
        throw;
    }
    return writer.close(!isDone) && isDone;
}

} // namespace datainterface
