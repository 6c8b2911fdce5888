// SPDX-License-Identifier: MIT
/// The two voices of a command: results on standard output, notes and progress on standard error.
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
    std::function<void()> clearLine; ///< takes a progress bar off the line before a note

    /// One line of result. Raises a Failure when it cannot be written.
    void print(const QString &line) const;
    /// The whole result of a command as one JSON value.
    void print(const QJsonObject &object) const;
    /// Something worth knowing that is not the result; silent with --quiet.
    void note(const QString &line) const override;
    void error(const QString &line) const;
};

/// Rows under a heading, columns padded to their widest cell. Numbers stand right, texts left.
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
