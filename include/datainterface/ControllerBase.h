// SPDX-License-Identifier: MIT
/// The base class of a host's controller. It holds the geographies and the nonconditional variogram
/// models of the project; the library calls the host through its virtual operations.
#pragma once
#include <QList>
#include <QMap>
#include <QString>
#include <QVector>
#include "datainterface/DataId.h"
#include "datainterface/MethodRecords.h"
#include "datainterface/NonConVariogramModelManager.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/VariogramModel.h"
#include "datainterface/export.h"

class MGeoData;
class QDataStream;
class QObject;
class QPointF;
class QRectF;

/// The host creates one controller, passes it to InitializeCInterface and deletes it at the end.
/// All calls must be made on the main thread.
class DATAINTERFACE_EXPORT ControllerBase {
public:
    ControllerBase();
    /// Deletes the remaining geographies.
    virtual ~ControllerBase();
    ControllerBase(const ControllerBase &) = delete;
    ControllerBase &operator=(const ControllerBase &) = delete;

    /// The project agrees with its file. The library sets this flag but never reads it.
    virtual void MarkProjectClean();
    /// The project differs from its file.
    virtual void MarkProjectDirty();

    // Operations that only a host can implement. The base class does nothing and returns the stated
    // result.
    virtual int ShowMethod(int method, const QString &name,
                           const QVector<MethodParameter> &parameters); ///< -1
    virtual bool ExecuteMethod(int method, const QString &name,
                               const QVector<MethodParameter> &parameters,
                               MethodReport &report);             ///< false
    virtual QString GetDatasetPropertiesStringForCurrentMethod(); ///< a null string
    /// The library passes on the two flags of VORN_ShowSpatialWeightSetDialog without interpreting
    /// them.
    virtual void ShowSpatialWeightSetDialog(int geographyId, bool flagA, bool flagB);
    /// Shows the model for editing. The library passes on the other arguments without interpreting
    /// them.
    virtual void ShowVariogramModelDialog(VariogramModel &model, bool flagA, int number,
                                          bool flagB);
    virtual int CreateMapWindow(int dataId, qint64 t, const QString &title,
                                const ColorSchemeInfo &fill, const ColorSchemeInfo &line,
                                const SymbolSchemeInfo &symbols); ///< 0
    virtual bool CreateMapLayer(int window, int dataId, const ColorSchemeInfo &fill,
                                const ColorSchemeInfo &line,
                                const SymbolSchemeInfo &symbols); ///< false
    /// Shows the time `t` in each of the windows.
    virtual void SyncViews(QList<int> windows, qint64 t);
    virtual bool ShowSpatialWeightsInMap(int window, int weightSet, int object); ///< false
    /// @param points  may be null.
    /// @param bounds  may be null.
    /// @return the window; 0 here.
    virtual int CreateGraphWindow(GraphTypes type, const QVector<int> &dataIds, qint64 t,
                                  const QString &title, const ColorSchemeInfo &colors,
                                  const QPointF *points, const QRectF *bounds);
    virtual bool GenerateVariogramModel(VariogramModel &model, const DataId &dataset,
                                        const Interval &interval,
                                        VariogramModel::EstimatorTypes estimator,
                                        const DataId &locations, int lagCount, bool flagA,
                                        double parameter, bool flagB); ///< false
    /// Whether the host shows windows. True here exactly when the object also derives from
    /// QApplication.
    virtual bool HasGUI();
    /// Writes a note to the host's log.
    /// @param fromHost  whether the note came through VORN_AddToLog.
    virtual void AddToLog(const QString &text, bool fromHost);
    /// Shows a page of the host's help.
    virtual void ShowHelpTopic(const char *topic);
    virtual QString
    GetInvocationStringForMethod(int method, const QString &name,
                                 const QVector<MethodParameter> &parameters); ///< empty
    virtual QString GetMethodName(int method, const QString &name);           ///< empty

    /// Returns `name`, or "name n" with the smallest n from 2 on, so that no geography has that
    /// name. Names are compared case-sensitively.
    virtual QString GetUniqueGeographyName(const QString &name);
    /// The same among the datasets of one geography. Returns `name` when the geography is unknown.
    virtual QString GetUniqueDatasetName(int geographyId, const QString &name);

    /// Opens a geometry file and adds the geography. The last two arguments are for overrides: the
    /// parent of a subset and the objects' indices in the parent. Emits no signal.
    /// @return the new id; -1 when the file does not parse. Raises "Can't open file" when it cannot
    ///         be opened.
    virtual int AddNewVectorGeography(const QString &fileName, const QString &name,
                                      const QString &history, TimeFormat format, int parentId,
                                      const QVector<int> *parentObjectIds);
    /// Adds a raster geography. The two texts become the tags "History" and "Projection". Emits no
    /// signal.
    /// @return the new id; -1 for numbers that MRasterDataSource::IsGrid refuses.
    virtual int AddNewRasterGeography(const QString &name, unsigned int rows, unsigned int columns,
                                      const QRectF &bounds, const TimeStamp &stamp,
                                      TimeFormat format, const QString &history,
                                      const QString &projection);
    /// Removes the geography from the map. The override or the caller must delete the geography
    /// itself.
    virtual void RemoveGeography(int id);

    /// The geographies by id. The controller owns them.
    QMap<int, MGeoData *> &GetGeoData() { return mGeographies; }
    const QMap<int, MGeoData *> &GetGeoData() const { return mGeographies; }

    /// The platform's cache location, which is created when it is missing. Scratch files are there
    /// unless InitializeDataManager was given another directory.
    static QString GetVORNDataPath();
    /// Creates an empty file in GetVORNDataPath() whose name begins with `prefix` and which only
    /// its owner can read.
    /// @return its path; empty when it cannot be created.
    static QString GetVORNTempFile(const char *prefix);

    // The project's nonconditional variogram models: see NonConVariogramModelManager.
    /// Each calls the operation of the same name in NonConVariogramModelManager, as do those below.
    bool AddNonConVariogramModelListener(QObject *listener);
    void SaveNonconditionalVariogramModelsToStream(QDataStream &out) const;
    void RestoreNonconditionalVariogramModelsFromStream(QDataStream &in);
    bool GetNonConVariogramModel(int id, VariogramModel &model) const;
    /// Stores a copy under a new id.
    /// @return the new id.
    int AddNonConVariogramModel(const VariogramModel &model);
    /// Replaces the model that has the id of `model`; false when there is none.
    bool ReplaceNonConVariogramModel(const VariogramModel &model);
    /// False for an unknown id.
    bool RemoveNonConVariogramModel(int id);
    /// Emits no signal.
    void RemoveAllNonConVariogramModels();
    /// Adds a copy with a new name; false for an unknown id.
    bool DuplicateNonConVariogramModel(int id);
    QList<QString> GetNonConVariogramModelNames() const;
    QList<int> GetNonConVariogramModelIds() const;
    QMap<int, VariogramModelProps> GetNonConVariogramModelProps() const;

protected:
    bool mProjectDirty = false;

private:
    QMap<int, MGeoData *> mGeographies;
    NonConVariogramModelManager mVariogramModels;
};
