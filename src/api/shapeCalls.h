// SPDX-License-Identifier: MIT
/// Access to the geometry of an object in memory, which the public functions find by geography id
/// and object index or by a handle.
#pragma once
#include "api/callFrame.h"
#include "datainterface/VORN_Object.h"
#include "fennimark/HeldObject.h"
#include "geography/shapeFrame.h"
#include "time/boxes.h"

namespace datainterface {

/// The geometry of a handle. The owner of the handle keeps the record checked out.
class HandleObject : public fennimark::LiveObject {
public:
    explicit HandleObject(const VORN_Object &handle) : LiveObject(handle.tree, handle.record) {}
};

/// Calls `call` with the geometry of an object at a time; false when there is none or it is of
/// another kind.
template <class Kind, class Call>
bool onShape(int geographyId, unsigned int object, qint64 time, Call call)
{
    return onGeography<MVectorData>(geographyId, false, [&](const MVectorData &geography) {
        const HeldObject held(*geography.GetFennims()->mTree, recordAt(geography, object, time));
        const Kind *shape = held.as<Kind>();
        return shape && call(*shape);
    });
}

} // namespace datainterface
