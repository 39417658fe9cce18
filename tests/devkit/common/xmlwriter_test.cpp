#include "devkit/common/xmlwriter.h"

#include <gtest/gtest.h>

#include "devkit/common/xmlreader.h"

namespace devkit::common {
namespace {

TEST(XmlWriterTest, WritesADocument) {
    XmlWriter writer;
    writer.StartElement("p:a");
    writer.Attribute("xmlns:p", "urn:p");
    writer.StartElement("b");
    writer.EndElement();
    writer.StartElement("c");
    writer.Text("text");
    writer.EndElement();
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<p:a xmlns:p=\"urn:p\"><b/><c>text</c></p:a>",
              writer.Take());
}

TEST(XmlWriterTest, ADeclarationCanBeLeftOut) {
    XmlWriter writer(XmlWriter::Declaration::None);
    writer.Instruction("target", "data");
    writer.Raw("\n");
    writer.StartElement("a");
    writer.Comment(" b ");
    writer.Raw("\n ");
    writer.StartElement("c");
    EXPECT_EQ("<?target data?>\n<a><!-- b -->\n <c/></a>", writer.Take());
}

TEST(XmlWriterTest, WhatItsPlaceDemandsIsEscaped) {
    XmlWriter writer(XmlWriter::Declaration::None);
    writer.StartElement("a");
    writer.Attribute("b", "a&<\">'\r\n\t");
    writer.Text("&<\">'\r\n\t");
    const std::string markup = writer.Take();
    EXPECT_EQ("<a b=\"a&amp;&lt;&quot;&gt;'&#13;&#10;&#9;\">&amp;&lt;&quot;&gt;'&#13;\n\t</a>", markup);
    XmlReader reader(markup, "/part", {});
    ASSERT_TRUE(reader.NextElement());
    EXPECT_EQ("a&<\">'\r\n\t", reader.Attribute("b"));
    EXPECT_EQ("&<\">'\r\n\t", reader.Text());
}

TEST(XmlWriterTest, WhatIsNotAsciiIsWrittenAsItIs) {
    for (const auto declaration : {XmlWriter::Declaration::None, XmlWriter::Declaration::Written}) {
        XmlWriter writer(declaration);
        writer.StartElement("a");
        writer.Attribute("b", "\xC3\xA4\xF0\x9F\x98\x80");
        writer.Text("\xC3\xA4\xF0\x9F\x98\x80");
        EXPECT_TRUE(
            writer.Take().ends_with("<a b=\"\xC3\xA4\xF0\x9F\x98\x80\">\xC3\xA4\xF0\x9F\x98\x80</a>"));
    }
}

TEST(XmlWriterTest, NothingIsTooLong) {
    const std::string text(1'000'000, 'x');
    XmlWriter writer(XmlWriter::Declaration::None);
    writer.StartElement("a");
    writer.Text(text);
    EXPECT_TRUE("<a>" + text + "</a>" == writer.Take());
}

}  // namespace
}  // namespace devkit::common
