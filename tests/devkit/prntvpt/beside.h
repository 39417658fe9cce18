#pragma once

#include <filesystem>

namespace devkit::prntvpt {

// A file in the folder of the test program.
[[nodiscard]] std::filesystem::path Beside(const std::filesystem::path& name);

// The simulated provider as the host loads it.
[[nodiscard]] std::filesystem::path SimulatedDll();

}  // namespace devkit::prntvpt
