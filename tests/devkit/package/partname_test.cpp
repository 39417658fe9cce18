#include "devkit/package/partname.h"

#include <gtest/gtest.h>

namespace devkit::package {
namespace {

TEST(PartNameTest, EquivalentNamesHaveOneKey) {
    EXPECT_EQ(NameKey("/Documents/1/A.fpage"), "/documents/1/a.fpage");
    EXPECT_EQ(NameKey("Documents\\1\\A.FPAGE"), "/documents/1/a.fpage");
    EXPECT_EQ(NameKey("/a%20b"), "/a b");
    EXPECT_EQ(NameKey("/%41"), "/a");
    EXPECT_EQ(NameKey(""), "/");
}

TEST(PartNameTest, AnEncodedSlashStaysEncoded) {
    EXPECT_EQ(NameKey("/a%2Fb"), "/a%2fb");
    EXPECT_EQ(NameKey("/a%5Cb"), "/a%5cb");
}

TEST(PartNameTest, APercentSignThatEncodesNothingStays) {
    EXPECT_EQ(NameKey("/100%"), "/100%");
    EXPECT_EQ(NameKey("/a%2"), "/a%2");
    EXPECT_EQ(NameKey("/a%zz"), "/a%zz");
}

TEST(PartNameTest, LettersOutsideAsciiKeepTheirCase) {
    EXPECT_NE(NameKey("/\xC3\x84"), NameKey("/\xC3\xA4"));
}

TEST(PartNameTest, ReferencesAreRelativeToTheirPart) {
    EXPECT_EQ(ResolveReference("/Documents/1/FixedDocument.fdoc", "Pages/1.fpage"),
              "/Documents/1/Pages/1.fpage");
    EXPECT_EQ(ResolveReference("/Documents/1/Pages/1.fpage", "../../../Resources/a.ttf"), "/Resources/a.ttf");
    EXPECT_EQ(ResolveReference("/Documents/1/FixedDocument.fdoc", "/Pages/1.fpage"), "/Pages/1.fpage");
    EXPECT_EQ(ResolveReference("/", "FixedDocSeq.fdseq"), "/FixedDocSeq.fdseq");
    EXPECT_EQ(ResolveReference("/a/b", "./c"), "/a/c");
    EXPECT_EQ(ResolveReference("/a/b", "..\\c"), "/c");
}

TEST(PartNameTest, AReferenceStaysInThePackage) {
    EXPECT_EQ(ResolveReference("/a/b", "../../../../c"), "/c");
    EXPECT_EQ(ResolveReference("/a/b", "/../c"), "/c");
    EXPECT_EQ(ResolveReference("/a/b", "http://example.com/c"), "");
    EXPECT_EQ(ResolveReference("/a/b", "C:/c"), "");
    EXPECT_EQ(ResolveReference("/a/b", ""), "");
}

TEST(PartNameTest, FragmentsAndEmptySegmentsAreDropped) {
    EXPECT_EQ(ResolveReference("/a/b", "c#top"), "/a/c");
    EXPECT_EQ(ResolveReference("/a/b", "c#http://x"), "/a/c");
    EXPECT_EQ(ResolveReference("/a/b", "#top"), "/a/b");
    EXPECT_EQ(ResolveReference("/a/b", "c//d/"), "/a/c/d");
}

TEST(PartNameTest, ABackslashBecomesASlash) {
    EXPECT_EQ(MakeLegalName("Metadata\\pagevalidator_0_Job_PT.xml"), "/Metadata/pagevalidator_0_Job_PT.xml");
    EXPECT_EQ(MakeLegalName("/a%5Cb%2fc"), "/a/b/c");
}

TEST(PartNameTest, IllegalCharactersAreEncoded) {
    EXPECT_EQ(MakeLegalName("/a b"), "/a%20b");
    EXPECT_EQ(MakeLegalName("/[Content_Types].xml"), "/%5BContent_Types%5D.xml");
    EXPECT_EQ(MakeLegalName("/\xC3\xA9?#\"<\x01"), "/%C3%A9%3F%23%22%3C%01");
    EXPECT_EQ(MakeLegalName("/100%"), "/100%25");
    EXPECT_EQ(MakeLegalName("/a%20b"), "/a%20b");
    EXPECT_EQ(MakeLegalName("/%41%7e"), "/A~");
    EXPECT_EQ(MakeLegalName("/a-._~!$&'()*+,;=:@z"), "/a-._~!$&'()*+,;=:@z");
}

TEST(PartNameTest, EmptySegmentsAndThoseOfDotsAreLeftOut) {
    EXPECT_EQ(MakeLegalName("//a///b/"), "/a/b");
    EXPECT_EQ(MakeLegalName("../../a/./b/.../c"), "/a/b/c");
    EXPECT_EQ(MakeLegalName("%2e%2e/a"), "/a");
    EXPECT_EQ(MakeLegalName("a./b.xml.."), "/a/b.xml");
}

TEST(PartNameTest, ANameIsNeverEmptyNorOfARelationshipsPart) {
    EXPECT_EQ(MakeLegalName(""), "/part");
    EXPECT_EQ(MakeLegalName("/../"), "/part");
    EXPECT_EQ(MakeLegalName("/_rels/a.rels"), "/a.rels");
    EXPECT_EQ(MakeLegalName("/b/_RELS/a.rels"), "/b/a.rels");
}

TEST(PartNameTest, RelationshipsStandBesideTheirPart) {
    EXPECT_EQ(RelationshipsPartOf("/"), "/_rels/.rels");
    EXPECT_EQ(RelationshipsPartOf("/a.xml"), "/_rels/a.xml.rels");
    EXPECT_EQ(RelationshipsPartOf("/a/b.xml"), "/a/_rels/b.xml.rels");
}

}  // namespace
}  // namespace devkit::package
