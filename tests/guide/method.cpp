// SPDX-License-Identifier: MIT
// [all]
#include <QMap>
#include <functional>
#include "frame.h"

/// Stores (value - mean) / standard deviation of each time as a new dataset.
static bool standardize(const QVector<MethodParameter> &parameters, MethodReport &report)
{
    const int source = parameters.value(0).value.toInt();
    const int geography = VORN_GetGeographyId(source);
    QVector<Interval> times;
    if (!VORN_GetAllDatasetTimes(source, 0, times)) {
        report.text = "no such dataset";
        return false;
    }
    const QString name = VORN_GetDatasetProperties(source).name + " standardized";
    const int target = VORN_NewVectorDataset(geography, VORN_GetUniqueDatasetName(geography, name),
                                             TimeSlice, DecimalType, 1, "");
    for (const Interval &when : times) {
        const qint64 t = TimeStamp(when).timeInInterval();
        QVector<double> values;
        QSet<int> missing;
        double mean = 0, deviation = 0;
        VORN_GetNumericValues(source, 0, t, values, missing);
        if (!VORN_GetMean(source, 0, t, mean) || !VORN_GetStddev(source, 0, t, deviation)
            || deviation == 0)
            continue; // a time without values, or with equal ones, has no result
        for (double &value : values)
            value = (value - mean) / deviation;
        VORN_AddDataValues(target, 0, when, values, missing, true, true);
    }
    VORN_NewDatasetCreated(target);
    report.text = QString("%1 times").arg(times.size());
    report.results = {{"dataset", target}};
    return true;
}

/// A host with a table of methods. Analyses, menus and scripts call them through the library.
class Workbench : public Host {
public:
    using Method = std::function<bool(const QVector<MethodParameter> &, MethodReport &)>;
    bool ExecuteMethod(int method, const QString &, const QVector<MethodParameter> &parameters,
                       MethodReport &report) override
    {
        return mMethods.contains(method) && mMethods[method].second(parameters, report);
    }
    QString GetMethodName(int method, const QString &) override
    {
        return mMethods.value(method).first;
    }

private:
    QMap<int, QPair<QString, Method>> mMethods{{1, {"Standardize", standardize}}};
};

int main()
{
    Workbench host;
    const Library library(host);
    const int towns = addTowns({{1, 1}, {5, 2}, {4, 8}});
    const int rent = VORN_NewVectorDataset(towns, "rent", TimeSlice, DecimalType, 1, "");
    VORN_AddDataValues(rent, 0, {1950, 1960, true, false}, QVector<double>{4, 8, 6}, {}, true,
                       true);
    VORN_AddDataValues(rent, 0, {1960, 1970, true, false}, QVector<double>{5, 0, 9}, {1}, true,
                       true);

    MethodReport report;
    const bool done = VORN_ExecuteMethod(1, "", {{"dataset", rent}}, report);
    std::printf("%s: %s, %s\n", qPrintable(VORN_GetMethodName(1, "")), done ? "done" : "failed",
                qPrintable(report.text));
    const int scores = report.results.value(0).value.toInt();
    for (const qint64 t : {1955, 1965})
        for (const unsigned town : {0U, 1U, 2U}) {
            double score = 0;
            if (VORN_GetDataValue(scores, 0, town, t, score))
                std::printf("%lld, town %u: %.4f\n", t, town, score);
        }
    const bool unknown = VORN_ExecuteMethod(1, "", {{"dataset", 999}}, report);
    std::printf("of an unknown dataset: %s, %s\n", unknown ? "done" : "failed",
                qPrintable(report.text));
}
