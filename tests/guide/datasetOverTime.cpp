// SPDX-License-Identifier: MIT
// [all]
#include "frame.h"

static qint64 day(int year, int month, int date)
{
    return VORN_ConstructTime(TF_Date, year, month, date, 0, 0, 0);
}

int main()
{
    Host host;
    const Library library(host);

    // Two towns; the second one is founded in 1920. An end that is not included is the start of the
    // next span.
    const qint64 start = day(1900, 1, 1), census = day(1930, 1, 1), end = day(1950, 1, 1);
    VORN_StartNewVectorGeography(QRectF(0, 0, 10, 10), start, end, -1);
    VORN_AddPointToChain(unsigned(VORN_CreateNewObjectChain()), {2, 3}, {start, end, true, false});
    VORN_AddPointToChain(unsigned(VORN_CreateNewObjectChain()), {7, 5},
                         {day(1920, 5, 1), end, true, false});
    const int towns = VORN_FinishVectorGeography("towns", "surveyed", TF_Date);

    // Slices: all objects share the spans, and a set says which of them have no value.
    const int people = VORN_NewVectorDataset(towns, "people", TimeSlice, IntegerType, 1, "/census");
    VORN_AddDataValues(people, 0, {start, census, true, false}, QVector<int>{900, 0}, {1}, true,
                       true);
    VORN_AddDataValues(people, 0, {census, end, true, false}, QVector<int>{1200, 300}, {}, true,
                       true);
    VORN_NewDatasetCreated(people);

    // A correction of one object over a part of a span divides the span.
    VORN_AddDataValue(people, 0, 1, {day(1940, 1, 1), end, true, false}, 450, true, true);
    VORN_DatasetChanged(people);

    QVector<Interval> spans;
    QVector<datum> values;
    for (unsigned town : {0U, 1U}) {
        VORN_GetObjectDataValues(people, 0, town, spans, values);
        for (int i = 0; i < spans.size(); ++i) {
            QString when;
            VORN_GetIntervalString(TF_Date, spans[i], when);
            std::printf("town %u %s: %lld\n", town, qPrintable(when), values[i].integerValue);
        }
    }
    double mean = 0;
    datum value;
    VORN_GetMean(people, 0, day(1945, 6, 1), mean);
    std::printf("mean in June 1945: %g\n", mean);
    std::printf("objects in 1910: %u\n", VORN_GetObjectCount(towns, day(1910, 1, 1)));
    std::printf("town 1 has a value in 1910: %s\n",
                VORN_GetDataValue(people, 0, 1, day(1910, 1, 1), value) ? "yes" : "no");
    return VORN_SaveProject(library.path("towns.vorn")) ? 0 : 1;
}
