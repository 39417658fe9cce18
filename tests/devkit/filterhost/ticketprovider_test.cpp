#include "devkit/filterhost/ticketprovider.h"

#include <gtest/gtest.h>

#include "devkit/filterhost/files.h"
#include "devkit/pipeline/usertoken.h"
#include "platform/prntvpt.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

// As a filter that is bound to the simulated provider calls it.
HRESULT Open(const TicketProvider& provider) {
    const HMODULE module = GetModuleHandleW((ProgramFolder() / "simulated" / "prntvpt.dll").c_str());
    const auto open = reinterpret_cast<decltype(&PTOpenProvider)>(
        reinterpret_cast<void*>(GetProcAddress(module, "PTOpenProvider")));
    HPTPROVIDER handle = nullptr;
    return open(platform::ToUtf16(provider.PrinterName()).c_str(), 1, &handle);
}

TEST(TicketProvider, BeginsEachRunAfresh) {
    HostSettings settings;
    settings.providerSwitches = {"fault=open-denied@1"};
    TicketProvider provider(settings);
    const pipeline::UserToken token;
    for (int run = 0; run < 2; ++run) {
        provider.BeginRun(token.Get(), false, {});
        // The first call of each run is the one that the fault is for.
        EXPECT_EQ(E_ACCESSDENIED, Open(provider));
        const auto report = provider.EndRun(false);
        ASSERT_TRUE(report);
        EXPECT_EQ(1U, report->counts.at("PTOpenProvider"));
        EXPECT_EQ(std::vector<std::string>(), report->idleFaults);
    }
}

}  // namespace
}  // namespace devkit::filterhost
