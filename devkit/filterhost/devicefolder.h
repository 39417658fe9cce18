#pragma once

#include <filesystem>
#include <string>

namespace devkit::filterhost {

// The folder of a device model: a name in devices beside the program, or a folder by its path. Throws
// UsageError, which lists the names, when there is none.
[[nodiscard]] std::filesystem::path FindDeviceFolder(const std::string& nameOrFolder);

}  // namespace devkit::filterhost
