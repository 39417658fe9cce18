#include "devkit/filterhost/numbers.h"

#include <gtest/gtest.h>

namespace devkit::filterhost {
namespace {

TEST(Numbers, AreAsShortAsTheyCanBe) {
    EXPECT_EQ(NumberText(816), "816");
    EXPECT_EQ(NumberText(793.76), "793.76");
    EXPECT_EQ(NumberText(-0.5), "-0.5");
    EXPECT_EQ(NumberText(1e300).size(), 301U);
}

TEST(Numbers, AreCounted) {
    EXPECT_EQ(Counted(0, "page"), "0 pages");
    EXPECT_EQ(Counted(1, "page"), "1 page");
    EXPECT_EQ(Counted(2, "page"), "2 pages");
}

}  // namespace
}  // namespace devkit::filterhost
