// SPDX-License-Identifier: MIT
#include "core/import/join.h"
#include <QSet>
#include <vector>
#include "core/import/objectRows.h"
#include "core/project/failure.h"

namespace meridor {
namespace {

KeyIndex rowsByKey(const FeatureTable &table, const Column &keys)
{
    KeyIndex rows(keys);
    for (int row = 0; row < table.rows; ++row) {
        if (keys.isMissing(row))
            fail(QStringLiteral("%1: no key").arg(place(table, keys, row)));
        if (const int first = rows.add(row); first != row)
            fail(QStringLiteral("%1: key %2 stands in row %3 already")
                     .arg(place(table, keys, row), keys.text(row), QString::number(first + 1)));
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
    const Column &tableKeys = table.columns[tableKey];
    const Column &mapKeys = map.columns[mapKey];
    const KeyIndex rows = rowsByKey(table, tableKeys);

    Unmatched unmatched{table.file, {}, {}};
    QSet<QString> unknown;
    std::vector<bool> seen(static_cast<size_t>(table.rows));
    QVector<int> partner(map.rows);
    for (int row = 0; row < map.rows; ++row) {
        partner[row] = rows.find(mapKeys.view(row));
        if (partner[row] >= 0)
            seen[static_cast<size_t>(partner[row])] = true;
        else if (const QString key = mapKeys.text(row); !unknown.contains(key))
            unknown.insert(key), unmatched.objectKeys.append(key);
    }
    for (int row = 0; row < table.rows; ++row)
        if (!seen[static_cast<size_t>(row)])
            unmatched.tableKeys.append(tableKeys.text(row));
    if (table.rows == 0)
        fail(table.file + QStringLiteral(": holds no rows"));
    if (unmatched.tableKeys.size() == table.rows)
        fail(
            QStringLiteral(
                "%1: no key in field %2 is one of the map's; the first is %3, the map's first %4")
                .arg(table.file, table.columns[tableKey].name, tableKeys.text(0), mapKeys.text(0)));

    for (int c = 0; c < table.columns.size(); ++c) {
        if (c == tableKey)
            continue;
        const Column &source = table.columns[c];
        if (map.indexOf(source.name) >= 0) {
            notes.note(QStringLiteral("%1: field %2 is there already and is left out")
                           .arg(table.file, source.name));
            continue;
        }
        Column column = source;
        column.file = table.file;
        column.fileRow = partner;
        map.columns.append(column);
    }
    return unmatched;
}

} // namespace meridor
