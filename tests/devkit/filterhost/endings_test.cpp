#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <ostream>

#include <nlohmann/json.hpp>

#include "devkit/filterhost/files.h"
#include "devkit/filterhost/program.h"

// Whatever a filter does to its process costs one input.

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;
using Path = std::filesystem::path;

// A misbehaviour of the test filter, and the line about it between the input's name and the part.
struct Ending {
    const char* mode;
    const char* begins;
    const char* ends;
};
std::ostream& operator<<(std::ostream& stream, const Ending& ending) { return stream << ending.mode; }

class EndingTest : public testing::TestWithParam<Ending> {};

TEST_P(EndingTest, CostsOneInput) {
    const Ending& ending = GetParam();
    const Path folder =
        FreshFolder(std::string("ending-") + std::to_string(std::hash<std::string>()(ending.mode)));
    const std::string input = Text(Sample("minimal.xps"));
    const Ended ended =
        RunProgram(RunArguments({input, Text(Sample("names.xps")), "--out-dir", Text(folder / "out"),
                                 "--json", Text(folder / "r.json"), "--timeout", "5", "-j", "1"}),
                   ending.mode);
    EXPECT_EQ(1U, ended.status) << ended.error;
    // The filter's own runtime may have written something before.
    const std::size_t begin = std::min(ended.error.find("filterhost: "), ended.error.size());
    const std::string line = ended.error.substr(begin, ended.error.find('\n', begin) - begin);
    EXPECT_TRUE(line.starts_with("filterhost: " + input + ": " + ending.begins)) << ended.error;
    EXPECT_TRUE(line.ends_with(ending.ends)) << ended.error;
    // Both inputs were run, each to its bad end.
    EXPECT_NE(std::string::npos, ended.error.find("filterhost: " + Text(Sample("names.xps")) + ": "))
        << ended.error;
    EXPECT_FALSE(std::filesystem::exists(folder / "out" / "minimal.xps"));
    const Json report = ReportedInputs(folder / "r.json");
    ASSERT_EQ(2U, report.size());
    EXPECT_EQ(Json(input), report[0]["input"]);
    EXPECT_EQ(nullptr, report[0]["output"]);
}

constexpr const char* kAtPage = ", in StartOperation, at FixedPage /p.fpage";
constexpr const char* kBeforeParts = ", in InitializeFilter, before any part";

INSTANTIATE_TEST_SUITE_P(
    All, EndingTest,
    testing::Values(
        Ending{"crash",
               "the filter crashed with 0xC0000005 ACCESS_VIOLATION writing 0x0 at testfilter.dll+0x",
               kAtPage},
        Ending{"jump-to-null",
               "the filter crashed with 0xC0000005 ACCESS_VIOLATION running 0x0, called by testfilter.dll+0x",
               kAtPage},
        Ending{"overflow-stack", "the filter crashed with 0xC00000FD STACK_OVERFLOW", kAtPage},
        Ending{"raise", "the filter crashed with 0xE0000001 at ", kAtPage},
        Ending{"exit-process", "the filter ended the process with status 0", kAtPage},
        Ending{"exit", "the filter ended the process with status 0", kAtPage},
        Ending{"abort", "the filter called abort", kAtPage},
        Ending{"terminate", "the filter called abort", kAtPage},
        Ending{"throw-in-thread",
               "the filter called abort; the last exception that it threw is std::runtime_error (no paper)",
               kAtPage},
        Ending{"exit-thread", "the filter ended its thread", kAtPage},
        Ending{"hang", "the filter made no progress for 5 s", kAtPage},
        Ending{"initialize:crash", "the filter crashed with 0xC0000005 ACCESS_VIOLATION", kBeforeParts},
        Ending{"initialize:exit-process", "the filter ended the process with status 0", kBeforeParts},
        Ending{"initialize:exit-thread", "the filter ended its thread", kBeforeParts},
        Ending{"initialize:abort", "the filter called abort", kBeforeParts},
        Ending{"initialize:hang", "the filter made no progress for 5 s", kBeforeParts}));

TEST(Endings, ADamagedHeapIsNoSuccess) {
    const auto [ended, output, report] = RunReported("ending-heap", "damage-heap", {"--timeout", "5"});
    EXPECT_EQ(1U, ended.status) << ended.error;
    EXPECT_EQ("filterhost: " + Text(Sample("minimal.xps")) +
                  ": the filter damaged the heap of the process, at the end of the parts\n",
              ended.error);
    EXPECT_FALSE(std::filesystem::exists(output));
    EXPECT_EQ(1U, report.size());
}

TEST(Endings, TheReportHasAllThatCameBefore) {
    const auto [ended, output, report] = RunReported("ending-report", "exit-process", {"--quiet"});
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("", ended.out);
    EXPECT_EQ("the filter ended the process with status 0", report[0]["crash"]["text"]);
    EXPECT_EQ(Json{"StartOperation"}, report[0]["crash"]["calls"]);
    EXPECT_EQ("FixedPage /p.fpage", report[0]["crash"]["part"]);
    EXPECT_EQ(nullptr, report[0]["end"]);
    ASSERT_EQ(3U, report[0]["parts"].size());
    EXPECT_EQ("/d.fdoc", report[0]["parts"][2]["uri"]);
}

TEST(Endings, OneBadInputOfManyIsOneBadResult) {
    const Path folder = FreshFolder("ending-many");
    const Ended ended =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), Text(Sample("names.xps")),
                                 Text(Sample("utf16.xps")), "--out-dir", Text(folder / "out"), "-j", "2"}),
                   "exit-process-for-names");
    EXPECT_EQ(1U, ended.status) << ended.error;
    EXPECT_EQ("filterhost: " + Text(Sample("names.xps")) +
                  ": the filter ended the process with status 7, in StartOperation, at FixedPage "
                  "/docs/one/A%20Page.xml\n",
              ended.error);
    EXPECT_TRUE(std::filesystem::exists(folder / "out" / "minimal.xps"));
    EXPECT_TRUE(std::filesystem::exists(folder / "out" / "utf16.xps"));
    // In the order of the command line, whichever was done first.
    const std::size_t first = ended.out.find("minimal.xps -> ");
    const std::size_t second = ended.out.find("names.xps -> ");
    const std::size_t third = ended.out.find("utf16.xps -> ");
    EXPECT_TRUE(first < second && second < third && third != std::string::npos) << ended.out;
}

TEST(Endings, InThisProcessACrashIsToldAllTheSame) {
    const auto [ended, output, report] = RunReported("ending-here", "crash", {"--in-process"});
    EXPECT_EQ(1U, ended.status);
    EXPECT_TRUE(
        ended.error.starts_with("filterhost: " + Text(Sample("minimal.xps")) +
                                ": the filter crashed with 0xC0000005 ACCESS_VIOLATION writing 0x0 at "))
        << ended.error;
    EXPECT_EQ(1U, report.size());
}

TEST(Endings, AFilterMayChangeTheCurrentFolder) {
    const Path folder = FreshFolder("ending-folder");
    const Path before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    std::filesystem::copy_file(Sample("minimal.xps"), folder / "in.xps");
    const Ended ended =
        RunProgram(RunArguments({"in.xps", "-o", "out.xps", "--json", "r.json"}), "change-folder");
    std::filesystem::current_path(before);
    EXPECT_EQ(0U, ended.status) << ended.error;
    EXPECT_EQ(FileBytes(folder / "in.xps"), FileBytes(folder / "out.xps"));
    EXPECT_EQ("in.xps", ReportedInputs(folder / "r.json")[0]["input"]);
}

TEST(Endings, ARequestedShutdownAfterSuccessHasItsLine) {
    const Ended ended =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), "--no-output"}), "shutdown-after-success");
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("filterhost: " + Text(Sample("minimal.xps")) +
                  ": the filter succeeded, but called RequestShutdown with 0x80004004 E_ABORT\n",
              ended.error);
}

TEST(Endings, ACancellationThatNeverStruckIsWrongUsage) {
    const Ended ended =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), "--no-output", "--cancel-at", "99"}));
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ("filterhost: " + Text(Sample("minimal.xps")) +
                  ": --cancel-at 99 never struck: the filter asked for 5 parts\n",
              ended.error);
}

TEST(Endings, AFaultThatNeverStruckIsWrongUsage) {
    const Ended ended = RunProgram(
        RunArguments({Text(Sample("minimal.xps")), "--no-output", "--provider", "fault=merge-fail@2:page"}));
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ(
        "filterhost: " + Text(Sample("minimal.xps")) + ": --provider fault=merge-fail@2:page never struck\n",
        ended.error);
}

TEST(Endings, ASwitchOfTheProviderThatCannotHaveStruckIsWrongUsage) {
    // The test filter calls no provider.
    const auto error = [](const char* text) {
        return RunProgram(RunArguments({Text(Sample("minimal.xps")), "--no-output", "--provider", text}))
            .error;
    };
    for (const char* const text : {"private=all", "thread=warn"}) {
        EXPECT_EQ("filterhost: " + Text(Sample("minimal.xps")) + ": --provider " + text + " never struck\n",
                  error(text));
    }
    // The user's ticket comes from the provider, too.
    for (const char* const text : {"us=1", "prefixes=mangled"}) EXPECT_EQ("", error(text)) << text;
}

TEST(Endings, AFailureOfThePipelineThatNeverStruckIsWrongUsage) {
    const Ended ended = RunProgram(
        RunArguments({Text(Sample("minimal.xps")), "--no-output", "--pipeline", "fail=GetXpsPart@9=E_FAIL"}));
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ("filterhost: " + Text(Sample("minimal.xps")) +
                  ": --pipeline fail=GetXpsPart@9=0x80004005 E_FAIL never struck\n",
              ended.error);
}

TEST(Endings, AFailureOfThePipelineStrikes) {
    const Ended ended = RunProgram(RunArguments(
        {Text(Sample("minimal.xps")), "--no-output", "--pipeline", "fail=GetXpsPart@3=E_ABORT"}));
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("filterhost: " + Text(Sample("minimal.xps")) +
                  ": the filter failed with 0x80004004 E_ABORT, at FixedDocumentSequence /s.fdseq\n",
              ended.error);
}

TEST(Endings, AnotherDomIsNotedOnlyWhenAsked) {
    const Ended ended = RunProgram(RunArguments(
        {Text(Sample("minimal.xps")), Text(Sample("names.xps")), "--no-output", "--verbose", "-j", "1"}));
    EXPECT_EQ(0U, ended.status);
    const std::string note =
        "filterhost: the system's DOM document lacks what filters need; the kit's own takes its place\n";
    EXPECT_TRUE(ended.error.empty() || ended.error == note) << ended.error;
}

TEST(Endings, ADamagedTicketOfTheUsersIsWrongUsage) {
    const Path folder = FreshFolder("ending-ticket");
    const Path ticket = folder / "t.xml";
    std::ofstream(ticket) << "<a/>";
    const Ended ended =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), "--no-output", "--user-ticket", Text(ticket)}));
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ("filterhost: --user-ticket: " + Text(ticket) +
                  " is no print ticket: The root element is not PrintTicket\n",
              ended.error);
}

TEST(Endings, TheWorkersCommandIsNobodyElses) {
    const Ended ended = RunProgram({"work", "a", "b"});
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ("filterhost: work is a command of the program's own\n", ended.error);
}

}  // namespace
}  // namespace devkit::filterhost
