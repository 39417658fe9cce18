#include <gtest/gtest.h>

#include <deque>

#include "devkit/package/xpsdocument.h"
#include "testpackages.h"

namespace devkit::package {
namespace {

using Texts = std::vector<std::string>;

// Two pages that share a ticket, a job ticket, two resources of the first page.
std::vector<RawEntry> Entries() {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "d.fdoc").data = Document({"/p.fpage", "/q.fpage"});
    entries.emplace_back("q.fpage", "<q/>");
    entries.emplace_back("_rels/s.fdseq.rels", Links({{kTicket, "/job.xml"}}));
    entries.emplace_back("_rels/p.fpage.rels",
                         Links({{kResource, "a.ttf"}, {kTicket, "t.xml"}, {kResource, "/b.png"}}));
    entries.emplace_back("_rels/q.fpage.rels", Links({{kTicket, "/t.xml"}}));
    for (const char* name : {"job.xml", "t.xml", "a.ttf", "b.png"}) entries.emplace_back(name, name);
    return entries;
}

XpsDocument Again(XpsDocument& document) { return XpsDocument::Open(OpenBytes(SavedBytes(document))); }

FixedPage& Page(XpsDocument& document, std::size_t index) {
    return document.sequence.documents.at(0).pages.at(index);
}

// The parts whose bytes are not those of the entries any more, those that are gone or new included.
Texts Changed(const std::vector<RawEntry>& entries, XpsDocument& document) {
    const Package saved = OpenBytes(SavedBytes(document));
    Texts changed;
    for (const RawEntry& entry : entries) {
        std::string bytes = "gone";
        static_cast<void>(ErrorOf([&] { bytes = saved.Read("/" + entry.name); }));
        if (bytes != entry.data) changed.push_back("/" + entry.name + (bytes == "gone" ? " gone" : ""));
    }
    for (const PartInfo& part : saved.Parts()) {
        if (std::ranges::none_of(entries,
                                 [&](const RawEntry& entry) { return "/" + entry.name == part.name; }))
            changed.push_back(part.name + " new");
    }
    return changed;
}

TEST(DocumentSaveTest, AnUnchangedTreeIsCopiedByteForByte) {
    XpsDocument document = OpenDocument(Entries());
    EXPECT_EQ(BuildZip(Entries()), SavedBytes(document));
}

TEST(DocumentSaveTest, SavedForTheLastTimeItGivesTheSameBytesAndIsEmpty) {
    for (const bool change : {false, true}) {
        XpsDocument document = OpenDocument(Entries());
        XpsDocument last = OpenDocument(Entries());
        for (XpsDocument* const pEach : {&document, &last}) {
            if (!change) continue;
            Page(*pEach, 0).markup = "<new/>";
            Page(*pEach, 1).ticket = pEach->AddPart("/new.xml", kPrintTicketContentType, "<ticket/>");
        }
        MemorySink sink;
        std::move(last).Save(sink);
        EXPECT_EQ(SavedBytes(document), sink.bytes);
        EXPECT_TRUE(last.sequence.documents.empty());
        EXPECT_TRUE(last.GetPackage().Parts().empty());
    }
}

TEST(DocumentSaveTest, NewMarkupReplacesThePageAlone) {
    XpsDocument document = OpenDocument(Entries());
    Page(document, 1).markup = "<new/>";
    EXPECT_EQ("<new/>", document.ReadMarkup(Page(document, 1)));
    EXPECT_EQ(Texts{"/q.fpage"}, Changed(Entries(), document));
    EXPECT_EQ("<new/>", document.ReadMarkup(Page(document, 1)));
    XpsDocument again = Again(document);
    EXPECT_EQ("<new/>", again.ReadMarkup(Page(again, 1)));
}

TEST(DocumentSaveTest, ANewPageTicketTakesThePlaceOfTheOldRelationship) {
    XpsDocument document = OpenDocument(Entries());
    Page(document, 0).ticket = document.AddPart("pagevalidator_0_\\t.xml", kPrintTicketContentType, "<new/>");
    EXPECT_EQ("/pagevalidator_0_/t.xml", Page(document, 0).ticket);
    EXPECT_EQ((Texts{"/[Content_Types].xml", "/_rels/p.fpage.rels", "/pagevalidator_0_/t.xml new"}),
              Changed(Entries(), document));
    XpsDocument again = Again(document);
    EXPECT_EQ("/pagevalidator_0_/t.xml", Page(again, 0).ticket);
    EXPECT_EQ((Texts{"/a.ttf", "/b.png"}), Page(again, 0).resources);
    EXPECT_EQ("/t.xml", Page(again, 1).ticket);
    EXPECT_EQ(kPrintTicketContentType, again.GetPackage().Find("/pagevalidator_0_/t.xml")->contentType);
    EXPECT_EQ((std::vector<Relationship>{{"R1", kResource, "a.ttf", false},
                                         {"R3", kResource, "/b.png", false},
                                         {"R2", kTicket, "/pagevalidator_0_/t.xml", false}}),
              again.GetPackage().Relationships("/p.fpage"));
}

TEST(DocumentSaveTest, ATicketThatNothingNamesAnyMoreLeavesThePackage) {
    XpsDocument document = OpenDocument(Entries());
    const std::string ticket = document.AddPart("/new.xml", kPrintTicketContentType, "<new/>");
    Page(document, 0).ticket = ticket;
    Page(document, 1).ticket = ticket;
    document.sequence.ticket.reset();
    EXPECT_EQ((Texts{"/[Content_Types].xml", "/_rels/s.fdseq.rels gone", "/_rels/p.fpage.rels",
                     "/_rels/q.fpage.rels", "/job.xml gone", "/t.xml gone", "/new.xml new"}),
              Changed(Entries(), document));
    XpsDocument again = Again(document);
    EXPECT_EQ(std::nullopt, again.sequence.ticket);
    EXPECT_EQ("/new.xml", Page(again, 0).ticket);
    EXPECT_EQ("/new.xml", Page(again, 1).ticket);
}

TEST(DocumentSaveTest, TicketsCanBeGivenWhereThereWereNone) {
    XpsDocument document = OpenDocument(SmallDocument());
    document.sequence.ticket = document.AddPart("/j.xml", kPrintTicketContentType, "<j/>");
    document.sequence.documents[0].ticket = document.AddPart("/j.xml", kPrintTicketContentType, "<d/>");
    Page(document, 0).ticket = document.sequence.ticket;
    XpsDocument again = Again(document);
    EXPECT_EQ("/j.xml", again.sequence.ticket);
    EXPECT_EQ("/j-2.xml", again.sequence.documents[0].ticket);
    EXPECT_EQ("/j.xml", Page(again, 0).ticket);
    EXPECT_EQ("<d/>", again.ReadPart("/j-2.xml"));
}

TEST(DocumentSaveTest, BothTicketsOfAPartGiveWayToANewOne) {
    std::vector<RawEntry> entries = Entries();
    EntryOf(entries, "_rels/s.fdseq.rels").data = Links({{kTicket, "/job.xml"}, {kTicket, "/job2.xml"}});
    entries.emplace_back("job2.xml", "");
    XpsDocument document = OpenDocument(entries);
    document.sequence.ticket = document.AddPart("/new.xml", kPrintTicketContentType, "<j/>");
    XpsDocument again = Again(document);
    EXPECT_EQ((std::vector<Relationship>{{"R1", kTicket, "/new.xml", false}}),
              again.GetPackage().Relationships("/s.fdseq"));
    EXPECT_TRUE(again.Findings().empty());
}

TEST(DocumentSaveTest, OpenXpsGetsItsOwnRelationshipTypes) {
    const std::string oxps = "http://schemas.openxps.org/oxps/v1.0";
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "_rels/.rels").data = Links({{oxps + "/fixedrepresentation", "s.fdseq"}});
    XpsDocument document = OpenDocument(entries);
    Page(document, 0).ticket = document.AddPart("/t", kPrintTicketContentType, "");
    Page(document, 0).resources.push_back(document.AddPart("/f.ttf", "application/vnd.ms-opentype", ""));
    EXPECT_EQ((std::vector<Relationship>{{"R1", oxps + "/printticket", "/t", false},
                                         {"R2", oxps + "/required-resource", "/f.ttf", false}}),
              Again(document).GetPackage().Relationships("/p.fpage"));
}

TEST(DocumentSaveTest, ResourcesCanBeAddedAndDropped) {
    XpsDocument document = OpenDocument(Entries());
    FixedPage& page = Page(document, 0);
    page.resources.erase(page.resources.begin());
    page.resources.push_back(document.AddPart("/c.png", "image/png", "c"));
    EXPECT_EQ((Texts{"/[Content_Types].xml", "/_rels/p.fpage.rels", "/c.png new"}),
              Changed(Entries(), document));
    XpsDocument again = Again(document);
    EXPECT_EQ((Texts{"/b.png", "/c.png"}), Page(again, 0).resources);
    EXPECT_EQ("/t.xml", Page(again, 0).ticket);
    EXPECT_TRUE(again.GetPackage().Contains("/a.ttf"));
}

TEST(DocumentSaveTest, TheThumbnailCanBeSetReplacedAndDropped) {
    XpsDocument document = OpenDocument(Entries());
    document.thumbnail = document.AddPart("/t.png", "image/png", "t");
    XpsDocument with = Again(document);
    EXPECT_EQ("/t.png", with.thumbnail);
    with.thumbnail = "/b.png";
    XpsDocument replaced = Again(with);
    EXPECT_EQ("/b.png", replaced.thumbnail);
    EXPECT_EQ(2U, replaced.GetPackage().Relationships("/").size());
    replaced.thumbnail.reset();
    XpsDocument without = Again(replaced);
    EXPECT_EQ(std::nullopt, without.thumbnail);
    EXPECT_EQ("/s.fdseq", without.sequence.name);
}

TEST(DocumentSaveTest, PagesCanBeMovedDroppedAndAdded) {
    XpsDocument document = OpenDocument(Entries());
    std::deque<FixedPage>& pages = document.sequence.documents[0].pages;
    pages.erase(pages.begin());
    FixedPage added;
    added.name = document.AddPart("/n.fpage", kFixedPageContentType, "<n/>");
    added.ticket = "/t.xml";
    pages.insert(pages.begin(), added);
    EXPECT_EQ((Texts{"/d.fdoc", "/p.fpage gone", "/_rels/p.fpage.rels gone", "/n.fpage new"}),
              Changed(Entries(), document));
    XpsDocument again = Again(document);
    ASSERT_EQ(2U, again.sequence.documents[0].pages.size());
    EXPECT_EQ("/n.fpage", Page(again, 0).name);
    EXPECT_EQ("/t.xml", Page(again, 0).ticket);
    EXPECT_EQ("/q.fpage", Page(again, 1).name);
}

TEST(DocumentSaveTest, DocumentsCanBeAddedAndDropped) {
    XpsDocument document = OpenDocument(Entries());
    FixedDocument added;
    added.name = document.AddPart("/e.fdoc", kFixedDocumentContentType, "");
    added.pages.push_back(Page(document, 1));
    document.sequence.documents = {added};
    XpsDocument again = Again(document);
    ASSERT_EQ(1U, again.sequence.documents.size());
    EXPECT_EQ("/e.fdoc", again.sequence.documents[0].name);
    EXPECT_EQ("/q.fpage", Page(again, 0).name);
    EXPECT_EQ("/t.xml", Page(again, 0).ticket);
    EXPECT_FALSE(again.GetPackage().Contains("/d.fdoc"));
    EXPECT_FALSE(again.GetPackage().Contains("/p.fpage"));
}

TEST(DocumentSaveTest, AnImpliedSequenceGetsAPartWhenItNeedsOne) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "_rels/.rels").data = Links({{kXps + "/fixedrepresentation", "/d.fdoc"}});
    XpsDocument document = OpenDocument(entries);
    EXPECT_EQ(Texts(), Changed(entries, document));
    document.sequence.ticket = document.AddPart("/j.xml", kPrintTicketContentType, "<j/>");
    XpsDocument again = Again(document);
    EXPECT_EQ("/FixedDocumentSequence.fdseq", document.sequence.name);
    EXPECT_FALSE(again.sequence.implied);
    EXPECT_EQ("/FixedDocumentSequence.fdseq", again.sequence.name);
    EXPECT_EQ("/j.xml", again.sequence.ticket);
    EXPECT_EQ("/d.fdoc", again.sequence.documents[0].name);
    EXPECT_TRUE(again.Findings().empty());
}

TEST(DocumentSaveTest, RelationshipsThatCannotBeReadAreReplaced) {
    std::vector<RawEntry> entries = Entries();
    EntryOf(entries, "_rels/p.fpage.rels").data = "<broken";
    XpsDocument document = OpenDocument(entries);
    EXPECT_EQ(std::nullopt, Page(document, 0).ticket);
    Page(document, 0).ticket = "/t.xml";
    XpsDocument again = Again(document);
    EXPECT_EQ("/t.xml", Page(again, 0).ticket);
}

TEST(DocumentSaveTest, SavingTwiceGivesTheSameBytes) {
    XpsDocument document = OpenDocument(Entries());
    Page(document, 0).markup = "<new/>";
    Page(document, 0).ticket = document.AddPart("/n.xml", kPrintTicketContentType, "<n/>");
    const std::string first = SavedBytes(document);
    EXPECT_EQ(first, SavedBytes(document));
}

TEST(DocumentSaveTest, APartThatTheTreeNamesMustBeThere) {
    for (const auto change : {+[](XpsDocument& each) { each.sequence.ticket = "/none"; },
                              +[](XpsDocument& each) { each.thumbnail = "/none"; },
                              +[](XpsDocument& each) { Page(each, 0).name = "/none"; },
                              +[](XpsDocument& each) { Page(each, 0).resources.push_back("/none"); },
                              +[](XpsDocument& each) { each.sequence.documents[0].name = "/none"; }}) {
        XpsDocument document = OpenDocument(Entries());
        change(document);
        EXPECT_EQ("the tree names a part that is missing, /none",
                  ErrorOf([&] { static_cast<void>(SavedBytes(document)); }));
    }
}

}  // namespace
}  // namespace devkit::package
