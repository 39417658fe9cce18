#pragma once

#include "platform/windows.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "devkit/filterhost/settings.h"
#include "devkit/fuzz/fuzzcase.h"

namespace devkit::filterhost {

// A case that --chains names, and the base document that it is to be of; empty: whichever it is.
struct ListedCase {
    fuzz::Chain chain;
    std::string base;
};

// What `filterhost fuzz` was asked for.
struct FuzzSettings {
    HostSettings host;
    std::optional<std::filesystem::path> corpus;
    std::vector<HRESULT> allowedCodes;   // with which the filter may fail
    std::uint64_t seed = 1;              // of the first case
    std::optional<std::uint64_t> cases;  // unset: until `duration` is over
    std::chrono::seconds duration{0};    // 0: until `cases` are done
    std::optional<fuzz::Chain> again;    // the one case that is to be run in this process
    std::vector<std::size_t> mutations;  // of it; empty: all
    bool guided = false;                 // by the edges that cases reach
    std::size_t mostKept = 10000;        // of the cases that others are made of
    std::optional<std::filesystem::path> chains;
    std::vector<ListedCase> listed;  // by it: cases that are run after the others
    std::filesystem::path findings;  // the folder for what is found
    std::optional<std::filesystem::path> json;
    unsigned parallel = 0;             // 0: one for each processor
    std::chrono::seconds timeout{30};  // without an answer
    bool quiet = false;
};

}  // namespace devkit::filterhost
