#include <gtest/gtest.h>

#include <source_location>
#include <string>
#include <utility>

#include "base/logging/log.h"

namespace base::logging {
namespace {

using Place = std::source_location;

// What a compiler may call a file.
// clang-format off
#line 1 "C:\\build\\src\\base\\a.cpp"
constexpr Place kBackslashes = Place::current();
#line 1 "/build/src/base/a.cpp"
constexpr Place kSlashes = Place::current();
#line 1 "src/base/a.cpp"
constexpr Place kRelative = Place::current();
#line 1 "/src/other/srcfile.cpp"
constexpr Place kNameLikeTheRoot = Place::current();
#line 1 "/home/mysrc/a.cpp"
constexpr Place kFolderLikeTheRoot = Place::current();
#line 1 "srcs/src"
constexpr Place kNothingBehindTheRoot = Place::current();
#line 1 "a.cpp"
constexpr Place kNoFolder = Place::current();
#line 31 "sourcepath_test.cpp"
// clang-format on

TEST(SourcePathTest, IsWhatStandsBehindTheLastFolderCalledSrc) {
    const std::pair<Place, std::string> places[] = {
        {kBackslashes, "base\\a.cpp"},
        {kSlashes, "base/a.cpp"},
        {kRelative, "base/a.cpp"},
        {kNameLikeTheRoot, "other/srcfile.cpp"},
    };
    for (const auto& [place, path] : places) EXPECT_EQ(path, SourcePath(place)) << place.file_name();
}

TEST(SourcePathTest, IsTheWholePathWhereThereIsNoSuchFolder) {
    for (const Place& place : {kFolderLikeTheRoot, kNothingBehindTheRoot, kNoFolder}) {
        EXPECT_STREQ(place.file_name(), SourcePath(place));
    }
}

}  // namespace
}  // namespace base::logging
