// SPDX-License-Identifier: MIT
// The peer of Dataset.values in Python: the same slices read by the C++ call. Prints nanoseconds a call.
#include <chrono>
#include <cstdio>
#include "core/project/catalog.h"
#include "core/project/session.h"
#include "datainterface/DataAPI.h"

int main(int argc, char **argv)
{
    using Clock = std::chrono::steady_clock;
    if (argc != 4) {
        std::fprintf(stderr, "usage: plainSlices PROJECT DATASET CALLS\n");
        return 2;
    }
    meridor::Session session({});
    session.loadPacked(QString::fromLocal8Bit(argv[1]));
    const int dataset = meridor::findDataset(QString::fromLocal8Bit(argv[2]));
    const QVector<Interval> times = meridor::dataTimes(dataset);
    const int calls = std::atoi(argv[3]);
    double sum = 0;
    const auto read = [&](const Interval &when) {
        QVector<double> values;
        QSet<int> missing;
        VORN_GetDataValues(dataset, 0, when.startTime, values, missing);
        sum += values.constLast();
    };
    for (const Interval &when : times) // unpacks all
        read(when);
    const auto begun = Clock::now();
    for (int i = 0; i < calls; ++i)
        read(times[i % times.size()]);
    const std::chrono::duration<double, std::nano> taken = Clock::now() - begun;
    std::printf("%.17g %.17g\n", taken.count() / calls, sum);
    return 0;
}
