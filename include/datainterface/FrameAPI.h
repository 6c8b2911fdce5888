// SPDX-License-Identifier: MIT
/// Starting and ending the library, and functions that pass a request on to the host.
#pragma once
#include <QList>
#include <QString>
#include <QVector>
#include "datainterface/MethodRecords.h"
#include "datainterface/export.h"

class ControllerBase;
class QPointF;
class QRectF;

/// Installs the controller, which the host continues to own, and seeds the random generators with
/// the time. The host starts the block store itself (InitializeDataManager). This call must come
/// before every function below and every function that takes an id.
DATAINTERFACE_EXPORT void InitializeCInterface(ControllerBase *controller);
/// The installed controller; null when there is none. For host code that is given only ids.
DATAINTERFACE_EXPORT ControllerBase *VORN_GetController();

/// Installs a controller and a block store (10,000,000 bytes of cache) for a run without windows:
/// no dialog, progress bar or cursor is shown, and geographies get no data path.
DATAINTERFACE_EXPORT void VORN_InitializeForTesting();
/// Deletes that controller.
DATAINTERFACE_EXPORT void VORN_DoneWithTesting();

// Each function calls the operation of ControllerBase that its comment names, with the same
// arguments.
DATAINTERFACE_EXPORT int
VORN_ShowMethod(int method, const QString &name,
                const QVector<MethodParameter> &parameters); ///< ShowMethod
DATAINTERFACE_EXPORT bool VORN_ExecuteMethod(int method, const QString &name,
                                             const QVector<MethodParameter> &parameters,
                                             MethodReport &report); ///< ExecuteMethod
DATAINTERFACE_EXPORT void
VORN_ShowSpatialWeightSetDialog(int geographyId, bool flagA,
                                bool flagB); ///< ShowSpatialWeightSetDialog
DATAINTERFACE_EXPORT int VORN_DisplayMap(int dataId, qint64 t, const QString &title,
                                         ColorSchemeInfo fill, ColorSchemeInfo line,
                                         SymbolSchemeInfo symbols); ///< CreateMapWindow
DATAINTERFACE_EXPORT bool VORN_DisplayMapLayer(int window, int dataId, ColorSchemeInfo fill,
                                               ColorSchemeInfo line,
                                               SymbolSchemeInfo symbols); ///< CreateMapLayer
DATAINTERFACE_EXPORT void VORN_TimeSyncWindows(const QList<int> &windows, qint64 t); ///< SyncViews
DATAINTERFACE_EXPORT void VORN_ShowHelpTopic(const char *topic); ///< ShowHelpTopic
DATAINTERFACE_EXPORT QString VORN_GetInvocationString(
    int method, const QString &name,
    const QVector<MethodParameter> &parameters); ///< GetInvocationStringForMethod
DATAINTERFACE_EXPORT QString VORN_GetMethodName(int method, const QString &name); ///< GetMethodName
DATAINTERFACE_EXPORT QString
VORN_GetUniqueGeographyName(const QString &name); ///< GetUniqueGeographyName
DATAINTERFACE_EXPORT QString
VORN_GetUniqueDatasetName(int geographyId, const QString &name); ///< GetUniqueDatasetName
/// The result of ControllerBase::GetUniqueDatasetName itself, without the host's override.
DATAINTERFACE_EXPORT QString VORN_SuggestUniqueDatasetName(int geographyId, const QString &name);

// Each function calls CreateGraphWindow. Those without a colour scheme pass a default one and no
// points or bounds.
/// The values of one dataset against those of another.
/// @return the window, as in the three functions below.
DATAINTERFACE_EXPORT int VORN_DisplayScatterplot(int dataIdX, int dataIdY, qint64 t,
                                                 const QString &title, ColorSchemeInfo colors,
                                                 const QPointF *points, const QRectF *bounds);
/// The values of a dataset at `t` as a box plot.
DATAINTERFACE_EXPORT int VORN_DisplayBoxplot(int dataId, qint64 t, const QString &title);
/// The values of a dataset at `t` as a histogram.
DATAINTERFACE_EXPORT int VORN_DisplayHistogram(int dataId, qint64 t, const QString &title);
/// The values of a dataset at all times. The host is passed the time 0.
DATAINTERFACE_EXPORT int VORN_DisplayTimePlot(int dataId, const QString &title);
