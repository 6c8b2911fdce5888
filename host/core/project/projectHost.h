// SPDX-License-Identifier: MIT
/// The terminal's answers to the library: maps become pictures, notes go to standard error, and
/// what needs a window is declined.
#pragma once
#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>
#include "cli/console.h"
#include "datainterface/ControllerBase.h"

namespace meridor {

/// A map that was asked for: what CreateMapWindow got.
struct MapView {
    int dataset = -1;
    qint64 time = 0;
    QString title;
    ColorSchemeInfo fill;
};

class HostController : public ControllerBase {
public:
    explicit HostController(const Console &console) : mConsole(console) {}

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
    /// True: a warning's dialog becomes a note and is closed, see TerminalProgress.
    bool HasGUI() override { return true; }
    void AddToLog(const QString &text, bool fromHost) override;
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
    /// One line for each thing a terminal cannot show.
    void decline(const QString &what) const;

    const Console &mConsole;
    QMap<int, MapView> mViews;
    QStringList mLog;
};

} // namespace meridor
