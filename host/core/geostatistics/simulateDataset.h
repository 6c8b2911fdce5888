// SPDX-License-Identifier: MIT
/// Simulation of a dataset on a grid, as a dataset of several realizations.
#pragma once
#include <QString>
#include "core/export.h"
#include "core/geostatistics/simulation.h"
#include "core/project/progress.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

struct SimulateRequest {
    int dataset = -1; ///< -1: an unconditional simulation
    int realization = 0;
    Interval when; ///< of the dataset
    int grid = -1; ///< a raster geography
    QString name;
    /// The name of a model, structures as parseStructures reads them, or empty: the best model of
    /// the values or normal scores.
    QString model;
    bool scores = true;         ///< whether the values are simulated by their normal scores
    std::optional<double> mean; ///< without scores; else the mean of the values
    int count = 1;              ///< realizations
    int neighbors = 20;
    double radius = std::numeric_limits<double>::infinity();
    int seed = 1;
};

struct Simulated {
    int dataset = -1;
    int samples = 0;
    int merged = 0;     ///< samples that were joined with others at their place
    bool apart = false; ///< whether no cell is among the samples
    QString structures; ///< of the simulated variable
    double scale = 1;   ///< by which the sills of a model of normal scores were multiplied
    size_t keptBytes = 0;
};

/// Stores the realizations, each as soon as it is drawn. The sills of a model of normal scores are
/// scaled to the sum 1. Raises a Failure as GridSimulation, NormalScores and findModel do, for a
/// model of values where one of scores is needed and the reverse; nothing is stored then.
MERIDOR_EXPORT Simulated simulateDataset(const SimulateRequest &request, const Progress &progress);

} // namespace meridor
