// SPDX-License-Identifier: MIT
#include "datainterface/randomizationIt.h"
#include <algorithm>
#include <limits>
#include <numeric>
#include "Common/detail/failure.h"
#include "numerics/deviates.h"
#include "numerics/sampling.h"

using namespace datainterface;

namespace {

// Rounds to the nearest integer; counts beyond an int are clamped.
int rounded(double count)
{
    return static_cast<int>(std::min(count + 0.5, double(std::numeric_limits<int>::max())));
}

// N (N - 1) ... (N - K + 1), divided by K! for subsets.
int arrangementCount(int n, int k, bool subsets)
{
    double count = 1.0;
    for (int i = 1; i <= k && count < 1e300; ++i)
        count *= (n - k + static_cast<double>(i)) / (subsets ? i : 1);
    return rounded(count);
}

int checkedSize(int n, int k)
{
    require(n >= k, "N >= K");
    return k;
}

} // namespace

randomizationIt::randomizationIt(int indexCount)
    : mIndexCount(std::max(indexCount, 0)),
      mIndices(new int[static_cast<std::size_t>(mIndexCount)]())
{
}

randomizationIt::randomizationIt(const randomizationIt &other) : randomizationIt(other.mIndexCount)
{
    std::copy_n(other.mIndices, mIndexCount, mIndices);
}

randomizationIt &randomizationIt::operator=(const randomizationIt &other)
{
    if (this == &other)
        return *this;
    int *copy = new int[static_cast<std::size_t>(other.mIndexCount)];
    std::copy_n(other.mIndices, other.mIndexCount, copy);
    delete[] mIndices;
    mIndices = copy;
    mIndexCount = other.mIndexCount;
    return *this;
}

randomizationIt::~randomizationIt()
{
    delete[] mIndices;
}

shuffleIt::shuffleIt(int indexCount, int randomizations)
    : shuffleIt(indexCount, randomizations, Unstarted())
{
    shuffleIt::next();
}

shuffleIt::shuffleIt(int indexCount, int randomizations, Unstarted)
    : randomizationIt(indexCount), mRandomizations(randomizations)
{
}

void shuffleIt::next()
{
    if (done())
        return;
    fillShuffled(mIndices, mIndexCount);
    ++mCount;
}

weightedShuffleIt::weightedShuffleIt(int K, const std::vector<double> &weights, int randomizations)
    : shuffleIt(K, randomizations, Unstarted()), mWeights(weights), mPicked(weights.size(), 0)
{
    require(K <= static_cast<int>(weights.size()), "K <= weights.size()");
    weightedShuffleIt::next();
}

void weightedShuffleIt::next()
{
    if (done())
        return;
    pickWeighted(mWeights.data(), static_cast<int>(mWeights.size()), mPicked.data(), mIndices,
                 mIndexCount);
    ++mCount;
}

combinationIt::combinationIt() : combinationIt(0, 0)
{
}

combinationIt::combinationIt(int N, int K)
    : randomizationIt(checkedSize(N, K)), mN(N), mRandomizations(arrangementCount(N, K, true))
{
    reset();
}

void combinationIt::reset()
{
    mFinished = false;
    std::iota(mIndices, mIndices + mIndexCount, 0);
}

void combinationIt::next()
{
    if (mFinished)
        return;
    int i = mIndexCount - 1;
    while (i >= 0 && mIndices[i] >= mN - mIndexCount + i)
        --i;
    if (i < 0) {
        mFinished = true;
        return;
    }
    std::iota(mIndices + i, mIndices + mIndexCount, mIndices[i] + 1);
}

permutationIt::permutationIt() : permutationIt(0, 0)
{
}

permutationIt::permutationIt(int N, int K)
    : randomizationIt(checkedSize(N, K)),
      mN(N),
      mRandomizations(arrangementCount(N, K, false)),
      mUsed(std::max(N, 0))
{
    reset();
}

void permutationIt::reset()
{
    mFinished = false;
    std::iota(mIndices, mIndices + mIndexCount, 0);
    mUsed.fill(0);
    std::fill_n(mUsed.begin(), mIndexCount, 1);
}

void permutationIt::next()
{
    if (mFinished)
        return;
    if (mIndexCount == mN) { // all values are in use, so mUsed is not needed
        mFinished = !std::next_permutation(mIndices, mIndices + mN);
        if (mFinished)
            std::prev_permutation(mIndices, mIndices + mN); // back to the last arrangement
        return;
    }
    char *const used = mUsed.data();
    for (int i = mIndexCount - 1; i >= 0; --i) {
        int value = mIndices[i];
        used[value] = 0;
        do
            ++value;
        while (value < mN && used[value]);
        if (value == mN)
            continue;
        mIndices[i] = value;
        used[value] = 1;
        int nextIndex = 0; // the lowest unused value
        for (int j = i + 1; j < mIndexCount; ++j) {
            while (nextIndex < mN && used[nextIndex])
                ++nextIndex;
            require(nextIndex < mN, "nextIndex < N");
            mIndices[j] = nextIndex;
            used[nextIndex] = 1;
        }
        return;
    }
    mFinished = true;
}
