// SPDX-License-Identifier: MIT
#include "core/formats/wellKnownBinary.h"
#include <memory>
#include "core/formats/ogrShapes.h"
#include "core/project/failure.h"

namespace meridor {

QByteArray wellKnownBinary(const ShapeParts &parts, ShapeKind kind)
{
    const std::unique_ptr<OGRGeometry> geometry = geometryOf(parts, kind, wkbUnknown);
    if (!geometry)
        return QByteArray();
    QByteArray bytes(static_cast<int>(geometry->WkbSize()), Qt::Uninitialized);
    geometry->exportToWkb(wkbNDR, reinterpret_cast<unsigned char *>(bytes.data()), wkbVariantIso);
    return bytes;
}

void takeWellKnownBinary(FeatureTable &table, const QByteArray &bytes)
{
    if (bytes.isEmpty()) {
        takeShape(table, nullptr);
        return;
    }
    OGRGeometry *read = nullptr;
    const OGRErr result = OGRGeometryFactory::createFromWkb(bytes.constData(), nullptr, &read,
                                                            static_cast<size_t>(bytes.size()));
    const std::unique_ptr<OGRGeometry> geometry(read);
    if (result != OGRERR_NONE || !geometry)
        fail(QStringLiteral("%1: the shape is no well-known binary").arg(place(table, table.rows)));
    takeShape(table, OGRGeometry::ToHandle(geometry.get()));
}

} // namespace meridor
