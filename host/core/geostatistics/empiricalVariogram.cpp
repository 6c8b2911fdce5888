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
constexpr size_t kRun = 256;
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
        mColumns = static_cast<size_t>(wide / mSide) + 1;
        mRows = static_cast<size_t>(high / mSide) + 1;
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
        for (size_t row = own + 1; row < mRows; ++row) {
            const double up =
                std::max(0.0, mBottom + static_cast<double>(row) * mSide - y[i] - mSlack);
            if (up > reach)
                return;
            const double half = std::sqrt(reach * reach - up * up) + mSlack;
            visit(startOf(row, columnOf(x[i] - half)), startOf(row, columnOf(x[i] + half) + 1));
        }
    }
    size_t size() const { return x.size(); }

    std::vector<double> x, y, values, others; ///< others: empty, or of the second variable

private:
    size_t columnOf(double at) const { return indexOf((at - mLeft) / mSide, mColumns); }
    size_t rowOf(double at) const { return indexOf((at - mBottom) / mSide, mRows); }
    static size_t indexOf(double position, size_t count)
    {
        return static_cast<size_t>(std::clamp(position, 0.0, static_cast<double>(count - 1)));
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

    double mCutoff, mLeft, mBottom, mSide, mSlack;
    size_t mColumns, mRows;
    std::vector<size_t> mStarts; ///< of the cells in the lists, and their end
};

/// The pairs of a sample with a run of others.
struct Run {
    double squares[kRun];
    double lags[kRun];
    double terms[kRun];
    int classes[kRun]; ///< of `count` classes; count: at the same place; count + 1: too far
};

/// The class of a separation, of at most `count`. A limit belongs to the class below it.
inline int classAt(double position, int count)
{
    const double within = std::min(position, static_cast<double>(count));
    const int index = static_cast<int>(within);
    return std::min(index - static_cast<int>((index == within) & (index > 0)), count - 1);
}

void classify(Run &run, const double *x, const double *y, double fromX, double fromY, size_t size,
              double width, double cutoff, int count)
{
    const double most = cutoff * cutoff;
    for (size_t j = 0; j < size; ++j) {
        const double dx = x[j] - fromX;
        const double dy = y[j] - fromY;
        run.squares[j] = dx * dx + dy * dy;
        run.lags[j] = std::sqrt(run.squares[j]);
    }
    for (size_t j = 0; j < size; ++j) {
        int index = classAt(run.lags[j] / width, count);
        index = run.squares[j] == 0 ? count : index;
        run.classes[j] = run.squares[j] > most ? count + 1 : index;
    }
}

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
    const auto classes = static_cast<int>(mClasses);
    // One more class for pairs at the same place, and one for those that are too far.
    const size_t stride = mClasses + 2;
    std::vector<Sum> lanes(kLanes * stride);
    Run run;
    const auto addRun = [&](size_t i, size_t from, size_t size) {
        classify(run, &sorted.x[from], &sorted.y[from], sorted.x[i], sorted.y[i], size, mPlan.width,
                 mPlan.cutoff, classes);
        const double value = sorted.values[i];
        const double *const z = &sorted.values[from];
        if (sorted.others.empty()) {
            for (size_t j = 0; j < size; ++j)
                run.terms[j] = term(value - z[j], 0.0);
        } else {
            const double other = sorted.others[i];
            const double *const u = &sorted.others[from];
            for (size_t j = 0; j < size; ++j)
                run.terms[j] = term(value - z[j], other - u[j]);
        }
        if (!mPlan.directions.empty()) {
            for (size_t j = 0; j < size; ++j)
                if (run.classes[j] <= classes)
                    addPair(run.lags[j], sorted.x[from + j] - sorted.x[i],
                            sorted.y[from + j] - sorted.y[i], run.terms[j], 1);
            return;
        }
        Sum *const sums = lanes.data();
        for (size_t j = 0; j < size; ++j) {
            Sum &sum = sums[(j % kLanes) * stride + static_cast<size_t>(run.classes[j])];
            sum.value += run.terms[j];
            sum.lag += run.lags[j];
            ++sum.pairs;
        }
    };
    for (size_t i = 0; i < sorted.size(); ++i) {
        sorted.partnersOf(i, [&](size_t from, size_t to) {
            for (; from < to; from += kRun)
                addRun(i, from, std::min(kRun, to - from));
        });
        if (i % 64 == 0)
            meter(static_cast<int>(100 * i / sorted.size()));
    }
    for (size_t lane = 0; lane < kLanes; ++lane) {
        for (size_t k = 0; k <= mClasses; ++k) {
            const Sum &part = lanes[lane * stride + k];
            Sum &sum = k == mClasses ? mColocated : mSums[k];
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
