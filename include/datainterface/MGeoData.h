// SPDX-License-Identifier: MIT
/// A geography: a named set of spatial objects with all that hangs on it. Vector geographies are
/// MVectorData.
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

/// A QObject so that views can listen. Owns its data source, which the derived class makes, its
/// weight sets, and the attributes that the application adds.
class DATAINTERFACE_EXPORT MGeoData : public QObject {
    Q_OBJECT
public:
    /// Takes the next id of the process.
    MGeoData(const QString &name, TimeFormat format, const QString &filePath);
    ~MGeoData() override;

    virtual bool SaveToStream(QDataStream &out);
    /// By dataInterfaceVersionLoading. Also sets the id that the next geography of the process
    /// gets.
    virtual bool RestoreFromStream(QDataStream &in);
    virtual bool IsValid() const = 0;
    virtual QString GetName();
    /// Emits GeographyNameChangedSignal, also for the present name.
    virtual void SetName(const QString &name);
    virtual GeoProps GetProperties() = 0;
    /// The flag goes to all datasets too, which keep one slice at most when they become static.
    virtual void SetStatic(bool isStatic);
    virtual bool IsDatasetIdValid(int id) const;
    virtual bool IsNumeric(int id) const;
    virtual unsigned int GetObjectCount() const = 0;
    virtual TimeStamp GetTimeBounds() = 0;
    /// The box around all objects, in map units, and the time over which they exist.
    virtual RectInT GetBoundingRect() = 0;
    /// The same, the override's answer included, for callers that hold a constant geography.
    RectInT GetBoundingRect() const { return const_cast<MGeoData *>(this)->GetBoundingRect(); }
    /// Connects the listener's slots of MDataSource::AddListener and
    /// GeographyNameChangedSlot(MGeoData *, const char *). A missing slot raises "Can't connect
    /// signals".
    virtual bool AddListener(QObject *listener);
    /// False, with the argument untouched, when the tag "Distance unit" is absent.
    virtual bool GetDistanceUnit(QString &unit) const;
    /// In this geography's time format.
    virtual QString TimeToString(qint64 t, const char *dateFormat, const char *timeFormat);
    /// A step as "[1y,0m,0d]", as "[1h,0m,0s]", as both, or as a plain number, by the time format.
    virtual QString TimeStepToString(const TimeStep &step);
    /// True when an object exists at a time that the dataset does not cover.
    virtual bool HasObjectsWithMissingData(int dataset) const = 0;
    /// Sets an attribute of population 0 for each object whose value at the time is one of
    /// `values`; the others keep theirs. Views hear of it once. Values compare by type: an integer
    /// dataset holds no 1.0. Nothing happens without attributes. Raises "Invalid dataset type" for
    /// a dataset that is not of this geography.
    virtual void SelectObjectsByValue(int dataset, int realization, qint64 time,
                                      const QSet<MDatum> &values, int attribute) = 0;
    /// The same for the numbers from `low` to `high`, both included. Texts are no numbers.
    virtual void SelectObjectsByRange(int dataset, int realization, qint64 time, double low,
                                      double high, int attribute) = 0;

    /// Flags that views share; owned from now on. Population 0, the first, is the one in use.
    void AddAttributes(MAttributes *attributes);
    /// Null before they are added. Any population but 0 raises "Invalid attribute population id".
    MAttributes *GetAttributes(int population) const;
    /// A view on this geography; not owned. When the last one dies population 0 goes back to its
    /// idle state: attribute 0 set for all objects, attributes 1 and 2 clear.
    void AddObjectManager(MLinker *view);
    /// Any of the views; null when there is none.
    MLinker *GetObjectManager() const;

    /// Ends what AddListener began.
    void RemoveListener(QObject *listener);
    /// Connects the data source's three variogram signals to VariogramModelAddedSlot,
    /// ...RemovedSlot and ...ChangedSlot, each (const DataId &, qint32). A missing slot raises
    /// "Can't connect signals".
    bool AddVariogramModelListener(QObject *listener);
    /// Ends what AddVariogramModelListener began.
    void RemoveVariogramModelListener(QObject *listener);

    /// The weight set that suits the kind of objects: "Queen neighbors" of polygons, "Nearest 5
    /// neighbors" of points, "Rook neighbors (E-W-N-S)" of cells, with a number from 2 on when the
    /// geography has one of that name. The caller's, who adds it. Null for lines.
    static AdjacencySet *CreateDefaultAdjacencySet(MGeoData *geography, bool includeEgo);
    /// Enters `set` under its own id, owns it from then on and emits WeightSetAddedSignal. A set
    /// that stood under that id leaves the map without being freed: it is the caller's again.
    /// @return always true.
    bool AddSpatialWeightSet(AdjacencySet *set);
    // False, null or empty for an unknown id.
    /// Deletes the set.
    bool RemoveSpatialWeightSet(int id);
    /// Emits WeightSetRenamedSignal twice, since the set's own notice comes through it too.
    /// @param name  in the local 8-bit encoding.
    bool RenameSpatialWeightSet(int id, const char *name);
    /// Adds a copy with an id of its own and " copy" behind its name.
    bool DuplicateSpatialWeightSet(int id);
    AdjacencySet *GetSpatialWeightSet(int id);
    const AdjacencySet *GetSpatialWeightSet(int id) const;
    /// Whether the set has lists for the time, which is cut off to a whole number.
    bool HasSpatialWeightSetAtTime(int id, double time) const;
    /// The neighbours of an object; calculated when needed. Raises as
    /// AdjacencySet::PrecalcSpatialWeights.
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
    /// Ends what AddSpatialWeightSetListener began.
    void RemoveSpatialWeightSetListener(QObject *listener);

    int GetId() const { return mId; }
    /// The geography that this one was cut from; -1 when there is none.
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
    /// The blocks of the block store that its datasets and weight sets hold.
    void AppendBlockIds(QVector<int> &ids) const;
    /// Gives up the values of all datasets and the lists of all weight sets.
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
    /// An instant before the epoch that is not at midnight lands on the later day.
    static QDate ConvertToDate(qint64 t);
    /// Always a null time: hosts rely on the empty text that follows.
    static QTime ConvertToTime(qint64 t);
    /// The date and the time of day of a time value.
    static QDateTime ConvertToDateTime(qint64 t);
    /// `t` a step later: by the calendar, or with 365 days a year and 30 days a month when the step
    /// is exact. A time of day stops at 86399.
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
    /// A view goes: see AddObjectManager.
    virtual void ObjectManagerDyingSlot(MLinker *view);

protected:
    // What both kinds of geography do alike for a selection.
    /// See SelectObjectsByValue.
    void selectByValue(int dataset, int realization, qint64 time, const QSet<MDatum> &values,
                       int attribute);
    /// See SelectObjectsByRange.
    void selectByRange(int dataset, int realization, qint64 time, double low, double high,
                       int attribute);

    friend class datainterface::ProjectReader;
    /// RestoreFromStream with what the parts of a load tell each other.
    virtual bool Restore(QDataStream &in, datainterface::LoadContext &context);

    /// The fields that every kind of geography fills alike.
    GeoProps BaseProperties();

    /// The id and the counter, as they stand together in every version.
    bool restoreIds(QDataStream &in, const datainterface::LoadContext &context);
    /// The weight sets, under ids or, in files before 120000, under names.
    bool readWeightSets(QDataStream &in, const datainterface::LoadContext &context);
    /// Of a file before 400002: frees all lists, and removes the sets that only a host could fill
    /// again, with a note.
    void purgeWeightSets(const datainterface::LoadContext &context);
    /// Whether every set has as many lists as there are objects; asked when the data source has
    /// been read.
    bool weightSetsFit() const;

    /// Ids are the upper half of a dataset's id, so there are 15 bits for them. A geography that is
    /// made when all are given out has this number and cannot be entered.
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
