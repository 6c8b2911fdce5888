// SPDX-License-Identifier: MIT
#include "core/project/text.h"
#include <QLocale>
#include <QVector>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include "core/project/failure.h"

namespace meridor {

QString exactNumber(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString shortNumber(double value, int decimals)
{
    if (!std::isfinite(value))
        return QStringLiteral("-");
    if (value != 0 && (std::abs(value) < std::pow(10.0, -decimals) || std::abs(value) >= 1e15))
        return QString::number(value, 'g', 6);
    QString text = QString::number(value, 'f', decimals);
    while (text.contains(QLatin1Char('.'))
           && (text.endsWith(QLatin1Char('0')) || text.endsWith(QLatin1Char('.')))) {
        const bool point = text.endsWith(QLatin1Char('.'));
        text.chop(1);
        if (point)
            break;
    }
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

QString counted(qint64 count, const char *noun)
{
    QString text = QLatin1String(noun);
    if (count == 1)
        return QStringLiteral("1 ") + text;
    const auto endsIn = [&text](const char *end) { return text.endsWith(QLatin1String(end)); };
    if (endsIn("tex"))
        text = text.chopped(2) + QStringLiteral("ices");
    else if (endsIn("s") || endsIn("x"))
        text += QStringLiteral("es");
    else if (endsIn("y") && !endsIn("ey"))
        text = text.chopped(1) + QStringLiteral("ies");
    else
        text += QLatin1Char('s');
    return QString::number(count) + QLatin1Char(' ') + text;
}

QString counted(qint64 count, const QString &one, const QString &many)
{
    return (count == 1 ? one : many).arg(count);
}

QStringList listItems(const QString &text, QChar separator)
{
    constexpr QLatin1Char kQuote('"');
    QStringList items;
    for (int at = 0; at < text.size(); ++at) { // at the start of an item
        int open = at;
        while (open < text.size() && text[open].isSpace())
            ++open;
        if (open == text.size() || text[open] != kQuote) {
            const int end = text.indexOf(separator, at);
            const QString item = text.mid(at, end < 0 ? -1 : end - at);
            if (!item.isEmpty())
                items.append(item);
            at = end < 0 ? text.size() : end;
            continue;
        }
        int close = text.indexOf(kQuote, open + 1);
        while (close >= 0 && close + 1 < text.size() && text[close + 1] == kQuote)
            close = text.indexOf(kQuote, close + 2);
        if (close < 0)
            failUsage(QStringLiteral("%1: a quotation mark is not closed").arg(text));
        items.append(text.mid(open + 1, close - open - 1)
                         .replace(QLatin1String("\"\""), QLatin1String("\"")));
        const int end = text.indexOf(separator, close);
        if (!text.mid(close + 1, end < 0 ? -1 : end - close - 1).trimmed().isEmpty())
            failUsage(QStringLiteral("%1: a quotation mark is followed by no %2")
                          .arg(text, QString(separator)));
        at = end < 0 ? text.size() : end;
    }
    return items;
}

QString listText(const QStringList &items)
{
    QStringList texts;
    for (QString item : items) {
        const bool isPlain = !item.isEmpty() && item == item.trimmed()
                             && !item.contains(QLatin1Char(','))
                             && !item.startsWith(QLatin1Char('"'));
        if (!isPlain)
            item = QLatin1Char('"') + item.replace(QLatin1String("\""), QLatin1String("\"\""))
                   + QLatin1Char('"');
        texts.append(item);
    }
    return texts.join(QLatin1Char(','));
}

QJsonValue jsonNumber(double value)
{
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue(QJsonValue::Null);
}

QString someOf(const QStringList &names, int most)
{
    if (names.size() <= most)
        return names.join(QStringLiteral(", "));
    return QStringList(names.mid(0, most)).join(QStringLiteral(", "))
           + QStringLiteral(" and %1 more").arg(names.size() - most);
}

namespace {

/// The optimal string alignment distance, by rows of the table of all prefixes.
int editDistance(const QString &a, const QString &b)
{
    QVector<int> before;
    QVector<int> last(b.size() + 1);
    QVector<int> row(b.size() + 1);
    std::iota(last.begin(), last.end(), 0);
    for (int i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const int replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before = last;
        last = row;
    }
    return last.last();
}

} // namespace

QString nearestOf(const QString &word, const QStringList &names)
{
    QString nearest;
    int least = std::max(1, word.size() / 2) + 1;
    for (const QString &name : names) {
        const int distance = editDistance(word.toCaseFolded(), name.toCaseFolded());
        if (distance < least) {
            least = distance;
            nearest = name;
        }
    }
    return nearest;
}

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

} // namespace meridor
