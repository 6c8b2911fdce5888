// SPDX-License-Identifier: MIT
/// Datasets that stand alone: no source, values of each element type from small numbers.
#pragma once
#include <QTemporaryDir>
#include "datainterface/DataBlocks.h"
#include "datainterface/MVectorDataset.h"
#include "datainterface/vorn_error.h"

/// A block store for the life of a test program.
class BlockStore {
public:
    BlockStore() { InitializeDataManager(mDirectory.path(), 1 << 22); }
    ~BlockStore() { ClearDataManager(); }

private:
    QTemporaryDir mDirectory;
};

class LoneDataset : public MVectorDataset {
public:
    LoneDataset() : MVectorDataset(nullptr, QString()) {}
    LoneDataset(DataType type, StorageType storage, int objectCount, int realizationCount = 1)
        : MVectorDataset(nullptr, storage, 7, type, "lone", "/here", realizationCount, objectCount)
    {
    }
    using MVectorDataset::CalculateTimeBounds;
};

template <class T> struct Sample;
template <> struct Sample<int> {
    static constexpr DataType type = IntegerType;
    static int value(int n) { return n; }
    static const auto &table(const MVectorDataset &dataset)
    {
        return *dataset.GetIntegerFrequencies();
    }
};
template <> struct Sample<double> {
    static constexpr DataType type = DecimalType;
    static double value(int n) { return n + 0.5; }
    static const auto &table(const MVectorDataset &dataset)
    {
        return *dataset.GetDoubleFrequencies();
    }
};
template <> struct Sample<QString> {
    static constexpr DataType type = StringType;
    static QString value(int n) { return "v" + QString::number(n); }
    static const auto &table(const MVectorDataset &dataset)
    {
        return *dataset.GetStringFrequencies();
    }
};

template <class T> QVector<T> samples(std::initializer_list<int> numbers)
{
    QVector<T> values;
    for (const int n : numbers)
        values.append(Sample<T>::value(n));
    return values;
}

/// The file label of the vorn_error that `call` raises; a null string when it raises none.
template <class Call> QString raisedLabel(Call call)
{
    try {
        call();
    } catch (const vorn_error &error) {
        return QString::fromLocal8Bit(error.what()).section('(', -1).section(',', 0, 0);
    }
    return QString();
}
