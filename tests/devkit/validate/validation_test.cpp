#include <gtest/gtest.h>

#include "devkit/validate/validatedfilter.h"

namespace devkit::validate {
namespace {

using Names = std::set<std::string>;

TEST(Validate, AFilterThatDoesNothingWrongIsFit) {
    const Validated validated = ValidateMode("", {"--level", "3"});
    EXPECT_EQ(0U, validated.ended.status) << validated.ended.out << validated.ended.error;
    EXPECT_EQ(Names{}, validated.failed);
    EXPECT_EQ(Names{}, validated.skipped);
    EXPECT_EQ(28U, validated.passed.size());
    EXPECT_TRUE(Holds(validated.ended.out, "\ntestfilter.dll is fit at level 3: 28 passed\n"));
}

// What is asked of parts says nothing of it.
TEST(Validate, AFilterOfStreamsIsJudgedByWhatItIsGiven) {
    const std::vector<std::string> streams{"--level", "3", "--input", "stream", "--output", "stream"};
    const Validated good = ValidateMode("", streams, kStreamClass);
    EXPECT_EQ(0U, good.ended.status) << good.ended.out << good.ended.error;
    EXPECT_EQ(Names{}, good.failed);
    EXPECT_EQ((Names{"order-kept", "every-part-once", "output-readable", "pages-not-blank"}), good.skipped);
    EXPECT_EQ(Names{"streams-closed"}, ValidateMode("stream:no-close", streams, kStreamClass).failed);
}

TEST(Validate, WhatIsWrongIsToldWithItsPlaceAndWithWhatToDo) {
    const Validated validated =
        ValidateMode("rewrite-unclosed", {"--level", "3", "--include", "streams-closed"});
    EXPECT_EQ(1U, validated.ended.status);
    EXPECT_EQ(Names{"streams-closed"}, validated.failed);
    EXPECT_TRUE(
        Holds(validated.ended.out,
              "\nFAILED streams-closed (level 3): a write stream is closed once, before its part goes on\n"
              "  short.xps: FixedPage /Documents/1/Pages/1.fpage was sent while its write stream is open\n"
              "    at FixedPage /Documents/1/Pages/1.fpage, in StartOperation\n"
              "    what to do: Close the stream before\n"))
        << validated.ended.out;
    EXPECT_TRUE(
        Holds(validated.ended.out, "\ntestfilter.dll is not fit at level 3: 1 test failed, 0 passed\n"));
}

TEST(Validate, ACrashEndsTheRunThatItIsInAndNoOther) {
    const Validated validated = ValidateMode("crash", {"--level", "3"});
    EXPECT_EQ(1U, validated.ended.status);
    EXPECT_EQ(Names{"comes-to-a-good-end"}, validated.failed);
    EXPECT_TRUE(validated.passed.contains("initialises"));
    EXPECT_TRUE(validated.skipped.contains("references-given-back"));
    EXPECT_TRUE(
        Holds(validated.ended.out, "  short.xps: the filter crashed with 0xC0000005 ACCESS_VIOLATION"));
    EXPECT_TRUE(Holds(validated.ended.out, "  everything.xps: the filter crashed with 0xC0000005"));
}

TEST(Validate, ATestThatSaysNothingOfTheFilterProvesNothing) {
    const Validated validated = ValidateMode("crash", {"--include", "references-given-back"});
    EXPECT_EQ(2U, validated.ended.status) << validated.ended.out;
    EXPECT_TRUE(Holds(validated.ended.out, "nothing is known of testfilter.dll at level 5: 1 skipped\n"))
        << validated.ended.out;
}

TEST(Validate, TestsAreChosenByNameAndLevel) {
    const Validated validated =
        ValidateMode("", {"--include", "-kept$", "--exclude", "^properties", "--level", "3"});
    EXPECT_EQ((Names{"apartment-kept", "order-kept", "user-token-kept"}), validated.passed);
}

TEST(Validate, TheUsersDocumentsAreJudgedBesideTheCarriedOnes) {
    const std::string sample = filterhost::Text(filterhost::Sample("sample.xps"));
    const Validated validated =
        ValidateMode("delete-used", {"--include", "resources-related", "--document", sample});
    EXPECT_EQ(1U, validated.ended.status);
    EXPECT_TRUE(Holds(validated.ended.out, "sample.xps: the markup of FixedPage")) << validated.ended.out;
}

TEST(Validate, RunsInTheProgramItselfForADebugger) {
    const Validated validated = ValidateMode("leak-page", {"--level", "3", "--in-process"});
    EXPECT_EQ(1U, validated.ended.status);
    EXPECT_EQ(Names{"references-given-back"}, validated.failed);
    EXPECT_EQ(27U, validated.passed.size());
}

TEST(Validate, ACrashInTheProgramItselfEndsItAndIsTold) {
    const Validated validated = ValidateMode("crash", {"--include", "good-end", "--in-process"});
    EXPECT_NE(0U, validated.ended.status);
    EXPECT_TRUE(Holds(validated.ended.error, "filterhost: short.xps: the filter crashed with 0xC0000005"))
        << validated.ended.error;
}

}  // namespace
}  // namespace devkit::validate
