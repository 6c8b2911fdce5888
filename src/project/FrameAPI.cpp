// SPDX-License-Identifier: MIT
#include "datainterface/FrameAPI.h"
#include <QDir>
#include <ctime>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataBlocks.h"
#include "frame/frameState.h"
#include "numerics/deviates.h"
#include "project/datasetNames.h"

using namespace datainterface;

namespace {

constexpr int kTestingCacheBytes = 10000000;

int showGraphOfOne(GraphTypes type, int dataId, qint64 t, const QString &title)
{
    return controller()->CreateGraphWindow(type, {dataId}, t, title, ColorSchemeInfo(), nullptr,
                                           nullptr);
}

} // namespace

void InitializeCInterface(ControllerBase *controller)
{
    setController(controller);
    seedGenerators(static_cast<quint32>(std::time(nullptr)));
}

ControllerBase *VORN_GetController()
{
    return controller();
}

void VORN_InitializeForTesting()
{
    InitializeCInterface(new ControllerBase);
    const QString blocks = ControllerBase::GetVORNDataPath() + QStringLiteral("/.cache");
    QDir().mkpath(blocks);
    InitializeDataManager(blocks, kTestingCacheBytes);
    setTesting(true);
}

void VORN_DoneWithTesting()
{
    delete controller();
    setTesting(false);
    setController(nullptr);
}

int VORN_ShowMethod(int method, const QString &name, const QVector<MethodParameter> &parameters)
{
    return controller()->ShowMethod(method, name, parameters);
}

bool VORN_ExecuteMethod(int method, const QString &name, const QVector<MethodParameter> &parameters,
                        MethodReport &report)
{
    return controller()->ExecuteMethod(method, name, parameters, report);
}

void VORN_ShowSpatialWeightSetDialog(int geographyId, bool flagA, bool flagB)
{
    controller()->ShowSpatialWeightSetDialog(geographyId, flagA, flagB);
}

int VORN_DisplayMap(int dataId, qint64 t, const QString &title, ColorSchemeInfo fill,
                    ColorSchemeInfo line, SymbolSchemeInfo symbols)
{
    return controller()->CreateMapWindow(dataId, t, title, fill, line, symbols);
}

bool VORN_DisplayMapLayer(int window, int dataId, ColorSchemeInfo fill, ColorSchemeInfo line,
                          SymbolSchemeInfo symbols)
{
    return controller()->CreateMapLayer(window, dataId, fill, line, symbols);
}

void VORN_TimeSyncWindows(const QList<int> &windows, qint64 t)
{
    controller()->SyncViews(windows, t);
}

void VORN_ShowHelpTopic(const char *topic)
{
    controller()->ShowHelpTopic(topic);
}

QString VORN_GetInvocationString(int method, const QString &name,
                                 const QVector<MethodParameter> &parameters)
{
    return controller()->GetInvocationStringForMethod(method, name, parameters);
}

QString VORN_GetMethodName(int method, const QString &name)
{
    return controller()->GetMethodName(method, name);
}

QString VORN_GetUniqueGeographyName(const QString &name)
{
    return controller()->GetUniqueGeographyName(name);
}

QString VORN_GetUniqueDatasetName(int geographyId, const QString &name)
{
    return controller()->GetUniqueDatasetName(geographyId, name);
}

QString VORN_SuggestUniqueDatasetName(int geographyId, const QString &name)
{
    return uniqueDatasetName(controller()->GetGeoData().value(geographyId), name);
}

int VORN_DisplayScatterplot(int dataIdX, int dataIdY, qint64 t, const QString &title,
                            ColorSchemeInfo colors, const QPointF *points, const QRectF *bounds)
{
    return controller()->CreateGraphWindow(GT_ScatterPlot, {dataIdX, dataIdY}, t, title, colors,
                                           points, bounds);
}

int VORN_DisplayBoxplot(int dataId, qint64 t, const QString &title)
{
    return showGraphOfOne(GT_BoxPlot, dataId, t, title);
}

int VORN_DisplayHistogram(int dataId, qint64 t, const QString &title)
{
    return showGraphOfOne(GT_Histogram, dataId, t, title);
}

int VORN_DisplayTimePlot(int dataId, const QString &title)
{
    return showGraphOfOne(GT_TimePlot, dataId, 0, title);
}
