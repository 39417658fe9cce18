#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace devkit::filterhost {

// What is wrong with the device model in a folder, a line each: "FILE:LINE: what", without a line where there
// is no such place. What keeps the model from being read hides the rest.
[[nodiscard]] std::vector<std::string> CheckDevice(const std::filesystem::path& folder);

}  // namespace devkit::filterhost
