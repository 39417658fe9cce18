#include "base/logging/check.h"

#include <gtest/gtest.h>

#include "thrown.h"

namespace base::logging {
namespace {

TEST(CheckTest, ThrowIfFailedLetsSuccessCodesPass) {
    EXPECT_NO_THROW(ThrowIfFailed(S_OK));
    EXPECT_NO_THROW(ThrowIfFailed(S_FALSE));
    EXPECT_NO_THROW(ThrowIfFailed(static_cast<HRESULT>(0x00040002)));
}

TEST(CheckTest, ThrowIfFailedThrowsHresultErrorWithTheCodeAndTheThrowingLine) {
    const int line = __LINE__ + 1;
    const auto refusal = [] { ThrowIfFailed(E_PENDING); };
    EXPECT_EQ(E_PENDING, tests::ThrownCode(refusal));
    EXPECT_NE(std::string::npos, tests::MessageOf<exception::HresultError>(refusal).find(
                                     "check_test.cpp(" + std::to_string(line) + ") : "));
}

TEST(CheckTest, ThrowIfNullThrowsInvalidArgumentWithTheMessage) {
    const int* pointer = nullptr;
    const std::string thrown =
        tests::Thrown<std::invalid_argument>([&] { ThrowIfNull(pointer, "pointer is null."); });
    EXPECT_TRUE(thrown.ends_with("check_test.cpp(LINE) : pointer is null.\n")) << thrown;
    const int value = 0;
    EXPECT_NO_THROW(ThrowIfNull(&value, "value is null."));
}

}  // namespace
}  // namespace base::logging
