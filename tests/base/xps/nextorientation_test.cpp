#include "base/xps/nextorientation.h"

#include <gtest/gtest.h>

#include <string_view>

#include "base/logging/exceptions.h"

namespace base::xps {
namespace {

TEST(NextOrientationTest, GoesRoundTheFourOptions) {
    EXPECT_EQ(1, NextOrientation(0));
    EXPECT_EQ(2, NextOrientation(1));
    EXPECT_EQ(3, NextOrientation(2));
    EXPECT_EQ(0, NextOrientation(3));
}

TEST(NextOrientationTest, AnyOtherIdIsAFailure) {
    for (const int id : {-1, 4, 0x7FFFFFFF}) {
        try {
            (void)NextOrientation(id);
            ADD_FAILURE() << "an orientation follows " << id;
        } catch (const exception::Error& error) {
            const std::string_view message = error.what();
            EXPECT_TRUE(message.starts_with("base/xps/nextorientation.cpp(")) << message;
            EXPECT_TRUE(message.ends_with(") : Unexpected Option Id.\n")) << message;
        }
    }
}

}  // namespace
}  // namespace base::xps
