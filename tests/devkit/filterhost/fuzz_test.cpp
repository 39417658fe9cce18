#include <gtest/gtest.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "devkit/common/file.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/program.h"

// filterhost fuzz of the built program.

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;
using Path = std::filesystem::path;
using Arguments = std::vector<std::string>;

constexpr const char* kTestFilter = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D10}";

Ended Fuzz(const char* filter, Arguments more, const char* mode = "") {
    Arguments arguments{"fuzz", Text(ProgramFolder() / filter)};
    if (std::string(filter) == "testfilter.dll") {
        for (const char* const each : {"--clsid", kTestFilter}) arguments.emplace_back(each);
    }
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunProgram(arguments, mode);
}

// A misbehaviour at pages that have a long attribute, and how its finding ends.
struct Misbehaviour {
    const char* name;
    const char* mode;
    const char* kind;
    const char* cause;  // or its begin
    unsigned long status;
    unsigned long again;  // of the reproduction; 0: it never ends
    const char* seed = "1";
    const char* cases = "150";
};

class FuzzTest : public testing::TestWithParam<Misbehaviour> {};

TEST_P(FuzzTest, IsFoundAndReproduced) {
    const Misbehaviour& each = GetParam();
    const Path folder = FreshFolder(std::string("fuzz-") + each.name);
    const std::string mode = std::string("when: long=\":") + each.mode;
    const Ended ended =
        Fuzz("testfilter.dll",
             {"--cases", each.cases, "--seed", each.seed, "-j", "1", "--timeout", "4", "--json",
              Text(folder / "r.json"), "--out-dir", Text(folder / "found"), "--quiet"},
             mode.c_str());
    EXPECT_EQ(each.status, ended.status) << ended.error;
    const Json findings = Json::parse(FileBytes(folder / "r.json")).at("findings");
    const auto found = std::ranges::find_if(findings, [&](const Json& finding) {
        return finding["kind"] == each.kind && finding["cause"].get<std::string>().starts_with(each.cause);
    });
    ASSERT_NE(findings.end(), found) << findings;
    EXPECT_TRUE(found->at("repeatable"));
    // One mutation makes the attribute.
    ASSERT_EQ(1U, found->at("mutations").size()) << *found;
    EXPECT_TRUE(found->at("done")[0].get<std::string>().starts_with("a long attribute added in "));
    const Path input = Path(found->at("file").get<std::string>());
    EXPECT_EQ(0U, FileBytes(input).find("PK\x03\x04"));
    const std::string told = FileBytes(Path(input).replace_extension(".txt"));
    EXPECT_NE(std::string::npos, told.find(found->at("command").get<std::string>())) << told;
    if (each.again == 0) return;
    const std::string seed = found->at("seed").get<std::string>();
    const std::string line =
        "filterhost: seed " + seed + ": " + each.kind + ": " + found->at("text").get<std::string>() + "\n";
    const std::string place = std::to_string(found->at("mutations")[0].get<unsigned>());
    for (const Arguments& more :
         {Arguments{"--reproduce", seed}, Arguments{"--reproduce", seed, "--mutations", place}}) {
        const Ended again = Fuzz("testfilter.dll", more, mode.c_str());
        EXPECT_EQ(each.again, again.status);
        EXPECT_EQ(line, again.error);
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, FuzzTest,
    testing::Values(Misbehaviour{"crash", "crash", "crash", "testfilter.dll+0x", 1, 1},
                    Misbehaviour{"leak", "leak-page", "breach", "leak", 4, 4},
                    // A hang takes its time: the case that the others find.
                    Misbehaviour{"hang", "hang", "hang", "no progress", 1, 0, "57", "1"},
                    Misbehaviour{"exit", "exit-process", "crash", "process", 1, 0, "57", "2"},
                    Misbehaviour{"code", "fail", "bad code", "0x80004004 E_ABORT", 1, 1}),
    [](const auto& each) { return each.param.name; });

TEST(Fuzz, AFilterThatIsRightPassesAndSaysWhatWasTried) {
    const Path folder = FreshFolder("fuzz-good");
    const Ended ended = Fuzz("testfilter.dll", {"--cases", "60", "-j", "2", "--json", Text(folder / "r.json"),
                                                "--out-dir", Text(folder / "found"), "--seed", "1000",
                                                // What it says to a pipeline that gives it no reader.
                                                "--allow-code", "E_POINTER"});
    EXPECT_EQ(0U, ended.status) << ended.error;
    EXPECT_EQ("", ended.error);
    EXPECT_TRUE(ended.out.starts_with("60 cases from seed 1000 in ")) << ended.out;
    EXPECT_FALSE(std::filesystem::exists(folder / "found"));
    const Json report = Json::parse(FileBytes(folder / "r.json"));
    EXPECT_EQ(60, report["cases"]);
    unsigned sum = 0;
    for (const auto& [kind, count] : report["ends"].items()) sum += count.get<unsigned>();
    EXPECT_EQ(60U, sum);
}

TEST(Fuzz, ACodeCanBeAllowed) {
    const Path folder = FreshFolder("fuzz-allowed");
    const Arguments arguments{"--cases", "20", "-j", "1", "--quiet", "--out-dir", Text(folder / "found")};
    EXPECT_EQ(1U, Fuzz("testfilter.dll", arguments, "fail").status);
    Arguments allowing = arguments;
    allowing.insert(allowing.end(), {"--allow-code", "E_ABORT"});
    const Ended ended = Fuzz("testfilter.dll", allowing, "fail");
    EXPECT_EQ(0U, ended.status) << ended.error;
}

// Of the doors of the test filter, each behind the one before, how many a run of so many cases comes through.
Json GuidanceOf(const char* name, const char* cases, const Arguments& more = {}) {
    const Path folder = FreshFolder(name);
    Arguments arguments{
        "--cases",      cases,       "-j",     "1", "--guided", "--json", Text(folder / "r.json"),
        "--allow-code", "E_POINTER", "--quiet"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const Ended ended = Fuzz("testfilter.dll", arguments, "doors");
    EXPECT_EQ(0U, ended.status) << ended.error;
    return Json::parse(FileBytes(folder / "r.json"));
}

TEST(GuidedFuzz, ComesFartherThanWithoutGuidance) {
    const Json guided = GuidanceOf("fuzz-guided", "250")["guidance"];
    const Json counted = GuidanceOf("fuzz-counted", "250", {"--keep", "0"})["guidance"];
    EXPECT_EQ(1, guided["ofBases"]);
    EXPECT_EQ(1, counted["ofBases"]);
    EXPECT_EQ(Json::array(), counted["kept"]);
    EXPECT_LT(counted["edges"].get<unsigned>(), guided["edges"].get<unsigned>()) << counted << guided;
    // All doors of the test filter are in pages.
    EXPECT_EQ(guided["edges"].get<unsigned>() - 1, guided["added"]["page"].get<unsigned>()) << guided;
    // The last one is made of the one before.
    const Json& kept = guided["kept"];
    ASSERT_LT(1U, kept.size()) << guided;
    const std::string last = kept.back()["seed"];
    EXPECT_TRUE(last.starts_with(kept[kept.size() - 2]["seed"].get<std::string>() + "/")) << kept;
}

TEST(GuidedFuzz, IsTheSameEachTime) {
    Json one = GuidanceOf("fuzz-one", "100");
    Json other = GuidanceOf("fuzz-other", "100");
    one.erase("seconds");
    other.erase("seconds");
    EXPECT_EQ(one, other);
}

TEST(GuidedFuzz, WantsATableOfEdges) {
    const Ended ended = Fuzz("pagevalidatefilter.dll", {"--guided", "--cases", "1"});
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ(
        "filterhost: --guided: pagevalidatefilter.dll has no table of its edges; docs/testing.md says how it "
        "gets one\n",
        ended.error);
}

TEST(GuidedFuzz, RunsListedCasesToo) {
    const Path folder = FreshFolder("fuzz-listed");
    common::SaveFile(folder / "chains.txt",
                     "# what was found\n7/12   the small job of UTF-16\n\n9 # any document\n");
    const Json report =
        GuidanceOf("fuzz-listed-report", "2", {"--keep", "0", "--chains", Text(folder / "chains.txt")});
    EXPECT_EQ(4, report["cases"]);
    ASSERT_EQ(2U, report["listed"].size());
    EXPECT_EQ("7/12", report["listed"][0]["seed"]);
    EXPECT_EQ("9", report["listed"][1]["seed"]);
    common::SaveFile(folder / "other.txt", "7/12 another document\n");
    const Ended other = Fuzz("testfilter.dll", {"--cases", "1", "--chains", Text(folder / "other.txt")});
    EXPECT_EQ(2U, other.status);
    EXPECT_EQ(
        "filterhost: --chains: 7/12 is made of the small job of UTF-16, not of another document: the "
        "documents are "
        "others than "
        "those that it was found with\n",
        other.error);
    common::SaveFile(folder / "none.txt", "x 7\n");
    const Ended none = Fuzz("testfilter.dll", {"--cases", "1", "--chains", Text(folder / "none.txt")});
    EXPECT_EQ(2U, none.status);
    EXPECT_EQ("filterhost: --chains: \"x 7\" does not begin with SEED[/SEED...]\n", none.error);
}

TEST(Fuzz, TheDocumentsOfAFolderAreBasesToo) {
    const Ended ended = Fuzz(
        "testfilter.dll", {"--corpus", Text(Path(SAMPLES_FOLDER)), "--reproduce", "5", "--mutations", "0"});
    EXPECT_EQ(0U, ended.status) << ended.error;
    const Path folder = FreshFolder("fuzz-corpus");
    const Ended none = Fuzz("testfilter.dll", {"--corpus", Text(folder), "--cases", "1"});
    EXPECT_EQ(2U, none.status);
    EXPECT_EQ("filterhost: --corpus: there is no document in " + Text(folder) + "\n", none.error);
}

TEST(Fuzz, EndsWithTheTime) {
    const Ended ended = Fuzz("testfilter.dll", {"--duration", "1s", "-j", "1"});
    EXPECT_EQ(0U, ended.status) << ended.error;
    EXPECT_NE(std::string::npos, ended.out.find(" from seed 1 in ")) << ended.out;
}

TEST(Fuzz, WhatCannotBeIsWrongUsage) {
    const auto refusal = [](const Arguments& more) {
        const Ended ended = Fuzz("testfilter.dll", more);
        EXPECT_EQ(2U, ended.status);
        return ended.error;
    };
    EXPECT_EQ("filterhost: --mutations: case 1 has ",
              refusal({"--reproduce", "1", "--mutations", "9"}).substr(0, 36));
    EXPECT_EQ("filterhost: --duration: \"soon\" is not of the form 90, 90s, 10m or 2h\n",
              refusal({"--duration", "soon"}));
    EXPECT_EQ("filterhost: --allow-code: \"x\" is no code\n", refusal({"--allow-code", "x"}));
    EXPECT_EQ("filterhost: --mutations: \"a\" is not of the form 0,2\n",
              refusal({"--reproduce", "1", "--mutations", "a"}));
    EXPECT_EQ("filterhost: --reproduce: \"1/\" is not of the form 1234 or 1234/77\n",
              refusal({"--reproduce", "1/"}));
    for (const Arguments& more : {Arguments{"--keep", "1"}, Arguments{"--guided", "--reproduce", "1"},
                                  Arguments{"--chains", "x", "--reproduce", "1"}})
        EXPECT_EQ("filterhost: --", refusal(more).substr(0, 14));
    EXPECT_EQ("filterhost: FILTER: there is no ", Fuzz("nosuch.dll", {}).error.substr(0, 32));
    EXPECT_EQ("filterhost: fuzz-work is a command of the program's own\n",
              RunProgram({"fuzz-work", "a", "b"}).error);
}

}  // namespace
}  // namespace devkit::filterhost
