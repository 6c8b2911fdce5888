// SPDX-License-Identifier: MIT
#include "cli/interrupt.h"
#include <csignal>
#include "core/project/failure.h"

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
    // A closed pipe and a file-size limit are write errors, told like any other.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool interrupted()
{
    return gInterrupted != 0;
}

void stopIfInterrupted()
{
    if (interrupted())
        cancelled();
}

} // namespace meridor
