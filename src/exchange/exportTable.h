// SPDX-License-Identifier: MIT
/// The table that every export writes: one row for each object and interval. One generator of rows,
/// one writer a format.
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
    QString title; ///< GeoEAS alone
    QList<DataId> ids;
    TimeFormat format = TF_Date;
    qint64 start = 0; ///< both ends are included
    qint64 end = 0;
    QString missing; ///< stands for a missing value
    int realization = 0;
};

struct ExportColumn {
    int id = -1;
    DataType type = DecimalType;
    QString name;
    bool isStatic = false;  ///< the values hold at all times
    QList<TimeStamp> times; ///< at which the dataset has data, disjoint and in order
};

/// Whether a cell has no value to write: numbers that are not finite count as missing.
bool isMissingCell(const VORN_ConstDataContainer &values, int object);

struct ExportRow {
    int object = 0;
    const QVector<qint64> &times;                       ///< as many as timeColumns()
    const std::vector<VORN_ConstDataContainer> &values; ///< one a column
};

/// The series of a dataset are checked out as long as the table lives, so that each pages in once.
class ExportTable {
public:
    using Values = std::vector<VORN_ConstDataContainer>; ///< one a column

    ExportTable(MVectorDataSource &source, const ExportRequest &request);
    ~ExportTable();
    ExportTable(const ExportTable &) = delete;
    ExportTable &operator=(const ExportTable &) = delete;

    const ExportRequest &request() const { return mRequest; }
    /// False when an id is of no dataset of the source, a dataset lacks the realization or the
    /// range ends before it starts.
    bool isComplete() const { return mIsComplete; }
    const QVector<ExportColumn> &columns() const { return mColumns; }
    QStringList timeColumns() const;
    /// The disjoint intervals at which a dataset has data, cut to the range, in order.
    const QList<TimeStamp> &times() const { return mTimes; }
    int objectCount() const { return mObjectCount; }
    /// Calls `visit(index, values)` for each of the times in order. Values that hold over several
    /// times are read once. False when `visit` is, or when the user cancels.
    bool visitTimes(const std::function<bool(int, const Values &)> &visit) const;
    /// The numbers that stand for an interval in the time columns: dates as yyyymmdd, times of day
    /// as hhmmss, others as they are.
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

/// One file format. Made for one export. Behind a write that failed nothing more is written.
class ExportWriter {
public:
    virtual ~ExportWriter() = default;
    /// Makes the file. False: it could not be made.
    virtual bool open(const ExportTable &table) = 0;
    /// Whatever stands before the rows. False: it could not be written, or the user cancelled.
    virtual bool writeHead(const ExportTable &table) = 0;
    /// False: the row could not be written whole; the rest is not asked for.
    virtual bool writeRow(const ExportRow &row) = 0;
    /// @param isEndedEarly  by a cancel or a failed write. @return whether everything was written.
    virtual bool close(bool isEndedEarly) = 0;
};

/// False for a table that is not complete, a file that cannot be made (the user is told) or
/// written, and a cancel.
bool runExport(MVectorDataSource &source, const ExportRequest &request, ExportWriter &writer);

} // namespace datainterface
