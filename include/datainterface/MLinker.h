// SPDX-License-Identifier: MIT
/// A view's side of the shared attributes of a geography: hosts derive the controllers of maps,
/// tables and graphs from it.
#pragma once
#include <QObject>
#include <QSet>
#include "datainterface/MAttributes.h"
#include "datainterface/export.h"

/// A view changes a flag in the shared attributes, all linkers of these receive it in
/// AttributeChanged, and the views that are linked follow through UpdateLinkedViews. Views can die
/// in any order, also while a group is walked: a dead one stands in nobody's sets.
class DATAINTERFACE_EXPORT MLinker : public QObject {
    Q_OBJECT
public:
    MLinker();
    explicit MLinker(MAttributes *attributes);
    /// Leaves all views and the attributes, then emits ObjectManagerDying.
    ~MLinker() override;

    /// Brings the view up to date. @return the view's own answer, handed on by UpdateLinkedViews.
    virtual bool UpdateView() = 0;
    /// Clears what the view shows as selected.
    virtual void ClearSelection() = 0;

    /// Not owned. Null leaves the present ones; others than the present ones raise "Attributes
    /// already exist".
    void SetAttributes(MAttributes *attributes);
    /// Null before SetAttributes and when the attributes are gone.
    MAttributes *GetAttributes() const { return mAttributes; }

    /// Updates all views that this one drives, itself among them, in no set order. @return its own
    /// answer.
    bool UpdateLinkedViews();
    /// Clears the selection of all views that this one drives, itself among them.
    void ClearSelectionState();
    bool IsPrimarySelector() const { return mIsPrimarySelector; }
    /// This view leads the selection from now on, and the views that it drives no longer do.
    void MakePrimarySelector();

    /// This view drives `view`, not the other way round. Null is ignored, here and below.
    void Link(MLinker *view);
    /// The reverse of Link.
    void Unlink(MLinker *view);
    /// One side of a link alone: `view` is noted as one that drives this.
    void AddLinkingView(MLinker *view);
    /// `view` is no longer noted as one that drives this.
    void UnlinkSource(MLinker *view);
    /// This no longer drives `view`.
    void UnlinkDestination(MLinker *view);
    /// Makes one group of the views that `a` and `b` drive: each drives all.
    static void LinkViews(MLinker *a, MLinker *b);

Q_SIGNALS:
    /// Emitted as the last act: the view behind it is gone already.
    void ObjectManagerDying(MLinker *view);

public Q_SLOTS:
    /// The attributes go: this view has none from now on.
    void AttributesDying();

protected:
    /// This view leads the selection, or no longer does. Nothing happens here.
    virtual void PrimarySelectorStatusChanged(bool isPrimary);

public:
    /// What one operation on the shared attributes changed. Nothing happens here.
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
