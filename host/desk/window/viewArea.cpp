// SPDX-License-Identifier: MIT
#include "desk/window/viewArea.h"
#include <QApplication>
#include <QDockWidget>
#include <QJsonArray>
#include <QPointer>
#include <QStyleOptionDockWidget>
#include <QStylePainter>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include "core/project/failure.h"
#include "desk/models/plainText.h"
#include "desk/project/workspace.h"
#include "desk/views/viewWindow.h"

namespace meridor {
namespace {

constexpr int kMostTitleWidth = 30; // heights of the font

/// Shows a title letter by letter. The title of the window is also the text of a tab, where "&" marks a
/// key; in the bar above a view, and on the screen, it does not.
class ViewDock : public QDockWidget {
public:
    explicit ViewDock(QWidget *parent) : QDockWidget(parent)
    {
        connect(this, &QDockWidget::topLevelChanged, this, [this] { setTitle(mTitle); });
    }
    /// A tab is as wide as its whole text, so a long title is shortened.
    void setTitle(const QString &title)
    {
        mTitle = title;
        mShown = fontMetrics().elidedText(title, Qt::ElideMiddle,
                                          kMostTitleWidth * fontMetrics().height());
        setWindowTitle(plainTitle(isFloating() ? mShown : plainLabel(mShown)));
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        if (isFloating()) {
            QDockWidget::paintEvent(event);
            return;
        }
        QStyleOptionDockWidget bar;
        initStyleOption(&bar);
        bar.title = mShown;
        QStylePainter(this).drawControl(QStyle::CE_DockWidgetTitle, bar);
    }

private:
    QString mTitle;
    QString mShown;
};

ViewWindow *windowAround(QWidget *widget)
{
    for (; widget; widget = widget->parentWidget())
        if (auto *const window = qobject_cast<ViewWindow *>(widget))
            return window;
    return nullptr;
}

} // namespace

ViewArea::ViewArea(Workspace &workspace, QWidget *parent)
    : QMainWindow(parent, Qt::Widget), mWorkspace(workspace)
{
    setObjectName(QStringLiteral("viewArea"));
    setAccessibleName(tr("Views"));
    setDockNestingEnabled(true);
    auto *const none = new QWidget; // docks take all of the space
    setCentralWidget(none);
    none->hide();
    setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
    setContextMenuPolicy(Qt::NoContextMenu);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) {
        ViewWindow *const window = windowAround(now);
        if (window && dockOf(window))
            activate(window);
    });
}

// The windows go first: their docks tell this area when they are destroyed.
ViewArea::~ViewArea()
{
    closeAll();
}

QDockWidget *ViewArea::dockOf(const ViewWindow *window) const
{
    for (const Place &place : mPlaces)
        if (place.window == window)
            return place.dock;
    return nullptr;
}

QVector<ViewWindow *> ViewArea::windows() const
{
    QVector<ViewWindow *> windows;
    for (const Place &place : mPlaces)
        if (place.window)
            windows.append(place.window);
    return windows;
}

void ViewArea::add(ViewWindow *window, const ViewRequest &request)
{
    auto *const dock = new ViewDock(this);
    dock->setTitle(window->title());
    dock->setObjectName(QStringLiteral("view %1").arg(mNextNumber++));
    dock->setAttribute(Qt::WA_DeleteOnClose);
    dock->setWidget(window);
    connect(window, &ViewWindow::titleChanged, dock, &ViewDock::setTitle);
    connect(window, &ViewWindow::activated, this, [this, window] { activate(window); });
    // Another layer of a map may be of another geography. Geographies that are being removed are not
    // looked at: the signal waits until the views have gone.
    connect(
        window, &ViewWindow::viewsChanged, this,
        [this, window] {
            if (window == mActive)
                Q_EMIT activeChanged(mActive);
        },
        Qt::QueuedConnection);
    // A window whose last view was removed deletes itself; a closed dock takes its window along, and
    // is no more than a widget then.
    connect(window, &QObject::destroyed, this,
            [this, frame = static_cast<QWidget *>(dock)] { remove(frame); });
    place(dock);
    mPlaces.append({window, dock, request});
    dock->show();
    activate(window);
    window->setFocus();
    Q_EMIT countChanged(mPlaces.size());
}

QSize ViewArea::minimumSizeHint() const
{
    return leastDock();
}

/// What a view needs with its title.
QSize ViewArea::leastDock() const
{
    return ViewWindow::leastSize(*this) + QSize(0, 2 * fontMetrics().height());
}

/// Beside the active view, along its longer side, so that views stay near squares; in a tab with it if
/// there is no room for two.
void ViewArea::place(QDockWidget *dock)
{
    QDockWidget *beside = mActive ? dockOf(mActive) : nullptr;
    if (!beside || beside->isFloating())
        beside = tiled().value(0);
    if (!beside) {
        addDockWidget(Qt::TopDockWidgetArea, dock);
        return;
    }
    const QSize least = leastDock();
    const bool isAcross =
        beside->width() >= 2 * least.width()
        && (beside->width() >= beside->height() || beside->height() < 2 * least.height());
    const bool fits = isAcross || beside->height() >= 2 * least.height();
    if (!fits || !tabifiedDockWidgets(beside).isEmpty())
        tabifyDockWidget(beside, dock);
    else
        splitDockWidget(beside, dock, isAcross ? Qt::Horizontal : Qt::Vertical);
}

void ViewArea::remove(QWidget *frame)
{
    const int before = mPlaces.size();
    mPlaces.erase(std::remove_if(mPlaces.begin(), mPlaces.end(),
                                 [frame](const Place &place) { return place.dock == frame; }),
                  mPlaces.end());
    if (mPlaces.size() == before)
        return;
    frame->hide();
    // Not if it is being deleted already.
    QTimer::singleShot(0, this, [left = QPointer<QWidget>(frame)] { delete left.data(); });
    if (!mActive || !dockOf(mActive))
        activate(mPlaces.isEmpty() ? nullptr : mPlaces.last().window);
    Q_EMIT countChanged(mPlaces.size());
}

void ViewArea::closeAll()
{
    const QVector<Place> places = mPlaces;
    mPlaces.clear();
    mActive = nullptr;
    for (const Place &place : places)
        delete place.dock;
    if (!places.isEmpty()) {
        Q_EMIT activeChanged(nullptr);
        Q_EMIT countChanged(0);
    }
}

void ViewArea::activate(ViewWindow *window)
{
    if (mActive == window)
        return;
    mActive = window;
    if (QDockWidget *const dock = dockOf(window))
        dock->raise();
    Q_EMIT activeChanged(window);
}

QVector<QDockWidget *> ViewArea::tiled() const
{
    QVector<QDockWidget *> docks;
    for (const Place &place : mPlaces)
        if (place.dock && !place.dock->isFloating())
            docks.append(place.dock);
    return docks;
}

void ViewArea::tile()
{
    const QVector<QDockWidget *> docks = tiled();
    if (docks.isEmpty())
        return;
    const int count = docks.size();
    const QSize least = leastDock();
    const int most = std::max(1, width() / least.width());
    int rows = std::max(1, height() / least.height());
    // Views beyond those that fit share the places of the first ones, in tabs.
    const bool hasTabs = count > most * rows;
    if (hasTabs)
        rows = std::max(1, height() / (least.height() + 2 * fontMetrics().height()));
    const int columns = std::min(
        most, std::max(static_cast<int>(std::ceil(std::sqrt(count))), (count + rows - 1) / rows));
    const int places = std::min(count, columns * rows);
    for (QDockWidget *const dock : docks)
        removeDockWidget(dock);
    for (int i = 0; i < docks.size(); ++i) {
        if (i == 0)
            addDockWidget(Qt::TopDockWidgetArea, docks[i]);
        else if (i >= places)
            tabifyDockWidget(docks[i % places], docks[i]);
        else if (i < columns)
            splitDockWidget(docks[i - 1], docks[i], Qt::Horizontal);
        else
            splitDockWidget(docks[i - columns], docks[i], Qt::Vertical);
        docks[i]->show();
    }
    const auto makeEqual = [this](const QList<QDockWidget *> &line, int space,
                                  Qt::Orientation along) {
        QList<int> sizes;
        for (int i = 0; i < line.size(); ++i)
            sizes.append(space / line.size());
        resizeDocks(line, sizes, along);
    };
    makeEqual(docks.mid(0, columns).toList(), width(), Qt::Horizontal);
    for (int column = 0; column < columns; ++column) {
        QList<QDockWidget *> line;
        for (int i = column; i < places; i += columns)
            line.append(docks[i]);
        makeEqual(line, height(), Qt::Vertical);
    }
}

void ViewArea::stack()
{
    const QVector<QDockWidget *> docks = tiled();
    for (int i = 1; i < docks.size(); ++i)
        tabifyDockWidget(docks.first(), docks[i]);
    if (QDockWidget *const dock = mActive ? dockOf(mActive) : nullptr)
        dock->raise();
}

void ViewArea::step(int by)
{
    const QVector<ViewWindow *> all = windows();
    if (all.isEmpty())
        return;
    const int next = (all.indexOf(mActive) + by + all.size()) % all.size();
    activate(all[next]);
    all[next]->setFocus();
}

void ViewArea::nextView()
{
    step(1);
}

void ViewArea::previousView()
{
    step(-1);
}

void ViewArea::closeActive()
{
    if (QDockWidget *const dock = mActive ? dockOf(mActive) : nullptr)
        remove(dock);
}

QJsonObject ViewArea::state() const
{
    QJsonArray views;
    for (const Place &place : mPlaces) {
        if (!place.window || place.window->views().isEmpty())
            continue;
        // What the window shows by now, since datasets can be dropped on it.
        ViewRequest request = place.request;
        if (request.kind != ViewKind::Table)
            request.datasets = place.window->views().first()->datasets();
        QJsonObject view = toJson(request);
        view.insert(QStringLiteral("dock"), place.dock->objectName());
        view.insert(QStringLiteral("state"), place.window->state());
        views.append(view);
    }
    return {{QStringLiteral("views"), views},
            {QStringLiteral("places"), QString::fromLatin1(saveState().toBase64())}};
}

void ViewArea::restore(const QJsonObject &state)
{
    for (const QJsonValue &value : state.value(QStringLiteral("views")).toArray()) {
        const QJsonObject view = value.toObject();
        try {
            const ViewRequest request = viewRequestOf(view);
            ViewWindow *const window = makeView(mWorkspace, request);
            if (!window)
                continue;
            window->restore(view.value(QStringLiteral("state")).toObject());
            add(window, request);
            mPlaces.last().dock->setObjectName(view.value(QStringLiteral("dock")).toString());
            mNextNumber = std::max(
                mNextNumber,
                mPlaces.last().dock->objectName().section(QLatin1Char(' '), 1).toInt() + 1);
        } catch (const Failure &) {
            // What it showed has another name by now, or is gone.
        }
    }
    restoreState(
        QByteArray::fromBase64(state.value(QStringLiteral("places")).toString().toLatin1()));
}

} // namespace meridor
