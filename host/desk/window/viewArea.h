// SPDX-License-Identifier: MIT
/// The views of the project as docks: side by side, in tabs, or torn off onto another screen.
#pragma once
#include <QJsonObject>
#include <QMainWindow>
#include <QVector>
#include "desk/views/viewWindow.h"
#include "desk/window/viewRequest.h"

class QDockWidget;

namespace meridor {

class ViewArea : public QMainWindow {
    Q_OBJECT
public:
    explicit ViewArea(Workspace &workspace, QWidget *parent = nullptr);
    ~ViewArea() override;

    /// Shows a window beside the active one and makes it the active one. Takes it over.
    /// @param request  how it was made, for state().
    void add(ViewWindow *window, const ViewRequest &request);
    /// In the order in which they were opened.
    QVector<ViewWindow *> windows() const;
    /// The one that the user works with; null without one.
    ViewWindow *active() const { return mActive; }
    void activate(ViewWindow *window);
    void closeAll();
    /// Small: views that do not fit are shown in tabs.
    QSize minimumSizeHint() const override;

    /// The views and their places, with names.
    QJsonObject state() const;
    /// Opens the views of a state again, as far as what they show exists.
    void restore(const QJsonObject &state);

public Q_SLOTS:
    void tile();
    void stack(); ///< all in tabs
    void nextView();
    void previousView();
    void closeActive();

Q_SIGNALS:
    void activeChanged(meridor::ViewWindow *window);
    void countChanged(int count);

private:
    struct Place {
        ViewWindow *window;
        QDockWidget *dock; ///< removed with its window
        ViewRequest request;
    };

    QDockWidget *dockOf(const ViewWindow *window) const;
    void place(QDockWidget *dock);
    QSize leastDock() const;
    void remove(QWidget *frame);
    void step(int by);
    QVector<QDockWidget *> tiled() const;

    Workspace &mWorkspace;
    QVector<Place> mPlaces;
    ViewWindow *mActive = nullptr;
    int mNextNumber = 1;
};

} // namespace meridor
