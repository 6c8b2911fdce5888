// SPDX-License-Identifier: MIT
/// The selected and the hovered objects of a geography. Both are flags in the attributes that the
/// geography owns, and are stored nowhere else.
#pragma once
#include <QHash>
#include <QObject>
#include <QVector>

class MAttributes;

namespace meridor {

/// The attributes of population 0.
namespace attribute {
constexpr int kShown = 0;
constexpr int kSelected = 1;
constexpr int kHovered = 2;
} // namespace attribute

enum class SelectionMode { Replace, Add, Toggle };

/// The selections of all geographies, with the steps back and forward. Kept by the Workspace.
class Selection : public QObject {
    Q_OBJECT
public:
    /// The attributes of a geography, which are made when they are first asked for: one flag for each
    /// object, or cell, of each attribute above. Null for an unknown geography.
    MAttributes *attributes(int geography);

    /// Objects out of range are ignored. Views are notified of what changed only.
    void select(int geography, const QVector<unsigned int> &objects,
                SelectionMode mode = SelectionMode::Replace);
    void clear(int geography);
    /// Ascending.
    QVector<unsigned int> selected(int geography);
    int count(int geography);
    bool isSelected(int geography, unsigned int object);
    /// @param object  -1: none.
    void hover(int geography, int object);
    /// -1 if there is none.
    int hovered(int geography) const;

    /// To the selection before the last change, and forward again. False if there is none.
    bool back(int geography);
    bool forward(int geography);
    bool canGoBack(int geography) const { return !mPast.value(geography).isEmpty(); }
    bool canGoForward(int geography) const { return !mFuture.value(geography).isEmpty(); }

    /// The geography is about to be removed, or its objects changed.
    void forget(int geography);

Q_SIGNALS:
    void changed(int geography);
    void hoverChanged(int geography, int object);

private:
    using Step = QVector<unsigned int>;

    void replace(int geography, const Step &objects);
    void remember(int geography);

    QHash<int, int> mHovered;
    QHash<int, QVector<Step>> mPast;
    QHash<int, QVector<Step>> mFuture;
};

} // namespace meridor
