#pragma once

#include <set>
#include <string>
#include <vector>

#include "devkit/filterhost/program.h"

namespace devkit::validate {

using filterhost::Ended;

// What `filterhost validate` makes of the test filter.
struct Validated {
    Ended ended;
    std::set<std::string> failed;  // names of tests
    std::set<std::string> skipped;
    std::set<std::string> passed;
};

// The classes of the test filter, of parts and of streams.
inline constexpr const char* kPartsClass = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D10}";
inline constexpr const char* kStreamClass = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D12}";

// Validates the test filter in a mode, with further arguments.
[[nodiscard]] Validated ValidateMode(const char* mode, const std::vector<std::string>& more,
                                     const char* filterClass = kPartsClass);

[[nodiscard]] inline bool Holds(const std::string& text, const std::string& piece) {
    return text.find(piece) != std::string::npos;
}

}  // namespace devkit::validate
