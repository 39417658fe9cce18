#include "devkit/package/documentmarkup.h"

#include <gtest/gtest.h>

#include "testpackages.h"

namespace devkit::package {
namespace {

using Texts = std::vector<std::string>;

const std::string kOxps = "http://schemas.openxps.org/oxps/v1.0";

Texts ReferencesOf(const std::string& markup) { return ParseDocumentMarkup(markup, "/d", {}).references; }

std::string Document(const std::string& content, const std::string& uri = kXps) {
    return "<FixedDocument xmlns=\"" + uri +
           "\" xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\" xmlns:x=\"" + kXps +
           "\" xmlns:u=\"urn:unknown\">" + content + "</FixedDocument>";
}

TEST(DocumentMarkupTest, ListsReferencesOfBothVocabularies) {
    const std::string pages =
        "<PageContent Source=\"1\"/><PageContent><PageContent.LinkTargets/></PageContent>";
    EXPECT_EQ(ReferencesOf(Document(pages)), (Texts{"1", ""}));
    EXPECT_EQ(ReferencesOf(Document(pages, kOxps)), (Texts{"1", ""}));
    const DocumentMarkup sequence =
        ParseDocumentMarkup("<a:FixedDocumentSequence xmlns:a='" + kOxps +
                                "'><a:DocumentReference Source='2'/></a:FixedDocumentSequence>",
                            "/s", {});
    EXPECT_EQ(sequence.root, DocumentRoot::FixedDocumentSequence);
    EXPECT_EQ(sequence.references, Texts{"2"});
}

TEST(DocumentMarkupTest, ElementsOfOtherNamespacesDoNotCount) {
    EXPECT_EQ(ReferencesOf(Document("<u:PageContent Source='1'/><PageContent Source='2'/>")), Texts{"2"});
}

TEST(DocumentMarkupTest, OfAlternateContentTheFirstUnderstoodChoiceCounts) {
    EXPECT_EQ(ReferencesOf(Document(
                  "<mc:AlternateContent><mc:Choice Requires='u'><PageContent Source='1'/></mc:Choice>"
                  "<mc:Choice Requires='x'><PageContent Source='2'/></mc:Choice>"
                  "<mc:Choice Requires='x'><PageContent Source='3'/></mc:Choice>"
                  "<mc:Fallback><PageContent Source='4'/></mc:Fallback></mc:AlternateContent>"
                  "<PageContent Source='5'/>")),
              (Texts{"2", "5"}));
}

TEST(DocumentMarkupTest, WithoutAnUnderstoodChoiceTheFallbackCounts) {
    EXPECT_EQ(ReferencesOf(Document(
                  "<mc:AlternateContent><mc:Choice Requires='x u'><PageContent Source='1'/></mc:Choice>"
                  "<mc:Fallback><PageContent Source='2'/><mc:AlternateContent><mc:Choice Requires='x'>"
                  "<PageContent "
                  "Source='3'/></mc:Choice></mc:AlternateContent></mc:Fallback></mc:AlternateContent>")),
              (Texts{"2", "3"}));
}

TEST(DocumentMarkupTest, OtherMarkupIsAnError) {
    EXPECT_EQ(ErrorOf([] { static_cast<void>(ReferencesOf("<FixedDocument/>")); }),
              "is neither a fixed document sequence nor a fixed document, /d");
    EXPECT_EQ(ErrorOf([] { static_cast<void>(ReferencesOf("<FixedPage xmlns='" + kXps + "'/>")); }),
              "is neither a fixed document sequence nor a fixed document, /d");
}

TEST(DocumentMarkupTest, ReferencesThatStayKeepWhatTheyHold) {
    const std::string markup =
        "<FixedDocument xmlns=\"" + kXps +
        "\"><PageContent Source=\"Pages/1.fpage\" Width=\"5\"><PageContent.LinkTargets>"
        "<LinkTarget Name=\"a\"/></PageContent.LinkTargets></PageContent>"
        "<PageContent Source=\"Pages/2.fpage\"/></FixedDocument>";
    EXPECT_EQ(
        WithReferences(markup, "/Docs/1.fdoc", {"/new&.fpage", "/docs/pages/1.FPAGE"}),
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<FixedDocument xmlns=\"" + kXps +
            "\"><PageContent Source=\"/new&amp;.fpage\"/><PageContent Source=\"Pages/1.fpage\" Width=\"5\">"
            "<PageContent.LinkTargets><LinkTarget Name=\"a\"/></PageContent.LinkTargets></PageContent>"
            "</FixedDocument>\n");
}

TEST(DocumentMarkupTest, TheEncodingStays) {
    std::string utf16 = "\xFF\xFE";
    for (const char c : "<?xml version='1.0' encoding='UTF-16'?>" + Document("<PageContent Source='1'/>")) {
        utf16 += c;
        utf16 += '\0';
    }
    const std::string markup = WithReferences(utf16, "/d", {"/2", "/1"});
    EXPECT_TRUE(markup.starts_with("\xFF\xFE"));
    EXPECT_EQ(markup.size() % 2, 0U);
    EXPECT_EQ(ReferencesOf(markup), (Texts{"/2", "1"}));
}

TEST(DocumentMarkupTest, ReferencesInAlternateContentAreReplacedAsWell) {
    const std::string markup = WithReferences(
        Document(
            "<mc:AlternateContent><mc:Choice Requires='x'><PageContent Source='1'/></mc:Choice><mc:Fallback>"
            "<PageContent Source='2'/></mc:Fallback></mc:AlternateContent>"),
        "/d", {"/1"});
    EXPECT_EQ(ReferencesOf(markup), Texts{"1"});
}

TEST(DocumentMarkupTest, NewMarkupNamesItsParts) {
    EXPECT_EQ(NewDocumentMarkup(Flavour::OpenXps, DocumentRoot::FixedDocumentSequence, {"/a", "/b"}),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<FixedDocumentSequence xmlns=\"" + kOxps +
                  "\"><DocumentReference Source=\"/a\"/><DocumentReference "
                  "Source=\"/b\"/></FixedDocumentSequence>");
    EXPECT_EQ(NewDocumentMarkup(Flavour::MicrosoftXps, DocumentRoot::FixedDocument, {}),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<FixedDocument xmlns=\"" + kXps +
                  "\"></FixedDocument>");
}

TEST(DocumentMarkupTest, WhatCannotBeParsedCannotBeRewritten) {
    EXPECT_EQ(ErrorOf([] { static_cast<void>(WithReferences("<a", "/d", {})); }), "cannot be rewritten, /d");
    EXPECT_EQ(ErrorOf([] { static_cast<void>(WithReferences("<!DOCTYPE a><a/>", "/d", {})); }),
              "cannot be rewritten, /d");
}

}  // namespace
}  // namespace devkit::package
