#include "platform/windows.h"

#include <gtest/gtest.h>

#include <vector>

#include "devkit/package/xpsdocument.h"
#include "heapusage.h"
#include "temporaryfolder.h"
#include "testpackages.h"

namespace devkit::package {
namespace {

using tests::HeapUsage;

// Runs the action often enough for what is kept once to be there, then often again: nothing may be added.
template <typename Action>
std::ptrdiff_t BlocksLeft(Action&& action) {
    constexpr int kTimes = 20;
    for (int i = 0; i < kTimes; ++i) action();
    const std::size_t before = HeapUsage::Now().blocks;
    for (int i = 0; i < kTimes; ++i) action();
    return static_cast<std::ptrdiff_t>(HeapUsage::Now().blocks) - static_cast<std::ptrdiff_t>(before);
}

std::filesystem::path SamplePath(const char* name) { return std::filesystem::path(SAMPLES_FOLDER) / name; }

void ChangeAndShorten(XpsDocument& document) {
    for (FixedDocument& each : document.sequence.documents) {
        for (FixedPage& page : each.pages) {
            page.markup = document.ReadMarkup(page);
            page.ticket = document.AddPart("/Metadata/new.xml", kPrintTicketContentType, "<ticket/>");
        }
        each.pages.pop_back();
    }
}

TEST(LeakTest, TheCounterSeesABlock) {
    std::vector<void*> kept;
    kept.reserve(100);
    EXPECT_EQ(20, BlocksLeft([&] { kept.push_back(HeapAlloc(GetProcessHeap(), 0, 100)); }));
    for (void* const pBlock : kept) HeapFree(GetProcessHeap(), 0, pBlock);
}

TEST(LeakTest, ReadingChangingAndSavingLeavesNothing) {
    const TemporaryFolder folder;
    for (const char* name : {"sample.xps", "streamed.xps", "utf16.xps"}) {
        EXPECT_EQ(0, BlocksLeft([&] {
                      XpsDocument document = XpsDocument::Open(SamplePath(name));
                      ChangeAndShorten(document);
                      document.Save(folder / "out.xps");
                      std::move(document).Save(folder / "out.xps");
                  }))
            << name;
    }
}

TEST(LeakTest, ErrorsLeaveNothing) {
    std::vector<RawEntry> broken = SmallDocument();
    EntryOf(broken, "d.fdoc").data = "<FixedDocument><a></b>";
    std::vector<RawEntry> typed = SmallDocument();
    EntryOf(typed, "s.fdseq").data = "<!DOCTYPE a [<!ENTITY b 'c'>]><a/>";
    std::vector<RawEntry> checksum = SmallDocument();
    EntryOf(checksum, "s.fdseq").crc = 1;
    for (const auto& entries : {broken, typed, checksum})
        EXPECT_EQ(0, BlocksLeft([&] { EXPECT_NE("", OpeningError(entries)); }));
    EXPECT_EQ(0, BlocksLeft([&] {
                  EXPECT_NE("", ErrorOf([] {
                                static_cast<void>(OpenBytes("no zip archive, and never was one at all"));
                            }));
              }));
}

TEST(LeakTest, AFailedSaveLeavesNothing) {
    for (unsigned failing = 1; failing < 40; failing += 3) {
        EXPECT_EQ(0, BlocksLeft([&] {
                      XpsDocument document = OpenDocument(SmallDocument());
                      document.sequence.ticket =
                          document.AddPart("/t.xml", kPrintTicketContentType, "<ticket/>");
                      MemorySink sink(std::make_shared<CallCounter>(failing));
                      static_cast<void>(ErrorOf([&] { document.Save(sink); }));
                  }))
            << failing;
    }
}

}  // namespace
}  // namespace devkit::package
