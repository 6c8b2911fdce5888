// SPDX-License-Identifier: MIT
// The extension module datainterface._native: plain functions on ids, which the classes of the
// package call. It translates types and failures and does nothing else.
#include <QTextCodec>
#include "call.h"
#include "nouns.h"

PYBIND11_MODULE(_native, module)
{
    using namespace meridor::python;
    // File names and the texts of the library go through this codec. Without an application object
    // it follows the locale, and the C locale would lose letters outside ASCII.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    module.attr("__version__") = DATAINTERFACE_VERSION;
    registerExceptions();
    module.def("set_listeners", &setListeners);
    addProject(module);
    addGeography(module);
    addDataset(module);
    addRows(module);
    addWeights(module);
    addAnalysis(module);
    addExchange(module);
    addQueries(module);
    addGeostatistics(module);
    addNumerics(module);
}
