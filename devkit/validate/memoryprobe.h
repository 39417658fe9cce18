#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "devkit/filterhost/runevent.h"
#include "devkit/filterhost/settings.h"
#include "devkit/validate/failingmemory.h"

namespace devkit::validate {

// What the probe of failing memory is to do with a job.
struct MemoryQuestion {
    std::uint64_t way = 0;   // the first allocation by it fails; 0: none does
    bool isForGood = false;  // and all later ones
    Sites sites{};           // where the plain job asks for memory; empty: wherever it does
    std::size_t blocks = 0;  // that the plain job leaves
};

// What the probe tells, before its answer, when std::bad_alloc is thrown for want of memory.
inline constexpr const char* kBadAlloc = "std::bad_alloc";

// What came of it.
struct MemoryAnswer {
    bool isIdle = false;                    // the filters import nothing that gives memory
    std::vector<Allocation> allocations{};  // of a job in which none failed, the first of each way
    bool hasFailed = false;
    // Of the same job once more in the same module, with memory.
    bool isWhole = false;
    std::vector<std::string> done{};  // as DoneToParts has it
    std::size_t blocks = 0;           // that are left behind it
    std::size_t leaked = 0;           // that a job without memory leaves each time
};

// The modules of the filters, each once, in the order in which they count.
[[nodiscard]] std::vector<std::filesystem::path> ModulesOf(const filterhost::HostSettings& settings);

[[nodiscard]] std::string WriteQuestion(const MemoryQuestion& question);
// Of the probe's result; nlohmann::json::exception where there is none.
[[nodiscard]] MemoryAnswer ReadAnswer(const std::string& text);

// Runs the job of the order, in which memory fails as the order's question has it, and once more with memory.
// What is told of the run is told of the first; the answer comes last, where the filter has come to its end.
void ProbeFailingMemory(const filterhost::Order& order, const filterhost::EventSink& sink);

}  // namespace devkit::validate
