// SPDX-License-Identifier: MIT
// What does loading an old project cost? A project of 100 MB with values in old forms is compared
// with the same project in the present form. After both loads every value is read.
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/ProjectAPI.h"
#include "ratios.h"
#include "support/oldProject.h"

namespace {

constexpr int kRounds = 5;
constexpr int kObjects = 10000;
constexpr int kCache = 64000000;

class Host : public ControllerBase {
public:
    Host()
    {
        InitializeCInterface(this);
        InitializeDataManager(directory.filePath(QStringLiteral("blocks")), kCache);
    }
    ~Host() override
    {
        VORN_UnloadProject();
        ClearDataManager();
    }
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }
    QString path(const char *name) const { return directory.filePath(QLatin1String(name)); }

    QTemporaryDir directory;
};

void load(const QString &path)
{
    VORN_UnloadProject();
    if (!VORN_LoadProject(path))
        std::abort();
}

template <class T> void readAll(int times)
{
    QVector<T> values;
    QSet<int> missing;
    for (int realization = 0; realization < 2; ++realization)
        for (int time = 0; time < times; ++time)
            VORN_GetDataValues(oldProject::kFirstDataset, realization, oldProject::start(time),
                               values, missing);
}

template <class T>
void compare(const Host &host, const char *name, int version, const oldProject::Dataset &dataset,
             int times, double loadTarget)
{
    const QString old = host.path("old");
    const QString present = host.path("present");
    {
        oldProject::Sample sample{version, kObjects, times, {dataset}};
        QFile file(old);
        if (!file.open(QIODevice::WriteOnly) || file.write(oldProject::write(sample)) < 0)
            std::abort();
        std::printf("%s: %.0f MB, ", name, static_cast<double>(file.size()) / 1e6);
    }
    load(old);
    if (!VORN_SaveProject(present))
        std::abort();
    std::printf("%.0f MB in the present form\n", static_cast<double>(QFile(present).size()) / 1e6);
    const double oldLoad = ratios::best(kRounds, 1e6, [&] { load(old); });
    const double presentLoad = ratios::best(kRounds, 1e6, [&] { load(present); });
    ratios::row("  loaded", oldLoad, "present form", presentLoad, loadTarget, "ms");
    const auto whole = [times](const QString &path) {
        return [=] {
            load(path);
            readAll<T>(times);
        };
    };
    ratios::row("  loaded, every value read", ratios::best(kRounds, 1e6, whole(old)),
                "present form", ratios::best(kRounds, 1e6, whole(present)), 2.0, "ms");
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const Host host;
    ratios::head("old projects");
    compare<double>(host, "slices of decimals, 1.02.000", 102000, {oldProject::Decimal, true}, 1100,
                    2.0);
    compare<double>(host, "series of decimals, 1.80.003", 180003, {oldProject::Decimal, false}, 210,
                    2.0);
    // Texts of the present form are loaded as bytes and decoded when they are read; old ones are
    // decoded at once.
    compare<QString>(host, "slices of texts, 1.80.003", 180003, {oldProject::Text, true}, 380, 3.5);
    return ratios::missed > 0;
}
