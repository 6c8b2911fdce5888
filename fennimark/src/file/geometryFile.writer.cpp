// SPDX-License-Identifier: MIT
#include "file/geometryFile.h"
#include <QDataStream>
#include <QtEndian>
#include <algorithm>
#include <cstring>
#include "file/crc32c.h"

namespace fennimark {
namespace {

using namespace file;

/// Writes one section after the other, in chunks with their checksums.
class SectionWriter {
public:
    SectionWriter(QDataStream &out, ProgressCallback progress, quint64 total)
        : mOut(out), mProgress(progress), mTotal(std::max<quint64>(total, 1))
    {
        mChunk.reserve(kChunkSize + 4);
    }

    bool raw(const void *bytes, quint64 size)
    {
        mWritten += size;
        return mOut.writeRawData(static_cast<const char *>(bytes), int(size)) == int(size)
               && mOut.status() == QDataStream::Ok;
    }
    bool begin(quint32 sectionTag, quint32 elementSize, quint64 length)
    {
        uchar head[16];
        qToLittleEndian(sectionTag, head);
        qToLittleEndian(elementSize, head + 4);
        qToLittleEndian(length, head + 8);
        return raw(head, sizeof head);
    }
    bool bytes(const void *data, quint64 size)
    {
        const auto *from = static_cast<const uchar *>(data);
        while (size > 0) {
            const quint64 piece = std::min<quint64>(size, kChunkSize - mChunk.size());
            mChunk.insert(mChunk.end(), from, from + piece);
            from += piece;
            size -= piece;
            if (mChunk.size() == kChunkSize && !endChunk())
                return false;
        }
        return true;
    }
    template <class T> bool value(T number)
    {
        uchar raw[sizeof(T)];
        qToLittleEndian(number, raw);
        return bytes(raw, sizeof raw);
    }
    bool end() { return mChunk.empty() || endChunk(); }
    bool text(quint32 sectionTag, const QByteArray &utf8)
    {
        return quint64(utf8.size()) <= kMaxText && begin(sectionTag, 1, quint64(utf8.size()))
               && bytes(utf8.constData(), quint64(utf8.size())) && end();
    }

private:
    bool endChunk()
    {
        uchar crc[4];
        qToLittleEndian(crc32c(0, mChunk.data(), mChunk.size()), crc);
        mChunk.insert(mChunk.end(), crc, crc + 4);
        const bool done = raw(mChunk.data(), mChunk.size());
        mChunk.clear();
        return done
               && (!mProgress
                   || mProgress(int(std::min<quint64>(100, mWritten * 100 / mTotal)), nullptr));
    }

    QDataStream &mOut;
    ProgressCallback mProgress;
    quint64 mTotal, mWritten = 0;
    std::vector<uchar> mChunk;
};

/// On little-endian machines counts and vertices have the same bytes in memory and in the file.
bool writeGeometry(SectionWriter &section, const GeometryView &view, ObjectKind kind)
{
    if (kind == ObjectKind::Point)
        return section.value(view.bounds.xMin) && section.value(view.bounds.yMin);
    if constexpr (Q_BYTE_ORDER == Q_LITTLE_ENDIAN) {
        return section.value(view.partCount)
               && section.bytes(view.partSizes, 4 * quint64(view.partCount))
               && section.bytes(view.vertices, sizeof(QPointF) * quint64(view.vertexCount));
    }
    bool done = section.value(view.partCount);
    for (quint32 i = 0; i < view.partCount && done; ++i)
        done = section.value(view.partSizes[i]);
    for (quint32 i = 0; i < view.vertexCount && done; ++i)
        done = section.value(view.vertices[i].x()) && section.value(view.vertices[i].y());
    return done;
}

} // namespace

struct FileContent::Plan {
    FileHeader header;
    std::vector<timeRange> times; // ascending, distinct
    std::vector<quint32> idOf;    // the record id in the file, by the source's record

    quint32 timeIndex(const timeRange &range) const
    {
        return quint32(std::lower_bound(times.begin(), times.end(), range, startsBefore)
                       - times.begin());
    }
};

namespace {

/// Collects distinct ranges. Duplicates are removed whenever the number of ranges has doubled.
class DistinctRanges {
public:
    void add(const timeRange &range)
    {
        if (mRanges.size() == mLimit) {
            tidy();
            mLimit = std::max(mLimit, 2 * mRanges.size());
        }
        mRanges.push_back(range);
    }
    std::vector<timeRange> take()
    {
        tidy();
        return std::move(mRanges);
    }

private:
    void tidy()
    {
        std::sort(mRanges.begin(), mRanges.end(), startsBefore);
        mRanges.erase(std::unique(mRanges.begin(), mRanges.end(), sameRange), mRanges.end());
    }

    std::vector<timeRange> mRanges;
    std::size_t mLimit = 4096;
};

} // namespace

bool FileContent::plan(Plan &plan) const
{
    DistinctRanges ranges;
    ContentTotals sums = totals.value_or(ContentTotals());
    plan.idOf.resize(order.empty() ? 0 : *std::max_element(order.begin(), order.end()) + 1U);
    quint32 id = 0;
    for (const quint32 record : order) {
        ranges.add(rangeOf(record));
        plan.idOf[record] = ++id;
        GeometryView view;
        if (totals)
            continue;
        if (!geometryOf(record, view))
            return false;
        sums.add(view, kind);
    }
    plan.times = ranges.take();
    timeRange span = kNoTime;
    for (const timeRange &range : plan.times)
        widen(span, range);
    FileHeader &header = plan.header;
    header.parts = sums.parts;
    header.vertices = sums.vertices;
    header.kind = kind;
    header.tolerance = tolerance;
    header.chains = chains.size();
    header.records = order.size();
    header.times = plan.times.size();
    header.hull = RectInT{order.empty() ? Rect2D{} : sums.box, span};
    return header.records <= kMaxRecords && header.expectedPayload(header.payloadBytes);
}

bool FileContent::write(QDataStream &out, ProgressCallback progress) const
{
    Plan plan;
    if (!this->plan(plan))
        return false;
    const FileHeader &header = plan.header;
    SectionWriter section(out, progress,
                          header.payloadBytes + header.records * (kObservationSize + kRecordSize)
                              + header.chains * kChainSize + header.times * kTimeSize);
    bool done = section.raw(header.toBytes().constData(), kHeaderSize) && section.text(kName, name)
                && section.text(kProjection, projection)
                && section.begin(kTimes, kTimeSize, kTimeSize * header.times);
    for (auto time = plan.times.begin(); time != plan.times.end() && done; ++time)
        done = section.value(time->start) && section.value(time->end)
               && section.value(quint64(time->flags));
    done = done && section.end() && section.begin(kChains, kChainSize, kChainSize * header.chains);
    for (auto chain = chains.begin(); chain != chains.end() && done; ++chain)
        done = section.value(chain->id) && section.value(chain->count);
    done = done && section.end()
           && section.begin(kObservations, kObservationSize, kObservationSize * header.records);
    for (auto record = recordsByChain.begin(); record != recordsByChain.end() && done; ++record)
        done = section.value(plan.idOf[*record]);
    done =
        done && section.end() && section.begin(kRecords, kRecordSize, kRecordSize * header.records);
    for (auto record = order.begin(); record != order.end() && done; ++record)
        done = section.value(plan.timeIndex(rangeOf(*record))) && section.value(typeCode(kind));
    done = done && section.end() && section.begin(kGeometry, 1, header.payloadBytes);
    for (auto record = order.begin(); record != order.end() && done; ++record) {
        GeometryView view;
        done = geometryOf(*record, view) && writeGeometry(section, view, kind);
    }
    return done && section.end() && section.begin(kEnd, 0, 0);
}

} // namespace fennimark
