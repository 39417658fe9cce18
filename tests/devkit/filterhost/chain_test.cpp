#include <gtest/gtest.h>

#include <fstream>

#include <nlohmann/json.hpp>

#include "devkit/filterhost/files.h"
#include "devkit/filterhost/program.h"

// Chains of filters, filters of streams, and the entries of the property bags, by the command line.

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;
using Path = std::filesystem::path;
using Arguments = std::vector<std::string>;

constexpr const char* kParts = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D10}";
constexpr const char* kStream = "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D12}";

std::string Filter() { return Text(ProgramFolder() / "testfilter.dll"); }

// Runs minimal.xps through filters of the test DLL with these classes and, for a stream filter, kinds.
Ended RunChain(const Arguments& classes, Arguments more, const char* mode = "") {
    Arguments arguments{"run", Text(Sample("minimal.xps"))};
    for (const std::string& clsid : classes) {
        const char* const kind = clsid == kStream ? "stream" : "xps";
        arguments.insert(arguments.end(),
                         {"--filter", Filter(), "--clsid", clsid, "--input", kind, "--output", kind});
    }
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunProgram(arguments, mode);
}

std::string Complaint(const std::string& text) {
    return "filterhost: " + Text(Sample("minimal.xps")) + ": " + text + "\n";
}

TEST(Chain, SeveralFiltersPassTheDocumentOnInTheirOrder) {
    const Path output = FreshFolder("chain") / "out.xps";
    const Ended ended = RunChain({kParts, kParts}, {"-o", Text(output)});
    EXPECT_EQ(0U, ended.status) << ended.error;
    EXPECT_EQ("", ended.error);
    EXPECT_EQ(FileBytes(Sample("minimal.xps")), FileBytes(output));
    EXPECT_TRUE(ended.out.starts_with(Text(Sample("minimal.xps")) + " -> " + Text(output) +
                                      ": 4 parts, 1 page, done, 0x00000000 S_OK\n"))
        << ended.out;
}

TEST(Chain, AFilterOfStreamsReadsAndWritesTheBytes) {
    const Path output = FreshFolder("stream") / "out.xps";
    const Ended ended = RunChain({kStream}, {"-o", Text(output)});
    EXPECT_EQ(0U, ended.status) << ended.error;
    EXPECT_EQ(FileBytes(Sample("minimal.xps")), FileBytes(output));
    const std::string size = std::to_string(FileBytes(output).size());
    EXPECT_TRUE(ended.out.starts_with(Text(Sample("minimal.xps")) + " -> " + Text(output) + ": " + size +
                                      " bytes, done, 0x00000000 S_OK\n"))
        << ended.out;
}

TEST(Chain, FiltersOfPartsAndOfStreamsMayBeMixed) {
    for (const Arguments& classes :
         {Arguments{kParts, kStream}, {kStream, kParts}, {kParts, kStream, kParts}}) {
        const Path output = FreshFolder("mixed") / "out.xps";
        const Ended ended = RunChain(classes, {"-o", Text(output)});
        EXPECT_EQ(0U, ended.status) << ended.error;
        const Ended tree = RunProgram({"inspect", Text(output)});
        EXPECT_EQ(0U, tree.status) << tree.error;
        EXPECT_NE(std::string::npos, tree.out.find("/p.fpage")) << tree.out;
    }
}

TEST(Chain, AFailureNamesItsFilter) {
    const Ended ended = RunChain({kParts, kStream}, {"--no-output", "--quiet"}, "stream:fail");
    EXPECT_EQ(1U, ended.status);
    EXPECT_EQ(Complaint("2 (testfilter.dll) failed with 0x80004004 E_ABORT"), ended.error);
}

TEST(Chain, ABreachNamesItsFilter) {
    const Ended ended = RunChain({kParts, kStream}, {"--no-output", "--quiet"}, "close-twice");
    EXPECT_EQ(4U, ended.status);
    EXPECT_EQ(Complaint("breach: 1 (testfilter.dll): CloseSender was called twice"), ended.error);
}

TEST(Chain, AStreamThatIsNotClosedIsABreach) {
    const Ended ended = RunChain({kStream}, {"--no-output", "--quiet"}, "stream:close-twice");
    EXPECT_EQ(4U, ended.status);
    EXPECT_EQ(Complaint("breach: the write stream of the output was closed twice"), ended.error);
}

TEST(Chain, ComesFromADriversPipelineConfiguration) {
    const Path folder = FreshFolder("config");
    std::filesystem::copy_file(ProgramFolder() / "testfilter.dll", folder / "driver.dll");
    const auto filter = [](const std::string& clsid, const char* input, const char* output) {
        return "<Filter dll=\"driver.dll\" clsid=\"" + clsid + "\" name=\"F" + clsid.substr(36, 1) +
               "\"><Input guid=\"" + input + "\"/><Output guid=\"" + output + "\"/></Filter>";
    };
    std::ofstream(folder / "a-pipelineconfig.xml")
        << "<Filters>"
        << filter(kParts, "{b8cf8530-5562-47c4-ab67-b1f69ecf961e}", "{4368d8a2-4181-4a9f-b295-3d9a38bb9ba0}")
        << filter(kStream, "{4d47a67c-66cc-4430-850e-daf466fe5bc4}", "{65bb7f1b-371e-4571-8ac7-912f510c1a38}")
        << "</Filters>";
    const Ended ended = RunProgram({"run", Text(Sample("minimal.xps")), "-o", Text(folder / "out.xps"),
                                    "--quiet", "--pipeline-config", Text(folder / "a-pipelineconfig.xml")},
                                   "close-twice");
    EXPECT_EQ(4U, ended.status);
    EXPECT_EQ(Complaint("breach: F0: CloseSender was called twice"), ended.error);
    EXPECT_EQ(0U, RunProgram({"inspect", Text(folder / "out.xps")}).status);
}

TEST(Chain, AConfigurationThatIsNoneOrNamesAMissingDllIsWrongUsage) {
    const Path folder = FreshFolder("noconfig");
    std::ofstream(folder / "c.xml") << "<a/>";
    const auto run = [&] {
        return RunProgram(
            {"run", Text(Sample("minimal.xps")), "--no-output", "--pipeline-config", Text(folder / "c.xml")});
    };
    Ended ended = run();
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ("filterhost: --pipeline-config: is no pipeline configuration, " + Text(folder / "c.xml") + "\n",
              ended.error);
    std::ofstream(folder / "c.xml") << "<Filters><Filter dll=\"no.dll\" clsid=\"" << kParts
                                    << "\"/></Filters>";
    ended = run();
    EXPECT_EQ(2U, ended.status);
    EXPECT_EQ("filterhost: --pipeline-config: there is no " + Text(folder / "no.dll") + "\n", ended.error);
}

TEST(Properties, OfTheDriverReachTheFilter) {
    const Ended ended = RunProgram(RunArguments({Text(Sample("minimal.xps")), "--no-output", "--quiet",
                                                 "--driver-property", "TestFilterMode=string:close-twice"}));
    EXPECT_EQ(4U, ended.status);
    EXPECT_EQ(Complaint("breach: CloseSender was called twice"), ended.error);
}

TEST(Properties, OfThePipelineReachTheFilterAndReplaceTheKits) {
    const Path folder = FreshFolder("properties");
    const auto run = [&](const char* name, Arguments more) {
        Arguments arguments{Text(Sample("minimal.xps")),
                            "--no-output",
                            "--quiet",
                            "--json",
                            Text(folder / "r.json"),
                            "--driver-property",
                            std::string("TestFilterMode=string:want-property ") + name};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(RunArguments(arguments)).status;
    };
    EXPECT_EQ(1U, run("Own", {}));
    EXPECT_EQ((Json{"property Own"}), ReportedInputs(folder / "r.json")[0]["missing"]);
    EXPECT_EQ(0U, run("Own", {"--property", "Own=string:a=b:c"}));
    EXPECT_EQ(0U, run("Own", {"--property", "Own=int:-3"}));
    for (const char* const name : {"PrinterName", "PrintJobId", "DriverMultiContentType"})
        EXPECT_EQ(0U, run(name, {})) << name;
}

// The status of a run of a filter that expects the text in the property.
unsigned long ExpectProperty(const std::string& expected, Arguments more) {
    Arguments arguments{"--quiet", "--driver-property", "TestFilterMode=string:expect-property " + expected};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunProgram(RunArguments(arguments)).status;
}

TEST(Properties, TheQueuesBagHasWhatTheCommandLineSays) {
    const std::string input = Text(Sample("minimal.xps"));
    EXPECT_EQ(0U, ExpectProperty("QueuePropertyBag=a=b",
                                 {input, "--no-output", "--queue-property", "Text=string:a=b"}));
    EXPECT_EQ(1U, ExpectProperty("QueuePropertyBag=", {input, "--no-output"}));
}

TEST(Properties, TheOutputsNameIsThereWhenThereIsOne) {
    const Path output = FreshFolder("outputname") / "named.xps";
    const std::string input = Text(Sample("minimal.xps"));
    EXPECT_EQ(0U, ExpectProperty("PrintOutputFileName=" + Text(output), {input, "-o", Text(output)}));
    EXPECT_EQ(1U, ExpectProperty("PrintOutputFileName=", {input, "--no-output"}));
}

TEST(Properties, TheJobsTicketIsTheDocumentsOrTheUsers) {
    const Path ticket = FreshFolder("jobticket") / "user.xml";
    std::ofstream(ticket)
        << "<psf:PrintTicket version=\"1\" xmlns:psf=\"http://schemas.microsoft.com/windows/"
           "2003/08/printing/printschemaframework\"><!--user's--></psf:PrintTicket>";
    const auto run = [&](const char* sample, const char* text) {
        return ExpectProperty(std::string("JobPrintTicket=") + text,
                              {Text(Sample(sample)), "--no-output", "--user-ticket", Text(ticket)});
    };
    EXPECT_EQ(0U, run("minimal.xps", "<!--user's-->"));
    EXPECT_EQ(1U, run("sample.xps", "<!--user's-->"));
    EXPECT_EQ(0U, run("sample.xps", "JobCopiesAllDocuments"));
}

TEST(Properties, TheDevicesCapabilitiesAreTheFilesBytes) {
    const Path file = FreshFolder("capabilities") / "device.xml";
    std::ofstream(file) << "<PrintDeviceCapabilities/>";
    const std::string input = Text(Sample("minimal.xps"));
    EXPECT_EQ(0U, ExpectProperty("PrintDeviceCapabilities=<PrintDeviceCapabilities/>",
                                 {input, "--no-output", "--device-capabilities", Text(file)}));
    EXPECT_EQ(1U, ExpectProperty("PrintDeviceCapabilities=", {input, "--no-output"}));
    const Ended missing =
        RunProgram(RunArguments({input, "--no-output", "--device-capabilities", Text(file) + ".none"}));
    EXPECT_EQ(2U, missing.status);
    EXPECT_TRUE(missing.error.starts_with("filterhost: --device-capabilities: ")) << missing.error;
}

TEST(Properties, ThatAreNoneAreWrongUsage) {
    const auto error = [](const char* option, const char* text) {
        return RunProgram(RunArguments({Text(Sample("minimal.xps")), "--no-output", option, text})).error;
    };
    EXPECT_EQ("filterhost: --property: a is not NAME=TYPE:VALUE\n", error("--property", "a"));
    EXPECT_EQ("filterhost: --driver-property: a=real: is none of the types bool, int, uint, string\n",
              error("--driver-property", "a=real:1"));
    EXPECT_EQ("filterhost: --no-driver-properties excludes --driver-property\n",
              RunProgram(RunArguments({"a.xps", "--no-output", "--driver-property", "a=int:1",
                                       "--no-driver-properties"}))
                  .error);
}

TEST(PipelineSwitches, ThatMadeNoDifferenceAreWrongUsage) {
    const auto error = [](const char* text) {
        return RunProgram(
                   RunArguments({Text(Sample("minimal.xps")), "--no-output", "--quiet", "--pipeline", text}))
            .error;
    };
    // The test filter reads and writes nothing, and is not cancelled; the page has no ticket that it asks
    // for.
    for (const char* const text : {"short-reads=7", "short-writes=7", "end-flag=alone", "missing-ticket=null",
                                   "after-cancel=end", "cancel=concurrent"}) {
        EXPECT_EQ(Complaint(std::string("--pipeline ") + text + " never struck"), error(text));
    }
    for (const char* const text : {"reader=xps", "writer=xps", "ambiguous-document=off", "slow-part=1",
                                   "apartment=single", "last-release=other-thread"}) {
        EXPECT_EQ("", error(text)) << text;
    }
}

TEST(PipelineSwitches, ThatStruckAreTaken) {
    const auto status = [](const char* mode, Arguments more) {
        Arguments arguments{Text(Sample("minimal.xps")), "--no-output", "--quiet"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunProgram(RunArguments(arguments), mode).status;
    };
    EXPECT_EQ(0U, status("rewrite", {"--pipeline", "short-reads=7", "--pipeline", "short-writes=7",
                                     "--pipeline", "end-flag=alone"}));
    // What the filter takes for the end of the document is none of its failures.
    EXPECT_EQ(0U, status("", {"--cancel-at", "3", "--pipeline", "after-cancel=end", "--pipeline",
                              "cancel=concurrent"}));
}

}  // namespace
}  // namespace devkit::filterhost
