#include "devkit/common/numbers.h"

#include <gtest/gtest.h>

namespace devkit::common {
namespace {

TEST(Numbers, AreAsShortAsTheyCanBeWithoutAnExponent) {
    EXPECT_EQ("816", NumberText(816));
    EXPECT_EQ("793.76", NumberText(793.76));
    EXPECT_EQ("-0.5", NumberText(-0.5));
    EXPECT_EQ("0.0000001", NumberText(1e-7));
    EXPECT_EQ(301U, NumberText(1e300).size());
    EXPECT_EQ(326U, NumberText(5e-324).size());
}

TEST(Numbers, AreRoundedToTheDecimalsWanted) {
    EXPECT_EQ("210.0", NumberText(210.0166, 1));
    EXPECT_EQ("-1", NumberText(-0.75, 0));
    EXPECT_EQ(311U, NumberText(1e308, 1).size());
}

TEST(Numbers, AreReadAsAWholeOrNotAtAll) {
    EXPECT_EQ(793.76, ParseNumber("793.76"));
    EXPECT_EQ(-250.0, ParseNumber("-2.5e2"));
    for (const char* text : {"", " 1", "1 ", "1,5", "+1", "x", "1e999"})
        EXPECT_FALSE(ParseNumber(text)) << text;
}

}  // namespace
}  // namespace devkit::common
