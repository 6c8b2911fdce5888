// SPDX-License-Identifier: MIT
/// The part of the demo about values over time: income per head of the contiguous states.
#pragma once
#include "cli/commands/demoSteps.h"
#include "core/analysis/tables.h"

namespace meridor {

constexpr const char *kIncomeResults[] = {"income_2009.png", "income_moran.csv", "moran_2009.svg",
                                          "income.csv",      "income.dat",       "income.dbf",
                                          "queen_2000.gal"};

class IncomeDemo {
public:
    IncomeDemo(DemoSteps &steps, const DemoPlace &place, Session &session)
        : mSteps(steps), mPlace(place), mSession(session)
    {
    }
    /// Imports the incomes: statistics, classes, map, Moran's I of every year.
    void incomesConverge();
    /// Links while states come into being, and a weights file that is read back.
    void neighborsThroughTime();
    /// Writes tables and reads them back. For the loaded project.
    void takenAway();

private:
    QString import();
    QString statistics(const char *year, double mean);
    QString classes(const char *year, const QVector<double> &expected);
    QString map();
    QString series();
    QString moranOfAllYears();
    QString moranScatterOf2009();
    QString linksAt(const char *year, int objects, int links);
    QString weightsFile();
    QString exportAs(const char *name, TableFormat format);
    bool replaceBytes(const char *name, const QByteArray &bytes) const;
    int geography() const;

    DemoSteps &mSteps;
    const DemoPlace &mPlace;
    Session &mSession;
    int mIncome = -1;
    int mQueen = -1;
};

} // namespace meridor
