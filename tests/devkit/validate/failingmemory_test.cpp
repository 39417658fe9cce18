#include "devkit/validate/failingmemory.h"

#include <gtest/gtest.h>

#include "devkit/pipeline/testfilter/testfilter.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "programfolder.h"

namespace devkit::validate {
namespace {

using platform::ComPtr;

// The test filter's module, without a pipeline.
class FailingMemoryTest : public testing::Test {
  protected:
    void SetUp() override {
        m_module = LoadLibraryW((tests::ProgramFolder() / "testfilter.dll").c_str());
        ASSERT_NE(nullptr, m_module);
        m_memory.emplace(std::vector<HMODULE>{m_module});
    }
    void TearDown() override {
        FreeLibrary(m_module);
        m_memory.reset();
    }

    [[nodiscard]] HRESULT Make(ComPtr<IPrintPipelineFilter>& filter) const {
        using Getter = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
        const auto get =
            reinterpret_cast<Getter>(reinterpret_cast<void*>(GetProcAddress(m_module, "DllGetClassObject")));
        ComPtr<IClassFactory> factory;
        const HRESULT hr = get(testfilter::kClassId, __uuidof(IClassFactory), factory.PutVoid());
        return FAILED(hr)
                   ? hr
                   : factory->CreateInstance(nullptr, __uuidof(IPrintPipelineFilter), filter.PutVoid());
    }

    // Where a filter is made of.
    [[nodiscard]] std::vector<Allocation> Record() {
        m_memory->Record();
        ComPtr<IPrintPipelineFilter> filter;
        EXPECT_EQ(S_OK, Make(filter));
        m_memory->Stop();
        return m_memory->Recorded();
    }

    [[nodiscard]] Allocation RecordLast() {
        const std::vector<Allocation> recorded = Record();
        EXPECT_FALSE(recorded.empty());
        return recorded.empty() ? Allocation() : recorded.back();
    }

    HMODULE m_module = nullptr;
    std::optional<FailingMemory> m_memory;
};

TEST_F(FailingMemoryTest, NotesWhereAModuleAsksForMemoryEachWayOnce) {
    EXPECT_FALSE(m_memory->IsIdle());
    const std::vector<Allocation> recorded = Record();
    ASSERT_FALSE(recorded.empty());
    std::set<std::uint64_t> ways;
    for (const Allocation& allocation : recorded) {
        EXPECT_EQ(0U, NumberOfModule(allocation.site));
        EXPECT_TRUE(ways.insert(allocation.way).second);
    }
    EXPECT_EQ(recorded.size(), Record().size());
}

TEST_F(FailingMemoryTest, WhatFailsIsTheOneAllocationByTheWay) {
    const Allocation last = RecordLast();
    m_memory->Fail(last.way, false, {last.site});
    ComPtr<IPrintPipelineFilter> filter;
    EXPECT_EQ(E_OUTOFMEMORY, Make(filter));
    EXPECT_TRUE(m_memory->HasFailed());
    EXPECT_EQ(S_OK, Make(filter));
}

TEST_F(FailingMemoryTest, OrAllThatFollowAtTheSitesUntilItIsStopped) {
    const Allocation last = RecordLast();
    ComPtr<IPrintPipelineFilter> filter;
    m_memory->Fail(last.way, true, {last.site});
    EXPECT_EQ(E_OUTOFMEMORY, Make(filter));
    EXPECT_EQ(E_OUTOFMEMORY, Make(filter));
    m_memory->Stop();
    EXPECT_EQ(S_OK, Make(filter));
}

TEST_F(FailingMemoryTest, WhatIsAskedForElsewhereComesThrough) {
    const Allocation last = RecordLast();
    m_memory->Fail(last.way, true, {last.site + 1});
    ComPtr<IPrintPipelineFilter> filter;
    EXPECT_EQ(S_OK, Make(filter));
    EXPECT_FALSE(m_memory->HasFailed());
}

TEST_F(FailingMemoryTest, CountsTheBlocksThatTheModuleHolds) {
    Sites sites;
    for (const Allocation& allocation : Record()) sites.insert(allocation.site);
    const std::size_t before = m_memory->BlocksOf(sites);
    ComPtr<IPrintPipelineFilter> filter;
    EXPECT_EQ(S_OK, Make(filter));
    EXPECT_LT(before, m_memory->BlocksOf(sites));
    EXPECT_EQ(0U, m_memory->BlocksOf({}));
    filter.Reset();
    EXPECT_EQ(before, m_memory->BlocksOf(sites));
}

TEST(FailingMemory, AModuleThatAsksForNothingIsIdle) {
    EXPECT_TRUE(FailingMemory({GetModuleHandleW(L"ntdll.dll")}).IsIdle());
}

}  // namespace
}  // namespace devkit::validate
