// SPDX-License-Identifier: MIT
#include "core/formats/featureTable.h"

namespace meridor {
namespace {

void put(std::vector<char> &buffer, const void *bytes, size_t size)
{
    const auto *from = static_cast<const char *>(bytes);
    buffer.insert(buffer.end(), from, from + size);
}

} // namespace

void Shapes::append(const ShapeParts &parts)
{
    mBuffer.clear();
    if (!parts.isEmpty()) {
        const auto count = static_cast<quint32>(parts.size());
        put(mBuffer, &count, sizeof count);
    }
    for (const auto &part : parts) {
        const auto size = static_cast<quint32>(part.size());
        put(mBuffer, &size, sizeof size);
    }
    static_assert(sizeof(QPointF) == sizeof(double[2]));
    for (const auto &part : parts) {
        put(mBuffer, part.constData(), sizeof(QPointF) * static_cast<size_t>(part.size()));
        for (const QPointF &point : part) {
            const bool first = mVertices++ == 0;
            mLeft = first ? point.x() : qMin(mLeft, point.x());
            mRight = first ? point.x() : qMax(mRight, point.x());
            mLow = first ? point.y() : qMin(mLow, point.y());
            mHigh = first ? point.y() : qMax(mHigh, point.y());
        }
    }
    mCells.append({mBuffer.data(), mBuffer.size()});
}

ShapeParts Shapes::parts(int row) const
{
    const std::string_view shape = mCells.view(row);
    ShapeParts parts;
    if (shape.empty())
        return parts;
    quint32 count = 0;
    std::memcpy(&count, shape.data(), sizeof count);
    const char *vertices = shape.data() + sizeof count * (count + size_t(1));
    for (quint32 i = 0; i < count; ++i) {
        quint32 size = 0;
        std::memcpy(&size, shape.data() + sizeof size * (i + size_t(1)), sizeof size);
        QVector<QPointF> part(static_cast<int>(size));
        std::memcpy(part.data(), vertices, sizeof(QPointF) * size);
        vertices += sizeof(QPointF) * size;
        parts.append(part);
    }
    return parts;
}

QRectF Shapes::bounds() const
{
    return QRectF(mLeft, mLow, mRight - mLeft, mHigh - mLow);
}

} // namespace meridor
