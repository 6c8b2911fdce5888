// SPDX-License-Identifier: MIT
/// Exports as text: comma-separated and GeoEAS. UTF-8, numbers with a decimal point in every
/// locale.
#pragma once
#include <QFile>
#include "exchange/exportTable.h"

namespace datainterface {

/// The common part: fields with a separator between them. A field that contains the separator, a
/// quotation mark or a line break is enclosed in quotation marks, and those inside are doubled.
/// Where blanks are the separator, an empty field is enclosed as well.
class TextExport : public ExportWriter {
public:
    bool open(const ExportTable &table) override;
    bool writeHead(const ExportTable &table) override;
    bool writeRow(const ExportRow &row) override;
    bool close(bool isEndedEarly) override;

protected:
    /// @param digits  significant digits of a decimal; 0 for as many as read back as the same
    ///                value.
    TextExport(char separator, int digits) : mSeparator(separator), mDigits(digits) {}
    /// Returns the lines before the rows.
    virtual QString head(const ExportTable &table) const = 0;
    /// Removes the file if it is a regular file, never a device.
    void discard();
    QString quoted(const QString &text) const;
    QStringList columnNames(const ExportTable &table) const;

private:
    QByteArray cellText(const VORN_ConstDataContainer &values, int object) const;
    bool flush();

    const char mSeparator;
    const int mDigits;
    QFile mFile;
    QByteArray mPending; ///< text that is not written yet
    QByteArray mMissing;
    bool mIsWritten = true;
};

class CsvExport : public TextExport {
public:
    CsvExport() : TextExport(',', 7) {}

protected:
    QString head(const ExportTable &table) const override;
};

class GeoeasExport : public TextExport {
public:
    GeoeasExport() : TextExport(' ', 0) {}
    bool close(bool isEndedEarly) override;

protected:
    QString head(const ExportTable &table) const override;
};

} // namespace datainterface
