#include "devkit/filterhost/commandline.h"

#include <algorithm>
#include <set>
#include <utility>

#include <CLI/CLI.hpp>

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using Path = std::filesystem::path;

constexpr const char* kDescription =
    "Runs an XPS print filter over documents, without a printer or a spooler.\n"
    "\n"
    "Exit status: 0 done, 1 the filter failed, 2 wrong usage, 3 an input cannot be\n"
    "read as an XPS document, 4 the filter broke a rule of the pipeline. With\n"
    "several inputs the rest still run, and the highest status is returned.";

Path PathOf(const std::string& text) { return Path(platform::ToUtf16(text)); }

std::optional<Path> PathOf(const std::optional<std::string>& text) {
    return text ? std::optional(PathOf(*text)) : std::nullopt;
}

CLSID ClassOf(const std::string& text) {
    CLSID clsid{};
    if (FAILED(IIDFromString(platform::ToUtf16(text).c_str(), &clsid))) {
        throw UsageError("--clsid: \"" + text +
                         "\" is not of the form {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}");
    }
    return clsid;
}

// The texts as they come from the command line.
struct RawRun {
    std::vector<std::string> inputs;
    std::optional<std::string> output;
    std::optional<std::string> outputFolder;
    std::optional<std::string> filter;
    std::optional<std::string> filterClass;
    std::optional<std::string> userTicket;
    std::vector<std::string> provider;
    std::optional<std::string> json;
    bool noDriverProperties = false;
    RunSettings settings;
};

void DescribeRun(CLI::App& run, RawRun& raw) {
    const auto option = [&run](const char* name, auto& target, const char* type, const char* text) {
        return run.add_option(name, target, text)->type_name(type);
    };
    option("INPUT", raw.inputs, "", "XPS or OpenXPS documents")->required();
    auto* output = option("-o", raw.output, "OUTPUT", "the document that comes out, for one INPUT");
    option("--out-dir", raw.outputFolder, "DIR",
           "the folder for the documents that come out, under their names")
        ->excludes(output);
    option("--filter", raw.filter, "DLL", "the filter (default: pagevalidatefilter.dll beside this program)");
    option("--clsid", raw.filterClass, "{...}",
           "its class (default: {8A9F4692-E8BA-4533-B859-E56B1EA16586})");
    option("--device", raw.settings.device, "MODEL",
           "device model, a name in devices beside this program or a folder (default: simprinter)");
    option("--printer", raw.settings.printer, "NAME",
           "the printer's name (default: the first of the device model)");
    option("--user-ticket", raw.userTicket, "FILE",
           "the user's default print ticket (default: that of the device)");
    option("--ns-prefix", raw.settings.nsPrefix, "TEXT",
           "KoraNsPrefix of the driver property bag (default: krk)");
    option("--tesk-type", raw.settings.teskType, "N",
           "KoraTeskType of the driver property bag (default: absent)");
    run.add_flag("--no-driver-properties", raw.noDriverProperties, "no driver property bag at all");
    option("--provider", raw.provider, "KEY=VALUE|system",
           "a switch of the simulated print ticket provider, repeatable; or the system's own provider")
        ->take_all()
        ->type_size(1)
        ->allow_extra_args(false);
    option("--json", raw.json, "FILE", "a report for programs, one object an INPUT");
    run.add_flag("--quiet", raw.settings.quiet, "print problems only");
    option("--cancel-at", raw.settings.cancelAt, "N",
           "ShutdownOperation from another thread when part N (from 1) is asked for");
}

void TakeProvider(const std::vector<std::string>& values, RunSettings& settings) {
    for (const std::string& value : values) {
        if (value == "system") {
            settings.systemProvider = true;
        } else if (value.find('=') == std::string::npos) {
            throw UsageError("--provider: \"" + value + "\" is neither KEY=VALUE nor system");
        } else {
            settings.providerSwitches.push_back(value);
        }
    }
    if (settings.systemProvider && !settings.providerSwitches.empty()) {
        throw UsageError("--provider: the system's print ticket provider has no switches");
    }
}

void CheckOutputs(const RunSettings& settings) {
    if (!settings.output && !settings.outputFolder) throw UsageError("one of -o and --out-dir is required");
    if (settings.output && settings.inputs.size() > 1) {
        throw UsageError("-o is for one INPUT; use --out-dir for several");
    }
    if (!settings.outputFolder) return;
    std::set<std::wstring> names;
    for (const Path& input : settings.inputs) {
        std::wstring name = input.filename().wstring();
        CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
        if (!names.insert(name).second) {
            throw UsageError("--out-dir: two inputs are named " +
                             platform::ToUtf8(input.filename().wstring()));
        }
    }
}

RunSettings TakeRun(RawRun raw) {
    RunSettings settings = std::move(raw.settings);
    for (const std::string& input : raw.inputs) settings.inputs.push_back(PathOf(input));
    settings.output = PathOf(raw.output);
    settings.outputFolder = PathOf(raw.outputFolder);
    settings.filter = raw.filter ? PathOf(*raw.filter) : ProgramFolder() / "pagevalidatefilter.dll";
    if (raw.filterClass) settings.filterClass = ClassOf(*raw.filterClass);
    settings.userTicket = PathOf(raw.userTicket);
    settings.json = PathOf(raw.json);
    settings.driverProperties = !raw.noDriverProperties;
    TakeProvider(raw.provider, settings);
    CheckOutputs(settings);
    return settings;
}

// The first line of what went wrong, for an error of one line.
std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

}  // namespace

std::string VersionText() { return "filterhost 1.0.0"; }

Command ParseCommandLine(std::vector<std::string> arguments) {
    CLI::App app(kDescription, "filterhost");
    app.require_subcommand(1);
    // A path may start with a slash.
    app.allow_windows_style_options(false);
    app.set_version_flag("--version", VersionText());
    RawRun raw;
    CLI::App* run = app.add_subcommand("run", "run a filter over documents");
    DescribeRun(*run, raw);
    std::vector<std::string> inspected;
    CLI::App* inspect = app.add_subcommand("inspect", "show parts, page sizes, tickets and where they hang");
    inspect->add_option("INPUT", inspected, "XPS or OpenXPS documents")->required();
    // CLI11 takes the arguments from the end.
    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::CallForVersion&) {
        return Answer{VersionText() + "\n"};
    } catch (const CLI::CallForHelp&) {
        if (run->parsed()) return Answer{run->help(app.get_name())};
        return Answer{inspect->parsed() ? inspect->help(app.get_name()) : app.help()};
    } catch (const CLI::ParseError& error) {
        throw UsageError(FirstLine(error.what()));
    }
    if (run->parsed()) return TakeRun(std::move(raw));
    InspectSettings settings;
    for (const std::string& input : inspected) settings.inputs.push_back(PathOf(input));
    return settings;
}

}  // namespace devkit::filterhost
