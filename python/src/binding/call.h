// SPDX-License-Identifier: MIT
/// The frame of every call from Python: one at a time, on the open project, with failures as
/// exceptions of Python.
///
/// The library is used by one thread at a time. A call of a second thread waits for its turn; a call
/// from the progress or the notes of a running call is refused. Work that may take long releases
/// the interpreter; its progress takes it back, so Python code never runs without it.
#pragma once
#include <memory>
#include <type_traits>
#include "convert.h"
#include "core/project/failure.h"
#include "core/project/session.h"

namespace meridor::python {

/// A call that has its turn. Raises ValueError in a process that was forked from the one that
/// opened the project.
class Turn {
public:
    explicit Turn(const py::object &progress = py::none());
    ~Turn();
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;
    /// Raises what Python code raised while the call ran: an exception of the progress or of a
    /// handler of warnings, or KeyboardInterrupt.
    void raisePending() const;
};

/// The open project. Raises ValueError if there is none.
Session &session();
bool hasSession();
void openSession(const SessionOptions &options);
void closeSession();
/// Receives the library's notes and warnings as texts.
void setListeners(const py::object &note, const py::object &warn);

/// Raises OSError if values of the project's file could not be read: what the call gave may lack
/// them.
void refuseUnreadable();

/// Runs work in its turn. What a handler of Python raised meanwhile, and values that could not be
/// read, come before the result and before what the work itself raises.
template <class Work> auto inTurn(const Turn &turn, Work work)
{
    session();
    try {
        if constexpr (std::is_void_v<decltype(work())>) {
            work();
            turn.raisePending();
            refuseUnreadable();
        } else {
            auto result = work();
            turn.raisePending();
            refuseUnreadable();
            return result;
        }
    } catch (const py::error_already_set &) {
        throw;
    } catch (...) {
        turn.raisePending();
        refuseUnreadable();
        throw;
    }
}

/// Runs work that takes about as long as a call of Python itself.
template <class Work> auto inTurn(Work work)
{
    const Turn turn;
    return inTurn(turn, work);
}

/// Runs work that may take long and touches no object of Python.
/// @param progress  a callable that receives a percentage and a text, or None.
template <class Work> auto atLength(const py::object &progress, Work work)
{
    const Turn turn(progress);
    return inTurn(turn, [&work] {
        const py::gil_scoped_release released;
        return work();
    });
}

[[noreturn]] void raise(PyObject *type, const QString &text);
/// KeyError for an unknown name.
[[noreturn]] void raiseUnknown(const QString &text);

/// Runs a search by name: a Failure becomes KeyError.
template <class Work> auto byName(Work work)
{
    try {
        return work();
    } catch (const Failure &failure) {
        if (failure.kind() != FailureKind::Refused)
            throw;
        raiseUnknown(failure.text());
    }
}

/// Runs work on files: a Failure that is not a wrong request becomes OSError.
template <class Work> auto onFiles(Work work)
{
    try {
        return work();
    } catch (const Failure &failure) {
        if (failure.kind() != FailureKind::Refused)
            throw;
        raise(PyExc_OSError, failure.text());
    }
}

void registerExceptions();

/// Raise a Failure for parts that were removed from the project, of which Python may hold others.
void requireGeography(int id);
void requireDataset(int id);
void requireWeightSet(int id);

} // namespace meridor::python
