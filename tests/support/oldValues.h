// SPDX-License-Identifier: MIT
/// The values of a sample's datasets in the forms of each age: inline before 180004, from then on
/// as block ids, with the blocks kept aside.
#pragma once
#include <QDataStream>
#include <QMap>
#include <QSet>
#include "support/oldProject.h"

namespace oldProject {

constexpr int kNestedStream = 16;

struct Span {
    qint64 start;
    qint64 end;
    bool closedStart;
    bool closedEnd;
};
inline QDataStream &operator<<(QDataStream &out, const Span &span)
{
    return out << span.start << span.end << qint32(span.closedStart) << qint32(span.closedEnd);
}

/// At the version of nested arrays and blocks.
template <class Write> QByteArray array(Write write)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(kNestedStream);
    write(out);
    return bytes;
}

template <class T> QByteArray raw(const T &value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

class ValueWriter {
public:
    explicit ValueWriter(const Sample &sample) : s(sample) {}

    /// All datasets have their intervals in common.
    Span span(int time) const { return {start(time), start(time + 1), true, time + 1 == s.times}; }

    void frequencies(QDataStream &out, int number, const Dataset &dataset) const;
    void write(QDataStream &out, int number, const Dataset &dataset);
    /// @return the id of a new block
    qint32 store(const QByteArray &image);
    const QVector<QByteArray> &blocks() const { return mBlocks; }

private:
    struct Place {
        int number;
        int realization;
        Type type;
        int valueAt(int object, int time) const
        {
            return oldProject::number(number, realization, object, time);
        }
    };
    using Part = void (ValueWriter::*)(QDataStream &, const Place &);

    bool since(int version) const { return s.version >= version; }
    bool has(Fault fault) const { return s.fault == fault; }
    void parts(QDataStream &out, const Place &place, bool isSliced, const QVector<Type> &types,
               Part slices, Part histories);
    void inlineSlices(QDataStream &out, const Place &place);
    void inlineSlice(QDataStream &out, const Place &place, int time);
    void inlineHistories(QDataStream &out, const Place &place);
    void sliceBlocks(QDataStream &out, const Place &place);
    void historyBlocks(QDataStream &out, const Place &place);
    QVector<int> times(const Place &place, int object) const;
    QMap<int, int> counts(const Place &place) const;

    const Sample &s;
    QVector<QByteArray> mBlocks;
};

} // namespace oldProject
