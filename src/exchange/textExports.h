// SPDX-License-Identifier: MIT
/// Exports as text: comma-separated and GeoEAS. UTF-8, numbers with a decimal point in every
/// locale.
#pragma once
#include <QFile>
#include <QTextStream>
#include "exchange/exportTable.h"

namespace datainterface {

/// What both have in common: fields with a separator between them. A field that holds the
/// separator, a quotation mark or a line break, and where blanks separate an empty one too, stands
/// in quotation marks with those inside doubled.
class TextExport : public ExportWriter {
public:
    bool open(const ExportTable &table) override;
    void writeRow(const ExportRow &row) override;
    bool close(bool isCanceled) override;

protected:
    /// @param digits  significant digits of a decimal; 0: as many as give the same value again.
    TextExport(QChar separator, int digits) : mSeparator(separator), mDigits(digits) {}
    virtual void writeHeader(const ExportTable &table) = 0;
    void discard() { mFile.remove(); }
    QString quoted(const QString &text) const;
    QStringList columnNames(const ExportTable &table) const;

    QFile mFile;
    QTextStream mOut;

private:
    QString cellText(const VORN_ConstDataContainer &values, int object) const;

    const QChar mSeparator;
    const int mDigits;
    QString mMissing;
};

class CsvExport : public TextExport {
public:
    CsvExport() : TextExport(QLatin1Char(','), 7) {}

protected:
    void writeHeader(const ExportTable &table) override;
};

class GeoeasExport : public TextExport {
public:
    GeoeasExport() : TextExport(QLatin1Char(' '), 0) {}
    bool close(bool isCanceled) override;

protected:
    void writeHeader(const ExportTable &table) override;
};

} // namespace datainterface
