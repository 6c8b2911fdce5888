// SPDX-License-Identifier: MIT
#include "cli/interrupt.h"
#include <csignal>

namespace meridor {
namespace {

volatile std::sig_atomic_t gInterrupted = 0;

extern "C" void noteInterrupt(int)
{
    gInterrupted = 1;
}

/// A call that waits, such as the opening of a pipe, ends with EINTR instead of being started again.
/// The next signal of the kind has its default effect.
void watch(int signal)
{
    struct sigaction action = {};
    action.sa_handler = noteInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
}

} // namespace

void watchInterrupts()
{
    watch(SIGINT);
    watch(SIGTERM);
    // Sent when the terminal closes. nohup has the signal ignored before the start, which must stay
    // so.
    struct sigaction before = {};
    if (::sigaction(SIGHUP, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
        watch(SIGHUP);
    // A closed pipe and the limit of file sizes are then reported as write errors.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool interrupted()
{
    return gInterrupted != 0;
}

} // namespace meridor
