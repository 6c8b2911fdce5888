// SPDX-License-Identifier: MIT
/// The answers to the library of a host without windows: maps become pictures, notes go to the
/// session's user, and what needs a window is declined.
#pragma once
#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>
#include "core/export.h"
#include "core/project/cancel.h"
#include "core/project/notes.h"
#include "core/project/progress.h"
#include "datainterface/ControllerBase.h"

namespace meridor {

/// A map that was asked for: what CreateMapWindow got.
struct MapView {
    int dataset = -1;
    qint64 time = 0;
    QString title;
    ColorSchemeInfo fill;
};

/// Who asks for the work of a session and is told of it. Every part may be left out.
struct SessionUser {
    const Notes *notes = nullptr;
    Cancel cancel;
    ProgressReport progress;
};

class MERIDOR_EXPORT ProjectHost : public ControllerBase {
public:
    /// @param scratch  directory of the session's temporary files.
    ProjectHost(const SessionUser &user, const QString &scratch);
    ~ProjectHost() override;

    const Notes &notes() const;
    bool isCancelled() const { return mUser.cancel && mUser.cancel(); }
    const ProgressReport &progress() const { return mUser.progress; }
    /// Where work may keep files of its own for a while.
    const QString &scratch() const { return mScratch; }

    /// Draws a view; false when it cannot. Without a painter there are no maps.
    std::function<bool(const MapView &)> painter;

    bool isDirty() const { return mProjectDirty; }
    /// What the library noted so far, warnings included.
    const QStringList &log() const { return mLog; }

    int ShowMethod(int method, const QString &name,
                   const QVector<MethodParameter> &parameters) override;
    bool ExecuteMethod(int method, const QString &name, const QVector<MethodParameter> &parameters,
                       MethodReport &report) override;
    QString GetDatasetPropertiesStringForCurrentMethod() override;
    void ShowSpatialWeightSetDialog(int geographyId, bool flagA, bool flagB) override;
    void ShowVariogramModelDialog(VariogramModel &model, bool flagA, int number,
                                  bool flagB) override;
    /// @return a number for SyncViews, 0 when nothing could be drawn
    int CreateMapWindow(int dataId, qint64 t, const QString &title, const ColorSchemeInfo &fill,
                        const ColorSchemeInfo &line, const SymbolSchemeInfo &symbols) override;
    bool CreateMapLayer(int window, int dataId, const ColorSchemeInfo &fill,
                        const ColorSchemeInfo &line, const SymbolSchemeInfo &symbols) override;
    /// Draws the views again at another time.
    void SyncViews(QList<int> windows, qint64 t) override;
    bool ShowSpatialWeightsInMap(int window, int weightSet, int object) override;
    int CreateGraphWindow(GraphTypes type, const QVector<int> &dataIds, qint64 t,
                          const QString &title, const ColorSchemeInfo &colors,
                          const QPointF *points, const QRectF *bounds) override;
    bool GenerateVariogramModel(VariogramModel &model, const DataId &dataset,
                                const Interval &interval, VariogramModel::EstimatorTypes estimator,
                                const DataId &locations, int lagCount, bool flagA, double parameter,
                                bool flagB) override;
    void AddToLog(const QString &text, bool fromHost) override;
    /// The same for what the library shows as a warning.
    void AddWarning(const QString &text);
    void ShowHelpTopic(const char *topic) override;
    QString GetInvocationStringForMethod(int method, const QString &name,
                                         const QVector<MethodParameter> &parameters) override;
    QString GetMethodName(int method, const QString &name) override;
    /// Also records what a subset was cut from.
    int AddNewVectorGeography(const QString &fileName, const QString &name, const QString &history,
                              TimeFormat format, int parentId,
                              const QVector<int> *parentObjectIds) override;
    /// Takes the geography out of the project and deletes it.
    void RemoveGeography(int id) override;

private:
    /// One line for each thing that needs a window.
    void decline(const QString &what) const;

    SessionUser mUser;
    QString mScratch;
    QMap<int, MapView> mViews;
    QStringList mLog;
};

} // namespace meridor
