// SPDX-License-Identifier: MIT
/// Tables as text: CSV and GeoEAS.
#pragma once
#include <QByteArray>
#include "core/export.h"
#include "core/formats/valueTable.h"

class QIODevice;

namespace meridor {

/// CSV (RFC 4180): UTF-8, lines end in a line feed, a field with a comma, a quote, a line break or a
/// blank at an end is quoted. Numbers have the digits from which the same double is read, infinities
/// and NaN are written as Inf and NaN. Nothing stands for a missing value, unless a text was chosen;
/// an empty text is a pair of quotes.
class MERIDOR_EXPORT CsvSink : public TableSink {
public:
    /// @param target  the name of the device in messages.
    CsvSink(QIODevice &device, const QString &target, const QString &missing);
    void begin(const QVector<TableColumn> &columns) override;
    void row(const std::vector<TableCell> &cells, const ShapeParts *shape) override;
    void end() override;

protected:
    virtual QByteArray head(const QVector<TableColumn> &columns) const;
    virtual QByteArray field(const TableCell &cell, CellKind kind) const;
    QByteArray quoted(const QString &text) const;
    virtual bool needsQuotes(const QString &text) const;

    char mSeparator = ',';

private:
    void flush();

    QIODevice &mDevice;
    QString mTarget;
    QByteArray mMissing;
    QByteArray mPending;
    QVector<TableColumn> mColumns;
};

/// GeoEAS: a title, the number of columns, their names one a line, then rows of fields that are
/// separated by blanks. Its readers expect numbers, so a date is written as yyyymmdd, a time of day
/// as hhmmss and a moment as yyyymmddhhmmss; texts are quoted if they contain blanks.
class MERIDOR_EXPORT GeoEasSink : public CsvSink {
public:
    GeoEasSink(QIODevice &device, const QString &target, const QString &missing,
               const QString &title);

protected:
    QByteArray head(const QVector<TableColumn> &columns) const override;
    QByteArray field(const TableCell &cell, CellKind kind) const override;
    bool needsQuotes(const QString &text) const override;

private:
    QString mTitle;
};

} // namespace meridor
