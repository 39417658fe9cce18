#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include <nlohmann/json.hpp>

#include "devkit/filterhost/program.h"
#include "devkit/validate/validatedfilter.h"
#include "programfolder.h"

namespace devkit::validate {
namespace {

using Json = nlohmann::json;
using Names = std::set<std::string>;
using filterhost::FileBytes;
using filterhost::FreshFolder;
using filterhost::Text;
using Path = std::filesystem::path;

TEST(ValidationReports, TellWhatWasRunAndWhatCameOfIt) {
    const Path folder = FreshFolder("validation");
    const Validated validated = ValidateMode(
        "leak-page", {"--level", "3", "--include", "^(order-kept|references-given-back)$", "--seed", "7",
                      "--json", Text(folder / "r.json"), "--junit", Text(folder / "r.xml")});
    EXPECT_EQ(1U, validated.ended.status);
    const Json report = Json::parse(FileBytes(folder / "r.json"));
    EXPECT_EQ(7, report["seed"]);
    EXPECT_EQ(1, report["status"]);
    ASSERT_EQ(2U, report["tests"].size());
    EXPECT_EQ("passed", report["tests"][0]["result"]);
    const Json& failed = report["tests"][1];
    EXPECT_EQ("references-given-back", failed["name"]);
    EXPECT_EQ("failed", failed["result"]);
    EXPECT_EQ("short.xps", failed["failures"][0]["run"]);
    EXPECT_EQ("never released: FixedPage /Documents/1/Pages/1.fpage, 1 reference",
              failed["failures"][0]["text"]);
    EXPECT_EQ("hold references in owners", failed["failures"][0]["advice"]);
    const std::string suite = FileBytes(folder / "r.xml");
    EXPECT_TRUE(Holds(
        suite, R"(<testsuite name="filterhost validate" tests="2" failures="1" errors="0" skipped="0")"));
    EXPECT_TRUE(Holds(suite, R"(<failure type="level 3" message="never released: FixedPage)")) << suite;
}

TEST(ValidationReports, TheTestsThatFailedCanBeRunAgain) {
    const std::string report = Text(FreshFolder("validation") / "r.json");
    EXPECT_EQ(Names{"references-given-back"},
              ValidateMode("leak-page", {"--level", "3", "--exclude", "^threads", "--json", report}).failed);
    const Validated again = ValidateMode("", {"--level", "3", "--only-failed", "--json", report});
    EXPECT_EQ(0U, again.ended.status) << again.ended.error;
    EXPECT_EQ(Names{"references-given-back"}, again.passed);
    const Validated nothing = ValidateMode("", {"--only-failed", "--json", report});
    EXPECT_EQ(2U, nothing.ended.status);
    EXPECT_EQ("filterhost: --only-failed: no test failed in " + report + "\n", nothing.ended.error);
    std::ofstream(report) << "{}";
    EXPECT_EQ("filterhost: --only-failed: " + report + " is no report of a validation\n",
              ValidateMode("", {"--only-failed", "--json", report}).ended.error);
    EXPECT_EQ(2U, ValidateMode("", {"--only-failed"}).ended.status);
}

TEST(ValidationReports, AreAPageToLookAtAsWell) {
    const Path page = FreshFolder("validation") / "r.html";
    const Validated validated =
        ValidateMode("leak-page", {"--level", "3", "--include", "^(order-kept|references-given-back)$",
                                   "--report", Text(page), "--quiet"});
    EXPECT_EQ(1U, validated.ended.status) << validated.ended.error;
    const std::string text = FileBytes(page);
    EXPECT_TRUE(text.starts_with("<!DOCTYPE html>\n<html lang=\"en\">")) << text.substr(0, 80);
    for (const char* const piece :
         {">testfilter.dll is not fit at level 3: 1 test failed, 1 passed</h1>",
          "never released: FixedPage /Documents/1/Pages/1.fpage, 1 reference", "hold references in owners",
          "<a href=\"#references-given-back\">", "<section id=\"references-given-back\">",
          "<td>order-kept</td><td class=\"passed\">passed</td>"}) {
        EXPECT_TRUE(Holds(text, piece)) << piece;
    }
}

TEST(ValidationTrace, HasARowForEachTestWithItsRuns) {
    const Path file = FreshFolder("validation") / "t.json";
    const Validated validated = ValidateMode(
        "", {"--level", "3", "--include", "^(identity|order-kept)$", "-j", "1", "--trace", Text(file)});
    EXPECT_EQ(0U, validated.ended.status) << validated.ended.error;
    std::map<int, std::string> tests;
    std::map<int, int> operations;
    for (const Json& event : Json::parse(FileBytes(file))) {
        if (event["name"] == "process_name") tests[event["pid"]] = event["args"]["name"];
        if (event["name"] == "StartOperation" && event["ph"] == "B") ++operations[event["pid"]];
    }
    EXPECT_EQ((std::map<int, std::string>{{1, "identity"}, {2, "order-kept"}}), tests);
    // Of the two documents that every filter is given.
    EXPECT_EQ((std::map<int, int>{{2, 2}}), operations);
    EXPECT_EQ(2U, ValidateMode("", {"--include", "^identity$", "--trace", Text(file / "none")}).ended.status);
}

// Which of the runs of a test, chosen by the seed, the mode fails in.
Json RunsWithSeed(const std::string& seed) {
    const Path report = FreshFolder("validation") / "r.json";
    const Validated validated =
        ValidateMode("leak-page", {"--level", "7", "--include", "^each-call-fails-once$", "--cases", "4",
                                   "--seed", seed, "--json", Text(report)});
    EXPECT_EQ(1U, validated.ended.status) << validated.ended.error;
    Json runs = Json::array();
    const Json results = Json::parse(FileBytes(report));
    for (const Json& failure : results["tests"][0]["failures"]) runs.push_back(failure["run"]);
    return runs;
}

TEST(ValidationSeed, TheSameSeedGivesTheSameRuns) {
    const Json runs = RunsWithSeed("3");
    EXPECT_FALSE(runs.empty());
    EXPECT_EQ(runs, RunsWithSeed("3"));
    EXPECT_NE(runs, RunsWithSeed("4"));
}

// A copy of the test filter in a folder of its own, with a configuration above it.
struct Configured {
    explicit Configured(const std::string& text) : folder(FreshFolder("configured")) {
        std::filesystem::create_directories(folder / "bin");
        std::filesystem::copy_file(tests::ProgramFolder() / "testfilter.dll",
                                   folder / "bin" / "testfilter.dll");
        std::ofstream(folder / "filterhost.json", std::ios::binary) << text;
    }
    [[nodiscard]] Ended Validate(const char* mode, std::vector<std::string> more) const {
        std::vector<std::string> arguments{"validate", Text(folder / "bin" / "testfilter.dll"), "--clsid",
                                           kPartsClass};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return filterhost::RunProgram(arguments, mode);
    }

    const Path folder;
};

TEST(ValidationConfiguration, IsFoundAboveTheFilter) {
    const Configured configured(R"({"leaveOut": {"references-given-back": "kept for the next job"}})");
    const Ended ended =
        configured.Validate("leak-page", {"--include", "^(order-kept|references-given-back)$"});
    EXPECT_EQ(0U, ended.status);
    EXPECT_TRUE(ended.out.starts_with("with " + Text(configured.folder / "filterhost.json") + "\n"))
        << ended.out;
    EXPECT_TRUE(Holds(ended.out, "skipped       0.0  left out: kept for the next job\n")) << ended.out;
}

TEST(ValidationConfiguration, NamesDocumentsDeviceAndProperties) {
    const Configured configured(
        R"({"documents": ["own.xps"], "device": "longedge", "driverProperties": ["TestFilterMode=string:leak-page"]})");
    std::filesystem::copy_file(filterhost::Sample("minimal.xps"), configured.folder / "own.xps");
    const Ended ended = configured.Validate("", {"--include", "^references-given-back$"});
    EXPECT_EQ(1U, ended.status);
    EXPECT_TRUE(
        Holds(ended.out, Text(configured.folder / "own.xps") + ": never released: FixedPage /p.fpage"))
        << ended.out;
}

TEST(ValidationConfiguration, WhatMakesNoSenseIsWrongUsage) {
    const auto error = [](const std::string& text) {
        const Configured configured(text);
        const Ended ended = configured.Validate("", {"--include", "^identity$"});
        EXPECT_EQ(2U, ended.status);
        const std::string before = "filterhost: " + Text(configured.folder / "filterhost.json") + ": ";
        EXPECT_TRUE(ended.error.starts_with(before)) << ended.error;
        return ended.error.substr(std::min(before.size(), ended.error.size()));
    };
    EXPECT_EQ(
        "\"document\" is none of documents, device, properties, driverProperties, queueProperties, "
        "leaveOut\n",
        error(R"({"document": "a.xps"})"));
    EXPECT_EQ("there is no test order to leave out\n", error(R"({"leaveOut": {"order": "why not"}})"));
    EXPECT_EQ("the test order-kept is left out without a reason\n",
              error(R"({"leaveOut": {"order-kept": ""}})"));
    EXPECT_EQ("a=b is not NAME=TYPE:VALUE\n", error(R"({"properties": ["a=b"]})"));
    EXPECT_TRUE(Holds(error("{"), "parse error"));
}

}  // namespace
}  // namespace devkit::validate
