#pragma once

#include <filesystem>

namespace devkit::pipeline {

// testfilter.dll, beside the test program.
[[nodiscard]] std::filesystem::path TestFilterPath();
[[nodiscard]] std::filesystem::path ProgramFolder();

}  // namespace devkit::pipeline
