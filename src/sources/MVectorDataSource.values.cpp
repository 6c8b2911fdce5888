// SPDX-License-Identifier: MIT
#include "datainterface/MVectorDataSource.h"
#include "sources/askVector.h"

using namespace datainterface;

namespace {

template <class T>
bool addSeries(MVectorDataSource &source, int id, int realization, unsigned int object,
               const QVector<QPair<TimeStamp, T>> &values, bool overwrite, bool updateFrequencies)
{
    return askVector(source, id, [&](MVectorDataset &dataset) {
        return dataset.AddTimeSeriesValues(realization, static_cast<int>(object), values, overwrite,
                                           updateFrequencies);
    });
}

template <class T>
bool addSlice(MVectorDataSource &source, int id, int realization, const TimeStamp &stamp,
              const QVector<T> &values, const QSet<int> &missing, bool overwrite,
              bool updateFrequencies)
{
    return askVector(source, id, [&](MVectorDataset &dataset) {
        return dataset.AddTimeSliceValues(realization, stamp, values, missing, overwrite,
                                          updateFrequencies);
    });
}

// Values are not interpolated in time, which is not possible for texts.
template <class T>
bool getValues(const MVectorDataSource &source, int id, int realization, qint64 t,
               QVector<T> &values, QSet<int> &missing)
{
    return askVector(source, id, [&](const MVectorDataset &dataset) {
        if constexpr (std::is_same_v<T, QString>)
            return dataset.GetValues(realization, t, values, missing);
        else
            return dataset.GetValues(realization, t, values, missing, false);
    });
}

} // namespace

bool MVectorDataSource::AddTimeSeriesValues(int id, int realization, unsigned int object,
                                            const QVector<QPair<TimeStamp, QString>> &values,
                                            bool overwrite, bool updateFrequencies)
{
    return addSeries(*this, id, realization, object, values, overwrite, updateFrequencies);
}

bool MVectorDataSource::AddTimeSeriesValues(int id, int realization, unsigned int object,
                                            const QVector<QPair<TimeStamp, int>> &values,
                                            bool overwrite, bool updateFrequencies)
{
    return addSeries(*this, id, realization, object, values, overwrite, updateFrequencies);
}

bool MVectorDataSource::AddTimeSeriesValues(int id, int realization, unsigned int object,
                                            const QVector<QPair<TimeStamp, double>> &values,
                                            bool overwrite, bool updateFrequencies)
{
    return addSeries(*this, id, realization, object, values, overwrite, updateFrequencies);
}

bool MVectorDataSource::AddTimeSliceValues(int id, int realization, const TimeStamp &stamp,
                                           const QVector<QString> &values, const QSet<int> &missing,
                                           bool overwrite, bool updateFrequencies)
{
    return addSlice(*this, id, realization, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataSource::AddTimeSliceValues(int id, int realization, const TimeStamp &stamp,
                                           const QVector<int> &values, const QSet<int> &missing,
                                           bool overwrite, bool updateFrequencies)
{
    return addSlice(*this, id, realization, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataSource::AddTimeSliceValues(int id, int realization, const TimeStamp &stamp,
                                           const QVector<double> &values, const QSet<int> &missing,
                                           bool overwrite, bool updateFrequencies)
{
    return addSlice(*this, id, realization, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataSource::GetDataValues(int id, int realization, qint64 t, QVector<double> &values,
                                      QSet<int> &missing)
{
    return getValues(*this, id, realization, t, values, missing);
}

bool MVectorDataSource::GetDataValues(int id, int realization, qint64 t, QVector<int> &values,
                                      QSet<int> &missing)
{
    return getValues(*this, id, realization, t, values, missing);
}

bool MVectorDataSource::GetDataValues(int id, int realization, qint64 t, QVector<QString> &values,
                                      QSet<int> &missing)
{
    return getValues(*this, id, realization, t, values, missing);
}

MDatum MVectorDataSource::GetVectorDataValue(int id, int realization, unsigned int object, qint64 t,
                                             bool interpolate)
{
    return askVector(*this, id, [=](MVectorDataset &dataset) {
        return dataset.GetValue(static_cast<int>(object), t, interpolate, realization);
    });
}

bool MVectorDataSource::AddDataValue(int id, int realization, unsigned int object,
                                     const TimeStamp &stamp, const MDatum &value, bool overwrite,
                                     bool updateFrequencies)
{
    return askVector(*this, id, [&](MVectorDataset &dataset) {
        return dataset.AddDataValue(realization, static_cast<int>(object), stamp, value, overwrite,
                                    updateFrequencies);
    });
}

const QMap<int, int> *MVectorDataSource::GetIntegerFrequencies(int id)
{
    return askVector(*this, id,
                     [](MVectorDataset &dataset) { return dataset.GetIntegerFrequencies(); });
}

const QMap<QString, int> *MVectorDataSource::GetStringFrequencies(int id)
{
    return askVector(*this, id,
                     [](MVectorDataset &dataset) { return dataset.GetStringFrequencies(); });
}

const QMap<double, int> *MVectorDataSource::GetDecimalFrequencies(int id)
{
    return askVector(*this, id,
                     [](MVectorDataset &dataset) { return dataset.GetDoubleFrequencies(); });
}

bool MVectorDataSource::CanBeId(int id)
{
    return askVector(*this, id, [](MVectorDataset &dataset) {
        bool isCapped = false;
        return dataset.AllUniqueValues(0, &isCapped);
    });
}

MDatum MVectorDataSource::GetIdDataValue(int id, int realization, unsigned int object)
{
    return askVector(*this, id, [=](MVectorDataset &dataset) {
        return dataset.GetIdValue(realization, object);
    });
}

bool MVectorDataSource::HasMissingValues(int id)
{
    return askVector(*this, id, [](MVectorDataset &dataset) {
        for (int realization = 0; realization < dataset.GetRealizationCount(); ++realization)
            if (dataset.HasMissing(realization))
                return true;
        return false;
    });
}

bool MVectorDataSource::IsMissing(int id, int realization, unsigned int object, qint64 t)
{
    return askVector(*this, id, [=](MVectorDataset &dataset) {
        return dataset.IsMissing(realization, static_cast<int>(object), t);
    });
}

bool MVectorDataSource::GetMissingValues(int id, int realization, qint64 t, QSet<int> &missing)
{
    return askVector(*this, id, [&](MVectorDataset &dataset) {
        return dataset.GetMissingTimeSliceValues(realization, t, missing);
    });
}

bool MVectorDataSource::SetMissingValue(int id, int realization, unsigned int object,
                                        const TimeStamp &stamp)
{
    return askVector(*this, id, [&](MVectorDataset &dataset) {
        return dataset.SetMissing(realization, static_cast<int>(object), stamp);
    });
}
