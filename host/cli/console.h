// SPDX-License-Identifier: MIT
/// Output of a command: results on standard output, messages on standard error.
#pragma once
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include "core/project/notes.h"
#include "core/project/text.h"

namespace meridor {

class Console : public Notes {
public:
    bool json = false;
    bool quiet = false;
    std::function<void()> clearLine; ///< removes a progress bar from the line before a message

    /// Prints a line of the result, or several. Raises a Failure if it cannot be written.
    void print(const QString &line) const;
    /// Prints the whole result of a command as JSON. Raises a Failure as well.
    void print(const QJsonObject &object) const;
    /// Prints information that is not the result, unless `quiet`.
    void note(const QString &line) const override;
    void error(const QString &line) const;
};

/// A table with a heading. Columns are padded to their widest cell.
class TextTable {
public:
    enum Align { Left, Right };
    /// @param columns  heading and alignment of each column.
    explicit TextTable(const QVector<QPair<QString, Align>> &columns) : mColumns(columns) {}
    void add(const QStringList &cells) { mRows.append(cells); }
    void print(const Console &console) const;

private:
    QVector<QPair<QString, Align>> mColumns;
    QVector<QStringList> mRows;
};

} // namespace meridor
