// SPDX-License-Identifier: MIT
// Random deviates, by transformation and by rejection from a Lorentzian envelope (W. H. Press et
// al., Numerical Recipes in C, 7.2 and 7.3).
#include <algorithm>
#include <cmath>
#include <limits>
#include "datainterface/StatisticsAPI.h"
#include "numerics/deviates.h"
#include "numerics/distributions.h"

namespace datainterface {
namespace {

constexpr double kPi = 3.14159265358979323846;
// 1 / (2^32 - 1). Only the triangular deviate draws from a closed interval.
constexpr double kOneOver32Ones = 2.3283064370807974e-10;
constexpr double kFewExpected = 12.0; // smaller Poisson means are counted
constexpr int kFewTrials = 25;        // fewer binomial trials are drawn one by one

// Normal deviates by the Box-Muller transform, which gives two at a time; the second is kept for
// the next call.
class NormalStream {
public:
    void seed(quint32 seed)
    {
        mGenerator.seed(seed);
        mHasSecond = false;
    }
    double next()
    {
        if (mHasSecond) {
            mHasSecond = false;
            return mSecond;
        }
        double first = 0.0;
        pair(first, mSecond);
        mHasSecond = true;
        return first;
    }
    void fill(double *values, int count)
    {
        int i = 0;
        if (mHasSecond && count > 0)
            values[i++] = next();
        for (; i + 1 < count; i += 2)
            pair(values[i], values[i + 1]);
        if (i < count)
            values[i] = next();
    }

private:
    void pair(double &first, double &second)
    {
        const double radius = std::sqrt(-2.0 * std::log(openUniformDraw(mGenerator)));
        const double angle = 2.0 * kPi * uniformDraw(mGenerator);
        first = radius * std::cos(angle);
        second = radius * std::sin(angle);
    }

    MersenneTwister mGenerator;
    double mSecond = 0.0;
    bool mHasSecond = false;
};

NormalStream &normalStream()
{
    static NormalStream stream;
    return stream;
}

double open()
{
    return openUniformDraw(ownGenerator());
}

// Counts the draws that can be multiplied before their product falls to `limit`, exp(-mean).
int countMultiplications(double limit)
{
    int count = -1;
    double product = 1.0;
    do {
        ++count;
        product *= open();
    } while (product > limit);
    return count;
}

int toCount(double value)
{
    return static_cast<int>(std::min(value + 0.5, double(std::numeric_limits<int>::max())));
}

// Values that a Poisson deviate computes from its mean, kept for the next call with the same mean.
struct PoissonMemory {
    double mean = -1.0;
    double root = 0.0;
    double logMean = 0.0;
    double g = 0.0;

    void prepare(double newMean)
    {
        if (newMean == mean)
            return;
        mean = newMean;
        if (mean < kFewExpected) {
            g = std::exp(-mean);
            return;
        }
        root = std::sqrt(2.0 * mean);
        logMean = std::log(mean);
        g = mean * logMean - lnGamma(mean + 1.0);
    }
};

double rejectPoisson(const PoissonMemory &memory)
{
    for (;;) {
        double y = 0.0;
        double count = 0.0;
        do {
            y = std::tan(kPi * open());
            count = memory.root * y + memory.mean;
        } while (count < 0.0);
        count = std::floor(count);
        const double bound = 0.9 * (1.0 + y * y)
                             * std::exp(count * memory.logMean - lnGamma(count + 1.0) - memory.g);
        if (open() <= bound)
            return count;
    }
}

// The same for a binomial deviate and its trials and probability.
struct BinomialMemory {
    int n = -1;
    double p = -1.0;
    double logFactorial = 0.0; ///< of n
    double q = 0.0;
    double logP = 0.0;
    double logQ = 0.0;

    void prepare(int newN, double newP)
    {
        if (newN != n) {
            n = newN;
            logFactorial = lnGamma(n + 1.0);
        }
        if (newP != p) {
            p = newP;
            q = 1.0 - p;
            logP = std::log(p);
            logQ = std::log(q);
        }
    }
};

double rejectBinomial(const BinomialMemory &memory)
{
    const double mean = memory.n * memory.p;
    const double root = std::sqrt(2.0 * mean * memory.q);
    for (;;) {
        double y = 0.0;
        double count = 0.0;
        do {
            y = std::tan(kPi * open());
            count = root * y + mean;
        } while (!(count >= 0.0 && count < memory.n + 1.0));
        count = std::floor(count);
        const double bound =
            1.2 * root * (1.0 + y * y)
            * std::exp(memory.logFactorial - lnGamma(count + 1.0) - lnGamma(memory.n - count + 1.0)
                       + count * memory.logP + (memory.n - count) * memory.logQ);
        if (open() <= bound)
            return count;
    }
}

} // namespace

MersenneTwister &ownGenerator()
{
    static MersenneTwister generator;
    return generator;
}

void seedGenerators(quint32 seed)
{
    ownGenerator().seed(seed);
    normalStream().seed(seed);
}

} // namespace datainterface

using namespace datainterface;

void VORN_SetRandomSeed(int seed)
{
    seedGenerators(static_cast<quint32>(seed));
}

double VORN_GetUniformDeviate()
{
    return uniformDraw(ownGenerator());
}

double VORN_GetNormalDeviate()
{
    return normalStream().next();
}

QVector<double> VORN_GetNormalDeviates(int n)
{
    QVector<double> values(std::max(n, 0));
    normalStream().fill(values.data(), values.size());
    return values;
}

double VORN_GetTriangularDeviate(double mean, double width)
{
    const double w = ownGenerator().draw() * kOneOver32Ones;
    const double offset = 0.5 < w ? 0.5 - std::sqrt((1.0 - w) * 0.5) : std::sqrt(w * 0.5) - 0.5;
    return offset * width + mean;
}

double VORN_GetExponentialDeviate(double mean)
{
    return -std::log(open()) * mean;
}

int VORN_GetPoissonDeviate(double mean)
{
    if (!(mean > 0.0) || !std::isfinite(mean))
        return 0;
    static PoissonMemory memory;
    memory.prepare(mean);
    return mean < kFewExpected ? countMultiplications(memory.g) : toCount(rejectPoisson(memory));
}

int VORN_GetBinomialDeviate(double p, int n)
{
    if (!(p >= 0.0 && p <= 1.0) || n < 1)
        return 0;
    const double smaller = p <= 0.5 ? p : 1.0 - p;
    const double mean = n * smaller;
    int count = 0;
    if (n < kFewTrials) {
        for (int i = 0; i < n; ++i)
            count += uniformDraw(ownGenerator()) < smaller;
    } else if (mean < 1.0) {
        const double limit = std::exp(-mean);
        double product = 1.0;
        for (; count < n; ++count) {
            product *= open();
            if (product < limit)
                break;
        }
    } else {
        static BinomialMemory memory;
        memory.prepare(n, smaller);
        count = toCount(rejectBinomial(memory));
    }
    return smaller == p ? count : n - count;
}
