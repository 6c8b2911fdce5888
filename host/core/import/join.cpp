// SPDX-License-Identifier: MIT
#include "core/import/join.h"
#include <QHash>
#include <QSet>
#include "core/project/failure.h"

namespace meridor {
namespace {

QHash<QString, int> rowsByKey(const FeatureTable &table, const Column &keys)
{
    QHash<QString, int> rows;
    for (int row = 0; row < table.rows; ++row) {
        const QString key = keys.cells[row];
        if (key.isNull())
            fail(QStringLiteral("%1: no key").arg(place(table, keys, row)));
        if (rows.contains(key))
            fail(QStringLiteral("%1: key %2 stands in row %3 already")
                     .arg(place(table, keys, row), key)
                     .arg(rows[key] + 1));
        rows.insert(key, row);
    }
    return rows;
}

} // namespace

int keyColumnOf(const FeatureTable &table, const QString &key)
{
    if (table.columns.isEmpty())
        fail(table.file + QStringLiteral(": holds no fields"));
    return qMax(0, table.indexOf(key));
}

Unmatched join(FeatureTable &map, int mapKey, const FeatureTable &table, const Notes &notes)
{
    const int tableKey = keyColumnOf(table, map.columns[mapKey].name);
    const auto rows = rowsByKey(table, table.columns[tableKey]);

    Unmatched unmatched{table.file, {}, {}};
    QSet<QString> seen;
    QVector<int> partner(map.rows);
    for (int row = 0; row < map.rows; ++row) {
        const QString key = map.columns[mapKey].cells[row];
        partner[row] = rows.value(key, -1);
        if (partner[row] < 0 && !seen.contains(key))
            unmatched.objectKeys.append(key);
        seen.insert(key);
    }
    for (int row = 0; row < table.rows; ++row)
        if (const QString key = table.columns[tableKey].cells[row]; !seen.contains(key))
            unmatched.tableKeys.append(key);
    if (table.rows == 0)
        fail(table.file + QStringLiteral(": holds no rows"));
    if (unmatched.tableKeys.size() == table.rows)
        fail(QStringLiteral(
                 "%1: no key in field %2 is one of the map's; the first is %3, the map's first %4")
                 .arg(table.file, table.columns[tableKey].name, table.columns[tableKey].cells[0],
                      map.columns[mapKey].cells[0]));

    for (int c = 0; c < table.columns.size(); ++c) {
        if (c == tableKey)
            continue;
        const Column &source = table.columns[c];
        if (map.indexOf(source.name) >= 0) {
            notes.note(QStringLiteral("%1: field %2 is there already and is left out")
                           .arg(table.file, source.name));
            continue;
        }
        Column column{source.name, source.typed, source.kind, {}, table.file, partner};
        for (const int row : partner) {
            const std::string_view cell = row < 0 ? std::string_view() : source.cells.view(row);
            column.cells.append(
                QByteArray::fromRawData(cell.data(), static_cast<int>(cell.size())));
        }
        map.columns.append(column);
    }
    return unmatched;
}

} // namespace meridor
