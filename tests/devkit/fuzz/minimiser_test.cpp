#include "devkit/fuzz/minimiser.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace devkit::fuzz {
namespace {

using Places = std::vector<std::size_t>;

bool Has(const Places& places, std::size_t wanted) {
    return std::ranges::find(places, wanted) != places.end();
}

TEST(Minimiser, LeavesWhatIsNeeded) {
    EXPECT_EQ((Places{1, 6}), Minimise(
                                  8, [](const Places& kept) { return Has(kept, 1) && Has(kept, 6); }, 100));
    EXPECT_EQ((Places{4}), Minimise(
                               5, [](const Places& kept) { return Has(kept, 4); }, 100));
}

TEST(Minimiser, LeavesNothingWhereNothingIsNeeded) {
    EXPECT_EQ(Places{}, Minimise(
                            3, [](const Places&) { return true; }, 100));
    EXPECT_EQ(Places{}, Minimise(
                            0, [](const Places&) { return false; }, 100));
}

TEST(Minimiser, LeavesAllWhereAllIsNeeded) {
    EXPECT_EQ((Places{0, 1, 2}), Minimise(
                                     3, [](const Places&) { return false; }, 100));
}

TEST(Minimiser, TriesAgainWhatCouldNotGoBefore) {
    // 0 can go once 2 has gone.
    const auto isSame = [](const Places& kept) { return Has(kept, 1) && (Has(kept, 0) || !Has(kept, 2)); };
    EXPECT_EQ((Places{1}), Minimise(3, isSame, 100));
}

TEST(Minimiser, AsksNoOftenerThanItMay) {
    unsigned asked = 0;
    const auto isSame = [&asked](const Places&) {
        ++asked;
        return false;
    };
    EXPECT_EQ(100U, Minimise(100, isSame, 7).size());
    EXPECT_EQ(7U, asked);
    EXPECT_EQ(1U, Minimise(1, isSame, 0).size());
    EXPECT_EQ(7U, asked);
}

}  // namespace
}  // namespace devkit::fuzz
