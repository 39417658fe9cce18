#include "base/logging/exceptions.h"

#include <gtest/gtest.h>

#include "base/logging/boundary.h"

namespace base::exception {
namespace {

TEST(HresultErrorTest, UnknownHresultGivesTextInLowerCaseHexadecimalAndTwoLineBreaks) {
    EXPECT_STREQ("a/b.cpp(7) : Unknown error 0xa0b0c0d\n\n",
                 HresultError(static_cast<HRESULT>(0x0A0B0C0D), "a/b.cpp", 7).what());
}

TEST(HresultErrorTest, KnownHresultGivesSystemTextWithItsOwnLineBreakAndOneMore) {
    const std::string message = HresultError(E_OUTOFMEMORY, "a/b.cpp", 7).what();
    EXPECT_EQ(0u, message.find("a/b.cpp(7) : "));
    ASSERT_GE(message.size(), 16u);
    EXPECT_EQ("\r\n\n", message.substr(message.size() - 3));
}

TEST(HresultErrorTest, CaughtAtBoundaryReturnsExactlyTheStoredCodeAlsoASuccessCode) {
    const auto raise = [](HRESULT hr) {
        return logging::Guarded([hr]() -> HRESULT { throw HresultError(hr, "f", 1); });
    };
    EXPECT_EQ(E_ACCESSDENIED, raise(E_ACCESSDENIED));
    EXPECT_EQ(S_OK, raise(S_OK));
    EXPECT_EQ(static_cast<HRESULT>(0x00040002), raise(static_cast<HRESULT>(0x00040002)));
}

TEST(HresultErrorTest, IsCopyableByValue) {
    const HresultError original(E_PENDING, "f", 1);
    const HresultError copy = original;
    EXPECT_EQ(E_PENDING, copy.GetHresult());
    EXPECT_STREQ(original.what(), copy.what());
}

TEST(ErrorTest, IdErrorsAreErrorsAndNotSupportedIsNot) {
    EXPECT_THROW(throw InvalidFeatureIdError("x"), Error);
    EXPECT_THROW(throw InvalidOptionIdError("x"), Error);
    EXPECT_FALSE((std::is_base_of_v<Error, NotSupportedException>));
    EXPECT_STREQ("text", NotSupportedException("text").what());
}

}  // namespace
}  // namespace base::exception
