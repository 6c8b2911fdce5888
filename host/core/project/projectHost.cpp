// SPDX-License-Identifier: MIT
#include "core/project/projectHost.h"
#include <memory>
#include "datainterface/MGeoData.h"

namespace meridor {

void HostController::decline(const QString &what) const
{
    mConsole.note(what + QStringLiteral(" needs a window; a terminal has none"));
}

int HostController::ShowMethod(int, const QString &name, const QVector<MethodParameter> &)
{
    decline(QStringLiteral("method ") + name);
    return -1;
}

bool HostController::ExecuteMethod(int, const QString &name, const QVector<MethodParameter> &,
                                   MethodReport &report)
{
    report = MethodReport();
    mConsole.note(QStringLiteral("method %1 is not one of this program").arg(name));
    return false;
}

QString HostController::GetDatasetPropertiesStringForCurrentMethod()
{
    return QString(); // no method is ever open
}

void HostController::ShowSpatialWeightSetDialog(int, bool, bool)
{
    decline(QStringLiteral("the dialog of weight sets"));
}

void HostController::ShowVariogramModelDialog(VariogramModel &, bool, int, bool)
{
    decline(QStringLiteral("the dialog of variogram models"));
}

int HostController::CreateMapWindow(int dataId, qint64 t, const QString &title,
                                    const ColorSchemeInfo &fill, const ColorSchemeInfo &,
                                    const SymbolSchemeInfo &)
{
    const MapView view{dataId, t, title, fill};
    if (!painter || !painter(view))
        return 0;
    const int number = mViews.isEmpty() ? 1 : mViews.lastKey() + 1;
    mViews.insert(number, view);
    return number;
}

bool HostController::CreateMapLayer(int, int, const ColorSchemeInfo &, const ColorSchemeInfo &,
                                    const SymbolSchemeInfo &)
{
    decline(QStringLiteral("a second layer"));
    return false;
}

void HostController::SyncViews(QList<int> windows, qint64 t)
{
    for (const int window : windows) {
        const auto view = mViews.find(window);
        if (view == mViews.end() || !painter)
            continue;
        view->time = t;
        painter(*view);
    }
}

bool HostController::ShowSpatialWeightsInMap(int, int, int)
{
    decline(QStringLiteral("a map of weights"));
    return false;
}

int HostController::CreateGraphWindow(GraphTypes, const QVector<int> &, qint64,
                                      const QString &title, const ColorSchemeInfo &,
                                      const QPointF *, const QRectF *)
{
    decline(QStringLiteral("the graph ") + title);
    return 0;
}

bool HostController::GenerateVariogramModel(VariogramModel &, const DataId &, const Interval &,
                                            VariogramModel::EstimatorTypes, const DataId &, int,
                                            bool, double, bool)
{
    mConsole.note(QStringLiteral("variogram models are not estimated by this program"));
    return false;
}

void HostController::AddToLog(const QString &text, bool)
{
    mLog.append(text);
    const QString prefix = QStringLiteral("Note: "); // the console has its own
    mConsole.note(text.startsWith(prefix) ? text.mid(prefix.size()) : text);
}

void HostController::ShowHelpTopic(const char *topic)
{
    mConsole.note(QStringLiteral("help on %1: meridor --help").arg(QString::fromUtf8(topic)));
}

QString HostController::GetInvocationStringForMethod(int, const QString &,
                                                     const QVector<MethodParameter> &)
{
    return QString(); // no method, no call
}

QString HostController::GetMethodName(int, const QString &name)
{
    return name;
}

int HostController::AddNewVectorGeography(const QString &fileName, const QString &name,
                                          const QString &history, TimeFormat format, int parentId,
                                          const QVector<int> *parentObjectIds)
{
    const int id = ControllerBase::AddNewVectorGeography(fileName, name, history, format, parentId,
                                                         parentObjectIds);
    if (id >= 0 && parentObjectIds) {
        GetGeoData()[id]->SetParentId(parentId);
        GetGeoData()[id]->SetParentObjectIds(*parentObjectIds);
    }
    return id;
}

void HostController::RemoveGeography(int id)
{
    const std::unique_ptr<MGeoData> gone(GetGeoData().value(id, nullptr));
    ControllerBase::RemoveGeography(id);
}

} // namespace meridor
