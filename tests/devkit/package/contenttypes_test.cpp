#include "devkit/package/contenttypes.h"

#include <gtest/gtest.h>

#include "devkit/common/error.h"
#include "testpackages.h"

namespace devkit::package {
namespace {

constexpr const char* kTypes =
    R"(<?xml version="1.0"?><Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
    R"(<Default Extension="PNG" ContentType="image/png"/><Default Extension="xml" ContentType="text/xml; charset=utf-8"/>)"
    R"(<Override PartName="/A/Ticket.XML" ContentType="application/ticket"/></Types>)";

TEST(ContentTypesTest, DefaultsAndOverridesIgnoreLetterCase) {
    const ContentTypes types = ContentTypes::Parse(kTypes, {});
    EXPECT_EQ("image/png", types.Of("/x/a.png"));
    EXPECT_EQ("image/png", types.Of("/x/a.pNg"));
    EXPECT_EQ("application/ticket", types.Of("/a/ticket.xml"));
    EXPECT_EQ("", types.Of("/A%2f"));
    EXPECT_EQ("", types.Of("/noextension"));
    EXPECT_EQ("", types.Of("/dotted.png/noextension"));
}

TEST(ContentTypesTest, ParametersAreLeftOut) {
    EXPECT_EQ("text/xml", ContentTypes::Parse(kTypes, {}).Of("/b.xml"));
}

TEST(ContentTypesTest, OfTwoDeclarationsTheFirstCounts) {
    const ContentTypes types = ContentTypes::Parse(
        R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
        R"(<Default Extension="a" ContentType="one"/><Default Extension="A" ContentType="two"/></Types>)",
        {});
    EXPECT_EQ("one", types.Of("/x.a"));
}

TEST(ContentTypesTest, ElementsOfOtherNamespacesDoNotCount) {
    const ContentTypes types = ContentTypes::Parse(
        R"(<Types xmlns="urn:other"><Default Extension="a" ContentType="one"/></Types>)", {});
    EXPECT_EQ("", types.Of("/x.a"));
}

TEST(ContentTypesTest, DeclaresAnOverrideOnlyWhereTheDefaultDiffers) {
    ContentTypes types = ContentTypes::Parse(kTypes, {});
    EXPECT_FALSE(types.Declare("/new.png", "image/png"));
    EXPECT_TRUE(types.Declare("/new.xml", "application/<new>"));
    EXPECT_FALSE(types.Declare("/NEW.xml", "application/<new>"));
    EXPECT_EQ("application/<new>", types.Of("/New.xml"));
    EXPECT_TRUE(types.Declare("/new.xml", "text/xml"));
    EXPECT_TRUE(types.Declare("/none", "x"));
    EXPECT_EQ(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
        "<Default Extension=\"PNG\" ContentType=\"image/png\"/>"
        "<Default Extension=\"xml\" ContentType=\"text/xml; charset=utf-8\"/>"
        "<Override PartName=\"/A/Ticket.XML\" ContentType=\"application/ticket\"/>"
        "<Override PartName=\"/none\" ContentType=\"x\"/></Types>",
        types.Markup());
}

TEST(ContentTypesTest, ForgetsOverrides) {
    ContentTypes types = ContentTypes::Parse(kTypes, {});
    EXPECT_TRUE(types.Forget("/a/TICKET.xml"));
    EXPECT_FALSE(types.Forget("/a/TICKET.xml"));
    EXPECT_EQ("text/xml", types.Of("/a/ticket.xml"));
}

TEST(ContentTypesTest, CustomaryTypesCoverAnXpsDocument) {
    const ContentTypes types = ContentTypes::Customary();
    EXPECT_EQ("application/vnd.ms-package.xps-fixedpage+xml", types.Of("/a.FPAGE"));
    EXPECT_EQ("application/vnd.openxmlformats-package.relationships+xml", types.Of("/_rels/.rels"));
    EXPECT_EQ("application/vnd.ms-package.obfuscated-opentype", types.Of("/a.odttf"));
}

TEST(ContentTypesTest, MarkupThatCannotBeReadIsAnError) {
    EXPECT_EQ(
        "is not well-formed XML (line 1: Opening and ending tag mismatch: Types line 1 and Type), "
        "/[Content_Types].xml",
        ErrorOf([] { static_cast<void>(ContentTypes::Parse("<Types></Type>", {})); }));
    EXPECT_EQ("is empty, /[Content_Types].xml",
              ErrorOf([] { static_cast<void>(ContentTypes::Parse("", {})); }));
}

}  // namespace
}  // namespace devkit::package
