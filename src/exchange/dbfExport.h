// SPDX-License-Identifier: MIT
/// Export as a dBASE table through shapelib. Texts are UTF-8, which a .cpg file beside the table
/// declares.
#pragma once
#include <QSet>
#include <memory>
#include "exchange/exportTable.h"

namespace datainterface {

class DbfFile;

/// Fields are as wide as the exported values and the missing text require. In a numeric field a
/// missing value is the missing text read as a number, or null if that is not a number.
class DbfExport : public ExportWriter {
public:
    DbfExport();
    ~DbfExport() override;
    bool open(const ExportTable &table) override;
    bool writeHead(const ExportTable &table) override;
    bool writeRow(const ExportRow &row) override;
    bool close(bool isEndedEarly) override;

private:
    struct Field;
    struct Extent;

    QByteArray fieldName(const QString &columnName);
    bool addFields(const ExportTable &table);
    bool addField(const Field &field);
    Field fieldOf(DataType type, const QByteArray &name, const Extent &extent) const;
    bool measure(const ExportTable &table, QVector<Extent> &extents) const;
    static void widen(Extent &extent, const VORN_ConstDataContainer &cells, int object);
    bool writeCell(int index, const VORN_ConstDataContainer &values, int object);
    bool writeText(int index, const QByteArray &text);

    std::unique_ptr<DbfFile> mFile;
    QVector<Field> mFields;
    QSet<QByteArray> mUsedNames; ///< in capitals: names in the format are case-insensitive
    QByteArray mMissing;
    double mMissingNumber = 0.0;
    bool mHasMissingNumber = false;
    int mRecord = 0;
    bool mIsWhole = true; ///< no value was cut to the width of its field
};

} // namespace datainterface
