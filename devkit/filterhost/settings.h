#pragma once

#include "platform/windows.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/pipeline/filterstage.h"

namespace devkit::filterhost {

// {8A9F4692-E8BA-4533-B859-E56B1EA16586}, the page-validation filter.
inline constexpr CLSID kDefaultFilterClass = {
    0x8a9f4692, 0xe8ba, 0x4533, {0xb8, 0x59, 0xe5, 0x6b, 0x1e, 0xa1, 0x65, 0x86}};

// A filter in its place in the chain.
struct FilterSettings {
    std::string name;  // in what is told of a chain
    std::filesystem::path dll;
    CLSID clsid = kDefaultFilterClass;
    pipeline::DataKind input = pipeline::DataKind::Xps;
    pipeline::DataKind output = pipeline::DataKind::Xps;
};

// What every input of a run has in common. Texts are UTF-8, paths absolute.
struct HostSettings {
    std::vector<FilterSettings> filters;                  // in the order of the pipeline, one at least
    std::optional<std::filesystem::path> pipelineConfig;  // that they come from
    std::string device = "simprinter";
    std::optional<std::string> printer;
    std::optional<std::filesystem::path> userTicket;
    std::optional<std::filesystem::path> deviceCapabilities;  // "PrintDeviceCapabilities", as they stand
    std::string nsPrefix = "krk";
    std::optional<LONG> teskType;
    bool driverProperties = true;
    std::vector<std::string> providerSwitches;  // "KEY=VALUE"
    bool systemProvider = false;
    std::vector<std::string> pipelineSwitches;  // "KEY=VALUE" of pipeline::ApplySwitch
    std::vector<std::string> properties;        // "NAME=TYPE:VALUE" of pipeline::ParseProperty
    std::vector<std::string> driverValues;      // the same, of the driver property bag
    std::vector<std::string> queueValues;       // and of the queue property bag
    unsigned cancelAt = 0;
    bool recordTickets = false;  // for a report
    bool trace = false;          // tells events::Traced
};

// One input. Without an output nothing is written. The names are the paths as the caller gave them.
struct Job {
    std::filesystem::path input;
    std::string inputName;
    std::optional<std::filesystem::path> output;
    std::string outputName;
    // In the place of the file's bytes and of the user's ticket, whatever they are. No order has them.
    std::shared_ptr<const std::string> bytes{};
    std::shared_ptr<const std::string> userTicket{};
};

// What `filterhost run` was asked for.
struct RunSettings {
    HostSettings host;
    std::vector<Job> jobs;
    std::optional<std::filesystem::path> outputFolder;  // to be made
    std::optional<std::filesystem::path> json;
    std::optional<std::filesystem::path> junit;
    std::optional<std::filesystem::path> trace;
    bool quiet = false;
    bool verbose = false;
    bool inProcess = false;
    bool strict = false;                // a finding is a failure
    unsigned parallel = 0;              // 0: one for each processor
    std::chrono::seconds timeout{300};  // without progress
};

// What `filterhost validate` was asked for.
struct ValidateSettings {
    HostSettings host;
    std::vector<std::filesystem::path> documents;  // beside those that the program carries
    unsigned level = 5;
    // Regular expressions of the names of tests.
    std::optional<std::string> include;
    std::optional<std::string> exclude;
    std::uint64_t seed = 1;
    unsigned repeat = 1;
    unsigned cases = 0;                                       // of a test that has many, at most; 0: all
    bool onlyFailed = false;                                  // those that failed in the report `json`
    std::map<std::string, std::string, std::less<>> leftOut;  // tests, with the reasons
    bool isDeviceGiven = false;                               // the device is the command line's
    std::optional<std::filesystem::path> json;
    std::optional<std::filesystem::path> junit;
    std::optional<std::filesystem::path> report;  // a page to look at
    std::optional<std::filesystem::path> trace;
    bool quiet = false;
    bool inProcess = false;
    unsigned parallel = 0;             // 0: one for each processor
    std::chrono::seconds timeout{60};  // without progress
};

// What `filterhost list` was asked for.
struct ListSettings {
    unsigned level = 10;
};

struct InspectSettings {
    std::vector<std::filesystem::path> inputs;
};

struct DiffSettings {
    std::filesystem::path before;
    std::filesystem::path after;
};

struct DeviceSettings {
    enum class Action { Check, Show };

    Action action = Action::Check;
    std::string device;  // a name of a model here, or a folder
};

// One job for a process of its own, or a probe of its filter by name, as one line of JSON; and back,
// nlohmann::json::exception for what is none.
struct Order {
    HostSettings host;
    Job job;
    std::string probe{};
    std::string probeArgument{};  // as the probe wants it
};
[[nodiscard]] std::string WriteOrder(const Order& order);
[[nodiscard]] Order ReadOrder(std::string_view line);

}  // namespace devkit::filterhost
