// SPDX-License-Identifier: MIT
// Pairs of points. The samples are sorted by the cells of a grid, row by row, so that the samples of
// neighbouring cells of a row are contiguous. A sample makes pairs with those after it in its own row
// of cells and with those of the rows above, in the columns that the circle around it meets. Each
// pair is met once. Distances, classes and terms of a run of candidates are calculated without
// branches, in a form that the compiler turns into vector instructions; candidates beyond the cutoff
// get a class that nobody reads.
//
// Pairs of cells. All pairs of a grid with the same offset in columns and rows have the same
// separation and direction, so the sums of one offset are added to a class at once.
#include "core/geostatistics/empiricalVariogram.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include "core/project/failure.h"

namespace meridor {
namespace {

/// Cells along the cutoff: smaller cells compare fewer samples that are too far, in shorter runs.
constexpr double kCellsPerCutoff = 8;
/// Consecutive pairs are added to different sums: additions to one would wait for each other.
constexpr size_t kLanes = 4;
constexpr double kMostClasses = 10000;
constexpr double kPi = 3.14159265358979323846;
constexpr double kAngleSlack = 1e-9; ///< radians, so that a direction on a limit is within it

/// The angle between two undirected directions, 0 to pi / 2.
double angleBetween(double a, double b)
{
    const double turn = std::fabs(std::remainder(a - b, kPi));
    return turn;
}

/// The samples ordered by cells, row by row.
class SortedSamples {
public:
    /// Raises a Failure for places that are not finite.
    SortedSamples(const Samples &samples, const std::vector<double> &second, double cutoff)
        : mCutoff(cutoff)
    {
        const auto xs = std::minmax_element(samples.x.begin(), samples.x.end());
        const auto ys = std::minmax_element(samples.y.begin(), samples.y.end());
        mLeft = *xs.first;
        mBottom = *ys.first;
        const double wide = *xs.second - mLeft;
        const double high = *ys.second - mBottom;
        const auto finite = [](double v) { return std::isfinite(v); };
        if (!std::all_of(samples.x.begin(), samples.x.end(), finite)
            || !std::all_of(samples.y.begin(), samples.y.end(), finite) || !finite(wide + high))
            fail(QStringLiteral("a place is not finite"));
        // There are at most about three cells a sample.
        const auto n = static_cast<double>(samples.size());
        mSide = std::max(
            {cutoff / kCellsPerCutoff, std::sqrt(wide / n) * std::sqrt(high), wide / n, high / n});
        mPerSide = 1 / mSide;
        mColumns = static_cast<size_t>(wide * mPerSide) + 1;
        mRows = static_cast<size_t>(high * mPerSide) + 1;
        // Rounding of coordinates may place a sample in a cell beside its own.
        constexpr double kRounding = 8 * std::numeric_limits<double>::epsilon();
        mSlack = 1e-9 * cutoff + kRounding * (std::fabs(mLeft) + std::fabs(mBottom) + wide + high);
        sort(samples, second);
    }

    /// Calls `visit` with ranges of samples after `i`, among which are all within the cutoff.
    template <class Visit> void partnersOf(size_t i, const Visit &visit) const
    {
        const double reach = mCutoff + mSlack;
        const size_t own = rowOf(y[i]);
        visit(i + 1, startOf(own, columnOf(x[i] + reach) + 1));
        const double bottom = mBottom - y[i] - mSlack;
        for (size_t row = own + 1; row < mRows; ++row) {
            const double up =
                std::max(0.0, bottom + static_cast<double>(static_cast<qint64>(row)) * mSide);
            if (up > reach)
                return;
            const double half = std::sqrt(reach * reach - up * up) + mSlack;
            visit(startOf(row, columnOf(x[i] - half)), startOf(row, columnOf(x[i] + half) + 1));
        }
    }
    size_t size() const { return x.size(); }

    std::vector<double> x, y, values, others; ///< others: empty, or of the second variable

private:
    size_t columnOf(double at) const { return indexOf((at - mLeft) * mPerSide, mColumns); }
    size_t rowOf(double at) const { return indexOf((at - mBottom) * mPerSide, mRows); }
    static size_t indexOf(double position, size_t count)
    {
        // By a signed number: the processor has no conversion to unsigned ones.
        return static_cast<size_t>(static_cast<qint64>(
            std::clamp(position, 0.0, static_cast<double>(static_cast<qint64>(count) - 1))));
    }
    size_t startOf(size_t row, size_t column) const { return mStarts[row * mColumns + column]; }

    /// Counting sort, which keeps the order of the samples of a cell.
    void sort(const Samples &samples, const std::vector<double> &second)
    {
        std::vector<size_t> cells(samples.size());
        mStarts.assign(mColumns * mRows + 1, 0);
        for (size_t i = 0; i < samples.size(); ++i) {
            cells[i] = rowOf(samples.y[i]) * mColumns + columnOf(samples.x[i]);
            ++mStarts[cells[i] + 1];
        }
        std::partial_sum(mStarts.begin(), mStarts.end(), mStarts.begin());
        std::vector<size_t> next(mStarts.begin(), mStarts.end() - 1);
        for (std::vector<double> *list : {&x, &y, &values})
            list->resize(samples.size());
        others.resize(second.size());
        for (size_t i = 0; i < samples.size(); ++i) {
            const size_t to = next[cells[i]]++;
            x[to] = samples.x[i];
            y[to] = samples.y[i];
            values[to] = samples.values[i];
            if (!second.empty())
                others[to] = second[i];
        }
    }

    double mCutoff, mLeft, mBottom, mSide, mPerSide, mSlack;
    size_t mColumns, mRows;
    std::vector<size_t> mStarts; ///< of the cells in the lists, and their end
};

/// The class of a separation, of at most `count`. A limit belongs to the class below it.
inline int classAt(double position, int count)
{
    const double within = std::min(position, static_cast<double>(count));
    const int index = static_cast<int>(within);
    return std::min(index - static_cast<int>((index == within) & (index > 0)), count - 1);
}

/// Finds the class of a squared separation without its root: 0 for the same place, then the classes
/// of the plan from 1 on, then one for all that is too far.
class ClassFinder {
public:
    ClassFinder(double width, double cutoff, size_t count) : mLast(cutoff * cutoff)
    {
        const auto classes = static_cast<int>(count);
        mLimits.push_back(0);
        for (int index = 0; index + 1 < classes; ++index) {
            const auto isWithin = [&](double square) {
                return classAt(std::sqrt(square) / width, classes) <= index;
            };
            double limit = std::min(mLast, (index + 1) * width * ((index + 1) * width));
            while (!isWithin(limit))
                limit = std::nextafter(limit, 0);
            while (limit < mLast && isWithin(std::nextafter(limit, mLast)))
                limit = std::nextafter(limit, mLast);
            mLimits.push_back(limit);
        }
        mLimits.push_back(mLast);
        mLimits.push_back(std::numeric_limits<double>::infinity());
        mScale = (kEntries - 2) / mLast;
        size_t found = 0;
        for (size_t entry = 0; entry < kEntries; ++entry) {
            mFirst.push_back(static_cast<quint16>(found));
            // Rounding may put a square into the entry before its own.
            while (mLimits[found] * mScale < double(entry) + 1 - 1e-6)
                ++found;
        }
    }
    size_t of(double square) const
    {
        size_t found = mFirst[static_cast<size_t>(
            static_cast<int>(std::min(double(kEntries - 1), square * mScale)))];
        while (square > mLimits[found])
            ++found;
        return found;
    }

private:
    static constexpr size_t kEntries = 2048;
    double mLast;
    double mScale;
    std::vector<double> mLimits; ///< the largest square of each class
    std::vector<quint16> mFirst; ///< by entry, a kEntries-th of the squares: the least class in it
};

/// Pairs that are added together, since the processor takes the roots of several at a time.
struct Batch {
    static constexpr size_t kMost = 512;
    size_t size = 0;
    double squares[kMost];
    double lags[kMost];
    double terms[kMost];
    double dx[kMost]; ///< only for directions
    double dy[kMost];
};

} // namespace

void completeLags(LagPlan &plan, double diagonal)
{
    if (!(plan.cutoff > 0))
        plan.cutoff = diagonal / 3;
    if (!(plan.width > 0))
        plan.width = plan.cutoff / 15;
}

LagSums::LagSums(const LagPlan &plan) : mPlan(plan)
{
    if (!std::isfinite(plan.cutoff) || !(plan.cutoff > 0))
        fail(QStringLiteral("all places are the same; there are no separations"), "cutoff");
    if (!std::isfinite(plan.width) || !(plan.width > 0) || plan.width > plan.cutoff)
        fail(QStringLiteral("the width of a class is not between 0 and the cutoff"), "width");
    const double classes = std::ceil(plan.cutoff / plan.width * (1 - 1e-12));
    if (classes > kMostClasses)
        fail(QStringLiteral("the cutoff holds more than %1 classes").arg(kMostClasses), "width");
    mClasses = static_cast<size_t>(classes);
    mSums.resize(mClasses * std::max<size_t>(1, plan.directions.size()));
}

void LagSums::addPair(double h, double dx, double dy, double term, qint64 pairs)
{
    const auto count = [&](Sum &sum) {
        sum.value += term;
        sum.lag += h * static_cast<double>(pairs);
        sum.pairs += pairs;
    };
    if (h == 0) {
        count(mColocated);
        return;
    }
    const auto index = static_cast<size_t>(classAt(h / mPlan.width, static_cast<int>(mClasses)));
    if (mPlan.directions.empty()) {
        count(mSums[index]);
        return;
    }
    const double angle = std::atan2(dy, dx);
    for (size_t d = 0; d < mPlan.directions.size(); ++d)
        if (angleBetween(angle, mPlan.directions[d]) <= mPlan.tolerance + kAngleSlack)
            count(mSums[d * mClasses + index]);
}

template <class Term>
void LagSums::addPairs(const Samples &samples, const std::vector<double> &others, Term term,
                       const Meter &meter)
{
    if (samples.size() < 2)
        return;
    const SortedSamples sorted(samples, others, mPlan.cutoff);
    const ClassFinder classes(mPlan.width, mPlan.cutoff, mClasses);
    // One more class for pairs at the same place, and one for those that are too far.
    const size_t stride = mClasses + 2;
    std::vector<Sum> lanes(kLanes * stride);
    Batch batch;
    const auto flush = [&] {
        for (size_t j = 0; j < batch.size; ++j)
            batch.lags[j] = std::sqrt(batch.squares[j]);
        for (size_t j = 0; j < batch.size; ++j) {
            const size_t found = classes.of(batch.squares[j]);
            if (!mPlan.directions.empty()) {
                if (found <= mClasses)
                    addPair(batch.lags[j], batch.dx[j], batch.dy[j], batch.terms[j], 1);
                continue;
            }
            Sum &sum = lanes[(j % kLanes) * stride + found];
            sum.value += batch.terms[j];
            sum.lag += batch.lags[j];
            ++sum.pairs;
        }
        batch.size = 0;
    };
    const auto take = [&](size_t i, size_t from, size_t size) {
        const double *const x = &sorted.x[from];
        const double *const y = &sorted.y[from];
        const double *const z = &sorted.values[from];
        double *const squares = batch.squares + batch.size;
        double *const terms = batch.terms + batch.size;
        const double left = sorted.x[i];
        const double bottom = sorted.y[i];
        const double value = sorted.values[i];
        for (size_t j = 0; j < size; ++j) {
            const double dx = x[j] - left;
            const double dy = y[j] - bottom;
            squares[j] = dx * dx + dy * dy;
        }
        if (sorted.others.empty()) {
            for (size_t j = 0; j < size; ++j)
                terms[j] = term(value - z[j], 0.0);
        } else {
            const double *const u = &sorted.others[from];
            for (size_t j = 0; j < size; ++j)
                terms[j] = term(sorted.values[i] - z[j], sorted.others[i] - u[j]);
        }
        for (size_t j = 0; j < size && !mPlan.directions.empty(); ++j) {
            batch.dx[batch.size + j] = x[j] - sorted.x[i];
            batch.dy[batch.size + j] = y[j] - sorted.y[i];
        }
        batch.size += size;
    };
    for (size_t i = 0; i < sorted.size(); ++i) {
        sorted.partnersOf(i, [&](size_t from, size_t to) {
            while (from < to) {
                const size_t size = std::min(Batch::kMost - batch.size, to - from);
                take(i, from, size);
                from += size;
                if (batch.size == Batch::kMost)
                    flush();
            }
        });
        if (i % 64 == 0)
            meter(static_cast<int>(100 * i / sorted.size()));
    }
    flush();
    for (size_t lane = 0; lane < kLanes; ++lane) {
        for (size_t k = 0; k <= mClasses; ++k) {
            const Sum &part = lanes[lane * stride + k];
            Sum &sum = k == 0 ? mColocated : mSums[k - 1];
            sum.value += part.value;
            sum.lag += part.lag;
            sum.pairs += part.pairs;
        }
    }
}

void LagSums::add(const Samples &samples, const Meter &meter)
{
    if (mPlan.estimator == Estimator::Robust)
        addPairs(
            samples, {}, [](double dz, double) { return std::sqrt(std::fabs(dz)); }, meter);
    else
        addPairs(
            samples, {}, [](double dz, double) { return dz * dz; }, meter);
}

void LagSums::add(const Samples &samples, const std::vector<double> &others, const Meter &meter)
{
    addPairs(
        samples, others, [](double dz, double du) { return dz * du; }, meter);
}

namespace {

/// Sums over all pairs of cells that are `right` columns and `down` rows apart.
struct OffsetSum {
    double value = 0;
    qint64 pairs = 0;
};

template <class Term>
OffsetSum sumOfOffset(size_t columns, size_t rows, std::ptrdiff_t right, size_t down, Term term)
{
    OffsetSum sum;
    const size_t from = right < 0 ? static_cast<size_t>(-right) : 0;
    const size_t to = right < 0 ? columns : columns - static_cast<size_t>(right);
    for (size_t row = 0; row + down < rows; ++row) {
        for (size_t column = from; column < to; ++column) {
            const size_t a = row * columns + column;
            const size_t b = a + down * columns + static_cast<size_t>(right);
            const double value = term(a, b);
            if (std::isnan(value))
                continue;
            sum.value += value;
            ++sum.pairs;
        }
    }
    return sum;
}

} // namespace

double LagSums::addGrid(const std::vector<double> &values, const std::vector<double> &others,
                        int columns, double cellWidth, double cellHeight, const Meter &meter)
{
    const auto wide = static_cast<size_t>(columns);
    const size_t rows = values.size() / wide;
    const auto most = [&](double cell, size_t count) {
        return static_cast<std::ptrdiff_t>(
            std::min(std::floor(mPlan.cutoff / cell * (1 + 1e-12)), double(count) - 1));
    };
    const std::ptrdiff_t maxRight = most(cellWidth, wide);
    const std::ptrdiff_t maxDown = most(cellHeight, rows);
    std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>> offsets;
    double products = 0;
    for (std::ptrdiff_t down = 0; down <= maxDown; ++down) {
        for (std::ptrdiff_t right = down == 0 ? 1 : -maxRight; right <= maxRight; ++right) {
            if (std::hypot(static_cast<double>(right) * cellWidth,
                           static_cast<double>(down) * cellHeight)
                > mPlan.cutoff * (1 + 1e-12))
                continue;
            offsets.emplace_back(right, down);
            products += (double(wide) - std::fabs(double(right))) * double(rows - size_t(down));
        }
    }
    const auto step = static_cast<size_t>(std::max(1.0, std::ceil(products / kMostProducts)));
    const double *z = values.data();
    const double *u = others.data();
    for (size_t k = 0; k < offsets.size(); k += step) {
        const auto [right, down] = offsets[k];
        const auto sumOf = [&](auto term) {
            return sumOfOffset(wide, rows, right, static_cast<size_t>(down), term);
        };
        const OffsetSum sum =
            mPlan.estimator == Estimator::Cross
                ? sumOf([z, u](size_t a, size_t b) { return (z[a] - z[b]) * (u[a] - u[b]); })
            : mPlan.estimator == Estimator::Robust
                ? sumOf([z](size_t a, size_t b) { return std::sqrt(std::fabs(z[a] - z[b])); })
                : sumOf([z](size_t a, size_t b) { return (z[a] - z[b]) * (z[a] - z[b]); });
        const double dx = static_cast<double>(right) * cellWidth;
        const double dy = -static_cast<double>(down) * cellHeight;
        if (sum.pairs > 0)
            addPair(std::hypot(dx, dy), dx, dy, sum.value, sum.pairs);
        meter(static_cast<int>(100 * k / offsets.size()));
    }
    return 1.0 / static_cast<double>(step);
}

LagBin LagSums::binOf(const Sum &sum, double direction) const
{
    const auto n = static_cast<double>(sum.pairs);
    LagBin bin;
    bin.direction = direction;
    bin.pairs = sum.pairs;
    if (sum.pairs == 0)
        return bin;
    bin.lag = sum.lag / n;
    bin.value = mPlan.estimator == Estimator::Robust
                    ? std::pow(sum.value / n, 4) / (2 * (0.457 + 0.494 / n))
                    : sum.value / (2 * n);
    return bin;
}

std::vector<LagBin> LagSums::bins() const
{
    std::vector<LagBin> bins;
    for (size_t i = 0; i < mSums.size(); ++i)
        if (mSums[i].pairs > 0)
            bins.push_back(
                binOf(mSums[i], mPlan.directions.empty() ? 0 : mPlan.directions[i / mClasses]));
    return bins;
}

LagBin LagSums::colocated() const
{
    return binOf(mColocated, 0);
}

} // namespace meridor
