#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devkit/filterhost/fuzzsettings.h"

namespace CLI {
class App;
}

namespace devkit::filterhost {

// The options of `filterhost fuzz` as they come from the command line.
struct RawFuzz {
    std::string filter;
    std::optional<std::string> filterClass;
    std::optional<std::string> corpus;
    std::vector<std::string> allowedCodes;
    std::optional<std::string> duration;
    std::string findings = "fuzz-findings";
    std::optional<std::string> json;
    std::optional<std::string> again;
    std::optional<std::string> chains;
    std::string mutations;
    unsigned timeout = 30;
    FuzzSettings settings;
};

void DescribeFuzz(CLI::App& fuzz, RawFuzz& raw);
// Throws UsageError.
[[nodiscard]] FuzzSettings TakeFuzz(RawFuzz raw);

}  // namespace devkit::filterhost
