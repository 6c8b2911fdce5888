// SPDX-License-Identifier: MIT
#include "core/geostatistics/normalScores.h"
#include <QString>
#include <algorithm>
#include <numeric>
#include "core/project/failure.h"
#include "datainterface/StatisticsAPI.h"

namespace meridor {

NormalScores::NormalScores(const std::vector<double> &values) : mScores(values.size())
{
    std::vector<size_t> order(values.size());
    std::iota(order.begin(), order.end(), size_t(0));
    std::sort(order.begin(), order.end(), [&values](size_t a, size_t b) {
        return values[a] != values[b] ? values[a] < values[b] : a < b;
    });
    const auto n = static_cast<double>(values.size());
    for (size_t first = 0, end = 0; first < order.size(); first = end) {
        double sum = 0;
        for (end = first; end < order.size() && values[order[end]] == values[order[first]]; ++end) {
            double score = 0;
            VORN_GetNormalQuantile((static_cast<double>(end) + 0.5) / n, score);
            sum += score;
        }
        const double score = sum / static_cast<double>(end - first);
        for (size_t i = first; i < end; ++i)
            mScores[order[i]] = score;
        mKnotScores.push_back(score);
        mKnotValues.push_back(values[order[first]]);
    }
    if (mKnotValues.size() < 2)
        fail(QStringLiteral("normal scores need two different values"));
}

double NormalScores::valueOf(double score) const
{
    const auto above = std::upper_bound(mKnotScores.begin(), mKnotScores.end(), score);
    if (above == mKnotScores.begin())
        return mKnotValues.front();
    const auto i = static_cast<size_t>(above - mKnotScores.begin()) - 1;
    if (above == mKnotScores.end() || score == mKnotScores[i])
        return mKnotValues[i];
    const double share = (score - mKnotScores[i]) / (mKnotScores[i + 1] - mKnotScores[i]);
    return mKnotValues[i] + share * (mKnotValues[i + 1] - mKnotValues[i]);
}

} // namespace meridor
