#include "filtertest.h"

#include <cstdlib>
#include <utility>

#include "devkit/msxml/com/domdocument.h"
#include "guardedheap.h"
#include "programfolder.h"

namespace systemtest {

using devkit::package::XpsDocument;
using devkit::pipeline::FilterModule;
using devkit::pipeline::FilterRun;
using devkit::pipeline::JobInput;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;
using devkit::prntvpt::SimulatedProvider;
using tests::ProgramFolder;

std::optional<devkit::msxml::DomRegistration> FilterTest::s_dom;
long FilterTest::s_liveDomObjects = 0;
std::unique_ptr<SimulatedProvider> FilterTest::s_pProvider;
std::shared_ptr<FilterModule> FilterTest::s_pFilter;

void FilterTest::SetUpTestSuite() {
    if (!devkit::msxml::SystemDomConforms()) s_dom.emplace();
    s_liveDomObjects = devkit::msxml::LiveObjectCount();
    // Before the filter: its import of prntvpt.dll is then bound to this one.
    s_pProvider = std::make_unique<SimulatedProvider>(ProgramFolder() / "simulated" / "prntvpt.dll");
    LoadFilter();
}

bool FilterTest::IsHeapGuarded() { return std::getenv("PAGEVALIDATE_GUARDED") != nullptr; }

HMODULE FilterTest::FilterHandle() { return GetModuleHandleW(L"pagevalidatefilter.dll"); }

void FilterTest::LoadFilter() {
    s_pFilter = std::make_shared<FilterModule>(ProgramFolder() / "pagevalidatefilter.dll", kFilterClass);
    if (IsHeapGuarded()) tests::GuardHeapOf(FilterHandle());
}

void FilterTest::UnloadFilter() { s_pFilter.reset(); }

void FilterTest::TearDownTestSuite() {
    UnloadFilter();
    s_pProvider.reset();
    s_dom.reset();
}

std::filesystem::path FilterTest::Device(const std::string& name) {
    return std::filesystem::path(SOURCE_FOLDER) / "devkit" / "devices" / name;
}

std::shared_ptr<const XpsDocument> FilterTest::OpenSample() {
    return std::make_shared<const XpsDocument>(
        XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / "sample.xps"));
}

std::shared_ptr<const JobInput> FilterTest::SampleInput() {
    static const std::shared_ptr<const JobInput> input = devkit::pipeline::MakeJobInput(OpenSample());
    return input;
}

devkit::prntvpt::ProviderSettings FilterTest::SettingsOf(const std::string& device) {
    devkit::prntvpt::ProviderSettings settings;
    settings.device = Device(device);
    settings.printers = {"SimPrinter"};
    return settings;
}

void FilterTest::Configure(std::vector<std::string> switches, const std::string& device) {
    devkit::prntvpt::ProviderSettings settings = SettingsOf(device);
    settings.switches = std::move(switches);
    Provider().Configure(settings);
}

void FilterTest::ConfigureWithoutLog(const std::string& device) {
    devkit::prntvpt::ProviderSettings settings = SettingsOf(device);
    settings.recordTickets = false;
    settings.recordCalls = false;
    Provider().Configure(settings);
}

RunOptions FilterTest::Options() {
    RunOptions options;
    const std::string ticket = Provider().DefaultTicket();
    options.properties.userTicket = std::make_shared<const std::string>(ticket);
    options.properties.driverValues = {{L"KoraNsPrefix", std::wstring(L"krk")}};
    return options;
}

RunOutcome FilterTest::Run(RunOptions options, std::shared_ptr<const JobInput> input) {
    return FilterRun(Filter(), std::move(input), std::move(options)).Run();
}

void FilterTest::ExpectNothingLeft(const RunOutcome& outcome) {
    EXPECT_FALSE(outcome.hung);
    for (const std::string& breach : outcome.breaches) ADD_FAILURE() << breach;
    EXPECT_EQ(s_liveDomObjects, devkit::msxml::LiveObjectCount());
    Provider().Finish();
    const auto report = Provider().Report();
    EXPECT_TRUE(report.openHandles.empty());
    for (const auto& breach : report.breaches) ADD_FAILURE() << breach.stop << ": " << breach.text;
}

void FilterTest::ExpectFailure(const RunOutcome& outcome, HRESULT hr) {
    EXPECT_EQ(hr, outcome.result);
    EXPECT_EQ(std::vector<HRESULT>{hr}, outcome.shutdownCodes);
    ExpectNothingLeft(outcome);
}

}  // namespace systemtest
