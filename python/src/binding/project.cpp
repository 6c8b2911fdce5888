// SPDX-License-Identifier: MIT
#include "call.h"
#include "core/project/catalog.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/VersionAPI.h"
#include "nouns.h"

namespace meridor::python {
namespace {

/// An empty path makes an empty project. A project that cannot be loaded leaves none open.
void open(const QString &path, bool reserve, const QString &scratch, int cache,
          const py::object &progress)
{
    const Turn turn(progress);
    if (hasSession())
        raise(PyExc_ValueError,
              QStringLiteral("a project is open already; there is one at a time"));
    SessionOptions options;
    options.scratch = scratch;
    options.cacheMegabytes = cache;
    onFiles([&] { openSession(options); });
    if (path.isEmpty())
        return;
    try {
        onFiles([&] {
            const py::gil_scoped_release released;
            if (reserve) {
                session().reserve(path);
                session().load(path);
            } else {
                session().loadPacked(path);
            }
        });
        turn.raisePending();
    } catch (...) {
        closeSession();
        turn.raisePending();
        throw;
    }
}

} // namespace

void addProject(py::module_ &module)
{
    module.def("open", &open, py::arg("path"), py::arg("reserve"), py::arg("scratch"),
               py::arg("cache"), py::arg("progress"));
    module.def("close", [] {
        const Turn turn;
        closeSession();
    });
    module.def(
        "save",
        [](const QString &path, const py::object &progress) {
            onFiles([&] { atLength(progress, [&] { session().save(path); }); });
        },
        py::arg("path"), py::arg("progress"));
    module.def("unreadable_file", [] { return session(), VORN_GetUnreadableProjectFile(); });
    module.def("geographies", [] { return inTurn([] { return arrayOf(geographyIds()); }); });
    module.def("find_geography", [](const QString &name) {
        return inTurn([&] { return byName([&] { return findGeography(name); }); });
    });
    module.def("remove_geography",
               [](int id) { return inTurn([&] { return VORN_RemoveGeography(id); }); });
}

} // namespace meridor::python
