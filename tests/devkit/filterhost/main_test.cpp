#include "platform/windows.h"

#include <gtest/gtest.h>

#include <fstream>

#include <nlohmann/json.hpp>

#include "devkit/filterhost/files.h"
#include "devkit/filterhost/program.h"
#include "temporaryplace.h"

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;
using Path = std::filesystem::path;
using Lines = std::vector<std::string>;

TEST(FilterHost, AFaithfulFilterGivesStatus0AndTheSameBytes) {
    const Path output = FreshFolder("faithful") / "out.xps";
    const Ended ended = RunProgram(RunArguments({Text(Sample("sample.xps")), "-o", Text(output)}));
    EXPECT_EQ(0U, ended.status);
    EXPECT_EQ("", ended.error);
    EXPECT_TRUE(ended.out.starts_with(Text(Sample("sample.xps")) + " -> " + Text(output) +
                                      ": 15 parts, 10 pages, done, 0x00000000 S_OK\n"))
        << ended.out;
    EXPECT_EQ(FileBytes(Sample("sample.xps")), FileBytes(output));
}

TEST(FilterHost, AFailingFilterGivesStatus1AndNoOutput) {
    const Path output = FreshFolder("failing") / "out.xps";
    const Ended ended = RunProgram(RunArguments({Text(Sample("sample.xps")), "-o", Text(output)}), "fail");
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("filterhost: " + Text(Sample("sample.xps")) +
                  ": the filter failed with 0x80004004 E_ABORT, at FixedPage "
                  "/Documents/1/Pages/1.fpage\n",
              ended.error);
    EXPECT_FALSE(std::filesystem::exists(output));
}

TEST(FilterHost, AFilterThatCannotBeInitialisedGivesStatus1) {
    const Path output = FreshFolder("uninitialised") / "out.xps";
    const Ended ended =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), "-o", Text(output)}), "fail-initialize");
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("filterhost: " + Text(Sample("minimal.xps")) +
                  ": InitializeFilter of the filter failed with 0x80004004 E_ABORT, before any part\n",
              ended.error);
}

TEST(FilterHost, WrongUsageGivesStatus2AndOneLine) {
    const Ended ended = RunProgram({"run", "in.xps"});
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ("", ended.out);
    EXPECT_EQ("filterhost: one of -o, --out-dir and --no-output is required\n", ended.error);
}

TEST(FilterHost, AMissingFilterGivesStatus2) {
    const Ended ended =
        RunProgram({"run", Text(Sample("minimal.xps")), "-o", "out.xps", "--filter", "nowhere.dll"});
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ("filterhost: --filter: there is no " + Text(std::filesystem::absolute("nowhere.dll")) + "\n",
              ended.error);
}

TEST(FilterHost, ADllThatIsNoFilterGivesStatus1) {
    wchar_t system[MAX_PATH];
    ASSERT_NE(0U, GetSystemDirectoryW(system, MAX_PATH));
    const Ended ended = RunProgram({"run", Text(Sample("minimal.xps")), "-o", "out.xps", "--filter",
                                    Text(Path(system) / "version.dll")});
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("filterhost: version.dll does not export DllGetClassObject\n", ended.error);
}

TEST(FilterHost, ADllThatNeedsAMissingOneGivesStatus1AndItsName) {
    const std::string dll = Text(ProgramFolder() / "testneedy.dll");
    const Ended ended = RunProgram({"run", Text(Sample("minimal.xps")), "-o", "out.xps", "--filter", dll});
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("filterhost: " + dll + " needs testmissing.dll, which is missing\n", ended.error);
}

TEST(FilterHost, AClassThatTheFilterDoesNotHaveGivesStatus1) {
    const Ended ended = RunProgram({"run", Text(Sample("minimal.xps")), "-o", "out.xps", "--quiet",
                                    "--filter", Text(ProgramFolder() / "testfilter.dll")});
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("filterhost: " + Text(Sample("minimal.xps")) +
                  ": testfilter.dll: DllGetClassObject answers 0x80040111 "
                  "CLASS_E_CLASSNOTAVAILABLE; --clsid names another class\n",
              ended.error);
}

TEST(FilterHost, AnInputThatIsNoDocumentGivesStatus3AndOneLine) {
    const Path folder = FreshFolder("unreadable");
    const std::string input = Text(ProgramFolder() / "filterhost.exe");
    const Ended ended = RunProgram(RunArguments({input, "-o", Text(folder / "out.xps")}));
    EXPECT_EQ(3U, ended.status);
    EXPECT_EQ("filterhost: " + input + ": is not a zip archive\n", ended.error);
    EXPECT_EQ(input + " -> nothing written: not run\n", ended.out);
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST(FilterHost, ADamagedPartGivesStatus3AndItsNameInTheSummaryToo) {
    const Path folder = FreshFolder("damaged");
    std::string bytes = FileBytes(Sample("minimal.xps"));
    const std::size_t place = bytes.find("Width=");
    ASSERT_NE(std::string::npos, place);
    bytes[place] = 'w';
    const std::string input = Text(folder / "damaged.xps");
    std::ofstream(folder / "damaged.xps", std::ios::binary) << bytes;
    const Ended ended = RunProgram(
        RunArguments({input, "-o", Text(folder / "out.xps"), "--json", Text(folder / "r.json")}), "rewrite");
    EXPECT_EQ(3U, ended.status);
    EXPECT_TRUE(
        ended.error.starts_with("filterhost: " + input + ": /p.fpage: its checksum is wrong, p.fpage\n"))
        << ended.error;
    EXPECT_EQ(std::string::npos, ended.error.find("breach")) << ended.error;
    EXPECT_TRUE(
        ended.out.starts_with(input + " -> nothing written: 3 parts, 0 pages, the input is damaged\n"))
        << ended.out;
    EXPECT_FALSE(std::filesystem::exists(folder / "out.xps"));
    // A filter that does not look at the page is not the one to notice it.
    EXPECT_EQ(3U, RunProgram(RunArguments({input, "-o", Text(folder / "out.xps")})).status);
}

TEST(FilterHost, AMissingInputGivesStatus3) {
    const Ended ended = RunProgram(RunArguments({"nowhere.xps", "-o", "out.xps", "--quiet"}));
    EXPECT_EQ(3U, ended.status);
    EXPECT_TRUE(ended.error.starts_with("filterhost: nowhere.xps: cannot be opened")) << ended.error;
}

TEST(FilterHost, ABrokenRuleGivesStatus4WithALineForEachBreach) {
    const Path output = FreshFolder("rule") / "out.xps";
    const Ended ended =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), "-o", Text(output)}), "send-after-close");
    EXPECT_EQ(4U, ended.status);
    const std::string name = "filterhost: " + Text(Sample("minimal.xps")) + ": ";
    EXPECT_EQ(name + "the filter failed with 0x8000000E E_ILLEGAL_METHOD_CALL, at FixedPage /p.fpage\n" +
                  name + "breach: SendFixedPage of FixedPage /p.fpage came after CloseSender\n" + name +
                  "breach: CloseSender was called twice\n",
              ended.error);
    EXPECT_FALSE(std::filesystem::exists(output));
}

TEST(FilterHost, SeveralInputsAllRunAndTheHighestStatusCounts) {
    const Path folder = FreshFolder("several");
    const Ended ended =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), "nowhere.xps", Text(Sample("sample.xps")),
                                 "--out-dir", Text(folder / "out"), "--json", Text(folder / "report.json")}));
    EXPECT_EQ(3U, ended.status);
    EXPECT_EQ(FileBytes(Sample("minimal.xps")), FileBytes(folder / "out" / "minimal.xps"));
    EXPECT_EQ(FileBytes(Sample("sample.xps")), FileBytes(folder / "out" / "sample.xps"));
    const Json report = ReportedInputs(folder / "report.json");
    ASSERT_EQ(3U, report.size());
    EXPECT_EQ(nullptr, report[1]["output"]);
    EXPECT_EQ(nullptr, report[1]["end"]);
    EXPECT_EQ(Json::array(), report[1]["parts"]);
    EXPECT_EQ(Json(Text(folder / "out" / "sample.xps")), report[2]["output"]);
}

TEST(FilterHost, TheReportIsExact) {
    auto [ended, output, report] = RunReported("report", "ticket", {"--quiet"});
    EXPECT_EQ(0U, ended.status);
    EXPECT_EQ("", ended.out);
    EXPECT_EQ("", ended.error);
    ASSERT_EQ(1U, report.size());
    Json& run = report[0];
    EXPECT_EQ(Json(Text(Sample("minimal.xps"))), run["input"]);
    EXPECT_EQ(Json(Text(output)), run["output"]);
    EXPECT_GT(run["parts"][3]["bytes_in"], 100);
    EXPECT_EQ(run["parts"][3]["bytes_out"], run["parts"][3]["bytes_in"]);
    const Json calls = run["filter_calls"][0]["pipeline_calls"];
    EXPECT_EQ(5, calls["IXpsDocumentProvider::GetXpsPart"]) << calls;
    EXPECT_EQ(1, calls["IXpsDocumentConsumer::GetNewEmptyPart"]) << calls;
    // What another place or another ticket would change.
    EXPECT_GT(run["seconds"]["total"], 0);
    for (const char* const key : {"input", "output", "texts", "provider", "seconds"}) run.erase(key);
    for (const char* const key : {"bytes_in", "bytes_out"}) run["parts"][3].erase(key);
    run["filter_calls"][0].erase("pipeline_calls");
    const Json expected = Json::parse(R"json({
        "status": 0, "pages_in": 1, "pages_out": 1, "parts_in": 4, "bytes_out": null, "breaches": [],
        "findings": [], "errors": [], "input_failures": [], "crash": null,
        "end": {"filter": null, "result": "0x00000000 S_OK", "shutdown_codes": [], "hung": false,
                "thread_ended": false, "cancelled": false, "whole": true},
        "missing": ["property TestFilterMode of DriverPropertyBag"],
        "filter_calls": [{"filter": "1 (testfilter.dll)", "InitializeFilter": "0x00000000 S_OK",
                          "StartOperation": "0x00000000 S_OK", "ShutdownOperation": null,
                          "RequestShutdown": []}],
        "provider_calls": [], "user_ticket": 0,
        "parts": [
            {"kind": "XpsDocument", "uri": null, "ticket_in": null, "ticket_out": null,
             "tickets": {"own": null, "asked": null, "made": null, "in_force": null, "new": null}},
            {"kind": "FixedDocumentSequence", "uri": "/s.fdseq", "ticket_in": null, "ticket_out": null,
             "tickets": {"own": null, "asked": null, "made": null, "in_force": 0, "new": null}},
            {"kind": "FixedDocument", "uri": "/d.fdoc", "ticket_in": null, "ticket_out": null,
             "tickets": {"own": null, "asked": null, "made": null, "in_force": 0, "new": null}},
            {"kind": "FixedPage", "uri": "/p.fpage", "ticket_in": null, "ticket_out": "/Tickets\\made_1.xml",
             "tickets": {"own": null, "asked": null, "made": null, "in_force": 0, "new": 1},
             "width_in": 793.76, "height_in": 1122.56, "width_out": 793.76, "height_out": 1122.56,
             "markup_rewritten": false, "turned": false, "ticket_replaced": true, "feed": null, "sheet": null,
             "decision": "793.76 x 1122.56, new ticket /Tickets\\made_1.xml"
            }]})json");
    EXPECT_EQ(expected, run);
}

// Where the time of a run went, in seconds. One sheet is sent through.
Json SecondsOf(std::vector<std::string> arguments, const char* mode = "") {
    const Path folder = FreshFolder("seconds");
    arguments.insert(arguments.end(), {Text(Sample("minimal.xps")), "-o", Text(folder / "o.xps"), "--json",
                                       Text(folder / "r.json")});
    const Ended ended = RunProgram(arguments, mode);
    EXPECT_EQ(0U, ended.status) << ended.error;
    const std::size_t line = ended.out.rfind("\n  time: ");
    EXPECT_NE(std::string::npos, line) << ended.out;
    EXPECT_EQ(ended.out.size() - 1, ended.out.find('\n', line + 1)) << ended.out;
    return ReportedInputs(folder / "r.json")[0]["seconds"];
}

// Whether the share alone has more than the 0.6 s that are spent on it on purpose.
void ExpectSlow(const Json& seconds, const std::string& slow) {
    ASSERT_EQ(1U, seconds["filters"].size());
    const Json& filter = seconds["filters"][0];
    for (const char* const share : {"filter", "ticket_provider", "pipeline", "observer"})
        EXPECT_EQ(slow == share, filter[share].get<double>() >= 0.6) << share << " " << seconds;
    double sum = seconds["rest"].get<double>();
    for (const char* const share : {"filter", "ticket_provider", "pipeline"})
        sum += filter[share].get<double>();
    EXPECT_NEAR(seconds["total"].get<double>(), sum, 1e-6);
}

TEST(FilterHost, TheTimeOfASlowFilterIsTheFilters) {
    ExpectSlow(SecondsOf(RunArguments({}), "sleep"), "filter");
}

TEST(FilterHost, TheTimeOfASlowPipelineIsThePipelines) {
    ExpectSlow(SecondsOf({"run", "--pipeline", "slow-part=200"}), "pipeline");
}

TEST(FilterHost, TheTimeOfASlowTicketProviderIsTheProviders) {
    ExpectSlow(SecondsOf({"run", "--provider", "fault=slow:700"}), "ticket_provider");
}

TEST(FilterHost, TheSystemsTicketProviderHasNoTimeOfItsOwn) {
    const Json seconds = SecondsOf(RunArguments({"--provider", "system", "--printer", "Nobody's"}));
    EXPECT_TRUE(seconds["filters"][0]["ticket_provider"].is_null());
}

TEST(FilterHost, AFailureIsInTheReport) {
    const auto [ended, output, report] = RunReported("failure", "fail", {"--quiet"});
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ("0x80004004 E_ABORT", report[0]["end"]["result"]);
    EXPECT_EQ((Json{"0x80004004 E_ABORT"}), report[0]["end"]["shutdown_codes"]);
    EXPECT_EQ(nullptr, report[0]["output"]);
    EXPECT_EQ(3U, report[0]["parts"].size());
}

TEST(FilterHost, NewTicketsGetLegalNamesInTheOutput) {
    const Path output = FreshFolder("names") / "out.xps";
    EXPECT_EQ(0U,
              RunProgram(RunArguments({Text(Sample("sample.xps")), "-o", Text(output)}), "ticket").status);
    const Ended tree = RunProgram({"inspect", Text(output)});
    EXPECT_EQ(0U, tree.status);
    EXPECT_NE(std::string::npos, tree.out.find("/Tickets/made_1.xml")) << tree.out;
    EXPECT_NE(std::string::npos, tree.out.find("/Tickets/made_10.xml")) << tree.out;
    EXPECT_EQ(std::string::npos, tree.out.find("Tickets\\")) << tree.out;
}

TEST(FilterHost, MarkupThatIsNotWellFormedIsAFindingNotABreach) {
    const auto [ended, output, report] = RunReported("malformed", "break-markup", {"--quiet"});
    EXPECT_EQ(0U, ended.status);
    EXPECT_EQ("", ended.error);
    EXPECT_EQ(Json::array(), report[0]["breaches"]);
    ASSERT_EQ(1U, report[0]["findings"].size());
    const std::string finding = report[0]["findings"][0]["text"];
    EXPECT_TRUE(finding.starts_with("page markup is not well-formed XML (")) << finding;
    EXPECT_TRUE(finding.ends_with(", /p.fpage")) << finding;
    EXPECT_TRUE(report[0]["parts"][3]["markup_rewritten"]);
}

TEST(FilterHost, CancellingAtEachPartEndsWithTheCodeOfTheCancellation) {
    for (const char* part : {"1", "2", "3", "4", "5"}) {
        const Path output = FreshFolder("cancel") / "out.xps";
        const Ended ended =
            RunProgram(RunArguments({Text(Sample("minimal.xps")), "-o", Text(output), "--cancel-at", part}),
                       "close-on-shutdown");
        EXPECT_EQ(1U, ended.status) << part;
        EXPECT_NE(std::string::npos, ended.error.find("the filter failed with 0x800704C7 ERROR_CANCELLED"))
            << part << ended.error;
        EXPECT_NE(std::string::npos, ended.out.find("cancelled, 0x800704C7 ERROR_CANCELLED"))
            << part << ended.out;
        EXPECT_FALSE(std::filesystem::exists(output)) << part;
    }
}

// Takes as long as the program waits for a filter after ShutdownOperation.
TEST(FilterHost, AFilterThatHangsAfterACancellationBreaksARule) {
    const Path folder = FreshFolder("hang");
    const Ended ended = RunProgram(RunArguments({Text(Sample("minimal.xps")), "-o", Text(folder / "o.xps"),
                                                 "--json", Text(folder / "r.json"), "--cancel-at", "2"}),
                                   "hang-after-failure");
    EXPECT_EQ(4U, ended.status);
    EXPECT_EQ("filterhost: " + Text(Sample("minimal.xps")) +
                  ": breach: StartOperation did not return within 30000 ms of ShutdownOperation\n",
              ended.error);
    EXPECT_TRUE(ended.out.starts_with(Text(Sample("minimal.xps")) +
                                      " -> nothing written: 1 part, 0 pages, the filter hangs\n"))
        << ended.out;
    EXPECT_EQ("0x8000000A E_PENDING", ReportedInputs(folder / "r.json")[0]["end"]["result"]);
}

TEST(FilterHost, NamesOutsideAsciiAndLongNamesWork) {
    const Path folder = FreshFolder("n\xC3\xA4mes");
    const std::string name = "\xE5\x8D\xB0\xE5\x88\xB7 \xD0\x9F " + std::string(180, 'n') + ".xps";
    const Path input = folder / Path(std::u8string(name.begin(), name.end()));
    std::filesystem::copy_file(Sample("sample.xps"), input);
    const Path output = folder / Path(u8"\u00e9t\u00e9");
    const Ended ended = RunProgram(RunArguments({Text(input), "--out-dir", Text(output)}));
    EXPECT_EQ(0U, ended.status) << ended.error;
    EXPECT_EQ(FileBytes(input), FileBytes(output / input.filename()));
    EXPECT_TRUE(ended.out.starts_with(Text(input) + " -> ")) << ended.out;
}

TEST(FilterHost, TheOutputMayNotReplaceTheInput) {
    const Path folder = FreshFolder("same");
    std::filesystem::copy_file(Sample("minimal.xps"), folder / "a.xps");
    const Ended ended = RunProgram(RunArguments({Text(folder / "a.xps"), "--out-dir", Text(folder)}));
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ("filterhost: the output would replace the input " + Text(folder / "a.xps") + "\n", ended.error);
}

TEST(FilterHost, AnOutputThatCannotBeWrittenGivesStatus2) {
    const std::string output = Text(FreshFolder("unwritable") / "missing" / "out.xps");
    const Ended ended = RunProgram(RunArguments({Text(Sample("minimal.xps")), "-o", output, "--quiet"}));
    EXPECT_EQ(2U, ended.status);
    EXPECT_TRUE(ended.error.starts_with("filterhost: " + Text(Sample("minimal.xps")) +
                                        ": the output cannot be written: "))
        << ended.error;
}

TEST(FilterHost, WhatCannotWaitForTheOutputGivesStatus2AndNoOutput) {
    const Path folder = FreshFolder("no-temporary");
    const std::vector<std::string> arguments =
        RunArguments({Text(Sample("minimal.xps")), "-o", Text(folder / "o.xps"), "--quiet"});
    {
        const tests::TemporaryPlace place(folder / "nowhere");
        const Ended ended = RunProgram(arguments, "rewrite-long");
        EXPECT_EQ(2U, ended.status);
        EXPECT_TRUE(ended.error.starts_with(
            "filterhost: " + Text(Sample("minimal.xps")) +
            ": the output cannot be written: there is no folder for temporary files: "))
            << ended.error;
        EXPECT_FALSE(std::filesystem::exists(folder / "o.xps"));
    }
    std::filesystem::create_directories(folder / "somewhere");
    const tests::TemporaryPlace place(folder / "somewhere");
    const Ended ended = RunProgram(arguments, "rewrite-long");
    EXPECT_EQ(0U, ended.status) << ended.error;
    EXPECT_TRUE(std::filesystem::exists(folder / "o.xps"));
    EXPECT_TRUE(std::filesystem::is_empty(folder / "somewhere"));
}

TEST(FilterHost, AnswersVersionAndHelp) {
    const Ended version = RunProgram({"--version"});
    EXPECT_EQ(0U, version.status);
    EXPECT_EQ("filterhost 1.0.0\n", version.out);
    const Ended help = RunProgram({"run", "--help"});
    EXPECT_EQ(0U, help.status);
    EXPECT_NE(std::string::npos, help.out.find("--cancel-at N"));
}

TEST(FilterHost, InspectsSeveralDocumentsAndReportsTheUnreadable) {
    const Ended ended = RunProgram({"inspect", Text(Sample("minimal.xps")), "nowhere.xps"});
    EXPECT_EQ(3U, ended.status);
    EXPECT_TRUE(
        ended.out.starts_with(Text(Sample("minimal.xps")) + ":\nXPS document, 1 fixed document, 1 page\n"))
        << ended.out;
    EXPECT_TRUE(ended.error.starts_with("filterhost: nowhere.xps: ")) << ended.error;
}

TEST(FilterHost, TheSystemsTicketProviderCanBeUsed) {
    const Path output = FreshFolder("system") / "out.xps";
    const Ended ended = RunProgram(RunArguments(
        {Text(Sample("minimal.xps")), "-o", Text(output), "--provider", "system", "--printer", "Nobody's"}));
    EXPECT_EQ(0U, ended.status) << ended.error;
    EXPECT_EQ(std::string::npos, ended.out.find("print ticket provider")) << ended.out;
    EXPECT_TRUE(std::filesystem::exists(output));
}

TEST(FilterHost, TheUsersTicketMayComeFromAFile) {
    const Path folder = FreshFolder("ticket");
    const Ended ended = RunProgram(RunArguments({Text(Sample("minimal.xps")), "-o", Text(folder / "o.xps"),
                                                 "--user-ticket", Text(folder / "none.xml")}));
    EXPECT_EQ(2U, ended.status);
    EXPECT_TRUE(ended.error.starts_with("filterhost: --user-ticket: ")) << ended.error;
    const Ended given =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), "-o", Text(folder / "o.xps"), "--user-ticket",
                                 Text(ProgramFolder() / "devices" / "longedge" / "default-ticket.xml"),
                                 "--json", Text(folder / "r.json")}));
    EXPECT_EQ(0U, given.status);
    const Json run = ReportedInputs(folder / "r.json")[0];
    EXPECT_EQ(Json(FileBytes(ProgramFolder() / "devices" / "longedge" / "default-ticket.xml")),
              run["texts"][run["user_ticket"].get<std::size_t>()]);
}

TEST(FilterHost, AnUnknownDeviceGivesStatus2AndTheNamesOfTheModels) {
    const Ended ended =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), "-o", "o.xps", "--device", "typewriter"}));
    EXPECT_EQ(2U, ended.status);
    EXPECT_TRUE(ended.error.starts_with(
        "filterhost: --device: there is no device model \"typewriter\"; the models here are "))
        << ended.error;
    EXPECT_NE(std::string::npos, ended.error.find("simprinter"));
}

}  // namespace
}  // namespace devkit::filterhost
