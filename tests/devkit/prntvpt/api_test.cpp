#include <array>
#include <cstdint>
#include <thread>
#include <utility>

#include "devkit/printschema/names.h"
#include "memorystream.h"
#include "platform/bstr.h"
#include "providertest.h"
#include "tickets.h"

// What the functions of prntvpt answer, as documented or as seen on the platform.

namespace devkit::prntvpt {
namespace {

using namespace tests;

class ApiTest : public ProviderTest {
  protected:
    void SetUp() override { Use({}); }
    [[nodiscard]] HPTPROVIDER NotAHandle() const {
        return reinterpret_cast<HPTPROVIDER>(std::uintptr_t{0x1234});
    }
};

TEST_F(ApiTest, OpensVersionOneAlone) {
    HPTPROVIDER handle = NotAHandle();
    EXPECT_EQ(E_INVALIDARG, m_provider.OpenProvider(L"SimPrinter", 0, &handle));
    EXPECT_EQ(nullptr, handle);
    handle = NotAHandle();
    EXPECT_EQ(kVersionNotSupported, m_provider.OpenProvider(L"SimPrinter", 2, &handle));
    EXPECT_EQ(nullptr, handle);
    EXPECT_EQ(S_OK, m_provider.OpenProvider(L"SimPrinter", 1, &handle));
    EXPECT_NE(nullptr, handle);
    EXPECT_NE(handle, m_handle);
    EXPECT_EQ(S_OK, m_provider.CloseProvider(handle));
}

TEST_F(ApiTest, OpenNeedsAKnownPrinter) {
    HPTPROVIDER handle = NotAHandle();
    EXPECT_EQ(kNoSuchPrinter, m_provider.OpenProvider(L"No such printer", 1, &handle));
    EXPECT_EQ(0x80070709U, static_cast<std::uint32_t>(kNoSuchPrinter));
    EXPECT_EQ(nullptr, handle);
    EXPECT_EQ(kNoSuchPrinter, m_provider.OpenProvider(L"", 1, &handle));
    EXPECT_EQ(E_INVALIDARG, m_provider.OpenProvider(nullptr, 1, &handle));
    EXPECT_EQ(E_INVALIDARG, m_provider.OpenProvider(L"SimPrinter", 1, nullptr));
}

TEST_F(ApiTest, PrinterNamesHaveNoCase) {
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(S_OK, m_provider.OpenProvider(L"SIMPRINTER", 1, &handle));
    EXPECT_EQ(S_OK, m_provider.CloseProvider(handle));
}

TEST_F(ApiTest, OpenExFallsBackToVersionOne) {
    HPTPROVIDER handle = nullptr;
    DWORD used = 0;
    EXPECT_EQ(S_OK, m_provider.OpenProviderEx(L"SimPrinter", 5, 5, &handle, &used));
    EXPECT_EQ(1U, used);
    EXPECT_EQ(S_OK, m_provider.CloseProvider(handle));
}

TEST_F(ApiTest, OpenExNeedsAVersionAndRoomForIt) {
    HPTPROVIDER handle = NotAHandle();
    DWORD used = 9;
    EXPECT_EQ(E_INVALIDARG, m_provider.OpenProviderEx(L"SimPrinter", 1, 1, &handle, nullptr));
    EXPECT_EQ(nullptr, handle);
    EXPECT_EQ(E_INVALIDARG, m_provider.OpenProviderEx(L"SimPrinter", 0, 1, &handle, &used));
    EXPECT_EQ(0U, used);
    EXPECT_EQ(E_INVALIDARG, m_provider.OpenProviderEx(L"SimPrinter", 1, 1, nullptr, &used));
    EXPECT_EQ(kNoSuchPrinter, m_provider.OpenProviderEx(L"No such printer", 1, 1, &handle, &used));
}

TEST_F(ApiTest, SchemaVersionIsOne) {
    DWORD version = 9;
    EXPECT_EQ(S_OK, m_provider.QuerySchemaVersionSupport(L"SimPrinter", &version));
    EXPECT_EQ(1U, version);
    EXPECT_EQ(kNoSuchPrinter, m_provider.QuerySchemaVersionSupport(L"No such printer", &version));
    EXPECT_EQ(0U, version);
    EXPECT_EQ(E_INVALIDARG, m_provider.QuerySchemaVersionSupport(L"SimPrinter", nullptr));
    EXPECT_EQ(E_INVALIDARG, m_provider.QuerySchemaVersionSupport(nullptr, &version));
}

TEST_F(ApiTest, NothingButNullIsReleased) {
    int memory = 0;
    EXPECT_EQ(S_OK, m_provider.ReleaseMemory(nullptr));
    EXPECT_EQ(E_INVALIDARG, m_provider.ReleaseMemory(&memory));
}

TEST_F(ApiTest, MergeNeedsHandleBaseResultAndScope) {
    const auto base = MemoryStream::Make(DefaultTicket());
    const auto result = MemoryStream::Make();
    const auto merge = [&](HPTPROVIDER handle, IStream* pBase, int scope, IStream* pResult) {
        BSTR error = reinterpret_cast<BSTR>(std::uintptr_t{1});
        const HRESULT hr = m_provider.MergeAndValidatePrintTicket(
            handle, pBase, nullptr, static_cast<EPrintTicketScope>(scope), pResult, &error);
        EXPECT_EQ(nullptr, error);
        return hr;
    };
    EXPECT_EQ(E_INVALIDARG, merge(m_handle, nullptr, kPTJobScope, result.Get()));
    EXPECT_EQ(E_INVALIDARG, merge(m_handle, base.Get(), kPTJobScope, nullptr));
    EXPECT_EQ(E_INVALIDARG, merge(m_handle, base.Get(), 3, result.Get()));
    EXPECT_EQ(E_INVALIDARG, merge(m_handle, base.Get(), -1, result.Get()));
    EXPECT_EQ(0U, base->Position());
    EXPECT_EQ("", result->Bytes());
    EXPECT_EQ(E_INVALIDARG, merge(NotAHandle(), base.Get(), kPTJobScope, result.Get()));
    EXPECT_EQ(E_INVALIDARG, merge(nullptr, base.Get(), kPTJobScope, result.Get()));
    EXPECT_EQ((std::vector<std::string>{"A00F", "A00F"}), Stops());
    ExpectBreaches();
}

TEST_F(ApiTest, MergeReadsAndWritesFromWhereTheStreamsStand) {
    const std::string ticket = DefaultTicket();
    const std::string change =
        Ticket(R"(<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Landscape"/></psf:Feature>)");
    const auto base = MemoryStream::Make("junk" + ticket, 4);
    const auto delta = MemoryStream::Make("junk" + change, 4);
    const auto result = MemoryStream::Make("0123", 4);
    ASSERT_EQ(kNoConflict, m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), delta.Get(),
                                                                  kPTJobScope, result.Get(), nullptr));
    EXPECT_EQ(4 + ticket.size(), base->Position());
    EXPECT_EQ(4 + change.size(), delta->Position());
    EXPECT_EQ(result->Bytes().size(), result->Position());
    EXPECT_EQ("psk:PageOrientation[psk:Landscape]",
              Line(std::string_view(result->Bytes()).substr(4), "PageOrientation"));
    EXPECT_EQ(0, base->Seeks() + delta->Seeks() + result->Seeks());
    EXPECT_EQ(3U, base->References() + delta->References() + result->References());
}

TEST_F(ApiTest, MergeCompletesShortReadsAndWrites) {
    const auto base = MemoryStream::Make(DefaultTicket());
    const auto result = MemoryStream::Make();
    base->LimitBlocks(1);
    result->LimitBlocks(7);
    ASSERT_EQ(kNoConflict, m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), nullptr, kPTJobScope,
                                                                  result.Get(), nullptr));
    EXPECT_EQ(DefaultTicket(), result->Bytes());
}

TEST_F(ApiTest, FailuresOfStreamsComeBack) {
    const auto good = MemoryStream::Make(DefaultTicket());
    const auto bad = MemoryStream::Make(DefaultTicket());
    bad->FailReads(STG_E_READFAULT);
    bad->FailWrites(STG_E_WRITEFAULT);
    const auto merge = [&](IStream* pBase, IStream* pDelta, IStream* pResult) {
        return m_provider.MergeAndValidatePrintTicket(m_handle, pBase, pDelta, kPTJobScope, pResult, nullptr);
    };
    const auto result = MemoryStream::Make();
    EXPECT_EQ(STG_E_READFAULT, merge(bad.Get(), nullptr, result.Get()));
    EXPECT_EQ(STG_E_READFAULT, merge(good.Get(), bad.Get(), result.Get()));
    const auto again = MemoryStream::Make(DefaultTicket());
    EXPECT_EQ(STG_E_WRITEFAULT, merge(again.Get(), nullptr, bad.Get()));
    EXPECT_EQ("", result->Bytes());
}

TEST_F(ApiTest, BadBaseAndBadDeltaAreToldApart) {
    struct Case {
        std::string bytes;
        std::wstring text;
    };
    const std::vector<Case> cases{
        {"", L"is empty"},
        {"<a>", L"is not well-formed XML (line 1: The markup breaks off)"},
        {"<PrintTicket version=\"1\"/>", L"The root element is not PrintTicket"},
        {Ticket("text"), L"Text is not allowed inside PrintTicket"},
        {Ticket("<psf:Feature/>"), L"A Feature has no name"},
        {Ticket(R"(<psf:Option name="psk:X"/>)"),
         L"The element \"Option\" is not allowed inside PrintTicket"},
        {Ticket(R"(<psf:ParameterInit name="psk:PageX"/><psf:ParameterInit name="psk:PageX"/>)"),
         L"Duplicate definitions exist for feature or parameter PageX"},
        {"<!DOCTYPE a><a/>", L"has a document type declaration"}};
    for (const Case& entry : cases) {
        const WrittenResult base = Merge(entry.bytes, DefaultTicket());
        EXPECT_EQ(kBadBase, base.result);
        EXPECT_EQ(L"Base ticket: " + entry.text, base.error);
        EXPECT_EQ("", base.bytes);
        const WrittenResult delta = MergeWithDefault(entry.bytes);
        EXPECT_EQ(kBadDelta, delta.result);
        EXPECT_EQ(L"Delta ticket: " + entry.text, delta.error);
        EXPECT_EQ("", delta.bytes);
    }
    // The base is read first.
    EXPECT_EQ(kBadBase, Merge("<a>", "<b>").result);
}

TEST_F(ApiTest, MalformedTicketsNeedNoRoomForTheText) {
    const auto base = MemoryStream::Make("<a>");
    const auto result = MemoryStream::Make();
    EXPECT_EQ(kBadBase, m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), nullptr, kPTJobScope,
                                                               result.Get(), nullptr));
}

TEST_F(ApiTest, CapabilitiesNeedHandleAndOutput) {
    BSTR error = reinterpret_cast<BSTR>(std::uintptr_t{1});
    EXPECT_EQ(E_INVALIDARG, m_provider.GetPrintCapabilities(m_handle, nullptr, nullptr, &error));
    EXPECT_EQ(nullptr, error);
    const auto output = MemoryStream::Make();
    EXPECT_EQ(E_INVALIDARG, m_provider.GetPrintCapabilities(NotAHandle(), nullptr, output.Get(), nullptr));
    EXPECT_EQ((std::vector<std::string>{"A00F"}), Stops());
    ExpectBreaches();
}

// Handles.

TEST_F(ApiTest, HandleIsBoundToItsThread) {
    HRESULT merged = S_OK;
    HRESULT closed = S_OK;
    std::thread([&] {
        const auto base = MemoryStream::Make(DefaultTicket());
        const auto result = MemoryStream::Make();
        merged = m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), nullptr, kPTJobScope,
                                                        result.Get(), nullptr);
        closed = m_provider.CloseProvider(m_handle);
    }).join();
    EXPECT_EQ(E_INVALIDARG, merged);
    EXPECT_EQ(E_HANDLE, closed);
    EXPECT_EQ((std::vector<std::string>{"A010", "A011"}), Stops());
    EXPECT_EQ(kNoConflict, Merge(DefaultTicket(), std::nullopt).result);
    ExpectBreaches();
}

TEST_F(ApiTest, ThreadWarnOnlyNotesAForeignThread) {
    Use({"thread=warn"});
    const HPTPROVIDER handle = std::exchange(m_handle, nullptr);
    HRESULT closed = E_FAIL;
    std::thread([&] { closed = m_provider.CloseProvider(handle); }).join();
    EXPECT_EQ(S_OK, closed);
    EXPECT_EQ((std::vector<std::string>{"A011"}), Stops());
    ExpectBreaches();
}

TEST_F(ApiTest, ThreadOffLetsAnyThreadIn) {
    Use({"thread=off"});
    const HPTPROVIDER handle = std::exchange(m_handle, nullptr);
    HRESULT closed = E_FAIL;
    std::thread([&] { closed = m_provider.CloseProvider(handle); }).join();
    EXPECT_EQ(S_OK, closed);
}

TEST_F(ApiTest, UseAfterCloseIsNoticed) {
    const HPTPROVIDER handle = std::exchange(m_handle, nullptr);
    EXPECT_EQ(S_OK, m_provider.CloseProvider(handle));
    EXPECT_EQ(E_HANDLE, m_provider.CloseProvider(handle));
    const auto base = MemoryStream::Make(DefaultTicket());
    const auto result = MemoryStream::Make();
    EXPECT_EQ(E_INVALIDARG, m_provider.MergeAndValidatePrintTicket(handle, base.Get(), nullptr, kPTJobScope,
                                                                   result.Get(), nullptr));
    EXPECT_EQ((std::vector<std::string>{"A00E", "A00E"}), Stops());
    ExpectBreaches();
}

TEST_F(ApiTest, ForeignHandleIsNoticed) {
    EXPECT_EQ(E_HANDLE, m_provider.CloseProvider(NotAHandle()));
    EXPECT_EQ(E_HANDLE, m_provider.CloseProvider(nullptr));
    ASSERT_EQ(2U, Report().breaches.size());
    EXPECT_EQ("A00F", Report().breaches[0].stop);
    EXPECT_EQ("PTCloseProvider: the handle 4660 was never given out", Report().breaches[0].text);
    ExpectBreaches();
}

TEST_F(ApiTest, HandleThatIsOpenAtTheEndIsALeakOnce) {
    ASSERT_EQ(1U, Report().openHandles.size());
    EXPECT_EQ("SimPrinter", Report().openHandles[0].printer);
    EXPECT_EQ(GetCurrentThreadId(), Report().openHandles[0].thread);
    m_provider.Finish();
    m_provider.Finish();
    EXPECT_EQ((std::vector<std::string>{"A012"}), Stops());
    ExpectBreaches();
}

TEST_F(ApiTest, HandleThatAThreadLeavesOpenIsALeak) {
    DWORD thread = 0;
    std::thread([&] {
        thread = GetCurrentThreadId();
        HPTPROVIDER handle = nullptr;
        EXPECT_EQ(S_OK, m_provider.OpenProvider(L"SimPrinter", 1, &handle));
    }).join();
    m_provider.ThreadEnded(thread);
    EXPECT_EQ((std::vector<std::string>{"A012"}), Stops());
    ExpectBreaches();
}

TEST_F(ApiTest, ThreadOffLetsAThreadLeaveAHandleForOthers) {
    Use({"thread=off"});
    m_provider.ThreadEnded(GetCurrentThreadId());
    EXPECT_EQ(std::vector<std::string>{}, Stops());
    m_provider.Finish();
    EXPECT_EQ((std::vector<std::string>{"A012"}), Stops());
    ExpectBreaches();
}

TEST_F(ApiTest, AHandleThatTheWrongThreadCouldNotCloseIsToldOnce) {
    HRESULT closed = S_OK;
    std::thread([&] { closed = m_provider.CloseProvider(m_handle); }).join();
    EXPECT_TRUE(FAILED(closed));
    m_provider.Finish();
    EXPECT_EQ((std::vector<std::string>{"A011"}), Stops());
    ExpectBreaches();
}

TEST_F(ApiTest, HandlesAreNeverGivenOutTwice) {
    HPTPROVIDER first = nullptr;
    HPTPROVIDER second = nullptr;
    EXPECT_EQ(S_OK, m_provider.OpenProvider(L"SimPrinter", 1, &first));
    EXPECT_EQ(S_OK, m_provider.CloseProvider(first));
    EXPECT_EQ(S_OK, m_provider.OpenProvider(L"SimPrinter", 1, &second));
    EXPECT_NE(first, second);
    EXPECT_EQ(S_OK, m_provider.CloseProvider(second));
}

TEST_F(ApiTest, HandlesOfTwoThreadsWorkSideBySide) {
    std::array<HRESULT, 4> results{};
    std::vector<std::thread> threads;
    const std::string ticket = DefaultTicket();
    for (HRESULT& result : results) {
        threads.emplace_back([&] {
            HPTPROVIDER handle = nullptr;
            result = m_provider.OpenProvider(L"SimPrinter", 1, &handle);
            for (int round = 0; round < 20 && SUCCEEDED(result); ++round) {
                platform::ComPtr<IStream> base;
                platform::ComPtr<IStream> output;
                CreateStreamOnHGlobal(nullptr, TRUE, base.Put());
                CreateStreamOnHGlobal(nullptr, TRUE, output.Put());
                base->Write(ticket.data(), static_cast<ULONG>(ticket.size()), nullptr);
                base->Seek({}, STREAM_SEEK_SET, nullptr);
                result = m_provider.MergeAndValidatePrintTicket(handle, base.Get(), nullptr, kPTJobScope,
                                                                output.Get(), nullptr);
            }
            if (result == kNoConflict) result = m_provider.CloseProvider(handle);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ((std::array<HRESULT, 4>{}), results);
    EXPECT_EQ(80U, Report().counts.at("PTMergeAndValidatePrintTicket"));
}

}  // namespace
}  // namespace devkit::prntvpt
