// SPDX-License-Identifier: MIT
#include "core/formats/weightsFile.h"
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QTextCodec>
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>
#include "core/formats/values.h"
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/inputFile.h"
#include "core/project/outputFile.h"
#include "core/project/text.h"

namespace meridor {
namespace {

constexpr int kLongestLine = 1 << 24;   ///< in bytes; enough for a million neighbours of one object
constexpr int kPieceBytes = 1 << 16;    ///< read or written with one call
constexpr int kLinesPerQuestion = 1024; ///< lines between two questions whether the user cancelled

/// The lines of a file, one in memory at a time.
class Lines {
public:
    Lines(QIODevice &device, const QString &name) : mDevice(device), mName(name) {}

    /// Reads the next line, without its end; false at the end of the file. Empty lines are returned
    /// and counted.
    bool next(QString &line)
    {
        if (!fetch())
            return false;
        while (mLine.endsWith('\n') || mLine.endsWith('\r'))
            mLine.chop(1);
        line = text(mLine);
        return true;
    }

    /// Reads the fields of the next record of a CSV file, which may contain line breaks in quotes.
    /// Lines without a field are passed over.
    bool nextRecord(QStringList &fields)
    {
        do {
            if (!fetch())
                return false;
        } while (mLine.trimmed().isEmpty());
        QByteArray record = mLine;
        const int first = mNumber;
        for (bool open = oddQuotes(); open; open = open != oddQuotes()) {
            if (!fetch()) {
                mNumber = first;
                fail(QStringLiteral("a quote is not closed"));
            }
            record += mLine;
            if (record.size() > kLongestLine) {
                mNumber = first;
                fail(QStringLiteral("is too long"));
            }
        }
        if (record.endsWith('\n'))
            record.chop(1);
        if (record.endsWith('\r'))
            record.chop(1);
        fields = fieldsOf(text(record));
        return true;
    }

    [[noreturn]] void fail(const QString &what) const
    {
        meridor::fail(QStringLiteral("%1, line %2: %3").arg(mName, QString::number(mNumber), what));
    }

private:
    bool oddQuotes() const { return mLine.count('"') % 2 != 0; }

    /// Reads a line with its end into mLine.
    bool fetch()
    {
        mLine.resize(0); // keeps the memory
        for (;;) {
            if (mAt == mPiece.size()) {
                mPiece = mDevice.read(kPieceBytes);
                mAt = 0;
                if (mPiece.isEmpty())
                    break;
            }
            const int end = mPiece.indexOf('\n', mAt);
            const int length = (end < 0 ? mPiece.size() : end + 1) - mAt;
            mLine.append(mPiece.constData() + mAt, length);
            mAt += length;
            if (mLine.size() > kLongestLine) {
                ++mNumber;
                fail(QStringLiteral("is too long"));
            }
            if (end >= 0)
                break;
        }
        if (mLine.isEmpty())
            return false;
        ++mNumber;
        if (mNumber == 1 && mLine.startsWith("\xEF\xBB\xBF"))
            mLine.remove(0, 3);
        if (mNumber % kLinesPerQuestion == 0)
            stopIfCancelled();
        return true;
    }

    QString text(const QByteArray &bytes) const
    {
        QTextCodec::ConverterState state;
        const QString text =
            QTextCodec::codecForMib(kUtf8)->toUnicode(bytes.constData(), bytes.size(), &state);
        if (state.invalidChars > 0 || state.remainingChars > 0)
            fail(QStringLiteral("is not UTF-8"));
        return text;
    }

    static QStringList fieldsOf(const QString &record)
    {
        QStringList fields{QString()};
        bool quoted = false;
        for (int i = 0; i < record.size(); ++i) {
            const QChar c = record[i];
            if (c == QLatin1Char('"')) {
                if (quoted && i + 1 < record.size() && record[i + 1] == c)
                    fields.last() += record[++i];
                else
                    quoted = !quoted;
            } else if (c == QLatin1Char(',') && !quoted) {
                fields.append(QString());
            } else {
                fields.last() += c;
            }
        }
        return fields;
    }

    static constexpr int kUtf8 = 106;
    QIODevice &mDevice;
    QString mName;
    QByteArray mPiece;
    int mAt = 0; ///< in mPiece
    QByteArray mLine;
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
                       .arg(text, QString::number(
                                      static_cast<double>(std::numeric_limits<float>::max()))));
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

/// A set of numbers in one block of memory, which is freed at once.
class NumberSet {
public:
    /// False if the number is there already.
    bool insert(quint64 number)
    {
        if (2 * mCount >= mPlaces.size())
            grow();
        quint64 &place = find(number);
        if (place != kFree)
            return false;
        place = number;
        ++mCount;
        return true;
    }

private:
    static constexpr quint64 kFree = ~quint64(0);

    /// The place of the number, or the free one where it belongs.
    quint64 &find(quint64 number)
    {
        const size_t mask = mPlaces.size() - 1;
        size_t at = static_cast<size_t>((number * 0x9E3779B97F4A7C15ULL) >> 20) & mask;
        while (mPlaces[at] != kFree && mPlaces[at] != number)
            at = (at + 1) & mask;
        return mPlaces[at];
    }
    void grow()
    {
        const std::vector<quint64> old = std::move(mPlaces);
        mPlaces.assign(std::max<size_t>(64, 2 * old.size()), kFree);
        for (const quint64 number : old)
            if (number != kFree)
                find(number) = number;
    }

    std::vector<quint64> mPlaces; ///< a power of two
    size_t mCount = 0;
};

/// Collects links by object, objects in the order of their first occurrence. Each id is one text in
/// memory, which all its links share.
class Gatherer {
public:
    Gatherer(WeightsFile &file, const Lines &lines) : mFile(file), mLines(lines) {}

    int ego(const QString &id)
    {
        int &ego = mIds[numberOf(id)].ego;
        if (ego < 0) {
            ego = mFile.egos.size();
            mFile.egos.append({mIds[numberOf(id)].text, {}});
        }
        return ego;
    }
    int newEgo(const QString &id)
    {
        if (mIds[numberOf(id)].ego >= 0)
            mLines.fail(QStringLiteral("object %1 is there already").arg(id));
        return ego(id);
    }
    void link(int ego, const QString &to, double weight)
    {
        const size_t number = numberOf(to);
        if (!mLinks.insert(quint64(ego) << 32 | quint64(number)))
            mLines.fail(QStringLiteral("the link from %1 to %2 is there already")
                            .arg(mFile.egos[ego].id, to));
        mFile.egos[ego].links.append({mIds[number].text, weight});
    }

private:
    struct Id {
        QString text;
        int ego = -1;
    };
    size_t numberOf(const QString &id)
    {
        const auto found = mNumbers.constFind(id);
        if (found != mNumbers.constEnd())
            return *found;
        mNumbers.insert(id, mIds.size());
        mIds.push_back({id, -1});
        return mIds.size() - 1;
    }

    WeightsFile &mFile;
    const Lines &mLines;
    QHash<QString, size_t> mNumbers;
    std::vector<Id> mIds;
    NumberSet mLinks; ///< number of the object, then of its neighbour
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
        lines.fail(QStringLiteral("%1, the heading says %2")
                       .arg(counted(file.egos.size(), "object"))
                       .arg(count));
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
        lines.fail(QStringLiteral("%1, the heading says %2")
                       .arg(counted(file.egos.size(), "object"))
                       .arg(count));
    return file;
}

WeightsFile readCsv(Lines &lines)
{
    WeightsFile file;
    QStringList fields;
    if (!lines.nextRecord(fields))
        lines.fail(QStringLiteral("there is no heading"));
    QStringList names;
    for (const QString &name : qAsConst(fields))
        names.append(name.trimmed().toLower());
    const int from = names.indexOf(QStringLiteral("from"));
    const int to = names.indexOf(QStringLiteral("to"));
    const int weight = names.indexOf(QStringLiteral("weight"));
    if (from < 0 || to < 0)
        lines.fail(QStringLiteral("the columns are from, to and weight"));
    Gatherer gatherer(file, lines);
    while (lines.nextRecord(fields)) {
        if (fields.size() != names.size())
            lines.fail(QStringLiteral("%1, the heading has %2")
                           .arg(counted(fields.size(), "field"))
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
    if (text.isEmpty())
        fail(QStringLiteral("an id is empty, which stands for no neighbour in this format"));
    const bool plain = std::none_of(text.begin(), text.end(),
                                    [](QChar c) {
                                        return c == QLatin1Char(',') || c == QLatin1Char('"')
                                               || c == QLatin1Char('\n') || c == QLatin1Char('\r');
                                    })
                       && !text.front().isSpace() && !text.back().isSpace();
    if (plain)
        return text;
    QString quoted = text;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

/// Checks an id for a format whose words are separated by blanks.
const QString &word(const QString &text)
{
    if (text.isEmpty()
        || std::any_of(text.begin(), text.end(), [](QChar c) { return c.isSpace(); }))
        fail(QStringLiteral("the id \"%1\" fits in a CSV file alone: the others part ids by blanks")
                 .arg(text));
    return text;
}

/// A name as one word of the heading. It has no effect on reading.
QString nameWord(const QString &text)
{
    QString name = text.simplified();
    name.replace(QLatin1Char(' '), QLatin1Char('_'));
    return name.isEmpty() ? QStringLiteral("unknown") : name;
}

/// Collects text and writes it in pieces.
class Output {
public:
    Output(QIODevice &device, const QString &target) : mDevice(device), mTarget(target) {}
    Output &operator<<(const QString &text)
    {
        mPending += text.toUtf8();
        if (mPending.size() >= kPieceBytes)
            flush();
        return *this;
    }
    void flush()
    {
        stopIfCancelled();
        writeWhole(mDevice, mPending, mTarget);
        mPending.resize(0);
    }

private:
    QIODevice &mDevice;
    QString mTarget;
    QByteArray mPending;
};

QString heading(const WeightsFile &weights)
{
    return QStringLiteral("0 %1 %2 %3\n")
        .arg(QString::number(weights.egos.size()), nameWord(weights.name), nameWord(weights.key));
}

void writeGal(Output &out, const WeightsFile &weights)
{
    out << heading(weights);
    for (const WeightsFile::Ego &ego : weights.egos) {
        out << word(ego.id) << QStringLiteral(" %1\n").arg(ego.links.size());
        for (int i = 0; i < ego.links.size(); ++i)
            out << QString(QLatin1String(i > 0 ? " " : "")) << word(ego.links[i].to);
        out << QStringLiteral("\n");
    }
}

void writeGwt(Output &out, const WeightsFile &weights)
{
    out << heading(weights);
    for (const WeightsFile::Ego &ego : weights.egos)
        for (const WeightsFile::Link &link : ego.links)
            out << word(ego.id) << QStringLiteral(" ") << word(link.to)
                << QStringLiteral(" %1\n").arg(exactNumber(link.weight));
}

void writeCsv(Output &out, const WeightsFile &weights)
{
    out << QStringLiteral("from,to,weight\n");
    for (const WeightsFile::Ego &ego : weights.egos) {
        for (const WeightsFile::Link &link : ego.links)
            out << csvField(ego.id) << QStringLiteral(",") << csvField(link.to)
                << QStringLiteral(",%1\n").arg(exactNumber(link.weight));
        if (ego.links.isEmpty())
            out << csvField(ego.id) << QStringLiteral(",,\n");
    }
}

} // namespace

WeightsFormat weightsFormatOf(const QString &path, const QString &format)
{
    const QString name = format.isEmpty() ? QFileInfo(path).suffix().toLower() : format;
    const QStringList names = weightsFormatNames();
    const int index = names.indexOf(name);
    if (index < 0 && format.isEmpty() && isStream(path))
        return WeightsFormat::Csv;
    if (index < 0)
        failUsage(QStringLiteral("%1: weights stand in files of the formats %2")
                      .arg(path, names.join(QStringLiteral(", "))),
                  "format");
    return static_cast<WeightsFormat>(index);
}

QStringList weightsFormatNames()
{
    return {QStringLiteral("gal"), QStringLiteral("gwt"), QStringLiteral("kwt"),
            QStringLiteral("csv")};
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

WeightsFile readWeights(const QString &path, const QString &format)
{
    const WeightsFormat known = weightsFormatOf(path, format);
    InputFile file(path);
    if (!file.openForReading())
        fail(QStringLiteral("%1: %2").arg(path, file.errorString()));
    WeightsFile read = readWeights(file, known, path);
    if (file.error() != QFile::NoError)
        fail(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return read;
}

void writeWeights(const QString &path, const WeightsFile &weights, const QString &format)
{
    const WeightsFormat known = weightsFormatOf(path, format);
    writeOutput(path, [&](QIODevice &device) {
        Output out(device, path);
        if (known == WeightsFormat::Gal)
            writeGal(out, weights);
        else if (known == WeightsFormat::Csv)
            writeCsv(out, weights);
        else
            writeGwt(out, weights);
        out.flush();
    });
}

} // namespace meridor
