#pragma once

#include "platform/windows.h"

#include <string>

namespace devkit::common {

// "0x80004005".
[[nodiscard]] std::string HexOf(HRESULT hr);
// The constant's name ("E_FAIL"), or the hexadecimal number for a code that is not known here.
[[nodiscard]] std::string NameOf(HRESULT hr);
// "0x80004005 E_FAIL", or the number alone.
[[nodiscard]] std::string Describe(HRESULT hr);

}  // namespace devkit::common
