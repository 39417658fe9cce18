#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "devkit/filterhost/fuzzend.h"
#include "devkit/filterhost/fuzzsettings.h"
#include "devkit/filterhost/ticketprovider.h"
#include "devkit/fuzz/fuzzcase.h"
#include "devkit/fuzz/guide.h"

namespace devkit::filterhost {

// A case by its seeds; of its mutations those alone that are named, by their
// places from 0, where any are.
struct FuzzSeed {
    fuzz::Chain chain;
    std::optional<std::vector<std::size_t>> kept{};
};

// What became of a case.
struct FuzzAnswer {
    FuzzEnd end{};
    std::size_t size = 0;  // of the document in bytes
    // Where they are watched, the edges that it was the first case of the process to reach.
    fuzz::Edges edges{};
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
    // pipeline::FilterError for a DLL that is of no use, UsageError for one
    // without a table of edges where they are to be watched.
    [[nodiscard]] FuzzAnswer Run(const FuzzSeed& which, bool& isOver);
    [[nodiscard]] std::size_t CountOfBases() const noexcept { return m_bases.size(); }

  private:
    // That of the case before where nothing of it is another: to read a device model takes longer than most
    // cases.
    [[nodiscard]] const std::shared_ptr<TicketProvider>& ProviderFor(const HostSettings& settings);

    const FuzzSettings m_settings;
    std::vector<fuzz::BaseDocument> m_bases;
    std::pair<std::string, std::vector<std::string>> m_providersKind;  // the device and the switches
    std::shared_ptr<TicketProvider> m_provider;
    unsigned m_cases = 0;
    std::unordered_set<std::uint32_t> m_reached;  // edges, by any case
};

// What a process that runs cases is told, each as one line: first what holds
// for all, then seeds; and what it answers. nlohmann::json::exception for what
// is none.
[[nodiscard]] std::string WriteFuzzOrder(const FuzzSettings& settings);
[[nodiscard]] FuzzSettings ReadFuzzOrder(std::string_view line);
[[nodiscard]] std::string WriteSeed(const FuzzSeed& which);
[[nodiscard]] FuzzSeed ReadSeed(std::string_view line);
[[nodiscard]] std::string WriteAnswer(const FuzzAnswer& answer);
[[nodiscard]] FuzzAnswer ReadAnswer(std::string_view line);

}  // namespace devkit::filterhost
