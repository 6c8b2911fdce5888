// SPDX-License-Identifier: MIT
/// The second part of the demo: monthly grids of rain and temperature, and their means over
/// counties.
#pragma once
#include "cli/commands/commands.h"
#include "cli/commands/demoSteps.h"

namespace meridor {

constexpr const char *kClimateResults[] = {"rain.vorn", "rain_1999_09.png", "rain_1999_09.tif"};

class ClimateDemo {
public:
    ClimateDemo(DemoSteps &steps, Session &session, const Context &context,
                const QString &directory, const QString &samples)
        : mSteps(steps),
          mSession(session),
          mContext(context),
          mDirectory(directory),
          mSamples(samples)
    {
    }
    /// Runs the steps. The project must be empty.
    void run();

private:
    QString path(const char *name) const;
    int importGrid(const char *file);
    QString import();
    QString missing() const;
    QString extremes();
    QString january() const;
    QString counties();
    QString means();
    QString county(const char *name, double expected) const;
    QString map() const;
    QString saveAndLoad();
    QString exported() const;

    DemoSteps &mSteps;
    Session &mSession;
    const Context &mContext;
    QString mDirectory;
    QString mSamples;
    int mRain = -1;
    int mTemperature = -1;
    int mCounties = -1;
    int mMeans = -1; ///< dataset of mean rain by county and month
};

} // namespace meridor
