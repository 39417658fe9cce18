#include "base/xps/printschema/privateprefix.h"

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "failingallocation.h"

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
    EXPECT_EQ(L"krk:", PrivatePrefix());
}

TEST_F(PrivatePrefixTest, AnEmptyTextMeansUnset) {
    SetPrivatePrefix(L"krk");
    SetPrivatePrefix(L"");
    EXPECT_EQ(L"", PrivatePrefix());
}

TEST_F(PrivatePrefixTest, TheFallbackIsTakenOnlyWhileThePrefixIsUnset) {
    SetPrivatePrefix({});
    EnsurePrivatePrefix();
    EXPECT_EQ(L"ns0000:", PrivatePrefix());
    SetPrivatePrefix(L"krk");
    EnsurePrivatePrefix();
    EXPECT_EQ(L"krk:", PrivatePrefix());
}

// A thread that reads the prefix is stopped where it makes its copy, while another one is at its operation.
class PrefixIsReadTest : public PrivatePrefixTest {
  protected:
    // Whether the operation ends before the read does.
    bool EndsWhileItIsRead(const std::function<void()>& operation) {
        SetPrivatePrefix(m_prefix);
        std::atomic<bool> isInside = false;
        std::atomic<bool> isDone = false;
        bool wasDone = false;
        std::thread other([&] {
            while (!isInside) Sleep(0);
            operation();
            isDone = true;
        });
        const tests::BeforeAllocation copy(m_prefix.size() * sizeof(wchar_t), [&] {
            isInside = true;
            for (int turn = 0; turn < 20 && !isDone; ++turn) Sleep(10);
            wasDone = isDone;
        });
        m_read = PrivatePrefix();
        EXPECT_TRUE(copy.WasCalled()) << "the read makes no copy";
        isInside = true;
        other.join();
        return wasDone;
    }

    const std::wstring m_prefix = std::wstring(3000, L'a');
    std::wstring m_read;
};

TEST_F(PrefixIsReadTest, ASetterWaits) {
    EXPECT_FALSE(EndsWhileItIsRead([] { SetPrivatePrefix(L"krk"); }));
    EXPECT_EQ(m_prefix + L":", m_read);
    EXPECT_EQ(L"krk:", PrivatePrefix());
}

TEST_F(PrefixIsReadTest, TheFallbackWaits) {
    EXPECT_FALSE(EndsWhileItIsRead(EnsurePrivatePrefix));
    EXPECT_EQ(m_prefix + L":", m_read);
    EXPECT_EQ(m_prefix + L":", PrivatePrefix());
}

}  // namespace
