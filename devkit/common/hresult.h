#pragma once

#include "platform/windows.h"

#include <optional>
#include <string>
#include <string_view>

namespace devkit::common {

// "0x80004005".
[[nodiscard]] std::string HexOf(HRESULT hr);
// The constant's name ("E_FAIL"), or the hexadecimal number for a code that is not known here.
[[nodiscard]] std::string NameOf(HRESULT hr);
// "0x80004005 E_FAIL", or the number alone.
[[nodiscard]] std::string Describe(HRESULT hr);
// The code that a number ("0x80004005") or a constant's name stands for; nothing for any other text.
[[nodiscard]] std::optional<HRESULT> ParseHresult(std::string_view text);

}  // namespace devkit::common
