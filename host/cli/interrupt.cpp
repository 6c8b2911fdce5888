// SPDX-License-Identifier: MIT
#include "cli/interrupt.h"
#include <csignal>

namespace meridor {
namespace {

volatile std::sig_atomic_t gInterrupted = 0;

extern "C" void noteInterrupt(int signal)
{
    gInterrupted = 1;
    std::signal(signal, SIG_DFL);
}

} // namespace

void watchInterrupts()
{
    std::signal(SIGINT, noteInterrupt);
    std::signal(SIGTERM, noteInterrupt);
    // Sent when the terminal closes. nohup has the signal ignored before the start, which must stay
    // so.
    if (std::signal(SIGHUP, noteInterrupt) == SIG_IGN)
        std::signal(SIGHUP, SIG_IGN);
    // A closed pipe and the limit of file sizes are then reported as write errors.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool interrupted()
{
    return gInterrupted != 0;
}

} // namespace meridor
