// SPDX-License-Identifier: MIT
#include "Common/detail/failure.h"
#include <string>
#include <string_view>
#include "Common/detail/stackText.h"
#include "datainterface/vorn_error.h"

vorn_error::vorn_error(const char *text, const std::string &trace)
    : std::runtime_error(text), stack(trace)
{
}
vorn_error::vorn_error(const vorn_error &other) = default;
vorn_error::~vorn_error() = default;

namespace datainterface {
namespace {

std::string fileLabel(std::string_view path)
{
    std::string_view name = path.substr(path.find_last_of("/\\") + 1);
    name = name.substr(0, name.find('.'));
    return name == "DataManager" ? "..\\Common\\DataManager" : std::string(name);
}

} // namespace

void fail(const char *text, const char *file, int line)
{
    const std::string message = '"' + std::string(text) + "\"\n(" + fileLabel(file) + ", line "
                                + std::to_string(line) + ')';
    throw vorn_error(message.c_str(), stackText());
}

} // namespace datainterface
