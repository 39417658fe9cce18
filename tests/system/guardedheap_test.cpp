#include "guardedheap.h"

#include <cstdint>

#include "filtertest.h"
#include "platform/comptr.h"

namespace systemtest {
namespace {

class GuardedHeapTest : public FilterTest {
  protected:
    void SetUp() override {
        if (sizeof(void*) < 8) GTEST_SKIP() << "the addresses of 32 bits run out";
        UnloadFilter();
        LoadFilter();
        if (!IsHeapGuarded()) tests::GuardHeapOf(FilterHandle());
    }
    void TearDown() override {
        UnloadFilter();
        LoadFilter();
    }

    static bool IsCommitted(const void* pByte) {
        MEMORY_BASIC_INFORMATION facts = {};
        EXPECT_NE(0u, VirtualQuery(pByte, &facts, sizeof(facts)));
        return facts.State == MEM_COMMIT;
    }
};

TEST_F(GuardedHeapTest, ABlockOfTheFilterEndsAtAPageThatCannotBeTouchedAndIsGoneOnceItIsFreed) {
    using GetClassObject = HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**);
    auto* const pGetClassObject = reinterpret_cast<GetClassObject*>(
        reinterpret_cast<void*>(GetProcAddress(FilterHandle(), "DllGetClassObject")));
    platform::ComPtr<IClassFactory> pFactory;
    const tests::GuardedBlocks before = tests::CountGuardedBlocks();
    ASSERT_EQ(S_OK, pGetClassObject(kFilterClass, __uuidof(IClassFactory), pFactory.PutVoid()));
    EXPECT_EQ(before.allocated + 1, tests::CountGuardedBlocks().allocated);
    const char* const pObject = reinterpret_cast<const char*>(pFactory.Get());
    EXPECT_TRUE(IsCommitted(pObject));
    const std::uintptr_t page = 4096;
    const std::uintptr_t next = (reinterpret_cast<std::uintptr_t>(pObject) / page + 1) * page;
    EXPECT_FALSE(IsCommitted(reinterpret_cast<const void*>(next)));
    EXPECT_GT(64u, next - reinterpret_cast<std::uintptr_t>(pObject)) << "the object does not end at the page";
    pFactory.Reset();
    EXPECT_EQ(before.freed + 1, tests::CountGuardedBlocks().freed);
    EXPECT_FALSE(IsCommitted(pObject));
}

// But for what the runtime keeps of a thread, which no later job takes again.
TEST_F(GuardedHeapTest, AJobGivesEveryBlockBack) {
    const auto held = [] {
        const tests::GuardedBlocks blocks = tests::CountGuardedBlocks();
        return blocks.allocated - blocks.freed;
    };
    const auto run = [] {
        Configure();
        const auto outcome = Run(Options());
        EXPECT_EQ(S_OK, outcome.result);
        ExpectNothingLeft(outcome);
    };
    run();
    const std::size_t allocated = tests::CountGuardedBlocks().allocated;
    const std::size_t before = held();
    run();
    EXPECT_LT(allocated + 1000, tests::CountGuardedBlocks().allocated);
    EXPECT_EQ(before, held());
}

}  // namespace
}  // namespace systemtest
