// SPDX-License-Identifier: MIT
/// The table that every export writes: one row for each object and interval. One generator of rows,
/// one writer a format.
#pragma once
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>
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
    int width = 0;    ///< characters of the longest value
    int decimals = 0; ///< of them behind the point
};

struct ExportRow {
    int object = 0;
    const QVector<qint64> &times;                       ///< as many as timeColumns()
    const std::vector<VORN_ConstDataContainer> &values; ///< one a column
};

class ExportTable {
public:
    ExportTable(MVectorDataSource &source, const ExportRequest &request);

    const ExportRequest &request() const { return mRequest; }
    /// False when an id is of no dataset of the source.
    bool isComplete() const { return mColumns.size() == mRequest.ids.size(); }
    const QVector<ExportColumn> &columns() const { return mColumns; }
    QStringList timeColumns() const;
    /// The disjoint intervals at which a dataset has data, cut to the range, in order.
    const QList<TimeStamp> &times() const { return mTimes; }
    int objectCount() const { return mObjectCount; }
    /// The values of all columns at one of the times.
    std::vector<VORN_ConstDataContainer> valuesAt(const TimeStamp &stamp) const;
    /// The numbers that stand for an interval in the time columns: dates as yyyymmdd, times of day
    /// as hhmmss, others as they are.
    QVector<qint64> timesOf(const TimeStamp &stamp) const;

private:
    QList<TimeStamp> timesInRange(MVectorDataSource &source) const;

    ExportRequest mRequest;
    QVector<ExportColumn> mColumns;
    QList<TimeStamp> mTimes;
    int mObjectCount = 0;
};

/// One file format. Made for one export.
class ExportWriter {
public:
    virtual ~ExportWriter() = default;
    /// Makes the file with whatever stands before the rows. False: it could not be made.
    virtual bool open(const ExportTable &table) = 0;
    virtual void writeRow(const ExportRow &row) = 0;
    /// @param isCanceled  the rows end early. @return whether everything was written.
    virtual bool close(bool isCanceled) = 0;
};

/// False for a table that is not complete, a file that cannot be made (the user is told) or
/// written, and a cancel.
bool runExport(MVectorDataSource &source, const ExportRequest &request, ExportWriter &writer);

} // namespace datainterface
