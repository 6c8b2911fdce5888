// SPDX-License-Identifier: MIT
/// Walks through rearrangements of object indices for Monte Carlo and exact tests: `for (int i = 0;
/// i < it.nRandomizations(); ++i, it++) use(it.indices());` visits each of them. The meaning of
/// `done` differs: for shuffles the present rearrangement is the last one; for combinations and
/// permutations `next` was called after the last one, which is still in `indices()`.
#pragma once
#include <QVector>
#include <vector>
#include "datainterface/export.h"

/// The present rearrangement is in `indices()`. `next` does nothing at the end.
class DATAINTERFACE_EXPORT randomizationIt {
public:
    virtual ~randomizationIt();
    /// Whether the end is reached; see above for its meaning.
    virtual bool done() = 0;
    /// Advances to the next rearrangement.
    virtual void next() = 0;
    /// How many rearrangements there are in all.
    virtual int nRandomizations() = 0;
    void operator++(int) { next(); }
    /// The present rearrangement, nIndices() elements, valid until the iterator advances.
    int *indices() { return mIndices; }
    int nIndices() const { return mIndexCount; }

protected:
    explicit randomizationIt(int indexCount);
    randomizationIt(const randomizationIt &other);
    randomizationIt &operator=(const randomizationIt &other);

    int mIndexCount;
    int *mIndices; ///< owned, new[]
};

/// Independent random permutations of 0 to nIndices - 1. The constructor makes the first one.
class DATAINTERFACE_EXPORT shuffleIt : public randomizationIt {
public:
    shuffleIt(int indexCount, int randomizations);
    bool done() override { return mCount >= mRandomizations; }
    void next() override;
    int nRandomizations() override { return mRandomizations; }

protected:
    /// Leaves the first rearrangement to the derived class.
    struct Unstarted {};
    shuffleIt(int indexCount, int randomizations, Unstarted);

    int mCount = 0;
    int mRandomizations;
};

/// Samples of K positions without replacement, each pick with probability proportional to weight,
/// in O(N) for a pick. Raises "K <= weights.size()". A pick can be -1 as in VORN_ChooseRandomIds.
class DATAINTERFACE_EXPORT weightedShuffleIt : public shuffleIt {
public:
    weightedShuffleIt(int K, const std::vector<double> &weights, int randomizations);
    void next() override;

private:
    std::vector<double> mWeights;
    std::vector<char> mPicked; ///< one flag a position, clear between picks
};

/// All K-subsets of 0 to N - 1 in lexical order. Raises "N >= K". A count beyond an int is clamped;
/// the iteration does not use it.
class DATAINTERFACE_EXPORT combinationIt : public randomizationIt {
public:
    combinationIt();
    combinationIt(int N, int K);
    bool done() override { return mFinished; }
    void next() override;
    int nRandomizations() override { return mRandomizations; }
    /// Starts again with the first one.
    void reset();

private:
    int mN;
    int mRandomizations;
    bool mFinished = false;
};

/// All ordered K-arrangements of 0 to N - 1 in lexical order. Raises "N >= K".
class DATAINTERFACE_EXPORT permutationIt : public randomizationIt {
public:
    permutationIt();
    permutationIt(int N, int K);
    bool done() override { return mFinished; }
    void next() override;
    int nRandomizations() override { return mRandomizations; }
    /// Starts again with the first one.
    void reset();

private:
    int mN;
    int mRandomizations;
    bool mFinished = false;
    QVector<char> mUsed; ///< one flag a value
};
