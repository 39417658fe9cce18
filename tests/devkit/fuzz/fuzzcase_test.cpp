#include "devkit/fuzz/fuzzcase.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace devkit::fuzz {
namespace {

TEST(FuzzCase, ASeedIsOneJob) {
    const std::vector<BaseDocument> bases = OwnDocuments();
    for (std::uint64_t seed = 0; seed < 100; ++seed) {
        const BadJob one = MakeJob(CaseOf({seed}, bases.size()), bases);
        const BadJob other = MakeJob(CaseOf({seed}, bases.size()), bases);
        EXPECT_EQ(one.package, other.package);
        EXPECT_EQ(one.done, other.done);
        EXPECT_EQ(one.environment.pipelineSwitches, other.environment.pipelineSwitches);
        EXPECT_EQ(one.environment.userTicket, other.environment.userTicket);
    }
}

TEST(FuzzCase, SeedsReachEveryBaseAndEveryLayer) {
    std::map<Layer, unsigned> layers;
    std::set<std::size_t> bases;
    std::map<std::size_t, unsigned> counts;
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        const FuzzCase fuzzCase = CaseOf({seed}, 5);
        bases.insert(fuzzCase.base);
        ++counts[fuzzCase.mutations.size()];
        for (const Mutation& mutation : fuzzCase.mutations) ++layers[mutation.layer];
    }
    EXPECT_EQ((std::set<std::size_t>{0, 1, 2, 3, 4}), bases);
    EXPECT_EQ(10U, layers.size());
    for (const auto& [layer, count] : layers) EXPECT_LT(50U, count) << NameOf(layer);
    // Most cases have few.
    EXPECT_EQ(6U, counts.size());
    EXPECT_LT(counts[6], counts[1]);
}

TEST(FuzzCase, EachSeedOfAChainAddsItsMutationsToTheFirstOnesDocument) {
    const FuzzCase first = CaseOf({3}, 5);
    std::uint64_t seed = 4;
    while (CaseOf({seed}, 5).base == first.base) ++seed;
    const FuzzCase second = CaseOf({seed}, 5);
    const FuzzCase both = CaseOf({3, seed}, 5);
    EXPECT_EQ(first.base, both.base);
    std::vector<Mutation> expected = first.mutations;
    expected.insert(expected.end(), second.mutations.begin(), second.mutations.end());
    ASSERT_EQ(expected.size(), both.mutations.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i].layer, both.mutations[i].layer);
        EXPECT_EQ(expected[i].seed, both.mutations[i].seed);
    }
}

TEST(FuzzCase, AChainIsWrittenWithSlashes) {
    EXPECT_EQ("1234/77/9001", TextOf({1234, 77, 9001}));
    EXPECT_EQ((Chain{1234, 77, 9001}), ParseChain("1234/77/9001"));
    EXPECT_EQ(Chain{18446744073709551615U}, ParseChain("18446744073709551615"));
    for (const char* const none : {"", "/", "1/", "/1", "1//2", "1,2", "-1", "18446744073709551616", "1 "})
        EXPECT_EQ(std::nullopt, ParseChain(none)) << none;
}

TEST(FuzzCase, WithoutItsMutationsItIsTheBaseItself) {
    const std::vector<BaseDocument> bases = OwnDocuments();
    const BadJob job = MakeJob({1, {}}, bases);
    EXPECT_EQ(package::BuildZip(bases[1].entries), job.package);
    EXPECT_TRUE(job.done.empty());
}

TEST(FuzzCase, AMutationStaysTheSameWhenAnotherIsLeftOut) {
    const std::vector<BaseDocument> bases = OwnDocuments();
    const Mutation page{Layer::Page, 7};
    const Mutation provider{Layer::Provider, 8};
    const Mutation archive{Layer::Archive, 9};
    const BadJob all = MakeJob({0, {page, provider, archive}}, bases);
    ASSERT_EQ(3U, all.done.size());
    EXPECT_EQ(all.done[0], MakeJob({0, {page}}, bases).done[0]);
    EXPECT_EQ(all.done[1], MakeJob({0, {provider}}, bases).done[0]);
    EXPECT_EQ(all.done[2], MakeJob({0, {archive}}, bases).done[0]);
    EXPECT_EQ(all.environment.providerSwitches, MakeJob({0, {provider}}, bases).environment.providerSwitches);
    EXPECT_NE(all.package, MakeJob({0, {page, provider}}, bases).package);
}

TEST(FuzzCase, LayersHaveTheirNames) {
    EXPECT_STREQ("page", NameOf(Layer::Page));
    EXPECT_STREQ("user ticket", NameOf(Layer::UserTicket));
}

}  // namespace
}  // namespace devkit::fuzz
