#include "devkit/fuzz/random.h"

#include <gtest/gtest.h>

#include <array>

namespace devkit::fuzz {
namespace {

// From a program of another language.
TEST(Random, ASeedMeansTheSameEverywhere) {
    EXPECT_EQ(0xE472A21D82B9E8C8U, Random(0).Next());
    Random one(1);
    EXPECT_EQ(0x884FA46695B1825BU, one.Next());
    EXPECT_EQ(0xE487E49E27ADBC38U, one.Next());
    Random seven(7);
    std::array<std::size_t, 8> digits{};
    for (std::size_t& digit : digits) digit = seven.Below(10);
    EXPECT_EQ((std::array<std::size_t, 8>{7, 0, 9, 2, 8, 7, 8, 7}), digits);
}

TEST(Random, OfNothingThereIsTheFirst) {
    Random random(3);
    EXPECT_EQ(0U, random.Below(0));
    EXPECT_EQ(0U, random.Below(1));
}

TEST(Random, ReachesEveryPlace) {
    Random random(5);
    std::array<int, 3> seen{};
    for (int i = 0; i < 100; ++i) ++seen[random.Below(3)];
    for (const int each : seen) EXPECT_LT(10, each);
}

}  // namespace
}  // namespace devkit::fuzz
