#include "devkit/package/relationships.h"

#include <gtest/gtest.h>

#include "testpackages.h"

namespace devkit::package {
namespace {

TEST(RelationshipsTest, ComeInTheOrderOfTheMarkup) {
    const std::vector<Relationship> expected = {{"R1", "urn:a&b", "../x \"y\"", false},
                                                {"R9", "urn:c", "http://example.com/", true}};
    EXPECT_EQ(expected, ParseRelationships(RelationshipsMarkup(expected), "/r", {}));
}

TEST(RelationshipsTest, AreWrittenAsTheirSchemaHasThem) {
    EXPECT_EQ(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
        "<Relationship Type=\"urn:t\" Target=\"/a&lt;b&#9;\" Id=\"R1\"/>"
        "<Relationship Type=\"urn:t\" Target=\"u\" Id=\"R2\" TargetMode=\"External\"/></Relationships>",
        RelationshipsMarkup({{"R1", "urn:t", "/a<b\t", false}, {"R2", "urn:t", "u", true}}));
}

TEST(RelationshipsTest, ElementsOfOtherNamespacesDoNotCount) {
    EXPECT_TRUE(
        ParseRelationships("<Relationships><Relationship Id='a'/></Relationships>", "/r", {}).empty());
}

TEST(RelationshipsTest, MissingAttributesAreEmpty) {
    const auto relationships = ParseRelationships(
        "<r:Relationships xmlns:r='http://schemas.openxmlformats.org/package/2006/relationships'>"
        "<r:Relationship/></r:Relationships>",
        "/r", {});
    ASSERT_EQ(1U, relationships.size());
    EXPECT_EQ(Relationship(), relationships[0]);
}

TEST(RelationshipsTest, AFreeIdIsTheFirstThatIsNotTaken) {
    EXPECT_EQ("R1", FreeId({}));
    EXPECT_EQ("R2", FreeId({{"R1", "", "", false}, {"R3", "", "", false}, {"x", "", "", false}}));
}

TEST(RelationshipsTest, MarkupThatCannotBeReadIsAnErrorThatNamesThePart) {
    EXPECT_EQ(
        "is not well-formed XML (line 1: Opening and ending tag mismatch: a line 1 and b), /_rels/.rels",
        ErrorOf([] { static_cast<void>(ParseRelationships("<a></b>", "/_rels/.rels", {})); }));
}

}  // namespace
}  // namespace devkit::package
