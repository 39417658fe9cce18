#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "devkit/fuzz/packagemutator.h"

namespace devkit::fuzz {

// A good document, from which bad ones are made.
struct BaseDocument {
    std::string name;
    Entries entries;  // stored
};

// Those that need no file: a small job with tickets at every scope, and one of UTF-16.
[[nodiscard]] std::vector<BaseDocument> OwnDocuments();

// What of a folder serves as a base: the packages in it and below it that can be read as archives and are of
// at most kMostBaseBytes, in the order of their paths.
inline constexpr std::size_t kMostBaseBytes = std::size_t{1} << 20;
[[nodiscard]] std::vector<BaseDocument> DocumentsOf(const std::filesystem::path& folder);

}  // namespace devkit::fuzz
