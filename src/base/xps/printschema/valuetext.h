#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// What the text of a print schema value means. White space round it does not count.
namespace base::xps::printschema {

// A decimal number with an optional sign; nothing when it is not one or does not fit into 32 bits.
[[nodiscard]] std::optional<std::int32_t> ParseInteger(std::wstring_view text);

// What follows the first colon of a qualified name; a bare word as it is.
[[nodiscard]] std::wstring_view LocalPart(std::wstring_view text);

}  // namespace base::xps::printschema
