#include "devkit/filterhost/fuzzcommandline.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>

#include "devkit/common/hresult.h"
#include "devkit/common/text.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/fuzzend.h"
#include "devkit/filterhost/optiontext.h"

namespace devkit::filterhost {
namespace {

std::optional<std::uint64_t> NumberOf(std::string_view text) {
    std::uint64_t number = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || pEnd != text.data() + text.size()) return std::nullopt;
    return number;
}

// "90", "90s", "10m", "2h".
std::chrono::seconds DurationOf(const std::string& text) {
    const std::pair<char, std::uint64_t> units[] = {{'s', 1}, {'m', 60}, {'h', 3600}};
    for (const auto& [letter, seconds] : units) {
        if (!text.ends_with(letter)) continue;
        const auto number = NumberOf(std::string_view(text).substr(0, text.size() - 1));
        if (number && *number > 0 && *number < 1000000) return std::chrono::seconds(*number * seconds);
    }
    const auto number = NumberOf(text);
    if (!number || *number == 0 || *number > 1000000)
        throw UsageError("--duration: \"" + text + "\" is not of the form 90, 90s, 10m or 2h");
    return std::chrono::seconds(*number);
}

std::vector<std::size_t> PlacesOf(const std::string& text) {
    std::vector<std::size_t> places;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        const auto number = NumberOf(std::string_view(text).substr(at, end - at));
        if (!number) throw UsageError("--mutations: \"" + text + "\" is not of the form 0,2");
        places.push_back(static_cast<std::size_t>(*number));
        at = end + 1;
    }
    return places;
}

// Lines of a chain and, behind a space, the name of the document that it is made of; "#" begins what is for
// people.
std::vector<ListedCase> ReadChains(const std::filesystem::path& path) {
    std::istringstream lines(ReadFile(path, "--chains"));
    std::vector<ListedCase> listed;
    for (std::string text; std::getline(lines, text);) {
        const std::string_view line = common::Trimmed(std::string_view(text).substr(0, text.find('#')));
        if (line.empty()) continue;
        const std::size_t space = std::min(line.find(' '), line.size());
        const std::optional<fuzz::Chain> chain = fuzz::ParseChain(line.substr(0, space));
        if (!chain)
            throw UsageError("--chains: \"" + std::string(line) + "\" does not begin with SEED[/SEED...]");
        listed.push_back({*chain, std::string(common::Trimmed(line.substr(space)))});
    }
    return listed;
}

}  // namespace

void DescribeFuzz(CLI::App& fuzz, RawFuzz& raw) {
    const auto option = [&fuzz](const char* name, auto& target, const char* type, const char* text) {
        return fuzz.add_option(name, target, text)->type_name(type);
    };
    FuzzSettings& settings = raw.settings;
    option("FILTER", raw.filter, "", "the filter (default: pagevalidatefilter.dll beside this program)");
    option("--clsid", raw.filterClass, "{...}",
           "its class (default: {8A9F4692-E8BA-4533-B859-E56B1EA16586})");
    auto* cases = option("--cases", settings.cases, "N", "end after N cases (default: 1000)");
    option("--duration", raw.duration, "TIME", "end after so long: 90s, 10m, 2h")->excludes(cases);
    option("--corpus", raw.corpus, "FOLDER",
           "documents to make bad ones from, beside those that the program has");
    option("--seed", settings.seed, "S", "of the first case; the next one's is the next number (default: 1)");
    option("--allow-code", raw.allowedCodes, "CODE",
           "a code with which the filter may refuse a job, beside those that "
           "docs/testing.md lists, repeatable")
        ->take_all()
        ->type_size(1)
        ->allow_extra_args(false);
    option("--device", settings.host.device, "MODEL", "the device model (default: simprinter)");
    auto* again = option("--reproduce", raw.again, "SEED[/SEED...]",
                         "run that one case in this process, where a debugger "
                         "finds it; --corpus must be the same");
    auto* guided =
        fuzz.add_flag("--guided", settings.guided,
                      "make cases of those that reached edges of the code which none before them did; "
                      "the filter must be built for it")
            ->excludes(again);
    option("--keep", settings.mostKept, "N",
           "of such cases at most; with 0 the edges are only counted (default: 10000)")
        ->needs(guided);
    option("--chains", raw.chains, "FILE",
           "run the cases that the file lists, SEED[/SEED...] a line, as well")
        ->excludes(again);
    option("--mutations", raw.mutations, "N,N", "of the case's mutations these alone, counted from 0")
        ->needs(again);
    option("--out-dir", raw.findings, "DIR",
           "where the smallest input of a finding goes (default: fuzz-findings)");
    option("--json", raw.json, "FILE", "a report for programs");
    option("--timeout", raw.timeout, "S", "a case that takes longer hangs (default: 30)")
        ->check(CLI::Range(1U, 100000U));
    option("-j", settings.parallel, "N", "processes at once (default: one a processor)")
        ->check(CLI::Range(1U, 1024U));
    fuzz.add_flag("--quiet", settings.quiet, "print findings only");
}

FuzzSettings TakeFuzz(RawFuzz raw) {
    FuzzSettings settings = std::move(raw.settings);
    FilterSettings filter;
    filter.dll = raw.filter.empty() ? ProgramFolder() / "pagevalidatefilter.dll" : Absolute(raw.filter);
    if (raw.filterClass) filter.clsid = ClassOf(*raw.filterClass);
    settings.host.filters.push_back(std::move(filter));
    settings.corpus = Absolute(raw.corpus);
    settings.allowedCodes = DocumentedCodes();
    for (const std::string& text : raw.allowedCodes) {
        const auto code = common::ParseHresult(text);
        if (!code) throw UsageError("--allow-code: \"" + text + "\" is no code");
        settings.allowedCodes.push_back(*code);
    }
    if (raw.duration) settings.duration = DurationOf(*raw.duration);
    if (!raw.duration && !settings.cases) settings.cases = 1000;
    if (raw.again) {
        settings.again = fuzz::ParseChain(*raw.again);
        if (!settings.again)
            throw UsageError("--reproduce: \"" + *raw.again + "\" is not of the form 1234 or 1234/77");
    }
    settings.chains = Absolute(raw.chains);
    if (settings.chains) settings.listed = ReadChains(*settings.chains);
    settings.mutations = PlacesOf(raw.mutations);
    settings.findings = Absolute(raw.findings);
    settings.json = Absolute(raw.json);
    settings.timeout = std::chrono::seconds(raw.timeout);
    return settings;
}

}  // namespace devkit::filterhost
