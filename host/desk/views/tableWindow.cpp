// SPDX-License-Identifier: MIT
#include "desk/views/tableWindow.h"
#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QToolBar>
#include "core/analysis/tables.h"
#include "core/project/catalog.h"
#include "core/project/text.h"
#include "datainterface/MGeoData.h"
#include "desk/models/valueTable.h"
#include "desk/views/saveName.h"
#include "desk/views/tableView.h"

namespace meridor {
namespace {

constexpr int kMostCopied = 200'000; ///< rows; texts of more fill the memory of other programs

} // namespace

TableWindow::TableWindow(Workspace &workspace, int geography, QWidget *parent)
    : ViewWindow(workspace, {}, parent), mSelectedFirst(new QAction(tr("Selected on top"), this))
{
    setObjectName(QStringLiteral("tableWindow"));
    resize(fontMetrics().height() * 36, fontMetrics().height() * 26);
    const auto add = [this](QAction *action, const char *name, const QKeySequence &keys) {
        action->setObjectName(QLatin1String(name));
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        action->setToolTip(
            QStringLiteral("%1 (%2)").arg(action->text(), keys.toString(QKeySequence::NativeText)));
        QWidget::addAction(action);
        toolBar().addAction(action);
        if (QWidget *const button = toolBar().widgetForAction(action))
            button->setAccessibleName(action->text());
    };
    toolBar().addSeparator();
    mSelectedFirst->setCheckable(true);
    add(mSelectedFirst, "selectedFirst", QKeySequence(Qt::CTRL + Qt::Key_T));
    auto *const sort = new QAction(tr("Sort"), this);
    sort->setStatusTip(tr("Sorts the rows by the column of the current cell"));
    add(sort, "sortColumn", QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_O));
    auto *const save = new QAction(tr("Export the table"), this);
    add(save, "exportTable", QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_X));
    auto *const view = new TableView(workspace, geography);
    setContent(view->table());
    connect(mSelectedFirst, &QAction::toggled, this, [this](bool first) {
        if (table())
            table()->setSelectedFirst(first);
    });
    connect(sort, &QAction::triggered, this, [this] {
        if (table())
            table()->sortBy(table()->table()->currentIndex().column());
    });
    connect(save, &QAction::triggered, this, [this] { askExportTable(); });
    connect(view, &TableView::pointedAt, this, [this](const QString &text) { setReadout(text); });
    connect(&workspace, &Workspace::geographyRenamed, this, [this, geography](int renamed) {
        if (renamed == geography)
            Q_EMIT titleChanged(title());
    });
    addView(view);
}

TableView *TableWindow::table() const
{
    return static_cast<TableView *>(views().value(0));
}

QString TableWindow::title() const
{
    return table() ? withRealization(table()->title()) : QString();
}

void TableWindow::askExportTable()
{
    const QString file = askSaveName(this, tr("Export the table"), tr("Tables (*.csv)"));
    if (!file.isEmpty())
        exportTo(file);
}

bool TableWindow::exportTo(const QString &file)
{
    return file.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive) ? exportTable(file)
                                                                     : ViewWindow::exportTo(file);
}

bool TableWindow::exportTable(const QString &file)
{
    if (!table())
        return false;
    const int geography = table()->geography();
    QStringList line{QStringLiteral("export"), workspace().commandPath(), file,
                     QStringLiteral("--geography"), geographyName(geography)};
    const bool done = workspace().look([&] { // the export shows its own progress
        const TimeAxis axis = axisOf(geography);
        const QString at = axis.show(table()->time());
        RowPlan plan;
        plan.geography = geography;
        plan.at = requireSpan(axis, at).startTime;
        if (realizationCount() > 1)
            plan.realization = realization();
        meridor::exportTable(file, TableFormat::Csv, plan, QString(),
                             [this](const QString &note) { workspace().tell(note); });
        line << QStringLiteral("--at") << at;
        // Without the option a table has the rows of all realizations.
        if (realizationCount() > 1)
            line << QStringLiteral("--realization") << QString::number(realization() + 1);
        line << QStringLiteral("--overwrite");
    });
    if (!done)
        return false;
    workspace().log().did(line);
    workspace().tell(tr("Saved as %1").arg(file));
    return true;
}

void TableWindow::copyToClipboard()
{
    if (!table())
        return;
    const QVector<int> objects = table()->objectsToCopy();
    if (objects.size() > kMostCopied) {
        workspace().tell(tr("%1 rows are too many for the clipboard; export the table instead.")
                             .arg(objects.size()),
                         true);
        return;
    }
    QGuiApplication::clipboard()->setText(table()->model().textOf(objects));
    workspace().tell(counted(objects.size(), tr("%1 row is in the clipboard."),
                             tr("%1 rows are in the clipboard.")));
}

QJsonObject TableWindow::state() const
{
    if (!table())
        return {};
    const ValueTable &model = table()->model();
    QJsonObject state = ViewWindow::state();
    state.insert(QStringLiteral("table"), geographyName(table()->geography()));
    state.insert(QStringLiteral("selectedFirst"), model.isSelectedFirst());
    if (const QJsonObject widths = table()->ownWidths(); !widths.isEmpty())
        state.insert(QStringLiteral("widths"), widths);
    if (model.sortColumn() >= 0) {
        state.insert(QStringLiteral("sort"),
                     model.headerData(model.sortColumn(), Qt::Horizontal).toString());
        state.insert(QStringLiteral("descending"), model.sortOrder() == Qt::DescendingOrder);
    }
    return state;
}

void TableWindow::restore(const QJsonObject &state)
{
    if (!table())
        return;
    ViewWindow::restore(state);
    mSelectedFirst->setChecked(state.value(QStringLiteral("selectedFirst")).toBool());
    table()->setOwnWidths(state.value(QStringLiteral("widths")).toObject());
    const ValueTable &model = table()->model();
    for (int column = 0; column < model.columnCount(); ++column)
        if (model.headerData(column, Qt::Horizontal).toString()
            == state.value(QStringLiteral("sort")).toString())
            table()->sortBy(column, state.value(QStringLiteral("descending")).toBool()
                                        ? Qt::DescendingOrder
                                        : Qt::AscendingOrder);
}

TableWindow *openTable(Workspace &workspace, int geography)
{
    if (!geographyOf(geography)) {
        workspace.tell(TableWindow::tr("This geography does not exist."), true);
        return nullptr;
    }
    return new TableWindow(workspace, geography);
}

} // namespace meridor
