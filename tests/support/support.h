// SPDX-License-Identifier: MIT
/// What every test may use: the text of a raised failure, printers of the library's values,
/// builders.
#pragma once
#include <QString>
#include <QtTest>
#include "datainterface/TimeStamp.h"
#include "datainterface/vorn_error.h"

/// The condition's text of the vorn_error that `call` raises; a null string when it raises none.
template <class Call> QString raisedText(Call call)
{
    try {
        call();
    } catch (const vorn_error &error) {
        const QString what = QString::fromLocal8Bit(error.what());
        return what.section(QLatin1Char('\n'), 0, 0).mid(1).chopped(1);
    }
    return QString();
}

QByteArray fileBytes(const QString &path); ///< empty when it cannot be read

/// "[1, 5)" and the like; a single number is an instant.
TimeStamp stamp(const QString &text);
Interval interval(const QString &text);
QList<TimeStamp> stamps(const QString &text); ///< "[1, 5) [6, 8]"
QString text(const TimeStamp &stamp);
QString text(const QList<TimeStamp> &stamps);

char *toString(const TimeStamp &stamp);
char *toString(const Interval &interval);
