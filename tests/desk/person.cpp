// SPDX-License-Identifier: MIT
#include "desk/person.h"
#include <QDragEnterEvent>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <QWheelEvent>
#include "core/analysis/weightSets.h"
#include "desk/project/workspace.h"

namespace meridor {
namespace {

QtMessageHandler gHandler = nullptr; ///< that of QTest

void showOthers(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (gHandler && !text.contains(QLatin1String("does not support propagateSizeHints")))
        gHandler(type, context, text);
}

void send(QWidget &widget, QEvent::Type type, const QPointF &place, Qt::MouseButton button,
          Qt::MouseButtons held, Qt::KeyboardModifiers keys)
{
    QMouseEvent event(type, place, widget.mapToGlobal(place.toPoint()), button, held, keys);
    QApplication::sendEvent(&widget, &event);
}

} // namespace

OwnHome::OwnHome()
{
    for (const char *const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qputenv(name, mFolder.path().toUtf8());
    QDir(mFolder.path()).mkdir(QStringLiteral("meridor"));
    QFile settings(mFolder.filePath(QStringLiteral("meridor/meridor-desk.ini")));
    if (settings.open(QIODevice::WriteOnly))
        settings.write("[General]\nrecoverySeconds=0\n");
}

void muteSizeHints()
{
    const QtMessageHandler present = qInstallMessageHandler(showOthers);
    if (present != showOthers)
        gHandler = present;
}

bool activate(QWidget &window)
{
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window, kPatience);
}

void settle()
{
    bool isDue = false;
    QTimer::singleShot(0, [&isDue] { isDue = true; });
    QTRY_VERIFY_WITH_TIMEOUT(isDue, kPatience);
}

void type(QWidget &widget, Qt::Key key, Qt::KeyboardModifiers keys)
{
    QVERIFY(activate(*widget.window()));
    widget.setFocus();
    QTest::keyClick(&widget, key, keys);
}

void drag(QWidget &widget, const QVector<QPointF> &places, Qt::KeyboardModifiers keys,
          Qt::MouseButton button)
{
    send(widget, QEvent::MouseButtonPress, places.first(), button, button, keys);
    for (const QPointF &place : places)
        send(widget, QEvent::MouseMove, place, Qt::NoButton, button, keys);
    send(widget, QEvent::MouseButtonRelease, places.last(), button, Qt::NoButton, keys);
}

void click(QWidget &widget, const QPointF &place, Qt::KeyboardModifiers keys)
{
    send(widget, QEvent::MouseButtonPress, place, Qt::LeftButton, Qt::LeftButton, keys);
    send(widget, QEvent::MouseButtonRelease, place, Qt::LeftButton, Qt::NoButton, keys);
}

void pointAt(QWidget &widget, const QPointF &place)
{
    send(widget, QEvent::MouseMove, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
}

void turnWheel(QWidget &widget, const QPointF &place, int clicks)
{
    QWheelEvent event(place, widget.mapToGlobal(place.toPoint()), QPoint(), QPoint(0, 120 * clicks),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
}

bool drop(QWidget &widget, const QMimeData &data)
{
    const QPoint place = widget.rect().center();
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&widget, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&widget, &event);
    settle();
    return event.isAccepted();
}

bool withFileName(const QString &file, const std::function<void()> &ask)
{
    bool isAsked = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        auto *const name = dialog ? dialog->findChild<QLineEdit *>() : nullptr;
        if (!name)
            return;
        watch.stop();
        isAsked = true;
        name->setText(file);
        dialog->metaObject()->invokeMethod(dialog, "accept");
    });
    watch.start(10);
    ask();
    return isAsked;
}

int makeQueen(Workspace &workspace, int geography)
{
    int set = -1;
    workspace.look([&] {
        WeightSetPlan plan;
        plan.name = plan.method = QStringLiteral("queen");
        plan.weights = QStringLiteral("row");
        set = createWeightSet(geography, plan);
    });
    return set;
}

QString text(const QVector<unsigned int> &objects)
{
    QStringList texts;
    for (const unsigned int object : objects)
        texts.append(QString::number(object));
    return texts.join(QLatin1Char(' '));
}

} // namespace meridor
