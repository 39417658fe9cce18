#include "devkit/filterhost/commandline.h"

#include <gtest/gtest.h>

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"

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
    try {
        static_cast<void>(ParseCommandLine(std::move(arguments)));
        return {};
    } catch (const UsageError& error) {
        return error.what();
    }
}

TEST(CommandLine, HasDocumentedDefaults) {
    const RunSettings settings = SettingsOf({"-o", "out.xps"});
    EXPECT_EQ(std::vector<std::filesystem::path>{"in.xps"}, settings.inputs);
    EXPECT_EQ("out.xps", settings.output);
    EXPECT_EQ(std::nullopt, settings.outputFolder);
    EXPECT_EQ(ProgramFolder() / "pagevalidatefilter.dll", settings.filter);
    EXPECT_TRUE(IsEqualCLSID(settings.filterClass, kDefaultFilterClass));
    EXPECT_EQ("simprinter", settings.device);
    EXPECT_EQ(std::nullopt, settings.printer);
    EXPECT_EQ(std::nullopt, settings.userTicket);
    EXPECT_EQ("krk", settings.nsPrefix);
    EXPECT_EQ(std::nullopt, settings.teskType);
    EXPECT_TRUE(settings.driverProperties);
    EXPECT_EQ(Arguments{}, settings.providerSwitches);
    EXPECT_FALSE(settings.systemProvider);
    EXPECT_EQ(std::nullopt, settings.json);
    EXPECT_FALSE(settings.quiet);
    EXPECT_EQ(0U, settings.cancelAt);
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
                                             "--no-driver-properties"});
    EXPECT_EQ((std::vector<std::filesystem::path>{"in.xps", "second.xps"}), settings.inputs);
    EXPECT_EQ("out", settings.outputFolder);
    EXPECT_EQ("f.dll", settings.filter);
    EXPECT_EQ(0xCDB62FC0, settings.filterClass.Data1);
    EXPECT_EQ("longedge", settings.device);
    EXPECT_EQ("Kontor 3", settings.printer);
    EXPECT_EQ("t.xml", settings.userTicket);
    EXPECT_EQ("abc", settings.nsPrefix);
    EXPECT_EQ(-2, settings.teskType);
    EXPECT_EQ((Arguments{"private=strict", "fault=merge-fail@2:page"}), settings.providerSwitches);
    EXPECT_EQ("r.json", settings.json);
    EXPECT_TRUE(settings.quiet);
    EXPECT_EQ(7U, settings.cancelAt);
    EXPECT_FALSE(settings.driverProperties);
}

TEST(CommandLine, TakesTheSystemsProvider) {
    EXPECT_TRUE(SettingsOf({"-o", "out.xps", "--provider", "system"}).systemProvider);
}

TEST(CommandLine, AProviderSwitchTakesOneValueAndLeavesTheInputsAlone) {
    const RunSettings settings =
        SettingsOf({"--provider", "order=reversed", "second.xps", "--out-dir", "out"});
    EXPECT_EQ(Arguments{"order=reversed"}, settings.providerSwitches);
    EXPECT_EQ(2U, settings.inputs.size());
}

TEST(CommandLine, PathsMayStartWithASlashOrHoldAnyLetter) {
    const RunSettings settings = SettingsOf({"/tmp/b.xps", "\xE5\x8D\xB0.xps", "--out-dir", "/tmp/out"});
    EXPECT_EQ("/tmp/b.xps", settings.inputs[1]);
    EXPECT_EQ(L"\u5370.xps", settings.inputs[2]);
    EXPECT_EQ("/tmp/out", settings.outputFolder);
}

TEST(CommandLine, RefusesWhatMakesNoSense) {
    EXPECT_EQ("A subcommand is required", Refusal({}));
    EXPECT_EQ("INPUT is required", Refusal({"run"}));
    EXPECT_EQ("INPUT is required", Refusal({"inspect"}));
    EXPECT_EQ("one of -o and --out-dir is required", Refusal({"run", "a.xps"}));
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
    EXPECT_EQ("The following argument was not expected: --colour",
              Refusal({"run", "a.xps", "-o", "b", "--colour"}));
    EXPECT_FALSE(Refusal({"run", "a.xps", "-o", "b", "--cancel-at", "-1"}).empty());
    EXPECT_FALSE(Refusal({"run", "a.xps", "-o", "b", "--tesk-type", "two"}).empty());
}

TEST(CommandLine, AnswersHelpForEachCommand) {
    EXPECT_EQ("filterhost 1.0.0\n", std::get<Answer>(ParseCommandLine({"--version"})).text);
    EXPECT_NE(std::get<Answer>(ParseCommandLine({"--help"})).text.find("Exit status: 0 done"),
              std::string::npos);
    EXPECT_NE(
        std::get<Answer>(ParseCommandLine({"run", "--help"})).text.find("filterhost run [OPTIONS] INPUT..."),
        std::string::npos);
    EXPECT_NE(std::get<Answer>(ParseCommandLine({"inspect", "--help"}))
                  .text.find("filterhost inspect [OPTIONS] INPUT..."),
              std::string::npos);
}

}  // namespace
}  // namespace devkit::filterhost
