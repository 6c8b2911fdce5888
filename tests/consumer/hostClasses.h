// SPDX-License-Identifier: MIT
/// What a host can put in the place of the library's own: a class of each kind that may be derived
/// from, with every pure operation and those whose form is easily missed. `override` is the check.
#pragma once
#include "datainterface/DataInterface.h"

class Host : public ControllerBase {
public:
    ~Host() override = default;
    void MarkProjectClean() override { mProjectDirty = false; }
    void MarkProjectDirty() override { mProjectDirty = true; }
    int ShowMethod(int, const QString &, const QVector<MethodParameter> &) override { return 5; }
    bool ExecuteMethod(int, const QString &, const QVector<MethodParameter> &,
                       MethodReport &) override
    {
        return true;
    }
    QString GetDatasetPropertiesStringForCurrentMethod() override { return {}; }
    void ShowSpatialWeightSetDialog(int, bool, bool) override {}
    void ShowVariogramModelDialog(VariogramModel &, bool, int, bool) override {}
    int CreateMapWindow(int, qint64, const QString &, const ColorSchemeInfo &,
                        const ColorSchemeInfo &, const SymbolSchemeInfo &) override
    {
        return 6;
    }
    bool CreateMapLayer(int, int, const ColorSchemeInfo &, const ColorSchemeInfo &,
                        const SymbolSchemeInfo &) override
    {
        return true;
    }
    void SyncViews(QList<int>, qint64) override {}
    bool ShowSpatialWeightsInMap(int, int, int) override { return true; }
    int CreateGraphWindow(enum GraphTypes type, const QVector<int> &, qint64, const QString &,
                          const ColorSchemeInfo &, const QPointF *, const QRectF *) override
    {
        return type;
    }
    bool GenerateVariogramModel(VariogramModel &model, const DataId &, const Interval &,
                                enum VariogramModel::EstimatorTypes estimator, const DataId &, int,
                                bool, double, bool) override
    {
        model.estimator = estimator;
        return true;
    }
    bool HasGUI() override { return false; }
    void AddToLog(const QString &text, bool) override { log += text; }
    void ShowHelpTopic(const char *) override {}
    QString GetInvocationStringForMethod(int, const QString &,
                                         const QVector<MethodParameter> &) override
    {
        return {};
    }
    QString GetMethodName(int, const QString &name) override { return name; }
    QString GetUniqueGeographyName(const QString &name) override
    {
        return ControllerBase::GetUniqueGeographyName(name);
    }
    QString GetUniqueDatasetName(int geography, const QString &name) override
    {
        return ControllerBase::GetUniqueDatasetName(geography, name);
    }
    int AddNewVectorGeography(const QString &file, const QString &name, const QString &history,
                              enum TimeFormat format, int parent,
                              const QVector<int> *objects) override
    {
        return ControllerBase::AddNewVectorGeography(file, name, history, format, parent, objects);
    }
    int AddNewRasterGeography(const QString &name, unsigned int rows, unsigned int columns,
                              const QRectF &bounds, const TimeStamp &stamp, enum TimeFormat format,
                              const QString &history, const QString &projection) override
    {
        return ControllerBase::AddNewRasterGeography(name, rows, columns, bounds, stamp, format,
                                                     history, projection);
    }
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }

    QString log;
};

class View : public MLinker {
public:
    bool UpdateView() override { return true; }
    void ClearSelection() override { changes.clear(); }
    void AttributeChanged(const changedAttributes &change) override { changes.unite(change.ids); }

    QSet<unsigned int> changes;

protected:
    void PrimarySelectorStatusChanged(bool) override {}
};

class Flags : public MAttributes {
public:
    using MAttributes::MAttributes;
    void AddOwner(MLinker *owner) override { MAttributes::AddOwner(owner); }
    bool SetAttribute(int attribute, unsigned int id, bool state) override
    {
        return MAttributes::SetAttribute(attribute, id, state);
    }
};

class GridFlags : public MRasterAttributes {
public:
    using MRasterAttributes::MRasterAttributes;
    void AddOwner(MLinker *owner) override { MRasterAttributes::AddOwner(owner); }
    void SetAttributeRect(int attribute, const QRect &rect, bool state) override
    {
        MRasterAttributes::SetAttributeRect(attribute, rect, state);
    }
};

/// Datasets that are listed from elsewhere.
class Source : public MDataSource {
public:
    Source() : MDataSource(QString(), 7 << 16) {}
    QList<DataId> GetDatasetIds() override { return {DataId(7 << 16)}; }
    unsigned int GetObjectCount() const override { return 1; }
    bool IsDatasetIdValid(int id) const override { return DataId(id) == 7 << 16; }
    void IncDisplayIndex(double &x, double &, double &) const override { x += 1; }
    bool GetCommonTimeStamp(int, int, qint64, TimeStamp &) const override { return false; }
    QList<double> GetIntervalBreaks(int, int, int, MDataset::ClassificationType, bool) override
    {
        return {};
    }
    QMap<MDatum, int> GetDataFrequencies(int) override { return {{MDatum(1L), 1}}; }
    int GetUniqueValueCount(int) const override { return 1; }
    bool SetHierarchyPath(int, const QString &) override { return false; }
    bool SetHierarchyPath(int, const QList<MDataset::pathLevel> &) override { return false; }
    bool GetHierarchyPath(int, QList<MDataset::pathLevel> &) const override { return false; }
    bool GetHierarchyPathAsString(int, QString &) const override { return false; }
    bool GetTimeBounds(int, TimeStamp &) const override { return false; }
    TimeStamp GetTimeBounds() override { return TimeStamp::Invalid; }
    bool GetMean(int, int, qint64, double &) override { return false; }
    bool GetStddev(int, int, qint64, double &) override { return false; }
    bool GetMax(int, int, qint64, MDatum &) override { return false; }
    bool GetMin(int, int, qint64, MDatum &) override { return false; }
    bool GetGlobalMin(int, int, MDatum &) override { return false; }
    bool GetGlobalMax(int, int, MDatum &) override { return false; }
    bool IsNumeric(int) const override { return true; }
};

class VectorSource : public MVectorDataSource {
public:
    using MVectorDataSource::MVectorDataSource;
    QList<DataId> GetDatasetIds() override { return MVectorDataSource::GetDatasetIds(); }
    const QMap<int, int> *GetIntegerFrequencies(int) override { return &integers; }
    const QMap<double, int> *GetDecimalFrequencies(int) override { return &decimals; }
    const QMap<QString, int> *GetStringFrequencies(int) override { return &texts; }

    QMap<int, int> integers;
    QMap<double, int> decimals;
    QMap<QString, int> texts;
};

class RasterSource : public MRasterDataSource {
public:
    using MRasterDataSource::MRasterDataSource;
    RectInT GetBoundingRect() override { return MRasterDataSource::GetBoundingRect(); }
    const QMap<double, int> *GetDoubleFrequencies(int) const override { return nullptr; }
    const QMap<float, int> *GetFloatFrequencies(int) const override { return nullptr; }
};

/// A geography of neither kind.
class Geography : public MGeoData {
public:
    Geography() : MGeoData(QStringLiteral("own"), TF_Integer, QString()) {}
    bool IsValid() const override { return true; }
    GeoProps GetProperties() override { return BaseProperties(); }
    unsigned int GetObjectCount() const override { return 1; }
    TimeStamp GetTimeBounds() override { return TimeStamp(3); }
    RectInT GetBoundingRect() override
    {
        RectInT box{};
        box.xMax = 4;
        return box;
    }
    bool HasObjectsWithMissingData(int) const override { return false; }
    void SelectObjectsByValue(int, int, qint64, const QSet<MDatum> &, int) override {}
    void SelectObjectsByRange(int, int, qint64, double, double, int) override {}
};

class Points : public MVectorData {
public:
    using MVectorData::MVectorData;
    RectInT GetBoundingRect() override { return MVectorData::GetBoundingRect(); }
    bool Initialize(Fennims *fennims, bool weights) override
    {
        return MVectorData::Initialize(fennims, weights);
    }
    void RemoveObjects(const QSet<int> &ids) override { MVectorData::RemoveObjects(ids); }
};

class Grid : public MRasterData {
public:
    using MRasterData::MRasterData;
    RectInT GetBoundingRect() override { return MRasterData::GetBoundingRect(); }
};

class Dataset : public MDataset {
public:
    explicit Dataset(MDataSource *source)
        : MDataset(source, 7 << 16, DecimalType, QStringLiteral("own"), QStringLiteral("/own"), 1)
    {
    }
    ~Dataset() override = default;
    bool CheckInRealization(int, int) const override { return true; }
    bool CheckOutRealization(int, int) const override { return true; }
    bool ObjectValueChanged(int, int, qint64, qint64) override { return false; }
    QList<double> GetIntervalBreaks(int, int, MDataset::ClassificationType, bool) override
    {
        return {};
    }
    bool RecalculateFrequencies() override { return true; }
    QMap<MDatum, int> GetDataFrequencies() override { return {}; }
    int UniqueValueCount(bool *) const override { return 0; }
    int GetDatumFrequency(const MDatum &) const override { return 0; }
    int GetDataCount(int, qint64) const override { return 1; }
    QList<TimeStamp> GetCommonTimeStamps(int) override { return {}; }
    QList<TimeStamp> GetDataIntervals(int, int) override { return {}; }
    bool IsNormalScoreDataset(qint64, int) const override { return false; }
    bool IsNumeric() const override { return true; }
    bool IsDecimal() const override { return true; }
    bool IsInteger() const override { return false; }
    bool HasMissing(int) const override { return false; }
    bool CalcMinMaxMean(int) const override { return false; }
    bool CalcMinMaxMean(int, qint64) const override { return false; }
    bool GetStdDev(int, qint64, double &) const override { return false; }
    MDatum GetValue(int id, qint64 time, bool, int realization) override
    {
        return GetValue(id, time, realization);
    }
    MDatum GetValue(int, qint64, int) override { return MDatum(1.5); }
    bool AddTimeSliceValues(int, const TimeStamp &, VORN_DataContainer &, bool, bool) override
    {
        return false;
    }
};

class VectorDataset : public MVectorDataset {
public:
    using MVectorDataset::MVectorDataset;
    ~VectorDataset() override = default;
    bool Resize(int count) override { return MVectorDataset::Resize(count); }
    void ClearRealization(MVectorDataRealization &realization) override
    {
        MVectorDataset::ClearRealization(realization);
    }
};

class RasterDataset : public MRasterDataset {
public:
    using MRasterDataset::MRasterDataset;
    const QMap<double, int> *GetDoubleFrequencies() const override
    {
        return MRasterDataset::GetDoubleFrequencies();
    }
    const QMap<float, int> *GetFloatFrequencies() const override
    {
        return MRasterDataset::GetFloatFrequencies();
    }
};

class Observation : public MRasterObservation {
public:
    using MRasterObservation::MRasterObservation;
    bool CheckOutObservation() const override
    {
        ++checkOuts;
        return MRasterObservation::CheckOutObservation();
    }

    mutable int checkOuts = 0;
};

class Weights : public AdjacencySet {
public:
    using AdjacencySet::AdjacencySet;
    bool SaveToStream(QDataStream &out) const override { return AdjacencySet::SaveToStream(out); }
};

/// The one arrangement that leaves everything in its place.
class Identity : public randomizationIt {
public:
    explicit Identity(int count) : randomizationIt(count) {}
    bool done() override { return true; }
    void next() override {}
    int nRandomizations() override { return 1; }
};

class Metadata : public MMetaData {};
class Band : public MRasterBand {
    using MRasterBand::MRasterBand;
};
class Models : public NonConVariogramModelManager {};
class Tree : public GeoPointTree {};
