// SPDX-License-Identifier: MIT
/// A geography: a named set of spatial objects with its datasets and weight sets. MVectorData and
/// MRasterData derive from it.
#pragma once
#include <QDate>
#include <QDateTime>
#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTime>
#include <QVector>
#include "datainterface/GeoProps.h"
#include "datainterface/MDatum.h"
#include "datainterface/MMetaData.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/export.h"
#include "datainterface/neighborDatum.h"
#include "fennimark/geometryTypes.h"

class AdjacencySet;
class MAttributes;
class MDataSource;
class MLinker;
class QDataStream;
namespace datainterface {
struct LoadContext;
class ProjectReader;
} // namespace datainterface

/// Owns its data source, which the derived class creates, its weight sets, and the attributes that
/// the application adds. It is a QObject so that views can listen to its signals.
class DATAINTERFACE_EXPORT MGeoData : public QObject {
    Q_OBJECT
public:
    /// Takes the next geography id of the process.
    MGeoData(const QString &name, TimeFormat format, const QString &filePath);
    ~MGeoData() override;

    virtual bool SaveToStream(QDataStream &out);
    /// Reads the form of dataInterfaceVersionLoading. Also sets the id that the next geography of
    /// the process gets.
    virtual bool RestoreFromStream(QDataStream &in);
    virtual bool IsValid() const = 0;
    virtual QString GetName();
    /// Emits GeographyNameChangedSignal even if the name does not change.
    virtual void SetName(const QString &name);
    virtual GeoProps GetProperties() = 0;
    /// Sets the flag of all datasets as well; a dataset that becomes static keeps at most one
    /// slice.
    virtual void SetStatic(bool isStatic);
    virtual bool IsDatasetIdValid(int id) const;
    virtual bool IsNumeric(int id) const;
    virtual unsigned int GetObjectCount() const = 0;
    virtual TimeStamp GetTimeBounds() = 0;
    /// The box around all objects, in map units, and the time over which they exist.
    virtual RectInT GetBoundingRect() = 0;
    /// The same for a constant geography; calls the override.
    RectInT GetBoundingRect() const { return const_cast<MGeoData *>(this)->GetBoundingRect(); }
    /// Connects the listener's slots of MDataSource::AddListener and
    /// GeographyNameChangedSlot(MGeoData *, const char *). A missing slot raises "Can't connect
    /// signals".
    virtual bool AddListener(QObject *listener);
    /// Returns false, with the argument unchanged, when there is no tag "Distance unit".
    virtual bool GetDistanceUnit(QString &unit) const;
    /// The text of a time in this geography's time format.
    virtual QString TimeToString(qint64 t, const char *dateFormat, const char *timeFormat);
    /// The text of a step: "[1y,0m,0d]", "[1h,0m,0s]", both, or a plain number, according to the
    /// time format.
    virtual QString TimeStepToString(const TimeStep &step);
    /// True when an object exists at a time that the dataset does not cover.
    virtual bool HasObjectsWithMissingData(int dataset) const = 0;
    /// Sets an attribute of population 0 for each object whose value at the time is one of
    /// `values`; the flags of other objects do not change. Views are notified once. Values are
    /// compared by type: an integer dataset never matches 1.0. Does nothing without attributes.
    /// Raises "Invalid dataset type" for a dataset that does not belong to this geography.
    virtual void SelectObjectsByValue(int dataset, int realization, qint64 time,
                                      const QSet<MDatum> &values, int attribute) = 0;
    /// The same for numbers from `low` to `high`, both included. Texts never match.
    virtual void SelectObjectsByRange(int dataset, int realization, qint64 time, double low,
                                      double high, int attribute) = 0;

    /// Adds flags that views share; the geography owns them from now on. Only population 0, the
    /// first, is used.
    void AddAttributes(MAttributes *attributes);
    /// Returns null before attributes are added. A population other than 0 raises "Invalid
    /// attribute population id".
    MAttributes *GetAttributes(int population) const;
    /// Registers a view of this geography, which is not owned. When the last view is destroyed,
    /// population 0 returns to its idle state: attribute 0 is set for all objects and attributes 1
    /// and 2 are clear.
    void AddObjectManager(MLinker *view);
    /// One of the views; null when there is none.
    MLinker *GetObjectManager() const;

    /// Undoes AddListener.
    void RemoveListener(QObject *listener);
    /// Connects the data source's three variogram signals to VariogramModelAddedSlot,
    /// ...RemovedSlot and ...ChangedSlot, each (const DataId &, qint32). A missing slot raises
    /// "Can't connect signals".
    bool AddVariogramModelListener(QObject *listener);
    /// Undoes AddVariogramModelListener.
    void RemoveVariogramModelListener(QObject *listener);

    /// Makes the default weight set of the kind of objects: "Queen neighbors" for polygons,
    /// "Nearest 5 neighbors" for points, "Rook neighbors (E-W-N-S)" for cells. A number from 2 on
    /// is appended to a name that the geography has already. The caller owns the set and can add
    /// it. Returns null for lines.
    static AdjacencySet *CreateDefaultAdjacencySet(MGeoData *geography, bool includeEgo);
    /// Adds `set` under its own id, takes ownership and emits WeightSetAddedSignal. A previous set
    /// of that id is removed from the map but not deleted: the caller owns it.
    /// @return always true.
    bool AddSpatialWeightSet(AdjacencySet *set);
    // These return false, null or an empty value for an unknown id.
    /// Deletes the set.
    bool RemoveSpatialWeightSet(int id);
    /// Emits WeightSetRenamedSignal twice: here, and through RenamedSignal of the set.
    /// @param name  in the local 8-bit encoding.
    bool RenameSpatialWeightSet(int id, const char *name);
    /// Adds a copy with a new id and " copy" appended to its name.
    bool DuplicateSpatialWeightSet(int id);
    AdjacencySet *GetSpatialWeightSet(int id);
    const AdjacencySet *GetSpatialWeightSet(int id) const;
    /// Whether the set has lists for the time, which is truncated to an integer.
    bool HasSpatialWeightSetAtTime(int id, double time) const;
    /// The neighbours of an object, calculated when needed. Raises as
    /// AdjacencySet::PrecalcSpatialWeights does.
    QVector<neighborDatum> GetSpatialWeightsForObject(int id, double time, unsigned int objectId);
    /// Ascending; the names are in the order of the ids.
    QList<int> GetSpatialWeightsIds() const;
    QList<QString> GetSpatialWeightsNames() const;
    /// Deletes all sets.
    void RemoveAllSpatialWeightSets();
    /// Frees the lists of all sets; the sets stay.
    void ClearSpatialWeightSets();
    /// Emits WeightSetChangedSignal.
    void SpatialWeightSetChanged(AdjacencySet *set);
    /// Connects the four signals of weight sets to WeightSetAddedSlot, ...RemovedSlot and
    /// ...ChangedSlot, each (MGeoData *, qint32), and WeightSetRenamedSlot(MGeoData *, qint32,
    /// const char *). A missing slot raises "Can't connect signals".
    bool AddSpatialWeightSetListener(QObject *listener);
    /// Undoes AddSpatialWeightSetListener.
    void RemoveSpatialWeightSetListener(QObject *listener);

    int GetId() const { return mId; }
    /// The geography that this one is a subset of; -1 when there is none.
    int GetParentId() const { return mParentId; }
    void SetParentId(int id) { mParentId = id; }
    /// For each object of this geography its index in the parent.
    const QVector<int> &GetParentObjectIds() const { return mParentObjectIds; }
    void SetParentObjectIds(const QVector<int> &ids) { mParentObjectIds = ids; }
    MMetaData &GetMetaData() { return mMetaData; }
    const MMetaData &GetMetaData() const { return mMetaData; }
    void SetMetaData(const MMetaData &metaData) { mMetaData = metaData; }
    TimeFormat GetTheTimeFormat() const { return mTimeFormat; }
    void SetTimeFormat(TimeFormat format) { mTimeFormat = format; }
    bool IsStatic() const { return mIsStatic; }
    bool HasValidId() const { return mId < kIdLimit; }
    /// Appends the ids of the blocks that the datasets and weight sets own.
    void AppendBlockIds(QVector<int> &ids) const;
    /// Deletes the values of all datasets and the lists of all weight sets.
    void DropValues();
    /// Null until the geography is initialised or restored.
    MDataSource *GetDataSource() const { return mDataSource; }

    // How times are encoded, stepped and shown; see TimeFormat.
    /// The time value of midnight of a date.
    static qint64 ConvertFromDate(const QDate &date);
    /// Seconds after midnight.
    static qint64 ConvertFromTime(const QTime &time);
    /// The time value of a date and a time of day.
    static qint64 ConvertFromDateTime(const QDate &date, const QTime &time);
    /// An instant before the epoch that is not at midnight gives the following day.
    static QDate ConvertToDate(qint64 t);
    /// Always returns a null time; hosts rely on the empty text that it gives.
    static QTime ConvertToTime(qint64 t);
    /// The date and the time of day of a time value.
    static QDateTime ConvertToDateTime(qint64 t);
    /// Returns `t` plus a step: by the calendar, or with 365 days a year and 30 days a month when
    /// the step is exact. A time of day is limited to 86399.
    static qint64 IncrementTime(TimeFormat format, TimeStep step, qint64 t);
    static QString TimeToString(qint64 t, TimeFormat format, const char *dateFormat,
                                const char *timeFormat);
    static QString TimeStepToString(const TimeStep &step, TimeFormat format);

Q_SIGNALS:
    void GeographyNameChangedSignal(MGeoData *geography, const char *name);
    void WeightSetAddedSignal(MGeoData *geography, qint32 id);
    void WeightSetRemovedSignal(MGeoData *geography, qint32 id);
    void WeightSetChangedSignal(MGeoData *geography, qint32 id);
    void WeightSetRenamedSignal(MGeoData *geography, qint32 id, const char *name);

protected Q_SLOTS:
    /// Removes a view that is being destroyed; see AddObjectManager.
    virtual void ObjectManagerDyingSlot(MLinker *view);

protected:
    // The parts of a selection that both kinds of geography share.
    /// See SelectObjectsByValue.
    void selectByValue(int dataset, int realization, qint64 time, const QSet<MDatum> &values,
                       int attribute);
    /// See SelectObjectsByRange.
    void selectByRange(int dataset, int realization, qint64 time, double low, double high,
                       int attribute);

    friend class datainterface::ProjectReader;
    /// The work of RestoreFromStream. `context` carries the state of the load.
    virtual bool Restore(QDataStream &in, datainterface::LoadContext &context);

    /// The properties that all kinds of geography fill in the same way.
    GeoProps BaseProperties();

    /// Reads the id and the counter of ids, which are adjacent in every version.
    bool restoreIds(QDataStream &in, const datainterface::LoadContext &context);
    /// Reads the weight sets, keyed by id or, in files before 120000, by name.
    bool readWeightSets(QDataStream &in, const datainterface::LoadContext &context);
    /// For a file before 400002: frees all lists, and removes the sets that only a host could fill
    /// again, with a note in the log.
    void purgeWeightSets(const datainterface::LoadContext &context);
    /// Whether every set has exactly one list for each object. Checked after the data source has
    /// been read.
    bool weightSetsFit() const;

    /// A geography's id is the upper half of a dataset's id, so it has 15 bits. A geography that is
    /// created when all ids are used gets this number and cannot be added to a project.
    static constexpr int kIdLimit = 0x8000;
    static int mNextId;

    QString mName;
    int mParentId = -1;
    MMetaData mMetaData;
    QVector<int> mParentObjectIds;
    TimeFormat mTimeFormat;
    int mId;
    bool mIsStatic = false;
    QString mFilePath; ///< where the data source keeps its files; never streamed
    MDataSource *mDataSource = nullptr;
    QList<MAttributes *> mAttributes;
    QSet<MLinker *> mObjectManagers;              ///< not owned
    QMap<int, AdjacencySet *> mSpatialWeightSets; ///< by their ids; owned

private:
    template <class Test>
    void selectWhere(int dataset, int realization, qint64 time, int attribute, Test test);
    void saveWeightSets(QDataStream &out) const;
    bool readWeightSet(QDataStream &in, const datainterface::LoadContext &context);
    bool readNamedWeightSet(QDataStream &in, const datainterface::LoadContext &context);
};
