#include "devkit/filterhost/fuzzfinding.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;

FuzzSettings Settings() {
    FuzzSettings settings;
    settings.host.filters.push_back({"", "C:\\a b\\f.dll"});
    return settings;
}

FuzzFinding Finding() {
    FuzzFinding finding;
    finding.chain = {7};
    finding.end = {FuzzEnd::Crash, "the filter crashed", "f.dll+0x1"};
    finding.isRepeatable = true;
    finding.mutations = {0, 2};
    finding.done = {"a number set in 1.fpage", "provider fault=out-empty"};
    finding.base = "the small job";
    finding.file = "C:\\out\\7.xps";
    finding.likewise = 3;
    return finding;
}

constexpr const char* kCommand =
    "filterhost fuzz \"C:\\a b\\f.dll\" --clsid {8A9F4692-E8BA-4533-B859-E56B1EA16586} --reproduce 7 "
    "--mutations 0,2";

TEST(FuzzFinding, SaysHowItIsReproduced) {
    EXPECT_EQ(kCommand, CommandOf(Settings(), Finding()));
    FuzzSettings settings = Settings();
    settings.corpus = "C:\\corpus";
    EXPECT_NE(std::string::npos,
              CommandOf(settings, Finding()).find(" --corpus \"C:\\corpus\" --reproduce 7"));
    EXPECT_EQ(
        "seed 7: crash: the filter crashed\n  the small job, a number set in 1.fpage, provider "
        "fault=out-empty\n"
        "  C:\\out\\7.xps\n  " +
            std::string(kCommand),
        TextOf(Settings(), Finding()));
}

TEST(FuzzFinding, NamesEverySeedOfItsChain) {
    FuzzFinding finding = Finding();
    finding.chain = {7, 12};
    EXPECT_NE(std::string::npos, CommandOf(Settings(), finding).find(" --reproduce 7/12 --mutations 0,2"));
    EXPECT_TRUE(TextOf(Settings(), finding).starts_with("seed 7/12: crash: "));
}

TEST(FuzzFinding, SaysWhenItNeedsOtherCases) {
    FuzzFinding finding = Finding();
    finding.isRepeatable = false;
    EXPECT_EQ(
        "seed 7: crash: the filter crashed\n  not by itself: only after other cases in the same process",
        TextOf(Settings(), finding));
}

FuzzSummary Summary() {
    FuzzSummary summary;
    summary.firstSeed = 1;
    summary.cases = 12;
    summary.seconds = 1.25;
    summary.kinds = {{FuzzEnd::Passed, 5}, {FuzzEnd::Refused, 3}, {FuzzEnd::Crash, 4}};
    summary.codes = {{"0x80004005 E_FAIL", 1}, {"0x80040005", 2}};
    summary.mutations = {{"page", 20}};
    summary.findings = {Finding()};
    return summary;
}

TEST(FuzzSummary, CountsWhatCameOfTheCases) {
    EXPECT_EQ(
        "12 cases from seed 1 in 1.2 s: 5 passed, 3 refused (0x80040005 2, 0x80004005 E_FAIL 1), 4 crash\n"
        "  mutations: page 20\n"
        "  3 more like seed 7\n",
        TextOf(Summary()));
}

TEST(FuzzSummary, IsAnObjectForPrograms) {
    const Json json = Json::parse(JsonOf(Settings(), Summary()));
    EXPECT_EQ(12, json["cases"]);
    EXPECT_EQ((Json{{"passed", 5}, {"refused", 3}, {"crash", 4}}), json["ends"]);
    EXPECT_EQ(2, json["codes"]["0x80040005"]);
    ASSERT_EQ(1U, json["findings"].size());
    EXPECT_EQ(kCommand, json["findings"][0]["command"]);
    EXPECT_EQ((Json{0, 2}), json["findings"][0]["mutations"]);
    EXPECT_EQ(3, json["findings"][0]["likewise"]);
}

TEST(FuzzSummary, SaysWhatOfTheCodeWasReached) {
    FuzzSummary summary = Summary();
    summary.guidance = {120, 100, {{{7}, 15}, {{7, 9}, 5}}, {{"page", 5}, {"ticket", 20}}};
    EXPECT_NE(
        std::string::npos,
        TextOf(summary).find("\n  edges: 120, of them 100 by the documents as they are; 2 mutants kept\n"
                             "  new edges with mutations of: ticket 20, page 5\n"))
        << TextOf(summary);
    const Json json = Json::parse(JsonOf(Settings(), summary));
    EXPECT_EQ((Json{{"edges", 120},
                    {"ofBases", 100},
                    {"added", {{"page", 5}, {"ticket", 20}}},
                    {"kept", {{{"seed", "7"}, {"edges", 15}}, {{"seed", "7/9"}, {"edges", 5}}}}}),
              json["guidance"]);
    EXPECT_FALSE(Json::parse(JsonOf(Settings(), Summary())).contains("guidance"));
}

TEST(FuzzSummary, HasTheHighestStatus) {
    FuzzSummary summary = Summary();
    EXPECT_EQ(FilterFailed, summary.Status());
    summary.findings.push_back(Finding());
    summary.findings.back().end.kind = FuzzEnd::Breach;
    EXPECT_EQ(RuleBroken, summary.Status());
    summary.findings.clear();
    EXPECT_EQ(Done, summary.Status());
}

}  // namespace
}  // namespace devkit::filterhost
