// SPDX-License-Identifier: MIT
// Any bytes as a project: the load answers, and whatever was read of it can be looked at, saved and
// let go.
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <cstdint>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
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

void lookAt(const Host &host)
{
    for (int geography : host.GetGeoData().keys()) {
        for (int set : VORN_GetGeographyProperties(geography).weightSets.keys()) {
            QVector<neighborDatum> neighbors;
            for (unsigned int object = 0; object < 10; ++object)
                VORN_GetSpatialWeights(set, object, 5, neighbors, VORN_MissingData());
        }
        for (int id : VORN_GetGeographyProperties(geography).datasetIds) {
            const DatasetProps props = VORN_GetDatasetProperties(id);
            QVector<datum> values;
            QSet<int> missing;
            QVector<Interval> times;
            VORN_GetAllDatasetTimes(id, 0, times);
            for (const Interval &interval : times.mid(0, 10))
                VORN_GetDataValues(id, 0, interval.startTime, values, missing);
        }
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
        try {
            lookAt(host);
            VORN_SaveProject(path);
        } catch (const vorn_error &) { // a block that does not hold what its dataset says
        }
    }
    VORN_UnloadProject();
    return 0;
}
