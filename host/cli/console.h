// SPDX-License-Identifier: MIT
/// The two voices of a command: results on standard output, notes and progress on standard error.
#pragma once
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

namespace meridor {

class Console {
public:
    bool json = false;
    bool quiet = false;

    /// One line of result.
    void print(const QString &line) const;
    /// The whole result of a command as one JSON value.
    void print(const QJsonObject &object) const;
    /// Something worth knowing that is not the result; silent with --quiet.
    void note(const QString &line) const;
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

/// The shortest text that reads back as the same number.
QString exactNumber(double value);
/// At most `decimals` places, trailing zeros dropped: for the eye.
QString shortNumber(double value, int decimals = 3);
/// Null for what JSON has no number for.
QJsonValue jsonNumber(double value);
/// "a, b, c and 17 more": lists in messages stay readable.
QString someOf(const QStringList &names, int most = 12);

} // namespace meridor
