#pragma once

#include <string>
#include <variant>
#include <vector>

#include "devkit/filterhost/fuzzsettings.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// Text that answers the command line by itself: help or the version.
struct Answer {
    std::string text;
};

using Command = std::variant<RunSettings, ValidateSettings, ListSettings, FuzzSettings, InspectSettings,
                             DiffSettings, DeviceSettings, Answer>;

// Reads the arguments (UTF-8, without the program's name). Throws UsageError.
[[nodiscard]] Command ParseCommandLine(std::vector<std::string> arguments);

// "filterhost 1.0.0".
[[nodiscard]] std::string VersionText();

}  // namespace devkit::filterhost
