// SPDX-License-Identifier: MIT
/// The interface of a live object to the index in space and time: its box, its distances, its
/// stream form.
#pragma once
#include "fennimark/export.h"
#include "fennimark/geometryTypes.h"

class QDataStream;

/// The base of all geometry.
class FENNIMARK_EXPORT TreeObject {
public:
    virtual ~TreeObject();

    /// Writes the vertices exactly as given. @return false when the stream fails.
    virtual bool SaveToStream(QDataStream &out) = 0;
    /// Reads the vertices that SaveToStream wrote; the object owns them from then on.
    /// @param form  the number of the stream form; 1 is the only one.
    /// @return false, with the object unchanged, for data that are cut short, impossible counts and
    /// an unknown form.
    virtual bool RestoreFromStream(QDataStream &in, int form) = 0;
    /// A copy that owns its vertices, also when this object is a view. The caller owns the copy.
    virtual TreeObject *Copy() const = 0;
    /// The squared distance between closed sets, in squared map units: 0 when they have a common
    /// point, infinity when one of them is empty or null.
    virtual double SqrDistance(const Rect2D &rect) const = 0;
    virtual double SqrDistance(const TreeObject *object) const = 0;
    virtual double SqrDistance(double x, double y) const = 0;
    /// Whether the object and the closed rectangle have a common point; touching counts.
    virtual bool OverlapsRect(const Rect2D &rect) const = 0;
    /// Whether the object and the closed disc have a common point; touching counts.
    virtual bool OverlapsCircle(double x, double y, double radius) const = 0;
    /// Whether no point of the object is outside the closed disc.
    virtual bool ContainedByCircle(double x, double y, double radius) const = 0;
    /// The hull of the vertices; a zero rectangle for an object without any.
    virtual Rect2D GetObjectBounds() = 0;
    /// Whether the object has changed since it was made or SetDirty(false) was called.
    virtual bool IsDirty() const = 0;
    virtual void SetDirty(bool dirty) = 0;

protected:
    TreeObject() = default;
    TreeObject(const TreeObject &) = default;
    TreeObject &operator=(const TreeObject &) = default;
};
