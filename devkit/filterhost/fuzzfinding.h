#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "devkit/filterhost/fuzzrunner.h"

namespace devkit::filterhost {

// A case that ended as it must not, and how little of it is needed for that.
struct FuzzFinding {
    fuzz::Chain chain;
    FuzzEnd end;
    // Whether it ends so in a process that has run no other case.
    bool isRepeatable = false;
    std::vector<std::size_t> mutations;  // that are needed, by their places
    std::vector<std::string> done;       // by these
    std::string base;                    // the document that they were done to
    std::filesystem::path file;          // what they made of it
    std::size_t likewise = 0;            // other cases that ended for the same cause
};

// What became of a case that --chains lists.
struct ListedEnd {
    fuzz::Chain chain;
    FuzzEnd::Kind kind = FuzzEnd::Passed;
    std::size_t edges = 0;  // that it was the first to reach, where they are watched
};

// What the cases reached of the code, and which of them others were made of.
struct Guidance {
    std::size_t edges = 0;
    std::size_t ofBases = 0;  // of them by the documents as they are
    std::vector<fuzz::KeptCase> kept;
    // The others, by what the case changed that came there first; for each thing when it changed several.
    std::map<std::string, std::uint64_t> added;
};

// What became of all cases.
struct FuzzSummary {
    std::uint64_t firstSeed = 0;
    std::uint64_t cases = 0;
    double seconds = 0;
    std::map<FuzzEnd::Kind, std::uint64_t> kinds;
    std::map<std::string, std::uint64_t> codes;          // of those that were refused
    std::map<std::string, std::uint64_t> systemCrashes;  // by their places
    std::map<std::string, std::uint64_t> mutations;      // by what they changed
    std::vector<FuzzFinding> findings;                   // by their chains
    std::vector<ListedEnd> listed;
    std::optional<Guidance> guidance;

    // The highest of all.
    [[nodiscard]] ExitStatus Status() const;
};

// The command that runs the finding's case again: "filterhost fuzz ...
// --reproduce 7 --mutations 0,2".
[[nodiscard]] std::string CommandOf(const FuzzSettings& settings, const FuzzFinding& finding);
// Lines about a finding, for people.
[[nodiscard]] std::string TextOf(const FuzzSettings& settings, const FuzzFinding& finding);
// "2000 cases from seed 1 in 31.2 s: 812 passed, ...", and a line for what is
// worth one.
[[nodiscard]] std::string TextOf(const FuzzSummary& summary);
// The summary as an object for programs.
[[nodiscard]] std::string JsonOf(const FuzzSettings& settings, const FuzzSummary& summary);

}  // namespace devkit::filterhost
