#include "devkit/pipeline/job.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "devkit/common/storage.h"
#include "devkit/package/documentmarkup.h"
#include "devkit/package/rawarchive.h"
#include "devkit/package/relationships.h"
#include "devkit/pipeline/filterrun.h"
#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/testfilter/testfilter.h"

namespace devkit::pipeline {
namespace {

using package::XpsDocument;
using Path = std::filesystem::path;

TEST(JobInput, HasTheTreeOfTheDocument) {
    const auto document = std::make_shared<XpsDocument>(
        XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / "sample.xps"));
    const auto job = MakeJobInput(document);
    ASSERT_TRUE(job->thumbnail && job->ticket);
    EXPECT_EQ(*document->thumbnail, job->thumbnail->name);
    EXPECT_EQ(document->sequence.name, job->sequence.name);
    EXPECT_EQ(*document->sequence.ticket, job->ticket->name);
    EXPECT_EQ("image/png", job->thumbnail->contentType);
    EXPECT_EQ(document->ReadPart(job->ticket->name), *job->ticket->read());
    ASSERT_EQ(document->sequence.documents.size(), job->documents.size());
    for (std::size_t i = 0; i < job->documents.size(); ++i) {
        const package::FixedDocument& expected = document->sequence.documents[i];
        EXPECT_EQ(expected.name, job->documents[i].markup.name);
        EXPECT_EQ(expected.ticket.has_value(), job->documents[i].ticket.has_value());
        ASSERT_EQ(expected.pages.size(), job->documents[i].PageCount());
        for (std::size_t j = 0; j < expected.pages.size(); ++j) {
            const PageInput page = job->documents[i].PageAt(j);
            EXPECT_EQ(expected.pages[j].name, page.markup.name);
            EXPECT_EQ(document->ReadMarkup(expected.pages[j]), *page.markup.read());
            EXPECT_EQ(expected.pages[j].ticket.has_value(), page.ticket.has_value());
            ASSERT_EQ(expected.pages[j].resources.size(), page.resources.size());
        }
    }
}

TEST(JobInput, ObfuscatedFontsAreReadAsPlainOnes) {
    const auto job = MakeJobInput(std::make_shared<XpsDocument>(
        XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / "sample.xps")));
    unsigned fonts = 0;
    const PageInput page = job->documents[0].PageAt(0);
    for (const ResourceInput& resource : page.resources) {
        if (resource.kind != PartKind::Font) continue;
        ++fonts;
        Part part(resource.kind, resource.part);
        EXPECT_EQ(std::string("\0\1\0\0", 4), part.ReadPlain()->substr(0, 4));
        EXPECT_NE(*part.ReadPlain(), *part.Read());
        EXPECT_EQ(part.ReadPlain()->substr(32), part.Read()->substr(32));
    }
    EXPECT_EQ(1U, fonts);
}

TEST(JobInput, KeepsTheDocumentAlive) {
    std::shared_ptr<const JobInput> job;
    {
        const auto document = std::make_shared<XpsDocument>(
            XpsDocument::Open(std::filesystem::path(SAMPLES_FOLDER) / "minimal.xps"));
        job = MakeJobInput(document);
    }
    EXPECT_NE(std::string::npos, job->documents[0].PageAt(0).markup.read()->find("FixedPage"));
}

std::string FileBytes(const Path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Sends real documents through the test filter and reads what comes out.
class OutputPackageTest : public PipelineTest {
  protected:
    static Path Sample() { return Path(SAMPLES_FOLDER) / "sample.xps"; }
    static Path Output() { return tests::ProgramFolder() / "outputpackage_test.xps"; }

    // The document after the filter, written and read again.
    XpsDocument Through(const wchar_t* mode) {
        const auto document = std::make_shared<XpsDocument>(XpsDocument::Open(Sample()));
        RunOptions options;
        options.properties.driverValues = DriverValues{{L"TestFilterMode", mode}};
        const auto module = std::make_shared<FilterModule>(TestFilterPath(), testfilter::kClassId);
        const RunOutcome outcome = FilterRun(module, MakeJobInput(document), std::move(options)).Run();
        EXPECT_EQ(Lines{}, outcome.breaches);
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
    EXPECT_EQ(FileBytes(Sample()), FileBytes(Output()));
}

TEST_F(OutputPackageTest, NewTicketsHangOnTheirPagesUnderLegalNames) {
    const XpsDocument before = XpsDocument::Open(Sample());
    const XpsDocument after = Through(L"ticket");
    EXPECT_EQ(Lines{}, after.Findings());
    EXPECT_EQ(before.sequence.ticket, after.sequence.ticket);
    unsigned number = 0;
    for (std::size_t i = 0; i < after.sequence.documents.size(); ++i) {
        const package::FixedDocument& document = after.sequence.documents[i];
        EXPECT_EQ(before.sequence.documents[i].ticket, document.ticket);
        for (const package::FixedPage& page : document.pages) {
            ASSERT_TRUE(page.ticket);
            EXPECT_EQ("/Tickets/made_" + std::to_string(++number) + ".xml", *page.ticket);
            EXPECT_TRUE(after.ReadPart(*page.ticket).starts_with("<psf:PrintTicket"));
        }
    }
    EXPECT_EQ(10U, number);
}

TEST_F(OutputPackageTest, RewrittenMarkupTakesThePlaceOfTheOld) {
    const XpsDocument before = XpsDocument::Open(Sample());
    const XpsDocument after = Through(L"rewrite");
    const std::string old = before.ReadMarkup(before.sequence.documents[1].pages[0]);
    std::string expected = old;
    expected.replace(expected.find("Width=\"816\""), 11, "Width=\"1056\"");
    expected.replace(expected.find("Height=\"1056\""), 13, "Height=\"816\"");
    EXPECT_EQ(expected, after.ReadMarkup(after.sequence.documents[1].pages[0]));
    EXPECT_EQ(before.sequence.documents[1].pages[0].resources,
              after.sequence.documents[1].pages[0].resources);
}

TEST_F(OutputPackageTest, APageThatWasNotSentIsLeftOut) {
    const XpsDocument before = XpsDocument::Open(Sample());
    const XpsDocument after = Through(L"drop-first-page");
    EXPECT_EQ(Lines{}, after.Findings());
    ASSERT_EQ(before.sequence.documents[0].pages.size() - 1, after.sequence.documents[0].pages.size());
    EXPECT_EQ(before.sequence.documents[0].pages[1].name, after.sequence.documents[0].pages[0].name);
    EXPECT_FALSE(after.GetPackage().Contains(before.sequence.documents[0].pages[0].name));
}

// A document of 600 pages, every third with a ticket, every fifth with a resource.
std::string LongDocument() {
    const auto relationship = [](const std::string& type, const std::string& target) {
        return package::Relationship{"R" + target.substr(1),
                                     "http://schemas.microsoft.com/xps/2005/06/" + type, target, false};
    };
    std::vector<package::RawEntry> entries;
    std::vector<std::string> pages;
    for (int i = 0; i < 600; ++i) {
        const std::string number = std::to_string(i);
        std::vector<package::Relationship> relationships;
        pages.push_back("/" + number + ".fpage");
        entries.emplace_back(number + ".fpage", "<FixedPage/>");
        if (i % 3 == 0) {
            entries.emplace_back(number + ".xml", "ticket " + number);
            relationships.push_back(relationship("printticket", "/" + number + ".xml"));
        }
        if (i % 5 == 0) relationships.push_back(relationship("required-resource", "/d.fdoc"));
        if (!relationships.empty())
            entries.emplace_back("_rels/" + number + ".fpage.rels",
                                 package::RelationshipsMarkup(relationships));
    }
    using package::DocumentRoot;
    const auto markup = [](DocumentRoot root, const std::vector<std::string>& parts) {
        return package::NewDocumentMarkup(package::Flavour::MicrosoftXps, root, parts);
    };
    entries.emplace_back("s.fdseq", markup(DocumentRoot::FixedDocumentSequence, {"/d.fdoc"}));
    entries.emplace_back("d.fdoc", markup(DocumentRoot::FixedDocument, pages));
    entries.emplace_back("_rels/.rels",
                         package::RelationshipsMarkup({relationship("fixedrepresentation", "/s.fdseq")}));
    return package::BuildZip(entries);
}

// The long document after the test filter; `kept` is how many pages were not kept as mere places.
std::string LongDocumentThrough(const wchar_t* mode, std::size_t& kept) {
    const auto bytes = std::make_shared<const std::string>(LongDocument());
    RunOptions options;
    options.properties.driverValues = DriverValues{{L"TestFilterMode", mode}};
    const auto module = std::make_shared<FilterModule>(TestFilterPath(), testfilter::kClassId);
    const auto document = std::make_shared<XpsDocument>(
        XpsDocument::Open(package::Package::Open(std::make_unique<common::MemorySource>(bytes), "long.xps")));
    const RunOutcome outcome = FilterRun(module, MakeJobInput(document), std::move(options)).Run();
    EXPECT_EQ(Lines{}, outcome.breaches);
    EXPECT_TRUE(outcome.IsWhole());
    kept = static_cast<std::size_t>(
        std::ranges::count_if(outcome.parts, [](const SentPart& part) { return !part.place; }));
    ApplySentParts(*document, outcome.parts);
    common::MemorySink sink;
    document->Save(sink);
    return sink.Take();
}

TEST_F(OutputPackageTest, ALongDocumentThatWasNotChangedIsTheSameFile) {
    std::size_t kept = 0;
    EXPECT_TRUE(LongDocument() == LongDocumentThrough(L"", kept));
    EXPECT_EQ(259U, kept);
}

TEST_F(OutputPackageTest, OfALongDocumentThePagesThatWereSentRemain) {
    std::size_t kept = 0;
    const auto bytes = std::make_shared<const std::string>(LongDocumentThrough(L"drop-first-page", kept));
    EXPECT_EQ(259U, kept);
    const XpsDocument after =
        XpsDocument::Open(package::Package::Open(std::make_unique<common::MemorySource>(bytes), "after.xps"));
    ASSERT_EQ(599U, after.sequence.documents[0].pages.size());
    for (std::size_t i = 0; i < 599; ++i) {
        const package::FixedPage& page = after.sequence.documents[0].pages[i];
        const std::string number = std::to_string(i + 1);
        EXPECT_EQ("/" + number + ".fpage", page.name);
        ASSERT_EQ((i + 1) % 3 == 0, page.ticket.has_value()) << number;
        if (page.ticket) {
            EXPECT_EQ("ticket " + number, after.ReadPart(*page.ticket));
        }
        EXPECT_EQ(std::vector<std::string>((i + 1) % 5 == 0 ? 1 : 0, "/d.fdoc"), page.resources) << number;
    }
    EXPECT_FALSE(after.GetPackage().Contains("/0.fpage") || after.GetPackage().Contains("/0.xml"));
}

TEST_F(OutputPackageTest, EachPageOfALongDocumentGetsTheTicketThatWasMadeForIt) {
    std::size_t kept = 0;
    const auto bytes = std::make_shared<const std::string>(LongDocumentThrough(L"ticket", kept));
    EXPECT_EQ(259U, kept);
    const XpsDocument after =
        XpsDocument::Open(package::Package::Open(std::make_unique<common::MemorySource>(bytes), "after.xps"));
    ASSERT_EQ(600U, after.sequence.documents[0].pages.size());
    for (std::size_t i = 0; i < 600; ++i) {
        const package::FixedPage& page = after.sequence.documents[0].pages[i];
        EXPECT_EQ("/" + std::to_string(i) + ".fpage", page.name);
        EXPECT_EQ("/Tickets/made_" + std::to_string(i + 1) + ".xml", page.ticket);
        EXPECT_EQ(std::vector<std::string>(i % 5 == 0 ? 1 : 0, "/d.fdoc"), page.resources) << i;
    }
    EXPECT_FALSE(after.GetPackage().Contains("/0.xml"));
}

TEST_F(OutputPackageTest, APageOfWhichThePlaceIsKeptGoesWhereItWasSent) {
    XpsDocument document = XpsDocument::Open(Sample());
    const XpsDocument before = XpsDocument::Open(Sample());
    document.sequence.documents[1].pages[0].markup = "<never-sent/>";
    const auto as = [](std::uint32_t fixedDocument, std::uint32_t page) {
        return SentPart{PartKind::FixedPage, "", nullptr, PagePlace{fixedDocument, page}};
    };
    const auto part = std::make_shared<Part>(
        PartKind::FixedDocument, InputPart{before.sequence.documents[0].name, "", [] { return nullptr; }});
    ApplySentParts(document, {{PartKind::FixedDocument, "", part}, as(1, 0), as(0, 1)});
    ASSERT_EQ(1U, document.sequence.documents.size());
    const std::deque<package::FixedPage>& pages = document.sequence.documents[0].pages;
    ASSERT_EQ(2U, pages.size());
    const auto expect = [](const package::FixedPage& expected, const package::FixedPage& page) {
        EXPECT_EQ(expected.name, page.name);
        EXPECT_EQ(expected.ticket, page.ticket);
        EXPECT_EQ(expected.resources, page.resources);
        EXPECT_FALSE(page.markup);
    };
    expect(before.sequence.documents[1].pages[0], pages[0]);
    expect(before.sequence.documents[0].pages[1], pages[1]);
}

TEST_F(OutputPackageTest, APageOfWhichTheChangeIsKeptIsChanged) {
    XpsDocument document = XpsDocument::Open(Sample());
    const XpsDocument before = XpsDocument::Open(Sample());
    const package::FixedPage& old = before.sequence.documents[0].pages[0];
    ASSERT_TRUE(old.ticket);
    SentParts parts;
    parts.push_back({PartKind::FixedDocument, "",
                     std::make_shared<Part>(PartKind::FixedDocument,
                                            InputPart{before.sequence.documents[0].name, "", nullptr})});
    const auto add = [&parts](std::uint32_t page, const PageChange& change) {
        parts.push_back({PartKind::FixedPage, "", nullptr, PagePlace{0, page},
                         std::make_shared<const PageChange>(change)});
    };
    add(0, {"<markup/>", false, {}});
    add(1, {{}, true, PageChange::Ticket{"/its ticket", "ticket"}});
    add(2, {"<both/>", true, {}});
    ApplySentParts(document, std::move(parts));
    const std::deque<package::FixedPage>& pages = document.sequence.documents.at(0).pages;
    ASSERT_EQ(3U, pages.size());
    EXPECT_EQ("<markup/>", pages[0].markup.value().Read());
    EXPECT_EQ(old.ticket, pages[0].ticket);
    EXPECT_EQ(old.resources, pages[0].resources);
    EXPECT_FALSE(pages[1].markup);
    EXPECT_EQ("/its%20ticket", pages[1].ticket);
    EXPECT_EQ("ticket", document.ReadPart("/its%20ticket"));
    EXPECT_EQ("<both/>", pages[2].markup.value().Read());
    EXPECT_FALSE(pages[2].ticket);
}

TEST_F(OutputPackageTest, PartsOfEveryKindThatTheFilterMakesAreAdded) {
    const auto document = std::make_shared<XpsDocument>(XpsDocument::Open(Sample()));
    const PartPtr start = std::make_shared<Part>(PartKind::XpsDocument, std::string());
    start->thumbnail = Made(PartKind::Thumbnail, "/thumb", "thumbnail");
    start->thumbnail->SetContentType("image/jpeg");
    const PartPtr sequence = std::make_shared<Part>(PartKind::FixedDocumentSequence, std::string());
    sequence->ticket = Made(PartKind::PrintTicket, "/same.xml", "job");
    const PartPtr fixedDocument = Made(PartKind::FixedDocument, "/New Document.fdoc", "");
    const PartPtr page = Made(PartKind::FixedPage, "/new.fpage", "<FixedPage/>");
    page->ticket = Made(PartKind::PrintTicket, "/SAME.xml", "page");
    page->resources = {Made(PartKind::Image, "/a\\image", "image"), Made(PartKind::Font, "/font", "font"),
                       Made(PartKind::ColorProfile, "/profile", "profile"),
                       Made(PartKind::ResourceDictionary, "/styles", "<ResourceDictionary/>")};
    ApplySentParts(*document, {{PartKind::XpsDocument, "", start},
                               {PartKind::FixedDocumentSequence, "", sequence},
                               {PartKind::FixedDocument, "", fixedDocument},
                               {PartKind::FixedPage, "", page},
                               {PartKind::Unknown, "", nullptr}});
    document->Save(Output());
    const XpsDocument after = XpsDocument::Open(Output());
    EXPECT_EQ(Lines{}, after.Findings());
    const auto typeOf = [&](const std::string& name) { return after.GetPackage().Find(name)->contentType; };
    ASSERT_TRUE(after.thumbnail);
    EXPECT_EQ("image/jpeg", typeOf(*after.thumbnail));
    ASSERT_EQ(1U, after.sequence.documents.size());
    EXPECT_EQ("/New%20Document.fdoc", after.sequence.documents[0].name);
    ASSERT_EQ(1U, after.sequence.documents[0].pages.size());
    const package::FixedPage& written = after.sequence.documents[0].pages[0];
    EXPECT_EQ("<FixedPage/>", after.ReadMarkup(written));
    ASSERT_TRUE(after.sequence.ticket && written.ticket);
    EXPECT_NE(*written.ticket, *after.sequence.ticket);
    EXPECT_EQ("job", after.ReadPart(*after.sequence.ticket));
    EXPECT_EQ("page", after.ReadPart(*written.ticket));
    ASSERT_EQ(4U, written.resources.size());
    EXPECT_EQ("/a/image", written.resources[0]);
    EXPECT_EQ("image/png", typeOf(written.resources[0]));
    EXPECT_EQ("application/vnd.ms-opentype", typeOf(written.resources[1]));
    EXPECT_EQ("application/vnd.ms-color.iccprofile", typeOf(written.resources[2]));
    EXPECT_EQ("application/vnd.ms-package.xps-resourcedictionary+xml", typeOf(written.resources[3]));
}

TEST_F(OutputPackageTest, ATicketOnTwoPagesStaysOnePart) {
    const auto document = std::make_shared<XpsDocument>(XpsDocument::Open(Sample()));
    SentParts parts;
    parts.push_back({PartKind::FixedDocument, "", Made(PartKind::FixedDocument, "/d.fdoc", "")});
    const auto add = [&](const char* name, const PartPtr& ticket) {
        parts.push_back({PartKind::FixedPage, "", Made(PartKind::FixedPage, name, "<FixedPage/>")});
        parts.back().part->ticket = ticket;
    };
    add("/1.fpage", Made(PartKind::PrintTicket, "/own.xml", "own"));
    PartPtr shared = Made(PartKind::PrintTicket, "/shared.xml", "shared");
    add("/2.fpage", shared);
    add("/3.fpage", shared);
    // Nobody else has them, which is how the last of several places is known.
    shared.reset();
    ApplySentParts(*document, std::move(parts));
    document->Save(Output());
    const XpsDocument after = XpsDocument::Open(Output());
    const std::deque<package::FixedPage>& pages = after.sequence.documents.at(0).pages;
    ASSERT_EQ(3U, pages.size());
    ASSERT_TRUE(pages[0].ticket && pages[1].ticket);
    EXPECT_EQ("own", after.ReadPart(*pages[0].ticket));
    EXPECT_EQ("shared", after.ReadPart(*pages[1].ticket));
    EXPECT_EQ(pages[1].ticket, pages[2].ticket);
}

}  // namespace
}  // namespace devkit::pipeline
