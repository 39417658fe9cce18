#include "devkit/package/documentmarkup.h"

#include <gtest/gtest.h>

#include "testpackages.h"

namespace devkit::package {
namespace {

using Texts = std::vector<std::string>;

const std::string kOxps = "http://schemas.openxps.org/oxps/v1.0";

Texts ReferencesOf(const std::string& markup) { return ParseDocumentMarkup(markup, "/d", {}).references; }

std::string DocumentWith(const std::string& content, const std::string& uri = kXps) {
    return "<FixedDocument xmlns=\"" + uri +
           "\" xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\" xmlns:x=\"" + kXps +
           "\" xmlns:u=\"urn:unknown\">" + content + "</FixedDocument>";
}

TEST(DocumentMarkupTest, ListsReferencesOfBothVocabularies) {
    const std::string pages =
        "<PageContent Source=\"1\"/><PageContent><PageContent.LinkTargets/></PageContent>";
    EXPECT_EQ((Texts{"1", ""}), ReferencesOf(DocumentWith(pages)));
    EXPECT_EQ((Texts{"1", ""}), ReferencesOf(DocumentWith(pages, kOxps)));
    const DocumentMarkup sequence =
        ParseDocumentMarkup("<a:FixedDocumentSequence xmlns:a='" + kOxps +
                                "'><a:DocumentReference Source='2'/></a:FixedDocumentSequence>",
                            "/s", {});
    EXPECT_EQ(DocumentRoot::FixedDocumentSequence, sequence.root);
    EXPECT_EQ(Texts{"2"}, sequence.references);
}

TEST(DocumentMarkupTest, ElementsOfOtherNamespacesDoNotCount) {
    EXPECT_EQ(Texts{"2"}, ReferencesOf(DocumentWith("<u:PageContent Source='1'/><PageContent Source='2'/>")));
}

TEST(DocumentMarkupTest, OfAlternateContentTheFirstUnderstoodChoiceCounts) {
    EXPECT_EQ((Texts{"2", "5"}),
              ReferencesOf(DocumentWith(
                  "<mc:AlternateContent><mc:Choice Requires='u'><PageContent Source='1'/></mc:Choice>"
                  "<mc:Choice Requires='x'><PageContent Source='2'/></mc:Choice>"
                  "<mc:Choice Requires='x'><PageContent Source='3'/></mc:Choice>"
                  "<mc:Fallback><PageContent Source='4'/></mc:Fallback></mc:AlternateContent>"
                  "<PageContent Source='5'/>")));
}

TEST(DocumentMarkupTest, WithoutAnUnderstoodChoiceTheFallbackCounts) {
    EXPECT_EQ((Texts{"2", "3"}),
              ReferencesOf(DocumentWith(
                  "<mc:AlternateContent><mc:Choice Requires='x u'><PageContent Source='1'/></mc:Choice>"
                  "<mc:Fallback><PageContent Source='2'/><mc:AlternateContent><mc:Choice Requires='x'>"
                  "<PageContent "
                  "Source='3'/></mc:Choice></mc:AlternateContent></mc:Fallback></mc:AlternateContent>")));
}

TEST(DocumentMarkupTest, OtherMarkupIsAnError) {
    EXPECT_EQ("is neither a fixed document sequence nor a fixed document, /d",
              ErrorOf([] { static_cast<void>(ReferencesOf("<FixedDocument/>")); }));
    EXPECT_EQ("is neither a fixed document sequence nor a fixed document, /d",
              ErrorOf([] { static_cast<void>(ReferencesOf("<FixedPage xmlns='" + kXps + "'/>")); }));
}

TEST(DocumentMarkupTest, ReferencesThatStayKeepWhatTheyHold) {
    const std::string markup =
        "<FixedDocument xmlns=\"" + kXps +
        "\"><PageContent Source=\"Pages/1.fpage\" Width=\"5\"><PageContent.LinkTargets>"
        "<LinkTarget Name=\"a\"/></PageContent.LinkTargets></PageContent>"
        "<PageContent Source=\"Pages/2.fpage\"/></FixedDocument>";
    EXPECT_EQ(
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<FixedDocument xmlns=\"" + kXps +
            "\"><PageContent Source=\"/new&amp;.fpage\"/><PageContent Source=\"Pages/1.fpage\" Width=\"5\">"
            "<PageContent.LinkTargets><LinkTarget Name=\"a\"/></PageContent.LinkTargets></PageContent>"
            "</FixedDocument>\n",
        WithReferences(markup, "/Docs/1.fdoc", {"/new&.fpage", "/docs/pages/1.FPAGE"}));
}

TEST(DocumentMarkupTest, TheEncodingStays) {
    std::string utf16 = "\xFF\xFE";
    for (const char c :
         "<?xml version='1.0' encoding='UTF-16'?>" + DocumentWith("<PageContent Source='1'/>")) {
        utf16 += c;
        utf16 += '\0';
    }
    const std::string markup = WithReferences(utf16, "/d", {"/2", "/1"});
    EXPECT_TRUE(markup.starts_with("\xFF\xFE"));
    EXPECT_EQ(0U, markup.size() % 2);
    EXPECT_EQ((Texts{"/2", "1"}), ReferencesOf(markup));
}

TEST(DocumentMarkupTest, ReferencesInAlternateContentAreReplacedAsWell) {
    const std::string markup = WithReferences(
        DocumentWith(
            "<mc:AlternateContent><mc:Choice Requires='x'><PageContent Source='1'/></mc:Choice><mc:Fallback>"
            "<PageContent Source='2'/></mc:Fallback></mc:AlternateContent>"),
        "/d", {"/1"});
    EXPECT_EQ(Texts{"1"}, ReferencesOf(markup));
}

TEST(DocumentMarkupTest, NewMarkupNamesItsParts) {
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<FixedDocumentSequence xmlns=\"" + kOxps +
                  "\"><DocumentReference Source=\"/a\"/><DocumentReference "
                  "Source=\"/b\"/></FixedDocumentSequence>",
              NewDocumentMarkup(Flavour::OpenXps, DocumentRoot::FixedDocumentSequence, {"/a", "/b"}));
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<FixedDocument xmlns=\"" + kXps + "\"/>",
              NewDocumentMarkup(Flavour::MicrosoftXps, DocumentRoot::FixedDocument, {}));
}

TEST(DocumentMarkupTest, WhatCannotBeParsedCannotBeRewritten) {
    EXPECT_EQ("is not well-formed XML (line 1: The markup breaks off), /d",
              ErrorOf([] { static_cast<void>(WithReferences("<a", "/d", {})); }));
    EXPECT_EQ("has a document type declaration, /d",
              ErrorOf([] { static_cast<void>(WithReferences("<!DOCTYPE a><a/>", "/d", {})); }));
}

}  // namespace
}  // namespace devkit::package
