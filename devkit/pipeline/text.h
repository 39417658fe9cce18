#pragma once

#include <string>
#include <string_view>

namespace devkit::pipeline {

// UTF-8 to UTF-16 and back. What is not well formed becomes U+FFFD.
[[nodiscard]] std::wstring Widen(std::string_view text);
[[nodiscard]] std::string Narrow(std::wstring_view text);
// "(null)" for a null pointer.
[[nodiscard]] std::string NarrowOrNull(const wchar_t* text);
// Compares with no regard to the case of ASCII letters, as part names and content types are (Open Packaging
// Conventions).
[[nodiscard]] bool EqualIgnoringCase(std::string_view one, std::string_view other);

}  // namespace devkit::pipeline
