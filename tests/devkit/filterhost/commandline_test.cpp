#include "devkit/filterhost/commandline.h"

#include <gtest/gtest.h>

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "thrown.h"

namespace devkit::filterhost {
namespace {

using Arguments = std::vector<std::string>;

RunSettings SettingsOf(Arguments more) {
    Arguments arguments{"run", "in.xps"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return std::get<RunSettings>(ParseCommandLine(arguments));
}

// The one line of a refusal; empty when there is none.
std::string Refusal(Arguments arguments) {
    return tests::MessageOf<UsageError>([&] { static_cast<void>(ParseCommandLine(std::move(arguments))); });
}

std::filesystem::path Absolute(const char* path) { return std::filesystem::absolute(path); }

std::vector<std::filesystem::path> InputsOf(const RunSettings& settings) {
    std::vector<std::filesystem::path> inputs;
    for (const Job& job : settings.jobs) inputs.push_back(job.input);
    return inputs;
}

TEST(CommandLine, HasDocumentedDefaults) {
    const RunSettings settings = SettingsOf({"-o", "out.xps"});
    ASSERT_EQ(1U, settings.jobs.size());
    EXPECT_EQ("in.xps", settings.jobs[0].inputName);
    EXPECT_EQ("out.xps", settings.jobs[0].outputName);
    EXPECT_EQ(std::nullopt, settings.outputFolder);
    EXPECT_EQ(std::nullopt, settings.json);
    EXPECT_EQ(std::nullopt, settings.junit);
    EXPECT_EQ(std::nullopt, settings.trace);
    EXPECT_FALSE(settings.host.trace);
    EXPECT_FALSE(settings.strict);
    EXPECT_FALSE(settings.host.recordTickets);
    EXPECT_FALSE(settings.quiet);
    EXPECT_FALSE(settings.verbose);
    EXPECT_FALSE(settings.inProcess);
    EXPECT_EQ(0U, settings.parallel);
    EXPECT_EQ(std::chrono::seconds(300), settings.timeout);
    const HostSettings& host = settings.host;
    ASSERT_EQ(1U, host.filters.size());
    EXPECT_EQ(ProgramFolder() / "pagevalidatefilter.dll", host.filters[0].dll);
    EXPECT_TRUE(IsEqualCLSID(host.filters[0].clsid, kDefaultFilterClass));
    EXPECT_EQ(pipeline::DataKind::Xps, host.filters[0].input);
    EXPECT_EQ(pipeline::DataKind::Xps, host.filters[0].output);
    EXPECT_EQ(std::nullopt, host.pipelineConfig);
    EXPECT_EQ(Arguments{}, host.properties);
    EXPECT_EQ(Arguments{}, host.driverValues);
    EXPECT_EQ("simprinter", host.device);
    EXPECT_EQ(std::nullopt, host.printer);
    EXPECT_EQ(std::nullopt, host.userTicket);
    EXPECT_EQ("krk", host.nsPrefix);
    EXPECT_EQ(std::nullopt, host.teskType);
    EXPECT_TRUE(host.driverProperties);
    EXPECT_EQ(Arguments{}, host.providerSwitches);
    EXPECT_FALSE(host.systemProvider);
    EXPECT_EQ(0U, host.cancelAt);
}

TEST(CommandLine, TakesEveryOption) {
    const RunSettings settings = SettingsOf({"second.xps",
                                             "--out-dir",
                                             "out",
                                             "--filter",
                                             "f.dll",
                                             "--clsid",
                                             "{CDB62FC0-8BED-434E-86FB-A2CAE55F19EA}",
                                             "--device",
                                             "longedge",
                                             "--printer",
                                             "Kontor 3",
                                             "--user-ticket",
                                             "t.xml",
                                             "--ns-prefix",
                                             "abc",
                                             "--tesk-type",
                                             "-2",
                                             "--provider",
                                             "private=strict",
                                             "--provider",
                                             "fault=merge-fail@2:page",
                                             "--json",
                                             "r.json",
                                             "--quiet",
                                             "--cancel-at",
                                             "7",
                                             "--no-driver-properties",
                                             "--timeout",
                                             "20",
                                             "-j",
                                             "3",
                                             "--in-process",
                                             "--pipeline",
                                             "short-reads=3",
                                             "--pipeline",
                                             "fail=GetXpsPart@2=E_FAIL"});
    EXPECT_EQ((std::vector{Absolute("in.xps"), Absolute("second.xps")}), InputsOf(settings));
    EXPECT_EQ(Absolute("out"), settings.outputFolder);
    EXPECT_EQ(Absolute("out/second.xps"), settings.jobs.at(1).output->lexically_normal());
    EXPECT_EQ(Absolute("r.json"), settings.json);
    EXPECT_TRUE(settings.quiet);
    EXPECT_TRUE(settings.inProcess);
    EXPECT_EQ(3U, settings.parallel);
    EXPECT_EQ(std::chrono::seconds(20), settings.timeout);
    const HostSettings& host = settings.host;
    ASSERT_EQ(1U, host.filters.size());
    EXPECT_EQ(Absolute("f.dll"), host.filters[0].dll);
    EXPECT_EQ(0xCDB62FC0, host.filters[0].clsid.Data1);
    EXPECT_EQ("longedge", host.device);
    EXPECT_EQ("Kontor 3", host.printer);
    EXPECT_EQ(Absolute("t.xml"), host.userTicket);
    EXPECT_EQ("abc", host.nsPrefix);
    EXPECT_EQ(-2, host.teskType);
    EXPECT_EQ((Arguments{"private=strict", "fault=merge-fail@2:page"}), host.providerSwitches);
    EXPECT_EQ(7U, host.cancelAt);
    EXPECT_EQ((Arguments{"short-reads=3", "fail=GetXpsPart@2=E_FAIL"}), host.pipelineSwitches);
    EXPECT_FALSE(host.driverProperties);
}

TEST(CommandLine, ARecordOfTheTicketsIsForTheReportOfPrograms) {
    const RunSettings programs = SettingsOf({"--no-output", "--json", "r.json", "--strict"});
    EXPECT_TRUE(programs.host.recordTickets);
    EXPECT_TRUE(programs.strict);
    const RunSettings servers = SettingsOf({"--no-output", "--junit", "r.xml"});
    EXPECT_FALSE(servers.host.recordTickets);
    EXPECT_EQ(Absolute("r.xml"), servers.junit);
    const RunSettings traced = SettingsOf({"--no-output", "--trace", "t.json"});
    EXPECT_TRUE(traced.host.trace);
    EXPECT_EQ(Absolute("t.json"), traced.trace);
}

TEST(CommandLine, TakesTheOtherCommands) {
    const auto diff = std::get<DiffSettings>(ParseCommandLine({"diff", "a.xml", "b.xml"}));
    EXPECT_EQ(Absolute("a.xml"), diff.before);
    EXPECT_EQ(Absolute("b.xml"), diff.after);
    const auto shown = std::get<DeviceSettings>(ParseCommandLine({"device", "show", "longedge"}));
    EXPECT_EQ(DeviceSettings::Action::Show, shown.action);
    EXPECT_EQ("longedge", shown.device);
    EXPECT_EQ(DeviceSettings::Action::Check,
              std::get<DeviceSettings>(ParseCommandLine({"device", "check", "x"})).action);
    EXPECT_THROW(static_cast<void>(ParseCommandLine({"device", "show"})), UsageError);
    EXPECT_THROW(static_cast<void>(ParseCommandLine({"diff", "a.xml"})), UsageError);
    const auto help = std::get<Answer>(ParseCommandLine({"device", "check", "--help"}));
    EXPECT_NE(std::string::npos, help.text.find("filterhost device check")) << help.text;
}

TEST(CommandLine, TakesTheSystemsProvider) {
    EXPECT_TRUE(SettingsOf({"-o", "out.xps", "--provider", "system"}).host.systemProvider);
}

TEST(CommandLine, AProviderSwitchTakesOneValueAndLeavesTheInputsAlone) {
    const RunSettings settings =
        SettingsOf({"--provider", "order=reversed", "second.xps", "--out-dir", "out"});
    EXPECT_EQ(Arguments{"order=reversed"}, settings.host.providerSwitches);
    EXPECT_EQ(2U, settings.jobs.size());
}

TEST(CommandLine, AnOutputCanBeDoneWithout) {
    const RunSettings settings = SettingsOf({"second.xps", "--no-output"});
    ASSERT_EQ(2U, settings.jobs.size());
    EXPECT_EQ(std::nullopt, settings.jobs[0].output);
    EXPECT_EQ(std::nullopt, settings.jobs[1].output);
}

// A filter may change the current folder.
TEST(CommandLine, PathsAreMadeAbsolute) {
    const RunSettings settings = SettingsOf({"-o", "out.xps", "--json", "r.json"});
    EXPECT_TRUE(settings.jobs[0].input.is_absolute());
    EXPECT_TRUE(settings.jobs[0].output->is_absolute());
    EXPECT_TRUE(settings.json->is_absolute());
}

TEST(CommandLine, PathsMayStartWithASlashOrHoldAnyLetter) {
    const RunSettings settings = SettingsOf({"/tmp/b.xps", "\xE5\x8D\xB0.xps", "--out-dir", "/tmp/out"});
    EXPECT_EQ("/tmp/b.xps", settings.jobs[1].inputName);
    EXPECT_EQ(Absolute("/tmp/b.xps"), settings.jobs[1].input);
    EXPECT_EQ(L"\u5370.xps", settings.jobs[2].input.filename());
    EXPECT_EQ(Absolute("/tmp/out"), settings.outputFolder);
}

TEST(Order, GoesThroughItsText) {
    Order order;
    order.host = SettingsOf({"-o",
                             "out",
                             "--filter",
                             "\xE5\x8D\xB0.dll",
                             "--clsid",
                             "{CDB62FC0-8BED-434E-86FB-A2CAE55F19EA}",
                             "--printer",
                             "P",
                             "--user-ticket",
                             "t",
                             "--ns-prefix",
                             "n\n",
                             "--tesk-type",
                             "-2",
                             "--provider",
                             "a=b",
                             "--cancel-at",
                             "7",
                             "--no-driver-properties",
                             "--device",
                             "d"})
                     .host;
    order.job = SettingsOf({"-o", "\xE5\x8D\xB0"}).jobs[0];
    const std::string text = WriteOrder(order);
    EXPECT_EQ(std::string::npos, text.find('\n'));
    const Order read = ReadOrder(text);
    EXPECT_EQ(text, WriteOrder(read));
    ASSERT_EQ(1U, read.host.filters.size());
    EXPECT_EQ(order.host.filters[0].dll, read.host.filters[0].dll);
    EXPECT_TRUE(IsEqualCLSID(order.host.filters[0].clsid, read.host.filters[0].clsid));
    EXPECT_EQ(-2, read.host.teskType);
    EXPECT_EQ("n\n", read.host.nsPrefix);
    EXPECT_EQ(order.job.output, read.job.output);
    order.job.output.reset();
    EXPECT_EQ(std::nullopt, ReadOrder(WriteOrder(order)).job.output);
}

TEST(CommandLine, RefusesWhatMakesNoSense) {
    EXPECT_EQ("A subcommand is required", Refusal({}));
    EXPECT_EQ("INPUT is required", Refusal({"run"}));
    EXPECT_EQ("INPUT is required", Refusal({"inspect"}));
    EXPECT_EQ("one of -o, --out-dir and --no-output is required", Refusal({"run", "a.xps"}));
    EXPECT_EQ("-o excludes --out-dir", Refusal({"run", "a.xps", "-o", "b", "--out-dir", "c"}));
    EXPECT_EQ("-o is for one INPUT; use --out-dir for several",
              Refusal({"run", "a.xps", "b.xps", "-o", "c"}));
    EXPECT_EQ("--out-dir: two inputs are named A.XPS",
              Refusal({"run", "x/a.xps", "y/A.XPS", "--out-dir", "c"}));
    EXPECT_EQ("--clsid: \"Excel.Application\" is not of the form {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}",
              Refusal({"run", "a.xps", "-o", "b", "--clsid", "Excel.Application"}));
    EXPECT_EQ("--provider: \"strict\" is neither KEY=VALUE nor system",
              Refusal({"run", "a.xps", "-o", "b", "--provider", "strict"}));
    EXPECT_EQ("--provider: the system's print ticket provider has no switches",
              Refusal({"run", "a.xps", "-o", "b", "--provider", "system", "--provider", "a=b"}));
    EXPECT_TRUE(Refusal({"run", "a.xps", "-o", "b", "--pipeline", "colour=red"}).starts_with("--pipeline: "));
    EXPECT_EQ("The following argument was not expected: --colour",
              Refusal({"run", "a.xps", "-o", "b", "--colour"}));
    EXPECT_FALSE(Refusal({"run", "a.xps", "-o", "b", "--cancel-at", "-1"}).empty());
    EXPECT_FALSE(Refusal({"run", "a.xps", "-o", "b", "--timeout", "0"}).empty());
    EXPECT_FALSE(Refusal({"run", "a.xps", "-o", "b", "-j", "0"}).empty());
    EXPECT_FALSE(Refusal({"run", "a.xps", "-o", "b", "--quiet", "--verbose"}).empty());
    EXPECT_FALSE(Refusal({"run", "a.xps", "-o", "b", "--tesk-type", "two"}).empty());
}

TEST(CommandLine, AnswersHelpForEachCommand) {
    EXPECT_EQ("filterhost 1.0.0\n", std::get<Answer>(ParseCommandLine({"--version"})).text);
    EXPECT_NE(std::string::npos,
              std::get<Answer>(ParseCommandLine({"--help"})).text.find("Exit status: 0 done"));
    EXPECT_NE(
        std::string::npos,
        std::get<Answer>(ParseCommandLine({"run", "--help"})).text.find("filterhost run [OPTIONS] INPUT..."));
    EXPECT_NE(std::string::npos, std::get<Answer>(ParseCommandLine({"inspect", "--help"}))
                                     .text.find("filterhost inspect [OPTIONS] INPUT..."));
}

}  // namespace
}  // namespace devkit::filterhost
