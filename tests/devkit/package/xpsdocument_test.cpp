#include "devkit/package/xpsdocument.h"

#include <gtest/gtest.h>

#include "testpackages.h"

namespace devkit::package {
namespace {

using Texts = std::vector<std::string>;

const std::string kStart = kXps + "/fixedrepresentation";

std::string Sequence(const Texts& documents) {
    return NewDocumentMarkup(Flavour::MicrosoftXps, DocumentRoot::FixedDocumentSequence, documents);
}

TEST(XpsDocumentTest, ReadsTheSmallestDocument) {
    const XpsDocument document = OpenDocument(SmallDocument());
    EXPECT_EQ(Flavour::MicrosoftXps, document.GetFlavour());
    EXPECT_EQ("/s.fdseq", document.sequence.name);
    EXPECT_FALSE(document.sequence.implied);
    EXPECT_EQ(std::nullopt, document.sequence.ticket);
    EXPECT_EQ(std::nullopt, document.thumbnail);
    ASSERT_EQ(1U, document.sequence.documents.size());
    EXPECT_EQ("/d.fdoc", document.sequence.documents[0].name);
    ASSERT_EQ(1U, document.sequence.documents[0].pages.size());
    EXPECT_EQ("/p.fpage", document.sequence.documents[0].pages[0].name);
    EXPECT_TRUE(document.Findings().empty());
    EXPECT_EQ(document.ReadPart("/p.fpage"), document.ReadMarkup(document.sequence.documents[0].pages[0]));
}

TEST(XpsDocumentTest, FindsTicketsAtTheThreeLevelsTheThumbnailAndResources) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "_rels/.rels").data =
        Links({{std::string(kThumbnailRelationship), "meta/t.png"}, {kStart, "s.fdseq"}});
    EntryOf(entries, "_rels/s.fdseq.rels").data = Links({{kTicket, "meta/job.xml"}});
    EntryOf(entries, "_rels/d.fdoc.rels").data = Links({{kTicket, "/Meta/Document.xml"}});
    EntryOf(entries, "_rels/p.fpage.rels").data = Links({{kResource, "font.odttf"},
                                                         {kTicket, "./meta/page.xml"},
                                                         {kXps + "/restricted-font", "font2.ttf"},
                                                         {kXps + "/storyfragments", "frag"},
                                                         {kResource, "/FONT.odttf"}});
    for (const char* name : {"meta/t.png", "meta/job.xml", "meta/document.xml", "meta/page.xml", "font.odttf",
                             "font2.ttf", "frag"})
        entries.emplace_back(name, name);
    const XpsDocument document = OpenDocument(entries);
    EXPECT_EQ("/meta/t.png", document.thumbnail);
    EXPECT_EQ("/meta/job.xml", document.sequence.ticket);
    EXPECT_EQ("/meta/document.xml", document.sequence.documents[0].ticket);
    const FixedPage& page = document.sequence.documents[0].pages[0];
    EXPECT_EQ("/meta/page.xml", page.ticket);
    EXPECT_EQ((Texts{"/font.odttf", "/font2.ttf"}), page.resources);
    EXPECT_TRUE(document.Findings().empty());
}

TEST(XpsDocumentTest, ReadsOpenXps) {
    const std::string oxps = "http://schemas.openxps.org/oxps/v1.0";
    std::vector<RawEntry> entries = SmallDocument();
    for (RawEntry& entry : entries) {
        for (std::size_t at = entry.data.find(kXps); at != std::string::npos; at = entry.data.find(kXps))
            entry.data.replace(at, kXps.size(), oxps);
    }
    entries.emplace_back("_rels/p.fpage.rels",
                         Links({{oxps + "/printticket", "t"}, {oxps + "/required-resource", "f"}}));
    entries.emplace_back("t", "");
    entries.emplace_back("f", "");
    const XpsDocument document = OpenDocument(entries);
    EXPECT_EQ(Flavour::OpenXps, document.GetFlavour());
    EXPECT_EQ("/t", document.sequence.documents[0].pages[0].ticket);
    EXPECT_EQ(Texts{"/f"}, document.sequence.documents[0].pages[0].resources);
}

TEST(XpsDocumentTest, DocumentsAndPagesComeInSendingOrder) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "s.fdseq").data = Sequence({"/b.fdoc", "/d.fdoc"});
    entries.emplace_back("b.fdoc", Document({"/3.fpage", "/1.fpage", "/2.fpage"}));
    for (const char* name : {"1.fpage", "2.fpage", "3.fpage"}) entries.emplace_back(name, "");
    const XpsDocument document = OpenDocument(entries);
    Texts order;
    for (const FixedDocument& each : document.sequence.documents) {
        order.push_back(each.name);
        for (const FixedPage& page : each.pages) order.push_back(page.name);
    }
    EXPECT_EQ((Texts{"/b.fdoc", "/3.fpage", "/1.fpage", "/2.fpage", "/d.fdoc", "/p.fpage"}), order);
}

TEST(XpsDocumentTest, AStartPartThatIsADocumentImpliesASequence) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "_rels/.rels").data = Links({{kStart, "/d.fdoc"}});
    entries.emplace_back("_rels/d.fdoc.rels", Links({{kTicket, "t"}}));
    entries.emplace_back("t", "");
    const XpsDocument document = OpenDocument(entries);
    EXPECT_TRUE(document.sequence.implied);
    EXPECT_EQ("/FixedDocumentSequence.fdseq", document.sequence.name);
    EXPECT_EQ(std::nullopt, document.sequence.ticket);
    ASSERT_EQ(1U, document.sequence.documents.size());
    EXPECT_EQ("/t", document.sequence.documents[0].ticket);
    EXPECT_EQ(Texts{"is the start part, but a fixed document, /d.fdoc"}, document.Findings());
}

TEST(XpsDocumentTest, OfTwoStartPartsTheLastCounts) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "_rels/.rels").data = Links({{kStart, "/none"}, {kStart, "/s.fdseq"}});
    const XpsDocument document = OpenDocument(entries);
    EXPECT_EQ("/s.fdseq", document.sequence.name);
    EXPECT_EQ(Texts{"has several start parts, the last is taken, test.xps"}, document.Findings());
}

TEST(XpsDocumentTest, OfTwoTicketsTheFirstCounts) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.emplace_back("_rels/p.fpage.rels", Links({{kTicket, "none"}, {kTicket, "a"}, {kTicket, "b"}}));
    entries.emplace_back("a", "");
    entries.emplace_back("b", "");
    const XpsDocument document = OpenDocument(entries);
    EXPECT_EQ("/a", document.sequence.documents[0].pages[0].ticket);
    EXPECT_EQ((Texts{"the print ticket 'none' is missing, /p.fpage",
                     "has several print tickets, the first is taken, /p.fpage"}),
              document.Findings());
}

TEST(XpsDocumentTest, APageOrDocumentCountsOnce) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "s.fdseq").data = Sequence({"/d.fdoc", "/D.fdoc"});
    EntryOf(entries, "d.fdoc").data = Document({"/p.fpage", "/p.fpage"});
    const XpsDocument document = OpenDocument(entries);
    ASSERT_EQ(1U, document.sequence.documents.size());
    EXPECT_EQ(1U, document.sequence.documents[0].pages.size());
    EXPECT_EQ((Texts{"is referred to again, which is passed over, /p.fpage",
                     "is referred to again, which is passed over, /d.fdoc"}),
              document.Findings());
}

TEST(XpsDocumentTest, WhatIsMissingWithoutNeedIsAFinding) {
    std::vector<RawEntry> entries = SmallDocument();
    entries.emplace_back("_rels/p.fpage.rels", Links({{kResource, "/none.ttf"}}));
    entries.emplace_back("_rels/d.fdoc.rels", "<broken");
    EntryOf(entries, "s.fdseq").data = Sequence({"/d.fdoc", "/e.fdoc"});
    entries.emplace_back("e.fdoc", Document({}));
    const XpsDocument document = OpenDocument(entries);
    EXPECT_EQ(
        (Texts{"is not well-formed XML (line 1: Couldn't find end of Start Tag broken), /_rels/d.fdoc.rels",
               "the resource '/none.ttf' is missing, /p.fpage", "has no pages, /e.fdoc"}),
        document.Findings());
}

TEST(XpsDocumentTest, ANameThatReadsAsAFragmentIsFound) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "d.fdoc").data = Document({"/a#b.fpage"});
    entries.emplace_back("a#b.fpage", "");
    EXPECT_EQ("/a#b.fpage", OpenDocument(entries).sequence.documents[0].pages[0].name);
}

TEST(XpsDocumentTest, WithoutADocumentToBeHadItIsRefused) {
    std::vector<RawEntry> entries = SmallDocument();
    EntryOf(entries, "_rels/.rels").data = Links({{"urn:other", "/s.fdseq"}});
    EXPECT_EQ("has no start part, test.xps", OpeningError(entries));
    EntryOf(entries, "_rels/.rels").data = Links({{kStart, "none.fdseq"}});
    EXPECT_EQ("the start part is missing, none.fdseq", OpeningError(entries));
    EntryOf(entries, "_rels/.rels").data = "<Relationships";
    EXPECT_EQ("is not well-formed XML (line 1: Couldn't find end of Start Tag Relationships), /_rels/.rels",
              OpeningError(entries));

    entries = SmallDocument();
    EntryOf(entries, "s.fdseq").data = Sequence({});
    EXPECT_EQ("has no pages, /s.fdseq", OpeningError(entries));
    EntryOf(entries, "s.fdseq").data = Sequence({"x/none.fdoc"});
    EXPECT_EQ("is missing, /x/none.fdoc (from /s.fdseq)", OpeningError(entries));
    EntryOf(entries, "s.fdseq").data = Sequence({"p.fpage"});
    EXPECT_EQ("is neither a fixed document sequence nor a fixed document, /p.fpage", OpeningError(entries));
    EntryOf(entries, "s.fdseq").data = Sequence({"s.fdseq"});
    EXPECT_EQ("is not a fixed document, /s.fdseq", OpeningError(entries));
    EntryOf(entries, "s.fdseq").data = "<!DOCTYPE x>" + Sequence({"d.fdoc"}).substr(40);
    EXPECT_EQ("has a document type declaration, /s.fdseq", OpeningError(entries));

    entries = SmallDocument();
    EntryOf(entries, "d.fdoc").data = Document({"/none.fpage"});
    EXPECT_EQ("is missing, /none.fpage (from /d.fdoc)", OpeningError(entries));
}

}  // namespace
}  // namespace devkit::package
