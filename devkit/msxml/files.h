#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>

namespace devkit::msxml {

// Reads a file. Paths on other machines and URLs are refused unopened with INET_E_UNKNOWN_PROTOCOL; what
// cannot be opened gives INET_E_OBJECT_NOT_FOUND, what cannot be read the system's code.
[[nodiscard]] HRESULT ReadLocalFile(const std::wstring& path, std::string& bytes);

// Makes or replaces a file; a file that could not be written whole is removed. Paths as for ReadLocalFile,
// the codes of failures are the system's.
[[nodiscard]] HRESULT WriteLocalFile(const std::wstring& path, std::string_view bytes) noexcept;

}  // namespace devkit::msxml
