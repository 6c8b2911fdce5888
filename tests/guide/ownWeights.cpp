// SPDX-License-Identifier: MIT
// [all]
#include "frame.h"

/// The weighted mean of the values of an object's neighbours. False if no neighbour has a value.
static bool neighborMean(int set, int dataset, unsigned object, qint64 t, double &mean)
{
    const VORN_ConstDataContainer values(dataset, t, 0, false);
    QVector<neighborDatum> list;
    VORN_GetSpatialWeights(set, object, t, list, values.missingData());
    double sum = 0, weights = 0;
    for (const neighborDatum &neighbor : list) {
        sum += double(neighbor.weight) * values.value(neighbor.id);
        weights += double(neighbor.weight);
    }
    if (weights > 0)
        mean = sum / weights;
    return weights > 0;
}

int main()
{
    Host host;
    const Library library(host);
    const int towns = addTowns({{1, 1}, {5, 2}, {4, 8}, {9, 9}});
    auto *geography = static_cast<MGeoData *>(VORN_GetGeography(towns));

    // Trains a day between the towns; the railway to the fourth one opens in 1930. The geography
    // will own the set.
    auto *trains = new AdjacencySet("trains", geography, false, false);
    trains->AddInformation("timetables of the railway");
    const QVector<QVector<neighborDatum>> before{{{1, 8}, {2, 2}}, {{0, 8}}, {{0, 2}}, {}};
    const QVector<QVector<neighborDatum>> after{
        {{1, 8}, {2, 2}}, {{0, 8}, {3, 6}}, {{0, 2}}, {{1, 6}}};
    for (int town = 0; town < 4; ++town) {
        trains->AddToSpatialWeights(town, before[town], TimeStamp(1900, 1930, true, false), false);
        trains->AddToSpatialWeights(town, after[town], TimeStamp(1930, 2000, true, true), false);
    }
    geography->AddSpatialWeightSet(trains);
    const int set = trains->GetId();

    const int rent = VORN_NewVectorDataset(towns, "rent", TimeSlice, DecimalType, 1, "");
    VORN_AddDataValues(rent, 0, {1900, 2000, true, true}, QVector<double>{5, 4, 0, 9}, {2}, true,
                       true);
    VORN_NewDatasetCreated(rent);

    std::printf("%s: only the host can fill it: %s\n", qPrintable(trains->GetName()),
                VORN_IsCustomWeightSet(set) ? "yes" : "no");
    for (const qint64 t : {1910, 1950})
        for (const unsigned town : {0U, 1U, 3U}) {
            double mean = 0;
            if (neighborMean(set, rent, town, t, mean))
                std::printf("%lld, town %u: rent of its neighbours %.4f\n", t, town, mean);
            else
                std::printf("%lld, town %u: no neighbours\n", t, town);
        }

    const QString path = library.path("towns.vorn");
    QVector<neighborDatum> list;
    const bool saved = VORN_SaveProject(path);
    VORN_UnloadProject();
    const bool kept = saved && VORN_LoadProject(path)
                      && VORN_GetSpatialWeights(set, 1, 1950, list, VORN_MissingData());
    std::printf("after loading: %s, %d neighbours\n", kept ? "kept" : "lost", list.size());
}
