// SPDX-License-Identifier: MIT
/// The contents of the project with what can be done to them.
#pragma once
#include <QHash>
#include <QWidget>
#include "desk/project/things.h"
#include "desk/window/viewRequest.h"

class QAction;
class QLineEdit;
class QSortFilterProxyModel;
class QTreeView;

namespace meridor {

class ContentsModel;
class Workspace;

class ContentsPanel : public QWidget {
    Q_OBJECT
public:
    explicit ContentsPanel(Workspace &workspace, QWidget *parent = nullptr);

    /// Of the tree, the current one first.
    QVector<Thing> selected() const;
    void select(const Thing &thing);
    /// The action with that object name.
    QAction *action(const char *name) const;
    QTreeView &tree() { return *mTree; }

Q_SIGNALS:
    void viewWanted(const ViewRequest &request);
    void propertiesWanted(const Thing &thing);
    void modelWanted(const Thing &model);
    /// The dialog of a method, with the thing as its parameter `parameter`.
    void methodWanted(const QString &method, const QString &parameter, int id);
    void selectionChanged();

private:
    QAction *addAction(const char *name, const QString &text, const QKeySequence &keys,
                       void (ContentsPanel::*act)());
    void makeActions();
    void refreshActions();
    void showMenu(const QPoint &place);
    void openKind(ViewKind kind);
    void openUsual();
    void openMap() { openKind(ViewKind::Map); }
    void openTable() { openKind(ViewKind::Table); }
    void openHistogram() { openKind(ViewKind::Histogram); }
    void openBoxPlot() { openKind(ViewKind::BoxPlot); }
    void openScatter() { openKind(ViewKind::Scatter); }
    void openTimePlot() { openKind(ViewKind::TimePlot); }
    void openMoran() { openKind(ViewKind::Moran); }
    void openProperties();
    void rename();
    void remove();
    void duplicate();
    void convert();
    void showNeighbors();

    Workspace &mWorkspace;
    ContentsModel *mModel;
    QSortFilterProxyModel *mFilter;
    QLineEdit *mSearch;
    QTreeView *mTree;
    QVector<QAction *> mActions;
};

} // namespace meridor
