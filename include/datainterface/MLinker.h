// SPDX-License-Identifier: MIT
/// Connects a view to the shared attributes of a geography and to other views. Hosts derive the
/// controllers of maps, tables and graphs from it.
#pragma once
#include <QObject>
#include <QSet>
#include "datainterface/MAttributes.h"
#include "datainterface/export.h"

/// When a view changes a flag in the shared attributes, all their linkers receive it in
/// AttributeChanged, and linked views are updated through UpdateLinkedViews. Views can be destroyed
/// in any order, even while a group is being visited: a destroyed view is in no set of another
/// view.
class DATAINTERFACE_EXPORT MLinker : public QObject {
    Q_OBJECT
public:
    MLinker();
    explicit MLinker(MAttributes *attributes);
    /// Disconnects from all views and from the attributes, then emits ObjectManagerDying.
    ~MLinker() override;

    /// Updates the view.
    /// @return a result of the view's own, which UpdateLinkedViews returns.
    virtual bool UpdateView() = 0;
    /// Clears what the view shows as selected.
    virtual void ClearSelection() = 0;

    /// Sets the attributes, which are not owned. Null has no effect; replacing attributes by others
    /// raises "Attributes already exist".
    void SetAttributes(MAttributes *attributes);
    /// Null before SetAttributes and after the attributes have been destroyed.
    MAttributes *GetAttributes() const { return mAttributes; }

    /// Updates all views that this one drives, including itself, in no defined order.
    /// @return the result of UpdateView for this view.
    bool UpdateLinkedViews();
    /// Clears the selection of all views that this one drives, including itself.
    void ClearSelectionState();
    bool IsPrimarySelector() const { return mIsPrimarySelector; }
    /// Makes this view the primary selector; the views that it drives no longer are.
    void MakePrimarySelector();

    /// Lets this view drive `view`, in this direction only. Null is ignored, here and below.
    void Link(MLinker *view);
    /// Undoes Link.
    void Unlink(MLinker *view);
    /// Records only one side of a link: that `view` drives this view.
    void AddLinkingView(MLinker *view);
    /// Removes the record that `view` drives this view.
    void UnlinkSource(MLinker *view);
    /// Removes the record that this view drives `view`.
    void UnlinkDestination(MLinker *view);
    /// Joins the views that `a` and `b` drive into one group, in which each view drives all.
    static void LinkViews(MLinker *a, MLinker *b);

Q_SIGNALS:
    /// Emitted at the end of the destructor: the derived view no longer exists.
    void ObjectManagerDying(MLinker *view);

public Q_SLOTS:
    /// Called when the attributes are destroyed: this view has none from now on.
    void AttributesDying();

protected:
    /// Called when this view becomes the primary selector or ceases to be it. The base class does
    /// nothing.
    virtual void PrimarySelectorStatusChanged(bool isPrimary);

public:
    /// Called with what one operation on the shared attributes changed. The base class does
    /// nothing.
    virtual void AttributeChanged(const changedAttributes &change);

private:
    template <class Visit> void visitLinkedViews(Visit visit);
    void meet(MLinker *view);
    void part(MLinker *view);

    MAttributes *mAttributes = nullptr; ///< not owned
    bool mIsPrimarySelector = false;
    QSet<MLinker *> mLinkedViews;  ///< views that this one drives
    QSet<MLinker *> mLinkingViews; ///< views that drive this one
    QSet<MLinker *> mMetViews;     ///< views with a link to this one on either side
};
