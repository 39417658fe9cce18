#pragma once

#include <filesystem>
#include <optional>

#include "devkit/filterhost/settings.h"

namespace devkit::validate {

// The file filterhost.json beside the DLL, or in the nearest folder above it that has one.
[[nodiscard]] std::optional<std::filesystem::path> FindConfiguration(const std::filesystem::path& dll);

// Adds to the settings what the file says of the filter's surroundings: documents, device, properties, and
// tests that are to be left out, each with its reason. What the command line says counts more. Paths are
// relative to the file. Throws UsageError, naming the file, for what makes no sense.
void ApplyConfiguration(const std::filesystem::path& file, filterhost::ValidateSettings& settings);

}  // namespace devkit::validate
