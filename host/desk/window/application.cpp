// SPDX-License-Identifier: MIT
#include "desk/window/application.h"
#include <QPalette>
#include <QStyleFactory>
#include <QTextCodec>
#include <algorithm>
#include <clocale>
#include <unistd.h>
#include "core/geostatistics/variogramModels.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/VersionAPI.h"
#include "desk/dialogs/methodDialog.h"
#include "desk/methods/method.h"
#include "desk/project/things.h"
#include "desk/project/workspace.h"
#include "desk/views/graphWindow.h"
#include "desk/views/mapWindow.h"
#include "desk/views/viewWindow.h"
#include "desk/window/mainWindow.h"
#include "desk/window/viewArea.h"

namespace meridor {

namespace {

/// An eighth of the memory: a grid that does not fit is read from the disk at each move of a map.
int cacheMegabytes()
{
    const double bytes =
        static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
    return static_cast<int>(std::clamp(bytes / 8 / (1 << 20), 64.0, 2000.0));
}

} // namespace

Application::Application(int &argc, char **argv) : QApplication(argc, argv)
{
    // The library converts file names to the local encoding, which in the C locale would lose
    // characters outside ASCII, and reads numbers with a point.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    std::setlocale(LC_NUMERIC, "C");
    setAttribute(Qt::AA_UseHighDpiPixmaps); // else icons are drawn at 100 % and enlarged
    setApplicationName(QStringLiteral("meridor-desk"));
    setApplicationVersion(QStringLiteral("%1.%2.%3")
                              .arg(productVersionNumber / 100000)
                              .arg(productVersionNumber / 1000 % 100)
                              .arg(productVersionNumber % 1000));
    setApplicationDisplayName(QStringLiteral("Meridor"));
    mMethods = std::make_unique<MethodRegister>();
    SessionOptions options;
    options.cacheMegabytes = cacheMegabytes();
    mWorkspace = std::make_unique<Workspace>(*this, options);
    mWindow = std::make_unique<MainWindow>(*mWorkspace, *mMethods);
}

Application::~Application()
{
    mWindow.reset(); // views are closed while the library still runs
    mWorkspace.reset();
}

void Application::setDark()
{
    setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette colors;
    const QColor ground(43, 45, 48);
    const QColor field(30, 31, 34);
    const QColor text(223, 225, 229);
    const QColor faint(130, 133, 140);
    const QColor mark(53, 116, 240);
    colors.setColor(QPalette::Window, ground);
    colors.setColor(QPalette::WindowText, text);
    colors.setColor(QPalette::Base, field);
    colors.setColor(QPalette::AlternateBase, ground);
    colors.setColor(QPalette::Text, text);
    colors.setColor(QPalette::PlaceholderText, faint);
    colors.setColor(QPalette::Button, QColor(57, 59, 64));
    colors.setColor(QPalette::ButtonText, text);
    colors.setColor(QPalette::BrightText, Qt::white);
    colors.setColor(QPalette::Highlight, mark);
    colors.setColor(QPalette::HighlightedText, Qt::white);
    colors.setColor(QPalette::Link, QColor(107, 155, 250));
    colors.setColor(QPalette::ToolTipBase, QColor(67, 69, 74));
    colors.setColor(QPalette::ToolTipText, text);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        colors.setColor(QPalette::Disabled, role, faint);
    setPalette(colors);
}

namespace {

/// Marks that a widget is being painted, for the length of a scope.
class Painting {
public:
    Painting(Workspace *workspace, const QEvent &event)
        : mWorkspace(event.type() == QEvent::Paint ? workspace : nullptr),
          mWasPainting(mWorkspace && mWorkspace->isPainting())
    {
        if (mWorkspace)
            mWorkspace->setPainting(true);
    }
    ~Painting()
    {
        if (mWorkspace)
            mWorkspace->setPainting(mWasPainting);
    }
    Painting(const Painting &) = delete;
    Painting &operator=(const Painting &) = delete;

private:
    Workspace *mWorkspace;
    bool mWasPainting;
};

} // namespace

bool Application::notify(QObject *receiver, QEvent *event)
{
    const Painting painting(mWorkspace.get(), *event);
    QString trouble;
    try {
        return QApplication::notify(receiver, event);
    } catch (const Failure &failure) {
        trouble = failure.text();
    } catch (const std::exception &error) {
        trouble = QString::fromUtf8(error.what());
    }
    if (mWorkspace)
        mWorkspace->tell(trouble, true);
    return true;
}

namespace {

const Method *methodOf(const MethodRegister &methods, int number, const QString &name)
{
    const Method *const named = methods.find(name);
    return named ? named : methods.find(number);
}

} // namespace

int Application::ShowMethod(int method, const QString &name,
                            const QVector<MethodParameter> &parameters)
{
    const Method *const found = methodOf(*mMethods, method, name);
    if (!found)
        return -1;
    mWindow->showMethod(*found, parameters);
    return mMethods->numberOf(found->name);
}

bool Application::ExecuteMethod(int method, const QString &name,
                                const QVector<MethodParameter> &parameters, MethodReport &report)
{
    const Method *const found = methodOf(*mMethods, method, name);
    return found && mMethods->execute(*mWorkspace, *found, parameters, report);
}

QString Application::GetDatasetPropertiesStringForCurrentMethod()
{
    const auto dialogs = mWindow->findChildren<MethodDialog *>();
    if (dialogs.isEmpty())
        return QString();
    QStringList texts;
    for (const MethodParameter &parameter : dialogs.last()->form().parameters())
        if (parameter.name == QLatin1String("dataset"))
            if (const Thing dataset{Thing::Dataset, parameter.value.toInt(), -1};
                !nameOf(dataset).isEmpty())
                texts.append(QStringLiteral("%1: %2").arg(nameOf(dataset), summaryOf(dataset)));
    return texts.join(QLatin1Char('\n'));
}

QString Application::GetMethodName(int method, const QString &name)
{
    const Method *const found = methodOf(*mMethods, method, name);
    return found ? found->title : QString();
}

QString Application::GetInvocationStringForMethod(int method, const QString &name,
                                                  const QVector<MethodParameter> &parameters)
{
    const Method *const found = methodOf(*mMethods, method, name);
    return found ? mMethods->invocation(*mWorkspace, *found, parameters) : QString();
}

// The two flags of the dialogs have no meaning here.
void Application::ShowSpatialWeightSetDialog(int geographyId, bool, bool)
{
    if (const Method *const method = mMethods->find(QStringLiteral("weights")))
        mWindow->showMethod(*method, {{QStringLiteral("geography"), geographyId}});
}

// The library makes the model of numbers without structures: those of a stored model of this name are
// shown, if there is one.
void Application::ShowVariogramModelDialog(VariogramModel &model, bool, int, bool)
{
    const int owner = datasetOf(model.dataset) ? static_cast<int>(model.dataset) : -1;
    VariogramModel shown = model;
    if (model.centroidModels.isEmpty() && modelNames(owner).contains(model.name))
        modelAt(placeOfModel(owner, model.name), shown);
    mWindow->showModel(owner, &shown);
}

ViewWindow *Application::viewWindow(int number) const
{
    return mViewWindows.value(number);
}

int Application::enter(ViewWindow *window, const ViewRequest &request)
{
    if (!window)
        return 0;
    mWindow->adopt(window, request);
    const int number = mNextWindow++;
    mViewWindows.insert(number, window);
    return number;
}

int Application::CreateMapWindow(int dataId, qint64 t, const QString &title,
                                 const ColorSchemeInfo &fill, const ColorSchemeInfo &line,
                                 const SymbolSchemeInfo &symbols)
{
    auto window = std::make_unique<MapWindow>(*mWorkspace);
    if (!window->addLayer(dataId, fill, line, symbols))
        return 0;
    window->setOwnTitle(title);
    ViewRequest request;
    request.datasets = {dataId};
    MapWindow *const shown = window.release();
    const int number = enter(shown, request);
    SyncViews({number}, t);
    return number;
}

bool Application::CreateMapLayer(int window, int dataId, const ColorSchemeInfo &fill,
                                 const ColorSchemeInfo &line, const SymbolSchemeInfo &symbols)
{
    auto *const map = qobject_cast<MapWindow *>(viewWindow(window));
    return map && map->addLayer(dataId, fill, line, symbols);
}

void Application::SyncViews(QList<int> windows, qint64 t)
{
    for (const int number : windows) {
        ViewWindow *const window = viewWindow(number);
        if (!window)
            continue;
        const QVector<View *> views = window->views();
        for (View *const view : views)
            view->goTo(t);
    }
}

bool Application::ShowSpatialWeightsInMap(int window, int weightSet, int object)
{
    auto *const map = qobject_cast<MapWindow *>(viewWindow(window));
    return map && map->showWeights(weightSet, object);
}

int Application::CreateGraphWindow(GraphTypes type, const QVector<int> &dataIds, qint64 t,
                                   const QString &title, const ColorSchemeInfo &colors,
                                   const QPointF *points, const QRectF *bounds)
{
    ViewRequest request;
    request.kind = type == GT_ScatterPlot ? ViewKind::Scatter
                   : type == GT_BoxPlot   ? ViewKind::BoxPlot
                   : type == GT_Histogram ? ViewKind::Histogram
                                          : ViewKind::TimePlot;
    request.datasets = dataIds;
    return enter(openGraph(*mWorkspace, type, dataIds, t, title, colors, points, bounds), request);
}

bool Application::GenerateVariogramModel(VariogramModel &model, const DataId &dataset,
                                         const Interval &interval,
                                         VariogramModel::EstimatorTypes estimator,
                                         const DataId &locations, int lagCount, bool flagA,
                                         double parameter, bool flagB)
{
    bool isFitted = false;
    mWorkspace->look([&] {
        isFitted = ProjectHost::GenerateVariogramModel(
            model, dataset, interval, estimator, locations, lagCount, flagA, parameter, flagB);
    });
    return isFitted;
}

void Application::ShowHelpTopic(const char *topic)
{
    mWindow->showHelp(QString::fromUtf8(topic));
}

void Application::MarkProjectClean()
{
    ProjectHost::MarkProjectClean();
    if (mWorkspace)
        mWorkspace->markClean();
}

int Application::AddNewVectorGeography(const QString &fileName, const QString &name,
                                       const QString &history, TimeFormat format, int parentId,
                                       const QVector<int> *parentObjectIds)
{
    const int made = ProjectHost::AddNewVectorGeography(fileName, name, history, format, parentId,
                                                        parentObjectIds);
    if (mWorkspace)
        mWorkspace->meetSoon();
    return made;
}

int Application::AddNewRasterGeography(const QString &name, unsigned int rows, unsigned int columns,
                                       const QRectF &bounds, const TimeStamp &stamp,
                                       TimeFormat format, const QString &history,
                                       const QString &projection)
{
    const int made = ProjectHost::AddNewRasterGeography(name, rows, columns, bounds, stamp, format,
                                                        history, projection);
    if (mWorkspace)
        mWorkspace->meetSoon();
    return made;
}

void Application::MarkProjectDirty()
{
    ProjectHost::MarkProjectDirty();
    if (mWorkspace)
        mWorkspace->markDirty();
}

void Application::RemoveGeography(int id)
{
    if (mWorkspace)
        mWorkspace->geographyDies(id);
    ProjectHost::RemoveGeography(id);
}

} // namespace meridor
