// SPDX-License-Identifier: MIT
#include "core/import/cells.h"
#include "core/project/failure.h"

namespace meridor {
namespace {

[[noreturn]] void wrongCell(const CellColumn &column, int row, const char *wanted)
{
    fail(QStringLiteral("%1: \"%2\" is no %3")
             .arg(column.place(row), column.cells().text(row), QLatin1String(wanted)));
}

/// Raises a Failure if the columns hold texts among numbers; it names the first text.
void refuseMixture(const QString &name, const QVector<CellColumn> &columns)
{
    bool numbers = false;
    const CellColumn *textColumn = nullptr;
    int textRow = -1;
    for (const CellColumn &column : columns) {
        for (int row = 0; row < column.table->rows; ++row) {
            const std::string_view cell = column.cells().view(row);
            if (cell.empty())
                continue;
            if (toDecimal(cell, column.cells().decimal))
                numbers = true;
            else if (!textColumn)
                textColumn = &column, textRow = row;
        }
    }
    if (numbers && textColumn) {
        const bool comma = looksLikeDecimalComma(textColumn->cells().view(textRow));
        fail(QStringLiteral("%1: \"%2\" is no number; if it stands for none it is one of the texts "
                            "of missing values, and %3 can be given the type text")
                 .arg(textColumn->place(textRow), textColumn->cells().text(textRow), name),
             comma ? "decimal" : "missing");
    }
}

/// Notes why a column became text although most of its cells are numbers.
void tellWhyText(const CellColumn &column, const CellKinds &kinds, const Notes &notes)
{
    if (kinds.firstCommaNumber >= 0)
        notes.note(QStringLiteral("%1: \"%2\" was taken for text; a comma can be stated as the "
                                  "decimal separator")
                       .arg(column.place(kinds.firstCommaNumber),
                            column.cells().text(kinds.firstCommaNumber)));
    else if (kinds.firstText >= 0 && kinds.numbers > kinds.texts)
        notes.note(
            QStringLiteral("%1: \"%2\" makes the field text; numbers among its values: %3 of %4")
                .arg(column.place(kinds.firstText), column.cells().text(kinds.firstText),
                     QString::number(kinds.numbers), QString::number(kinds.numbers + kinds.texts)));
}

} // namespace

ValueKind kindOfDataset(const ImportPlan &plan, const QString &name,
                        const QVector<CellColumn> &columns, bool measured, const Notes &notes)
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
    for (const CellColumn &column : columns) {
        const CellKinds own = recogniseKinds(column.cells(), column.table->rows, !measured);
        if (!own.kind)
            continue;
        kind = kind ? widest(*kind, *own.kind) : *own.kind;
        if (own.kind == ValueKind::Text)
            tellWhyText(column, own, notes);
    }
    if (measured && kind == ValueKind::Text)
        refuseMixture(name, columns);
    return kind.value_or(measured ? ValueKind::Decimal : ValueKind::Text);
}

template <> int valueOf<int>(const CellColumn &column, int row)
{
    const auto value = toInteger(column.cells().view(row));
    if (!value)
        wrongCell(column, row, "integer of 32 bits");
    return *value;
}

template <> double valueOf<double>(const CellColumn &column, int row)
{
    const auto value = toDecimal(column.cells().view(row), column.cells().decimal);
    if (!value)
        wrongCell(column, row, "decimal number");
    return *value;
}

template <> QString valueOf<QString>(const CellColumn &column, int row)
{
    return column.cells().text(row);
}

} // namespace meridor
