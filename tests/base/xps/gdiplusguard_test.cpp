#include "base/xps/gdiplusguard.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace base::xps {
namespace {

TEST(GdiplusGuardTest, StartsWithTheFirstGuardAndShutsDownWithTheLast) {
    ASSERT_EQ(0u, GdiplusGuard::UseCount());
    EXPECT_EQ(0u, GdiplusGuard::Token());
    EXPECT_EQ(Gdiplus::GdiplusNotInitialized, GdiplusGuard::LastStatus());

    std::optional<GdiplusGuard> first(std::in_place);
    EXPECT_EQ(1u, GdiplusGuard::UseCount());
    EXPECT_EQ(Gdiplus::Ok, GdiplusGuard::LastStatus());
    const ULONG_PTR token = GdiplusGuard::Token();
    EXPECT_NE(0u, token);

    std::optional<GdiplusGuard> second(std::in_place);
    EXPECT_EQ(2u, GdiplusGuard::UseCount());
    EXPECT_EQ(token, GdiplusGuard::Token());

    first.reset();
    EXPECT_EQ(1u, GdiplusGuard::UseCount());
    EXPECT_EQ(token, GdiplusGuard::Token());
    EXPECT_EQ(Gdiplus::Ok, GdiplusGuard::LastStatus());

    second.reset();
    EXPECT_EQ(0u, GdiplusGuard::UseCount());
    EXPECT_EQ(0u, GdiplusGuard::Token());
    EXPECT_EQ(Gdiplus::GdiplusNotInitialized, GdiplusGuard::LastStatus());
}

TEST(GdiplusGuardTest, StartsAgainAfterAShutdown) {
    for (int round = 0; round < 3; ++round) {
        const GdiplusGuard guard;
        EXPECT_EQ(1u, GdiplusGuard::UseCount());
        EXPECT_EQ(Gdiplus::Ok, GdiplusGuard::LastStatus());
    }
    EXPECT_EQ(Gdiplus::GdiplusNotInitialized, GdiplusGuard::LastStatus());
}

TEST(GdiplusGuardTest, NoGuardIsAliveWhileGdiplusIsDownWhenThreadsStartAndStopIt) {
    std::atomic<int> failures = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&failures] {
            for (int round = 0; round < 50; ++round) {
                const GdiplusGuard guard;
                if (GdiplusGuard::LastStatus() != Gdiplus::Ok || GdiplusGuard::UseCount() == 0) ++failures;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, failures);
    EXPECT_EQ(0u, GdiplusGuard::UseCount());
    EXPECT_EQ(Gdiplus::GdiplusNotInitialized, GdiplusGuard::LastStatus());
}

}  // namespace
}  // namespace base::xps
