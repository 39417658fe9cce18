#include "devkit/package/partname.h"

#include <gtest/gtest.h>

namespace devkit::package {
namespace {

TEST(PartNameTest, EquivalentNamesHaveOneKey) {
    EXPECT_EQ("/documents/1/a.fpage", NameKey("/Documents/1/A.fpage"));
    EXPECT_EQ("/documents/1/a.fpage", NameKey("Documents\\1\\A.FPAGE"));
    EXPECT_EQ("/a b", NameKey("/a%20b"));
    EXPECT_EQ("/a", NameKey("/%41"));
    EXPECT_EQ("/", NameKey(""));
}

TEST(PartNameTest, AnEncodedSlashStaysEncoded) {
    EXPECT_EQ("/a%2fb", NameKey("/a%2Fb"));
    EXPECT_EQ("/a%5cb", NameKey("/a%5Cb"));
}

TEST(PartNameTest, APercentSignThatEncodesNothingStays) {
    EXPECT_EQ("/100%", NameKey("/100%"));
    EXPECT_EQ("/a%2", NameKey("/a%2"));
    EXPECT_EQ("/a%zz", NameKey("/a%zz"));
}

TEST(PartNameTest, LettersOutsideAsciiKeepTheirCase) {
    EXPECT_NE(NameKey("/\xC3\xA4"), NameKey("/\xC3\x84"));
}

TEST(PartNameTest, ReferencesAreRelativeToTheirPart) {
    EXPECT_EQ("/Documents/1/Pages/1.fpage",
              ResolveReference("/Documents/1/FixedDocument.fdoc", "Pages/1.fpage"));
    EXPECT_EQ("/Resources/a.ttf", ResolveReference("/Documents/1/Pages/1.fpage", "../../../Resources/a.ttf"));
    EXPECT_EQ("/Pages/1.fpage", ResolveReference("/Documents/1/FixedDocument.fdoc", "/Pages/1.fpage"));
    EXPECT_EQ("/FixedDocSeq.fdseq", ResolveReference("/", "FixedDocSeq.fdseq"));
    EXPECT_EQ("/a/c", ResolveReference("/a/b", "./c"));
    EXPECT_EQ("/c", ResolveReference("/a/b", "..\\c"));
}

TEST(PartNameTest, AReferenceStaysInThePackage) {
    EXPECT_EQ("/c", ResolveReference("/a/b", "../../../../c"));
    EXPECT_EQ("/c", ResolveReference("/a/b", "/../c"));
    EXPECT_EQ("", ResolveReference("/a/b", "http://example.com/c"));
    EXPECT_EQ("", ResolveReference("/a/b", "C:/c"));
    EXPECT_EQ("", ResolveReference("/a/b", ""));
}

TEST(PartNameTest, FragmentsAndEmptySegmentsAreDropped) {
    EXPECT_EQ("/a/c", ResolveReference("/a/b", "c#top"));
    EXPECT_EQ("/a/c", ResolveReference("/a/b", "c#http://x"));
    EXPECT_EQ("/a/b", ResolveReference("/a/b", "#top"));
    EXPECT_EQ("/a/c/d", ResolveReference("/a/b", "c//d/"));
}

TEST(PartNameTest, ABackslashBecomesASlash) {
    EXPECT_EQ("/Metadata/pagevalidator_0_Job_PT.xml", MakeLegalName("Metadata\\pagevalidator_0_Job_PT.xml"));
    EXPECT_EQ("/a/b/c", MakeLegalName("/a%5Cb%2fc"));
}

TEST(PartNameTest, IllegalCharactersAreEncoded) {
    EXPECT_EQ("/a%20b", MakeLegalName("/a b"));
    EXPECT_EQ("/%5BContent_Types%5D.xml", MakeLegalName("/[Content_Types].xml"));
    EXPECT_EQ("/%C3%A9%3F%23%22%3C%01", MakeLegalName("/\xC3\xA9?#\"<\x01"));
    EXPECT_EQ("/100%25", MakeLegalName("/100%"));
    EXPECT_EQ("/a%20b", MakeLegalName("/a%20b"));
    EXPECT_EQ("/A~", MakeLegalName("/%41%7e"));
    EXPECT_EQ("/a-._~!$&'()*+,;=:@z", MakeLegalName("/a-._~!$&'()*+,;=:@z"));
}

TEST(PartNameTest, EmptySegmentsAndThoseOfDotsAreLeftOut) {
    EXPECT_EQ("/a/b", MakeLegalName("//a///b/"));
    EXPECT_EQ("/a/b/c", MakeLegalName("../../a/./b/.../c"));
    EXPECT_EQ("/a", MakeLegalName("%2e%2e/a"));
    EXPECT_EQ("/a/b.xml", MakeLegalName("a./b.xml.."));
}

TEST(PartNameTest, ANameIsNeverEmptyNorOfARelationshipsPart) {
    EXPECT_EQ("/part", MakeLegalName(""));
    EXPECT_EQ("/part", MakeLegalName("/../"));
    EXPECT_EQ("/a.rels", MakeLegalName("/_rels/a.rels"));
    EXPECT_EQ("/b/a.rels", MakeLegalName("/b/_RELS/a.rels"));
}

TEST(PartNameTest, RelationshipsStandBesideTheirPart) {
    EXPECT_EQ("/_rels/.rels", RelationshipsPartOf("/"));
    EXPECT_EQ("/_rels/a.xml.rels", RelationshipsPartOf("/a.xml"));
    EXPECT_EQ("/a/_rels/b.xml.rels", RelationshipsPartOf("/a/b.xml"));
}

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
    EXPECT_EQ("/Documents/1/Pages/1.fpage", piece->part);
    EXPECT_EQ(0U, piece->number);
    EXPECT_FALSE(piece->last);

    const auto last = ParsePieceName("a\\[12].LAST.Piece");
    ASSERT_TRUE(last);
    EXPECT_EQ("/a", last->part);
    EXPECT_EQ(12U, last->number);
    EXPECT_TRUE(last->last);
}

TEST(EntryNameTest, OtherNamesAreNoPieces) {
    for (const char* name : {"a", "[0].piece", "/[0].piece", "a/[].piece", "a/[x].piece", "a/[-1].piece",
                             "a/[1.piece", "a/[1].pieces", "a/[1]x.piece", "a/[1234567890].piece",
                             "a/0].piece", "a/[1].first.piece", "a/[].last.piece"})
        EXPECT_FALSE(ParsePieceName(name)) << name;
}

TEST(EntryNameTest, PartNamesHaveSlashesOnly) { EXPECT_EQ("/a/b/c", PartNameOf("a\\b/c")); }

}  // namespace
}  // namespace devkit::package
