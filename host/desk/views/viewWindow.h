// SPDX-License-Identifier: MIT
/// The frame of one or several views: the tools above them and a line of text below.
#pragma once
#include <QJsonObject>
#include <QStringList>
#include <QVector>
#include <QWidget>
#include <functional>
#include <optional>
#include "desk/views/view.h"
#include "desk/views/viewIcons.h"

class QAction;
class QActionGroup;
class QLabel;
class QSpinBox;
class QToolBar;
class QVBoxLayout;

namespace meridor {

/// A selection is a list of objects at every step; more cells of a grid would fill the memory.
constexpr int kMostSelected = 5'000'000;

/// Owns its views. A view is removed while its geography or dataset still exists; a window without
/// views closes and deletes itself.
class ViewWindow : public QWidget {
    Q_OBJECT
public:
    /// What dragging with the mouse does. Move is also what the middle button does.
    enum class Tool { Rectangle, Lasso, Circle, Move };
    /// Views of the same group drive each other; those of Alone drive nobody.
    enum Group { Main, GroupA, GroupB, Alone };

    ViewWindow(Workspace &workspace, const QVector<Tool> &tools, QWidget *parent = nullptr);
    ~ViewWindow() override;

    /// The least size of a view beside others, in the font of a widget.
    static QSize leastSize(const QWidget &widget);
    /// Parts that are not the picture give way to it: see fitParts().
    QSize minimumSizeHint() const override { return leastSize(*this); }

    Workspace &workspace() const { return mWorkspace; }
    virtual QString title() const = 0;
    const QVector<View *> &views() const { return mViews; }
    /// The view that back, forward, clear and invert act on; null without one.
    virtual View *currentView() const { return mViews.value(0); }
    QToolBar &toolBar() { return *mToolBar; }

    Tool tool() const { return mTool; }
    void setTool(Tool tool);
    Group group() const { return mGroup; }
    void setGroup(Group group);

    /// The realization that the views show, from 0, of the datasets that have several.
    int realization() const;
    void setRealization(int realization);
    /// What setRealization() can choose from: the fewest of a dataset that has several; else 1.
    int realizationCount() const { return mRealizationCount; }

    /// Shows a time in all views, and in those that they drive.
    void goTo(qint64 time);

    /// Writes the window as it stands into a PNG, SVG or PDF file, by its extension, and notes the
    /// command line that makes the same picture. False after telling the user why not.
    virtual bool exportTo(const QString &file);
    virtual void copyToClipboard();

    /// Why a dataset cannot be dropped here, as a sentence; empty if it can.
    virtual QString refusal(int dataset) const;
    /// Shows a dataset that is not refused.
    virtual void addDataset(int dataset);

    /// What is shown, with names instead of ids, for the layout of windows and for scripts. That of
    /// this class is what all windows have in common.
    virtual QJsonObject state() const;
    /// Shows a state again as far as its names exist.
    virtual void restore(const QJsonObject &state);
    /// The words after "meridor" that make the same picture as a file; empty if none do.
    virtual QStringList commandLine(const QString &picture) const;
    /// A sentence about what commandLine() leaves out; empty if that is nothing.
    virtual QString untold() const { return QString(); }

public Q_SLOTS:
    /// Asks for a name and exports the picture.
    void askExport();
    void selectNeighbors();
    /// Selects what exists at the shown time and was not selected, and the reverse. What does not
    /// exist then is left as it is.
    void invertSelection();
    void clearSelection();

Q_SIGNALS:
    void titleChanged(const QString &title);
    void toolChanged();
    void viewsChanged();
    /// The person works with this window.
    void activated();

protected:
    void setContent(QWidget *content);
    /// What exports contain: the content without tools. Draws the first view.
    virtual void draw(QPainter &painter, const QSize &size);
    /// The size of the content.
    virtual QSize contentSize() const;
    /// The options of a command that makes a picture of this size.
    QStringList sizeOptions(const QString &picture) const;
    /// Takes the view over, which has not called join() or has done so alike.
    void addView(View *view);
    void removeView(View *view);
    /// Shows the parts beside the picture for which there is room.
    virtual void fitParts();
    /// The view is deleted next; the window holds nothing of it afterwards.
    virtual void viewLeaves(View *view);
    /// Adds an action with its keys to the window and, with an icon, a button to the tool bar.
    QAction *addTool(std::optional<ViewIcon> icon, const QString &text, const char *name,
                     const QKeySequence &keys, const std::function<void()> &act);
    /// A title, with the realization if there are several.
    QString withRealization(const QString &title) const;
    /// The option of a command line for the realization; empty for the first one.
    QStringList realizationOption() const;
    /// The line of text below the content, such as the object under the mouse.
    void setReadout(const QString &text);

    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void makeTools(const QVector<Tool> &tools);
    void makeGroups();
    void makeRealizations();
    void countRealizations();
    void refreshActions();
    void dropViews(const std::function<bool(const View &)> &isLost);

    Workspace &mWorkspace;
    QVector<View *> mViews;
    Tool mTool = Tool::Rectangle;
    Group mGroup = Main;
    int mRealization = 0;
    int mRealizationCount = 1;
    QVBoxLayout *mLayout;
    QToolBar *mToolBar;
    QLabel *mReadout;
    QActionGroup *mTools;
    QActionGroup *mGroups;
    QSpinBox *mRealizations = nullptr;
    QAction *mRealizationTool = nullptr; ///< of mRealizations, in the tool bar
    QAction *mBack = nullptr;
    QAction *mForward = nullptr;
};

/// The objects that a weight set lists as neighbours of an object at a time, without the object
/// itself. Empty for an object without neighbours. To be called within Workspace::look().
QVector<unsigned int> neighborsOf(int weightSet, unsigned int object, qint64 time);

} // namespace meridor
