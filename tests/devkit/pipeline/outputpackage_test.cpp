#include "devkit/pipeline/outputpackage.h"

#include <fstream>
#include <iterator>

#include "devkit/pipeline/filterrun.h"
#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/testfilter/testfilter.h"
#include "devkit/pipeline/testmodule.h"

namespace devkit::pipeline {
namespace {

using package::XpsDocument;
using Path = std::filesystem::path;

std::string FileBytes(const Path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Sends real documents through the test filter and reads what comes out.
class OutputPackageTest : public PipelineTest {
  protected:
    static Path Sample() { return Path(SAMPLES_FOLDER) / "sample.xps"; }
    static Path Output() { return ProgramFolder() / "outputpackage_test.xps"; }

    // The document after the filter, written and read again.
    XpsDocument Through(const wchar_t* mode) {
        const auto document = std::make_shared<XpsDocument>(XpsDocument::Open(Sample()));
        RunOptions options;
        options.properties.driverValues = DriverValues{{L"TestFilterMode", mode}};
        const auto module = std::make_shared<FilterModule>(TestFilterPath(), testfilter::ClassId);
        const RunOutcome outcome = FilterRun(module, MakeJobInput(document), std::move(options)).Run();
        EXPECT_EQ(outcome.breaches, Lines{});
        EXPECT_TRUE(outcome.IsWhole());
        ApplySentParts(*document, outcome.parts);
        document->Save(Output());
        return XpsDocument::Open(Output());
    }
    void TearDown() override {
        std::error_code ignored;
        std::filesystem::remove(Output(), ignored);
        PipelineTest::TearDown();
    }
};

TEST_F(OutputPackageTest, WhatWasNotChangedIsTheSameFile) {
    static_cast<void>(Through(L""));
    EXPECT_EQ(FileBytes(Output()), FileBytes(Sample()));
}

TEST_F(OutputPackageTest, NewTicketsHangOnTheirPagesUnderLegalNames) {
    const XpsDocument before = XpsDocument::Open(Sample());
    const XpsDocument after = Through(L"ticket");
    EXPECT_EQ(after.Findings(), Lines{});
    EXPECT_EQ(after.sequence.ticket, before.sequence.ticket);
    unsigned number = 0;
    for (std::size_t i = 0; i < after.sequence.documents.size(); ++i) {
        const package::FixedDocument& document = after.sequence.documents[i];
        EXPECT_EQ(document.ticket, before.sequence.documents[i].ticket);
        for (const package::FixedPage& page : document.pages) {
            ASSERT_TRUE(page.ticket);
            EXPECT_EQ(*page.ticket, "/Tickets/made_" + std::to_string(++number) + ".xml");
            EXPECT_TRUE(after.ReadPart(*page.ticket).starts_with("<psf:PrintTicket"));
        }
    }
    EXPECT_EQ(number, 10U);
}

TEST_F(OutputPackageTest, RewrittenMarkupTakesThePlaceOfTheOld) {
    const XpsDocument before = XpsDocument::Open(Sample());
    const XpsDocument after = Through(L"rewrite");
    const std::string old = before.ReadMarkup(before.sequence.documents[1].pages[0]);
    std::string expected = old;
    expected.replace(expected.find("Width=\"816\""), 11, "Width=\"1056\"");
    expected.replace(expected.find("Height=\"1056\""), 13, "Height=\"816\"");
    EXPECT_EQ(after.ReadMarkup(after.sequence.documents[1].pages[0]), expected);
    EXPECT_EQ(after.sequence.documents[1].pages[0].resources,
              before.sequence.documents[1].pages[0].resources);
}

TEST_F(OutputPackageTest, APageThatWasNotSentIsLeftOut) {
    const XpsDocument before = XpsDocument::Open(Sample());
    const XpsDocument after = Through(L"drop-first-page");
    EXPECT_EQ(after.Findings(), Lines{});
    ASSERT_EQ(after.sequence.documents[0].pages.size(), before.sequence.documents[0].pages.size() - 1);
    EXPECT_EQ(after.sequence.documents[0].pages[0].name, before.sequence.documents[0].pages[1].name);
    EXPECT_FALSE(after.GetPackage().Contains(before.sequence.documents[0].pages[0].name));
}

TEST_F(OutputPackageTest, PartsOfEveryKindThatTheFilterMakesAreAdded) {
    const auto document = std::make_shared<XpsDocument>(XpsDocument::Open(Sample()));
    const auto made = [](PartKind kind, const char* name, const std::string& bytes) {
        const PartPtr part = std::make_shared<Part>(kind, name);
        const auto writing = part->BeginWriting();
        writing->Append(bytes.data(), bytes.size());
        writing->Close();
        return part;
    };
    const PartPtr start = std::make_shared<Part>(PartKind::XpsDocument, std::string());
    start->thumbnail = made(PartKind::Thumbnail, "/thumb", "thumbnail");
    start->thumbnail->SetContentType("image/jpeg");
    const PartPtr sequence = std::make_shared<Part>(PartKind::FixedDocumentSequence, std::string());
    sequence->ticket = made(PartKind::PrintTicket, "/same.xml", "job");
    const PartPtr fixedDocument = made(PartKind::FixedDocument, "/New Document.fdoc", "");
    const PartPtr page = made(PartKind::FixedPage, "/new.fpage", "<FixedPage/>");
    page->ticket = made(PartKind::PrintTicket, "/SAME.xml", "page");
    page->resources = {made(PartKind::Image, "/a\\image", "image"), made(PartKind::Font, "/font", "font"),
                       made(PartKind::ColorProfile, "/profile", "profile")};
    ApplySentParts(*document, {{PartKind::XpsDocument, "", start},
                               {PartKind::FixedDocumentSequence, "", sequence},
                               {PartKind::FixedDocument, "", fixedDocument},
                               {PartKind::FixedPage, "", page},
                               {PartKind::Unknown, "", nullptr}});
    document->Save(Output());
    const XpsDocument after = XpsDocument::Open(Output());
    EXPECT_EQ(after.Findings(), Lines{});
    const auto typeOf = [&](const std::string& name) { return after.GetPackage().Find(name)->contentType; };
    ASSERT_TRUE(after.thumbnail);
    EXPECT_EQ(typeOf(*after.thumbnail), "image/jpeg");
    ASSERT_EQ(after.sequence.documents.size(), 1U);
    EXPECT_EQ(after.sequence.documents[0].name, "/New%20Document.fdoc");
    ASSERT_EQ(after.sequence.documents[0].pages.size(), 1U);
    const package::FixedPage& written = after.sequence.documents[0].pages[0];
    EXPECT_EQ(after.ReadMarkup(written), "<FixedPage/>");
    ASSERT_TRUE(after.sequence.ticket && written.ticket);
    EXPECT_NE(*after.sequence.ticket, *written.ticket);
    EXPECT_EQ(after.ReadPart(*after.sequence.ticket), "job");
    EXPECT_EQ(after.ReadPart(*written.ticket), "page");
    ASSERT_EQ(written.resources.size(), 3U);
    EXPECT_EQ(written.resources[0], "/a/image");
    EXPECT_EQ(typeOf(written.resources[0]), "image/png");
    EXPECT_EQ(typeOf(written.resources[1]), "application/vnd.ms-opentype");
    EXPECT_EQ(typeOf(written.resources[2]), "application/vnd.ms-color.iccprofile");
}

}  // namespace
}  // namespace devkit::pipeline
