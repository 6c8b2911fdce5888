// SPDX-License-Identifier: MIT
/// Export as a dBASE table, through shapelib. Texts are UTF-8, which a .cpg file beside the table
/// tells readers.
#pragma once
#include <QSet>
#include <memory>
#include "exchange/exportTable.h"

namespace datainterface {

class DbfExport : public ExportWriter {
public:
    DbfExport();
    ~DbfExport() override;
    bool open(const ExportTable &table) override;
    void writeRow(const ExportRow &row) override;
    bool close(bool isCanceled) override;

private:
    struct Field;
    struct Table;

    QByteArray fieldName(const QString &columnName);
    bool addFields(const ExportTable &table);
    bool addField(const Field &field);
    bool writeCell(int record, int index, const VORN_ConstDataContainer &values, int object);

    std::unique_ptr<Table> mTable;
    QVector<Field> mFields;
    QSet<QByteArray> mUsedNames; ///< in capitals: the format does not tell case apart
    QString mMissing;
    int mRecord = 0;
    bool mIsWritten = true;
};

} // namespace datainterface
