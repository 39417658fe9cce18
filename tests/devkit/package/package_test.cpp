#include "devkit/package/package.h"

#include <gtest/gtest.h>

#include <set>

#include "devkit/package/file.h"
#include "devkit/package/ziparchive.h"
#include "temporaryfolder.h"
#include "testpackages.h"

namespace devkit::package {
namespace {

using Names = std::vector<std::string>;

Names PartNames(const Package& package) {
    Names names;
    for (const PartInfo& part : package.Parts()) names.push_back(part.name);
    return names;
}

Names EntryNames(const std::string& bytes) {
    Names names;
    const ZipArchive archive(std::make_shared<MemorySource>(bytes), "test", {});
    for (const ZipEntry& entry : archive.Entries()) names.push_back(entry.name);
    return names;
}

std::vector<RawEntry> Interleaved() {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "p.fpage").name = "p.fpage/[1].last.piece";
    EntryOf(entries, "p.fpage/[1].last.piece").data = " Width=\"100\" Height=\"200\"/>";
    entries.insert(entries.begin(),
                   {"P.FPAGE/[0].Piece", "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\""});
    return entries;
}

TEST(PackageTest, ListsPartsInTheOrderOfTheArchive) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.emplace_back("Folder/", "");
    EXPECT_EQ(PartNames(OpenEntries(entries)), (Names{"/s.fdseq", "/d.fdoc", "/p.fpage"}));
}

TEST(PackageTest, FindsPartsByEquivalentNames) {
    const Package package = OpenEntries(SmallDocument());
    const auto page = package.Find("/P.FPage");
    ASSERT_TRUE(page);
    EXPECT_EQ(page->name, "/p.fpage");
    EXPECT_EQ(page->contentType, "application/vnd.ms-package.xps-fixedpage+xml");
    EXPECT_EQ(page->size,
              EntryOf(*std::make_unique<std::vector<RawEntry>>(SmallDocument()), "p.fpage").data.size());
    EXPECT_TRUE(package.Contains("\\%70.fpage"));
    EXPECT_FALSE(package.Contains("/q.fpage"));
    EXPECT_FALSE(package.Contains("/_rels/.rels"));
    EXPECT_FALSE(package.Contains("/[Content_Types].xml"));
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(package.Read("/q")); }), "is missing, /q");
}

TEST(PackageTest, JoinsThePiecesOfAnInterleavedPart) {
    const Package package = OpenEntries(Interleaved());
    EXPECT_EQ(PartNames(package), (Names{"/P.FPAGE", "/s.fdseq", "/d.fdoc"}));
    EXPECT_EQ(package.Read("/p.fpage"),
              "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"100\" Height=\"200\"/>");
    EXPECT_EQ(package.Find("/p.fpage")->size, package.Read("/p.fpage").size());
}

TEST(PackageTest, APartThatLacksAPieceCannotBeRead) {
    std::vector<RawEntry> entries = Interleaved();
    EntryOf(entries, "p.fpage/[1].last.piece").name = "p.fpage/[2].last.piece";
    EXPECT_FALSE(OpenEntries(entries).Find("/p.fpage")->whole);
    EXPECT_EQ(OpeningError(entries), "lacks a piece, /P.FPAGE");
    EntryOf(entries, "p.fpage/[2].last.piece").name = "p.fpage/[1].piece";
    EXPECT_EQ(OpeningError(entries), "lacks a piece, /P.FPAGE");
    EntryOf(entries, "p.fpage/[1].piece").name = "p.fpage/[0].piece";
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(OpenEntries(entries).Read("/p.fpage")); }),
              "lacks a piece, /P.FPAGE");
}

TEST(PackageTest, ReadsSizesThatStandBehindTheData) {
    std::vector<RawEntry> entries = SmallDocument();
    for (RawEntry& entry : entries) entry.flags = 8;
    RawEntry& page = EntryOf(entries, "p.fpage");
    page.method = 8;
    page.size = 300;
    page.crc = Crc32(std::string(300, '\0'));
    page.data = DeflatedZeros(300);
    const Package package = OpenEntries(entries);
    EXPECT_EQ(package.Read("/p.fpage"), std::string(300, '\0'));
    EXPECT_EQ(package.Read("/d.fdoc"), EntryOf(entries, "d.fdoc").data);
}

TEST(PackageTest, EntriesWithBackslashesAreParts) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.emplace_back("a\\b.xml", "x");
    EXPECT_EQ(OpenEntries(entries).Read("/A/B.xml"), "x");
}

TEST(PackageTest, WithoutContentTypesTheCustomaryOnesCount) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.erase(entries.begin());
    Package package = OpenEntries(entries);
    EXPECT_EQ(package.Findings(), Names{"is missing, /[Content_Types].xml"});
    EXPECT_EQ(package.Find("/p.fpage")->contentType, "application/vnd.ms-package.xps-fixedpage+xml");
    package.Add("/t.bin", "application/x", "1");
    const std::string saved = SavedBytes(package);
    EXPECT_EQ(EntryNames(saved),
              (Names{"_rels/.rels", "s.fdseq", "d.fdoc", "p.fpage", "t.bin", "[Content_Types].xml"}));
    EXPECT_EQ(OpenBytes(saved).Find("/t.bin")->contentType, "application/x");
    EXPECT_TRUE(OpenBytes(saved).Findings().empty());
}

TEST(PackageTest, EncryptedContentTypesAreReplacedOnWriting) {
    std::vector<RawEntry> entries = SmallDocument();
    entries[0].flags = 1;
    Package package = OpenEntries(entries);
    EXPECT_EQ(package.Findings(), Names{"is encrypted, [Content_Types].xml"});
    package.Add("/t.bin", "application/x", "1");
    const Package saved = OpenBytes(SavedBytes(package));
    EXPECT_TRUE(saved.Findings().empty());
    EXPECT_EQ(saved.Find("/t.bin")->contentType, "application/x");
}

TEST(PackageTest, WithoutChangesTheArchiveIsCopiedByteForByte) {
    const std::string bytes = BuildZip(SmallDocument()) + "";
    const Package package = OpenBytes(bytes);
    EXPECT_EQ(SavedBytes(package), bytes);
}

TEST(PackageTest, WhatDoesNotChangeKeepsItsCompressedBytesItsNameAndItsPlace) {
    std::vector<RawEntry> entries = Interleaved();
    RawEntry& compressed = entries.emplace_back("big.bin", DeflatedZeros(10'000));
    compressed.method = 8;
    compressed.flags = 8;
    compressed.size = 10'000;
    compressed.crc = Crc32(std::string(10'000, '\0'));
    entries.emplace_back("Folder/", "");
    Package package = OpenEntries(entries);
    package.Replace("/D.FDOC", "new");
    const std::string saved = SavedBytes(package);

    Names names;
    for (const RawEntry& entry : entries) names.push_back(entry.name);
    EXPECT_EQ(EntryNames(saved), names);
    EXPECT_NE(saved.find(DeflatedZeros(10'000)), std::string::npos);
    const Package again = OpenBytes(saved);
    EXPECT_EQ(again.Read("/d.fdoc"), "new");
    for (const char* name : {"/p.fpage", "/s.fdseq", "/big.bin", "/_rels/.rels", "/[Content_Types].xml"})
        EXPECT_EQ(again.Read(name), package.Read(name)) << name;
}

TEST(PackageTest, NewBytesMakeAnInterleavedPartOneEntry) {
    Package package = OpenEntries(Interleaved());
    package.Replace("/p.fpage", "new");
    const std::string saved = SavedBytes(package);
    EXPECT_EQ(EntryNames(saved),
              (Names{"P.FPAGE", "[Content_Types].xml", "_rels/.rels", "s.fdseq", "d.fdoc"}));
    EXPECT_EQ(OpenBytes(saved).Read("/p.fpage"), "new");
}

TEST(PackageTest, AReplacedPartThatLackedAPieceIsWhole) {
    std::vector<RawEntry> entries = Interleaved();
    EntryOf(entries, "p.fpage/[1].last.piece").name = "p.fpage/[1].piece";
    Package package = OpenEntries(entries);
    package.Replace("/p.fpage", "new");
    EXPECT_EQ(package.Read("/p.fpage"), "new");
    EXPECT_TRUE(package.Find("/p.fpage")->whole);
    EXPECT_EQ(OpenBytes(SavedBytes(package)).Read("/p.fpage"), "new");
}

TEST(PackageTest, SavingTwiceGivesTheSameBytes) {
    Package package = OpenEntries(SmallDocument());
    package.Add("/a.xml", "application/x", std::string(1'000, 'a'));
    package.Replace("/p.fpage", "new");
    EXPECT_EQ(SavedBytes(package), SavedBytes(package));
}

TEST(PackageTest, AddedPartsHaveContentTypes) {
    Package package = OpenEntries(SmallDocument());
    EXPECT_EQ(package.Add("/Metadata/t.xml", "application/x", "<t/>"), "/Metadata/t.xml");
    EXPECT_EQ(package.Add("/q.FPAGE", "application/vnd.ms-package.xps-fixedpage+xml", "<q/>"), "/q.FPAGE");
    const std::string saved = SavedBytes(package);
    EXPECT_EQ(EntryNames(saved), (Names{"[Content_Types].xml", "_rels/.rels", "s.fdseq", "d.fdoc", "p.fpage",
                                        "Metadata/t.xml", "q.FPAGE"}));
    const Package again = OpenBytes(saved);
    EXPECT_EQ(again.Find("/metadata/t.xml")->contentType, "application/x");
    EXPECT_EQ(again.Read("/Metadata/t.xml"), "<t/>");
    const std::string types = again.Read("/[Content_Types].xml");
    EXPECT_NE(types.find("<Override PartName=\"/Metadata/t.xml\" ContentType=\"application/x\"/>"),
              std::string::npos);
    EXPECT_EQ(types.find("q.FPAGE"), std::string::npos);
}

TEST(PackageTest, AddedNamesAreLegalAndUnique) {
    Package package = OpenEntries(SmallDocument());
    EXPECT_EQ(package.Add("P.FPAGE", "x", ""), "/P-2.FPAGE");
    EXPECT_EQ(package.Add("/p.fpage", "x", ""), "/p-3.fpage");
    EXPECT_EQ(package.Add("\\a\\..\\b c", "x", ""), "/a/b%20c");
    EXPECT_EQ(package.Add("/a/B%20C", "x", ""), "/a/B%20C-2");
    EXPECT_EQ(package.Add("/[Content_Types].xml", "x", ""), "/%5BContent_Types%5D-2.xml");
    EXPECT_EQ(package.Add("/a/.x", "x", ""), "/a/.x");
    EXPECT_EQ(package.Add("/a/.x", "x", ""), "/a/.x-2");
}

TEST(PackageTest, ANewNameNeitherStartsNorContinuesThatOfAPart) {
    Package package = OpenEntries(SmallDocument());
    EXPECT_EQ(package.Add("/P.fpage/t.xml", "x", ""), "/P.fpage-2/t.xml");
    EXPECT_EQ(package.Add("/a/b/c.xml", "x", ""), "/a/b/c.xml");
    EXPECT_EQ(package.Add("/A/b", "x", ""), "/A/b-2");
}

TEST(PackageTest, ManyPartsOfOneWantedNameAreQuick) {
    Package package = OpenEntries(SmallDocument());
    std::string last;
    for (int i = 0; i < 20'000; ++i) last = package.Add("/Metadata/ticket.xml", "x", "");
    EXPECT_EQ(last, "/Metadata/ticket-20000.xml");
}

TEST(PackageTest, ANameThatIsTooLongIsAnError) {
    Package package = OpenEntries(SmallDocument());
    EXPECT_EQ(ErrorOf([&] { package.Add(std::string(5'000, 'a'), "x", ""); }),
              "the name of a new part is too long, /" + std::string(63, 'a'));
}

TEST(PackageTest, RemovedPartsLoseTheirRelationshipsAndContentTypes) {
    Package package = OpenEntries(SmallDocument());
    const std::string name = package.Add("/t.xml", "application/x", "1");
    package.SetRelationships(name, {{"R1", "urn:x", "/p.fpage", false}});
    package.SetRelationships("/p.fpage", {{"R1", "urn:x", "/t.xml", false}});
    Package saved = OpenBytes(SavedBytes(package));
    saved.Remove("/T.XML");
    saved.Remove("/p.fpage");
    saved.Remove("/none");
    EXPECT_FALSE(saved.Contains("/t.xml"));
    const std::string bytes = SavedBytes(saved);
    EXPECT_EQ(EntryNames(bytes), (Names{"[Content_Types].xml", "_rels/.rels", "s.fdseq", "d.fdoc"}));
    EXPECT_EQ(OpenBytes(bytes).Read("/[Content_Types].xml").find("t.xml"), std::string::npos);
}

TEST(PackageTest, ARemovedNameCanBeUsedAgain) {
    Package package = OpenEntries(SmallDocument());
    package.Remove("/p.fpage");
    EXPECT_EQ(package.Add("/P.fpage", "application/x", "again"), "/P.fpage");
    const std::string bytes = SavedBytes(package);
    EXPECT_EQ(OpenBytes(bytes).Read("/p.fpage"), "again");
    EXPECT_EQ(OpenBytes(bytes).Find("/p.fpage")->contentType, "application/x");
}

TEST(PackageTest, RelationshipsAreReadReplacedAndRemoved) {
    Package package = OpenEntries(SmallDocument());
    ASSERT_EQ(package.Relationships("/").size(), 1U);
    EXPECT_EQ(package.Relationships("/")[0].target, "/s.fdseq");
    EXPECT_TRUE(package.Relationships("/p.fpage").empty());

    const std::vector<Relationship> links = {{"R1", "urn:a", "../x", false},
                                             {"R2", "urn:b", "http://y", true}};
    package.SetRelationships("/p.fpage", links);
    EXPECT_EQ(package.Relationships("/P.fpage"), links);
    Package saved = OpenBytes(SavedBytes(package));
    EXPECT_EQ(saved.Relationships("/p.fpage"), links);
    saved.SetRelationships("/p.fpage", {});
    EXPECT_EQ(EntryNames(SavedBytes(saved)),
              (Names{"[Content_Types].xml", "_rels/.rels", "s.fdseq", "d.fdoc", "p.fpage"}));
}

TEST(PackageTest, WithoutADefaultForRelationshipsTheNewPartDeclaresItself) {
    std::vector<RawEntry> entries = SmallDocument();
    entries[0].data = R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types"/>)";
    Package package = OpenEntries(entries);
    package.SetRelationships("/p.fpage", {{"R1", "urn:a", "/x", false}});
    EXPECT_NE(
        OpenBytes(SavedBytes(package)).Read("/[Content_Types].xml").find("PartName=\"/_rels/p.fpage.rels\""),
        std::string::npos);
}

TEST(PackageTest, SavesToAFile) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "in.xps", BuildZip(SmallDocument()));
    Package package = Package::Open(folder / "in.xps");
    EXPECT_EQ(package.Where(), PathText(folder / "in.xps"));
    package.Replace("/p.fpage", "new");
    package.Save(folder / "out.xps");
    EXPECT_EQ(folder.Names(), (std::set<std::string>{"in.xps", "out.xps"}));
    EXPECT_EQ(Package::Open(folder / "out.xps").Read("/p.fpage"), "new");
    EXPECT_EQ(ReadFileBytes(folder / "in.xps"), BuildZip(SmallDocument()));
}

TEST(PackageTest, IsNotWrittenOverItsOwnInput) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "in.xps", BuildZip(SmallDocument()));
    const Package package = Package::Open(folder / "in.xps");
    EXPECT_EQ(ErrorOf([&] { package.Save(folder / "." / "IN.xps"); }),
              "cannot be written over its own input, " + PathText(folder / "." / "IN.xps"));
    EXPECT_EQ(ReadFileBytes(folder / "in.xps"), BuildZip(SmallDocument()));
}

TEST(PackageTest, WhatCannotBeWrittenLeavesNothing) {
    const TemporaryFolder folder;
    const Package package = OpenEntries(SmallDocument());
    EXPECT_NE(ErrorOf([&] { package.Save(folder / "none" / "out.xps"); }), "");
    EXPECT_TRUE(folder.Names().empty());
}

}  // namespace
}  // namespace devkit::package
