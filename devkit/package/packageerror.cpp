#include "devkit/package/packageerror.h"

#include <algorithm>

namespace devkit::package {

namespace {

// What an archive calls its entries must not break the line.
std::string OneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    return text;
}

}  // namespace

PackageError::PackageError(std::string_view what, std::string_view where)
    : std::runtime_error(OneLine(std::string(what) + ", " + std::string(where))) {}

}  // namespace devkit::package
