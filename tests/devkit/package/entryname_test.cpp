#include "devkit/package/entryname.h"

#include <gtest/gtest.h>

namespace devkit::package {
namespace {

TEST(EntryNameTest, AbsoluteNamesAndThoseWithDotsLeaveThePackage) {
    for (const char* name :
         {"/a", "\\a", "C:\\a", "c:a", "..", "../a", "a/../../b", "a\\..\\b", "a/..", "%2e%2E/a", "a/%2e./b"})
        EXPECT_TRUE(LeavesPackage(name)) << name;
    for (const char* name : {"a", "a/b", "a..b", "...", "a/.../b", "..a", "a../b", "./a", "[0].piece", ""})
        EXPECT_FALSE(LeavesPackage(name)) << name;
}

TEST(EntryNameTest, FoldersEndWithASlash) {
    EXPECT_TRUE(IsFolderName("a/"));
    EXPECT_TRUE(IsFolderName("a\\"));
    EXPECT_TRUE(IsFolderName(""));
    EXPECT_FALSE(IsFolderName("a"));
}

TEST(EntryNameTest, PiecesNameTheirPartAndPlace) {
    const auto piece = ParsePieceName("Documents/1/Pages/1.fpage/[0].piece");
    ASSERT_TRUE(piece);
    EXPECT_EQ(piece->part, "/Documents/1/Pages/1.fpage");
    EXPECT_EQ(piece->number, 0U);
    EXPECT_FALSE(piece->last);

    const auto last = ParsePieceName("a\\[12].LAST.Piece");
    ASSERT_TRUE(last);
    EXPECT_EQ(last->part, "/a");
    EXPECT_EQ(last->number, 12U);
    EXPECT_TRUE(last->last);
}

TEST(EntryNameTest, OtherNamesAreNoPieces) {
    for (const char* name : {"a", "[0].piece", "/[0].piece", "a/[].piece", "a/[x].piece", "a/[-1].piece",
                             "a/[1.piece", "a/[1].pieces", "a/[1]x.piece", "a/[1234567890].piece",
                             "a/0].piece", "a/[1].first.piece", "a/[].last.piece"})
        EXPECT_FALSE(ParsePieceName(name)) << name;
}

TEST(EntryNameTest, PartNamesHaveSlashesOnly) { EXPECT_EQ(PartNameOf("a\\b/c"), "/a/b/c"); }

}  // namespace
}  // namespace devkit::package
