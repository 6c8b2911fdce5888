// SPDX-License-Identifier: MIT
#include "datainterface/MAttributes.h"
#include <QMetaMethod>
#include <algorithm>
#include "attributeChange.h"
#include "datainterface/MLinker.h"

MAttributes::MAttributes(int objectCount) : mByteCount(std::max(objectCount, 0))
{
}

MAttributes::~MAttributes()
{
    const QSet<MLinker *> owners = mOwners;
    for (MLinker *owner : owners)
        owner->AttributesDying();
}

void MAttributes::Resize(int objectCount)
{
    const int count = std::max(objectCount, 0);
    std::vector<std::unique_ptr<unsigned char[]>> resized;
    for (const auto &flags : mAttributeVectors) {
        resized.push_back(std::make_unique<unsigned char[]>(static_cast<std::size_t>(count)));
        std::copy_n(flags.get(), std::min(count, mByteCount), resized.back().get());
    }
    mAttributeVectors.swap(resized);
    mByteCount = count;
}

void MAttributes::RemoveObjects(const QSet<int> &objects)
{
    QVector<int> kept;
    for (int id = 0; id < mByteCount; ++id)
        if (!objects.contains(id))
            kept.append(id);
    for (auto &flags : mAttributeVectors) {
        auto compacted = std::make_unique<unsigned char[]>(static_cast<std::size_t>(kept.size()));
        std::transform(kept.cbegin(), kept.cend(), compacted.get(),
                       [&flags](int id) { return flags[id]; });
        flags = std::move(compacted);
    }
    mByteCount = kept.size();
}

int MAttributes::AddAttribute()
{
    try {
        mAttributeVectors.push_back(std::make_unique<unsigned char[]>(arrayBytes()));
    } catch (...) {
        return -1;
    }
    return static_cast<int>(mAttributeVectors.size()) - 1;
}

void MAttributes::DeleteAttribute(int attribute)
{
    if (flagsOf(attribute))
        mAttributeVectors.erase(mAttributeVectors.begin() + attribute);
}

unsigned char *MAttributes::GetAttributeVector(int attribute)
{
    return flagsOf(attribute);
}

QList<bool> MAttributes::GetObjectAttributes(unsigned int id)
{
    QList<bool> states;
    for (int attribute = 0; attribute < static_cast<int>(mAttributeVectors.size()); ++attribute)
        states.append(GetAttribute(attribute, id));
    return states;
}

bool MAttributes::GetAttribute(int attribute, unsigned int id) const
{
    const unsigned char *flags = flagsOf(attribute);
    return flags && isObject(id) && readFlag(flags, id);
}

bool MAttributes::SetAttribute(int attribute, unsigned int id, bool state)
{
    const bool old = GetAttribute(attribute, id);
    Change change(*this, attribute);
    change.set(id, state);
    change.announce();
    return old;
}

void MAttributes::SetAttributeIds(int attribute, const QVector<unsigned int> &ids, bool state)
{
    Change change(*this, attribute);
    for (unsigned int id : ids)
        change.set(id, state);
    change.announce();
}

void MAttributes::SetAttributeIds(int attribute, const QSet<unsigned int> &ids, bool state)
{
    Change change(*this, attribute);
    for (unsigned int id : ids)
        change.set(id, state);
    change.announce();
}

void MAttributes::SetAllAttribute(int attribute, bool state)
{
    Change change(*this, attribute);
    for (unsigned int id = 0; isObject(id); ++id)
        change.set(id, state);
    change.announce();
}

QVector<unsigned int> MAttributes::GetIdsByState(int attribute, bool state)
{
    QVector<unsigned int> ids;
    const unsigned char *flags = flagsOf(attribute);
    for (unsigned int id = 0; flags && isObject(id); ++id)
        if (readFlag(flags, id) == state)
            ids.append(id);
    return ids;
}

int MAttributes::GetStateCount(int attribute, bool state) const
{
    const unsigned char *flags = flagsOf(attribute);
    if (!flags)
        return 0;
    const auto clear = static_cast<int>(std::count(flags, flags + mByteCount, 0));
    return state ? mByteCount - clear : clear;
}

bool MAttributes::ToggleAttribute(int attribute, unsigned int id)
{
    const bool old = GetAttribute(attribute, id);
    SetAttribute(attribute, id, !old);
    return old;
}

void MAttributes::ToggleAttributeIds(int attribute, const QSet<unsigned int> &ids)
{
    Change change(*this, attribute);
    for (unsigned int id : ids)
        change.toggle(id);
    change.announce();
}

void MAttributes::ToggleAllAttributeIds(int attribute)
{
    Change change(*this, attribute);
    for (unsigned int id = 0; isObject(id); ++id)
        change.toggle(id);
    change.announce();
}

void MAttributes::OwnerDying(MLinker *owner)
{
    mOwners.remove(owner);
    disconnect(this, &MAttributes::AttributeChangedSignal, owner, &MLinker::AttributeChanged);
}

void MAttributes::AddOwner(MLinker *owner)
{
    mOwners.insert(owner);
    connect(this, &MAttributes::AttributeChangedSignal, owner, &MLinker::AttributeChanged,
            Qt::UniqueConnection);
}

std::size_t MAttributes::arrayBytes() const
{
    return static_cast<std::size_t>(mByteCount);
}

bool MAttributes::readFlag(const unsigned char *flags, unsigned int id) const
{
    return flags[id] != 0;
}

void MAttributes::writeFlag(unsigned char *flags, unsigned int id, bool state) const
{
    flags[id] = state ? 1 : 0;
}

bool MAttributes::isObserved() const
{
    return isSignalConnected(QMetaMethod::fromSignal(&MAttributes::AttributeChangedSignal));
}

const unsigned char *MAttributes::flagsOf(int attribute) const
{
    const bool isKnown = attribute >= 0 && attribute < static_cast<int>(mAttributeVectors.size());
    return isKnown ? mAttributeVectors[static_cast<std::size_t>(attribute)].get() : nullptr;
}

unsigned char *MAttributes::flagsOf(int attribute)
{
    return const_cast<unsigned char *>(std::as_const(*this).flagsOf(attribute));
}
