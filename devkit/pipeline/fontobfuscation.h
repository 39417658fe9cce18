#pragma once

#include <string>
#include <string_view>

namespace devkit::pipeline {

// Obfuscated fonts of XPS: the first 32 bytes of the font are mixed with the GUID that the part is named by.

// Whether the last segment of the name, up to its extension, is a GUID without braces.
[[nodiscard]] bool IsNamedByGuid(std::string_view partName) noexcept;

// The font's bytes obfuscated if they are plain, and plain if they are obfuscated. Bytes of a part that no
// GUID names, and those that are fewer than 32, stay as they are.
[[nodiscard]] std::string ToggleObfuscation(std::string bytes, std::string_view partName);

}  // namespace devkit::pipeline
