#include "platform/windows.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <vector>

#include "devkit/common/file.h"
#include "devkit/filterhost/commands.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/hostedrun.h"
#include "devkit/filterhost/report.h"
#include "devkit/filterhost/summary.h"
#include "devkit/filterhost/ticketprovider.h"
#include "devkit/msxml/com/domregistration.h"

namespace devkit::filterhost {
namespace {

using common::PathText;
using Path = std::filesystem::path;

// The kit's DOM document in the place of the system's, where a probe finds the system's wanting.
std::unique_ptr<msxml::DomRegistration> FillDomGap(bool quiet) {
    if (msxml::SystemDomConforms()) return nullptr;
    auto registration = std::make_unique<msxml::DomRegistration>();
    if (!quiet)
        PrintProblem("the system's DOM document lacks what filters need; the kit's own takes its place");
    return registration;
}

std::shared_ptr<pipeline::FilterModule> LoadFilter(const RunSettings& settings) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(settings.filter, ignored)) {
        throw UsageError("--filter: there is no " + common::PathText(settings.filter));
    }
    return std::make_shared<pipeline::FilterModule>(settings.filter, settings.filterClass);
}

void MakeFolder(const Path& folder) {
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) throw UsageError("--out-dir: " + common::PathText(folder) + " cannot be made");
}

Path OutputOf(const RunSettings& settings, const Path& input) {
    Path output = settings.output ? *settings.output : *settings.outputFolder / input.filename();
    std::error_code ignored;
    if (std::filesystem::equivalent(input, output, ignored)) {
        throw UsageError("the output would replace the input " + common::PathText(input));
    }
    return output;
}

void Tell(const RunResult& result, bool quiet) {
    for (const std::string& problem : WriteProblems(result)) PrintProblem(problem);
    if (!quiet) PrintOut(WriteSummary(result));
}

// Leaves the process at once: threads of a filter that hangs cannot be ended in order, and its DLL cannot be
// unloaded under them.
[[noreturn]] void LeaveHungProcess(ExitStatus status) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    std::abort();
}

}  // namespace

ExitStatus Run(const RunSettings& settings) {
    std::vector<Path> outputs;
    for (const Path& input : settings.inputs) outputs.push_back(OutputOf(settings, input));
    TicketProvider provider(settings);
    HostedRun host(settings, provider, LoadFilter(settings));
    const std::unique_ptr<msxml::DomRegistration> dom = FillDomGap(settings.quiet);
    if (settings.outputFolder) MakeFolder(*settings.outputFolder);

    std::vector<RunResult> results;
    ExitStatus status = Done;
    bool hung = false;
    for (std::size_t i = 0; i < settings.inputs.size(); ++i) {
        results.push_back(host.Run(settings.inputs[i], outputs[i]));
        const RunResult& result = results.back();
        Tell(result, settings.quiet);
        status = std::max(status, result.status);
        hung = hung || (result.outcome && result.outcome->hung);
    }
    if (settings.json) WriteFile(*settings.json, WriteReport(results), "--json");
    if (hung) LeaveHungProcess(status);
    return status;
}

}  // namespace devkit::filterhost
