#include <gtest/gtest.h>

#include <chrono>
#include <set>

#include "devkit/package/package.h"
#include "temporaryfolder.h"
#include "testpackages.h"

namespace devkit::package {
namespace {

// An entry that inflates to zeros, as honest as it can be.
RawEntry Zeros(std::string name, std::uint32_t count) {
    RawEntry entry(std::move(name), DeflatedZeros(count));
    entry.method = 8;
    entry.size = count;
    entry.crc = Crc32(std::string(count, '\0'));
    return entry;
}

std::string ReadingError(const std::vector<RawEntry>& entries, const char* part,
                         const common::Limits& limits = {}) {
    return ErrorOf([&] { static_cast<void>(OpenEntries(entries, limits).Read(part)); });
}

TEST(HostilePackageTest, WhatIsNoZipArchiveIsRefused) {
    EXPECT_EQ("is not a zip archive, test.xps", ErrorOf([] {
                  static_cast<void>(OpenBytes("not a zip archive at all, but long enough to be one"));
              }));
    EXPECT_EQ("is not a zip archive, test.xps", ErrorOf([] { static_cast<void>(OpenBytes("")); }));
}

TEST(HostilePackageTest, ABombByItsDeclaredSizeIsRefusedBeforeItIsRead) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.emplace_back("bomb.bin", "x").size = 0xF0000000;
    EXPECT_EQ("is larger than 536870912 bytes, bomb.bin", OpeningError(entries));
}

TEST(HostilePackageTest, PartsThatAreABombTogetherAreRefused) {
    std::vector<RawEntry> entries = SmallDocument();
    for (int i = 0; i < 20; ++i) entries.emplace_back("bomb" + std::to_string(i), "x").size = 0x1F000000;
    EXPECT_EQ("its parts are larger than 8589934592 bytes, test.xps", OpeningError(entries));
}

TEST(HostilePackageTest, ABombByItsRealSizeIsRefused) {
    std::vector<RawEntry> entries = SmallDocument();
    RawEntry& bomb = entries.emplace_back(Zeros("bomb.bin", 2'000'000));
    bomb.size = 10;
    EXPECT_EQ("its data is longer than the archive says, bomb.bin", ReadingError(entries, "/bomb.bin"));
}

TEST(HostilePackageTest, APartIsHeldToTheLimitForParts) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.push_back(Zeros("big.bin", 2'000'000));
    common::Limits limits;
    limits.maxPartBytes = 2'000'000;
    EXPECT_EQ("", ReadingError(entries, "/big.bin", limits));
    limits.maxPartBytes = 1'999'999;
    EXPECT_EQ("is larger than 1999999 bytes, big.bin", OpeningError(entries, limits));
}

TEST(HostilePackageTest, PiecesAreHeldToTheLimitTogether) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.push_back(Zeros("a/[0].piece", 1'000));
    entries.push_back(Zeros("a/[1].last.piece", 1'000));
    common::Limits limits;
    limits.maxPartBytes = 1'999;
    EXPECT_EQ("is larger than 1999 bytes, /a", OpeningError(entries, limits));
}

TEST(HostilePackageTest, StructureIsHeldToItsOwnLimit) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "d.fdoc").data += std::string(5'000, ' ');
    common::Limits limits;
    limits.structure.maxBytes = 5'000;
    EXPECT_EQ("is larger than 5000 bytes, /d.fdoc", OpeningError(entries, limits));
    entries = SmallDocument();
    EntryOf(entries, "_rels/.rels").data += std::string(5'000, ' ');
    EXPECT_EQ("is larger than 5000 bytes, _rels/.rels", OpeningError(entries, limits));
}

TEST(HostilePackageTest, EntriesThatShareTheirBytesAreRefused) {
    std::vector<RawEntry> entries = SmallDocument();
    RawEntry kernel("kernel", DeflatedZeros(1'000'000));
    kernel.method = 8;
    kernel.size = 1'000'000;
    entries.insert(entries.begin(), kernel);
    for (int i = 0; i < 10; ++i) {
        RawEntry& copy = entries.emplace_back("copy" + std::to_string(i), "");
        copy.method = 8;
        copy.size = 1'000'000;
        copy.compressedSize = static_cast<std::uint32_t>(kernel.data.size());
        copy.localOffset = 0;
    }
    EXPECT_EQ("its entries overlap or are cut off, test.xps", OpeningError(entries));
}

TEST(HostilePackageTest, NamesThatLeaveThePackageAreRefused) {
    for (const char* name :
         {"../evil", "a/../../evil", "/etc/evil", "C:\\evil", "..\\evil", "a/..", "%2e%2e/evil"}) {
        std::vector<RawEntry> entries = SmallDocument();
        entries.emplace_back(name, "x");
        EXPECT_EQ("an entry's name leaves the package, " + std::string(name), OpeningError(entries));
    }
}

TEST(HostilePackageTest, AnErrorIsOneLineWhateverTheNameIs) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.emplace_back("../a\r\nb\x1B[2J", "x");
    const std::string error = OpeningError(entries);
    EXPECT_EQ(std::string::npos, error.find_first_of("\r\n\x1B")) << error;
    EXPECT_TRUE(error.starts_with("an entry's name leaves the package, ../a"));
}

TEST(HostilePackageTest, DuplicateNamesAreRefused) {
    for (const char* name : {"p.fpage", "P.FPAGE", "%70.fpage", "p.fpage/[0].last.piece"}) {
        std::vector<RawEntry> entries = SmallDocument();
        entries.emplace_back(name, "x");
        EXPECT_TRUE(OpeningError(entries).starts_with("two parts have the same name, /")) << name;
    }
    std::vector<RawEntry> entries = SmallDocument();
    entries.emplace_back("[CONTENT_TYPES].xml", "x");
    EXPECT_EQ("two parts have the same name, /[CONTENT_TYPES].xml", OpeningError(entries));
}

TEST(HostilePackageTest, CyclesOfReferencesEnd) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "s.fdseq").data = "<FixedDocumentSequence xmlns=\"" + kXps +
                                       "\"><DocumentReference Source=\"s.fdseq\"/></FixedDocumentSequence>";
    EXPECT_EQ("is not a fixed document, /s.fdseq", OpeningError(entries));

    entries = SmallDocument();
    EntryOf(entries, "d.fdoc").data =
        "<FixedDocument xmlns=\"" + kXps + "\"><PageContent Source=\"d.fdoc\"/></FixedDocument>";
    EXPECT_EQ("has no pages, /s.fdseq", OpeningError(entries));
}

TEST(HostilePackageTest, CyclesOfRelationshipsEnd) {
    std::vector<RawEntry> entries = SmallDocument();
    const std::string resource = kXps + "/required-resource";
    entries.emplace_back("_rels/p.fpage.rels",
                         Links({{resource, "p.fpage"}, {resource, "a"}, {resource, "/A"}}));
    entries.emplace_back("a", "x");
    entries.emplace_back("_rels/a.rels", Links({{resource, "p.fpage"}}));
    const XpsDocument document = OpenDocument(entries);
    EXPECT_EQ((std::vector<std::string>{"/p.fpage", "/a"}),
              document.sequence.documents.at(0).pages.at(0).resources);
}

TEST(HostilePackageTest, MoreReferencesThanTheLimitAreRefused) {
    std::vector<RawEntry> entries = SmallDocument();
    std::string& document = EntryOf(entries, "d.fdoc").data;
    document = "<FixedDocument xmlns=\"" + kXps + "\">";
    for (int i = 0; i < 100'000; ++i) document += "<PageContent Source=\"p.fpage\"/>";
    document += "</FixedDocument>";
    EXPECT_EQ("refers to more than 100000 documents and pages, /d.fdoc", OpeningError(entries));
}

TEST(HostilePackageTest, PartsWithoutEndAreRefusedInBoundedTime) {
    std::vector<RawEntry> entries = SmallDocument();
    for (int i = 0; i < 300'000; ++i) entries.emplace_back("part" + std::to_string(i), "");
    const std::string bytes = BuildZip(entries);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ("has more than 300000 entries, test.xps",
              ErrorOf([&] { static_cast<void>(OpenBytes(bytes)); }));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

// The number with which an archive says that it has more than its old directory can count.
TEST(HostilePackageTest, APackageOf65535PartsHasAllOfThem) {
    std::vector<RawEntry> entries = SmallDocument();
    while (entries.size() < 65'535) entries.emplace_back("part" + std::to_string(entries.size()), "x");
    const auto start = std::chrono::steady_clock::now();
    const Package package = OpenEntries(entries);
    EXPECT_EQ("x", package.Read("/part65534"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(HostilePackageTest, NamesOfManyFoldersCostNoMoreThanTheirLength) {
    std::vector<RawEntry> entries = SmallDocument();
    std::string folders;
    for (int i = 0; i < 32'000; ++i) folders += "a/";
    for (int i = 0; i < 100; ++i) entries.emplace_back(folders + std::to_string(i), "");
    const std::string bytes = BuildZip(entries);
    const auto start = std::chrono::steady_clock::now();
    Package package = OpenBytes(bytes);
    EXPECT_EQ("/a-2", package.Add("/a", "x", ""));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(HostilePackageTest, MoreEntriesThanTheLimitAreRefused) {
    common::Limits limits;
    limits.maxEntries = 5;
    EXPECT_EQ("", OpeningError(SmallDocument(), limits));
    limits.maxEntries = 4;
    EXPECT_EQ("has more than 4 entries, test.xps", OpeningError(SmallDocument(), limits));
}

TEST(HostilePackageTest, ADirectoryThatIsTooLargeIsNotRead) {
    std::vector<RawEntry> entries = SmallDocument();
    for (int i = 0; i < 10'000; ++i) entries.emplace_back("part" + std::to_string(i), "");
    const std::string bytes = BuildZip(entries);
    common::Limits limits;
    limits.maxDirectoryBytes = 200'000;
    EXPECT_EQ("the list of its entries is too large, test.xps",
              ErrorOf([&] { static_cast<void>(OpenBytes(bytes, limits)); }));
}

TEST(HostilePackageTest, EncryptedPartsAreRefused) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "p.fpage").flags = 1;
    EXPECT_EQ("is encrypted, p.fpage", OpeningError(entries));
}

TEST(HostilePackageTest, OtherCompressionMethodsAreRefused) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "p.fpage").method = 14;
    EXPECT_EQ("is compressed in a way that packages do not use, p.fpage", OpeningError(entries));
}

TEST(HostilePackageTest, AWrongChecksumIsAnError) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "p.fpage").crc = 1;
    EXPECT_EQ("its checksum is wrong, p.fpage", ReadingError(entries, "/p.fpage"));
}

TEST(HostilePackageTest, LyingSizesAreErrors) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.push_back(Zeros("a", 1'000));
    entries.back().size = 999;
    EXPECT_EQ("its data is longer than the archive says, a", ReadingError(entries, "/a"));
    entries.back().size = 1'001;
    EXPECT_EQ("its data is shorter than the archive says, a", ReadingError(entries, "/a"));
    entries.back().size = 1'000;
    entries.back().compressedSize = 5;
    EXPECT_NE("", ReadingError(entries, "/a"));
}

TEST(HostilePackageTest, BrokenCompressedDataIsAnError) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.push_back(Zeros("a", 1'000));
    entries.back().data[0] = '\x07';
    EXPECT_EQ("its compressed data is broken, a", ReadingError(entries, "/a"));
}

TEST(HostilePackageTest, AnOffsetOutsideTheFileIsAnError) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "p.fpage").localOffset = 0x7FFFFFFF;
    EXPECT_NE("", ReadingError(entries, "/p.fpage") + OpeningError(entries));
}

TEST(HostilePackageTest, NothingIsWrittenOutsideTheOutput) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "inner");
    Package package = OpenEntries(SmallDocument());
    EXPECT_EQ("/evil", package.Add("../../evil", "x", "x"));
    EXPECT_EQ("/C:/Windows/evil", package.Add("C:\\Windows\\evil", "x", "x"));
    package.Save(folder / "inner" / "out.xps");
    EXPECT_EQ(std::set<std::string>{"inner"}, folder.Names());
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder / "inner"), {}));
}

}  // namespace
}  // namespace devkit::package
