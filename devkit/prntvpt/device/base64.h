#pragma once

#include <string>
#include <string_view>

namespace devkit::prntvpt {

// RFC 4648, with padding, in one line.
[[nodiscard]] std::string ToBase64(std::string_view bytes);

}  // namespace devkit::prntvpt
