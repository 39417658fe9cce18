#include "devkit/printschema/names.h"

#include <gtest/gtest.h>

namespace devkit::printschema {
namespace {

TEST(SchemaNames, ScopeIsTheWordThatANameBeginsWith) {
    EXPECT_EQ(kPTJobScope, ScopePrefixOf("JobInputBin"));
    EXPECT_EQ(kPTDocumentScope, ScopePrefixOf("DocumentCollate"));
    EXPECT_EQ(kPTPageScope, ScopePrefixOf("PageMediaSize"));
}

TEST(SchemaNames, ScopeWordsAreCaseSensitive) {
    EXPECT_EQ(std::nullopt, ScopePrefixOf("pageMediaSize"));
    EXPECT_EQ(std::nullopt, ScopePrefixOf("JOBInputBin"));
    EXPECT_EQ(std::nullopt, ScopePrefixOf(""));
}

TEST(SchemaNames, NameWithoutScopeBelongsToTheJob) {
    EXPECT_EQ(kPTJobScope, ScopeOf(Keyword("Borders")));
    EXPECT_EQ(kPTPageScope, ScopeOf({"http://schemas.example.com/x", "PageBorders"}));
}

TEST(SchemaNames, PublicNamespacesAreTheFrameworkAndTheKeywords) {
    EXPECT_TRUE(IsPublicNamespace(kFrameworkUri));
    EXPECT_TRUE(IsPublicNamespace(kKeywordsUri));
    EXPECT_TRUE(IsPublicNamespace(kKeywordsV11Uri));
    EXPECT_FALSE(IsPublicNamespace(kSchemaUri));
    EXPECT_FALSE(
        IsPublicNamespace("https://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"));
}

TEST(SchemaNames, ScopesHaveNames) {
    for (const EPrintTicketScope scope : {kPTPageScope, kPTDocumentScope, kPTJobScope}) {
        EXPECT_EQ(scope, ScopeByName(ScopeName(scope)));
    }
    EXPECT_EQ("none", ScopeName(static_cast<EPrintTicketScope>(3)));
    EXPECT_EQ(std::nullopt, ScopeByName("Page"));
}

}  // namespace
}  // namespace devkit::printschema
