// SPDX-License-Identifier: MIT
#include "desk/window/scriptPlayer.h"
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QStyle>
#include <QTimer>
#include <QUrl>
#include <memory>
#include "core/analysis/weightSets.h"
#include "core/import/guessImport.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "desk/methods/method.h"
#include "desk/models/datasetMime.h"
#include "desk/project/workspace.h"
#include "desk/views/viewWindow.h"
#include "desk/window/logPanel.h"
#include "desk/window/mainWindow.h"
#include "desk/window/timeBar.h"
#include "desk/window/viewArea.h"

namespace meridor {
namespace {

constexpr int kRestBetweenSteps = 30; // milliseconds
constexpr int kMostWait = 600'000;

QString text(const char *source)
{
    return QCoreApplication::translate("Script", source);
}

QStringList stringsOf(const QJsonValue &value)
{
    QStringList strings;
    if (value.isString())
        strings.append(value.toString());
    for (const QJsonValue &each : value.toArray())
        strings.append(each.toString());
    return strings;
}

QPointF pointOf(const QJsonValue &value)
{
    const QJsonArray pair = value.toArray();
    if (pair.size() != 2 || !pair[0].isDouble() || !pair[1].isDouble())
        fail(text("a place is [x, y]"));
    return {pair[0].toDouble(), pair[1].toDouble()};
}

ImportOptions importOptions(const QJsonObject &step, const QString &file)
{
    ImportOptions options =
        guessImport(file, step.value(QStringLiteral("layer")).toString()).options;
    const std::pair<const char *, QString *> texts[] = {
        {"name", &options.name},         {"key", &options.key},
        {"start", &options.start},       {"end", &options.end},
        {"x", &options.xColumn},         {"y", &options.yColumn},
        {"crs", &options.projection},    {"times", &options.times},
        {"dataset", &options.dataset},   {"decimal", &options.decimal},
        {"encoding", &options.encoding}, {"realizations", &options.realizations}};
    for (const auto &[name, target] : texts)
        if (const QJsonValue value = step.value(QLatin1String(name)); value.isString())
            *target = value.toString();
    const std::pair<const char *, QStringList *> lists[] = {
        {"fields", &options.fields}, {"tables", &options.tables}, {"series", &options.series}};
    for (const auto &[name, target] : lists)
        if (step.contains(QLatin1String(name)))
            *target = stringsOf(step.value(QLatin1String(name)));
    options.bandsAreTimes =
        step.value(QStringLiteral("bandsAreTimes")).toBool(options.bandsAreTimes);
    return options;
}

class Player {
public:
    Player(MainWindow &window, Workspace &workspace, const MethodRegister &methods)
        : mWindow(window), mWorkspace(workspace), mMethods(methods)
    {
    }

    void play(const QJsonObject &step)
    {
        const QString what = step.value(QStringLiteral("do")).toString();
        const QHash<QString, void (Player::*)(const QJsonObject &)> steps{
            {QStringLiteral("open"), &Player::open},
            {QStringLiteral("sample"), &Player::sample},
            {QStringLiteral("import"), &Player::import},
            {QStringLiteral("form"), &Player::form},
            {QStringLiteral("view"), &Player::view},
            {QStringLiteral("drop"), &Player::drop},
            {QStringLiteral("select"), &Player::select},
            {QStringLiteral("time"), &Player::time},
            {QStringLiteral("brush"), &Player::brush},
            {QStringLiteral("hover"), &Player::hover},
            {QStringLiteral("zoom"), &Player::zoom},
            {QStringLiteral("classes"), &Player::classes},
            {QStringLiteral("realization"), &Player::realization},
            {QStringLiteral("method"), &Player::method},
            {QStringLiteral("link"), &Player::link},
            {QStringLiteral("unlink"), &Player::unlink},
            {QStringLiteral("action"), &Player::action},
            {QStringLiteral("properties"), &Player::properties},
            {QStringLiteral("rename"), &Player::rename},
            {QStringLiteral("duplicate"), &Player::duplicate},
            {QStringLiteral("remove"), &Player::remove},
            {QStringLiteral("export"), &Player::exportView},
            {QStringLiteral("report"), &Player::report},
            {QStringLiteral("log"), &Player::log},
            {QStringLiteral("save"), &Player::save},
            {QStringLiteral("close"), &Player::close},
            {QStringLiteral("wait"), &Player::wait}};
        const auto found = steps.constFind(what);
        if (found == steps.constEnd())
            fail(text("there is no step of this name"));
        QString trouble;
        const auto told = QObject::connect(&mWorkspace, &Workspace::told, &mWorkspace,
                                           [&trouble](const QString &said, bool isTrouble) {
                                               if (isTrouble)
                                                   trouble = said;
                                           });
        const auto end = [&told] { QObject::disconnect(told); };
        try {
            (this->**found)(step);
        } catch (...) {
            end();
            throw;
        }
        end();
        if (!trouble.isEmpty())
            fail(trouble);
    }

private:
    static QString stringOf(const QJsonObject &step, const char *name)
    {
        const QJsonValue value = step.value(QLatin1String(name));
        if (!value.isString())
            fail(text("it needs a text \"%1\"").arg(QLatin1String(name)));
        return value.toString();
    }

    /// The view of that number, from 1; the active one without a number.
    ViewWindow &viewOf(const QJsonObject &step) const
    {
        const QJsonValue number = step.value(QStringLiteral("view"));
        ViewWindow *const found = number.isDouble()
                                      ? mWindow.area().windows().value(number.toInt() - 1)
                                      : mWindow.area().active();
        if (!found)
            fail(text("there is no such view"));
        return *found;
    }

    View &currentOf(const QJsonObject &step) const
    {
        View *const view = viewOf(step).currentView();
        if (!view)
            fail(text("the window shows nothing"));
        return *view;
    }

    int geographyOf(const QJsonObject &step) const
    {
        const QJsonValue name = step.value(QStringLiteral("geography"));
        return name.isString() ? findGeography(name.toString()) : currentOf(step).geography();
    }

    static SelectionMode modeOf(const QJsonObject &step)
    {
        const QString mode = step.value(QStringLiteral("mode")).toString();
        if (mode == QLatin1String("add"))
            return SelectionMode::Add;
        if (mode == QLatin1String("toggle"))
            return SelectionMode::Toggle;
        if (!mode.isEmpty() && mode != QLatin1String("replace"))
            fail(text("a mode is \"replace\", \"add\" or \"toggle\""));
        return SelectionMode::Replace;
    }

    void open(const QJsonObject &step) { mWindow.openFile(stringOf(step, "file")); }
    void sample(const QJsonObject &) { mWindow.openSample(); }

    void import(const QJsonObject &step)
    {
        mWorkspace.import(importOptions(step, stringOf(step, "file")));
    }

    void form(const QJsonObject &step) { mWindow.importFile(stringOf(step, "file")); }

    void view(const QJsonObject &step) { mWindow.openView(viewRequestOf(step)); }

    void drop(const QJsonObject &step)
    {
        std::unique_ptr<QMimeData> data;
        if (const QJsonValue file = step.value(QStringLiteral("file")); file.isString()) {
            data = std::make_unique<QMimeData>();
            data->setUrls({QUrl::fromLocalFile(QFileInfo(file.toString()).absoluteFilePath())});
        } else {
            data.reset(mimeOf(findDataset(stringOf(step, "dataset"))));
        }
        QWidget &target = step.contains(QStringLiteral("view"))
                              ? static_cast<QWidget &>(viewOf(step))
                              : static_cast<QWidget &>(mWindow);
        const QPoint middle = target.rect().center();
        QDragEnterEvent enter(middle, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &enter);
        if (!enter.isAccepted())
            fail(text("it does not take this"));
        QDropEvent dropped(middle, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &dropped);
    }

    void select(const QJsonObject &step)
    {
        const int geography = geographyOf(step);
        QVector<unsigned int> objects;
        for (const QString &name : stringsOf(step.value(QStringLiteral("objects"))))
            objects.append(static_cast<unsigned int>(findObject(geography, name)));
        mWorkspace.selection().select(geography, objects, modeOf(step));
    }

    void time(const QJsonObject &step)
    {
        const int geography = geographyOf(step);
        const qint64 wanted = chooseTimeOf(geography, stringOf(step, "time"));
        ViewWindow *const active = mWindow.area().active();
        View *const view = active ? active->currentView() : nullptr;
        if (view && view->geography() == geography)
            view->goTo(wanted);
        else
            mWorkspace.setTime(geography, wanted);
    }

    /// A drag over the view's own widget, or a click if both ends are the same.
    void brush(const QJsonObject &step)
    {
        View &view = currentOf(step);
        const QPointF from = placeIn(view, step, "from");
        const QPointF to = step.contains(QStringLiteral("to")) ? placeIn(view, step, "to") : from;
        QPainterPath region;
        if (from == to)
            region.moveTo(from);
        else
            region.addRect(QRectF(from, to).normalized());
        view.brush(region, modeOf(step));
    }

    void hover(const QJsonObject &step)
    {
        View &view = currentOf(step);
        if (step.contains(QStringLiteral("object"))) {
            view.hover(findObject(view.geography(), stringOf(step, "object")));
            return;
        }
        const QPointF place = placeIn(view, step, "at");
        QWidget *const widget = view.widget();
        QMouseEvent move(QEvent::MouseMove, place, widget->mapToGlobal(place.toPoint()),
                         Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(widget, &move);
    }

    /// In parts of the widget's width and height, from the top left.
    static QPointF placeIn(const View &view, const QJsonObject &step, const char *name)
    {
        const QPointF place = pointOf(step.value(QLatin1String(name)));
        const QString unit = step.value(QStringLiteral("unit")).toString();
        if (unit == QLatin1String("pixels"))
            return place;
        if (!unit.isEmpty() && unit != QLatin1String("parts"))
            fail(text("a unit is \"parts\" or \"pixels\""));
        return {place.x() * view.widget()->width(), place.y() * view.widget()->height()};
    }

    void zoom(const QJsonObject &step)
    {
        ViewWindow &window = viewOf(step);
        const QString to = step.value(QStringLiteral("to")).toString();
        if (!to.isEmpty()) {
            trigger(window, to == QLatin1String("selection") ? QStringLiteral("zoomSelection")
                                                             : QStringLiteral("zoomAll"));
            return;
        }
        QJsonObject state = window.state();
        const QJsonValue extent = step.value(QStringLiteral("extent"));
        if (extent.toArray().size() != 4)
            fail(text("an extent is [left, low, right, high] in map units"));
        state.insert(QStringLiteral("extent"), extent);
        window.restore(state);
    }

    void classes(const QJsonObject &step)
    {
        ViewWindow &window = viewOf(step);
        QJsonObject state = window.state();
        QJsonArray layers = state.value(QStringLiteral("layers")).toArray();
        const int active = state.value(QStringLiteral("active")).toInt();
        if (active < 0 || active >= layers.size())
            fail(text("the view has no classes"));
        QJsonObject layer = layers[active].toObject();
        QJsonObject rule = layer.value(QStringLiteral("classes")).toObject();
        for (auto part = step.begin(); part != step.end(); ++part) {
            if (part.key() == QLatin1String("do") || part.key() == QLatin1String("view"))
                continue;
            if (part.key() == QLatin1String("allTimes"))
                layer.insert(part.key(), part.value());
            else
                rule.insert(part.key(), part.value());
        }
        layer.insert(QStringLiteral("classes"), rule);
        layers[active] = layer;
        state.insert(QStringLiteral("layers"), layers);
        window.restore(state);
    }

    void realization(const QJsonObject &step)
    {
        ViewWindow &window = viewOf(step);
        const int number = step.value(QStringLiteral("number")).toInt();
        if (number < 1 || number > window.realizationCount())
            fail(text("the view has the realizations 1 to %1").arg(window.realizationCount()));
        window.setRealization(number - 1);
    }

    void method(const QJsonObject &step)
    {
        const QString name = stringOf(step, "name");
        const Method *const found = mMethods.find(name);
        if (!found)
            fail(text("there is no method %1").arg(name));
        QVector<MethodParameter> parameters;
        const QJsonObject given = step.value(QStringLiteral("parameters")).toObject();
        for (auto parameter = given.begin(); parameter != given.end(); ++parameter)
            parameters.append({parameter.key(), parameter.value().toVariant()});
        if (step.value(QStringLiteral("show")).toBool()) {
            mWindow.showMethod(*found, parameters);
            return;
        }
        MethodReport report;
        mMethods.execute(mWorkspace, *found, parameters, report);
    }

    void link(const QJsonObject &step)
    {
        const QString group = step.value(QStringLiteral("group")).toString();
        viewOf(step).setGroup(group == QLatin1String("A")   ? ViewWindow::GroupA
                              : group == QLatin1String("B") ? ViewWindow::GroupB
                                                            : ViewWindow::Main);
    }

    void unlink(const QJsonObject &step) { viewOf(step).setGroup(ViewWindow::Alone); }

    static void trigger(QWidget &owner, const QString &name)
    {
        auto *const action = owner.findChild<QAction *>(name);
        if (!action)
            fail(text("there is no action %1").arg(name));
        if (!action->isEnabled())
            fail(text("%1 cannot be done now").arg(name));
        action->trigger();
    }

    void action(const QJsonObject &step)
    {
        const QString name = stringOf(step, "name");
        step.contains(QStringLiteral("view")) ? trigger(viewOf(step), name)
                                              : trigger(mWindow, name);
    }

    static Thing thingOf(const QJsonObject &step)
    {
        if (step.contains(QStringLiteral("weights")))
            return {Thing::WeightSet, findWeightSet(stringOf(step, "weights")), -1};
        if (step.contains(QStringLiteral("dataset")))
            return {Thing::Dataset, findDataset(stringOf(step, "dataset")), -1};
        return {Thing::Geography, findGeography(stringOf(step, "geography")), -1};
    }

    void properties(const QJsonObject &step) { mWindow.showProperties(thingOf(step)); }
    void rename(const QJsonObject &step)
    {
        renameThing(mWorkspace, thingOf(step), stringOf(step, "to"));
    }
    void duplicate(const QJsonObject &step) { duplicateThing(mWorkspace, thingOf(step)); }
    void remove(const QJsonObject &step) { removeThings(mWorkspace, {thingOf(step)}); }

    void exportView(const QJsonObject &step) { viewOf(step).exportTo(stringOf(step, "file")); }
    void report(const QJsonObject &step) { mWindow.writeReport(stringOf(step, "file")); }
    void log(const QJsonObject &step) { mWindow.logPanel().saveScript(stringOf(step, "file")); }

    void save(const QJsonObject &step)
    {
        const QString file = step.value(QStringLiteral("file")).toString();
        file.isEmpty() ? mWorkspace.save() : mWindow.saveAs(file);
    }

    /// A view, or the project without its changes.
    void close(const QJsonObject &step)
    {
        if (step.contains(QStringLiteral("view"))) {
            mWindow.area().activate(&viewOf(step));
            mWindow.area().closeActive();
            return;
        }
        const auto before = mWindow.askUnsaved;
        mWindow.askUnsaved = [] { return MainWindow::Unsaved::Discard; };
        trigger(mWindow, QStringLiteral("fileClose"));
        mWindow.askUnsaved = before;
    }

    void wait(const QJsonObject &step)
    {
        rest(qBound(0, step.value(QStringLiteral("milliseconds")).toInt(), kMostWait));
    }

    MainWindow &mWindow;
    Workspace &mWorkspace;
    const MethodRegister &mMethods;
};

} // namespace

QJsonArray stepsOfFile(const QString &path)
{
    requireReadable(path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("%1: %2").arg(path, file.errorString()));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError)
        fail(QStringLiteral("%1, byte %2: %3")
                 .arg(path, QString::number(error.offset), error.errorString()));
    if (!document.isArray())
        fail(text("%1: the steps are not a list").arg(path));
    return document.array();
}

void rest(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

void playSteps(MainWindow &window, Workspace &workspace, const MethodRegister &methods,
               const QJsonArray &steps)
{
    Player player(window, workspace, methods);
    for (int i = 0; i < steps.size(); ++i) {
        const QJsonObject step = steps[i].toObject();
        const QString place =
            text("step %1 (%2)").arg(i + 1).arg(step.value(QStringLiteral("do")).toString());
        try {
            player.play(step);
        } catch (const Failure &failure) {
            fail(QStringLiteral("%1: %2").arg(place, failure.text()));
        } catch (const std::exception &error) {
            fail(QStringLiteral("%1: %2").arg(place, QString::fromUtf8(error.what())));
        }
        rest(kRestBetweenSteps);
    }
}

void saveWindow(MainWindow &window, const QString &file)
{
    QPixmap picture = window.grab();
    QPainter painter(&picture);
    const int margin = window.fontMetrics().height();
    for (QWidget *const top : QApplication::topLevelWidgets()) {
        auto *const dialog = qobject_cast<QDialog *>(top);
        if (!dialog || !dialog->isVisible())
            continue;
        dialog->resize(dialog->size().boundedTo(window.size() - QSize(4 * margin, 4 * margin)));
        rest(0);
        const QRect place =
            QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, dialog->size(), window.rect());
        painter.drawPixmap(place, dialog->grab());
        painter.setPen(window.palette().color(QPalette::Mid));
        painter.drawRect(place);
    }
    painter.end();
    const bool isWritten = replaceFile(
        file, [&picture](const QString &beside) { return picture.save(beside, "PNG"); });
    if (!isWritten)
        fail(text("%1 could not be written").arg(file));
}

} // namespace meridor
