#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace devkit::filterhost {

// "1.2.3.4", of the version resource of a program or DLL; nothing where there is none.
[[nodiscard]] std::optional<std::string> FileVersionOf(const std::filesystem::path& path);

}  // namespace devkit::filterhost
