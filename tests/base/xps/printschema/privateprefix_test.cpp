#include "base/xps/printschema/privateprefix.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

using base::xps::printschema::EnsurePrivatePrefix;
using base::xps::printschema::PrivatePrefix;
using base::xps::printschema::SetPrivatePrefix;

class PrivatePrefixTest : public testing::Test {
  protected:
    ~PrivatePrefixTest() override { SetPrivatePrefix({}); }
};

TEST_F(PrivatePrefixTest, IsStoredWithAColon) {
    SetPrivatePrefix(L"krk");
    EXPECT_EQ(PrivatePrefix(), L"krk:");
}

TEST_F(PrivatePrefixTest, AnEmptyTextMeansUnset) {
    SetPrivatePrefix(L"krk");
    SetPrivatePrefix(L"");
    EXPECT_EQ(PrivatePrefix(), L"");
}

TEST_F(PrivatePrefixTest, TheFallbackIsTakenOnlyWhileThePrefixIsUnset) {
    SetPrivatePrefix({});
    EnsurePrivatePrefix();
    EXPECT_EQ(PrivatePrefix(), L"ns0000:");
    SetPrivatePrefix(L"krk");
    EnsurePrivatePrefix();
    EXPECT_EQ(PrivatePrefix(), L"krk:");
}

TEST_F(PrivatePrefixTest, IsWholeForEveryThread) {
    const std::wstring first(500, L'a');
    const std::wstring second(20, L'b');
    std::atomic<int> broken = 0;
    std::vector<std::thread> threads;
    SetPrivatePrefix(first);
    for (const std::wstring& prefix : {first, second}) {
        threads.emplace_back([&, prefix] {
            for (int turn = 0; turn < 2000; ++turn) {
                SetPrivatePrefix(prefix);
                const std::wstring read = PrivatePrefix();
                if (read != first + L":" && read != second + L":") ++broken;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(broken, 0);
}

}  // namespace
