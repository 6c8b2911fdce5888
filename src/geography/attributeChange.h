// SPDX-License-Identifier: MIT
/// One operation on the flags of an attribute.
#pragma once
#include <algorithm>
#include "datainterface/MAttributes.h"

/// Changes flags, and collects the ids of those that changed if a listener is connected.
class MAttributes::Change {
public:
    Change(MAttributes &attributes, int attribute)
        : mAttributes(attributes),
          mFlags(attributes.flagsOf(attribute)),
          mIsObserved(attributes.isObserved())
    {
        mChanged.attribute = attribute;
    }

    void set(unsigned int id, bool state)
    {
        if (mFlags && mAttributes.isObject(id) && mAttributes.readFlag(mFlags, id) != state) {
            mAttributes.writeFlag(mFlags, id, state);
            note(id);
        }
    }

    void toggle(unsigned int id)
    {
        if (mFlags && mAttributes.isObject(id)) {
            mAttributes.writeFlag(mFlags, id, !mAttributes.readFlag(mFlags, id));
            note(id);
        }
    }

    /// Must be the last call: a listener can change or delete the attributes.
    void announce()
    {
        if (mChanged.ids.isEmpty())
            return;
        mChanged.state =
            std::any_of(mChanged.ids.cbegin(), mChanged.ids.cend(),
                        [this](unsigned int id) { return mAttributes.readFlag(mFlags, id); });
        Q_EMIT mAttributes.AttributeChangedSignal(mChanged);
    }

private:
    // A flag that changes a second time has its first state again.
    void note(unsigned int id)
    {
        if (mIsObserved && !mChanged.ids.remove(id))
            mChanged.ids.insert(id);
    }

    MAttributes &mAttributes;
    unsigned char *mFlags;
    bool mIsObserved;
    changedAttributes mChanged;
};
