// SPDX-License-Identifier: MIT
/// The parts of the module, one for each noun. Each adds its functions.
#pragma once
#include <pybind11/pybind11.h>

namespace meridor::python {

void addProject(pybind11::module_ &module);
void addGeography(pybind11::module_ &module);
void addDataset(pybind11::module_ &module);
void addRows(pybind11::module_ &module);
void addWeights(pybind11::module_ &module);
void addAnalysis(pybind11::module_ &module);
void addExchange(pybind11::module_ &module);
void addQueries(pybind11::module_ &module);
void addGeostatistics(pybind11::module_ &module);
void addNumerics(pybind11::module_ &module);

} // namespace meridor::python
