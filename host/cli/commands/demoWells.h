// SPDX-License-Identifier: MIT
/// The part of the demo on a made-up field of groundwater levels, which is known everywhere, and
/// wells that measure it.
#pragma once
#include "cli/commands/commands.h"
#include "cli/commands/demoSteps.h"

namespace meridor {

constexpr const char *kWellsResults[] = {"level_variogram.svg", "level_above_41.png"};
/// Datasets of the report whose maps are side by side; the first two have the same classes.
constexpr const char *kWellsMaps[] = {"truth", "predicted", "simulated deviation",
                                      "simulated above 41"};

class WellsDemo {
public:
    WellsDemo(DemoSteps &steps, const DemoPlace &place) : mSteps(steps), mPlace(place) {}
    /// From the wells to maps of the levels between them, of their error and of a probability, each
    /// compared with the field.
    void levelsBetweenWells();
    /// Asks the loaded realizations again.
    void askedAgain();

private:
    QString import();
    QString variogram();
    QString prediction();
    QString errors() const;
    QString validation();
    QString simulation();
    QString answers();
    QString reliability() const;
    QString map() const;

    DemoSteps &mSteps;
    const DemoPlace &mPlace;
    int mLevel = -1; ///< datasets: of the wells,
    int mTruth = -1; ///< and of the cells
    int mPredicted = -1;
    int mVariance = -1;
    int mSimulated = -1;
};

} // namespace meridor
