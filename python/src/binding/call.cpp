// SPDX-License-Identifier: MIT
#include "call.h"
#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <pthread.h>
#include <thread>
#include "core/project/catalog.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/MGeoData.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/vorn_error.h"

namespace meridor::python {
namespace {

using Clock = std::chrono::steady_clock;
/// Taking the interpreter may wait for another thread of Python, so it is asked only this often.
constexpr auto kPatience = std::chrono::milliseconds(20);

/// Passes the messages of the library to Python. What a handler raises ends the call.
class PythonNotes final : public Notes {
public:
    void note(const QString &text) const override;
    void warn(const QString &text) const override;
};

struct State {
    std::unique_ptr<Session> session;
    PythonNotes notes;
    bool isForked = false; ///< in a process that was forked from the one that opened the session
    py::object note;
    py::object warn;

    std::mutex turn;
    std::atomic<std::thread::id> holder;
    // Of the call that has its turn.
    py::object progress;
    int percent = -1;
    bool stopped = false; ///< the progress returned False
    Clock::time_point asked;
    std::optional<py::error_already_set> pending;
};

/// Never destroyed: objects of Python may not be freed after the interpreter.
State &state()
{
    static auto *held = new State;
    return *held;
}

/// Calls Python; what it raises is kept for the end of the call.
template <class Call> void keepError(Call call)
{
    const py::gil_scoped_acquire acquired;
    if (state().pending)
        return;
    try {
        call();
    } catch (py::error_already_set &error) {
        state().pending.emplace(std::move(error));
    }
}

void PythonNotes::note(const QString &text) const
{
    keepError([&text] {
        if (state().note)
            state().note(text);
    });
}

void PythonNotes::warn(const QString &text) const
{
    keepError([&text] {
        if (state().warn)
            state().warn(text);
    });
}

void report(int percent, const QString &text)
{
    State &now = state();
    if (percent < 0 || percent == now.percent || !now.progress || now.progress.is_none())
        return;
    now.percent = percent;
    keepError([&] { state().stopped |= now.progress(percent, text).ptr() == Py_False; });
}

bool isStopped()
{
    State &now = state();
    if (const auto present = Clock::now(); present - now.asked >= kPatience) {
        now.asked = present;
        keepError([] {
            if (PyErr_CheckSignals() != 0)
                throw py::error_already_set();
        });
    }
    return now.stopped || now.pending.has_value();
}

void refuseFork()
{
    if (state().isForked && state().session)
        raise(PyExc_ValueError,
              QStringLiteral("a project was open when this process was forked, which can use no "
                             "project: fork before one is open, or start processes by spawn"));
}

} // namespace

Turn::Turn(const py::object &progress)
{
    State &now = state();
    refuseFork();
    if (!now.turn.try_lock()) {
        if (now.holder.load() == std::this_thread::get_id())
            raise(PyExc_RuntimeError,
                  QStringLiteral("a call is running; its progress and its warnings cannot use the "
                                 "project"));
        const py::gil_scoped_release released;
        now.turn.lock();
    }
    now.holder = std::this_thread::get_id();
    now.progress = progress;
    now.percent = -1;
    now.stopped = false;
    now.asked = {}; // a short call does not ask for the time
    now.pending.reset();
}

Turn::~Turn()
{
    State &now = state();
    now.progress = py::object();
    now.holder = std::thread::id();
    now.turn.unlock();
}

void Turn::raisePending() const
{
    if (auto error = std::exchange(state().pending, std::nullopt))
        throw py::error_already_set(std::move(*error));
}

Session &session()
{
    if (!state().session)
        raise(PyExc_ValueError, QStringLiteral("no project is open"));
    return *state().session;
}

void refuseUnreadable()
{
    const QString file = VORN_GetUnreadableProjectFile();
    if (!file.isEmpty())
        raise(PyExc_OSError, QStringLiteral("%1: values of the project could not be read: the file "
                                            "is damaged, or was changed since it was opened")
                                 .arg(file));
}

bool hasSession()
{
    return state().session != nullptr;
}

void openSession(const SessionOptions &options)
{
    SessionUser user;
    user.notes = &state().notes;
    user.progress = &report;
    user.cancel = &isStopped;
    user.scratchFailed = [](const QString &reason) { state().notes.warn(reason); };
    // A system call for the number of the process would take longer than a short call.
    static const int handler =
        pthread_atfork(nullptr, nullptr, [] { state().isForked = state().session != nullptr; });
    Q_UNUSED(handler)
    state().session = std::make_unique<Session>(options, user);
}

void closeSession()
{
    state().session.reset();
}

void setListeners(const py::object &note, const py::object &warn)
{
    state().note = note;
    state().warn = warn;
}

void raise(PyObject *type, const QString &text)
{
    PyErr_SetString(type, text.toUtf8().constData());
    throw py::error_already_set();
}

namespace {

PyObject *ownError(const char *name)
{
    return py::module_::import("datainterface._errors").attr(name).ptr();
}

void translate(std::exception_ptr thrown)
{
    try {
        std::rethrow_exception(thrown);
    } catch (const Failure &failure) {
        const QByteArray setting = failure.setting();
        PyObject *type = failure.kind() == FailureKind::Cancelled ? PyExc_KeyboardInterrupt
                         : setting == "scratch"                   ? PyExc_OSError
                         : setting == "overwrite"                 ? PyExc_FileExistsError
                                                                  : PyExc_ValueError;
        PyErr_SetString(type, failure.what());
    } catch (const vorn_error &error) {
        PyErr_SetString(ownError("InternalError"), error.what());
    } catch (const py::cast_error &) {
        PyErr_SetString(PyExc_ValueError,
                        "an argument is of another type, or a number is too large");
    }
}

} // namespace

void raiseUnknown(const QString &text)
{
    raise(ownError("UnknownNameError"), text);
}

void registerExceptions()
{
    py::register_exception_translator([](std::exception_ptr thrown) {
        if (thrown)
            translate(thrown);
    });
}

void requireGeography(int id)
{
    if (!geographyOf(id))
        fail(QStringLiteral("the geography is no longer in the project"));
}

void requireDataset(int id)
{
    if (!datasetOf(id))
        fail(QStringLiteral("the dataset is no longer in the project"));
}

void requireWeightSet(int id)
{
    MGeoData *geography = geographyOf(id >> 16);
    if (!geography || !geography->GetSpatialWeightSet(id))
        fail(QStringLiteral("the weight set is no longer in the project"));
}

} // namespace meridor::python
