// SPDX-License-Identifier: MIT
#include "desk/window/scriptPlayer.h"
#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QDialog>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QEventLoop>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QStyle>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <memory>
#include "core/analysis/weightSets.h"
#include "core/geostatistics/variogramModels.h"
#include "core/import/guessImport.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "desk/methods/method.h"
#include "desk/models/datasetMime.h"
#include "desk/project/workspace.h"
#include "desk/views/graphView.h"
#include "desk/views/mapLayerView.h"
#include "desk/views/tableView.h"
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

/// A text member; empty if the step has none.
QString optionalText(const QJsonObject &step, const char *name)
{
    const QJsonValue value = step.value(QLatin1String(name));
    if (!value.isString() && !value.isUndefined())
        fail(text("\"%1\" is a text").arg(QLatin1String(name)));
    return value.toString();
}

QString stringOf(const QJsonObject &step, const char *name)
{
    if (!step.contains(QLatin1String(name)))
        fail(text("it needs a text \"%1\"").arg(QLatin1String(name)));
    return optionalText(step, name);
}

bool flagOf(const QJsonObject &step, const char *name, bool present)
{
    const QJsonValue value = step.value(QLatin1String(name));
    if (!value.isBool() && !value.isUndefined())
        fail(text("\"%1\" is true or false").arg(QLatin1String(name)));
    return value.toBool(present);
}

/// The texts of a list, or a single text.
QStringList stringsOf(const QJsonObject &step, const char *name)
{
    const QJsonValue value = step.value(QLatin1String(name));
    QStringList strings;
    if (value.isString())
        strings.append(value.toString());
    for (const QJsonValue &each : value.toArray())
        if (each.isString())
            strings.append(each.toString());
    if (strings.isEmpty() ? !value.isArray()
                          : value.isArray() && strings.size() != value.toArray().size())
        fail(text("\"%1\" is a list of texts").arg(QLatin1String(name)));
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
    ImportOptions options = guessImport(file, optionalText(step, "layer")).options;
    const std::pair<const char *, QString *> texts[] = {
        {"name", &options.name},         {"key", &options.key},
        {"start", &options.start},       {"end", &options.end},
        {"x", &options.xColumn},         {"y", &options.yColumn},
        {"crs", &options.projection},    {"times", &options.times},
        {"dataset", &options.dataset},   {"decimal", &options.decimal},
        {"encoding", &options.encoding}, {"realizations", &options.realizations}};
    for (const auto &[name, target] : texts)
        if (step.contains(QLatin1String(name)))
            *target = stringOf(step, name);
    const std::pair<const char *, QStringList *> lists[] = {
        {"fields", &options.fields}, {"tables", &options.tables}, {"series", &options.series}};
    for (const auto &[name, target] : lists)
        if (step.contains(QLatin1String(name)))
            *target = stringsOf(step, name);
    options.bandsAreTimes = flagOf(step, "bandsAreTimes", options.bandsAreTimes);
    return options;
}

/// What a view shows in place of its picture; empty if it has one.
QString troubleOf(const View &view)
{
    if (const auto *const graph = dynamic_cast<const GraphView *>(&view))
        return graph->trouble();
    if (const auto *const layer = dynamic_cast<const MapLayerView *>(&view))
        return layer->trouble();
    if (const auto *const table = dynamic_cast<const TableView *>(&view))
        return table->trouble();
    return QString();
}

/// Answers what a step asks the user, which no script can: the question is closed, and the step
/// fails. Lives while a step is played.
class Questions {
public:
    explicit Questions(MainWindow &window) : mWindow(window), mBefore(window.askUnsaved)
    {
        mWindow.askUnsaved = [this] { return stay(); };
        QObject::connect(&mTimer, &QTimer::timeout, [this] { closeDialog(); });
        mTimer.start(kRestBetweenSteps);
    }
    ~Questions() { mWindow.askUnsaved = mBefore; }
    Questions(const Questions &) = delete;
    Questions &operator=(const Questions &) = delete;
    /// Empty if nothing was asked.
    const QString &asked() const { return mAsked; }

private:
    MainWindow::Unsaved stay()
    {
        mAsked = text("the project has changes; save or close it first");
        return MainWindow::Unsaved::Stay;
    }
    /// The dialog of progress is no question.
    void closeDialog()
    {
        QWidget *const modal = QApplication::activeModalWidget();
        if (!qobject_cast<QMessageBox *>(modal) && !qobject_cast<QFileDialog *>(modal))
            return;
        mAsked = text("it asks \"%1\", which a script cannot answer").arg(modal->windowTitle());
        static_cast<QDialog *>(modal)->reject();
    }

    MainWindow &mWindow;
    const std::function<MainWindow::Unsaved()> mBefore;
    QTimer mTimer;
    QString mAsked;
};

class Player {
public:
    Player(MainWindow &window, Workspace &workspace, const MethodRegister &methods)
        : mWindow(window), mWorkspace(workspace), mMethods(methods)
    {
    }

    /// Plays a step and waits a moment, in which a window does what it left for later. Raises a
    /// Failure if the step is refused, also if the user is merely told so.
    void play(const QJsonObject &step)
    {
        const Step &found = stepOf(step);
        QString trouble;
        QObject listener;
        QObject::connect(&mWorkspace, &Workspace::told, &listener,
                         [&trouble](const QString &said, bool isTrouble) {
                             if (isTrouble)
                                 trouble = said;
                         });
        const Questions questions(mWindow);
        try {
            (this->*found.play)(step);
            rest(kRestBetweenSteps);
        } catch (const Failure &) {
            if (trouble.isEmpty() && questions.asked().isEmpty())
                throw;
        }
        if (!questions.asked().isEmpty())
            fail(questions.asked());
        if (!trouble.isEmpty())
            fail(trouble);
    }

private:
    struct Step {
        void (Player::*play)(const QJsonObject &);
        const char *members; ///< names besides "do", separated by blanks; null: any
    };

    static const Step &stepOf(const QJsonObject &step)
    {
        static const QHash<QString, Step> steps{
            {QStringLiteral("open"), {&Player::open, "file"}},
            {QStringLiteral("sample"), {&Player::sample, ""}},
            {QStringLiteral("import"),
             {&Player::import, "file layer name key start end x y crs times fields tables series "
                               "dataset decimal encoding realizations bandsAreTimes"}},
            {QStringLiteral("form"), {&Player::form, "file"}},
            {QStringLiteral("view"), {&Player::view, "kind datasets geography weights"}},
            {QStringLiteral("drop"), {&Player::drop, "file dataset view"}},
            {QStringLiteral("select"), {&Player::select, "objects geography view mode"}},
            {QStringLiteral("time"), {&Player::time, "time geography view"}},
            {QStringLiteral("brush"), {&Player::brush, "from to unit mode view"}},
            {QStringLiteral("hover"), {&Player::hover, "at object unit view"}},
            {QStringLiteral("zoom"), {&Player::zoom, "to extent view"}},
            {QStringLiteral("classes"),
             {&Player::classes, "method count limits palette reversed allTimes view"}},
            {QStringLiteral("realization"), {&Player::realization, "number view"}},
            {QStringLiteral("method"), {&Player::method, "name parameters show"}},
            {QStringLiteral("model"), {&Player::model, "model dataset"}},
            {QStringLiteral("link"), {&Player::link, "group view"}},
            {QStringLiteral("unlink"), {&Player::unlink, "view"}},
            {QStringLiteral("action"), {&Player::action, "name view"}},
            {QStringLiteral("properties"),
             {&Player::properties, "dataset weights model geography"}},
            {QStringLiteral("describe"), {&Player::describe, "dataset geography summary history"}},
            {QStringLiteral("rename"), {&Player::rename, "dataset weights model geography to"}},
            {QStringLiteral("duplicate"), {&Player::duplicate, "dataset geography weights model"}},
            {QStringLiteral("remove"), {&Player::remove, "dataset weights model geography"}},
            {QStringLiteral("export"), {&Player::exportView, "file view"}},
            {QStringLiteral("report"), {&Player::report, "file"}},
            {QStringLiteral("log"), {&Player::log, "file"}},
            {QStringLiteral("save"), {&Player::save, "file"}},
            {QStringLiteral("close"), {&Player::close, "view"}},
            {QStringLiteral("wait"), {&Player::wait, "milliseconds"}}};
        const auto found = steps.constFind(step.value(QStringLiteral("do")).toString());
        if (found == steps.constEnd())
            fail(text("there is no step of this name"));
        const QStringList members = QString::fromLatin1(found->members).split(QLatin1Char(' '));
        for (const QString &name : step.keys())
            if (name != QLatin1String("do") && !members.contains(name))
                fail(text("it has no member \"%1\"").arg(name));
        return *found;
    }

    /// The view of that number, from 1; the active one without a number.
    ViewWindow &viewOf(const QJsonObject &step) const
    {
        const QJsonValue number = step.value(QStringLiteral("view"));
        if (!number.isDouble() && !number.isUndefined())
            fail(text("\"view\" is the number of a view"));
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
        return step.contains(QStringLiteral("geography"))
                   ? findGeography(stringOf(step, "geography"))
                   : currentOf(step).geography();
    }

    static SelectionMode modeOf(const QJsonObject &step)
    {
        const QString mode = optionalText(step, "mode");
        if (mode == QLatin1String("add"))
            return SelectionMode::Add;
        if (mode == QLatin1String("toggle"))
            return SelectionMode::Toggle;
        if (!mode.isEmpty() && mode != QLatin1String("replace"))
            fail(text("a mode is \"replace\", \"add\" or \"toggle\""));
        return SelectionMode::Replace;
    }

    /// Raises a Failure if a step was not done. What the user was told is the better reason.
    static void require(bool isDone)
    {
        if (!isDone)
            fail(text("it was refused"));
    }

    void open(const QJsonObject &step) { mWindow.openFile(stringOf(step, "file")); }
    void sample(const QJsonObject &) { require(mWindow.openSample()); }

    void import(const QJsonObject &step)
    {
        require(mWorkspace.import(importOptions(step, stringOf(step, "file"))) >= 0);
    }

    void form(const QJsonObject &step) { require(mWindow.importFile(stringOf(step, "file"))); }

    void view(const QJsonObject &step)
    {
        if (step.contains(QStringLiteral("datasets")))
            stringsOf(step, "datasets");
        require(mWindow.openView(viewRequestOf(step)));
    }

    void drop(const QJsonObject &step)
    {
        const bool isFile = step.contains(QStringLiteral("file"));
        const int dataset = isFile ? -1 : findDataset(stringOf(step, "dataset"));
        std::unique_ptr<QMimeData> data;
        if (isFile) {
            const QString file = QFileInfo(stringOf(step, "file")).absoluteFilePath();
            data = std::make_unique<QMimeData>();
            data->setUrls({QUrl::fromLocalFile(file)});
        } else {
            data.reset(mimeOf(dataset));
        }
        ViewWindow *const view = step.contains(QStringLiteral("view")) ? &viewOf(step) : nullptr;
        if (view && isFile)
            fail(text("a file is dropped on the window, not on a view"));
        if (const QString why = view ? view->refusal(dataset) : QString(); !why.isEmpty())
            fail(why);
        QWidget &target = view ? static_cast<QWidget &>(*view) : static_cast<QWidget &>(mWindow);
        const QPoint middle = target.rect().center();
        QDragEnterEvent enter(middle, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &enter);
        if (!enter.isAccepted())
            fail(text("it does not take this"));
        QDropEvent dropped(middle, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &dropped);
        if (!view)
            return;
        const QVector<View *> views = view->views();
        const auto shown = std::find_if(views.begin(), views.end(), [dataset](const View *each) {
            return each->datasets().contains(dataset);
        });
        if (shown == views.end())
            fail(text("the view does not show %1").arg(datasetName(dataset)));
        if (const QString trouble = troubleOf(**shown); !trouble.isEmpty())
            fail(trouble);
    }

    void select(const QJsonObject &step)
    {
        const int geography = geographyOf(step);
        QVector<unsigned int> objects;
        for (const QString &name : stringsOf(step, "objects"))
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
        const QString unit = optionalText(step, "unit");
        if (unit == QLatin1String("pixels"))
            return place;
        if (!unit.isEmpty() && unit != QLatin1String("parts"))
            fail(text("a unit is \"parts\" or \"pixels\""));
        return {place.x() * view.widget()->width(), place.y() * view.widget()->height()};
    }

    void zoom(const QJsonObject &step)
    {
        ViewWindow &window = viewOf(step);
        if (const QString to = optionalText(step, "to"); !to.isEmpty()) {
            if (to != QLatin1String("all") && to != QLatin1String("selection"))
                fail(text("a zoom is to \"all\" or \"selection\""));
            trigger(window, to == QLatin1String("selection") ? QStringLiteral("zoomSelection")
                                                             : QStringLiteral("zoomAll"));
            return;
        }
        QJsonObject state = window.state();
        if (!state.contains(QStringLiteral("layers")))
            fail(text("only a map has an extent"));
        const QJsonArray extent = step.value(QStringLiteral("extent")).toArray();
        const bool areNumbers = std::all_of(extent.begin(), extent.end(),
                                            [](const QJsonValue &each) { return each.isDouble(); });
        if (extent.size() != 4 || !areNumbers || !(extent[0].toDouble() < extent[2].toDouble())
            || !(extent[1].toDouble() < extent[3].toDouble()))
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
        optionalText(step, "method");
        optionalText(step, "palette");
        for (const char *const name : {"reversed", "allTimes"})
            flagOf(step, name, false);
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
        const QJsonObject shown = window.state()
                                      .value(QStringLiteral("layers"))
                                      .toArray()
                                      .at(active)
                                      .toObject()
                                      .value(QStringLiteral("classes"))
                                      .toObject();
        for (const QString &name : rule.keys())
            if (shown.value(name) != rule.value(name))
                fail(text("\"%1\" cannot be that").arg(name));
        if (const View *const view = window.currentView())
            if (const QString trouble = troubleOf(*view); !trouble.isEmpty())
                fail(trouble);
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
        const QJsonValue given = step.value(QStringLiteral("parameters"));
        if (!given.isObject() && !given.isUndefined())
            fail(text("\"parameters\" are an object"));
        const QJsonObject values = given.toObject();
        for (auto parameter = values.begin(); parameter != values.end(); ++parameter)
            parameters.append({parameter.key(), parameter.value().toVariant()});
        if (flagOf(step, "show", false)) {
            mWindow.showMethod(*found, parameters);
            return;
        }
        MethodReport report;
        require(mMethods.execute(mWorkspace, *found, parameters, report));
    }

    /// The dialog of a model, or of a new one of a dataset.
    void model(const QJsonObject &step)
    {
        const QString dataset = optionalText(step, "dataset");
        if (step.contains(QStringLiteral("model")) || dataset.isEmpty())
            mWindow.editModel(step.contains(QStringLiteral("model")) ? thingOf(step) : Thing());
        else
            mWindow.showModel(findDataset(dataset), nullptr);
    }

    void link(const QJsonObject &step)
    {
        const QString group = optionalText(step, "group");
        if (!QStringList{QString(), QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("all")}
                 .contains(group))
            fail(text("a group is \"A\", \"B\" or \"all\""));
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
        const QString dataset = optionalText(step, "dataset");
        if (step.contains(QStringLiteral("model"))) {
            const ModelPlace place = placeOfModel(dataset.isEmpty() ? -1 : findDataset(dataset),
                                                  stringOf(step, "model"));
            return {Thing::Model, place.id, place.dataset};
        }
        if (step.contains(QStringLiteral("weights")))
            return {Thing::WeightSet, findWeightSet(stringOf(step, "weights")), -1};
        if (!dataset.isEmpty())
            return {Thing::Dataset, findDataset(dataset), -1};
        return {Thing::Geography, findGeography(stringOf(step, "geography")), -1};
    }

    void properties(const QJsonObject &step) { mWindow.showProperties(thingOf(step)); }

    void describe(const QJsonObject &step)
    {
        const Thing thing = thingOf(step);
        if (thing.kind == Thing::Geography && step.contains(QStringLiteral("summary")))
            fail(text("a geography has a history alone"));
        Description description = descriptionOf(thing);
        if (step.contains(QStringLiteral("summary")))
            description.summary = stringOf(step, "summary");
        if (step.contains(QStringLiteral("history")))
            description.history = stringOf(step, "history");
        require(describeThing(mWorkspace, thing, description));
    }

    void rename(const QJsonObject &step)
    {
        require(renameThing(mWorkspace, thingOf(step), stringOf(step, "to")));
    }
    void duplicate(const QJsonObject &step)
    {
        require(duplicateThing(mWorkspace, thingOf(step)).kind != Thing::None);
    }
    void remove(const QJsonObject &step) { require(removeThings(mWorkspace, {thingOf(step)})); }

    void exportView(const QJsonObject &step)
    {
        require(viewOf(step).exportTo(stringOf(step, "file")));
    }
    void report(const QJsonObject &step) { require(mWindow.writeReport(stringOf(step, "file"))); }
    void log(const QJsonObject &step)
    {
        require(mWindow.logPanel().saveScript(stringOf(step, "file")));
    }

    void save(const QJsonObject &step)
    {
        const QString file = optionalText(step, "file");
        require(file.isEmpty() ? mWorkspace.save() : mWindow.saveAs(file));
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
        const double time = step.value(QStringLiteral("milliseconds")).toDouble(-1);
        if (!(time >= 0 && time <= kMostWait))
            fail(text("it waits 0 to %1 milliseconds").arg(kMostWait));
        rest(static_cast<int>(time));
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
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); // see Questions
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
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!picture.save(&buffer, "PNG"))
        throw std::bad_alloc();
    writeOutput(file, [&](QIODevice &out) { writeWhole(out, bytes, file); });
}

} // namespace meridor
