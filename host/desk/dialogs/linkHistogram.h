// SPDX-License-Identifier: MIT
/// How many objects have how many neighbours in a weight set. A click on a bar selects its objects;
/// the bar of the hovered object is marked.
#pragma once
#include <QVector>
#include <QWidget>

class QComboBox;

namespace meridor {

class MethodForm;
class Workspace;

/// Chooses among the sets of the geography of a form, and makes the chosen one the set whose
/// neighbours maps show.
class LinkHistogram : public QWidget {
    Q_OBJECT
public:
    LinkHistogram(Workspace &workspace, MethodForm &form, QWidget *parent = nullptr);

    /// The numbers of objects with 0, 1, 2 and so on neighbours.
    QVector<int> counts() const;
    /// The bar of a number of neighbours, in pixels of the widget.
    QRect barOf(int neighbors) const;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void moveTo(int neighbors);
    void selectCurrent(Qt::KeyboardModifiers keys);
    void refill();
    void read();

    Workspace &mWorkspace;
    MethodForm &mForm;
    QComboBox *mSets;
    int mCurrent = 0; ///< the bar that keys act on
    QString mTrouble; ///< why nothing is shown
    int mGeography = -1;
    QVector<QVector<unsigned int>> mObjects; ///< by number of neighbours
};

} // namespace meridor
