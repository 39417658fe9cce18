#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "base/xps/filterpipeline/xpsfilterbase.h"
#include "importseam.h"
#include "mockpipeline.h"
#include "mockproperties.h"
#include "platform/comptr.h"

namespace {

// What entering an apartment answers; with S_OK it is entered.
std::atomic<HRESULT> g_refusal = S_OK;
std::vector<HRESULT> g_entries;
int g_exits = 0;

HRESULT WINAPI RefusingCoInitializeEx(void* pReserved, DWORD flags) {
    static const auto pSystem =
        tests::SystemFunction<HRESULT WINAPI(void*, DWORD)>(L"ole32.dll", "CoInitializeEx");
    const HRESULT hr = g_refusal == S_OK ? pSystem(pReserved, flags) : g_refusal.load();
    g_entries.push_back(hr);
    return hr;
}

void WINAPI CountingCoUninitialize() {
    static const auto pSystem = tests::SystemFunction<void WINAPI()>(L"ole32.dll", "CoUninitialize");
    ++g_exits;
    pSystem();
}

}  // namespace

TEST_IMPORT(CoInitializeEx, 8, RefusingCoInitializeEx)
TEST_IMPORT(CoUninitialize, 0, CountingCoUninitialize)

namespace base::xps::filterpipeline {
namespace {

using platform::ComPtr;
using tests::MakeMock;

using Calls = std::vector<std::string>;

class NotingFilter final : public XpsFilterBase {
  public:
    explicit NotingFilter(tests::CallRecorder& calls) : m_calls(calls) {}

    void DoOperation() override { static_cast<void>(m_calls.Enter("DoOperation")); }
    void OnOperationEnd() override { static_cast<void>(m_calls.Enter("OnOperationEnd")); }
    void OnShutdownOperation() override {}

  private:
    tests::CallRecorder& m_calls;
};

class ApartmentFailureTest : public testing::Test {
  protected:
    ApartmentFailureTest() {
        EXPECT_EQ(S_OK, m_pFilter->InitializeFilter(MakeMock<tests::MockCommunicator>(m_calls).Get(),
                                                    MakeMock<tests::MockPropertyBag>(m_calls).Get(),
                                                    MakeMock<tests::MockPipelineControl>(m_calls).Get()));
        m_calls.Clear();
    }
    ~ApartmentFailureTest() override { g_refusal = S_OK; }

    // The result of an operation on a new thread, whose entries and exits alone are counted.
    HRESULT StartWhen(HRESULT refusal) {
        g_refusal = refusal;
        HRESULT result = S_FALSE;
        std::thread([&] {
            g_entries.clear();
            g_exits = 0;
            result = m_pFilter->StartOperation();
        }).join();
        g_refusal = S_OK;
        return result;
    }

    tests::CallRecorder m_calls;
    ComPtr<NotingFilter> m_pFilter = ComPtr<NotingFilter>::Adopt(new NotingFilter(m_calls));
};

TEST_F(ApartmentFailureTest, AThreadThatCanEnterNoApartmentGetsTheCodeAtOnceAndNothingRuns) {
    for (const HRESULT refusal : {E_OUTOFMEMORY, E_INVALIDARG, E_UNEXPECTED, CO_E_NOT_SUPPORTED}) {
        EXPECT_EQ(refusal, StartWhen(refusal));
        EXPECT_EQ(Calls{}, m_calls.Calls());
        EXPECT_EQ(std::vector<HRESULT>{refusal}, g_entries);
        EXPECT_EQ(0, g_exits);
    }
}

TEST_F(ApartmentFailureTest, AnApartmentOfAnotherKindIsNeitherAFailureNorLeft) {
    EXPECT_EQ(S_OK, StartWhen(RPC_E_CHANGED_MODE));
    EXPECT_EQ((Calls{"DoOperation", "OnOperationEnd"}), m_calls.Calls());
    EXPECT_EQ(std::vector<HRESULT>{RPC_E_CHANGED_MODE}, g_entries);
    EXPECT_EQ(0, g_exits);
}

TEST_F(ApartmentFailureTest, AnApartmentThatWasEnteredIsLeftOnce) {
    EXPECT_EQ(S_OK, StartWhen(S_OK));
    EXPECT_EQ(1u, g_entries.size());
    EXPECT_EQ(1, g_exits);
}

TEST_F(ApartmentFailureTest, AnApartmentThatWasEnteredBeforeIsEnteredAndLeftOnceMore) {
    g_entries.clear();
    g_exits = 0;
    EXPECT_EQ(S_OK, m_pFilter->StartOperation());
    EXPECT_EQ(std::vector<HRESULT>{S_FALSE}, g_entries);
    EXPECT_EQ(1, g_exits);
}

}  // namespace
}  // namespace base::xps::filterpipeline
