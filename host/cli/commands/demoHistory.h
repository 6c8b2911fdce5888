// SPDX-License-Identifier: MIT
/// The part of the demo about shapes that change: states and territories of two centuries.
#pragma once
#include "cli/commands/demoSteps.h"

namespace meridor {

constexpr const char *kHistoryResults[] = {"then_and_now.png", "states_history.gpkg"};
/// The times of the four maps.
constexpr const char *kThenAndNow[] = {"1790-08-02", "1860-06-01", "1900-06-01", "2000-04-01"};

class HistoryDemo {
public:
    HistoryDemo(DemoSteps &steps, const DemoPlace &place) : mSteps(steps), mPlace(place) {}
    /// Imports the map and counts objects and neighbours then and now.
    void thenAndNow();
    /// Writes the shapes with their values and reads them back. For the loaded project.
    void takenAway();

private:
    QString import();
    QString linksAt(const char *day, int objects, int links);
    QString maps();
    QString shapes();

    DemoSteps &mSteps;
    const DemoPlace &mPlace;
    int mGeography = -1;
    int mQueen = -1;
};

} // namespace meridor
