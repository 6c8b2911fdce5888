// SPDX-License-Identifier: MIT
/// What a host derives from: it holds the geographies and the nonconditional variogram models of
/// the project, and its virtual operations are the calls by which the library reaches the host.
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

/// The host makes one, hands it to InitializeCInterface and deletes it at the end. All calls on the
/// main thread.
class DATAINTERFACE_EXPORT ControllerBase {
public:
    ControllerBase();
    /// Deletes the geographies that are left.
    virtual ~ControllerBase();
    ControllerBase(const ControllerBase &) = delete;
    ControllerBase &operator=(const ControllerBase &) = delete;

    /// The flag is the host's to read; the library does not.
    virtual void MarkProjectClean();
    /// The project differs from its file.
    virtual void MarkProjectDirty();

    // What only a host gives a meaning: here nothing happens, and the result is the one stated.
    virtual int ShowMethod(int method, const QString &name,
                           const QVector<MethodParameter> &parameters); ///< -1
    virtual bool ExecuteMethod(int method, const QString &name,
                               const QVector<MethodParameter> &parameters,
                               MethodReport &report);             ///< false
    virtual QString GetDatasetPropertiesStringForCurrentMethod(); ///< a null string
    /// The two flags are the caller's of VORN_ShowSpatialWeightSetDialog, unread.
    virtual void ShowSpatialWeightSetDialog(int geographyId, bool flagA, bool flagB);
    /// Shows the model for editing. The other arguments are handed on unread.
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
    /// @param points  may be null. @param bounds  may be null. Here: 0.
    virtual int CreateGraphWindow(GraphTypes type, const QVector<int> &dataIds, qint64 t,
                                  const QString &title, const ColorSchemeInfo &colors,
                                  const QPointF *points, const QRectF *bounds);
    virtual bool GenerateVariogramModel(VariogramModel &model, const DataId &dataset,
                                        const Interval &interval,
                                        VariogramModel::EstimatorTypes estimator,
                                        const DataId &locations, int lagCount, bool flagA,
                                        double parameter, bool flagB); ///< false
    /// True exactly when the host's controller also derives from QApplication.
    virtual bool HasGUI();
    /// @param fromHost  true for notes that came through VORN_AddToLog.
    virtual void AddToLog(const QString &text, bool fromHost);
    /// Shows a page of the host's help.
    virtual void ShowHelpTopic(const char *topic);
    virtual QString
    GetInvocationStringForMethod(int method, const QString &name,
                                 const QVector<MethodParameter> &parameters); ///< empty
    virtual QString GetMethodName(int method, const QString &name);           ///< empty

    /// `name`, or "name n" with the first n from 2 on that no geography is named. Case counts.
    virtual QString GetUniqueGeographyName(const QString &name);
    /// The same among the datasets of one geography; `name` when the geography is unknown.
    virtual QString GetUniqueDatasetName(int geographyId, const QString &name);

    /// Opens a geometry file and enters the geography. The last two arguments are for overrides: a
    /// subset's parent and its objects there. No signal is made.
    /// @return the new id; -1 when the file does not parse. Raises "Can't open file" when it cannot
    /// be opened.
    virtual int AddNewVectorGeography(const QString &fileName, const QString &name,
                                      const QString &history, TimeFormat format, int parentId,
                                      const QVector<int> *parentObjectIds);
    /// Makes a grid. The two numbers are rows, then columns. The texts become the tags "History"
    /// and "Projection". No signal is made. @return the new id; -1 for a grid that cannot be: see
    /// MRasterDataSource::IsGrid.
    virtual int AddNewRasterGeography(const QString &name, unsigned int rows, unsigned int columns,
                                      const QRectF &bounds, const TimeStamp &stamp,
                                      TimeFormat format, const QString &history,
                                      const QString &projection);
    /// Drops the entry. The geography itself is not deleted: an override or the caller must.
    virtual void RemoveGeography(int id);

    /// Every geography by its id; owned.
    QMap<int, MGeoData *> &GetGeoData() { return mGeographies; }
    const QMap<int, MGeoData *> &GetGeoData() const { return mGeographies; }

    /// The directory of all scratch files: the platform's cache location, made when it is missing.
    static QString GetVORNDataPath();
    /// A new, empty file there whose name begins with `prefix`, readable by its owner alone; empty
    /// when it cannot be made.
    static QString GetVORNTempFile(const char *prefix);

    // The project's nonconditional variogram models: see NonConVariogramModelManager.
    /// NonConVariogramModelManager's operation of that name, here and below.
    bool AddNonConVariogramModelListener(QObject *listener);
    void SaveNonconditionalVariogramModelsToStream(QDataStream &out) const;
    void RestoreNonconditionalVariogramModelsFromStream(QDataStream &in);
    bool GetNonConVariogramModel(int id, VariogramModel &model) const;
    /// Stores a copy under a new id, which is the result.
    int AddNonConVariogramModel(const VariogramModel &model);
    /// Puts `model` in the place of the one with its id; false without one.
    bool ReplaceNonConVariogramModel(const VariogramModel &model);
    /// False for an unknown id.
    bool RemoveNonConVariogramModel(int id);
    /// Without a signal.
    void RemoveAllNonConVariogramModels();
    /// Adds a copy with a name of its own; false for an unknown id.
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
