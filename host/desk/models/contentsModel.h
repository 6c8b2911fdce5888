// SPDX-License-Identifier: MIT
/// The geographies of a project with their datasets, weight sets and variogram models, as a tree.
#pragma once
#include <QAbstractItemModel>
#include <memory>
#include <vector>
#include "desk/project/things.h"

namespace meridor {

class Workspace;

/// Follows the project through the workspace. Datasets can be dragged; a new name is a change of the
/// project.
class ContentsModel : public QAbstractItemModel {
    Q_OBJECT
public:
    explicit ContentsModel(Workspace &workspace, QObject *parent = nullptr);
    ~ContentsModel() override;

    Thing thingAt(const QModelIndex &index) const;
    /// Invalid if it is not in the project.
    QModelIndex indexOf(const Thing &thing) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }

private:
    struct Node;
    struct Leaving; ///< what still exists but is about to be removed

    void refresh(const Leaving &leaving);
    void refreshAll();
    void sync(Node &node, const QVector<Thing> &wanted);
    QModelIndex indexOfNode(const Node &node) const;

    Workspace &mWorkspace;
    std::unique_ptr<Node> mRoot;
};

} // namespace meridor
