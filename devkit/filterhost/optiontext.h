#pragma once

#include "platform/windows.h"

#include <filesystem>
#include <optional>
#include <string>

namespace devkit::filterhost {

// What the texts of options (UTF-8) stand for.

[[nodiscard]] std::filesystem::path PathOf(const std::string& text);
// The path as it is now: a filter may change the current folder.
[[nodiscard]] std::filesystem::path Absolute(const std::string& text);
[[nodiscard]] std::optional<std::filesystem::path> Absolute(const std::optional<std::string>& text);
// Of --clsid. Throws UsageError.
[[nodiscard]] CLSID ClassOf(const std::string& text);

}  // namespace devkit::filterhost
