// SPDX-License-Identifier: MIT
/// Between lists of parts, as callers give and take them, and the parts behind one another that
/// objects keep.
#pragma once
#include <QList>
#include "shape/shape.h"

namespace fennimark {

template <class Part> std::unique_ptr<ObjectBacking> joined(const QList<Part> &parts)
{
    auto backing = std::make_unique<ObjectBacking>();
    for (const Part &part : parts) {
        backing->vertices.insert(backing->vertices.end(), part.cbegin(), part.cend());
        backing->partSizes.push_back(static_cast<quint32>(part.size()));
    }
    return backing;
}

template <class Part> QList<Part> parted(const FMObject &object)
{
    const GeometryView given = givenVertices(object);
    QList<Part> parts;
    const QPointF *next = given.vertices;
    for (quint32 i = 0; i < given.partCount; ++i) {
        Part part;
        part.reserve(static_cast<int>(given.partSizes[i]));
        for (const QPointF *end = next + given.partSizes[i]; next != end; ++next)
            part.append(*next);
        parts.append(part);
    }
    return parts;
}

} // namespace fennimark
