// SPDX-License-Identifier: MIT
/// The program: Qt's application and the library's controller in one object, so that the library sees
/// that there are windows. Every request of the library is answered here, by the main window.
#pragma once
#include <QApplication>
#include <QMap>
#include <QPointer>
#include <memory>
#include "core/project/projectHost.h"

namespace meridor {

class MainWindow;
class MethodRegister;
class ViewWindow;
class Workspace;
struct ViewRequest;

class Application : public QApplication, public ProjectHost {
    Q_OBJECT
public:
    Application(int &argc, char **argv);
    ~Application() override;
    Workspace &workspace() { return *mWorkspace; }
    MainWindow &window() { return *mWindow; }
    const MethodRegister &methods() const { return *mMethods; }
    void setDark();
    /// The window of that number, which the library was given; null once it is closed.
    ViewWindow *viewWindow(int number) const;

    /// An exception that leaves a slot is told to the user.
    bool notify(QObject *receiver, QEvent *event) override;

    int ShowMethod(int method, const QString &name,
                   const QVector<MethodParameter> &parameters) override;
    bool ExecuteMethod(int method, const QString &name, const QVector<MethodParameter> &parameters,
                       MethodReport &report) override;
    QString GetDatasetPropertiesStringForCurrentMethod() override;
    QString GetMethodName(int method, const QString &name) override;
    QString GetInvocationStringForMethod(int method, const QString &name,
                                         const QVector<MethodParameter> &parameters) override;
    void ShowSpatialWeightSetDialog(int geographyId, bool flagA, bool flagB) override;
    void ShowVariogramModelDialog(VariogramModel &model, bool flagA, int number,
                                  bool flagB) override;
    int CreateMapWindow(int dataId, qint64 t, const QString &title, const ColorSchemeInfo &fill,
                        const ColorSchemeInfo &line, const SymbolSchemeInfo &symbols) override;
    bool CreateMapLayer(int window, int dataId, const ColorSchemeInfo &fill,
                        const ColorSchemeInfo &line, const SymbolSchemeInfo &symbols) override;
    void SyncViews(QList<int> windows, qint64 t) override;
    bool ShowSpatialWeightsInMap(int window, int weightSet, int object) override;
    int CreateGraphWindow(GraphTypes type, const QVector<int> &dataIds, qint64 t,
                          const QString &title, const ColorSchemeInfo &colors,
                          const QPointF *points, const QRectF *bounds) override;
    bool GenerateVariogramModel(VariogramModel &model, const DataId &dataset,
                                const Interval &interval, VariogramModel::EstimatorTypes estimator,
                                const DataId &locations, int lagCount, bool flagA, double parameter,
                                bool flagB) override;
    bool HasGUI() override { return true; }
    void ShowHelpTopic(const char *topic) override;
    void MarkProjectClean() override;
    void MarkProjectDirty() override;
    int AddNewVectorGeography(const QString &fileName, const QString &name, const QString &history,
                              TimeFormat format, int parentId,
                              const QVector<int> *parentObjectIds) override;
    int AddNewRasterGeography(const QString &name, unsigned int rows, unsigned int columns,
                              const QRectF &bounds, const TimeStamp &stamp, TimeFormat format,
                              const QString &history, const QString &projection) override;
    void RemoveGeography(int id) override;

private:
    /// Takes the window over. @return its number for the library; 0 for null.
    int enter(ViewWindow *window, const ViewRequest &request);

    std::unique_ptr<MethodRegister> mMethods;
    std::unique_ptr<Workspace> mWorkspace;
    std::unique_ptr<MainWindow> mWindow;
    QMap<int, QPointer<ViewWindow>> mViewWindows;
    int mNextWindow = 1;
};

} // namespace meridor
