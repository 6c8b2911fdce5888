// SPDX-License-Identifier: MIT
/// What the public functions of objects share beyond the call frame: a call on the live geometry of
/// an object, found by geography id and object index, or of a handle.
#pragma once
#include "api/callFrame.h"
#include "datainterface/VORN_Object.h"
#include "fennimark/HeldObject.h"
#include "geography/shapeFrame.h"
#include "time/boxes.h"

namespace datainterface {

/// The live geometry of a handle, whose record its holder has checked out.
class HandleObject : public fennimark::LiveObject {
public:
    explicit HandleObject(const VORN_Object &handle) : LiveObject(handle.tree, handle.record) {}
};

/// `call` on the geometry of an object at a time; false when there is none, or none of that kind.
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
