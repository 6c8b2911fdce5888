// SPDX-License-Identifier: MIT
/// Start and end of the library, and the functions that pass a request on to the host.
#pragma once
#include <QList>
#include <QString>
#include <QVector>
#include "datainterface/MethodRecords.h"
#include "datainterface/export.h"

class ControllerBase;
class QPointF;
class QRectF;

/// Installs the host's controller, which stays the host's, and seeds the random generators with the
/// time. The block store is started by the host itself (InitializeDataManager). Every function
/// below, and every function that takes an id, needs this first.
DATAINTERFACE_EXPORT void InitializeCInterface(ControllerBase *controller);
/// The controller that is installed; null for none. For code of a host that is handed ids alone.
DATAINTERFACE_EXPORT ControllerBase *VORN_GetController();

/// A controller and a block store (10,000,000 bytes of cache) for a run without windows: no dialog,
/// progress bar or cursor is shown, and geographies are given no data path.
DATAINTERFACE_EXPORT void VORN_InitializeForTesting();
/// Deletes that controller.
DATAINTERFACE_EXPORT void VORN_DoneWithTesting();

// Each is the operation of ControllerBase in its comment with the same arguments.
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
/// What ControllerBase itself answers to GetUniqueDatasetName, whatever the host's override does.
DATAINTERFACE_EXPORT QString VORN_SuggestUniqueDatasetName(int geographyId, const QString &name);

// Each calls CreateGraphWindow; those without a colour scheme pass a default one and no points or
// bounds.
/// The values of one dataset against those of another. @return the window, as in the three below.
DATAINTERFACE_EXPORT int VORN_DisplayScatterplot(int dataIdX, int dataIdY, qint64 t,
                                                 const QString &title, ColorSchemeInfo colors,
                                                 const QPointF *points, const QRectF *bounds);
/// The values of a dataset at `t` as a box plot.
DATAINTERFACE_EXPORT int VORN_DisplayBoxplot(int dataId, qint64 t, const QString &title);
/// The values of a dataset at `t` as a histogram.
DATAINTERFACE_EXPORT int VORN_DisplayHistogram(int dataId, qint64 t, const QString &title);
/// At time 0: the plot shows all times.
DATAINTERFACE_EXPORT int VORN_DisplayTimePlot(int dataId, const QString &title);
