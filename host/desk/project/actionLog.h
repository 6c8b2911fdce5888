// SPDX-License-Identifier: MIT
/// What the user did, as a script: the meridor command lines that do the same, and messages as
/// comments.
#pragma once
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

namespace meridor {

/// Quoted for a POSIX shell, unless every character stands for itself.
QString shellWord(const QString &text);
/// "meridor" and the words after it, quoted.
QString commandText(const QStringList &arguments);

/// An option and its value as words, from which the value is read as it is, also if it begins with a
/// hyphen.
QStringList optionWords(const QString &option, const QString &value);

/// Command lines change the file of a project, while the user changes it in memory first. So the lines
/// since the last save follow what becomes of the changes: they name the file that the project is
/// saved as, or become comments if the changes are given up.
class ActionLog : public QObject {
    Q_OBJECT
public:
    /// The words after "meridor".
    void did(const QStringList &arguments);
    /// A message, each line of which becomes a comment.
    void remark(const QString &text);
    QStringList lines() const;
    /// A program for a POSIX shell that repeats the session in the present directory.
    QString script() const;

    /// The project has changes. Unless an earlier line made some, the last line did, or the next one
    /// if the change is not noted yet.
    void changed(bool isNoted);
    /// The project was saved. The names are those in command lines.
    /// @param before  empty: the project had no file before, and lines called it `untitled`.
    void saved(const QString &before, const QString &now, const QString &untitled);
    /// The changes since the last save were given up.
    void discarded();

Q_SIGNALS:
    void added(const QString &line);
    void rewritten(); ///< earlier lines are other ones now

private:
    struct Line {
        QStringList words; ///< of a command, with its name; empty: a comment
        QString comment;
        QString text() const;
    };
    void append(const Line &line);

    QVector<Line> mLines;
    int mFirstChange = -1; ///< the first line since the last save that changes the project
};

} // namespace meridor
