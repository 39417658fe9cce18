#pragma once

#include <filesystem>
#include <optional>

#include "devkit/filterhost/fuzzsettings.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// Throw UsageError when a file that the command would write is one that it reads, or another that it writes.
// Files are compared as files, whatever their paths: links and letter case do not make another file.
void CheckFiles(const RunSettings& settings);
// `configuration` stands beside the filter; the report that --only-failed reads may be written anew.
void CheckFiles(const ValidateSettings& settings, const std::optional<std::filesystem::path>& configuration);
void CheckFiles(const FuzzSettings& settings);

}  // namespace devkit::filterhost
