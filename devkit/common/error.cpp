#include "devkit/common/error.h"

#include <algorithm>

#include "devkit/common/hresult.h"

namespace devkit::common {
namespace {

// What an archive calls its entries must not break the line.
std::string Line(std::string_view what, std::string_view where) {
    std::string text(what);
    if (!where.empty()) text.append(", ").append(where);
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    return text;
}

}  // namespace

Error::Error(std::string_view what, std::string_view where) : std::runtime_error(Line(what, where)) {}

HresultError::HresultError(HRESULT hr) : HresultError(hr, Describe(hr)) {}

}  // namespace devkit::common
