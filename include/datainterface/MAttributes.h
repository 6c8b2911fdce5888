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

/// What one operation changed: views redraw once for it.
struct changedAttributes {
    int attribute = -1;
    /// What the objects have now. Of a toggle that went both ways it is true: read each object's
    /// flag.
    bool state = false;
    QSet<unsigned int> ids;
};
Q_DECLARE_METATYPE(changedAttributes)

/// A row of attributes, each one flag an object. Attribute ids are positions in the row. Attribute
/// 0 is set when idle and attributes 1 and 2 are clear; what they mean is the application's, which
/// makes the object and hands it to MGeoData::AddAttributes. Every operation that changes flags
/// emits AttributeChangedSignal once, after all of them, and only when at least one really changed.
/// An unknown attribute or object has the state false and cannot be changed.
class DATAINTERFACE_EXPORT MAttributes : public QObject {
    Q_OBJECT
public:
    /// @param objectCount  a negative one is 0.
    explicit MAttributes(int objectCount);
    /// Tells the owners with MLinker::AttributesDying.
    ~MAttributes() override;

    /// The flags of the first objects stay, new objects' are clear. Emits nothing.
    virtual void Resize(int objectCount);
    /// Later objects move down. Emits nothing.
    virtual void RemoveObjects(const QSet<int> &objects);
    /// All clear. @return the new attribute's id; -1 when memory is short.
    virtual int AddAttribute();
    /// The ids behind it move down.
    virtual void DeleteAttribute(int attribute);
    /// The flags themselves, a byte an object, not 0 when set; null for an unknown attribute. Valid
    /// until the next change of the object count or of the row. Writing there tells nobody.
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
    /// Turns each object's flag.
    virtual void ToggleAttributeIds(int attribute, const QSet<unsigned int> &ids);
    /// Turns the flags of all objects.
    virtual void ToggleAllAttributeIds(int attribute);

Q_SIGNALS:
    void AttributeChangedSignal(const changedAttributes &change);

protected:
    friend class MLinker;
    /// No longer receives changes. A linker says so itself when it dies.
    virtual void OwnerDying(MLinker *owner);

public:
    /// `owner` receives changes from now on, each once however often it is added. Not owned.
    virtual void AddOwner(MLinker *owner);

protected:
    class Change;

    // How the flags of one array are laid out: the ids are below mByteCount.
    /// Bytes of one array.
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
    int mByteCount; ///< the number of objects
};
