// SPDX-License-Identifier: MIT
/// The table that every export writes, with one row for each object and interval. ExportTable
/// generates the rows; each format has an ExportWriter.
#pragma once
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include <list>
#include <vector>
#include "datainterface/DataId.h"
#include "datainterface/DataType.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/dataContainer.h"

class MVectorDataSource;

namespace datainterface {

struct ExportRequest {
    QString fileName;
    QString title; ///< used only by GeoEAS
    QList<DataId> ids;
    TimeFormat format = TF_Date;
    qint64 start = 0; ///< both ends are included
    qint64 end = 0;
    QString missing; ///< written for a missing value
    int realization = 0;
};

struct ExportColumn {
    int id = -1;
    DataType type = DecimalType;
    QString name;
    bool isStatic = false;  ///< the values are valid at all times
    QList<TimeStamp> times; ///< at which the dataset has data, disjoint and in order
};

/// Whether a cell has no value to write. Numbers that are not finite are missing.
bool isMissingCell(const VORN_ConstDataContainer &values, int object);

struct ExportRow {
    int object = 0;
    const QVector<qint64> &times;                       ///< as many as timeColumns()
    const std::vector<VORN_ConstDataContainer> &values; ///< one for each column
};

/// The series of its datasets are checked out while the table exists, so that each is read once.
class ExportTable {
public:
    using Values = std::vector<VORN_ConstDataContainer>; ///< one for each column

    ExportTable(MVectorDataSource &source, const ExportRequest &request);
    ~ExportTable();
    ExportTable(const ExportTable &) = delete;
    ExportTable &operator=(const ExportTable &) = delete;

    const ExportRequest &request() const { return mRequest; }
    /// False when an id is not of a dataset of the source, a dataset does not have the realization,
    /// or the range ends before it starts.
    bool isComplete() const { return mIsComplete; }
    const QVector<ExportColumn> &columns() const { return mColumns; }
    QStringList timeColumns() const;
    /// The disjoint intervals at which at least one dataset has data, cut to the range, in order of
    /// time.
    const QList<TimeStamp> &times() const { return mTimes; }
    int objectCount() const { return mObjectCount; }
    /// Calls `visit(index, values)` for each of the times in order. Values that are valid for
    /// several successive times are read once. False when `visit` returns false or the user
    /// cancels.
    bool visitTimes(const std::function<bool(int, const Values &)> &visit) const;
    /// The numbers of an interval in the time columns: dates as yyyymmdd, times of day as hhmmss,
    /// others unchanged.
    QVector<qint64> timesOf(const TimeStamp &stamp) const;

private:
    class HeldSeries;

    bool addColumn(MVectorDataSource &source, int id);
    QList<TimeStamp> timesInRange() const;

    ExportRequest mRequest;
    QVector<ExportColumn> mColumns;
    QList<TimeStamp> mTimes;
    std::list<HeldSeries> mHeld;
    int mObjectCount = 0;
    bool mIsComplete = false;
};

/// The writer of one file format, used for one export. After a failed write nothing more is
/// written.
class ExportWriter {
public:
    virtual ~ExportWriter() = default;
    /// Creates the file; false when it cannot be created.
    virtual bool open(const ExportTable &table) = 0;
    /// Writes what precedes the rows. False when it cannot be written or the user cancelled.
    virtual bool writeHead(const ExportTable &table) = 0;
    /// Returns false when the row could not be written completely; no further row is then
    /// requested.
    virtual bool writeRow(const ExportRow &row) = 0;
    /// Ends the file.
    /// @param isEndedEarly  whether a cancel or a failed write ended the export.
    /// @return whether everything was written.
    virtual bool close(bool isEndedEarly) = 0;
};

/// Runs an export. False for a table that is not complete, for a file that cannot be created (the
/// user gets a message) or written, and after a cancel.
bool runExport(MVectorDataSource &source, const ExportRequest &request, ExportWriter &writer);

} // namespace datainterface
