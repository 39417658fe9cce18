#include "devkit/package/contenttypes.h"

#include <gtest/gtest.h>

#include "devkit/package/packageerror.h"
#include "testpackages.h"

namespace devkit::package {
namespace {

constexpr const char* kTypes =
    R"(<?xml version="1.0"?><Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
    R"(<Default Extension="PNG" ContentType="image/png"/><Default Extension="xml" ContentType="text/xml; charset=utf-8"/>)"
    R"(<Override PartName="/A/Ticket.XML" ContentType="application/ticket"/></Types>)";

TEST(ContentTypesTest, DefaultsAndOverridesIgnoreLetterCase) {
    const ContentTypes types = ContentTypes::Parse(kTypes, {});
    EXPECT_EQ(types.Of("/x/a.png"), "image/png");
    EXPECT_EQ(types.Of("/x/a.pNg"), "image/png");
    EXPECT_EQ(types.Of("/a/ticket.xml"), "application/ticket");
    EXPECT_EQ(types.Of("/A%2f"), "");
    EXPECT_EQ(types.Of("/noextension"), "");
    EXPECT_EQ(types.Of("/dotted.png/noextension"), "");
}

TEST(ContentTypesTest, ParametersAreLeftOut) {
    EXPECT_EQ(ContentTypes::Parse(kTypes, {}).Of("/b.xml"), "text/xml");
}

TEST(ContentTypesTest, OfTwoDeclarationsTheFirstCounts) {
    const ContentTypes types = ContentTypes::Parse(
        R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">)"
        R"(<Default Extension="a" ContentType="one"/><Default Extension="A" ContentType="two"/></Types>)",
        {});
    EXPECT_EQ(types.Of("/x.a"), "one");
}

TEST(ContentTypesTest, ElementsOfOtherNamespacesDoNotCount) {
    const ContentTypes types = ContentTypes::Parse(
        R"(<Types xmlns="urn:other"><Default Extension="a" ContentType="one"/></Types>)", {});
    EXPECT_EQ(types.Of("/x.a"), "");
}

TEST(ContentTypesTest, DeclaresAnOverrideOnlyWhereTheDefaultDiffers) {
    ContentTypes types = ContentTypes::Parse(kTypes, {});
    EXPECT_FALSE(types.Declare("/new.png", "image/png"));
    EXPECT_TRUE(types.Declare("/new.xml", "application/<new>"));
    EXPECT_FALSE(types.Declare("/NEW.xml", "application/<new>"));
    EXPECT_EQ(types.Of("/New.xml"), "application/<new>");
    EXPECT_TRUE(types.Declare("/new.xml", "text/xml"));
    EXPECT_TRUE(types.Declare("/none", "x"));
    EXPECT_EQ(types.Markup(),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
              "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
              "<Default Extension=\"PNG\" ContentType=\"image/png\"/>"
              "<Default Extension=\"xml\" ContentType=\"text/xml; charset=utf-8\"/>"
              "<Override PartName=\"/A/Ticket.XML\" ContentType=\"application/ticket\"/>"
              "<Override PartName=\"/none\" ContentType=\"x\"/></Types>");
}

TEST(ContentTypesTest, ForgetsOverrides) {
    ContentTypes types = ContentTypes::Parse(kTypes, {});
    EXPECT_TRUE(types.Forget("/a/TICKET.xml"));
    EXPECT_FALSE(types.Forget("/a/TICKET.xml"));
    EXPECT_EQ(types.Of("/a/ticket.xml"), "text/xml");
}

TEST(ContentTypesTest, CustomaryTypesCoverAnXpsDocument) {
    const ContentTypes types = ContentTypes::Customary();
    EXPECT_EQ(types.Of("/a.FPAGE"), "application/vnd.ms-package.xps-fixedpage+xml");
    EXPECT_EQ(types.Of("/_rels/.rels"), "application/vnd.openxmlformats-package.relationships+xml");
    EXPECT_EQ(types.Of("/a.odttf"), "application/vnd.ms-package.obfuscated-opentype");
}

TEST(ContentTypesTest, MarkupThatCannotBeReadIsAnError) {
    EXPECT_EQ(ErrorOf([] { static_cast<void>(ContentTypes::Parse("<Types></Type>", {})); }),
              "is not well-formed XML (line 1: Opening and ending tag mismatch: Types line 1 and Type), "
              "/[Content_Types].xml");
    EXPECT_EQ(ErrorOf([] { static_cast<void>(ContentTypes::Parse("", {})); }),
              "is empty, /[Content_Types].xml");
}

}  // namespace
}  // namespace devkit::package
