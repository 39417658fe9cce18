#include "devkit/filterhost/fuzzfinding.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "devkit/common/file.h"
#include "devkit/common/json.h"
#include "devkit/common/text.h"

namespace devkit::filterhost {
namespace {

using OrderedJson = nlohmann::ordered_json;

std::string SecondsText(double seconds) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f s", seconds);
    return text.data();
}

std::string PlacesText(const std::vector<std::size_t>& places) {
    std::string text;
    for (const std::size_t place : places) text += (text.empty() ? "" : ",") + std::to_string(place);
    return text;
}

// "E_FAIL 640, 0x80040005 200", the most frequent first.
std::string CountsText(const std::map<std::string, std::uint64_t>& counts) {
    std::vector<std::pair<std::uint64_t, std::string>> sorted;
    for (const auto& [what, count] : counts) sorted.emplace_back(count, what);
    std::ranges::stable_sort(sorted, std::greater(), &std::pair<std::uint64_t, std::string>::first);
    std::string text;
    for (const auto& [count, what] : sorted)
        text += (text.empty() ? "" : ", ") + what + " " + std::to_string(count);
    return text;
}

std::string Quoted(const std::filesystem::path& path) { return "\"" + common::PathText(path) + "\""; }

}  // namespace

ExitStatus FuzzSummary::Status() const {
    ExitStatus status = Done;
    for (const FuzzFinding& finding : findings) status = std::max(status, StatusOf(finding.end.kind));
    return status;
}

std::string CommandOf(const FuzzSettings& settings, const FuzzFinding& finding) {
    const FilterSettings& filter = settings.host.filters.front();
    std::string text = "filterhost fuzz " + Quoted(filter.dll) + " --clsid " + common::TextOf(filter.clsid);
    if (settings.corpus) text += " --corpus " + Quoted(*settings.corpus);
    text += " --reproduce " + fuzz::TextOf(finding.chain);
    if (finding.isRepeatable && !finding.mutations.empty())
        text += " --mutations " + PlacesText(finding.mutations);
    return text;
}

std::string TextOf(const FuzzSettings& settings, const FuzzFinding& finding) {
    std::string text =
        "seed " + fuzz::TextOf(finding.chain) + ": " + NameOf(finding.end.kind) + ": " + finding.end.text;
    if (!finding.isRepeatable) {
        return text + "\n  not by itself: only after other cases in the same process";
    }
    text += "\n  " + finding.base;
    for (const std::string& done : finding.done) text += ", " + done;
    text += "\n  " + common::PathText(finding.file) + "\n  " + CommandOf(settings, finding);
    return text;
}

std::string TextOf(const FuzzSummary& summary) {
    std::string text = common::Counted(summary.cases, "case") + " from seed " +
                       std::to_string(summary.firstSeed) + " in " + SecondsText(summary.seconds) + ":";
    std::string separator = " ";
    for (const auto& [kind, count] : summary.kinds) {
        text += separator + std::to_string(count) + " " + NameOf(kind);
        if (kind == FuzzEnd::Refused) text += " (" + CountsText(summary.codes) + ")";
        if (kind == FuzzEnd::SystemCrash) text += " (" + CountsText(summary.systemCrashes) + ")";
        separator = ", ";
    }
    text += "\n  mutations: " + CountsText(summary.mutations) + "\n";
    if (summary.guidance) {
        text += "  edges: " + std::to_string(summary.guidance->edges) + ", of them " +
                std::to_string(summary.guidance->ofBases) + " by the documents as they are; " +
                common::Counted(summary.guidance->kept.size(), "mutant") + " kept\n";
        if (!summary.guidance->added.empty())
            text += "  new edges with mutations of: " + CountsText(summary.guidance->added) + "\n";
    }
    for (const FuzzFinding& finding : summary.findings) {
        if (finding.likewise == 0) continue;
        text +=
            "  " + std::to_string(finding.likewise) + " more like seed " + fuzz::TextOf(finding.chain) + "\n";
    }
    return text;
}

std::string JsonOf(const FuzzSettings& settings, const FuzzSummary& summary) {
    OrderedJson kinds = OrderedJson::object();
    for (const auto& [kind, count] : summary.kinds) kinds[NameOf(kind)] = count;
    OrderedJson cases = OrderedJson::array();
    for (const FuzzFinding& each : summary.findings) {
        cases.push_back(
            {{"seed", fuzz::TextOf(each.chain)},
             {"kind", NameOf(each.end.kind)},
             {"text", each.end.text},
             {"cause", each.end.cause},
             {"repeatable", each.isRepeatable},
             {"mutations", each.mutations},
             {"done", each.done},
             {"base", each.base},
             {"file", each.file.empty() ? OrderedJson() : OrderedJson(common::PathText(each.file))},
             {"command", CommandOf(settings, each)},
             {"likewise", each.likewise}});
    }
    OrderedJson listed = OrderedJson::array();
    for (const ListedEnd& each : summary.listed) {
        listed.push_back(
            {{"seed", fuzz::TextOf(each.chain)}, {"end", NameOf(each.kind)}, {"edges", each.edges}});
    }
    OrderedJson json{{"seed", summary.firstSeed},
                     {"cases", summary.cases},
                     {"seconds", summary.seconds},
                     {"ends", kinds},
                     {"codes", summary.codes},
                     {"systemCrashes", summary.systemCrashes},
                     {"mutations", summary.mutations},
                     {"findings", cases},
                     {"listed", listed}};
    if (summary.guidance) {
        OrderedJson kept = OrderedJson::array();
        for (const fuzz::KeptCase& each : summary.guidance->kept)
            kept.push_back({{"seed", fuzz::TextOf(each.chain)}, {"edges", each.edges}});
        json["guidance"] = {{"edges", summary.guidance->edges},
                            {"ofBases", summary.guidance->ofBases},
                            {"added", summary.guidance->added},
                            {"kept", kept}};
    }
    return common::IndentedJsonText(json, 2);
}

}  // namespace devkit::filterhost
