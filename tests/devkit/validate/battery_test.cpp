#include "devkit/validate/battery.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "devkit/validate/validatedfilter.h"

namespace devkit::validate {
namespace {

using Names = std::set<std::string>;

TEST(Battery, HasEachNameOnceInWordsAndByLevel) {
    Names names;
    unsigned level = 1;
    for (const validate::Test& test : Battery()) {
        EXPECT_TRUE(names.insert(std::string(test.name)).second) << test.name << " twice";
        EXPECT_TRUE(std::regex_match(std::string(test.name), std::regex("[a-z]+(-[a-z]+)*"))) << test.name;
        EXPECT_LE(level, test.level) << test.name;
        level = test.level;
        EXPECT_LE(level, kHighestLevel) << test.name;
        EXPECT_FALSE(test.claim.empty() || test.advice.empty()) << test.name;
    }
    EXPECT_FALSE(names.empty());
}

TEST(ListTests, TellsOfEachTestUpToTheLevelWhatItProves) {
    const Ended all = filterhost::RunProgram({"list", "tests"});
    EXPECT_EQ(0U, all.status);
    const Ended first = filterhost::RunProgram({"list", "tests", "--level", "1"});
    for (const validate::Test& test : Battery()) {
        EXPECT_TRUE(Holds(all.out, std::string(test.claim) + "\n")) << test.name;
        EXPECT_EQ(test.level == 1, Holds(first.out, std::string(test.claim) + "\n")) << test.name;
    }
}

TEST(Validate, WhatCannotBeAskedForIsWrongUsage) {
    EXPECT_EQ("filterhost: --include: \"(\" is no regular expression\n",
              ValidateMode("", {"--include", "("}).ended.error);
    EXPECT_EQ("filterhost: no test of the battery is left to be run\n",
              ValidateMode("", {"--include", "^nothing$"}).ended.error);
    EXPECT_EQ(2U, ValidateMode("", {"--level", "11"}).ended.status);
    EXPECT_EQ(2U, filterhost::RunProgram({"validate", "nowhere.dll"}).status);
}

TEST(Validate, ADocumentThatIsNoneEndsEverything) {
    const std::filesystem::path file = filterhost::FreshFolder("validate") / "none.xps";
    std::ofstream(file) << "no document";
    const Validated validated = ValidateMode("", {"--document", filterhost::Text(file)});
    EXPECT_EQ(3U, validated.ended.status);
    EXPECT_EQ(Names{}, validated.passed);
}

TEST(Validate, RepeatsWhatItIsAskedToRepeat) {
    const Validated validated = ValidateMode("", {"--include", "^identity$", "--repeat", "3", "--quiet"});
    EXPECT_EQ("testfilter.dll is fit at level 5: 3 passed\n", validated.ended.out);
}

}  // namespace
}  // namespace devkit::validate
