#include "base/xps/printschema/pageorientationdata.h"

#include <gtest/gtest.h>

#include <string_view>

#include "base/logging/exceptions.h"

namespace {

using base::xps::printschema::PageOrientationData;

TEST(PageOrientationDataTest, NextGoesRoundTheFourOptions) {
    EXPECT_EQ(1, PageOrientationData::Next(0));
    EXPECT_EQ(2, PageOrientationData::Next(1));
    EXPECT_EQ(3, PageOrientationData::Next(2));
    EXPECT_EQ(0, PageOrientationData::Next(3));
}

TEST(PageOrientationDataTest, AnyOtherIdIsAFailure) {
    for (const int id : {-1, 4, 0x7FFFFFFF}) {
        try {
            (void)PageOrientationData::Next(id);
            ADD_FAILURE() << "an orientation follows " << id;
        } catch (const base::exception::Error& error) {
            const std::string_view message = error.what();
            EXPECT_TRUE(message.starts_with("base/xps/printschema/pageorientationdata.cpp(")) << message;
            EXPECT_TRUE(message.ends_with(") : Unexpected Option Id.\n")) << message;
        }
    }
}

}  // namespace
