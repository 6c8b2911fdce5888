// SPDX-License-Identifier: MIT
/// Conversions between lists of parts, which the public interface uses, and the arrays in which
/// objects store all parts one after the other.
#pragma once
#include <QList>
#include "shape/shape.h"

namespace fennimark {

/// A backing with the vertices of all parts.
template <class Part> std::unique_ptr<ObjectBacking> joined(const QList<Part> &parts)
{
    auto backing = std::make_unique<ObjectBacking>();
    for (const Part &part : parts) {
        backing->vertices.insert(backing->vertices.end(), part.cbegin(), part.cend());
        backing->partSizes.push_back(static_cast<quint32>(part.size()));
    }
    return backing;
}

/// The parts of an object, exactly as given.
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
