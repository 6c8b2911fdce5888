// SPDX-License-Identifier: MIT
#include "core/formats/fieldWidths.h"
#include <QSet>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

constexpr int kNameBytes = 10;
constexpr int kTextBytes = 254;
constexpr int kNumberWidth = 24;

/// The longest beginning of at most `bytes` bytes of UTF-8.
QString cut(const QString &text, int bytes)
{
    QString kept = text;
    while (kept.toUtf8().size() > bytes)
        kept.chop(kept.size() > 1 && kept.at(kept.size() - 1).isLowSurrogate() ? 2 : 1);
    return kept;
}

} // namespace

void FieldWidths::begin(const QVector<TableColumn> &columns)
{
    mColumns = columns;
    mFields.assign(static_cast<size_t>(columns.size()), Field());
    QSet<QString> taken;
    for (const TableColumn &column : columns) {
        QString name = cut(column.name, kNameBytes);
        for (int n = 2; taken.contains(name.toUpper()); ++n) {
            const QString number = QStringLiteral("_%1").arg(n);
            name = cut(column.name, kNameBytes - number.size()) + number;
        }
        taken.insert(name.toUpper());
        mNames.append(name);
    }
}

void FieldWidths::row(const std::vector<TableCell> &cells, const ShapeParts *)
{
    for (size_t i = 0; i < cells.size(); ++i) {
        Field &field = mFields[i];
        if (const auto *number = std::get_if<qint64>(&cells[i])) {
            field.before = std::max(field.before, QByteArray::number(*number).size());
        } else if (const auto *value = std::get_if<double>(&cells[i])) {
            measure(field, *value, mColumns[static_cast<int>(i)].name);
        } else if (const auto *text = std::get_if<QString>(&cells[i])) {
            const int bytes = text->toUtf8().size();
            field.bytes = std::max(field.bytes, bytes);
            field.longTexts += bytes > kTextBytes;
        }
    }
}

void FieldWidths::end()
{
}

/// The digits of the shortest text from which the same double is read determine the decimals.
void FieldWidths::measure(Field &field, double value, const QString &name) const
{
    if (!std::isfinite(value) || std::abs(value) >= 1e15) {
        const int digits =
            std::isfinite(value) ? 1 + static_cast<int>(std::log10(std::abs(value))) : kNumberWidth;
        if (digits + 3 > kNumberWidth)
            fail(QStringLiteral("%1: %2 of %3 does not fit in the fields of this format")
                     .arg(mTarget, exactNumber(value), name));
    }
    char text[40];
    const auto [end, error] =
        std::to_chars(text, text + sizeof text, value, std::chars_format::scientific);
    Q_UNUSED(error);
    char *const mark = std::find(text, end, 'e');
    const int exponent = static_cast<int>(std::strtol(mark + 1, nullptr, 10));
    const auto digits =
        static_cast<int>(std::count_if(text, mark, [](char c) { return c >= '0' && c <= '9'; }));
    field.before =
        std::max(field.before, std::max(1, exponent + 1) + (std::signbit(value) ? 1 : 0));
    field.decimals = std::max(field.decimals, digits - 1 - exponent);
}

int FieldWidths::decimalsThatFit(const Field &field) const
{
    return std::max(1, std::min(field.decimals, kNumberWidth - 1 - field.before));
}

int FieldWidths::width(int column) const
{
    const Field &field = mFields[static_cast<size_t>(column)];
    switch (mColumns[column].kind) {
    case CellKind::Integer:
        return field.before;
    case CellKind::Decimal:
        return field.before + 1 + decimalsThatFit(field);
    default:
        return std::min(field.bytes, kTextBytes);
    }
}

int FieldWidths::decimals(int column) const
{
    return mColumns[column].kind == CellKind::Decimal
               ? decimalsThatFit(mFields[static_cast<size_t>(column)])
               : 0;
}

void FieldWidths::tell(const std::function<void(const QString &)> &note) const
{
    QStringList cutNames;
    for (int i = 0; i < mColumns.size(); ++i) {
        const Field &field = mFields[static_cast<size_t>(i)];
        if (mNames[i] != mColumns[i].name)
            cutNames.append(QStringLiteral("%1 (%2)").arg(mNames[i], mColumns[i].name));
        if (field.longTexts > 0)
            note(QStringLiteral("%1: %2 of %3 cut to %4 bytes")
                     .arg(mTarget, counted(field.longTexts, "text"), mColumns[i].name,
                          QString::number(kTextBytes)));
        if (mColumns[i].kind == CellKind::Decimal && field.decimals > decimalsThatFit(field))
            note(QStringLiteral("%1: the numbers of %2 are rounded to %3")
                     .arg(mTarget, mColumns[i].name, counted(decimalsThatFit(field), "decimal")));
    }
    if (!cutNames.isEmpty())
        note(QStringLiteral("%1: names of fields are cut to %2 bytes: %3")
                 .arg(mTarget, QString::number(kNameBytes), someOf(cutNames)));
}

} // namespace meridor
