#include "devkit/package/package.h"

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <set>

#include "devkit/common/file.h"
#include "devkit/package/ziparchive.h"
#include "heapusage.h"
#include "temporaryfolder.h"
#include "temporaryplace.h"
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
    for (std::size_t i = 0; i < archive.Entries().size(); ++i) names.push_back(archive.NameOf(i));
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
    EXPECT_EQ((Names{"/s.fdseq", "/d.fdoc", "/p.fpage"}), PartNames(OpenEntries(entries)));
}

TEST(PackageTest, FindsPartsByEquivalentNames) {
    const Package package = OpenEntries(SmallDocument());
    const auto page = package.Find("/P.FPage");
    ASSERT_TRUE(page);
    EXPECT_EQ("/p.fpage", page->name);
    EXPECT_EQ("application/vnd.ms-package.xps-fixedpage+xml", page->contentType);
    EXPECT_EQ(EntryOf(*std::make_unique<std::vector<RawEntry>>(SmallDocument()), "p.fpage").data.size(),
              page->size);
    EXPECT_TRUE(package.Contains("\\%70.fpage"));
    EXPECT_FALSE(package.Contains("/q.fpage"));
    EXPECT_FALSE(package.Contains("/_rels/.rels"));
    EXPECT_FALSE(package.Contains("/[Content_Types].xml"));
    EXPECT_EQ("is missing, /q", ErrorOf([&] { static_cast<void>(package.Read("/q")); }));
}

TEST(PackageTest, JoinsThePiecesOfAnInterleavedPart) {
    const Package package = OpenEntries(Interleaved());
    EXPECT_EQ((Names{"/P.FPAGE", "/s.fdseq", "/d.fdoc"}), PartNames(package));
    EXPECT_EQ("<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"100\" Height=\"200\"/>",
              package.Read("/p.fpage"));
    EXPECT_EQ(package.Read("/p.fpage").size(), package.Find("/p.fpage")->size);
}

TEST(PackageTest, ThePartIsAsLongAsItsNewBytes) {
    for (const std::vector<RawEntry>& entries : {SmallDocument(), Interleaved()}) {
        Package package = OpenEntries(entries);
        package.Replace("/p.fpage", "new");
        EXPECT_EQ(3U, package.Find("/p.fpage")->size);
        EXPECT_EQ(5U, package.Find(package.Add("/added", "a/b", "added"))->size);
    }
}

TEST(PackageTest, APartThatLacksAPieceCannotBeRead) {
    std::vector<RawEntry> entries = Interleaved();
    EntryOf(entries, "p.fpage/[1].last.piece").name = "p.fpage/[2].last.piece";
    EXPECT_FALSE(OpenEntries(entries).Find("/p.fpage")->whole);
    EXPECT_EQ("lacks a piece, /P.FPAGE", OpeningError(entries));
    EntryOf(entries, "p.fpage/[2].last.piece").name = "p.fpage/[1].piece";
    EXPECT_EQ("lacks a piece, /P.FPAGE", OpeningError(entries));
    EntryOf(entries, "p.fpage/[1].piece").name = "p.fpage/[0].piece";
    EXPECT_EQ("lacks a piece, /P.FPAGE",
              ErrorOf([&] { static_cast<void>(OpenEntries(entries).Read("/p.fpage")); }));
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
    EXPECT_EQ(std::string(300, '\0'), package.Read("/p.fpage"));
    EXPECT_EQ(EntryOf(entries, "d.fdoc").data, package.Read("/d.fdoc"));
}

TEST(PackageTest, EntriesWithBackslashesAreParts) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.emplace_back("a\\b.xml", "x");
    EXPECT_EQ("x", OpenEntries(entries).Read("/A/B.xml"));
}

TEST(PackageTest, WithoutContentTypesTheCustomaryOnesCount) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.erase(entries.begin());
    Package package = OpenEntries(entries);
    EXPECT_EQ(Names{"is missing, /[Content_Types].xml"}, package.Findings());
    EXPECT_EQ("application/vnd.ms-package.xps-fixedpage+xml", package.Find("/p.fpage")->contentType);
    package.Add("/t.bin", "application/x", "1");
    const std::string saved = SavedBytes(package);
    EXPECT_EQ((Names{"_rels/.rels", "s.fdseq", "d.fdoc", "p.fpage", "t.bin", "[Content_Types].xml"}),
              EntryNames(saved));
    EXPECT_EQ("application/x", OpenBytes(saved).Find("/t.bin")->contentType);
    EXPECT_TRUE(OpenBytes(saved).Findings().empty());
}

TEST(PackageTest, EncryptedContentTypesAreReplacedOnWriting) {
    std::vector<RawEntry> entries = SmallDocument();
    entries[0].flags = 1;
    Package package = OpenEntries(entries);
    EXPECT_EQ(Names{"is encrypted, [Content_Types].xml"}, package.Findings());
    package.Add("/t.bin", "application/x", "1");
    const Package saved = OpenBytes(SavedBytes(package));
    EXPECT_TRUE(saved.Findings().empty());
    EXPECT_EQ("application/x", saved.Find("/t.bin")->contentType);
}

TEST(PackageTest, WithoutChangesTheArchiveIsCopiedByteForByte) {
    const std::string bytes = BuildZip(SmallDocument()) + "";
    const Package package = OpenBytes(bytes);
    EXPECT_EQ(bytes, SavedBytes(package));
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
    EXPECT_EQ(names, EntryNames(saved));
    EXPECT_NE(std::string::npos, saved.find(DeflatedZeros(10'000)));
    const Package again = OpenBytes(saved);
    EXPECT_EQ("new", again.Read("/d.fdoc"));
    for (const char* name : {"/p.fpage", "/s.fdseq", "/big.bin", "/_rels/.rels", "/[Content_Types].xml"})
        EXPECT_EQ(package.Read(name), again.Read(name)) << name;
}

TEST(PackageTest, NewBytesMakeAnInterleavedPartOneEntry) {
    Package package = OpenEntries(Interleaved());
    package.Replace("/p.fpage", "new");
    const std::string saved = SavedBytes(package);
    EXPECT_EQ((Names{"P.FPAGE", "[Content_Types].xml", "_rels/.rels", "s.fdseq", "d.fdoc"}),
              EntryNames(saved));
    EXPECT_EQ("new", OpenBytes(saved).Read("/p.fpage"));
}

TEST(PackageTest, AReplacedPartThatLackedAPieceIsWhole) {
    std::vector<RawEntry> entries = Interleaved();
    EntryOf(entries, "p.fpage/[1].last.piece").name = "p.fpage/[1].piece";
    Package package = OpenEntries(entries);
    package.Replace("/p.fpage", "new");
    EXPECT_EQ("new", package.Read("/p.fpage"));
    EXPECT_TRUE(package.Find("/p.fpage")->whole);
    EXPECT_EQ("new", OpenBytes(SavedBytes(package)).Read("/p.fpage"));
}

TEST(PackageTest, SavingTwiceGivesTheSameBytes) {
    Package package = OpenEntries(SmallDocument());
    package.Add("/a.xml", "application/x", std::string(1'000, 'a'));
    package.Replace("/p.fpage", "new");
    EXPECT_EQ(SavedBytes(package), SavedBytes(package));
}

TEST(PackageTest, SavedForTheLastTimeItGivesTheSameBytesAndHasNoPartsAnyMore) {
    Package package = OpenEntries(Interleaved());
    for (int i = 0; i < 40; ++i)
        package.Add("/a.xml", "application/x", std::string(static_cast<std::size_t>(i) * 1'000, 'a'));
    package.Replace("/p.fpage", "new");
    package.Remove("/d.fdoc");
    const std::string saved = SavedBytes(package);
    MemorySink sink;
    std::move(package).Save(sink);
    EXPECT_EQ(saved, sink.bytes);
    EXPECT_TRUE(package.Parts().empty());
    EXPECT_EQ("is missing, /s.fdseq", ErrorOf([&] { static_cast<void>(package.Read("/s.fdseq")); }));
    EXPECT_EQ("test.xps", package.Where());
}

TEST(PackageTest, ALastSaveThatFailsLeavesNoParts) {
    Package package = OpenEntries(SmallDocument());
    package.Replace("/p.fpage", "new");
    MemorySink sink(std::make_shared<CallCounter>(1));
    EXPECT_EQ("cannot be copied: the disk is gone, test.xps",
              ErrorOf([&] { std::move(package).Save(sink); }));
    EXPECT_TRUE(package.Parts().empty());
}

TEST(PackageTest, ItsOwnInputIsRefusedBeforeItsPartsGo) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "in.xps", BuildZip(SmallDocument()));
    Package package = Package::Open(folder / "in.xps");
    EXPECT_EQ("cannot be written over its own input, " + common::PathText(folder / "in.xps"),
              ErrorOf([&] { std::move(package).Save(folder / "in.xps"); }));
    EXPECT_TRUE(package.Contains("/p.fpage"));
    std::move(package).Save(folder / "out.xps");
    EXPECT_EQ(BuildZip(SmallDocument()), ReadFileBytes(folder / "out.xps"));
}

TEST(PackageTest, AddedPartsHaveContentTypes) {
    Package package = OpenEntries(SmallDocument());
    EXPECT_EQ("/Metadata/t.xml", package.Add("/Metadata/t.xml", "application/x", "<t/>"));
    EXPECT_EQ("/q.FPAGE", package.Add("/q.FPAGE", "application/vnd.ms-package.xps-fixedpage+xml", "<q/>"));
    const std::string saved = SavedBytes(package);
    EXPECT_EQ((Names{"[Content_Types].xml", "_rels/.rels", "s.fdseq", "d.fdoc", "p.fpage", "Metadata/t.xml",
                     "q.FPAGE"}),
              EntryNames(saved));
    const Package again = OpenBytes(saved);
    EXPECT_EQ("application/x", again.Find("/metadata/t.xml")->contentType);
    EXPECT_EQ("<t/>", again.Read("/Metadata/t.xml"));
    const std::string types = again.Read("/[Content_Types].xml");
    EXPECT_NE(std::string::npos,
              types.find("<Override PartName=\"/Metadata/t.xml\" ContentType=\"application/x\"/>"));
    EXPECT_EQ(std::string::npos, types.find("q.FPAGE"));
}

TEST(PackageTest, AddedNamesAreLegalAndUnique) {
    Package package = OpenEntries(SmallDocument());
    EXPECT_EQ("/P-2.FPAGE", package.Add("P.FPAGE", "x", ""));
    EXPECT_EQ("/p-3.fpage", package.Add("/p.fpage", "x", ""));
    EXPECT_EQ("/a/b%20c", package.Add("\\a\\..\\b c", "x", ""));
    EXPECT_EQ("/a/B%20C-2", package.Add("/a/B%20C", "x", ""));
    EXPECT_EQ("/%5BContent_Types%5D-2.xml", package.Add("/[Content_Types].xml", "x", ""));
    EXPECT_EQ("/a/.x", package.Add("/a/.x", "x", ""));
    EXPECT_EQ("/a/.x-2", package.Add("/a/.x", "x", ""));
}

TEST(PackageTest, ANewNameNeitherStartsNorContinuesThatOfAPart) {
    Package package = OpenEntries(SmallDocument());
    EXPECT_EQ("/P.fpage-2/t.xml", package.Add("/P.fpage/t.xml", "x", ""));
    EXPECT_EQ("/a/b/c.xml", package.Add("/a/b/c.xml", "x", ""));
    EXPECT_EQ("/A/b-2", package.Add("/A/b", "x", ""));
}

TEST(PackageTest, ManyPartsOfOneWantedNameAreQuick) {
    Package package = OpenEntries(SmallDocument());
    std::string last;
    for (int i = 0; i < 20'000; ++i) last = package.Add("/Metadata/ticket.xml", "x", "");
    EXPECT_EQ("/Metadata/ticket-20000.xml", last);
}

TEST(PackageTest, ANameThatIsTooLongIsAnError) {
    Package package = OpenEntries(SmallDocument());
    EXPECT_EQ("the name of a new part is too long, /" + std::string(63, 'a'),
              ErrorOf([&] { package.Add(std::string(5'000, 'a'), "x", ""); }));
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
    EXPECT_EQ((Names{"[Content_Types].xml", "_rels/.rels", "s.fdseq", "d.fdoc"}), EntryNames(bytes));
    EXPECT_EQ(std::string::npos, OpenBytes(bytes).Read("/[Content_Types].xml").find("t.xml"));
}

TEST(PackageTest, ARemovedNameCanBeUsedAgain) {
    Package package = OpenEntries(SmallDocument());
    package.Remove("/p.fpage");
    EXPECT_EQ("/P.fpage", package.Add("/P.fpage", "application/x", "again"));
    const std::string bytes = SavedBytes(package);
    EXPECT_EQ("again", OpenBytes(bytes).Read("/p.fpage"));
    EXPECT_EQ("application/x", OpenBytes(bytes).Find("/p.fpage")->contentType);
}

TEST(PackageTest, RelationshipsAreReadReplacedAndRemoved) {
    Package package = OpenEntries(SmallDocument());
    ASSERT_EQ(1U, package.Relationships("/").size());
    EXPECT_EQ("/s.fdseq", package.Relationships("/")[0].target);
    EXPECT_TRUE(package.Relationships("/p.fpage").empty());

    const std::vector<Relationship> links = {{"R1", "urn:a", "../x", false},
                                             {"R2", "urn:b", "http://y", true}};
    package.SetRelationships("/p.fpage", links);
    EXPECT_EQ(links, package.Relationships("/P.fpage"));
    Package saved = OpenBytes(SavedBytes(package));
    EXPECT_EQ(links, saved.Relationships("/p.fpage"));
    saved.SetRelationships("/p.fpage", {});
    EXPECT_EQ((Names{"[Content_Types].xml", "_rels/.rels", "s.fdseq", "d.fdoc", "p.fpage"}),
              EntryNames(SavedBytes(saved)));
}

TEST(PackageTest, OfManyNewRelationshipsLittleIsKeptInMemory) {
    constexpr int kCount = 2'000;
    const std::string type = "urn:" + std::string(1'000, 'x');
    Package package = OpenEntries(SmallDocument());
    const auto links = [&type](int number) {
        return std::vector<Relationship>{{"R1", type, "/x" + std::to_string(number), false}};
    };
    const auto name = [](int number) { return "/pages/" + std::to_string(number) + ".fpage"; };
    const std::size_t before = tests::HeapUsage::Now().bytes;
    for (int i = 0; i < kCount; ++i) package.SetRelationships(name(i), links(i));
    EXPECT_GT(before + kCount * type.size(), tests::HeapUsage::Now().bytes);
    const Package again = OpenBytes(SavedBytes(package));
    for (int i = 0; i < kCount; ++i) {
        ASSERT_EQ(links(i), package.Relationships(name(i)));
        ASSERT_EQ(links(i), again.Relationships(name(i)));
    }
}

TEST(PackageTest, NewRelationshipsThatCannotBePutAsideAreAnErrorThatSaysSo) {
    const TemporaryFolder folder;
    const tests::TemporaryPlace place(folder / "nowhere");
    Package package = OpenEntries(SmallDocument());
    const std::vector<Relationship> few = {{"R1", "urn:a", "/x", false}};
    package.SetRelationships("/p.fpage", few);
    const std::vector<Relationship> tooLong = {{"R1", "urn:" + std::string(300'000, 'x'), "/x", false}};
    const std::string error = ErrorOf([&] { package.SetRelationships("/p.fpage", tooLong); });
    EXPECT_TRUE(error.starts_with("there is no folder for temporary files: ")) << error;
    EXPECT_EQ(few, package.Relationships("/p.fpage"));
}

TEST(PackageTest, WithoutADefaultForRelationshipsTheNewPartDeclaresItself) {
    std::vector<RawEntry> entries = SmallDocument();
    entries[0].data = R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types"/>)";
    Package package = OpenEntries(entries);
    package.SetRelationships("/p.fpage", {{"R1", "urn:a", "/x", false}});
    EXPECT_NE(
        std::string::npos,
        OpenBytes(SavedBytes(package)).Read("/[Content_Types].xml").find("PartName=\"/_rels/p.fpage.rels\""));
}

TEST(PackageTest, SavesToAFile) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "in.xps", BuildZip(SmallDocument()));
    Package package = Package::Open(folder / "in.xps");
    EXPECT_EQ(common::PathText(folder / "in.xps"), package.Where());
    package.Replace("/p.fpage", "new");
    package.Save(folder / "out.xps");
    EXPECT_EQ((std::set<std::string>{"in.xps", "out.xps"}), folder.Names());
    EXPECT_EQ("new", Package::Open(folder / "out.xps").Read("/p.fpage"));
    EXPECT_EQ(BuildZip(SmallDocument()), ReadFileBytes(folder / "in.xps"));
}

TEST(PackageTest, MoreEntriesThanAnArchiveCountsWithoutZip64ComeOutAgain) {
    std::vector<RawEntry> entries = SmallDocument();
    for (int i = 0; i < 70'000; ++i) entries.emplace_back("part" + std::to_string(i) + ".bin", "");
    entries.emplace_back("last.bin", "the last");
    Package package = OpenEntries(entries);
    package.Replace("/p.fpage", "new");
    const Package again = OpenBytes(SavedBytes(package));
    EXPECT_EQ(package.Parts().size(), again.Parts().size());
    EXPECT_EQ("new", again.Read("/p.fpage"));
    EXPECT_EQ("the last", again.Read("/last.bin"));
}

TEST(PackageTest, IsNotWrittenOverItsOwnInput) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "in.xps", BuildZip(SmallDocument()));
    const Package package = Package::Open(folder / "in.xps");
    EXPECT_EQ("cannot be written over its own input, " + common::PathText(folder / "." / "IN.xps"),
              ErrorOf([&] { package.Save(folder / "." / "IN.xps"); }));
    EXPECT_EQ(BuildZip(SmallDocument()), ReadFileBytes(folder / "in.xps"));
}

TEST(PackageTest, WhatCannotBeWrittenLeavesNothing) {
    const TemporaryFolder folder;
    const Package package = OpenEntries(SmallDocument());
    EXPECT_NE("", ErrorOf([&] { package.Save(folder / "none" / "out.xps"); }));
    EXPECT_TRUE(folder.Names().empty());
}

}  // namespace
}  // namespace devkit::package
