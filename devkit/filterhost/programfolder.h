#pragma once

#include <filesystem>

namespace devkit::filterhost {

// The folder that holds the running program.
[[nodiscard]] std::filesystem::path ProgramFolder();

}  // namespace devkit::filterhost
