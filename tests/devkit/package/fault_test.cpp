#include <gtest/gtest.h>

#include <set>

#include "devkit/package/xpsdocument.h"
#include "devkit/package/ziparchive.h"
#include "temporaryfolder.h"
#include "testpackages.h"

namespace devkit::package {
namespace {

// Everything that a package can hold, small.
std::string RichPackage() {
    std::vector<RawEntry> entries = SmallDocument();
    for (RawEntry& entry : entries) entry.flags = 8;
    entries.emplace_back("_rels/p.fpage.rels", Links({{kXps + "/printticket", "t.xml"},
                                                      {kXps + "/required-resource", "zeros.ttf"}}));
    entries.emplace_back("t.xml/[0].piece", "<t>");
    RawEntry& zeros = entries.emplace_back("zeros.ttf", DeflatedZeros(100'000));
    zeros.method = 8;
    zeros.size = 100'000;
    zeros.crc = Crc32(std::string(100'000, '\0'));
    entries.emplace_back("t.xml/[1].last.piece", "</t>");
    return BuildZip(entries);
}

// What a run does with a document: reads all of it, changes it at each level and writes it.
void Use(Package package, common::ByteSink& sink) {
    XpsDocument document = XpsDocument::Open(std::move(package));
    for (const PartInfo& part : document.GetPackage().Parts())
        static_cast<void>(document.ReadPart(part.name));
    document.sequence.ticket = document.AddPart("/job.xml", kPrintTicketContentType, "<job/>");
    for (FixedDocument& each : document.sequence.documents) {
        for (FixedPage& page : each.pages) {
            page.markup = "<new/>";
            page.ticket = document.AddPart("/page.xml", kPrintTicketContentType, "<page/>");
        }
    }
    document.Save(sink);
}

std::string UseBytes(const std::string& bytes) {
    MemorySink sink;
    return ErrorOf([&] { Use(OpenBytes(bytes), sink); });
}

TEST(FaultTest, EachFailingReadIsAnErrorThatSaysSo) {
    const std::string bytes = RichPackage();
    std::set<std::string> allowed = {"the disk is gone, test.xps",
                                     "cannot be copied: the disk is gone, test.xps"};
    const ZipArchive archive(std::make_shared<MemorySource>(bytes), "test.xps", {});
    for (std::size_t i = 0; i < archive.Entries().size(); ++i)
        allowed.insert("the disk is gone, " + archive.NameOf(i));
    std::set<std::string> seen;
    unsigned failing = 1;
    for (;; ++failing) {
        ASSERT_LT(failing, 10'000U);
        const auto counter = std::make_shared<CallCounter>(failing);
        MemorySink sink;
        const std::string error = ErrorOf(
            [&] { Use(Package::Open(std::make_unique<MemorySource>(bytes, counter), "test.xps"), sink); });
        if (!counter->HasFailed()) {
            EXPECT_EQ("", error);
            break;
        }
        EXPECT_TRUE(allowed.contains(error)) << failing << ": " << error;
        seen.insert(error);
    }
    EXPECT_EQ(allowed, seen);
}

TEST(FaultTest, EachFailingWriteIsAnErrorThatSaysSo) {
    const std::string bytes = RichPackage();
    unsigned failing = 1;
    for (;; ++failing) {
        ASSERT_LT(failing, 10'000U);
        const auto counter = std::make_shared<CallCounter>(failing);
        MemorySink sink(counter);
        const std::string error = ErrorOf([&] { Use(OpenBytes(bytes), sink); });
        if (!counter->HasFailed()) {
            EXPECT_EQ("", error);
            break;
        }
        EXPECT_EQ("cannot be copied: the disk is gone, test.xps", error) << failing;
    }
    EXPECT_GT(failing, 20U);
}

TEST(FaultTest, NewBytesThatCannotBeReadAreAnErrorThatSaysSo) {
    Package package = OpenBytes(BuildZip(SmallDocument()));
    package.Replace("/p.fpage",
                    common::Content(std::make_shared<MemorySource>("new", std::make_shared<CallCounter>(1))));
    EXPECT_THROW(static_cast<void>(package.Read("/p.fpage")), common::StorageError);
    package.Replace("/p.fpage",
                    common::Content(std::make_shared<MemorySource>("new", std::make_shared<CallCounter>(1))));
    EXPECT_EQ("cannot be copied: the disk is gone, test.xps",
              ErrorOf([&] { static_cast<void>(SavedBytes(package)); }));
    package.Replace("/p.fpage", common::Content(std::make_shared<MemorySource>("newer")));
    EXPECT_EQ("newer", OpenBytes(SavedBytes(package)).Read("/p.fpage"));
}

TEST(FaultTest, AFailingReadWhileSavingLeavesNoFile) {
    const TemporaryFolder folder;
    WriteFileBytes(folder / "out.xps", "old");
    for (const bool change : {false, true}) {
        for (unsigned failing = 1;; ++failing) {
            ASSERT_LT(failing, 1000U);
            const auto counter = std::make_shared<CallCounter>(failing);
            const std::string error = ErrorOf([&] {
                Package package = Package::Open(
                    std::make_unique<MemorySource>(BuildZip(SmallDocument()), counter), "test.xps");
                if (change) package.Replace("/p.fpage", "new");
                package.Save(folder / "out.xps");
            });
            EXPECT_EQ(std::set<std::string>{"out.xps"}, folder.Names());
            EXPECT_EQ(ReadFileBytes(folder / "out.xps") != "old", error.empty()) << failing;
            if (!counter->HasFailed()) break;
            WriteFileBytes(folder / "out.xps", "old");
        }
        EXPECT_NE("old", ReadFileBytes(folder / "out.xps"));
        WriteFileBytes(folder / "out.xps", "old");
    }
}

TEST(FaultTest, TruncationAtAnyByteIsAnError) {
    const std::string bytes = RichPackage();
    ASSERT_EQ("", UseBytes(bytes));
    for (std::size_t length = 0; length < bytes.size(); ++length)
        EXPECT_NE("", UseBytes(bytes.substr(0, length))) << length;
}

TEST(FaultTest, EachSampleCutOffAnywhereIsAnError) {
    for (const char* name : {"minimal.xps", "utf16.xps", "names.xps"}) {
        const std::string bytes = ReadFileBytes(std::filesystem::path(SAMPLES_FOLDER) / name);
        ASSERT_EQ("", UseBytes(bytes)) << name;
        for (std::size_t length = 0; length < bytes.size(); ++length)
            EXPECT_NE("", UseBytes(bytes.substr(0, length))) << name << " " << length;
    }
}

TEST(FaultTest, AnyDamagedByteIsAnErrorOrADocument) {
    const std::string bytes = RichPackage();
    std::size_t errors = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        for (const int mask : {0x01, 0xFF}) {
            std::string damaged = bytes;
            damaged[at] = static_cast<char>(damaged[at] ^ mask);
            // Use lets nothing but a common::Error out; what a flag or a date says may change without harm.
            errors += UseBytes(damaged).empty() ? 0 : 1;
        }
    }
    EXPECT_GT(errors, bytes.size());
}

}  // namespace
}  // namespace devkit::package
