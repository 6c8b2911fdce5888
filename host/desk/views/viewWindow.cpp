// SPDX-License-Identifier: MIT
#include "desk/views/viewWindow.h"
#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include "core/analysis/weightSets.h"
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/render/pictureFile.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"
#include "datainterface/WeightsAPI.h"
#include "desk/models/datasetMime.h"
#include "desk/views/saveName.h"

namespace meridor {
namespace {

constexpr int kLeastWithReadout = 14; ///< heights of the font

ViewWindow *windowOf(const MLinker *view)
{
    for (QWidget *widget = static_cast<const View *>(view)->widget(); widget;
         widget = widget->parentWidget())
        if (auto *const window = qobject_cast<ViewWindow *>(widget))
            return window;
    return nullptr;
}

} // namespace

ViewWindow::ViewWindow(Workspace &workspace, const QVector<Tool> &tools, QWidget *parent)
    : QWidget(parent),
      mWorkspace(workspace),
      mLayout(new QVBoxLayout(this)),
      mToolBar(new QToolBar(this)),
      mReadout(new QLabel(this)),
      mTools(new QActionGroup(this)),
      mGroups(new QActionGroup(this))
{
    mLayout->setContentsMargins(0, 0, 0, 0);
    mLayout->setSpacing(0);
    mLayout->addWidget(mToolBar);
    mLayout->addWidget(mReadout);
    mToolBar->setObjectName(QStringLiteral("tools"));
    mToolBar->setAccessibleName(tr("Tools of the view"));
    const int side = static_cast<int>(std::lround(1.3 * fontMetrics().height()));
    mToolBar->setIconSize(QSize(side, side));
    // The button for the tools beyond the edge has a dark arrow of the style's, whatever the palette.
    if (auto *const more =
            mToolBar->findChild<QToolButton *>(QStringLiteral("qt_toolbar_ext_button")))
        more->setIcon(viewIcon(ViewIcon::More));
    mReadout->setObjectName(QStringLiteral("readout"));
    mReadout->setAccessibleName(tr("Object under the mouse"));
    mReadout->setTextFormat(Qt::PlainText);
    mReadout->setMargin(fontMetrics().height() / 4);
    // A long text must not widen the window.
    mReadout->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setAcceptDrops(true);
    makeTools(tools);

    connect(&mWorkspace.selection(), &Selection::changed, this, [this] { refreshActions(); });
    connect(&mWorkspace, &Workspace::geographyDying, this, [this](int geography) {
        dropViews([geography](const View &view) { return view.geography() == geography; });
    });
    connect(&mWorkspace, &Workspace::datasetsDying, this, [this](const QVector<int> &dying) {
        dropViews([&dying](const View &view) {
            const QVector<int> shown = view.datasets();
            return std::any_of(shown.begin(), shown.end(),
                               [&dying](int id) { return dying.contains(id); });
        });
    });
    connect(&mWorkspace, &Workspace::closing, this,
            [this] { dropViews([](const View &) { return true; }); });
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) {
        if (now && isAncestorOf(now))
            Q_EMIT activated();
    });
    mBack->setEnabled(false); // there is no view yet
    mForward->setEnabled(false);
}

QSize ViewWindow::leastSize(const QWidget &widget)
{
    return widget.fontMetrics().height() * QSize(10, 5);
}

ViewWindow::~ViewWindow()
{
    const QVector<View *> views = mViews;
    mViews.clear();
    qDeleteAll(views);
}

QAction *ViewWindow::addTool(std::optional<ViewIcon> icon, const QString &text, const char *name,
                             const QKeySequence &keys, const std::function<void()> &act)
{
    auto *const action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    if (!keys.isEmpty())
        action->setToolTip(
            QStringLiteral("%1 (%2)").arg(text, keys.toString(QKeySequence::NativeText)));
    connect(action, &QAction::triggered, this, [act] { act(); });
    addAction(action);
    if (!icon)
        return action;
    action->setIcon(viewIcon(*icon));
    mToolBar->addAction(action);
    if (QWidget *const button = mToolBar->widgetForAction(action)) {
        button->setAccessibleName(text);
        button->setFocusPolicy(Qt::TabFocus);
    }
    return action;
}

void ViewWindow::makeTools(const QVector<Tool> &tools)
{
    struct ToolText {
        Tool tool;
        ViewIcon icon;
        const char *name;
        QString text;
        Qt::Key key;
    };
    const ToolText texts[] = {
        {Tool::Rectangle, ViewIcon::Select, "selectTool", tr("Select by click or rectangle"),
         Qt::Key_S},
        {Tool::Lasso, ViewIcon::Lasso, "lassoTool", tr("Select by polygon"), Qt::Key_L},
        {Tool::Circle, ViewIcon::Circle, "circleTool", tr("Select by circle"), Qt::Key_C},
        {Tool::Move, ViewIcon::Move, "moveTool", tr("Move the picture"), Qt::Key_M},
    };
    for (const ToolText &text : texts) {
        if (!tools.contains(text.tool))
            continue;
        const Tool tool = text.tool;
        QAction *const action = addTool(text.icon, text.text, text.name, QKeySequence(text.key),
                                        [this, tool] { setTool(tool); });
        action->setCheckable(true);
        action->setData(static_cast<int>(tool));
        action->setChecked(tool == mTool);
        mTools->addAction(action);
    }
    mToolBar->addSeparator();
    mBack = addTool(ViewIcon::Back, tr("Selection before"), "selectionBack",
                    QKeySequence(Qt::ALT + Qt::Key_Left), [this] {
                        if (View *const view = currentView())
                            view->stepBack();
                    });
    mForward = addTool(ViewIcon::Forward, tr("Selection after"), "selectionForward",
                       QKeySequence(Qt::ALT + Qt::Key_Right), [this] {
                           if (View *const view = currentView())
                               view->stepForward();
                       });
    addTool(ViewIcon::Clear, tr("Select nothing"), "selectNothing", QKeySequence(Qt::Key_Escape),
            [this] { clearSelection(); });
    addTool(ViewIcon::Invert, tr("Invert the selection"), "selectInverse",
            QKeySequence(Qt::CTRL + Qt::Key_I), [this] { invertSelection(); });
    mToolBar->addSeparator();
    makeGroups();
    makeRealizations();
    addTool(ViewIcon::Export, tr("Export the picture"), "exportPicture",
            QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_E), [this] { askExport(); });
    addTool({}, tr("Copy the picture"), "copyPicture", QKeySequence::Copy,
            [this] { copyToClipboard(); });
    addTool({}, tr("Select the neighbours, too"), "selectNeighbors", QKeySequence(Qt::Key_N),
            [this] { selectNeighbors(); });
}

void ViewWindow::makeGroups()
{
    auto *const menu = new QMenu(this);
    const QString texts[] = {tr("Linked with all views"), tr("Linked in group A"),
                             tr("Linked in group B"), tr("Alone")};
    for (int group = Main; group <= Alone; ++group) {
        QAction *const action = menu->addAction(texts[group]);
        action->setCheckable(true);
        action->setChecked(group == mGroup);
        action->setData(group);
        action->setObjectName(QStringLiteral("linkGroup%1").arg(group));
        connect(action, &QAction::triggered, this,
                [this, group] { setGroup(static_cast<Group>(group)); });
        mGroups->addAction(action);
    }
    auto *const button = new QToolButton(mToolBar);
    button->setObjectName(QStringLiteral("linkGroup"));
    button->setIcon(viewIcon(ViewIcon::Link));
    button->setText(tr("Link"));
    button->setToolTip(tr("With which views this one is linked"));
    button->setAccessibleName(tr("Links of the view"));
    button->setPopupMode(QToolButton::InstantPopup);
    button->setMenu(menu);
    button->setFocusPolicy(Qt::TabFocus);
    mToolBar->addWidget(button);
}

void ViewWindow::makeRealizations()
{
    mRealizations = new QSpinBox(mToolBar);
    mRealizations->setObjectName(QStringLiteral("realization"));
    mRealizations->setAccessibleName(tr("Realization that is shown"));
    mRealizations->setToolTip(mRealizations->accessibleName());
    mRealizations->setPrefix(tr("Realization "));
    mRealizations->setMinimum(1);
    mRealizations->setKeyboardTracking(false); // a number is read when it is complete
    mRealizationTool = mToolBar->addWidget(mRealizations);
    mRealizationTool->setVisible(false);
    connect(mRealizations, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this](int number) { setRealization(number - 1); });
    const auto count = [this] { countRealizations(); };
    connect(&mWorkspace, &Workspace::datasetsAdded, this, count);
    connect(&mWorkspace, &Workspace::datasetsChanged, this, count);
    connect(&mWorkspace, &Workspace::idle, this, count);
}

int ViewWindow::realization() const
{
    return std::min(mRealization, mRealizationCount - 1);
}

void ViewWindow::setRealization(int realization)
{
    mRealization = std::max(0, realization);
    countRealizations();
    for (View *const view : std::as_const(mViews))
        view->setRealization(this->realization());
    Q_EMIT titleChanged(title());
}

void ViewWindow::countRealizations()
{
    if (mWorkspace.isBusy())
        return; // a dataset may be half made; this comes back when the work has ended
    int count = 0;
    for (const View *const view : std::as_const(mViews)) {
        for (const int id : view->valueDatasets()) {
            const MDataset *const dataset = meridor::datasetOf(id);
            const int own = dataset ? dataset->GetRealizationCount() : 1;
            if (own > 1)
                count = count == 0 ? own : std::min(count, own);
        }
    }
    mRealizationCount = std::max(1, count);
    const QSignalBlocker quiet(mRealizations);
    mRealizations->setMaximum(mRealizationCount);
    mRealizations->setSuffix(tr(" of %1").arg(mRealizationCount));
    mRealizations->setValue(realization() + 1);
    mRealizationTool->setVisible(mRealizationCount > 1);
}

QString ViewWindow::withRealization(const QString &title) const
{
    const QString note =
        mRealizationCount > 1 && !mViews.isEmpty()
            ? tr("realization %1 of %2").arg(realization() + 1).arg(mRealizationCount)
            : QString();
    return note.isEmpty() ? title : title + QStringLiteral(", ") + note;
}

QStringList ViewWindow::realizationOption() const
{
    return realization() == 0
               ? QStringList()
               : QStringList{QStringLiteral("--realization"), QString::number(realization() + 1)};
}

void ViewWindow::setTool(Tool tool)
{
    for (QAction *const action : mTools->actions())
        if (action->data().toInt() == static_cast<int>(tool))
            action->setChecked(true);
    if (mTool == tool)
        return;
    mTool = tool;
    Q_EMIT toolChanged();
}

void ViewWindow::setGroup(Group group)
{
    mGroup = group;
    mGroups->actions().at(group)->setChecked(true);
    for (View *const view : std::as_const(mViews))
        mWorkspace.unlink(view);
    for (int i = 1; i < mViews.size(); ++i)
        mWorkspace.link(mViews[i], mViews.first());
    if (group == Alone || mViews.isEmpty())
        return;
    for (MLinker *const other : mWorkspace.views()) {
        const ViewWindow *const window = windowOf(other);
        if (window && window != this && window->group() == group) {
            mWorkspace.link(mViews.first(), other); // joins the whole groups of both
            mViews.first()->UpdateLinkedViews();
            return;
        }
    }
}

void ViewWindow::goTo(qint64 time)
{
    const QVector<View *> views = mViews;
    for (View *const view : views)
        view->goTo(time);
}

void ViewWindow::setContent(QWidget *content)
{
    mLayout->insertWidget(1, content, 1);
    setFocusProxy(content);
}

void ViewWindow::addView(View *view)
{
    mViews.append(view);
    countRealizations();
    view->setRealization(realization());
    // Workspace::addView links a new view with those that were there first, whatever their group.
    setGroup(mGroup);
    connect(view, &View::shownTimeChanged, this, [this] { Q_EMIT titleChanged(title()); });
    refreshActions();
    Q_EMIT viewsChanged();
    Q_EMIT titleChanged(title());
}

void ViewWindow::viewLeaves(View *)
{
}

void ViewWindow::removeView(View *view)
{
    if (mViews.removeAll(view) == 0)
        return;
    viewLeaves(view);
    delete view;
    refreshActions();
    // Its datasets may be going.
    QTimer::singleShot(0, this, &ViewWindow::countRealizations);
    Q_EMIT viewsChanged();
    if (!mViews.isEmpty()) {
        Q_EMIT titleChanged(title());
        return;
    }
    close();
    deleteLater();
}

void ViewWindow::dropViews(const std::function<bool(const View &)> &isLost)
{
    const QVector<View *> views = mViews;
    for (View *const view : views)
        if (mViews.contains(view) && isLost(*view))
            removeView(view);
}

void ViewWindow::setReadout(const QString &text)
{
    if (mReadout->text() != text)
        mReadout->setText(text);
}

QSize ViewWindow::contentSize() const
{
    const QLayoutItem *const content = mLayout->itemAt(1);
    return content->geometry().size().expandedTo(QSize(64, 64));
}

void ViewWindow::draw(QPainter &painter, const QSize &size)
{
    if (!mViews.isEmpty())
        mViews.first()->draw(painter, size);
}

bool ViewWindow::exportTo(const QString &file)
{
    const bool done = mWorkspace.run(tr("Export"), [&](const Progress &) {
        const bool isPixels = file.endsWith(QLatin1String(".png"), Qt::CaseInsensitive);
        const double ratio = isPixels ? devicePixelRatioF() : 1.0;
        const QSize size = contentSize();
        savePicture(file, (QSizeF(size) * ratio).toSize(), title(), [&](QPainter &painter) {
            painter.scale(ratio, ratio);
            draw(painter, size);
        });
    });
    if (!done)
        return false;
    const QStringList line = commandLine(file);
    if (!line.isEmpty())
        mWorkspace.log().did(line + QStringList{QStringLiteral("--overwrite")});
    if (const QString untold = this->untold(); !untold.isEmpty())
        mWorkspace.log().remark(untold);
    mWorkspace.tell(tr("Saved as %1").arg(file));
    return true;
}

void ViewWindow::askExport()
{
    const QString file = askSaveName(this, tr("Export the picture"),
                                     tr("Pictures (*.png);;Drawings (*.svg);;Documents (*.pdf)"));
    if (!file.isEmpty())
        exportTo(file);
}

void ViewWindow::copyToClipboard()
{
    const double ratio = devicePixelRatioF();
    const QSize size = contentSize();
    QImage picture((QSizeF(size) * ratio).toSize(), QImage::Format_RGB32);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    const bool done = mWorkspace.look([&] { draw(painter, size); });
    painter.end();
    if (!done)
        return;
    QApplication::clipboard()->setImage(picture);
    mWorkspace.tell(tr("The picture is in the clipboard."));
}

QString ViewWindow::refusal(int) const
{
    return tr("A dataset cannot be dropped on this view.");
}

void ViewWindow::addDataset(int)
{
}

QJsonObject ViewWindow::state() const
{
    return {{QStringLiteral("realization"), realization() + 1}, {QStringLiteral("group"), group()}};
}

void ViewWindow::restore(const QJsonObject &state)
{
    setRealization(state.value(QStringLiteral("realization")).toInt(1) - 1);
    setGroup(static_cast<Group>(
        std::clamp(state.value(QStringLiteral("group")).toInt(), int(Main), int(Alone))));
}

QStringList ViewWindow::sizeOptions(const QString &picture) const
{
    constexpr QSize kLeast(320, 200); // of the command
    const bool isPixels = picture.endsWith(QLatin1String(".png"), Qt::CaseInsensitive);
    const QSize size = (QSizeF(contentSize()) * (isPixels ? devicePixelRatioF() : 1.0)).toSize();
    const QSize asked = size.expandedTo(kLeast);
    return {QStringLiteral("--width"), QString::number(asked.width()), QStringLiteral("--height"),
            QString::number(asked.height())};
}

QStringList ViewWindow::commandLine(const QString &) const
{
    return {};
}

void ViewWindow::refreshActions()
{
    const View *const view = currentView();
    Selection &selection = mWorkspace.selection();
    mBack->setEnabled(view && selection.canGoBack(view->geography()));
    mForward->setEnabled(view && selection.canGoForward(view->geography()));
}

void ViewWindow::clearSelection()
{
    const QVector<View *> views = mViews;
    for (View *const view : views)
        view->chooseNothing();
}

void ViewWindow::invertSelection()
{
    View *const view = currentView();
    if (!view)
        return;
    const int geography = view->geography();
    const MAttributes *const flags = mWorkspace.selection().attributes(geography);
    if (flags && flags->GetStateCount(attribute::kSelected, false) > kMostSelected) {
        mWorkspace.tell(tr("The inverse has more than %1 objects.").arg(kMostSelected), true);
        return;
    }
    QVector<int> existing;
    if (mWorkspace.look(
            [&] { existing = objectsAt(geography, shapeTime(geography, view->time())); }))
        view->choose(QVector<unsigned int>(existing.begin(), existing.end()),
                     SelectionMode::Toggle);
}

void ViewWindow::selectNeighbors()
{
    View *const view = currentView();
    if (!view)
        return;
    const int set = mWorkspace.shownWeights(view->geography());
    if (set < 0) {
        mWorkspace.tell(tr("No weight set is chosen whose neighbours could be selected."), true);
        return;
    }
    QVector<unsigned int> found;
    const bool done = mWorkspace.look([&] {
        found = neighborsAt(set, mWorkspace.selection().selected(view->geography()), view->time());
    });
    if (done)
        view->choose(found, SelectionMode::Add);
}

void ViewWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        mToolBar->update();
}

void ViewWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitParts();
}

void ViewWindow::fitParts()
{
    mReadout->setVisible(height() >= kLeastWithReadout * fontMetrics().height());
}

void ViewWindow::dragEnterEvent(QDragEnterEvent *event)
{
    // A dataset that is refused is taken here too, or the window around this one would open a view.
    if (datasetOf(event->mimeData()) >= 0)
        event->acceptProposedAction();
}

void ViewWindow::dropEvent(QDropEvent *event)
{
    const int dataset = datasetOf(event->mimeData());
    if (dataset < 0)
        return;
    event->acceptProposedAction();
    const QString why = refusal(dataset);
    if (why.isEmpty())
        addDataset(dataset);
    else
        mWorkspace.tell(why, true);
}

QVector<unsigned int> neighborsOf(int weightSet, unsigned int object, qint64 time)
{
    QVector<neighborDatum> list;
    QVector<unsigned int> objects;
    if (!VORN_GetSpatialWeights(weightSet, object, listTime(weightSet, time), list,
                                VORN_MissingData()))
        return objects;
    for (const neighborDatum &neighbor : std::as_const(list))
        if (neighbor.id >= 0 && static_cast<unsigned int>(neighbor.id) != object)
            objects.append(static_cast<unsigned int>(neighbor.id));
    return objects;
}

} // namespace meridor
