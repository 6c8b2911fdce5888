// SPDX-License-Identifier: MIT
#include "Common/detail/stackText.h"
#include <QtGlobal>
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <memory>
#include <string_view>
#ifdef DATAINTERFACE_HAVE_LIBBACKTRACE
#include <backtrace.h>
#endif

namespace datainterface {
namespace {

constexpr int kMaxFrames = 64;
constexpr int kOwnFrames = 4; // the collector's, stackText's and its caller's
constexpr size_t kMaxName = 1024;

struct Location {
    std::string name;
    uintptr_t displacement = 0;
    std::string file; // without its directory; empty when unknown
    int line = 0;
};

std::string baseName(std::string_view path)
{
    return std::string(path.substr(path.find_last_of('/') + 1));
}

std::string readableName(const char *symbol)
{
    std::string name(symbol);
    if (name.size() <= kMaxName) {
        const std::unique_ptr<char, decltype(&std::free)> demangled(
            abi::__cxa_demangle(symbol, nullptr, nullptr, nullptr), &std::free);
        if (demangled)
            name = demangled.get();
    }
    return name.substr(0, kMaxName);
}

#ifdef DATAINTERFACE_HAVE_LIBBACKTRACE
// Finds functions that are not exported, and line numbers.
void locateBySymbols(uintptr_t address, Location &location)
{
    const auto ignore = [](void *, const char *, int) {};
    static backtrace_state *const state = backtrace_create_state(nullptr, 1, ignore, nullptr);
    if (!state)
        return;
    const auto takeSymbol = [](void *data, uintptr_t pc, const char *symbol, uintptr_t start,
                               uintptr_t) {
        if (symbol) {
            static_cast<Location *>(data)->name = readableName(symbol);
            static_cast<Location *>(data)->displacement = pc - start;
        }
    };
    // The first callback is for the innermost of the functions inlined at the address.
    const auto takeLine = [](void *data, uintptr_t, const char *file, int line, const char *) {
        if (file) {
            static_cast<Location *>(data)->file = baseName(file);
            static_cast<Location *>(data)->line = line;
        }
        return 1;
    };
    backtrace_syminfo(state, address, takeSymbol, ignore, &location);
    backtrace_pcinfo(state, address, takeLine, ignore, &location);
}
#else
void locateBySymbols(uintptr_t, Location &)
{
}
#endif

// Finds exported functions. For others it gives the module and the offset in it, from which a
// debugger can find the function.
void locateByLinker(uintptr_t address, Location &location)
{
    Dl_info info{};
    if (!dladdr(reinterpret_cast<const void *>(address), &info))
        return;
    const void *base = info.dli_sname ? info.dli_saddr : info.dli_fbase;
    location.name = info.dli_sname ? readableName(info.dli_sname)
                                   : baseName(info.dli_fname ? info.dli_fname : "");
    location.displacement = address - reinterpret_cast<uintptr_t>(base);
}

std::string describe(uintptr_t returnAddress)
{
    const uintptr_t call = returnAddress - 1; // a call may be the last instruction of its function
    Location location;
    locateBySymbols(call, location);
    if (location.name.empty())
        locateByLinker(call, location);
    std::array<char, 32> number{};
    std::snprintf(number.data(), number.size(), "+0x%llx",
                  static_cast<unsigned long long>(location.displacement + 1));
    std::string text = location.name + number.data();
    if (!location.file.empty())
        text += " in " + location.file + '(' + std::to_string(location.line) + ')';
    return text;
}

} // namespace

Q_NEVER_INLINE std::string stackText() noexcept
{
    try {
        std::array<void *, kMaxFrames + kOwnFrames> frames{};
        const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
        // The number of frames above the caller's varies, because a sanitizer adds its own.
        const auto caller = std::find(frames.begin(), frames.end(), __builtin_return_address(0));
        std::string text;
        for (auto frame = caller == frames.end() ? frames.begin() : caller + 1;
             frame < frames.begin() + count; ++frame)
            text += "  " + describe(reinterpret_cast<uintptr_t>(*frame)) + '\n';
        return text;
    } catch (...) {
        return {}; // out of memory; the failure is reported without its stack
    }
}

} // namespace datainterface
