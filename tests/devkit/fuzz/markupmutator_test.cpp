#include "devkit/fuzz/markupmutator.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace devkit::fuzz {
namespace {

const std::string kMarkup = "<a b=\"1\" xmlns:x=\"u\"><c d=\"2\"><x:e/></c><f g=\"3\">text</f></a>";

// What is done, and what to, over many seeds.
std::map<std::string, std::set<std::string>> Mutations(const std::string& markup, unsigned seeds) {
    std::map<std::string, std::set<std::string>> done;
    for (unsigned seed = 0; seed < seeds; ++seed) {
        Random random(seed);
        std::string changed = markup;
        const std::string what = MutateMarkup(changed, random);
        done[what].insert(changed.substr(0, 200));
    }
    return done;
}

TEST(MarkupMutator, DoesTheSameForTheSameSeed) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        Random first(seed);
        Random second(seed);
        std::string one = kMarkup;
        std::string other = kMarkup;
        EXPECT_EQ(MutateMarkup(one, first), MutateMarkup(other, second));
        EXPECT_EQ(one, other);
    }
}

TEST(MarkupMutator, EachMutationChangesWhatItSays) {
    const auto done = Mutations(kMarkup, 2000);
    EXPECT_TRUE(done.at("an element dropped").contains("<a b=\"1\" xmlns:x=\"u\"><f g=\"3\">text</f></a>"));
    EXPECT_TRUE(done.at("an element doubled")
                    .contains("<a b=\"1\" xmlns:x=\"u\"><c d=\"2\"><x:e/><x:e/></c><f g=\"3\">text</f></a>"));
    EXPECT_TRUE(done.at("an element moved")
                    .contains("<a b=\"1\" xmlns:x=\"u\"><f g=\"3\">text</f><c d=\"2\"><x:e/></c></a>"));
    EXPECT_TRUE(done.at("an attribute dropped")
                    .contains("<a b=\"1\" xmlns:x=\"u\"><c><x:e/></c><f g=\"3\">text</f></a>"));
    EXPECT_TRUE(
        done.at("an attribute doubled")
            .contains("<a b=\"1\" xmlns:x=\"u\"><c d=\"2\" d=\"2\"><x:e/></c><f g=\"3\">text</f></a>"));
    EXPECT_TRUE(done.at("two values swapped")
                    .contains("<a b=\"3\" xmlns:x=\"u\"><c d=\"2\"><x:e/></c><f g=\"1\">text</f></a>"));
    EXPECT_TRUE(done.at("an element nested")
                    .contains("<a b=\"1\" xmlns:x=\"u\"><c d=\"2\"><x:e><x:e><x:e/></x:e></x:e></c><f "
                              "g=\"3\">text</f></a>"));
    // Nearly every one is reached, each with several results.
    EXPECT_EQ(24U, done.size());
    for (const auto& [what, results] : done) EXPECT_LT(2U, results.size()) << what;
}

TEST(MarkupMutator, MarkupDoesNotGrowBeyondItsLimit) {
    Random random(1);
    std::string markup = kMarkup;
    for (int i = 0; i < 300; ++i) {
        static_cast<void>(MutateMarkup(markup, random));
        ASSERT_GE(kMostMarkup, markup.size());
    }
}

TEST(MarkupMutator, TakesMarkupOfUtf16ForWhatItIs) {
    std::string wide = "\xFF\xFE";
    for (const char letter : kMarkup) (wide += letter) += '\0';
    std::string plain = kMarkup;
    // The same mutation of both.
    for (unsigned seed = 0; seed < 100; ++seed) {
        Random first(seed);
        Random second(seed);
        std::string one = wide;
        std::string other = kMarkup;
        const std::string what = MutateMarkup(one, first);
        if (what != "an attribute dropped" || MutateMarkup(other, second) != what) continue;
        ASSERT_EQ(2 * other.size() + 2, one.size());
        for (std::size_t i = 0; i < other.size(); ++i) EXPECT_EQ(other[i], one[2 + 2 * i]);
        return;
    }
    FAIL() << "no attribute was dropped";
}

TEST(MarkupMutator, WhateverTheMarkupItComesToAnEnd) {
    for (const char* const text : {"", "a", "<", "<a", "<a/>", "<?xml", "\xFF\xFE", "\xFF\xFE<"}) {
        for (unsigned seed = 0; seed < 300; ++seed) {
            Random random(seed);
            std::string markup = text;
            EXPECT_NE("", MutateMarkup(markup, random));
        }
    }
}

}  // namespace
}  // namespace devkit::fuzz
