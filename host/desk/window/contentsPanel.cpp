// SPDX-License-Identifier: MIT
#include "desk/window/contentsPanel.h"
#include <QAction>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QSortFilterProxyModel>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MGeoData.h"
#include "desk/models/contentsModel.h"
#include "desk/project/workspace.h"

namespace meridor {

ContentsPanel::ContentsPanel(Workspace &workspace, QWidget *parent)
    : QWidget(parent),
      mWorkspace(workspace),
      mModel(new ContentsModel(workspace, this)),
      mFilter(new QSortFilterProxyModel(this)),
      mSearch(new QLineEdit),
      mTree(new QTreeView)
{
    mSearch->setObjectName(QStringLiteral("contentsSearch"));
    mSearch->setAccessibleName(tr("Part of a name to show"));
    mSearch->setPlaceholderText(tr("Part of a name"));
    mSearch->setClearButtonEnabled(true);
    mFilter->setSourceModel(mModel);
    mFilter->setRecursiveFilteringEnabled(true);
    mFilter->setFilterCaseSensitivity(Qt::CaseInsensitive);
    connect(mSearch, &QLineEdit::textChanged, mFilter,
            &QSortFilterProxyModel::setFilterFixedString);
    mTree->setObjectName(QStringLiteral("contentsTree"));
    mTree->setAccessibleName(tr("Contents of the project"));
    mTree->setModel(mFilter);
    mTree->setHeaderHidden(true);
    mTree->setDragEnabled(true);
    mTree->setDragDropMode(QAbstractItemView::DragOnly);
    mTree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mTree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    mTree->setContextMenuPolicy(Qt::CustomContextMenu);
    mTree->setExpandsOnDoubleClick(false);
    connect(mFilter, &QAbstractItemModel::rowsInserted, mTree,
            [this](const QModelIndex &above) { mTree->expand(above); });
    connect(mTree, &QTreeView::customContextMenuRequested, this, &ContentsPanel::showMenu);
    connect(mTree, &QTreeView::doubleClicked, this, &ContentsPanel::openUsual);
    connect(mTree->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        refreshActions();
        Q_EMIT selectionChanged();
    });
    connect(mTree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this] { refreshActions(); });
    auto *const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(mSearch);
    column->addWidget(mTree, 1);
    makeActions();
}

QAction *ContentsPanel::addAction(const char *name, const QString &text, const QKeySequence &keys,
                                  void (ContentsPanel::*act)())
{
    auto *const action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WidgetShortcut); // of the tree: names are edited in it
    connect(action, &QAction::triggered, this, act);
    mTree->addAction(action);
    mActions.append(action);
    return action;
}

void ContentsPanel::makeActions()
{
    const auto separate = [this] { mActions.append(nullptr); };
    addAction("openUsual", tr("&Open"), QKeySequence(Qt::Key_Return), &ContentsPanel::openUsual);
    addAction("openMap", tr("&Map"), QKeySequence(Qt::Key_M), &ContentsPanel::openMap);
    addAction("openTable", tr("&Table"), QKeySequence(Qt::Key_T), &ContentsPanel::openTable);
    addAction("openHistogram", tr("&Histogram"), QKeySequence(Qt::Key_H),
              &ContentsPanel::openHistogram);
    addAction("openBoxPlot", tr("&Box plot over time"), QKeySequence(Qt::Key_B),
              &ContentsPanel::openBoxPlot);
    addAction("openTimePlot", tr("T&ime plot"), QKeySequence(Qt::Key_I),
              &ContentsPanel::openTimePlot);
    addAction("openScatter", tr("&Scatter plot of two"), QKeySequence(Qt::Key_S),
              &ContentsPanel::openScatter);
    addAction("openMoran", tr("M&oran scatter plot"), QKeySequence(Qt::Key_O),
              &ContentsPanel::openMoran);
    separate();
    addAction("showNeighbors", tr("Show &neighbours of the hovered object"),
              QKeySequence(Qt::Key_N), &ContentsPanel::showNeighbors);
    separate();
    addAction("properties", tr("&Properties and history..."),
              QKeySequence(Qt::ALT + Qt::Key_Return), &ContentsPanel::openProperties);
    addAction("rename", tr("&Rename"), QKeySequence(Qt::Key_F2), &ContentsPanel::rename);
    addAction("duplicate", tr("&Duplicate"), QKeySequence(Qt::CTRL + Qt::Key_D),
              &ContentsPanel::duplicate);
    addAction("convert", tr("&Convert..."), QKeySequence(Qt::CTRL + Qt::Key_K),
              &ContentsPanel::convert);
    addAction("remove", tr("R&emove"), QKeySequence(Qt::Key_Delete), &ContentsPanel::remove);
    refreshActions();
}

QAction *ContentsPanel::action(const char *name) const
{
    for (QAction *const action : mActions)
        if (action && action->objectName() == QLatin1String(name))
            return action;
    return nullptr;
}

QVector<Thing> ContentsPanel::selected() const
{
    QVector<Thing> things;
    const QItemSelectionModel *const selection = mTree->selectionModel();
    QModelIndexList rows = selection->selectedIndexes();
    const QModelIndex current = selection->currentIndex();
    if (rows.removeOne(current))
        rows.prepend(current);
    for (const QModelIndex &row : std::as_const(rows))
        things.append(mModel->thingAt(mFilter->mapToSource(row)));
    return things;
}

void ContentsPanel::select(const Thing &thing)
{
    const QModelIndex index = mFilter->mapFromSource(mModel->indexOf(thing));
    // QTreeView::setCurrentIndex adds to the selection while the Ctrl key of a shortcut is held.
    mTree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect
                                                        | QItemSelectionModel::Rows);
    mTree->scrollTo(index);
}

void ContentsPanel::refreshActions()
{
    const QVector<Thing> things = selected();
    const Thing first = things.value(0);
    int datasets = 0;
    for (const Thing &thing : things)
        datasets += thing.kind == Thing::Dataset;
    const bool isVector =
        datasets > 0
        && geographyOf(geographyOfThing(first))->GetProperties().type != GeoProps::Raster;
    const auto enable = [this](const char *name, bool enabled) {
        action(name)->setEnabled(enabled);
    };
    for (const char *const name : {"openMap", "openHistogram", "openBoxPlot", "openTimePlot"})
        enable(name, datasets > 0);
    enable("openScatter", datasets > 1);
    enable("openMoran", isVector);
    enable("openTable", geographyOfThing(first) >= 0);
    enable("openUsual", first.kind != Thing::None);
    enable("showNeighbors", first.kind == Thing::WeightSet);
    for (const char *const name : {"properties", "rename", "remove"})
        enable(name, first.kind != Thing::None);
    enable("duplicate", first.kind != Thing::None);
    enable("convert", isVector && first.kind == Thing::Dataset);
}

void ContentsPanel::showMenu(const QPoint &place)
{
    QMenu menu;
    for (QAction *const action : std::as_const(mActions)) {
        if (!action)
            menu.addSeparator();
        else if (action->isEnabled())
            menu.addAction(action);
    }
    menu.exec(mTree->viewport()->mapToGlobal(place));
}

void ContentsPanel::openKind(ViewKind kind)
{
    ViewRequest request;
    request.kind = kind;
    const QVector<Thing> things = selected();
    for (const Thing &thing : things)
        if (thing.kind == Thing::Dataset)
            request.datasets.append(thing.id);
    request.geography = geographyOfThing(things.value(0));
    if (kind == ViewKind::Moran) {
        request.weights = mWorkspace.shownWeights(request.geography);
        if (request.weights < 0)
            request.weights = geographyOf(request.geography)->GetSpatialWeightsIds().value(0, -1);
    }
    Q_EMIT viewWanted(request);
}

void ContentsPanel::openUsual()
{
    const Thing thing = selected().value(0);
    if (thing.kind == Thing::Dataset)
        openMap();
    else if (thing.kind == Thing::Geography)
        openTable();
    else if (thing.kind == Thing::WeightSet)
        showNeighbors();
    else if (thing.kind == Thing::Model)
        Q_EMIT modelWanted(thing);
}

void ContentsPanel::openProperties()
{
    const Thing thing = selected().value(0);
    if (thing.kind != Thing::None)
        Q_EMIT propertiesWanted(thing);
}

void ContentsPanel::rename()
{
    mTree->edit(mTree->currentIndex());
}

void ContentsPanel::remove()
{
    removeThings(mWorkspace, selected());
}

void ContentsPanel::duplicate()
{
    const Thing copy = duplicateThing(mWorkspace, selected().value(0));
    if (copy.kind != Thing::None)
        select(copy);
}

void ContentsPanel::convert()
{
    Q_EMIT methodWanted(QStringLiteral("convert"), QStringLiteral("dataset"),
                        selected().value(0).id);
}

void ContentsPanel::showNeighbors()
{
    const Thing set = selected().value(0);
    mWorkspace.setShownWeights(geographyOfThing(set), set.id);
    mWorkspace.tell(tr("Neighbours by %1 are shown.").arg(nameOf(set)));
}

} // namespace meridor
