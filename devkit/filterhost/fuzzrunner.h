#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/filterhost/fuzzend.h"
#include "devkit/filterhost/fuzzsettings.h"
#include "devkit/fuzz/fuzzcase.h"

namespace devkit::filterhost {

// A case by its seed; of its mutations those alone that are named, by their
// places from 0, where any are.
struct FuzzSeed {
    std::uint64_t seed = 0;
    std::optional<std::vector<std::size_t>> kept{};
};

// Makes bad jobs and has a filter meet them, in this process. The thread that
// runs them stands in the multithreaded apartment.
class FuzzRunner {
  public:
    // Reads the base documents. Throws UsageError for a corpus without any
    // document.
    explicit FuzzRunner(const FuzzSettings& settings);

    [[nodiscard]] fuzz::FuzzCase CaseOf(const FuzzSeed& which) const;
    [[nodiscard]] fuzz::BadJob JobOf(const FuzzSeed& which) const;
    [[nodiscard]] const std::string& BaseOf(const FuzzSeed& which) const;
    // Loads the filter, runs the case and unloads it. `isOver` says whether the
    // process can take another: not when threads of the filter are left. Throws
    // pipeline::FilterError for a DLL that is of no use.
    [[nodiscard]] FuzzEnd Run(const FuzzSeed& which, bool& isOver) const;

  private:
    const FuzzSettings m_settings;
    std::vector<fuzz::BaseDocument> m_bases;
};

// What a process that runs cases is told, each as one line: first what holds
// for all, then seeds; and what it answers. nlohmann::json::exception for what
// is none.
[[nodiscard]] std::string WriteFuzzOrder(const FuzzSettings& settings);
[[nodiscard]] FuzzSettings ReadFuzzOrder(std::string_view line);
[[nodiscard]] std::string WriteSeed(const FuzzSeed& which);
[[nodiscard]] FuzzSeed ReadSeed(std::string_view line);
[[nodiscard]] std::string WriteEnd(const FuzzEnd& end);
[[nodiscard]] FuzzEnd ReadEnd(std::string_view line);

}  // namespace devkit::filterhost
