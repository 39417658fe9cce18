#include "devkit/fuzz/guide.h"

#include <gtest/gtest.h>

namespace devkit::fuzz {
namespace {

TEST(Guide, KeepsWhatReachesAnEdgeThatNoneBeforeItDid) {
    Guide guide(10);
    guide.TakeBase({1, 2, 3});
    guide.TakeBase({3, 4});
    EXPECT_EQ(4U, guide.ReachedByBases());
    EXPECT_EQ(0U, guide.Take({7}, {1, 4}, true));
    EXPECT_EQ(2U, guide.Take({8}, {4, 5, 6}, true));
    EXPECT_EQ(0U, guide.Take({9}, {5, 6}, true));
    EXPECT_EQ(1U, guide.Take({8, 10}, {7}, true));
    EXPECT_EQ(7U, guide.Reached());
    EXPECT_EQ(4U, guide.ReachedByBases());
    ASSERT_EQ(2U, guide.Kept().size());
    EXPECT_EQ(Chain{8}, guide.Kept()[0].chain);
    EXPECT_EQ(2U, guide.Kept()[0].edges);
    EXPECT_EQ((Chain{8, 10}), guide.Kept()[1].chain);
}

TEST(Guide, MakesCasesOfWhatItKept) {
    Guide guide(10);
    for (std::uint64_t seed = 0; seed < 20; ++seed) EXPECT_EQ(Chain{seed}, guide.ChainOf(seed));
    guide.Take({1}, {1}, true);
    guide.Take({2, 3}, {2}, true);
    unsigned alone = 0;
    unsigned ofFirst = 0;
    unsigned ofSecond = 0;
    for (std::uint64_t seed = 100; seed < 1100; ++seed) {
        const Chain chain = guide.ChainOf(seed);
        EXPECT_EQ(seed, chain.back());
        EXPECT_EQ(chain, guide.ChainOf(seed));
        alone += chain == Chain{seed};
        ofFirst += chain == Chain{1, seed};
        ofSecond += chain == Chain{2, 3, seed};
    }
    EXPECT_EQ(1000U, alone + ofFirst + ofSecond);
    EXPECT_NEAR(333, alone, 60);
    // Of two draws the higher one: three quarters of the rest.
    EXPECT_NEAR(500, ofSecond, 60);
}

TEST(Guide, KeepsNoMoreThanItMay) {
    Guide guide(1);
    EXPECT_EQ(1U, guide.Take({1}, {1}, true));
    EXPECT_EQ(1U, guide.Take({2}, {2}, true));
    EXPECT_EQ(1U, guide.Kept().size());
    EXPECT_EQ(2U, guide.Reached());
    Guide counting(0);
    EXPECT_EQ(1U, counting.Take({1}, {1}, true));
    EXPECT_EQ(0U, counting.Kept().size());
}

TEST(Guide, KeepsNeitherWhatCannotGrowNorALongChain) {
    Guide guide(100);
    EXPECT_EQ(1U, guide.Take({1}, {1}, false));
    EXPECT_EQ(0U, guide.Kept().size());
    Chain chain;
    for (std::uint32_t seed = 0; seed < 12; ++seed) {
        chain.push_back(seed);
        EXPECT_EQ(1U, guide.Take(chain, {100 + seed}, true));
    }
    EXPECT_EQ(7U, guide.Kept().size());
}

}  // namespace
}  // namespace devkit::fuzz
