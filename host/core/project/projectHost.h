// SPDX-License-Identifier: MIT
/// The library's controller in a host without windows: maps are drawn as pictures, messages are
/// passed to the user of the session, and requests that need a window are declined with a note.
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

class HostDialogs;

namespace meridor {

/// The arguments of CreateMapWindow.
struct MapView {
    int dataset = -1;
    qint64 time = 0;
    QString title;
    ColorSchemeInfo fill;
};

/// The arguments of GenerateVariogramModel besides the model.
struct VariogramRequest {
    int dataset = -1;
    Interval interval;
    int estimator = 0;
    int locations = -1;
    int lagCount = 0;
    bool flagA = false;
    double parameter = 0;
    bool flagB = false;
};

/// Fits a model; returns false if it cannot.
using VariogramFitter = std::function<bool(VariogramModel &, const VariogramRequest &)>;

/// The caller's side of a session. Every member may be left empty.
struct SessionUser {
    const Notes *notes = nullptr;
    Cancel cancel;
    ProgressReport progress;
    /// Told why the scratch directory takes no more files, if it does not while an exception ends
    /// the session. The exception itself may be of the library, which does not know the reason.
    std::function<void(const QString &)> scratchFailed;
    /// Not owned. The library shows its bar and its warnings here, and `progress` is not called;
    /// `cancel` is to return what the bar says.
    HostDialogs *dialogs = nullptr;
    /// Answers VORN_GenerateVariogramModel; see fitRequestedModel. Without it no model is fitted.
    VariogramFitter variogramFitter = nullptr;
};

class MERIDOR_EXPORT ProjectHost : public ControllerBase {
public:
    ProjectHost();
    ~ProjectHost() override;

    /// Called by the session that uses this controller.
    /// @param scratch  the directory of the session's temporary files.
    void begin(const SessionUser &user, const QString &scratch);

    const Notes &notes() const;
    bool isCancelled() const { return mUser.cancel && mUser.cancel(); }
    const ProgressReport &progress() const { return mUser.progress; }
    void tellScratchFailed(const QString &reason) const
    {
        if (mUser.scratchFailed)
            mUser.scratchFailed(reason);
    }
    /// The directory for temporary files.
    const QString &scratch() const { return mScratch; }

    /// Draws a view; returns false if it cannot. Without a painter no map is drawn.
    std::function<bool(const MapView &)> painter;

    bool isDirty() const { return mProjectDirty; }
    /// The library's messages so far, including warnings.
    const QStringList &log() const { return mLog; }

    int ShowMethod(int method, const QString &name,
                   const QVector<MethodParameter> &parameters) override;
    bool ExecuteMethod(int method, const QString &name, const QVector<MethodParameter> &parameters,
                       MethodReport &report) override;
    QString GetDatasetPropertiesStringForCurrentMethod() override;
    void ShowSpatialWeightSetDialog(int geographyId, bool flagA, bool flagB) override;
    void ShowVariogramModelDialog(VariogramModel &model, bool flagA, int number,
                                  bool flagB) override;
    /// @return the number of the view for SyncViews; 0 if nothing could be drawn.
    int CreateMapWindow(int dataId, qint64 t, const QString &title, const ColorSchemeInfo &fill,
                        const ColorSchemeInfo &line, const SymbolSchemeInfo &symbols) override;
    bool CreateMapLayer(int window, int dataId, const ColorSchemeInfo &fill,
                        const ColorSchemeInfo &line, const SymbolSchemeInfo &symbols) override;
    /// Draws the views again, at time `t`.
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
    /// Logs a warning of the library and passes it to the user.
    void AddWarning(const QString &text);
    void ShowHelpTopic(const char *topic) override;
    QString GetInvocationStringForMethod(int method, const QString &name,
                                         const QVector<MethodParameter> &parameters) override;
    QString GetMethodName(int method, const QString &name) override;
    /// Also records the parent geography and its object ids if the new geography is a subset.
    int AddNewVectorGeography(const QString &fileName, const QString &name, const QString &history,
                              TimeFormat format, int parentId,
                              const QVector<int> *parentObjectIds) override;
    /// Removes the geography from the project and deletes it.
    void RemoveGeography(int id) override;

private:
    /// Notes that `what` needs a window.
    void decline(const QString &what) const;

    SessionUser mUser;
    QString mScratch;
    QMap<int, MapView> mViews;
    QStringList mLog;
};

} // namespace meridor
