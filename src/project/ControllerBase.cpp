// SPDX-License-Identifier: MIT
#include "datainterface/ControllerBase.h"
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <memory>
#include <utility>
#include "Common/detail/failure.h"
#include "Common/detail/streams.h"
#include "Common/detail/tempFile.h"
#include "Common/uniqueName.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MVectorData.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "frame/frameState.h"
#include "geography/projectionTags.h"
#include "project/datasetNames.h"
#include "project/scratchDirectory.h"

using namespace datainterface;

ControllerBase::ControllerBase() = default;

ControllerBase::~ControllerBase()
{
    qDeleteAll(std::exchange(mGeographies, {})); // slots of destroyed() find no geography
}

void ControllerBase::MarkProjectClean()
{
    mProjectDirty = false;
}

void ControllerBase::MarkProjectDirty()
{
    mProjectDirty = true;
}

int ControllerBase::ShowMethod(int, const QString &, const QVector<MethodParameter> &)
{
    return -1;
}

bool ControllerBase::ExecuteMethod(int, const QString &, const QVector<MethodParameter> &,
                                   MethodReport &)
{
    return false;
}

QString ControllerBase::GetDatasetPropertiesStringForCurrentMethod()
{
    return QString();
}

void ControllerBase::ShowSpatialWeightSetDialog(int, bool, bool)
{
}

void ControllerBase::ShowVariogramModelDialog(VariogramModel &, bool, int, bool)
{
}

int ControllerBase::CreateMapWindow(int, qint64, const QString &, const ColorSchemeInfo &,
                                    const ColorSchemeInfo &, const SymbolSchemeInfo &)
{
    return 0;
}

bool ControllerBase::CreateMapLayer(int, int, const ColorSchemeInfo &, const ColorSchemeInfo &,
                                    const SymbolSchemeInfo &)
{
    return false;
}

void ControllerBase::SyncViews(QList<int>, qint64)
{
}

bool ControllerBase::ShowSpatialWeightsInMap(int, int, int)
{
    return false;
}

int ControllerBase::CreateGraphWindow(GraphTypes, const QVector<int> &, qint64, const QString &,
                                      const ColorSchemeInfo &, const QPointF *, const QRectF *)
{
    return 0;
}

bool ControllerBase::GenerateVariogramModel(VariogramModel &, const DataId &, const Interval &,
                                            VariogramModel::EstimatorTypes, const DataId &, int,
                                            bool, double, bool)
{
    return false;
}

bool ControllerBase::HasGUI()
{
    return dynamic_cast<QApplication *>(this) != nullptr;
}

void ControllerBase::AddToLog(const QString &, bool)
{
}

void ControllerBase::ShowHelpTopic(const char *)
{
}

QString ControllerBase::GetInvocationStringForMethod(int, const QString &,
                                                     const QVector<MethodParameter> &)
{
    return QString();
}

QString ControllerBase::GetMethodName(int, const QString &)
{
    return QString();
}

QString ControllerBase::GetUniqueGeographyName(const QString &name)
{
    QSet<QString> taken;
    for (MGeoData *geography : std::as_const(mGeographies))
        taken.insert(geography->GetName());
    return uniqueName(name, taken);
}

QString ControllerBase::GetUniqueDatasetName(int geographyId, const QString &name)
{
    return uniqueDatasetName(mGeographies.value(geographyId), name);
}

int ControllerBase::AddNewVectorGeography(const QString &fileName, const QString &name,
                                          const QString &history, TimeFormat format, int,
                                          const QVector<int> *)
{
    QFile file(fileName);
    require(file.open(QIODevice::ReadOnly), "Can't open file");
    DeviceStream in(&file);
    auto fennims = std::make_unique<Fennims>();
    if (!fennims->Open(in, nullptr))
        return -1;
    auto geography =
        std::make_unique<MVectorData>(name, format, isTesting() ? QString() : scratchDirectory());
    const FMProjectionInfo projection = fennims->GetProjectionSettings();
    if (!geography->HasValidId() || !geography->Initialize(fennims.release(), false))
        return -1;
    geography->GetMetaData().setTag(QStringLiteral("History"), history);
    setProjectionTags(geography->GetMetaData(), projection, AngularUnit::Code);
    const int id = geography->GetId();
    mGeographies.insert(id, geography.release());
    return id;
}

int ControllerBase::AddNewRasterGeography(const QString &name, unsigned int rows,
                                          unsigned int columns, const QRectF &bounds,
                                          const TimeStamp &stamp, TimeFormat format,
                                          const QString &history, const QString &projection)
{
    auto geography = std::make_unique<MRasterData>(name, stamp, format,
                                                   isTesting() ? QString() : scratchDirectory());
    if (!geography->HasValidId()
        || !geography->Initialize(static_cast<int>(rows), static_cast<int>(columns), bounds))
        return -1;
    geography->GetMetaData().setTag(QStringLiteral("History"), history);
    geography->GetMetaData().setTag(QStringLiteral("Projection"), projection);
    const int id = geography->GetId();
    mGeographies.insert(id, geography.release());
    return id;
}

void ControllerBase::RemoveGeography(int id)
{
    mGeographies.remove(id);
}

QString ControllerBase::GetVORNDataPath()
{
    const QString path = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    QDir().mkpath(path);
    return path;
}

QString ControllerBase::GetVORNTempFile(const char *prefix)
{
    return uniqueTempFile(GetVORNDataPath(), prefix);
}

bool ControllerBase::AddNonConVariogramModelListener(QObject *listener)
{
    return mVariogramModels.AddNonConVariogramModelListener(listener);
}

void ControllerBase::SaveNonconditionalVariogramModelsToStream(QDataStream &out) const
{
    mVariogramModels.SaveNonconditionalVariogramModelsToStream(out);
}

void ControllerBase::RestoreNonconditionalVariogramModelsFromStream(QDataStream &in)
{
    mVariogramModels.RestoreNonconditionalVariogramModelsFromStream(in);
}

bool ControllerBase::GetNonConVariogramModel(int id, VariogramModel &model) const
{
    return mVariogramModels.GetNonConVariogramModel(id, model);
}

int ControllerBase::AddNonConVariogramModel(const VariogramModel &model)
{
    return mVariogramModels.AddNonConVariogramModel(model);
}

bool ControllerBase::ReplaceNonConVariogramModel(const VariogramModel &model)
{
    return mVariogramModels.ReplaceNonConVariogramModel(model);
}

bool ControllerBase::RemoveNonConVariogramModel(int id)
{
    return mVariogramModels.RemoveNonConVariogramModel(id);
}

void ControllerBase::RemoveAllNonConVariogramModels()
{
    mVariogramModels.RemoveAllNonConVariogramModels();
}

bool ControllerBase::DuplicateNonConVariogramModel(int id)
{
    return mVariogramModels.DuplicateNonConVariogramModel(id);
}

QList<QString> ControllerBase::GetNonConVariogramModelNames() const
{
    return mVariogramModels.GetNonConVariogramModelNames();
}

QList<int> ControllerBase::GetNonConVariogramModelIds() const
{
    return mVariogramModels.GetNonConVariogramModelIds();
}

QMap<int, VariogramModelProps> ControllerBase::GetNonConVariogramModelProps() const
{
    return mVariogramModels.GetNonConVariogramModelProps();
}
