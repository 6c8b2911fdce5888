// SPDX-License-Identifier: MIT
#include <algorithm>
#include <numeric>
#include <vector>
#include "Common/detail/failure.h"
#include "datainterface/StatisticsAPI.h"
#include "numerics/deviates.h"
#include "numerics/sampling.h"

namespace datainterface {

void fillShuffled(int *indices, int count)
{
    std::iota(indices, indices + count, 0);
    MersenneTwister &generator = ownGenerator();
    for (int i = 0; i < count - 1; ++i)
        std::swap(indices[i], indices[drawPosition(generator, i, count)]);
}

void pickWeighted(const double *weights, int n, char *picked, int *positions, int count)
{
    double sum = std::accumulate(weights, weights + n, 0.0);
    for (int k = 0; k < count; ++k) {
        double left = sum * uniformDraw(ownGenerator());
        int position = -1;
        // Rounding can leave a remainder after all weights; the last position that is not picked is
        // taken then.
        for (int i = 0; left > 0.0 && i < n; ++i) {
            if (picked[i])
                continue;
            left -= weights[i];
            position = i;
        }
        positions[k] = position;
        if (position >= 0) {
            picked[position] = 1;
            sum -= weights[position];
        }
    }
    for (int k = 0; k < count; ++k) {
        if (positions[k] >= 0)
            picked[positions[k]] = 0;
    }
}

} // namespace datainterface

using namespace datainterface;

QVector<int> VORN_ShuffleIds(unsigned int n)
{
    QVector<int> ids(static_cast<int>(n));
    fillShuffled(ids.data(), ids.size());
    return ids;
}

QVector<int> VORN_ShuffleIds(unsigned int n, const VORN_MissingData &missing)
{
    if (missing.noneMissing())
        return VORN_ShuffleIds(n);
    QVector<int> ids(static_cast<int>(n));
    std::iota(ids.begin(), ids.end(), 0);
    QVector<int> present;
    std::copy_if(ids.cbegin(), ids.cend(), std::back_inserter(present),
                 [&](int id) { return !missing.isMissing(id); });
    const QVector<int> order = VORN_ShuffleIds(static_cast<unsigned int>(present.size()));
    for (int i = 0; i < present.size(); ++i)
        ids[present[i]] = present[order[i]];
    return ids;
}

QVector<int> VORN_ChooseRandomIds(int count, const QVector<double> &weights)
{
    if (count > weights.size())
        return QVector<int>();
    const double weightSum = std::accumulate(weights.cbegin(), weights.cend(), 0.0);
    require(weightSum != 0.0, "weightSum");
    QVector<int> ids(std::max(count, 0));
    std::vector<char> picked(static_cast<std::size_t>(weights.size()), 0);
    pickWeighted(weights.constData(), weights.size(), picked.data(), ids.data(), ids.size());
    return ids;
}
