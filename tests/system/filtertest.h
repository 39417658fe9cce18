#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devkit/msxml/com/domregistration.h"
#include "devkit/package/xpsdocument.h"
#include "devkit/pipeline/filterrun.h"
#include "devkit/prntvpt/client/simulatedprovider.h"

namespace systemtest {

// Sends documents through the built pagevalidatefilter.dll with the simulated provider.
class FilterTest : public testing::Test {
  protected:
    static constexpr CLSID kFilterClass = {
        0x8a9f4692, 0xe8ba, 0x4533, {0xb8, 0x59, 0xe5, 0x6b, 0x1e, 0xa1, 0x65, 0x86}};

    static void SetUpTestSuite();
    static void TearDownTestSuite();

    // What a job of the sample asks the pipeline for: the document, the sequence, three documents and ten
    // pages, and once more, which finds no part.
    static constexpr unsigned kQuestions = 16;

    [[nodiscard]] static std::filesystem::path Device(const std::string& name);
    [[nodiscard]] static std::shared_ptr<const devkit::package::XpsDocument> OpenSample();
    [[nodiscard]] static std::shared_ptr<const devkit::pipeline::JobInput> SampleInput();
    [[nodiscard]] static devkit::prntvpt::SimulatedProvider& Provider() { return *s_pProvider; }
    [[nodiscard]] static const std::shared_ptr<devkit::pipeline::FilterModule>& Filter() { return s_pFilter; }
    // Null when it is not loaded.
    [[nodiscard]] static HMODULE FilterHandle();
    static void LoadFilter();
    static void UnloadFilter();
    // Whether every filter that is loaded has a guarded heap: PAGEVALIDATE_GUARDED is set.
    [[nodiscard]] static bool IsHeapGuarded();

    // The provider with the switches, every option of a run, and the bag that the device asks for.
    static void Configure(std::vector<std::string> switches = {}, const std::string& device = "simprinter");
    // Of a provider that keeps nothing of its calls, for what would be too many of them.
    static void ConfigureWithoutLog(const std::string& device);
    [[nodiscard]] static devkit::pipeline::RunOptions Options();
    [[nodiscard]] static devkit::pipeline::RunOutcome Run(
        devkit::pipeline::RunOptions options,
        std::shared_ptr<const devkit::pipeline::JobInput> input = SampleInput());

    // Nothing is left over: no breach (live objects, references and DllCanUnloadNow are among them), no open
    // provider handle, no live DOM object of the kit, nothing that the provider complains about.
    static void ExpectNothingLeft(const devkit::pipeline::RunOutcome& outcome);
    // The failure was returned, reported once, and left nothing behind.
    static void ExpectFailure(const devkit::pipeline::RunOutcome& outcome, HRESULT hr);

  private:
    [[nodiscard]] static devkit::prntvpt::ProviderSettings SettingsOf(const std::string& device);

    static std::optional<devkit::msxml::DomRegistration> s_dom;
    static long s_liveDomObjects;  // what the registration itself keeps alive
    static std::unique_ptr<devkit::prntvpt::SimulatedProvider> s_pProvider;
    static std::shared_ptr<devkit::pipeline::FilterModule> s_pFilter;
};

}  // namespace systemtest
