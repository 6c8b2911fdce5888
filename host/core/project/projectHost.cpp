// SPDX-License-Identifier: MIT
#include "core/project/projectHost.h"
#include <memory>
#include "datainterface/MGeoData.h"

namespace meridor {

ProjectHost::ProjectHost() = default;
ProjectHost::~ProjectHost() = default;

void ProjectHost::begin(const SessionUser &user, const QString &scratch)
{
    mUser = user;
    mScratch = scratch;
}

const Notes &ProjectHost::notes() const
{
    static const NoNotes none;
    return mUser.notes ? *mUser.notes : none;
}

void ProjectHost::decline(const QString &what) const
{
    notes().note(what + QStringLiteral(" needs a window; there is none"));
}

int ProjectHost::ShowMethod(int, const QString &name, const QVector<MethodParameter> &)
{
    decline(QStringLiteral("method ") + name);
    return -1;
}

bool ProjectHost::ExecuteMethod(int, const QString &name, const QVector<MethodParameter> &,
                                MethodReport &report)
{
    report = MethodReport();
    notes().note(QStringLiteral("method %1 is not one of this program").arg(name));
    return false;
}

QString ProjectHost::GetDatasetPropertiesStringForCurrentMethod()
{
    return QString(); // this host runs no methods
}

void ProjectHost::ShowSpatialWeightSetDialog(int, bool, bool)
{
    decline(QStringLiteral("the dialog of weight sets"));
}

void ProjectHost::ShowVariogramModelDialog(VariogramModel &, bool, int, bool)
{
    decline(QStringLiteral("the dialog of variogram models"));
}

int ProjectHost::CreateMapWindow(int dataId, qint64 t, const QString &title,
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

bool ProjectHost::CreateMapLayer(int, int, const ColorSchemeInfo &, const ColorSchemeInfo &,
                                 const SymbolSchemeInfo &)
{
    decline(QStringLiteral("a second layer"));
    return false;
}

void ProjectHost::SyncViews(QList<int> windows, qint64 t)
{
    for (const int window : windows) {
        const auto view = mViews.find(window);
        if (view == mViews.end() || !painter)
            continue;
        view->time = t;
        painter(*view);
    }
}

bool ProjectHost::ShowSpatialWeightsInMap(int, int, int)
{
    decline(QStringLiteral("a map of weights"));
    return false;
}

int ProjectHost::CreateGraphWindow(GraphTypes, const QVector<int> &, qint64, const QString &title,
                                   const ColorSchemeInfo &, const QPointF *, const QRectF *)
{
    decline(QStringLiteral("the graph ") + title);
    return 0;
}

bool ProjectHost::GenerateVariogramModel(VariogramModel &model, const DataId &dataset,
                                         const Interval &interval,
                                         VariogramModel::EstimatorTypes estimator,
                                         const DataId &locations, int lagCount, bool flagA,
                                         double parameter, bool flagB)
{
    if (mUser.variogramFitter)
        return mUser.variogramFitter(
            model, {dataset, interval, estimator, locations, lagCount, flagA, parameter, flagB});
    notes().note(QStringLiteral("variogram models are not estimated by this program"));
    return false;
}

namespace {

/// The text without its leading "Note: ", since it is shown as a note.
QString withoutPrefix(const QString &text)
{
    const QString prefix = QStringLiteral("Note: ");
    return text.startsWith(prefix) ? text.mid(prefix.size()) : text;
}

} // namespace

void ProjectHost::AddToLog(const QString &text, bool)
{
    mLog.append(text);
    notes().note(withoutPrefix(text));
}

void ProjectHost::AddWarning(const QString &text)
{
    mLog.append(text);
    notes().warn(withoutPrefix(text));
}

void ProjectHost::ShowHelpTopic(const char *topic)
{
    notes().note(QStringLiteral("there is no help window for %1").arg(QString::fromUtf8(topic)));
}

QString ProjectHost::GetInvocationStringForMethod(int, const QString &,
                                                  const QVector<MethodParameter> &)
{
    return QString(); // this host runs no methods
}

QString ProjectHost::GetMethodName(int, const QString &name)
{
    return name;
}

int ProjectHost::AddNewVectorGeography(const QString &fileName, const QString &name,
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

void ProjectHost::RemoveGeography(int id)
{
    const std::unique_ptr<MGeoData> gone(GetGeoData().value(id, nullptr));
    ControllerBase::RemoveGeography(id);
}

} // namespace meridor
