// SPDX-License-Identifier: MIT
/// What the index in space and time knows of a live object: its box, its distances, its stream
/// form.
#pragma once
#include "fennimark/export.h"
#include "fennimark/geometryTypes.h"

class QDataStream;

/// The base of all geometry.
class FENNIMARK_EXPORT TreeObject {
public:
    virtual ~TreeObject();

    /// Writes the vertices exactly as given. @return false when the stream refuses.
    virtual bool SaveToStream(QDataStream &out) = 0;
    /// Takes the vertices that SaveToStream wrote with the same form number; the object owns them
    /// from then on.
    /// @return false, with the object unchanged, for data cut short, counts that cannot be or an
    /// unknown `form`.
    virtual bool RestoreFromStream(QDataStream &in, int form) = 0;
    /// A copy that owns its vertices, whatever this object is a view of. The caller's.
    virtual TreeObject *Copy() const = 0;
    /// Squared distance between closed sets in squared map units; 0 when they have a common point,
    /// infinity when one of them is empty or null.
    virtual double SqrDistance(const Rect2D &rect) const = 0;
    virtual double SqrDistance(const TreeObject *object) const = 0;
    virtual double SqrDistance(double x, double y) const = 0;
    /// Closed sets: touching counts.
    virtual bool OverlapsRect(const Rect2D &rect) const = 0;
    /// Touching counts.
    virtual bool OverlapsCircle(double x, double y, double radius) const = 0;
    /// No point of the object is outside the closed disc.
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
