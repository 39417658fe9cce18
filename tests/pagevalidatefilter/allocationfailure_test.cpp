#include <gtest/gtest.h>

#include <string>

#include "failingallocation.h"
#include "pagevalidatefilter/filterjob.h"
#include "pagevalidatefilter/module.h"
#include "pagevalidatefilter/pagevalidatexpsfilter.h"
#include "platform/comptr.h"

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** ppObject);

namespace pagevalidatefilter {
namespace {

using platform::ComPtr;
using tests::FailingAllocation;

TEST(AllocationFailureTest, DllGetClassObjectAnswersOutOfMemoryAndLeavesTheModuleCountAsItWas) {
    void* pFactory = &pFactory;
    HRESULT hr = S_OK;
    {
        const FailingAllocation failing(1);
        hr = DllGetClassObject(CLSID_PageValidateXpsFilter, __uuidof(IClassFactory), &pFactory);
    }
    EXPECT_EQ(E_OUTOFMEMORY, hr);
    EXPECT_EQ(nullptr, pFactory);
    EXPECT_EQ(0, ModuleCount());
}

TEST(AllocationFailureTest, CreateInstanceAnswersOutOfMemoryWhicheverAllocationFails) {
    ComPtr<IClassFactory> pFactory;
    ASSERT_EQ(S_OK,
              DllGetClassObject(CLSID_PageValidateXpsFilter, __uuidof(IClassFactory), pFactory.PutVoid()));
    long nth = 0;
    for (bool hasFailed = true; hasFailed;) {
        // Many, where nothing has made the tables yet that the product makes once.
        ASSERT_LT(nth, 1000);
        void* pFilter = &pFilter;
        HRESULT hr = S_OK;
        {
            const FailingAllocation failing(++nth);
            hr = pFactory->CreateInstance(nullptr, __uuidof(IPrintPipelineFilter), &pFilter);
            hasFailed = failing.HasFailed();
        }
        EXPECT_EQ(hasFailed ? E_OUTOFMEMORY : S_OK, hr) << nth;
        EXPECT_EQ(hasFailed ? 1 : 2, ModuleCount()) << nth;
        // What a call that failed leaves in the pointer is nothing that could be released.
        ASSERT_EQ(hasFailed, pFilter == nullptr) << nth;
        if (!hasFailed) static_cast<IUnknown*>(pFilter)->Release();
    }
    EXPECT_GT(nth, 2);
    EXPECT_EQ(1, ModuleCount());
}

class JobWithoutMemoryTest : public FilterJobTest {
  protected:
    void SetUp() override {
        m_tickets[kPTPageScope] = TicketText(L"LongEdgeFirst");
        AddDocument(1);
        ASSERT_EQ(S_OK, Run());
        ASSERT_NE(nullptr, m_pages[0]->Written());
        m_whole = m_pages[0]->Written()->Bytes();
    }

    // The page's new markup in a job that lacks nothing.
    std::string m_whole;
};

TEST_F(JobWithoutMemoryTest, WhicheverAllocationFailsTheJobEndsAndNothingIsLeft) {
    long nth = 0;
    for (bool hasFailed = true; hasFailed;) {
        ASSERT_LT(nth, 100'000);
        Prepare();
        AddDocument(1);
        HRESULT hr = S_OK;
        {
            const FailingAllocation failing(++nth);
            hr = Run();
            hasFailed = failing.HasFailed();
        }
        SCOPED_TRACE(nth);
        // Memory that the DOM or a mock lacks comes back as a failure of theirs. A setting that cannot be
        // read stays as it was, so a job that succeeds may leave its page alone; it never sends half a page.
        EXPECT_TRUE(hr == E_OUTOFMEMORY || hr == E_FAIL || hr == S_OK) << tests::HresultText(hr);
        if (hr == S_OK) {
            EXPECT_EQ(3u, m_pWriter->Sent().size());
            const tests::MockWriteStream* pWritten = m_pages[0]->Written();
            EXPECT_TRUE(pWritten == nullptr || pWritten->Bytes() == m_whole);
        }
        m_pFilter.Reset();
        EXPECT_EQ(0, ModuleCount());
        EXPECT_EQ(2u, m_pReader->References());
        EXPECT_EQ(2u, m_pWriter->References());
    }
    EXPECT_GT(nth, 1000);
}

}  // namespace
}  // namespace pagevalidatefilter
