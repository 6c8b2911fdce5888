// SPDX-License-Identifier: MIT
// Distributions and corrections of the library. They need no project.
#include <cmath>
#include <limits>
#include <optional>
#include <pybind11/stl.h>
#include "call.h"
#include "datainterface/StatisticsAPI.h"
#include "nouns.h"

namespace meridor::python {
namespace {

using Numbers = py::array_t<double, py::array::c_style | py::array::forcecast>;

/// Nothing for a fraction, NaN, and what no int holds.
std::optional<int> wholeNumber(double value)
{
    if (!(std::abs(value) <= std::numeric_limits<int>::max()) || value != std::trunc(value))
        return {};
    return static_cast<int>(value);
}

/// Applies a function of a number to an array; NaN outside its domain.
template <class Function> py::array each(const Numbers &values, Function function)
{
    std::vector<double> results(static_cast<size_t>(values.size()));
    for (size_t i = 0; i < results.size(); ++i)
        if (!function(values.data()[i], results[i]))
            results[i] = std::numeric_limits<double>::quiet_NaN();
    const py::array flat = arrayOf(std::move(results));
    return flat.attr("reshape")(values.attr("shape"));
}

using Correction = QVector<int> (*)(const QVector<double> &, const VORN_MissingData &, double);

/// The indices that a correction chooses, ascending. NaN is a missing p.
py::array correct(Correction correction, const Numbers &p, double alpha)
{
    QVector<double> known;
    std::vector<int> places;
    for (py::ssize_t i = 0; i < p.size(); ++i) {
        if (p.data()[i] != p.data()[i])
            continue;
        known.append(p.data()[i]);
        places.push_back(static_cast<int>(i));
    }
    std::vector<int> chosen;
    for (const int index : correction(known, VORN_MissingData(), alpha))
        chosen.push_back(places[static_cast<size_t>(index)]);
    std::sort(chosen.begin(), chosen.end());
    return arrayOf(std::move(chosen));
}

} // namespace

void addNumerics(py::module_ &module)
{
    module.def("normal_p", [](const Numbers &x) { return each(x, &VORN_GetNormalP); });
    module.def("normal_quantile",
               [](const Numbers &p) { return each(p, &VORN_GetNormalQuantile); });
    module.def("t_p", [](const Numbers &t, int df) {
        return each(t, [df](double x, double &p) { return VORN_GetTDistP(x, df, p); });
    });
    module.def("f_p", [](const Numbers &f, int df1, int df2) {
        return each(f, [=](double x, double &p) { return VORN_GetFDistP(x, df1, df2, p); });
    });
    module.def("chi_square_p", [](const Numbers &x, int df, bool lower) {
        return each(x,
                    [=](double value, double &p) { return VORN_GetChiDistP(value, df, lower, p); });
    });
    module.def("poisson_p", [](const Numbers &k, double mean) {
        return each(k, [mean](double count, double &p) {
            const auto whole = wholeNumber(count);
            return whole && VORN_GetPoissonP(*whole, mean, p);
        });
    });
    module.def("binomial_p", [](const Numbers &k, int n, double p, bool cumulative) {
        return each(k, [=](double count, double &result) {
            const auto whole = wholeNumber(count);
            return whole
                   && (cumulative ? VORN_GetCumBinomialP(n, *whole, p, result)
                                  : VORN_GetBinomialP(n, *whole, p, result));
        });
    });
    module.def("bonferroni", [](const Numbers &p, double alpha) {
        return correct(&VORN_PerformBonferroniCorrection, p, alpha);
    });
    module.def("holm", [](const Numbers &p, double alpha) {
        return correct(&VORN_PerformHolmCorrection, p, alpha);
    });
    module.def("simes", [](const Numbers &p, double alpha) {
        return correct(&VORN_PerformSimesCorrection, p, alpha);
    });
    module.def("fdr", [](const Numbers &p, double alpha) {
        return correct(&VORN_PerformFDRCorrection, p, alpha);
    });
}

} // namespace meridor::python
