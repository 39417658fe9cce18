#include "devkit/pipeline/usertoken.h"

#include <gtest/gtest.h>

#include <vector>

namespace devkit::pipeline {
namespace {

TEST(UserToken, IsOpenUntilItsHandleIsClosed) {
    const UserToken token;
    EXPECT_TRUE(token.IsOpen());
    CloseHandle(token.Get());
    EXPECT_FALSE(token.IsOpen());
}

TEST(UserToken, IsNotMistakenForWhatHasItsNumberNow) {
    const UserToken token;
    CloseHandle(token.Get());
    // One of the next handles gets the number that has become free.
    std::vector<HANDLE> events;
    for (int i = 0; i < 64; ++i) events.push_back(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    EXPECT_FALSE(token.IsOpen());
    for (const HANDLE event : events) CloseHandle(event);
    const UserToken other;
    EXPECT_FALSE(token.IsOpen());
    EXPECT_TRUE(other.IsOpen());
}

TEST(UserToken, CanBeImpersonatedWith) {
    const UserToken token;
    EXPECT_FALSE(IsImpersonating());
    ASSERT_TRUE(SetThreadToken(nullptr, token.Get()));
    EXPECT_TRUE(IsImpersonating());
    RevertToSelf();
    EXPECT_FALSE(IsImpersonating());
}

}  // namespace
}  // namespace devkit::pipeline
