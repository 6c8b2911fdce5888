// SPDX-License-Identifier: MIT
// What a foreign host does first: derive a controller, build a geography, give it values, read
// them, catch a failure.
#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <cstdio>
#include "datainterface/DataInterface.h"

namespace {

class Host : public ControllerBase {
public:
    ~Host() override = default;
    void RemoveGeography(int id) override { delete GetGeoData().take(id); }
    void AddToLog(const QString &text, bool) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(text));
    }
};

bool works()
{
    if (!VORN_StartNewVectorGeography(QRectF(0, 0, 10, 10), 0, 10, -1))
        return false;
    for (int i = 0; i < 3; ++i) {
        const int chain = VORN_CreateNewObjectChain();
        if (!VORN_AddPointToChain(static_cast<unsigned>(chain), QPointF(i, i),
                                  Interval{0, 10, true, true}))
            return false;
    }
    const int wells = VORN_FinishVectorGeography("wells", "", TF_Integer);
    const int level = VORN_NewVectorDataset(wells, "level", TimeSlice, DecimalType, 1, "");
    const QVector<double> values{1.5, 2.5, 3.5};
    double mean = 0;
    return VORN_AddDataValues(level, 0, Interval{1, 2, true, true}, values, QSet<int>{1}, true,
                              true)
           && VORN_NewDatasetCreated(level) && VORN_GetMean(level, 0, 1, mean) && mean == 2.5;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QTemporaryDir scratch;
    Host host;
    InitializeCInterface(&host);
    InitializeDataManager(scratch.path(), 1 << 20);
    bool caught = false;
    try {
        VORN_Progress::PopProgressBarSection();
    } catch (const vorn_error &) {
        caught = true;
    }
    const bool good = works() && caught;
    VORN_UnloadProject();
    ClearDataManager();
    std::puts(good ? "good" : "bad");
    return good ? 0 : 1;
}
