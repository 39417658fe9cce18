#include "devkit/filterhost/commandline.h"

#include <gtest/gtest.h>

#include "devkit/filterhost/programfolder.h"
#include "devkit/filterhost/usageerror.h"

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
    EXPECT_EQ(settings.inputs, std::vector<std::filesystem::path>{"in.xps"});
    EXPECT_EQ(settings.output, "out.xps");
    EXPECT_EQ(settings.outputFolder, std::nullopt);
    EXPECT_EQ(settings.filter, ProgramFolder() / "pagevalidatefilter.dll");
    EXPECT_TRUE(IsEqualCLSID(settings.filterClass, DefaultFilterClass));
    EXPECT_EQ(settings.device, "simprinter");
    EXPECT_EQ(settings.printer, std::nullopt);
    EXPECT_EQ(settings.userTicket, std::nullopt);
    EXPECT_EQ(settings.nsPrefix, "krk");
    EXPECT_EQ(settings.teskType, std::nullopt);
    EXPECT_TRUE(settings.driverProperties);
    EXPECT_EQ(settings.providerSwitches, Arguments{});
    EXPECT_FALSE(settings.systemProvider);
    EXPECT_EQ(settings.json, std::nullopt);
    EXPECT_FALSE(settings.quiet);
    EXPECT_EQ(settings.cancelAt, 0U);
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
    EXPECT_EQ(settings.inputs, (std::vector<std::filesystem::path>{"in.xps", "second.xps"}));
    EXPECT_EQ(settings.outputFolder, "out");
    EXPECT_EQ(settings.filter, "f.dll");
    EXPECT_EQ(settings.filterClass.Data1, 0xCDB62FC0);
    EXPECT_EQ(settings.device, "longedge");
    EXPECT_EQ(settings.printer, "Kontor 3");
    EXPECT_EQ(settings.userTicket, "t.xml");
    EXPECT_EQ(settings.nsPrefix, "abc");
    EXPECT_EQ(settings.teskType, -2);
    EXPECT_EQ(settings.providerSwitches, (Arguments{"private=strict", "fault=merge-fail@2:page"}));
    EXPECT_EQ(settings.json, "r.json");
    EXPECT_TRUE(settings.quiet);
    EXPECT_EQ(settings.cancelAt, 7U);
    EXPECT_FALSE(settings.driverProperties);
}

TEST(CommandLine, TakesTheSystemsProvider) {
    EXPECT_TRUE(SettingsOf({"-o", "out.xps", "--provider", "system"}).systemProvider);
}

TEST(CommandLine, AProviderSwitchTakesOneValueAndLeavesTheInputsAlone) {
    const RunSettings settings =
        SettingsOf({"--provider", "order=reversed", "second.xps", "--out-dir", "out"});
    EXPECT_EQ(settings.providerSwitches, Arguments{"order=reversed"});
    EXPECT_EQ(settings.inputs.size(), 2U);
}

TEST(CommandLine, PathsMayStartWithASlashOrHoldAnyLetter) {
    const RunSettings settings = SettingsOf({"/tmp/b.xps", "\xE5\x8D\xB0.xps", "--out-dir", "/tmp/out"});
    EXPECT_EQ(settings.inputs[1], "/tmp/b.xps");
    EXPECT_EQ(settings.inputs[2], L"\u5370.xps");
    EXPECT_EQ(settings.outputFolder, "/tmp/out");
}

TEST(CommandLine, RefusesWhatMakesNoSense) {
    EXPECT_EQ(Refusal({}), "A subcommand is required");
    EXPECT_EQ(Refusal({"run"}), "INPUT is required");
    EXPECT_EQ(Refusal({"inspect"}), "INPUT is required");
    EXPECT_EQ(Refusal({"run", "a.xps"}), "one of -o and --out-dir is required");
    EXPECT_EQ(Refusal({"run", "a.xps", "-o", "b", "--out-dir", "c"}), "-o excludes --out-dir");
    EXPECT_EQ(Refusal({"run", "a.xps", "b.xps", "-o", "c"}),
              "-o is for one INPUT; use --out-dir for several");
    EXPECT_EQ(Refusal({"run", "x/a.xps", "y/A.XPS", "--out-dir", "c"}),
              "--out-dir: two inputs are named A.XPS");
    EXPECT_EQ(Refusal({"run", "a.xps", "-o", "b", "--clsid", "Excel.Application"}),
              "--clsid: \"Excel.Application\" is not of the form {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}");
    EXPECT_EQ(Refusal({"run", "a.xps", "-o", "b", "--provider", "strict"}),
              "--provider: \"strict\" is neither KEY=VALUE nor system");
    EXPECT_EQ(Refusal({"run", "a.xps", "-o", "b", "--provider", "system", "--provider", "a=b"}),
              "--provider: the system's print ticket provider has no switches");
    EXPECT_EQ(Refusal({"run", "a.xps", "-o", "b", "--colour"}),
              "The following argument was not expected: --colour");
    EXPECT_FALSE(Refusal({"run", "a.xps", "-o", "b", "--cancel-at", "-1"}).empty());
    EXPECT_FALSE(Refusal({"run", "a.xps", "-o", "b", "--tesk-type", "two"}).empty());
}

TEST(CommandLine, AnswersHelpForEachCommand) {
    EXPECT_EQ(std::get<Answer>(ParseCommandLine({"--version"})).text, "filterhost 1.0.0\n");
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
