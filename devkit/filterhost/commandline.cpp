#include "devkit/filterhost/commandline.h"

#include <algorithm>
#include <functional>
#include <set>
#include <utility>

#include <CLI/CLI.hpp>

#include "devkit/common/error.h"
#include "devkit/common/file.h"
#include "devkit/common/text.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/fuzzcommandline.h"
#include "devkit/filterhost/optiontext.h"
#include "devkit/pipeline/pipelineconfig.h"
#include "devkit/pipeline/runoptions.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using Path = std::filesystem::path;

constexpr const char* kDescription =
    "Runs an XPS print filter over documents, without a printer or a spooler.\n"
    "\n"
    "Exit status: 0 done, 1 the filter failed, 2 wrong usage, 3 an input cannot be\n"
    "read as an XPS document, 4 the filter broke a rule of the pipeline, or there\n"
    "is a finding and --strict. With several inputs the rest still run, and the\n"
    "highest status is returned.";

// The texts as they come from the command line.
struct RawRun {
    std::vector<std::string> inputs;
    std::optional<std::string> output;
    std::optional<std::string> outputFolder;
    bool noOutput = false;
    std::vector<std::string> filters;
    std::vector<std::string> classes;
    std::vector<std::string> inputKinds;
    std::vector<std::string> outputKinds;
    std::optional<std::string> pipelineConfig;
    std::optional<std::string> userTicket;
    std::optional<std::string> deviceCapabilities;
    std::vector<std::string> provider;
    std::optional<std::string> json;
    std::optional<std::string> junit;
    std::optional<std::string> trace;
    bool noDriverProperties = false;
    unsigned timeout = 300;
    RunSettings settings;
};

// Adds options to a command, each with the kind of its value and what it does.
struct Describer {
    CLI::App& command;

    auto* operator()(const char* name, auto& target, const char* type, const char* text) const {
        return command.add_option(name, target, text)->type_name(type);
    }
    auto* List(const char* name, auto& target, const char* type, const char* text) const {
        return (*this)(name, target, type, text)->take_all()->type_size(1)->allow_extra_args(false);
    }
};

// Which filters, where `filter` is the option that names their DLLs.
void DescribeFilters(const Describer& option, RawRun& raw, CLI::Option* filter) {
    auto* filterClass =
        option.List("--clsid", raw.classes, "{...}",
                    "its class (default: {8A9F4692-E8BA-4533-B859-E56B1EA16586}); with several\n"
                    "filters one for each, in their order");
    auto* inputKind =
        option.List("--input", raw.inputKinds, "xps|stream",
                    "what the filter reads: parts (the default) or the bytes of the package; with\n"
                    "several filters one for each");
    auto* outputKind = option.List("--output", raw.outputKinds, "xps|stream", "what it writes, likewise");
    option("--pipeline-config", raw.pipelineConfig, "FILE",
           "the filters of a driver's pipeline configuration; their DLLs stand beside it")
        ->excludes(filter)
        ->excludes(filterClass)
        ->excludes(inputKind)
        ->excludes(outputKind);
}

// What surrounds the filters.
void DescribeHost(const Describer& option, RawRun& raw) {
    HostSettings& host = raw.settings.host;
    option("--device", host.device, "MODEL",
           "device model, a name in devices beside this program or a folder (default: simprinter)");
    option("--printer", host.printer, "NAME", "the printer's name (default: the first of the device model)");
    option("--user-ticket", raw.userTicket, "FILE",
           "the user's default print ticket (default: that of the device)");
    option("--ns-prefix", host.nsPrefix, "TEXT", "KoraNsPrefix of the driver property bag (default: krk)");
    option("--tesk-type", host.teskType, "N", "KoraTeskType of the driver property bag (default: absent)");
    auto* noDriverProperties = option.command.add_flag("--no-driver-properties", raw.noDriverProperties,
                                                       "neither the driver property bag nor the queue's");
    option.List(
        "--property", host.properties, "NAME=TYPE:VALUE",
        "an entry of the pipeline's property bag, instead of one that it has of that name, repeatable;\n"
        "TYPE is bool, int, uint or string");
    option
        .List("--driver-property", host.driverValues, "NAME=TYPE:VALUE",
              "an entry of the driver property bag, repeatable")
        ->excludes(noDriverProperties);
    option
        .List("--queue-property", host.queueValues, "NAME=TYPE:VALUE",
              "an entry of the queue property bag, which is there where the driver's is, repeatable")
        ->excludes(noDriverProperties);
    option("--device-capabilities", raw.deviceCapabilities, "FILE",
           "what PrintDeviceCapabilities of the property bag gives (default: absent)");
    option.List("--provider", raw.provider, "KEY=VALUE|system",
                "a switch of the simulated print ticket provider, repeatable; or the system's own provider");
    option.List("--pipeline", host.pipelineSwitches, "KEY=VALUE",
                "a switch of the pipeline, repeatable: fail=CALL[(ARGUMENT)][@N[+]]=CODE, short-reads=N,\n"
                "short-writes=N, end-flag=with-data|alone, missing-ticket=failure|null,\n"
                "after-cancel=fail|end|continue, cancel=waits|concurrent|twice,\n"
                "reader=xps|unknown|null, writer=xps|unknown|null, ambiguous-document=on|off, "
                "slow-part=MILLISECONDS,\n"
                "apartment=none|single, last-release=caller|other-thread, start=yes|never");
}

void DescribeRun(CLI::App& run, RawRun& raw) {
    const Describer option{run};
    option("INPUT", raw.inputs, "", "XPS or OpenXPS documents")->required();
    auto* output = option("-o", raw.output, "OUTPUT", "the document that comes out, for one INPUT");
    auto* folder = option("--out-dir", raw.outputFolder, "DIR",
                          "the folder for the documents that come out, under their names")
                       ->excludes(output);
    run.add_flag("--no-output", raw.noOutput, "run the filter and write nothing")
        ->excludes(output)
        ->excludes(folder);
    auto* filter =
        option.List("--filter", raw.filters, "DLL",
                    "the filter (default: pagevalidatefilter.dll beside this program), repeatable:\n"
                    "each one's output is the next one's input");
    DescribeFilters(option, raw, filter);
    DescribeHost(option, raw);
    option("--json", raw.json, "FILE", "a report for programs; docs/report.schema.json describes it");
    option("--junit", raw.junit, "FILE", "a report for build servers, one test case an INPUT");
    option("--trace", raw.trace, "FILE",
           "where the time went, call by call and page by page: for https://ui.perfetto.dev or\n"
           "chrome://tracing");
    run.add_flag("--strict", raw.settings.strict, "a finding gives status 4, as a broken rule does");
    auto* quiet = run.add_flag("--quiet", raw.settings.quiet, "print problems only");
    run.add_flag("--verbose", raw.settings.verbose, "print what is worth knowing about the system, too")
        ->excludes(quiet);
    option("--cancel-at", raw.settings.host.cancelAt, "N",
           "ShutdownOperation from another thread when part N (from 1) is asked for");
    option("--timeout", raw.timeout, "S", "end a filter that makes no progress for S seconds (default: 300)")
        ->check(CLI::Range(1U, 1000000U));
    option("-j", raw.settings.parallel, "N", "inputs at once (default: one a processor)")
        ->check(CLI::Range(1U, 1024U));
    run.add_flag("--in-process", raw.settings.inProcess,
                 "run the filter in this process, where a debugger finds it; what it does to the process\n"
                 "happens to the program");
}

struct RawValidate {
    RawRun run;
    std::vector<std::string> documents;
    std::optional<std::string> report;
    ValidateSettings settings;
};

void DescribeValidate(CLI::App& validate, RawValidate& raw) {
    const Describer option{validate};
    ValidateSettings& settings = raw.settings;
    auto* filter = option("FILTER", raw.run.filters, "",
                          "the filter's DLL (default: pagevalidatefilter.dll beside this program);\n"
                          "of several each one's output is the next one's input");
    DescribeFilters(option, raw.run, filter);
    option.List("--document", raw.documents, "FILE",
                "an XPS or OpenXPS document beside those that the program carries, repeatable");
    option("--level", settings.level, "N", "tests of the levels 1 to N, of 10 (default: 5)")
        ->check(CLI::Range(1U, 10U));
    option("--include", settings.include, "REGEX", "only tests whose names match");
    option("--exclude", settings.exclude, "REGEX", "no test whose name matches");
    option("--cases", settings.cases, "N",
           "of a test that has many cases N, chosen by the seed (default: all)")
        ->check(CLI::PositiveNumber);
    option("--seed", settings.seed, "S", "the same seed chooses the same cases (default: 1)");
    option("--repeat", settings.repeat, "N", "all of it N times, with the seeds S, S+1 and so on")
        ->check(CLI::PositiveNumber);
    DescribeHost(option, raw.run);
    auto* json = option("--json", raw.run.json, "FILE",
                        "the results for programs; docs/validation.schema.json describes them");
    option("--junit", raw.run.junit, "FILE", "the results for build servers, a test case a test");
    option("--report", raw.report, "FILE", "the results as a page to look at");
    option("--trace", raw.run.trace, "FILE",
           "where the time of each test's runs went: for https://ui.perfetto.dev or chrome://tracing");
    validate
        .add_flag("--only-failed", settings.onlyFailed, "tests that failed in the last run of this --json")
        ->needs(json);
    validate.add_flag("--quiet", settings.quiet, "print the verdict and what failed only");
    option("--timeout", raw.run.timeout, "S",
           "end a filter that makes no progress for S seconds (default: 60)")
        ->check(CLI::Range(1U, 1000000U));
    option("-j", settings.parallel, "N", "tests at once (default: one a processor)")
        ->check(CLI::Range(1U, 1024U));
    validate.add_flag(
        "--in-process", settings.inProcess,
        "run the filter in this process, where a debugger finds it; what it does to the process\n"
        "happens to the program");
}

void TakeProvider(const std::vector<std::string>& values, HostSettings& settings) {
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

// The job of an input, with the output's name as the caller would give it.
Job MakeJob(const RawRun& raw, const std::string& input) {
    Job job{Absolute(input), input, std::nullopt, {}};
    if (raw.output) job.outputName = *raw.output;
    if (raw.outputFolder) {
        job.outputName = platform::ToUtf8((PathOf(*raw.outputFolder) / job.input.filename()).wstring());
    }
    if (!raw.noOutput) job.output = Absolute(job.outputName);
    return job;
}

// Has `use` take each of the texts; one that it refuses is wrong usage of the option.
void CheckEach(const char* option, const std::vector<std::string>& texts,
               const std::function<void(const std::string&)>& use) {
    try {
        for (const std::string& text : texts) use(text);
    } catch (const pipeline::SwitchError& error) {
        throw UsageError(std::string(option) + ": " + error.what());
    }
}

void CheckPipeline(const HostSettings& settings) {
    pipeline::RunOptions options;
    const auto parse = [](const std::string& text) { static_cast<void>(pipeline::ParseProperty(text)); };
    CheckEach("--pipeline", settings.pipelineSwitches,
              [&options](const std::string& text) { pipeline::ApplySwitch(options, text); });
    CheckEach("--property", settings.properties, parse);
    CheckEach("--driver-property", settings.driverValues, parse);
    CheckEach("--queue-property", settings.queueValues, parse);
}

pipeline::DataKind KindOf(const char* option, const std::string& text) {
    if (text == "xps") return pipeline::DataKind::Xps;
    if (text == "stream") return pipeline::DataKind::Stream;
    throw UsageError(std::string(option) + ": \"" + text + "\" is neither xps nor stream");
}

// The filters of the driver's pipeline configuration.
std::vector<FilterSettings> ReadFilters(const Path& config) try {
    std::vector<FilterSettings> filters;
    const std::string markup = ReadFile(config, "--pipeline-config");
    for (const pipeline::ConfiguredFilter& each :
         pipeline::ReadPipelineConfig(markup, common::PathText(config))) {
        filters.push_back(
            {each.name, config.parent_path() / PathOf(each.dll), each.clsid, each.input, each.output});
    }
    return filters;
} catch (const common::Error& error) {
    throw UsageError(std::string("--pipeline-config: ") + error.what());
}

// The filters that the command line names one by one.
std::vector<FilterSettings> TakeFilters(const RawRun& raw) {
    std::vector<FilterSettings> filters;
    for (const std::string& text : raw.filters) filters.push_back({{}, Absolute(text)});
    if (filters.empty()) filters.push_back({{}, ProgramFolder() / "pagevalidatefilter.dll"});
    const auto checkCount = [&](const char* option, std::size_t count) {
        if (count == filters.size() || count == 0) return;
        throw UsageError(std::string(option) + ": " + std::to_string(count) + " for " +
                         common::Counted(filters.size(), "filter"));
    };
    checkCount("--clsid", raw.classes.size());
    checkCount("--input", raw.inputKinds.size());
    checkCount("--output", raw.outputKinds.size());
    for (std::size_t i = 0; i < filters.size(); ++i) {
        FilterSettings& filter = filters[i];
        filter.name = std::to_string(i + 1) + " (" + common::PathText(filter.dll.filename()) + ")";
        if (!raw.classes.empty()) filter.clsid = ClassOf(raw.classes[i]);
        if (!raw.inputKinds.empty()) filter.input = KindOf("--input", raw.inputKinds[i]);
        if (!raw.outputKinds.empty()) filter.output = KindOf("--output", raw.outputKinds[i]);
    }
    return filters;
}

void CheckOutputs(const RawRun& raw) {
    if (!raw.output && !raw.outputFolder && !raw.noOutput) {
        throw UsageError("one of -o, --out-dir and --no-output is required");
    }
    if (raw.output && raw.inputs.size() > 1)
        throw UsageError("-o is for one INPUT; use --out-dir for several");
    if (!raw.outputFolder) return;
    std::set<std::wstring> names;
    for (const std::string& input : raw.inputs) {
        const std::wstring given = PathOf(input).filename().wstring();
        std::wstring name = given;
        CharLowerBuffW(name.data(), static_cast<DWORD>(name.size()));
        if (!names.insert(name).second) {
            throw UsageError("--out-dir: two inputs are named " + platform::ToUtf8(given));
        }
    }
}

HostSettings TakeHost(const RawRun& raw) {
    HostSettings host = raw.settings.host;
    host.pipelineConfig = Absolute(raw.pipelineConfig);
    host.filters = host.pipelineConfig ? ReadFilters(*host.pipelineConfig) : TakeFilters(raw);
    host.userTicket = Absolute(raw.userTicket);
    host.deviceCapabilities = Absolute(raw.deviceCapabilities);
    host.driverProperties = !raw.noDriverProperties;
    TakeProvider(raw.provider, host);
    CheckPipeline(host);
    return host;
}

RunSettings TakeRun(const RawRun& raw) {
    CheckOutputs(raw);
    RunSettings settings = raw.settings;
    for (const std::string& input : raw.inputs) settings.jobs.push_back(MakeJob(raw, input));
    settings.host = TakeHost(raw);
    settings.outputFolder = Absolute(raw.outputFolder);
    settings.json = Absolute(raw.json);
    settings.junit = Absolute(raw.junit);
    settings.trace = Absolute(raw.trace);
    settings.host.trace = settings.trace.has_value();
    settings.host.recordTickets = settings.json.has_value();
    settings.timeout = std::chrono::seconds(raw.timeout);
    return settings;
}

ValidateSettings TakeValidate(RawValidate raw) {
    ValidateSettings settings = std::move(raw.settings);
    settings.host = TakeHost(raw.run);
    for (const std::string& document : raw.documents) settings.documents.push_back(Absolute(document));
    settings.json = Absolute(raw.run.json);
    settings.junit = Absolute(raw.run.junit);
    settings.report = Absolute(raw.report);
    settings.trace = Absolute(raw.run.trace);
    settings.host.trace = settings.trace.has_value();
    settings.timeout = std::chrono::seconds(raw.run.timeout);
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
    RawValidate rawValidate;
    rawValidate.run.timeout = 60;
    CLI::App* validate = app.add_subcommand("validate", "run the battery of tests over a filter");
    DescribeValidate(*validate, rawValidate);
    ListSettings listed;
    CLI::App* list = app.add_subcommand("list", "what there is");
    list->require_subcommand(1);
    CLI::App* tests = list->add_subcommand("tests", "the tests of the battery and what each proves");
    tests->add_option("--level", listed.level, "of the levels 1 to N (default: 10)")
        ->type_name("N")
        ->check(CLI::Range(1U, 10U));
    RawFuzz rawFuzz;
    CLI::App* fuzz = app.add_subcommand("fuzz", "have a filter meet bad documents, tickets and answers");
    DescribeFuzz(*fuzz, rawFuzz);
    std::vector<std::string> inspected;
    CLI::App* inspect = app.add_subcommand("inspect", "show parts, page sizes, tickets and where they hang");
    inspect->add_option("INPUT", inspected, "XPS or OpenXPS documents")->required();
    std::string before;
    std::string after;
    CLI::App* diff =
        app.add_subcommand("diff", "compare two documents or two print tickets: status 1 when they differ");
    diff->add_option("A", before, "a document or a print ticket")->required();
    diff->add_option("B", after, "what it is compared with, page by page or feature by feature")->required();
    DeviceSettings device;
    CLI::App* examine = app.add_subcommand("device", "look at a device model");
    examine->require_subcommand(1);
    CLI::App* check = examine->add_subcommand("check", "what is wrong with it, with the line");
    CLI::App* show = examine->add_subcommand("show", "what it has, and the default ticket that it selects");
    for (CLI::App* const each : {check, show}) {
        each->add_option("MODEL", device.device, "a name in devices beside this program or a folder")
            ->required();
    }
    // CLI11 takes the arguments from the end.
    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::CallForVersion&) {
        return Answer{VersionText() + "\n"};
    } catch (const CLI::CallForHelp&) {
        for (const CLI::App* const each :
             {run, validate, fuzz, inspect, diff, check, show, examine, tests, list}) {
            const CLI::App* const pAbove = each->get_parent();
            const std::string above = pAbove == &app ? "" : " " + pAbove->get_name();
            if (each->parsed()) return Answer{each->help(app.get_name() + above)};
        }
        return Answer{app.help()};
    } catch (const CLI::ParseError& error) {
        throw UsageError(FirstLine(error.what()));
    }
    if (run->parsed()) return TakeRun(raw);
    if (validate->parsed()) {
        rawValidate.settings.isDeviceGiven = validate->count("--device") != 0;
        return TakeValidate(std::move(rawValidate));
    }
    if (tests->parsed()) return listed;
    if (fuzz->parsed()) return TakeFuzz(std::move(rawFuzz));
    if (diff->parsed()) return DiffSettings{Absolute(before), Absolute(after)};
    if (examine->parsed()) {
        device.action = show->parsed() ? DeviceSettings::Action::Show : DeviceSettings::Action::Check;
        return device;
    }
    InspectSettings settings;
    for (const std::string& input : inspected) settings.inputs.push_back(PathOf(input));
    return settings;
}

}  // namespace devkit::filterhost
