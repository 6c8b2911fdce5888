// SPDX-License-Identifier: MIT
#include "support/oldValues.h"
#include <algorithm>

namespace oldProject {

namespace {

// A text as a standard string: length and bytes.
void inlineValue(QDataStream &out, Type type, int number)
{
    if (type == Integer)
        out << qint32(number);
    else if (type == Decimal)
        out << number / 100.0;
    else
        out << text(number).toUtf8();
}

void blockValue(QDataStream &out, Type type, int number)
{
    if (type == Text) {
        out << text(number);
        return;
    }
    const QByteArray bytes = type == Integer ? raw(qint32(number)) : raw(number / 100.0);
    out.writeRawData(bytes.constData(), bytes.size());
}

void blockEntry(QDataStream &out, const Span &span, Type type, int number)
{
    if (type == Text) {
        out << span << text(number);
        return;
    }
    const QByteArray head = raw(span.start) + raw(span.end) + raw(span.closedStart)
                            + raw(span.closedEnd) + QByteArray(6, '\0');
    out.writeRawData(head.constData(), head.size());
    blockValue(out, type, number);
    if (type == Integer)
        out << qint32(0);
}

void table(QDataStream &out, Type type, const QMap<int, int> &counts)
{
    QMap<double, int> decimals;
    QMap<QString, int> texts;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        decimals.insert(it.key() / 100.0, it.value());
        texts.insert(text(it.key()), it.value());
    }
    out << (type == Integer ? counts : QMap<int, int>())
        << (type == Decimal ? decimals : QMap<double, int>())
        << (type == Text ? texts : QMap<QString, int>());
}

} // namespace

void ValueWriter::frequencies(QDataStream &out, int number, const Dataset &dataset) const
{
    const int count = realizations(s.version);
    if (since(180083)) {
        QMap<int, int> all;
        for (int realization = 0; realization < count; ++realization) {
            const QMap<int, int> some = counts({number, realization, dataset.type});
            for (auto it = some.cbegin(); it != some.cend(); ++it)
                all[it.key()] += it.value();
        }
        out << array([&](QDataStream &nested) { table(nested, dataset.type, all); });
        return;
    }
    const int tables = has(Fault::FewerFrequencies) ? count - 1 : count;
    out << qint32(tables);
    for (int realization = 0; realization < tables; ++realization)
        table(out, dataset.type, counts({number, realization, dataset.type}));
}

QMap<int, int> ValueWriter::counts(const Place &place) const
{
    QMap<int, int> counts;
    for (int time = 0; time < s.times && counts.size() < 5000; ++time)
        for (int object = 0; object < s.objects; ++object)
            if (isPresent(place.realization, object, time))
                ++counts[place.valueAt(object, time)];
    return counts;
}

void ValueWriter::write(QDataStream &out, int number, const Dataset &dataset)
{
    if (!since(130000)) {
        parts(out, {number, 0, dataset.type}, dataset.isSliced, {dataset.type},
              &ValueWriter::inlineSlices, &ValueWriter::inlineHistories);
        return;
    }
    const int count = has(Fault::FewerRealizations) ? 1 : realizations(s.version);
    if (since(180004))
        out << qint32(count);
    for (int i = 0; i < count; ++i) {
        if (since(180004)) {
            const int realization = count - 1 - i;
            out << qint32(realization) << array([&](QDataStream &nested) {
                parts(nested, {number, realization, dataset.type}, dataset.isSliced,
                      {Integer, Decimal, Text}, &ValueWriter::sliceBlocks,
                      &ValueWriter::historyBlocks);
            });
            continue;
        }
        QByteArray bytes = array([&](QDataStream &nested) {
            parts(nested, {number, i, dataset.type}, dataset.isSliced, {Decimal, Integer, Text},
                  &ValueWriter::inlineSlices, &ValueWriter::inlineHistories);
        });
        if (since(170001))
            bytes = array([&](QDataStream &nested) { nested << bytes; });
        out << (has(Fault::LongRealization)    ? 1LL << 40
                : has(Fault::ShortRealization) ? bytes.size() - 9LL
                                               : qint64(bytes.size()));
        out.writeRawData(bytes.constData(), bytes.size());
    }
}

// Slices, then histories, of each type: empty unless they are those of the dataset.
void ValueWriter::parts(QDataStream &out, const Place &place, bool isSliced,
                        const QVector<Type> &types, Part slices, Part histories)
{
    for (const bool areSlices : {true, false})
        for (const Type type : types)
            if (type == place.type && (areSlices == isSliced || has(Fault::BothStorages)))
                (this->*(areSlices ? slices : histories))(out, place);
            else
                out << qint32(0);
}

void ValueWriter::inlineSlices(QDataStream &out, const Place &place)
{
    out << qint32(s.times + has(Fault::RepeatedSlice));
    if (has(Fault::RepeatedSlice))
        inlineSlice(out, place, 0);
    for (int time = s.times; time-- > 0;)
        inlineSlice(out, place, time);
}

void ValueWriter::inlineSlice(QDataStream &out, const Place &place, int time)
{
    QVector<qint32> ids;
    for (int object = s.objects; object-- > 0;)
        if (isPresent(place.realization, object, time))
            ids.append(object);
    out << (has(Fault::CrossedSlice) ? Span{5, 3, true, true} : span(time)) << qint32(ids.size());
    for (const int object : qAsConst(ids))
        inlineValue(out, place.type, place.valueAt(object, time));
    if (has(Fault::SliceIdMissing))
        ids.removeLast();
    if (has(Fault::SliceIdTooLarge))
        ids.last() = s.objects;
    out << ids;
}

// One object more than there are: shrinking left such histories behind.
void ValueWriter::inlineHistories(QDataStream &out, const Place &place)
{
    out << qint32(s.objects + 1);
    for (int object = s.objects; object >= 0; --object) {
        QVector<int> when = times(place, object);
        if (has(Fault::RepeatedHistory))
            when.append(when.last());
        out << qint32(object) << qint32(when.size());
        for (const int time : qAsConst(when)) {
            out << (has(Fault::CrossedHistory) ? Span{5, 3, true, true} : span(time));
            inlineValue(out, place.type, place.valueAt(object, time));
        }
    }
}

// The last one first.
QVector<int> ValueWriter::times(const Place &place, int object) const
{
    QVector<int> result;
    for (int time = s.times; time-- > 0;)
        if (isPresent(place.realization, object, time))
            result.append(time);
    return result;
}

qint32 ValueWriter::store(const QByteArray &image)
{
    mBlocks.append(image);
    return mBlocks.size() - 1;
}

void ValueWriter::sliceBlocks(QDataStream &out, const Place &place)
{
    out << qint32(s.times);
    for (int time = s.times; time-- > 0;) {
        const QByteArray image = array([&](QDataStream &block) {
            QSet<int> missing;
            block << qint32(s.objects);
            for (int object = 0; object < s.objects; ++object) {
                blockValue(block, place.type, place.valueAt(object, time));
                if (!isPresent(place.realization, object, time))
                    missing.insert(object);
            }
            block << missing;
        });
        out << span(time) << store(image);
    }
}

void ValueWriter::historyBlocks(QDataStream &out, const Place &place)
{
    out << qint32(s.objects + 1);
    for (int object = s.objects; object >= 0; --object) {
        QVector<int> ascending = times(place, object);
        std::reverse(ascending.begin(), ascending.end());
        const QByteArray image = array([&](QDataStream &block) {
            block << qint32(ascending.size());
            for (const int time : qAsConst(ascending))
                blockEntry(block, span(time), place.type, place.valueAt(object, time));
        });
        out << qint32(object) << store(image);
    }
}

} // namespace oldProject
