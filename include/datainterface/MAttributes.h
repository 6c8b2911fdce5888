// SPDX-License-Identifier: MIT
/// Flags of the objects of a geography that its views share, such as which objects are selected.
#pragma once
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QSet>
#include <QVector>
#include <memory>
#include <vector>
#include "datainterface/export.h"

class MLinker;

/// What one operation changed. Views redraw once for each operation.
struct changedAttributes {
    int attribute = -1;
    /// The state of the objects now. For a toggle that set some flags and cleared others it is
    /// true, and the flag of each object must be read.
    bool state = false;
    QSet<unsigned int> ids;
};
Q_DECLARE_METATYPE(changedAttributes)

/// A list of attributes, each of which has one flag for each object. An attribute id is a position
/// in the list. The application creates the object, passes it to MGeoData::AddAttributes and gives
/// the attributes their meaning; in the idle state attribute 0 is set for all objects and
/// attributes 1 and 2 are clear.
///
/// An operation that changes flags emits AttributeChangedSignal once, after all changes, and only
/// when at least one flag has changed. An unknown attribute or object has the state false and
/// cannot be changed.
class DATAINTERFACE_EXPORT MAttributes : public QObject {
    Q_OBJECT
public:
    /// @param objectCount  a negative count is taken as 0.
    explicit MAttributes(int objectCount);
    /// Calls MLinker::AttributesDying of the owners.
    ~MAttributes() override;

    /// Keeps the flags of the first objects; the flags of new objects are clear. Emits nothing.
    virtual void Resize(int objectCount);
    /// Removes objects; the indices of later objects decrease. Emits nothing.
    virtual void RemoveObjects(const QSet<int> &objects);
    /// Adds an attribute with all flags clear.
    /// @return the id of the attribute; -1 when memory is short.
    virtual int AddAttribute();
    /// Deletes an attribute; the ids of later attributes decrease by one.
    virtual void DeleteAttribute(int attribute);
    /// The flags themselves, one byte for each object, which is not 0 when the flag is set; null
    /// for an unknown attribute. The pointer is valid until the number of objects or attributes
    /// changes. Writing through it emits no signal.
    virtual unsigned char *GetAttributeVector(int attribute);
    /// In the order of attribute ids.
    virtual QList<bool> GetObjectAttributes(unsigned int id);
    virtual bool GetAttribute(int attribute, unsigned int id) const;
    /// @return the old state.
    virtual bool SetAttribute(int attribute, unsigned int id, bool state);
    virtual void SetAttributeIds(int attribute, const QVector<unsigned int> &ids, bool state);
    virtual void SetAttributeIds(int attribute, const QSet<unsigned int> &ids, bool state);
    virtual void SetAllAttribute(int attribute, bool state);
    /// Ascending.
    virtual QVector<unsigned int> GetIdsByState(int attribute, bool state);
    virtual int GetStateCount(int attribute, bool state) const;
    /// @return the old state.
    virtual bool ToggleAttribute(int attribute, unsigned int id);
    /// Inverts the flag of each listed object.
    virtual void ToggleAttributeIds(int attribute, const QSet<unsigned int> &ids);
    /// Inverts the flags of all objects.
    virtual void ToggleAllAttributeIds(int attribute);

Q_SIGNALS:
    void AttributeChangedSignal(const changedAttributes &change);

protected:
    friend class MLinker;
    /// Stops sending changes to `owner`. A linker calls this when it is destroyed.
    virtual void OwnerDying(MLinker *owner);

public:
    /// Sends changes to `owner` from now on, each once even if it is added several times. The
    /// linker is not owned.
    virtual void AddOwner(MLinker *owner);

protected:
    class Change;

    // The layout of the flags in one array. The ids are 0 to mByteCount - 1.
    /// The size of one array in bytes.
    virtual std::size_t arrayBytes() const;
    /// The flag of an object in an array.
    virtual bool readFlag(const unsigned char *flags, unsigned int id) const;
    /// Sets the flag of an object in an array.
    virtual void writeFlag(unsigned char *flags, unsigned int id, bool state) const;

    bool isObserved() const;
    bool isObject(unsigned int id) const { return id < static_cast<unsigned int>(mByteCount); }
    /// The array of an attribute; null for an unknown one.
    const unsigned char *flagsOf(int attribute) const;
    unsigned char *flagsOf(int attribute);

    QSet<MLinker *> mOwners; ///< not owned
    std::vector<std::unique_ptr<unsigned char[]>> mAttributeVectors;
    /// The number of objects. Only in this class is it also the length of an array: see
    /// arrayBytes().
    int mByteCount;
};
