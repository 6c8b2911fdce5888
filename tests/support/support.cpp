// SPDX-License-Identifier: MIT
#include "support/support.h"
#include <QFile>

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TimeStamp stamp(const QString &text)
{
    const QString t = text.trimmed();
    if (!t.startsWith('[') && !t.startsWith('('))
        return TimeStamp(t.toLongLong());
    return TimeStamp(t.mid(1).section(',', 0, 0).toLongLong(),
                     t.chopped(1).section(',', 1, 1).toLongLong(), t.startsWith('['),
                     t.endsWith(']'));
}

Interval interval(const QString &text)
{
    return stamp(text);
}

QList<TimeStamp> stamps(const QString &text)
{
    QList<TimeStamp> list;
    int from = 0;
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] == '[' || text[i] == '(')
            from = i;
        else if (text[i] == ']' || text[i] == ')')
            list.append(stamp(text.mid(from, i - from + 1)));
    }
    return list;
}

QString text(const TimeStamp &stamp)
{
    return (stamp.inclusiveStart ? "[" : "(") + QString::number(stamp.startTime) + ", "
           + QString::number(stamp.endTime) + (stamp.inclusiveEnd ? "]" : ")");
}

QString text(const QList<TimeStamp> &stamps)
{
    QStringList parts;
    for (const TimeStamp &stamp : stamps)
        parts.append(text(stamp));
    return parts.join(' ');
}

char *toString(const TimeStamp &stamp)
{
    return qstrdup(text(stamp).toLocal8Bit().constData());
}

char *toString(const Interval &interval)
{
    TimeStamp plain;
    plain.startTime = interval.startTime;
    plain.endTime = interval.endTime;
    plain.inclusiveStart = interval.inclusiveStart;
    plain.inclusiveEnd = interval.inclusiveEnd;
    return toString(plain);
}
