// SPDX-License-Identifier: MIT
/// What the user did, as a script: the meridor command lines that do the same, and messages as
/// comments.
#pragma once
#include <QObject>
#include <QString>
#include <QStringList>

namespace meridor {

/// Quoted for a POSIX shell, unless every character stands for itself.
QString shellWord(const QString &text);
/// "meridor" and the words after it, quoted.
QString commandText(const QStringList &arguments);

class ActionLog : public QObject {
    Q_OBJECT
public:
    /// The words after "meridor".
    void did(const QStringList &arguments);
    /// A message, each line of which becomes a comment.
    void remark(const QString &text);
    const QStringList &lines() const { return mLines; }

Q_SIGNALS:
    void added(const QString &line);

private:
    void append(const QString &line);

    QStringList mLines;
};

} // namespace meridor
