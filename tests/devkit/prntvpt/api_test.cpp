#include <array>
#include <cstdint>
#include <thread>
#include <utility>

#include "devkit/printschema/names.h"
#include "memorystream.h"
#include "platform/bstr.h"
#include "providertest.h"
#include "ticketsummary.h"

// What the functions of prntvpt answer, as documented or as seen on the platform.

namespace devkit::prntvpt {
namespace {

constexpr HRESULT VersionNotSupported = static_cast<HRESULT>(0x80040001);

class ApiTest : public ProviderTest {
  protected:
    void SetUp() override { Use({}); }
    [[nodiscard]] HPTPROVIDER NotAHandle() const {
        return reinterpret_cast<HPTPROVIDER>(std::uintptr_t{0x1234});
    }
};

TEST_F(ApiTest, OpensVersionOneAlone) {
    HPTPROVIDER handle = NotAHandle();
    EXPECT_EQ(m_provider.OpenProvider(L"SimPrinter", 0, &handle), E_INVALIDARG);
    EXPECT_EQ(handle, nullptr);
    handle = NotAHandle();
    EXPECT_EQ(m_provider.OpenProvider(L"SimPrinter", 2, &handle), VersionNotSupported);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(m_provider.OpenProvider(L"SimPrinter", 1, &handle), S_OK);
    EXPECT_NE(handle, nullptr);
    EXPECT_NE(handle, m_handle);
    EXPECT_EQ(m_provider.CloseProvider(handle), S_OK);
}

TEST_F(ApiTest, OpenNeedsAKnownPrinter) {
    HPTPROVIDER handle = NotAHandle();
    EXPECT_EQ(m_provider.OpenProvider(L"No such printer", 1, &handle), NoSuchPrinter);
    EXPECT_EQ(static_cast<std::uint32_t>(NoSuchPrinter), 0x80070709U);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(m_provider.OpenProvider(L"", 1, &handle), NoSuchPrinter);
    EXPECT_EQ(m_provider.OpenProvider(nullptr, 1, &handle), E_INVALIDARG);
    EXPECT_EQ(m_provider.OpenProvider(L"SimPrinter", 1, nullptr), E_INVALIDARG);
}

TEST_F(ApiTest, PrinterNamesHaveNoCase) {
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(m_provider.OpenProvider(L"SIMPRINTER", 1, &handle), S_OK);
    EXPECT_EQ(m_provider.CloseProvider(handle), S_OK);
}

TEST_F(ApiTest, OpenExFallsBackToVersionOne) {
    HPTPROVIDER handle = nullptr;
    DWORD used = 0;
    EXPECT_EQ(m_provider.OpenProviderEx(L"SimPrinter", 5, 5, &handle, &used), S_OK);
    EXPECT_EQ(used, 1U);
    EXPECT_EQ(m_provider.CloseProvider(handle), S_OK);
}

TEST_F(ApiTest, OpenExNeedsAVersionAndRoomForIt) {
    HPTPROVIDER handle = NotAHandle();
    DWORD used = 9;
    EXPECT_EQ(m_provider.OpenProviderEx(L"SimPrinter", 1, 1, &handle, nullptr), E_INVALIDARG);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(m_provider.OpenProviderEx(L"SimPrinter", 0, 1, &handle, &used), E_INVALIDARG);
    EXPECT_EQ(used, 0U);
    EXPECT_EQ(m_provider.OpenProviderEx(L"SimPrinter", 1, 1, nullptr, &used), E_INVALIDARG);
    EXPECT_EQ(m_provider.OpenProviderEx(L"No such printer", 1, 1, &handle, &used), NoSuchPrinter);
}

TEST_F(ApiTest, SchemaVersionIsOne) {
    DWORD version = 9;
    EXPECT_EQ(m_provider.QuerySchemaVersionSupport(L"SimPrinter", &version), S_OK);
    EXPECT_EQ(version, 1U);
    EXPECT_EQ(m_provider.QuerySchemaVersionSupport(L"No such printer", &version), NoSuchPrinter);
    EXPECT_EQ(version, 0U);
    EXPECT_EQ(m_provider.QuerySchemaVersionSupport(L"SimPrinter", nullptr), E_INVALIDARG);
    EXPECT_EQ(m_provider.QuerySchemaVersionSupport(nullptr, &version), E_INVALIDARG);
}

TEST_F(ApiTest, NothingButNullIsReleased) {
    int memory = 0;
    EXPECT_EQ(m_provider.ReleaseMemory(nullptr), S_OK);
    EXPECT_EQ(m_provider.ReleaseMemory(&memory), E_INVALIDARG);
}

TEST_F(ApiTest, MergeNeedsHandleBaseResultAndScope) {
    const auto base = MemoryStream::Make(DefaultTicket());
    const auto result = MemoryStream::Make();
    const auto merge = [&](HPTPROVIDER handle, IStream* pBase, int scope, IStream* pResult) {
        BSTR error = reinterpret_cast<BSTR>(std::uintptr_t{1});
        const HRESULT hr = m_provider.MergeAndValidatePrintTicket(
            handle, pBase, nullptr, static_cast<EPrintTicketScope>(scope), pResult, &error);
        EXPECT_EQ(error, nullptr);
        return hr;
    };
    EXPECT_EQ(merge(m_handle, nullptr, kPTJobScope, result.Get()), E_INVALIDARG);
    EXPECT_EQ(merge(m_handle, base.Get(), kPTJobScope, nullptr), E_INVALIDARG);
    EXPECT_EQ(merge(m_handle, base.Get(), 3, result.Get()), E_INVALIDARG);
    EXPECT_EQ(merge(m_handle, base.Get(), -1, result.Get()), E_INVALIDARG);
    EXPECT_EQ(base->Position(), 0U);
    EXPECT_EQ(result->Bytes(), "");
    EXPECT_EQ(merge(NotAHandle(), base.Get(), kPTJobScope, result.Get()), E_INVALIDARG);
    EXPECT_EQ(merge(nullptr, base.Get(), kPTJobScope, result.Get()), E_INVALIDARG);
    EXPECT_EQ(Stops(), (std::vector<std::string>{"A00F", "A00F"}));
    ExpectBreaches();
}

TEST_F(ApiTest, MergeReadsAndWritesFromWhereTheStreamsStand) {
    const std::string ticket = DefaultTicket();
    const std::string change =
        Ticket(R"(<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Landscape"/></psf:Feature>)");
    const auto base = MemoryStream::Make("junk" + ticket, 4);
    const auto delta = MemoryStream::Make("junk" + change, 4);
    const auto result = MemoryStream::Make("0123", 4);
    ASSERT_EQ(m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), delta.Get(), kPTJobScope,
                                                     result.Get(), nullptr),
              NoConflict);
    EXPECT_EQ(base->Position(), 4 + ticket.size());
    EXPECT_EQ(delta->Position(), 4 + change.size());
    EXPECT_EQ(result->Position(), result->Bytes().size());
    EXPECT_EQ(Line(std::string_view(result->Bytes()).substr(4), "PageOrientation"),
              "psk:PageOrientation[psk:Landscape]");
    EXPECT_EQ(base->Seeks() + delta->Seeks() + result->Seeks(), 0);
    EXPECT_EQ(base->References() + delta->References() + result->References(), 3U);
}

TEST_F(ApiTest, MergeCompletesShortReadsAndWrites) {
    const auto base = MemoryStream::Make(DefaultTicket());
    const auto result = MemoryStream::Make();
    base->LimitBlocks(1);
    result->LimitBlocks(7);
    ASSERT_EQ(m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), nullptr, kPTJobScope, result.Get(),
                                                     nullptr),
              NoConflict);
    EXPECT_EQ(result->Bytes(), DefaultTicket());
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
    EXPECT_EQ(merge(bad.Get(), nullptr, result.Get()), STG_E_READFAULT);
    EXPECT_EQ(merge(good.Get(), bad.Get(), result.Get()), STG_E_READFAULT);
    const auto again = MemoryStream::Make(DefaultTicket());
    EXPECT_EQ(merge(again.Get(), nullptr, bad.Get()), STG_E_WRITEFAULT);
    EXPECT_EQ(result->Bytes(), "");
}

TEST_F(ApiTest, BadBaseAndBadDeltaAreToldApart) {
    struct Case {
        std::string bytes;
        std::wstring text;
    };
    const std::vector<Case> cases{
        {"", L"empty"},
        {"<a>", L"line 1: Premature end of data in tag a line 1"},
        {"<PrintTicket version=\"1\"/>", L"The root element is not PrintTicket"},
        {Ticket("text"), L"Text is not allowed inside PrintTicket"},
        {Ticket("<psf:Feature/>"), L"A Feature has no name"},
        {Ticket(R"(<psf:Option name="psk:X"/>)"),
         L"The element \"Option\" is not allowed inside PrintTicket"},
        {Ticket(R"(<psf:ParameterInit name="psk:PageX"/><psf:ParameterInit name="psk:PageX"/>)"),
         L"Duplicate definitions exist for feature or parameter PageX"},
        {"<!DOCTYPE a><a/>", L"document type declarations are not allowed"}};
    for (const Case& entry : cases) {
        const WrittenResult base = Merge(entry.bytes, DefaultTicket());
        EXPECT_EQ(base.result, BadBase);
        EXPECT_EQ(base.error, L"Base ticket: " + entry.text);
        EXPECT_EQ(base.bytes, "");
        const WrittenResult delta = MergeWithDefault(entry.bytes);
        EXPECT_EQ(delta.result, BadDelta);
        EXPECT_EQ(delta.error, L"Delta ticket: " + entry.text);
        EXPECT_EQ(delta.bytes, "");
    }
    // The base is read first.
    EXPECT_EQ(Merge("<a>", "<b>").result, BadBase);
}

TEST_F(ApiTest, MalformedTicketsNeedNoRoomForTheText) {
    const auto base = MemoryStream::Make("<a>");
    const auto result = MemoryStream::Make();
    EXPECT_EQ(m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), nullptr, kPTJobScope, result.Get(),
                                                     nullptr),
              BadBase);
}

TEST_F(ApiTest, CapabilitiesNeedHandleAndOutput) {
    BSTR error = reinterpret_cast<BSTR>(std::uintptr_t{1});
    EXPECT_EQ(m_provider.GetPrintCapabilities(m_handle, nullptr, nullptr, &error), E_INVALIDARG);
    EXPECT_EQ(error, nullptr);
    const auto output = MemoryStream::Make();
    EXPECT_EQ(m_provider.GetPrintCapabilities(NotAHandle(), nullptr, output.Get(), nullptr), E_INVALIDARG);
    EXPECT_EQ(Stops(), (std::vector<std::string>{"A00F"}));
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
    EXPECT_EQ(merged, E_INVALIDARG);
    EXPECT_EQ(closed, E_HANDLE);
    EXPECT_EQ(Stops(), (std::vector<std::string>{"A010", "A011"}));
    EXPECT_EQ(Merge(DefaultTicket(), std::nullopt).result, NoConflict);
    ExpectBreaches();
}

TEST_F(ApiTest, ThreadWarnOnlyNotesAForeignThread) {
    Use({"thread=warn"});
    const HPTPROVIDER handle = std::exchange(m_handle, nullptr);
    HRESULT closed = E_FAIL;
    std::thread([&] { closed = m_provider.CloseProvider(handle); }).join();
    EXPECT_EQ(closed, S_OK);
    EXPECT_EQ(Stops(), (std::vector<std::string>{"A011"}));
    ExpectBreaches();
}

TEST_F(ApiTest, ThreadOffLetsAnyThreadIn) {
    Use({"thread=off"});
    const HPTPROVIDER handle = std::exchange(m_handle, nullptr);
    HRESULT closed = E_FAIL;
    std::thread([&] { closed = m_provider.CloseProvider(handle); }).join();
    EXPECT_EQ(closed, S_OK);
}

TEST_F(ApiTest, UseAfterCloseIsNoticed) {
    const HPTPROVIDER handle = std::exchange(m_handle, nullptr);
    EXPECT_EQ(m_provider.CloseProvider(handle), S_OK);
    EXPECT_EQ(m_provider.CloseProvider(handle), E_HANDLE);
    const auto base = MemoryStream::Make(DefaultTicket());
    const auto result = MemoryStream::Make();
    EXPECT_EQ(m_provider.MergeAndValidatePrintTicket(handle, base.Get(), nullptr, kPTJobScope, result.Get(),
                                                     nullptr),
              E_INVALIDARG);
    EXPECT_EQ(Stops(), (std::vector<std::string>{"A00E", "A00E"}));
    ExpectBreaches();
}

TEST_F(ApiTest, ForeignHandleIsNoticed) {
    EXPECT_EQ(m_provider.CloseProvider(NotAHandle()), E_HANDLE);
    EXPECT_EQ(m_provider.CloseProvider(nullptr), E_HANDLE);
    ASSERT_EQ(Report().breaches.size(), 2U);
    EXPECT_EQ(Report().breaches[0].stop, "A00F");
    EXPECT_EQ(Report().breaches[0].text, "PTCloseProvider: the handle 4660 was never given out");
    ExpectBreaches();
}

TEST_F(ApiTest, HandleThatIsOpenAtTheEndIsALeakOnce) {
    ASSERT_EQ(Report().openHandles.size(), 1U);
    EXPECT_EQ(Report().openHandles[0].printer, "SimPrinter");
    EXPECT_EQ(Report().openHandles[0].thread, GetCurrentThreadId());
    m_provider.Finish();
    m_provider.Finish();
    EXPECT_EQ(Stops(), (std::vector<std::string>{"A012"}));
    ExpectBreaches();
}

TEST_F(ApiTest, HandleThatAThreadLeavesOpenIsALeak) {
    DWORD thread = 0;
    std::thread([&] {
        thread = GetCurrentThreadId();
        HPTPROVIDER handle = nullptr;
        EXPECT_EQ(m_provider.OpenProvider(L"SimPrinter", 1, &handle), S_OK);
    }).join();
    m_provider.ThreadEnded(thread);
    EXPECT_EQ(Stops(), (std::vector<std::string>{"A012"}));
    ExpectBreaches();
}

TEST_F(ApiTest, HandlesAreNeverGivenOutTwice) {
    HPTPROVIDER first = nullptr;
    HPTPROVIDER second = nullptr;
    EXPECT_EQ(m_provider.OpenProvider(L"SimPrinter", 1, &first), S_OK);
    EXPECT_EQ(m_provider.CloseProvider(first), S_OK);
    EXPECT_EQ(m_provider.OpenProvider(L"SimPrinter", 1, &second), S_OK);
    EXPECT_NE(first, second);
    EXPECT_EQ(m_provider.CloseProvider(second), S_OK);
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
            if (result == NoConflict) result = m_provider.CloseProvider(handle);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(results, (std::array<HRESULT, 4>{}));
    EXPECT_EQ(Report().counts.at("PTMergeAndValidatePrintTicket"), 80U);
}

}  // namespace
}  // namespace devkit::prntvpt
