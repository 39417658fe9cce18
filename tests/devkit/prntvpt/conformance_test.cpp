#include <optional>
#include <string>
#include <thread>

#include "conformancetest.h"
#include "memorystream.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace tests;

TEST_P(ConformanceTest, UnknownPrinterIsAWin32Error) {
    HPTPROVIDER handle = nullptr;
    const HRESULT hr = Open(L"There is no such printer", 1, &handle);
    EXPECT_EQ(FACILITY_WIN32, HRESULT_FACILITY(hr));
    EXPECT_EQ(ERROR_INVALID_PRINTER_NAME, HRESULT_CODE(hr));
    EXPECT_EQ(nullptr, handle);
}

TEST_P(ConformanceTest, VersionZeroIsRefused) {
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(E_INVALIDARG, Open(L"There is no such printer", 0, &handle));
}

TEST_P(ConformanceTest, OpenExNeedsAVersionAndRoomForIt) {
    HPTPROVIDER handle = nullptr;
    DWORD used = 0;
    EXPECT_EQ(E_INVALIDARG, OpenEx(L"There is no such printer", 1, 1, &handle, nullptr));
    EXPECT_EQ(E_INVALIDARG, OpenEx(L"There is no such printer", 0, 1, &handle, &used));
}

TEST_P(ConformanceTest, HandleThatIsNoneIsRefused) {
    const auto base = MemoryStream::Make(Ticket(""));
    const auto output = MemoryStream::Make();
    EXPECT_EQ(E_INVALIDARG, MergeStreams(nullptr, base.Get(), nullptr, kPTJobScope, output.Get(), nullptr));
    EXPECT_EQ(E_HANDLE, Close(nullptr));
}

TEST_P(PrinterConformanceTest, VersionTwoIsNotSupported) {
    if (HasGaps()) GTEST_SKIP() << "known gap: E_INVALIDARG";
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(kVersionNotSupported, Open(m_printer.c_str(), 2, &handle));
}

TEST_P(PrinterConformanceTest, OpenExFallsBackToVersionOne) {
    HPTPROVIDER handle = nullptr;
    DWORD used = 0;
    ASSERT_EQ(S_OK, OpenEx(m_printer.c_str(), 5, 5, &handle, &used));
    EXPECT_EQ(1U, used);
    EXPECT_EQ(S_OK, Close(handle));
}

TEST_P(PrinterConformanceTest, HandleIsBoundToItsThread) {
    HRESULT merged = S_OK;
    std::thread([&] {
        const auto base = MemoryStream::Make(Ticket(""));
        const auto output = MemoryStream::Make();
        merged = MergeStreams(m_handle, base.Get(), nullptr, kPTJobScope, output.Get(), nullptr);
    }).join();
    EXPECT_EQ(E_INVALIDARG, merged);
}

TEST_P(PrinterConformanceTest, MergeSucceedsWithACodeThatIsNotSOk) {
    const WrittenResult merged = Merge(Ticket(""), nullptr);
    EXPECT_TRUE(merged.result == kNoConflict || merged.result == kConflictResolved);
    EXPECT_EQ(std::nullopt, merged.error);
}

TEST_P(PrinterConformanceTest, MergeLeavesTheResultAtItsEnd) {
    const auto base = MemoryStream::Make(Ticket(""));
    const auto output = MemoryStream::Make();
    ASSERT_TRUE(SUCCEEDED(MergeStreams(m_handle, base.Get(), nullptr, kPTJobScope, output.Get(), nullptr)));
    EXPECT_GT(output->Position(), 0U);
    EXPECT_EQ(output->Bytes().size(), output->Position());
}

TEST_P(PrinterConformanceTest, ResultHoldsNoWiderScope) {
    const WrittenResult job = Merge(Ticket(""), nullptr);
    for (const std::string& line : Summarize(Merge(job.bytes, nullptr, kPTPageScope).bytes)) {
        EXPECT_NE(std::string::npos, line.find(":Page")) << line;
    }
}

TEST_P(PrinterConformanceTest, MergeOfItsOwnResultHasNoConflict) {
    const WrittenResult job = Merge(Ticket(""), nullptr);
    const WrittenResult again = Merge(job.bytes, nullptr);
    EXPECT_EQ(kNoConflict, again.result);
    EXPECT_EQ(Summarize(job.bytes), Summarize(again.bytes));
}

TEST_P(PrinterConformanceTest, BadBaseAndBadDeltaAreToldApartWithAText) {
    if (HasGaps()) GTEST_SKIP() << "known gap: there is no text, and the delta is not told apart";
    const std::string bad = Ticket(R"(<psf:Option name="psk:X"/>)");
    const WrittenResult base = Merge(bad, nullptr);
    EXPECT_EQ(kBadBase, base.result);
    EXPECT_NE(std::nullopt, base.error);
    const WrittenResult delta = Merge(Ticket(""), bad.c_str());
    EXPECT_EQ(kBadDelta, delta.result);
    EXPECT_NE(std::nullopt, delta.error);
}

TEST_P(PrinterConformanceTest, ForeignNamespaceIsRemoved) {
    const std::string delta =
        Ticket(R"(<psf:Feature name="acme:PageStamp"><psf:Option name="acme:On"/></psf:Feature>)");
    EXPECT_EQ(std::string::npos, Merge(Ticket(""), delta.c_str()).bytes.find("PageStamp"));
}

RUN_FOR_BOTH_PROVIDERS(ConformanceTest);
RUN_FOR_BOTH_PROVIDERS(PrinterConformanceTest);

}  // namespace
}  // namespace devkit::prntvpt
