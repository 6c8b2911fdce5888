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

/// One section after the other, cut into chunks with their checksums.
class SectionWriter {
public:
    SectionWriter(QDataStream &out, Progress progress, quint64 total)
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
    Progress mProgress;
    quint64 mTotal, mWritten = 0;
    std::vector<uchar> mChunk;
};

/// The bytes of vertices and counts stand in memory as in the file.
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
    std::vector<timeRange> times;
    std::vector<quint32> timeOf;       // by place in the file
    std::vector<quint32> observations; // record ids of the file, by chain and time
};

bool FileContent::plan(Plan &plan) const
{
    for (const quint32 record : order)
        plan.times.push_back(rangeOf(record));
    std::sort(plan.times.begin(), plan.times.end(), startsBefore);
    plan.times.erase(std::unique(plan.times.begin(), plan.times.end(), sameRange),
                     plan.times.end());

    std::vector<quint32> place(
        order.empty() ? 0 : std::size_t(*std::max_element(order.begin(), order.end())) + 1);
    FileHeader &header = plan.header;
    Rect2D box = kNoBox;
    timeRange span = kNoTime;
    for (const quint32 record : order) {
        GeometryView view;
        if (!geometryOf(record, view))
            return false;
        header.parts += view.partCount;
        header.vertices += kind == ObjectKind::Point ? 1 : view.vertexCount;
        widen(box, view.bounds);
        const auto time =
            std::lower_bound(plan.times.begin(), plan.times.end(), rangeOf(record), startsBefore);
        plan.timeOf.push_back(quint32(time - plan.times.begin()));
        place[record] = quint32(plan.timeOf.size()); // ids count from 1
    }
    for (const timeRange &range : plan.times)
        widen(span, range);
    for (const quint32 record : recordsByChain)
        plan.observations.push_back(place[record]);
    header.kind = kind;
    header.tolerance = tolerance;
    header.chains = chains.size();
    header.records = order.size();
    header.times = plan.times.size();
    header.hull = RectInT{order.empty() ? Rect2D{} : box, span};
    return header.records <= kMaxRecords && header.expectedPayload(header.payloadBytes);
}

bool FileContent::write(QDataStream &out, Progress progress) const
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
    for (auto id = plan.observations.begin(); id != plan.observations.end() && done; ++id)
        done = section.value(*id);
    done =
        done && section.end() && section.begin(kRecords, kRecordSize, kRecordSize * header.records);
    for (auto time = plan.timeOf.begin(); time != plan.timeOf.end() && done; ++time)
        done = section.value(*time) && section.value(typeCode(kind));
    done = done && section.end() && section.begin(kGeometry, 1, header.payloadBytes);
    for (auto record = order.begin(); record != order.end() && done; ++record) {
        GeometryView view;
        done = geometryOf(*record, view) && writeGeometry(section, view, kind);
    }
    return done && section.end() && section.begin(kEnd, 0, 0);
}

} // namespace fennimark
