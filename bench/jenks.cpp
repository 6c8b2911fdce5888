// SPDX-License-Identifier: MIT
// Natural breaks in seven classes: a plain implementation of the recurrence compared with the
// library's, and the time and memory that repeated values cost.
#include <algorithm>
#include <fstream>
#include <random>
#include <string>
#include <vector>
#include "datainterface/MDataset.h"
#include "ratios.h"

namespace {

constexpr int kDistinct = 5000;
constexpr int kBreaks = 8; // of seven classes

QVector<double> sortedValues(int count)
{
    std::mt19937 random(7);
    std::lognormal_distribution<double> income(10.0, 0.4);
    std::vector<double> distinct(kDistinct);
    std::generate(distinct.begin(), distinct.end(), [&] { return income(random); });
    QVector<double> values(count);
    for (int i = 0; i < count; ++i)
        values[i] =
            distinct[static_cast<std::size_t>(i < kDistinct ? i : int(random() % kDistinct))];
    std::sort(values.begin(), values.end());
    return values;
}

// Tries every split of each prefix; the cost of a class is updated as it grows by one element.
QList<double> plainBreaks(const QVector<double> &data)
{
    const std::size_t n = static_cast<std::size_t>(data.size());
    constexpr std::size_t k = kBreaks - 1;
    std::vector<std::vector<double>> cost(k + 1, std::vector<double>(n + 1, HUGE_VAL));
    std::vector<std::vector<std::size_t>> back(k + 1, std::vector<std::size_t>(n + 1, 1));
    for (std::size_t first = 0; first < n; ++first) {
        double sum = 0.0;
        double squares = 0.0;
        for (std::size_t last = first; last < n; ++last) {
            const double value = data[static_cast<int>(last)];
            sum += value;
            squares += value * value;
            const double within = squares - sum * sum / static_cast<double>(last - first + 1);
            if (first == 0) {
                cost[1][last + 1] = within;
                continue;
            }
            for (std::size_t c = 2; c <= k; ++c) {
                const double total = cost[c - 1][first] + within;
                if (total < cost[c][last + 1]) {
                    cost[c][last + 1] = total;
                    back[c][last + 1] = first;
                }
            }
        }
    }
    QList<double> breaks{data.last()};
    std::size_t j = n;
    for (std::size_t c = k; c >= 2; --c) {
        j = back[c][j];
        breaks.prepend(0.5 * (data[static_cast<int>(j) - 1] + data[static_cast<int>(j)]));
    }
    breaks.prepend(data.first());
    return breaks;
}

double peakMegabytes()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    double kilobytes = 0.0;
    while (status >> word)
        if (word == "VmHWM:")
            status >> kilobytes;
    return kilobytes / 1024.0;
}

void resetPeak()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

} // namespace

int main()
{
    const QVector<double> few = sortedValues(kDistinct);
    const QVector<double> many = sortedValues(1000000);
    QList<double> ours, plain;
    const double fewTime =
        ratios::best(5, 1, [&] { ours = MDataset::GetJenksBreaks(kBreaks, few); });
    const double plainTime = ratios::best(3, 1, [&] { plain = plainBreaks(few); });
    if (ours != plain) {
        std::puts("the breaks differ");
        return 1;
    }
    resetPeak();
    const double before = peakMegabytes();
    const double manyTime =
        ratios::best(3, 1, [&] { ours = MDataset::GetJenksBreaks(kBreaks, many); });
    const double grown = peakMegabytes() - before;
    ratios::head("Natural breaks, 7 classes");
    ratios::row("5,000 distinct values", fewTime * 1e-6, "the recurrence, plainly",
                plainTime * 1e-6, 0.1, "ms");
    ratios::row("1,000,000 values, 5,000 distinct", manyTime * 1e-6, "5,000 values", fewTime * 1e-6,
                3.0, "ms");
    ratios::row("memory for 1,000,000 values", grown, "limit", 10.0, 1.0, "MB");
    return ratios::missed ? 1 : 0;
}
