#include "devkit/printschema/names.h"

#include <gtest/gtest.h>

namespace devkit::prntvpt {
namespace {

TEST(SchemaNames, ScopeIsTheWordThatANameBeginsWith) {
    EXPECT_EQ(ScopePrefixOf("JobInputBin"), kPTJobScope);
    EXPECT_EQ(ScopePrefixOf("DocumentCollate"), kPTDocumentScope);
    EXPECT_EQ(ScopePrefixOf("PageMediaSize"), kPTPageScope);
}

TEST(SchemaNames, ScopeWordsAreCaseSensitive) {
    EXPECT_EQ(ScopePrefixOf("pageMediaSize"), std::nullopt);
    EXPECT_EQ(ScopePrefixOf("JOBInputBin"), std::nullopt);
    EXPECT_EQ(ScopePrefixOf(""), std::nullopt);
}

TEST(SchemaNames, NameWithoutScopeBelongsToTheJob) {
    EXPECT_EQ(ScopeOf(Keyword("Borders")), kPTJobScope);
    EXPECT_EQ(ScopeOf({"http://schemas.example.com/x", "PageBorders"}), kPTPageScope);
}

TEST(SchemaNames, PublicNamespacesAreTheFrameworkAndTheKeywords) {
    EXPECT_TRUE(IsPublicNamespace(FrameworkUri));
    EXPECT_TRUE(IsPublicNamespace(KeywordsUri));
    EXPECT_TRUE(IsPublicNamespace(KeywordsV11Uri));
    EXPECT_FALSE(IsPublicNamespace(SchemaUri));
    EXPECT_FALSE(
        IsPublicNamespace("https://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"));
}

TEST(SchemaNames, ScopesHaveNames) {
    for (const EPrintTicketScope scope : {kPTPageScope, kPTDocumentScope, kPTJobScope}) {
        EXPECT_EQ(ScopeByName(ScopeName(scope)), scope);
    }
    EXPECT_EQ(ScopeName(static_cast<EPrintTicketScope>(3)), "none");
    EXPECT_EQ(ScopeByName("Page"), std::nullopt);
}

}  // namespace
}  // namespace devkit::prntvpt
