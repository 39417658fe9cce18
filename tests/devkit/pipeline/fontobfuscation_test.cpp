#include "devkit/pipeline/fontobfuscation.h"

#include <gtest/gtest.h>

namespace devkit::pipeline {
namespace {

using namespace std::string_literals;

constexpr std::string_view kName = "/Fonts/00112233-4455-6677-8899-AABBCCDDEEFF.odttf";

TEST(FontObfuscation, MixesTheFirst32BytesWithTheGuidFromItsEnd) {
    const std::string mask = "\xFF\xEE\xDD\xCC\xBB\xAA\x99\x88\x77\x66\x55\x44\x33\x22\x11\x00"s;
    EXPECT_EQ(mask + mask + std::string(8, '\0'), ToggleObfuscation(std::string(40, '\0'), kName));
    EXPECT_EQ("\xFE\xEC"s, ToggleObfuscation("\x01\x02"s + std::string(38, '\0'), kName).substr(0, 2));
}

TEST(FontObfuscation, IsUndoneByItself) {
    const std::string font = "0123456789abcdefghijklmnopqrstuvwxyz";
    EXPECT_NE(font, ToggleObfuscation(font, kName));
    EXPECT_EQ(font, ToggleObfuscation(ToggleObfuscation(font, kName), kName));
}

TEST(FontObfuscation, LettersOfTheGuidMayBeSmall) {
    const std::string font(32, 'x');
    EXPECT_EQ(ToggleObfuscation(font, kName),
              ToggleObfuscation(font, "/00112233-4455-6677-8899-aabbccddeeff.ODTTF"));
}

TEST(FontObfuscation, LeavesWhatItCannotBeDoneTo) {
    const std::string font(40, 'x');
    EXPECT_EQ(font, ToggleObfuscation(font, "/Fonts/font.odttf"));
    EXPECT_EQ(font.substr(0, 31), ToggleObfuscation(font.substr(0, 31), kName));
}

TEST(FontObfuscation, KnowsANameThatIsAGuid) {
    EXPECT_TRUE(IsNamedByGuid(kName));
    EXPECT_TRUE(IsNamedByGuid("a\\00112233-4455-6677-8899-AABBCCDDEEFF"));
    EXPECT_FALSE(IsNamedByGuid("/00112233-4455-6677-8899-AABBCCDDEEF.odttf"));
    EXPECT_FALSE(IsNamedByGuid("/00112233-4455-6677-8899-AABBCCDDEEFG.odttf"));
    EXPECT_FALSE(IsNamedByGuid("/00112233+4455-6677-8899-AABBCCDDEEFF.odttf"));
    EXPECT_FALSE(IsNamedByGuid("/00112233-4455-6677-8899-AABBCCDDEEFF/font.odttf"));
    EXPECT_FALSE(IsNamedByGuid(""));
}

}  // namespace
}  // namespace devkit::pipeline
