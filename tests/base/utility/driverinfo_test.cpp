#include "base/utility/driverinfo.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "importseam.h"
#include "thrown.h"

namespace {

// A spooler with one record: what DriverInfo asks of it, and what it answers.
struct Spooler {
    struct Call {
        HANDLE printer;
        const wchar_t* environment;
        DWORD level;
        bool hasBuffer;
        DWORD size;
        bool operator==(const Call&) const = default;
    };

    std::wstring dataFile;
    bool hasDataFile = true;
    bool knowsSize = true;
    bool givesRecord = true;
    std::vector<Call> calls;
};
Spooler* g_pSpooler = nullptr;

DWORD RecordSize() {
    return static_cast<DWORD>(sizeof(DRIVER_INFO_3W) + (g_pSpooler->dataFile.size() + 1) * sizeof(wchar_t));
}

}  // namespace

// The header declares the function without an import slot, so the program's own takes its place.
extern "C" BOOL WINAPI GetPrinterDriverW(HANDLE printer, wchar_t* environment, DWORD level, BYTE* pBuffer,
                                         DWORD size, DWORD* pNeeded) {
    g_pSpooler->calls.push_back({printer, environment, level, pBuffer != nullptr, size});
    *pNeeded = g_pSpooler->knowsSize ? RecordSize() : 0;
    if (pBuffer == nullptr || !g_pSpooler->givesRecord || size < RecordSize()) return FALSE;
    DRIVER_INFO_3W record = {};
    record.cVersion = 3;
    wchar_t* pText = reinterpret_cast<wchar_t*>(pBuffer + sizeof(record));
    std::memcpy(pText, g_pSpooler->dataFile.c_str(), RecordSize() - sizeof(record));
    if (g_pSpooler->hasDataFile) record.pDataFile = pText;
    std::memcpy(pBuffer, &record, sizeof(record));
    return TRUE;
}

namespace base::utility {
namespace {

const HANDLE kPrinter = reinterpret_cast<HANDLE>(0x1234);

constexpr char kFailure[] = "base/utility/driverinfo.cpp(LINE) : GetPrinterDriver was failed.\n";

class DriverInfoTest : public testing::Test {
  protected:
    DriverInfoTest() { g_pSpooler = &m_spooler; }
    ~DriverInfoTest() override { g_pSpooler = nullptr; }

    // What reading the record throws.
    static std::string Failure() {
        return tests::Thrown<std::runtime_error>([] { const DriverInfo info(kPrinter); });
    }

    Spooler m_spooler;
};

TEST_F(DriverInfoTest, AsksForTheSizeAndThenForTheRecord) {
    m_spooler.dataFile = LR"(C:\drivers\p.gpd)";
    const DriverInfo info(kPrinter);
    const std::vector<Spooler::Call> expected = {{kPrinter, nullptr, 3, false, 0},
                                                 {kPrinter, nullptr, 3, true, RecordSize()}};
    EXPECT_EQ(expected, m_spooler.calls);
    EXPECT_EQ(3u, info.Record().cVersion);
    EXPECT_STREQ(LR"(C:\drivers\p.gpd)", info.Record().pDataFile);
    EXPECT_EQ(LR"(C:\drivers)", info.DriverDirectory());
}

TEST_F(DriverInfoTest, ADataFilePathWithForwardSlashesIsCutAtTheLastOne) {
    m_spooler.dataFile = L"C:/drivers/x/p.gpd";
    EXPECT_EQ(L"C:/drivers/x", DriverInfo(kPrinter).DriverDirectory());
}

TEST_F(DriverInfoTest, APathWithoutAnySeparatorKeepsTheWholePathAsTheDirectory) {
    m_spooler.dataFile = L"p.gpd";
    EXPECT_EQ(L"p.gpd", DriverInfo(kPrinter).DriverDirectory());
}

TEST_F(DriverInfoTest, ARecordWithoutADataFileHasNoDirectory) {
    m_spooler.hasDataFile = false;
    EXPECT_EQ(L"", DriverInfo(kPrinter).DriverDirectory());
}

TEST_F(DriverInfoTest, ASpoolerThatTellsNoSizeIsAFailure) {
    m_spooler.knowsSize = false;
    EXPECT_EQ(kFailure, Failure());
    EXPECT_EQ(1u, m_spooler.calls.size());
}

TEST_F(DriverInfoTest, ASpoolerThatRefusesTheRecordIsAFailure) {
    m_spooler.givesRecord = false;
    EXPECT_EQ(kFailure, Failure());
    EXPECT_EQ(2u, m_spooler.calls.size());
}

TEST_F(DriverInfoTest, TheSystemsSpoolerRefusesAHandleThatIsNone) {
    const auto pSystem =
        tests::SystemFunction<decltype(GetPrinterDriverW)>(L"winspool.drv", "GetPrinterDriverW");
    DWORD needed = 0;
    EXPECT_FALSE(pSystem(nullptr, nullptr, 3, nullptr, 0, &needed));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), GetLastError());
    EXPECT_EQ(0u, needed);
}

}  // namespace
}  // namespace base::utility
