#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "devkit/common/error.h"

namespace devkit::filterhost {

// The running program, and the folder that holds it.
[[nodiscard]] std::filesystem::path ProgramPath();
[[nodiscard]] std::filesystem::path ProgramFolder();

// The whole file. Throws UsageError with `option` in front.
[[nodiscard]] std::string ReadFile(const std::filesystem::path& path, std::string_view option);

// What is wrong with a document, for a line that begins with the document's name: a place other than the
// document itself is named at the end.
[[nodiscard]] std::string ProblemOf(const common::Error& error, std::string_view document);

}  // namespace devkit::filterhost
