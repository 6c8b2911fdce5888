// SPDX-License-Identifier: MIT
#include "datasets/plainJenks.h"
#include <cmath>
#include "datainterface/VORN_Progress.h"

using namespace datainterface;

bool datainterface::continueBreaks(double part)
{
    return !VORN_Progress::UsingProgressBar()
           || VORN_Progress::UpdateProgress(static_cast<int>(100.0 * part), nullptr);
}

Splits datainterface::plainSplits(const ValueRuns &runs, int classes)
{
    std::vector<double> values;
    for (const ValueRun &run : runs)
        values.insert(values.end(), static_cast<std::size_t>(run.count), run.value);
    const int n = static_cast<int>(values.size());
    std::vector<std::vector<double>> best(classes + 1, std::vector<double>(n + 1, HUGE_VAL));
    std::vector<std::vector<int>> back(classes + 1, std::vector<int>(n + 1, 1));
    std::vector<double> cost(n + 1);
    for (int i = 0; i < n; ++i) {
        if (i % 64 == 0 && !continueBreaks(1.0 - std::pow(1.0 - static_cast<double>(i) / n, 2)))
            return {};
        GrowingCost growing;
        for (int j = i + 1; j <= n; ++j)
            cost[j] = growing.add(values[j - 1]);
        if (i == 0) {
            best[1] = cost;
            for (int c = 2; c <= classes; ++c)
                best[c][1] = 0.0;
            continue;
        }
        for (int c = 2; c <= classes; ++c) {
            const double before = best[c - 1][i];
            double *const row = best[c].data();
            int *const from = back[c].data();
            for (int j = i + 1; j <= n; ++j) {
                const double value = before + cost[j];
                from[j] = value < row[j] ? i : from[j];
                row[j] = value < row[j] ? value : row[j];
            }
        }
    }
    Splits splits;
    for (int c = classes, j = n; c > 1; --c) {
        j = back[c][j];
        splits.push_back(j);
    }
    return splits;
}
