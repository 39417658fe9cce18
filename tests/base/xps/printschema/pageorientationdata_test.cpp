#include "base/xps/printschema/pageorientationdata.h"

#include <gtest/gtest.h>

#include <string_view>

#include "base/logging/exceptions.h"
#include "thrown.h"

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
        EXPECT_EQ(
            "base/xps/printschema/pageorientationdata.cpp(LINE) : Unexpected Option Id.\n",
            tests::Thrown<base::exception::Error>([&] { static_cast<void>(PageOrientationData::Next(id)); }))
            << id;
    }
}

}  // namespace
