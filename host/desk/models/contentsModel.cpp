// SPDX-License-Identifier: MIT
#include "desk/models/contentsModel.h"
#include <QGuiApplication>
#include <QIcon>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>
#include <algorithm>
#include "core/project/catalog.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/VariogramAPI.h"
#include "desk/models/datasetMime.h"
#include "desk/models/plainText.h"
#include "desk/project/workspace.h"

namespace meridor {

struct ContentsModel::Node {
    Thing thing;
    QString name; ///< as views know it
    Node *parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;

    int rowOf(const Node &child) const
    {
        const auto found = std::find_if(children.begin(), children.end(),
                                        [&](const auto &each) { return each.get() == &child; });
        return static_cast<int>(found - children.begin());
    }
};

struct ContentsModel::Leaving {
    int geography = -1;
    QVector<int> datasets = {};
};

namespace {

QPainterPath glyphOf(const Thing &thing)
{
    QPainterPath path; // in a square of 16
    if (thing.kind == Thing::WeightSet) {
        path.moveTo(4, 11);
        path.lineTo(12, 4);
        path.lineTo(12, 12);
        path.closeSubpath();
        for (const QPointF &place : {QPointF(4, 11), QPointF(12, 4), QPointF(12, 12)})
            path.addEllipse(place, 2, 2);
    } else if (thing.kind == Thing::Model) {
        path.moveTo(2, 14);
        path.cubicTo(5, 4, 8, 4, 14, 4);
    } else if (thing.kind == Thing::Dataset) {
        for (int bar = 0; bar < 3; ++bar)
            path.addRect(2.5 + 4 * bar, 10 - 3 * bar, 3, 4 + 3 * bar);
    } else {
        switch (VORN_GetGeographyProperties(thing.id).type) {
        case GeoProps::Points:
            for (const QPointF &place : {QPointF(4, 5), QPointF(11, 4), QPointF(8, 11)})
                path.addEllipse(place, 2, 2);
            break;
        case GeoProps::Lines:
            path.moveTo(2, 13);
            path.lineTo(6, 5);
            path.lineTo(10, 10);
            path.lineTo(14, 3);
            break;
        case GeoProps::Raster:
            for (int line = 0; line < 4; ++line) {
                path.moveTo(2.5, 2.5 + 3.5 * line);
                path.lineTo(13, 2.5 + 3.5 * line);
                path.moveTo(2.5 + 3.5 * line, 2.5);
                path.lineTo(2.5 + 3.5 * line, 13);
            }
            break;
        default:
            path.addPolygon(QPolygonF({{2, 6}, {9, 2}, {14, 7}, {11, 14}, {4, 13}, {2, 6}}));
        }
    }
    return path;
}

QIcon iconOf(const Thing &thing)
{
    QIcon icon;
    for (const int side : {16, 32, 48}) {
        QPixmap picture(side, side);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(side / 16.0, side / 16.0);
        painter.setPen(QPen(QGuiApplication::palette().color(QPalette::Text), 1.1));
        painter.drawPath(glyphOf(thing));
        icon.addPixmap(picture);
    }
    return icon;
}

QVector<Thing> modelsOf(int dataset)
{
    QVector<Thing> models;
    for (const int id : VORN_GetVariogramModelIds(dataset))
        models.append({Thing::Model, id, dataset});
    return models;
}

} // namespace

ContentsModel::ContentsModel(Workspace &workspace, QObject *parent)
    : QAbstractItemModel(parent), mWorkspace(workspace), mRoot(std::make_unique<Node>())
{
    const auto all = [this] { refreshAll(); };
    connect(&workspace, &Workspace::geographyAdded, this, all);
    connect(&workspace, &Workspace::geographyRenamed, this, all);
    connect(&workspace, &Workspace::datasetsAdded, this, all);
    connect(&workspace, &Workspace::datasetsChanged, this, all);
    connect(&workspace, &Workspace::datasetRenamed, this, all);
    connect(&workspace, &Workspace::weightSetsChanged, this, all);
    connect(&workspace, &Workspace::modelsChanged, this, all);
    connect(&workspace, &Workspace::closed, this, all);
    connect(&workspace, &Workspace::geographyDying, this,
            [this](int geography) { refresh({geography}); });
    connect(&workspace, &Workspace::datasetsDying, this, [this](const QVector<int> &datasets) {
        refresh({-1, datasets});
    });
    refreshAll();
}

ContentsModel::~ContentsModel() = default;

void ContentsModel::refreshAll()
{
    refresh({});
}

void ContentsModel::refresh(const Leaving &leaving)
{
    QVector<Thing> top;
    for (const int geography : geographyIds())
        if (geography != leaving.geography)
            top.append({Thing::Geography, geography, -1});
    for (const int model : controller().GetNonConVariogramModelIds())
        top.append({Thing::Model, model, -1});
    sync(*mRoot, top);
    for (const auto &node : mRoot->children) {
        if (node->thing.kind != Thing::Geography)
            continue;
        QVector<Thing> inside;
        for (const int dataset : datasetIds(node->thing.id))
            if (!leaving.datasets.contains(dataset))
                inside.append({Thing::Dataset, dataset, -1});
        for (const int set : geographyOf(node->thing.id)->GetSpatialWeightsIds())
            inside.append({Thing::WeightSet, set, -1});
        sync(*node, inside);
        for (const auto &child : node->children)
            if (child->thing.kind == Thing::Dataset)
                sync(*child, modelsOf(child->thing.id));
    }
}

void ContentsModel::sync(Node &node, const QVector<Thing> &wanted)
{
    const QModelIndex parent = indexOfNode(node);
    for (int row = static_cast<int>(node.children.size()) - 1; row >= 0; --row) {
        const auto child = node.children.begin() + row;
        if (wanted.contains((*child)->thing))
            continue;
        beginRemoveRows(parent, row, row);
        node.children.erase(child);
        endRemoveRows();
    }
    // The ids ascend on both sides, so what remains stands in the order that is wanted.
    for (int row = 0; row < wanted.size(); ++row) {
        const bool isNew = row >= static_cast<int>(node.children.size())
                           || !(node.children[static_cast<size_t>(row)]->thing == wanted[row]);
        if (isNew) {
            beginInsertRows(parent, row, row);
            auto made = std::make_unique<Node>();
            made->thing = wanted[row];
            made->name = nameOf(wanted[row]);
            made->parent = &node;
            node.children.insert(node.children.begin() + row, std::move(made));
            endInsertRows();
            continue;
        }
        Node &child = *node.children[static_cast<size_t>(row)];
        if (const QString name = nameOf(child.thing); name != child.name) {
            child.name = name;
            const QModelIndex changed = indexOfNode(child);
            Q_EMIT dataChanged(changed, changed);
        }
    }
}

QModelIndex ContentsModel::indexOfNode(const Node &node) const
{
    return node.parent ? createIndex(node.parent->rowOf(node), 0, const_cast<Node *>(&node))
                       : QModelIndex();
}

Thing ContentsModel::thingAt(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<const Node *>(index.internalPointer())->thing : Thing();
}

QModelIndex ContentsModel::indexOf(const Thing &thing) const
{
    QVector<const Node *> waiting{mRoot.get()};
    while (!waiting.isEmpty()) {
        const Node *const node = waiting.takeLast();
        if (node->parent && node->thing == thing)
            return indexOfNode(*node);
        for (const auto &child : node->children)
            waiting.append(child.get());
    }
    return {};
}

QModelIndex ContentsModel::index(int row, int column, const QModelIndex &parent) const
{
    const Node &node =
        parent.isValid() ? *static_cast<const Node *>(parent.internalPointer()) : *mRoot;
    if (column != 0 || row < 0 || row >= static_cast<int>(node.children.size()))
        return {};
    return createIndex(row, 0, node.children[static_cast<size_t>(row)].get());
}

QModelIndex ContentsModel::parent(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    return indexOfNode(*static_cast<const Node *>(index.internalPointer())->parent);
}

int ContentsModel::rowCount(const QModelIndex &parent) const
{
    const Node &node =
        parent.isValid() ? *static_cast<const Node *>(parent.internalPointer()) : *mRoot;
    return static_cast<int>(node.children.size());
}

int ContentsModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant ContentsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Node &node = *static_cast<const Node *>(index.internalPointer());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return node.name;
    case Qt::DecorationRole:
        return iconOf(node.thing);
    case Qt::ToolTipRole:
        return plainTip(
            QStringLiteral("%1: %2").arg(kindText(node.thing.kind), summaryOf(node.thing)));
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1 %2").arg(kindText(node.thing.kind), node.name);
    default:
        return {};
    }
}

bool ContentsModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    return index.isValid() && role == Qt::EditRole
           && renameThing(mWorkspace, thingAt(index), value.toString().trimmed());
}

Qt::ItemFlags ContentsModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
    if (thingAt(index).kind == Thing::Dataset)
        flags |= Qt::ItemIsDragEnabled;
    return flags;
}

QStringList ContentsModel::mimeTypes() const
{
    return {QLatin1String(kDatasetMime)};
}

QMimeData *ContentsModel::mimeData(const QModelIndexList &indexes) const
{
    for (const QModelIndex &index : indexes)
        if (const Thing thing = thingAt(index); thing.kind == Thing::Dataset)
            return mimeOf(thing.id);
    return nullptr;
}

} // namespace meridor
