// SPDX-License-Identifier: MIT
/// The second part of the demo: monthly grids of rain and temperature, and their means over
/// counties.
#pragma once
#include "cli/commands/commands.h"
#include "cli/commands/demoSteps.h"
#include "core/import/samples.h"

namespace meridor {

constexpr const char *kClimateResults[] = {"rain_1999_09.png", "rain_1999_09.tif"};

class ClimateDemo {
public:
    ClimateDemo(DemoSteps &steps, const DemoPlace &place, Session &session)
        : mSteps(steps), mPlace(place), mSession(session)
    {
    }
    /// Imports the grids and makes one map of counties out of them.
    void oneMapOutOfAGrid();
    /// Writes a grid and reads it back. For the loaded project.
    void takenAway();

private:
    int importGrid(Sample sample);
    QString import();
    QString missing() const;
    QString extremes();
    QString january() const;
    QString counties();
    QString means();
    QString county(const char *name, double expected) const;
    QString map() const;
    QString exported() const;

    DemoSteps &mSteps;
    const DemoPlace &mPlace;
    Session &mSession;
    int mRain = -1;
    int mTemperature = -1;
    int mCounties = -1;
    int mMeans = -1; ///< dataset of mean rain by county and month
};

} // namespace meridor
