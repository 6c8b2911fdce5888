// SPDX-License-Identifier: MIT
/// Names and widths of the fields of a dBASE table, which are fixed before the first row is written.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include "core/formats/valueTable.h"

namespace meridor {

/// Measures a table. Names have at most 10 bytes, texts at most 254, numbers at most 24 characters.
class FieldWidths : public TableSink {
public:
    explicit FieldWidths(const QString &target) : mTarget(target) {}
    void begin(const QVector<TableColumn> &columns) override;
    void row(const std::vector<TableCell> &cells, const ShapeParts *shape) override;
    void end() override;

    QString name(int column) const { return mNames[column]; }
    int width(int column) const;
    int decimals(int column) const;
    /// Tells which names, texts and numbers do not fit.
    void tell(const std::function<void(const QString &)> &note) const;

private:
    struct Field {
        int before = 1;   ///< characters before the decimal point, with the sign
        int decimals = 0; ///< digits after it that all values need
        int bytes = 1;    ///< of the longest text
        qint64 longTexts = 0;
    };
    void measure(Field &field, double value, const QString &name) const;
    int decimalsThatFit(const Field &field) const;

    QString mTarget;
    QVector<TableColumn> mColumns;
    QStringList mNames;
    std::vector<Field> mFields;
};

} // namespace meridor
