#include "devkit/inspect/sizetext.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

namespace devkit::inspect {
namespace {

TEST(SizeTextTest, SizesAreGivenInUnitsAndMillimetres) {
    EXPECT_EQ(SizeText({793.76, 1122.56, {}, {}}), "793.76 x 1122.56 (210.0 x 297.0 mm), portrait");
    EXPECT_EQ(SizeText({1056, 816, {}, {}}), "1056 x 816 (279.4 x 215.9 mm), landscape");
    EXPECT_EQ(SizeText({96, 96, {}, {}}), "96 x 96 (25.4 x 25.4 mm), square");
}

TEST(SizeTextTest, HugeAndNegativeSizesAreText) {
    EXPECT_EQ(SizeText({1e300, -1, {}, {}}).substr(0, 20), "1e+300 x -1 (2645833");
    EXPECT_EQ(SizeText({0, std::numeric_limits<double>::infinity(), {}, {}}),
              "0 x inf (0.0 x inf mm), portrait");
}

TEST(SizeTextTest, TheLocaleDoesNotMatter) {
    std::setlocale(LC_ALL, "de-DE");
    EXPECT_EQ(SizeText({0.5, 1.5, {}, {}}), "0.5 x 1.5 (0.1 x 0.4 mm), portrait");
    std::setlocale(LC_ALL, "C");
}

TEST(SizeTextTest, BoxesAreFourNumbers) { EXPECT_EQ(BoxText({-1, 2.5, 3, 0}), "-1,2.5,3,0"); }

TEST(SizeTextTest, BytesAreGroupedByThousands) {
    EXPECT_EQ(BytesText(0), "0 bytes");
    EXPECT_EQ(BytesText(1), "1 byte");
    EXPECT_EQ(BytesText(999), "999 bytes");
    EXPECT_EQ(BytesText(1'000), "1,000 bytes");
    EXPECT_EQ(BytesText(12'345'678), "12,345,678 bytes");
}

}  // namespace
}  // namespace devkit::inspect
