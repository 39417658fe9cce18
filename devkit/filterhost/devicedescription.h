#pragma once

#include <filesystem>
#include <string>

namespace devkit::filterhost {

// A device model for people: printers, margins, features with their options, constraints, and the default
// ticket that the device would select, with what sets it apart from the one that the model states. Throws
// prntvpt::DeviceError for a model that cannot be read.
[[nodiscard]] std::string DescribeDevice(const std::filesystem::path& folder);

}  // namespace devkit::filterhost
