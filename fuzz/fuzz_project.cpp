// SPDX-License-Identifier: MIT
// Arbitrary bytes as a project: loading returns, and what was read can be queried as hosts do,
// saved, loaded again and deleted.
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <cstdint>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MDatum.h"
#include "datainterface/MVectorData.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/WeightsAPI.h"
#include "datainterface/vorn_error.h"

namespace {

class Host : public ControllerBase {
public:
    Host()
    {
        InitializeCInterface(this);
        InitializeDataManager(directory.filePath(QStringLiteral("blocks")), 1000000);
    }
    ~Host() override { ClearDataManager(); }
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }

    QTemporaryDir directory;
};

void lookAtWeights(int geography)
{
    for (int set : VORN_GetGeographyProperties(geography).weightSets.keys()) {
        QVector<neighborDatum> neighbors;
        for (unsigned int object = 0; object < 10; ++object)
            VORN_GetSpatialWeights(set, object, 5, neighbors, VORN_MissingData());
    }
}

void lookAtStatistics(MDataSource &source, int id, qint64 t)
{
    double number = 0.0;
    MDatum value;
    source.GetMean(id, 0, t, number);
    source.GetStddev(id, 0, t, number);
    source.GetMin(id, 0, t, value);
    source.GetMax(id, 0, t, value);
    source.GetGlobalMin(id, 0, value);
    source.GetGlobalMax(id, 0, value);
    source.GetDataCount(id, 0, t);
}

void lookAtDataset(MDataSource &source, int id)
{
    VORN_GetDatasetProperties(id);
    source.GetDataFrequencies(id);
    if (source.IsNumeric(id))
        for (const auto method : {MDataset::EqualIntervals, MDataset::Quantiles, MDataset::Jenks})
            source.GetIntervalBreaks(id, 0, 5, method, false);
    QVector<Interval> times;
    VORN_GetAllDatasetTimes(id, 0, times);
    for (const Interval &interval : times.mid(0, 10)) {
        QVector<datum> values;
        QSet<int> missing;
        VORN_GetDataValues(id, 0, interval.startTime, values, missing);
        lookAtStatistics(source, id, interval.startTime);
    }
}

// A query may raise when a block does not match its dataset. The following queries are made
// nevertheless.
template <class Ask> void allow(Ask ask)
{
    try {
        ask();
    } catch (const vorn_error &) {
    }
}

void lookAt(Host &host)
{
    for (MGeoData *geography : std::as_const(host.GetGeoData())) {
        allow([&] { lookAtWeights(geography->GetId()); });
        allow([&] { geography->GetBoundingRect(); });
        MDataSource &source = *geography->GetDataSource();
        for (const DataId &id : source.GetDatasetIds())
            allow([&] { lookAtDataset(source, id); });
        if (auto *vector = dynamic_cast<MVectorData *>(geography))
            allow([&] { vector->GetMergedObjectTimes(); });
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static int argc = 0;
    static QCoreApplication application(argc, nullptr);
    static Host host;
    static const QString path = host.directory.filePath(QStringLiteral("project"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size));
    file.close();
    if (VORN_LoadProject(path)) {
        lookAt(host);
        if (VORN_SaveProject(path))
            VORN_LoadProject(path);
    }
    VORN_UnloadProject();
    return 0;
}
