// SPDX-License-Identifier: MIT
#include "core/formats/weightsFile.h"
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <QTextStream>
#include <cmath>
#include <limits>
#include <memory>
#include "core/formats/values.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"

namespace meridor {
namespace {

constexpr int kLongestLine = 1 << 24; ///< in bytes; enough for a million neighbours of one object

/// The lines of a file, one in memory at a time. The buffer for the longest line is allocated once
/// and not initialised, so only the pages that lines reach use memory.
class Lines {
public:
    Lines(QIODevice &device, const QString &name)
        : mDevice(device), mName(name), mBuffer(new char[kLongestLine])
    {
    }

    /// Reads the next line, without its end; false at the end of the file. Empty lines are returned
    /// and counted.
    bool next(QString &line)
    {
        const auto length = static_cast<int>(mDevice.readLine(mBuffer.get(), kLongestLine));
        if (length <= 0)
            return false;
        ++mNumber;
        if (length >= kLongestLine - 1 && mBuffer[static_cast<size_t>(length - 1)] != '\n')
            fail(QStringLiteral("is too long"));
        line = QString::fromUtf8(mBuffer.get(), length);
        while (line.endsWith(QLatin1Char('\n')) || line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        if (mNumber == 1 && line.startsWith(QChar(QChar::ByteOrderMark)))
            line.remove(0, 1);
        return true;
    }

    [[noreturn]] void fail(const QString &what) const
    {
        meridor::fail(QStringLiteral("%1, line %2: %3").arg(mName).arg(mNumber).arg(what));
    }

private:
    QIODevice &mDevice;
    QString mName;
    std::unique_ptr<char[]> mBuffer;
    int mNumber = 0;
};

QStringList wordsOf(const QString &line)
{
    return line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

double weightOf(const Lines &lines, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const auto weight = toDecimal({bytes.constData(), static_cast<size_t>(bytes.size())});
    if (!weight)
        lines.fail(QStringLiteral("the weight %1 is no number").arg(text));
    // A weight set stores floats: a larger weight would become infinite, which no format here can
    // represent.
    if (std::abs(*weight) > static_cast<double>(std::numeric_limits<float>::max()))
        lines.fail(QStringLiteral("the weight %1 is beyond %2")
                       .arg(text)
                       .arg(static_cast<double>(std::numeric_limits<float>::max())));
    return *weight;
}

/// Reads the heading, "0 48 states48 fips" or the count alone. @return the count.
int readHeading(Lines &lines, WeightsFile &file)
{
    QString line;
    if (!lines.next(line))
        lines.fail(QStringLiteral("there is no heading"));
    const QStringList words = wordsOf(line);
    bool isCount = false;
    const int count = words.value(words.size() == 1 ? 0 : 1).toInt(&isCount);
    if (!isCount || count < 0)
        lines.fail(QStringLiteral("the heading states no number of objects"));
    file.name = words.value(2);
    file.key = words.value(3);
    return count;
}

/// Collects links by object, objects in the order of their first occurrence.
class Gatherer {
public:
    Gatherer(WeightsFile &file, const Lines &lines) : mFile(file), mLines(lines) {}

    int ego(const QString &id)
    {
        const auto found = mIndex.constFind(id);
        if (found != mIndex.constEnd())
            return *found;
        mFile.egos.append({id, {}});
        mIndex.insert(id, mFile.egos.size() - 1);
        return mFile.egos.size() - 1;
    }
    int newEgo(const QString &id)
    {
        if (mIndex.contains(id))
            mLines.fail(QStringLiteral("object %1 is there already").arg(id));
        return ego(id);
    }
    void link(int ego, const QString &to, double weight)
    {
        const int size = mLinks.size();
        mLinks.insert(qMakePair(ego, to));
        if (mLinks.size() == size)
            mLines.fail(QStringLiteral("the link from %1 to %2 is there already")
                            .arg(mFile.egos[ego].id, to));
        mFile.egos[ego].links.append({to, weight});
    }

private:
    WeightsFile &mFile;
    const Lines &mLines;
    QHash<QString, int> mIndex;
    QSet<QPair<int, QString>> mLinks;
};

/// The ids of neighbours may continue over several lines, and their line may be absent for an
/// object without neighbours: the counts determine where the next object begins.
WeightsFile readGal(Lines &lines)
{
    WeightsFile file;
    const int count = readHeading(lines, file);
    Gatherer gatherer(file, lines);
    QString line;
    int ego = -1;
    int open = 0; // neighbours not read yet
    while (lines.next(line)) {
        QStringList words = wordsOf(line);
        if (words.isEmpty())
            continue;
        if (open == 0) {
            bool isCount = false;
            open = words.value(1).toInt(&isCount);
            if (words.size() != 2 || !isCount || open < 0)
                lines.fail(QStringLiteral("an object's id and its number of neighbours are due"));
            ego = gatherer.newEgo(words[0]);
            continue;
        }
        if (words.size() > open)
            lines.fail(QStringLiteral("object %1 has more neighbours than it says")
                           .arg(file.egos[ego].id));
        for (const QString &word : words)
            gatherer.link(ego, word, 1);
        open -= words.size();
    }
    if (open > 0)
        lines.fail(
            QStringLiteral("object %1 has fewer neighbours than it says").arg(file.egos[ego].id));
    if (file.egos.size() != count)
        lines.fail(
            QStringLiteral("%1 objects, the heading says %2").arg(file.egos.size()).arg(count));
    return file;
}

/// Objects without neighbours are not in the file, so there may be fewer than the heading states.
WeightsFile readGwt(Lines &lines)
{
    WeightsFile file;
    const int count = readHeading(lines, file);
    Gatherer gatherer(file, lines);
    QString line;
    while (lines.next(line)) {
        const QStringList words = wordsOf(line);
        if (words.isEmpty())
            continue;
        if (words.size() != 3)
            lines.fail(QStringLiteral("a link is FROM TO WEIGHT"));
        gatherer.link(gatherer.ego(words[0]), words[1], weightOf(lines, words[2]));
    }
    if (file.egos.size() > count)
        lines.fail(
            QStringLiteral("%1 objects, the heading says %2").arg(file.egos.size()).arg(count));
    return file;
}

QStringList csvFields(const Lines &lines, const QString &line)
{
    QStringList fields{QString()};
    bool quoted = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (c == QLatin1Char('"')) {
            if (quoted && i + 1 < line.size() && line[i + 1] == c)
                fields.last() += line[++i];
            else
                quoted = !quoted;
        } else if (c == QLatin1Char(',') && !quoted) {
            fields.append(QString());
        } else {
            fields.last() += c;
        }
    }
    if (quoted)
        lines.fail(QStringLiteral("a quote is not closed"));
    return fields;
}

WeightsFile readCsv(Lines &lines)
{
    WeightsFile file;
    QString line;
    if (!lines.next(line))
        lines.fail(QStringLiteral("there is no heading"));
    QStringList names;
    for (const QString &name : csvFields(lines, line))
        names.append(name.trimmed().toLower());
    const int from = names.indexOf(QStringLiteral("from"));
    const int to = names.indexOf(QStringLiteral("to"));
    const int weight = names.indexOf(QStringLiteral("weight"));
    if (from < 0 || to < 0)
        lines.fail(QStringLiteral("the columns are from, to and weight"));
    Gatherer gatherer(file, lines);
    while (lines.next(line)) {
        if (line.trimmed().isEmpty())
            continue;
        const QStringList fields = csvFields(lines, line);
        if (fields.size() != names.size())
            lines.fail(QStringLiteral("%1 fields, the heading has %2")
                           .arg(fields.size())
                           .arg(names.size()));
        if (fields[from].isEmpty())
            lines.fail(QStringLiteral("the object is not named"));
        const int ego = gatherer.ego(fields[from]);
        if (!fields[to].isEmpty())
            gatherer.link(ego, fields[to], weight < 0 ? 1 : weightOf(lines, fields[weight]));
    }
    return file;
}

QString csvField(const QString &text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

/// Checks an id for a format whose words are separated by blanks.
QString word(const QString &text)
{
    if (text.isEmpty() || text.simplified().contains(QLatin1Char(' ')))
        fail(QStringLiteral("the id \"%1\" fits in a CSV file alone: the others part ids by blanks")
                 .arg(text));
    return text.simplified();
}

/// A name as one word of the heading. It has no effect on reading.
QString nameWord(const QString &text)
{
    QString name = text.simplified();
    name.replace(QLatin1Char(' '), QLatin1Char('_'));
    return name.isEmpty() ? QStringLiteral("unknown") : name;
}

void writeHeading(QTextStream &out, const WeightsFile &weights)
{
    out << "0 " << weights.egos.size() << ' ' << nameWord(weights.name) << ' '
        << nameWord(weights.key) << '\n';
}

void writeGal(QTextStream &out, const WeightsFile &weights)
{
    writeHeading(out, weights);
    for (const WeightsFile::Ego &ego : weights.egos) {
        out << word(ego.id) << ' ' << ego.links.size() << '\n';
        for (int i = 0; i < ego.links.size(); ++i)
            out << (i > 0 ? " " : "") << word(ego.links[i].to);
        out << '\n';
    }
}

void writeGwt(QTextStream &out, const WeightsFile &weights)
{
    writeHeading(out, weights);
    for (const WeightsFile::Ego &ego : weights.egos)
        for (const WeightsFile::Link &link : ego.links)
            out << word(ego.id) << ' ' << word(link.to) << ' ' << exactNumber(link.weight) << '\n';
}

void writeCsv(QTextStream &out, const WeightsFile &weights)
{
    out << "from,to,weight\n";
    for (const WeightsFile::Ego &ego : weights.egos) {
        for (const WeightsFile::Link &link : ego.links)
            out << csvField(ego.id) << ',' << csvField(link.to) << ',' << exactNumber(link.weight)
                << '\n';
        if (ego.links.isEmpty())
            out << csvField(ego.id) << ",,\n";
    }
}

} // namespace

WeightsFormat weightsFormatOf(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const QPair<const char *, WeightsFormat> formats[] = {{"gal", WeightsFormat::Gal},
                                                          {"gwt", WeightsFormat::Gwt},
                                                          {"kwt", WeightsFormat::Kwt},
                                                          {"csv", WeightsFormat::Csv}};
    for (const auto &format : formats)
        if (suffix == QLatin1String(format.first))
            return format.second;
    failUsage(QStringLiteral("%1: weights stand in .gal, .gwt, .kwt and .csv files").arg(path));
}

WeightsFile readWeights(QIODevice &device, WeightsFormat format, const QString &name)
{
    Lines lines(device, name);
    switch (format) {
    case WeightsFormat::Gal:
        return readGal(lines);
    case WeightsFormat::Csv:
        return readCsv(lines);
    default:
        return readGwt(lines);
    }
}

WeightsFile readWeights(const QString &path)
{
    const WeightsFormat format = weightsFormatOf(path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return readWeights(file, format, path);
}

void writeWeights(const QString &path, const WeightsFile &weights)
{
    const WeightsFormat format = weightsFormatOf(path);
    const bool written = replaceFile(path, [&](const QString &beside) {
        QFile file(beside);
        if (!file.open(QIODevice::WriteOnly))
            return false;
        QTextStream out(&file);
        out.setCodec("UTF-8");
        if (format == WeightsFormat::Gal)
            writeGal(out, weights);
        else if (format == WeightsFormat::Csv)
            writeCsv(out, weights);
        else
            writeGwt(out, weights);
        out.flush();
        return out.status() == QTextStream::Ok && file.flush();
    });
    if (!written)
        fail(QStringLiteral("%1: could not be written").arg(path));
}

} // namespace meridor
