// SPDX-License-Identifier: MIT
/// A geography of points, lines or polygons that can change through time.
#pragma once
#include <QHash>
#include <QList>
#include <QSet>
#include <QVector>
#include <memory>
#include "datainterface/MGeoData.h"
#include "datainterface/export.h"

class Fennims;
class MVectorDataSource;

/// Wraps a Fennims and numbers its chains with the object indices that datasets use: 0 to n - 1 in
/// ascending order of chain id.
class DATAINTERFACE_EXPORT MVectorData : public MGeoData {
    Q_OBJECT
public:
    MVectorData(const QString &name, TimeFormat format, const QString &filePath);
    ~MVectorData() override;

    bool SaveToStream(QDataStream &out) override;
    bool RestoreFromStream(QDataStream &in) override;
    bool IsValid() const override;
    void SetName(const QString &name) override;
    GeoProps GetProperties() override;
    unsigned int GetObjectCount() const override;
    TimeStamp GetTimeBounds() override;
    using MGeoData::GetBoundingRect;
    RectInT GetBoundingRect() override;
    /// Connects the slots of MGeoData::AddListener and the slots ObjectsWillBeRemovedSlot and
    /// ObjectsWereRemovedSlot, each (int, const QSet<int> &).
    bool AddListener(QObject *listener) override;
    bool HasObjectsWithMissingData(int dataset) const override;
    void SelectObjectsByValue(int dataset, int realization, qint64 time, const QSet<MDatum> &values,
                              int attribute) override;
    void SelectObjectsByRange(int dataset, int realization, qint64 time, double low, double high,
                              int attribute) override;

    /// Takes ownership of the geometry, creates the data source and numbers the objects.
    /// @param createDefaultWeightSet  whether the set of CreateDefaultAdjacencySet is added,
    ///         without the objects themselves as neighbours.
    /// @return always true.
    virtual bool Initialize(Fennims *fennims, bool createDefaultWeightSet);
    /// Removes objects and their values. The indices of later objects decrease, and the lists of
    /// weight sets are freed. Indices out of range are ignored.
    virtual void RemoveObjects(const QSet<int> &objects);
    /// Replaces the geometry by one with the same number of chains, and deletes what was derived
    /// from the old one: the lists of weight sets and the variogram models. Takes ownership only on
    /// success. False when the counts differ; raises "Invalid data source type".
    virtual bool ReplaceVORN(Fennims *fennims);
    /// Always returns null: a subset is created by ControllerBase::AddNewVectorGeography.
    virtual MVectorData *CreateFromSubset(const QString &name, bool flag,
                                          const QSet<unsigned int> &objects);
    /// True when at least one object exists at the time.
    virtual bool ExistsAtTime(qint64 time);
    /// The objects without a value at the time: those that are missing in the dataset and those
    /// that do not exist.
    virtual bool GetMissingValues(int dataset, int realization, qint64 time, QSet<int> &missing);
    virtual bool SetMissingValue(int dataset, int realization, unsigned int object,
                                 const TimeStamp &stamp);

    Fennims *GetFennims() const { return mFennims.get(); }
    MVectorDataSource *GetVectorDataSource() const { return mVectorDataSource; }
    /// Object index to chain id.
    const QVector<int> &GetFennimIdMap() const { return mFennimIdMap; }
    int GetFennimId(unsigned int index) const;
    /// The object index of a chain; -1 when there is none.
    int GetObjectId(int chainId) const
    {
        if (mObjectIndexByFennimId.isEmpty())
            return chainId >= 0 && chainId < mFennimIdMap.size() ? chainId : -1;
        return mObjectIndexByFennimId.value(chainId, -1);
    }
    /// The disjoint intervals, in order, on each of which the set of objects and their shapes stays
    /// the same.
    QList<TimeStamp> GetMergedObjectTimes() const;

Q_SIGNALS:
    void ObjectsWillBeRemovedSignal(int geographyId, const QSet<int> &objects);
    void ObjectsWereRemovedSignal(int geographyId, const QSet<int> &objects);

protected:
    bool Restore(QDataStream &in, datainterface::LoadContext &context) override;

private:
    void numberObjects();
    void indexFennimIds();
    bool restoreObjectNumbers(QDataStream &in, const datainterface::LoadContext &context);
    bool restoreDataSource(QDataStream &in, datainterface::LoadContext &context);

    std::unique_ptr<Fennims> mFennims;
    MVectorDataSource *mVectorDataSource = nullptr; ///< mDataSource with its type
    QHash<int, int> mObjectIndexByFennimId;         ///< empty while each id equals its index
    QVector<int> mFennimIdMap;
};
