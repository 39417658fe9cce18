#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <vector>

#include "base/utility/driverinfo.h"
#include "base/xps/filterpipeline/xpsfilterbase.h"
#include "mockpipeline.h"
#include "mockproperties.h"
#include "platform/comptr.h"

namespace {

std::vector<HANDLE> g_askedPrinters;
bool g_spoolerRefuses = false;

}  // namespace

// The header declares the function without an import slot, so the program's own takes its place.
extern "C" BOOL WINAPI GetPrinterDriverW(HANDLE printer, wchar_t*, DWORD, BYTE* pBuffer, DWORD,
                                         DWORD* pNeeded) {
    static wchar_t dataFile[] = LR"(C:\drivers\p.gpd)";
    g_askedPrinters.push_back(printer);
    *pNeeded = g_spoolerRefuses ? 0 : sizeof(DRIVER_INFO_3W);
    if (pBuffer == nullptr) return FALSE;
    DRIVER_INFO_3W record = {};
    record.pDataFile = dataFile;
    std::memcpy(pBuffer, &record, sizeof(record));
    return TRUE;
}

namespace base::xps::filterpipeline {
namespace {

using platform::ComPtr;
using tests::MakeMock;

class IdleFilter final : public XpsFilterBase {
  public:
    void DoOperation() override {}
    void OnOperationEnd() override {}
    void OnShutdownOperation() override {}
};

class DriverInfoAccessTest : public testing::Test {
  protected:
    DriverInfoAccessTest() {
        g_askedPrinters.clear();
        g_spoolerRefuses = false;
        EXPECT_EQ(S_OK,
                  m_pFilter->InitializeFilter(MakeMock<tests::MockCommunicator>(m_calls).Get(), m_pBag.Get(),
                                              MakeMock<tests::MockPipelineControl>(m_calls).Get()));
    }

    tests::CallRecorder m_calls;
    ComPtr<tests::MockPropertyBag> m_pBag = MakeMock<tests::MockPropertyBag>(m_calls);
    ComPtr<IdleFilter> m_pFilter = ComPtr<IdleFilter>::Adopt(new IdleFilter);
};

TEST_F(DriverInfoAccessTest, IsReadFromThePrinterHandleWhenFirstAskedForAndThenKept) {
    const HANDLE printer = reinterpret_cast<HANDLE>(0x1234);
    m_pBag->SetHandle(L"PrinterHandle", printer);
    const utility::DriverInfo& info = m_pFilter->GetDriverInfo();
    EXPECT_EQ(LR"(C:\drivers)", info.DriverDirectory());
    EXPECT_EQ(&info, &m_pFilter->GetDriverInfo());
    EXPECT_EQ((std::vector<HANDLE>{printer, printer}), g_askedPrinters);
    EXPECT_EQ(1u, m_calls.Count("GetProperty PrinterHandle"));
}

TEST_F(DriverInfoAccessTest, ASpoolerThatRefusesIsAskedAgainTheNextTime) {
    m_pBag->SetHandle(L"PrinterHandle", reinterpret_cast<HANDLE>(0x1234));
    g_spoolerRefuses = true;
    EXPECT_THROW(static_cast<void>(m_pFilter->GetDriverInfo()), std::runtime_error);
    g_spoolerRefuses = false;
    EXPECT_EQ(LR"(C:\drivers)", m_pFilter->GetDriverInfo().DriverDirectory());
}

TEST_F(DriverInfoAccessTest, AValueOfAnotherTypeCarriesNoHandle) {
    m_pBag->SetText(L"PrinterHandle", L"1234");
    g_spoolerRefuses = true;
    EXPECT_THROW(static_cast<void>(m_pFilter->GetDriverInfo()), std::runtime_error);
    EXPECT_EQ(std::vector<HANDLE>{nullptr}, g_askedPrinters);
}

}  // namespace
}  // namespace base::xps::filterpipeline
