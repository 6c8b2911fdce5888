// SPDX-License-Identifier: MIT
#include "core/import/cells.h"
#include "core/project/failure.h"

namespace meridor {
namespace {

[[noreturn]] void wrongCell(const CellColumn &column, int row, const char *wanted)
{
    fail(QStringLiteral("%1: \"%2\" is no %3")
             .arg(column.place(row), column.cells().cells[row], QLatin1String(wanted)));
}

/// Raises a Failure if the columns hold texts among numbers; it names the first text.
void refuseMixture(const QString &name, const QVector<CellColumn> &columns)
{
    bool numbers = false;
    const CellColumn *textColumn = nullptr;
    int textRow = -1;
    for (const CellColumn &column : columns) {
        for (int row = 0; row < column.table->rows; ++row) {
            const std::string_view cell = column.cells().cells.view(row);
            if (cell.empty())
                continue;
            if (toDecimal(cell))
                numbers = true;
            else if (!textColumn)
                textColumn = &column, textRow = row;
        }
    }
    if (numbers && textColumn)
        fail(QStringLiteral("%1: \"%2\" is no number; if it stands for none it is one of the texts "
                            "of missing values, and %3 can be given the type text")
                 .arg(textColumn->place(textRow), textColumn->cells().cells[textRow], name),
             "missing");
}

} // namespace

ValueKind kindOfDataset(const ImportPlan &plan, const QString &name,
                        const QVector<CellColumn> &columns, bool measured)
{
    for (const QString &type : plan.options.types) {
        if (type.section(QLatin1Char('='), 0, 0) != name)
            continue;
        const auto kind = kindOfName(type.section(QLatin1Char('='), 1));
        if (!kind)
            failUsage(
                QStringLiteral("type %1: write NAME=decimal, NAME=integer or NAME=text").arg(type),
                "type");
        return *kind;
    }
    std::optional<ValueKind> kind;
    for (const CellColumn &column : columns)
        if (const auto own = recogniseKind(column.cells()))
            kind = kind ? widest(*kind, *own) : *own;
    if (measured && kind == ValueKind::Text)
        refuseMixture(name, columns);
    return kind.value_or(measured ? ValueKind::Decimal : ValueKind::Text);
}

template <> int valueOf<int>(const CellColumn &column, int row)
{
    const auto value = toInteger(column.cells().cells.view(row));
    if (!value)
        wrongCell(column, row, "integer of 32 bits");
    return *value;
}

template <> double valueOf<double>(const CellColumn &column, int row)
{
    const auto value = toDecimal(column.cells().cells.view(row));
    if (!value)
        wrongCell(column, row, "decimal number");
    return *value;
}

template <> QString valueOf<QString>(const CellColumn &column, int row)
{
    return column.cells().cells[row];
}

} // namespace meridor
