#include "devkit/prntvpt/merge/serializer.h"

#include <gtest/gtest.h>

#include "devkit/printschema/names.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace printschema;

using namespace tests;

constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const std::string Psf = "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";
const std::string Psk = "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords";
const std::string Xsi = "http://www.w3.org/2001/XMLSchema-instance";
const std::string Xsd = "http://www.w3.org/2001/XMLSchema";
const std::string Dev = "http://schemas.example.com/printing/simdevice/v1";
const std::string Acme = "http://schemas.example.com/acme/filters/v1";

[[nodiscard]] Element Sample() {
    Element root;
    root.children.push_back(ValueElement(Tag::ParameterInit, Keyword("PageCopies"), IntegerValue(2)));
    Element& feature = root.children.emplace_back();
    feature.tag = Tag::Feature;
    feature.name = QName{Acme, "PageStamp"};
    Element& option = feature.children.emplace_back();
    option.tag = Tag::Option;
    option.children.push_back(
        ValueElement(Tag::ScoredProperty, Keyword("Side"), NameValue(QName{Dev, "Front"})));
    return root;
}

[[nodiscard]] std::string Write(const Element& root, const Behaviour& switches,
                                const std::vector<PrefixBinding>& input = {}) {
    return Serialize(root, switches, {{Dev}, input});
}

[[nodiscard]] Behaviour With(PrefixStyle prefixes) {
    Behaviour switches;
    switches.prefixes = prefixes;
    return switches;
}

TEST(Serializer, DeclaresEverythingOnTheRootInTheOrderOfThePlatform) {
    EXPECT_EQ(
        kDeclaration + std::string("<psf:PrintTicket xmlns:psf=\"") + Psf + "\" xmlns:xsi=\"" + Xsi +
            "\" xmlns:xsd=\"" + Xsd + "\" version=\"1\" xmlns:ns0000=\"" + Dev + "\" xmlns:ns0001=\"" + Acme +
            "\" xmlns:psk=\"" + Psk + "\">" +
            "<psf:ParameterInit name=\"psk:PageCopies\"><psf:Value xsi:type=\"xsd:integer\">2</psf:Value>"
            "</psf:ParameterInit><psf:Feature name=\"ns0001:PageStamp\"><psf:Option>"
            "<psf:ScoredProperty name=\"psk:Side\"><psf:Value xsi:type=\"xsd:QName\">ns0000:Front"
            "</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature></psf:PrintTicket>",
        Write(Sample(), {}));
}

TEST(Serializer, MangledPrefixesAreNumbered) {
    EXPECT_EQ(kDeclaration + std::string("<ns0001:PrintTicket xmlns:ns0001=\"") + Psf + "\" xmlns:ns0003=\"" +
                  Xsi + "\" xmlns:ns0004=\"" + Xsd + "\" version=\"1\" xmlns:ns0005=\"" + Dev +
                  "\" xmlns:ns0002=\"" + Psk + "\"/>",
              Write(Element(), With(PrefixStyle::Mangled)));
}

TEST(Serializer, DefaultNamespaceHasNoPrefix) {
    EXPECT_EQ(kDeclaration + std::string("<PrintTicket xmlns=\"") + Psf + "\" xmlns:xsi=\"" + Xsi +
                  "\" xmlns:xsd=\"" + Xsd + "\" version=\"1\" xmlns:ns0000=\"" + Dev + "\" xmlns:psk=\"" +
                  Psk + "\"/>",
              Write(Element(), With(PrefixStyle::DefaultNamespace)));
}

TEST(Serializer, NamesOfTheFrameworkNeedAPrefixBesideTheDefaultNamespace) {
    Element root;
    root.children.push_back(ValueElement(Tag::Property, FrameworkName("PageX"), StringValue("")));
    EXPECT_EQ(kDeclaration + std::string("<PrintTicket xmlns=\"") + Psf + "\" xmlns:psf=\"" + Psf +
                  "\" xmlns:xsi=\"" + Xsi + "\" xmlns:xsd=\"" + Xsd + "\" version=\"1\" xmlns:ns0000=\"" +
                  Dev + "\" xmlns:psk=\"" + Psk +
                  "\"><Property name=\"psf:PageX\"><Value xsi:type=\"xsd:string\"/></Property></PrintTicket>",
              Write(root, With(PrefixStyle::DefaultNamespace)));
}

TEST(Serializer, LocalDeclarationsStandOnEachElementThatNeedsThem) {
    Element root;
    root.children.push_back(ValueElement(Tag::ParameterInit, Keyword("PageCopies"), IntegerValue(2)));
    EXPECT_EQ(kDeclaration + std::string("<psf:PrintTicket xmlns:psf=\"") + Psf +
                  "\" version=\"1\"><psf:ParameterInit xmlns:psf=\"" + Psf + "\" xmlns:psk=\"" + Psk +
                  "\" name=\"psk:PageCopies\"><psf:Value xmlns:psf=\"" + Psf + "\" xmlns:xsd=\"" + Xsd +
                  "\" xmlns:xsi=\"" + Xsi +
                  "\" xsi:type=\"xsd:integer\">2</psf:Value></psf:ParameterInit></psf:PrintTicket>",
              Write(root, With(PrefixStyle::Local)));
}

TEST(Serializer, CollidingPrefixesAreTheInputsOnOtherNamespaces) {
    const std::string text =
        Write(Element(), With(PrefixStyle::Collide), {{"psf", Psf}, {"psk", Psk}, {"krk", Acme}});
    EXPECT_EQ(kDeclaration + std::string("<psk:PrintTicket xmlns:psk=\"") + Psf + "\" xmlns:psf=\"" + Xsi +
                  "\" xmlns:krk=\"" + Xsd + "\" version=\"1\" xmlns:ns0000=\"" + Dev + "\" xmlns:ns0001=\"" +
                  Psk + "\"/>",
              text);
}

TEST(Serializer, CollidingPrefixesNeverRepeat) {
    const std::string text = Write(Element(), With(PrefixStyle::Collide), {{"ns0000", Psf}, {"ns0001", Psk}});
    EXPECT_EQ(kDeclaration + std::string("<ns0001:PrintTicket xmlns:ns0001=\"") + Psf + "\" xmlns:ns0000=\"" +
                  Xsi + "\" xmlns:ns0002=\"" + Xsd + "\" version=\"1\" xmlns:ns0003=\"" + Dev +
                  "\" xmlns:ns0004=\"" + Psk + "\"/>",
              text);
}

TEST(Serializer, LaterKeywordsHaveTheirOwnPrefix) {
    Element root;
    root.children.push_back(
        ValueElement(Tag::Property, QName{std::string(kKeywordsV11Uri), "JobPasscode"}, StringValue("a")));
    const std::string text = Write(root, {});
    EXPECT_NE(std::string::npos, text.find("xmlns:pskv11=\"" + std::string(kKeywordsV11Uri) + "\""));
    EXPECT_NE(std::string::npos, text.find("<psf:Property name=\"pskv11:JobPasscode\">"));
}

TEST(Serializer, EscapesText) {
    Element root;
    root.children.push_back(ValueElement(Tag::Property, Keyword("JobName"), StringValue("<&>\"'\r\n\t")));
    EXPECT_NE(std::string::npos, Write(root, {}).find(">&lt;&amp;&gt;&quot;'&#13;\n\t</psf:Value>"));
}

TEST(Serializer, PrettyLayoutHasALineForEachElement) {
    Element root;
    root.children.push_back(ValueElement(Tag::ParameterInit, Keyword("PageCopies"), IntegerValue(2)));
    Behaviour switches;
    switches.layout = Layout::Pretty;
    const std::string text = Write(root, switches);
    EXPECT_EQ(
        ">\n <psf:ParameterInit name=\"psk:PageCopies\">\n  <psf:Value xsi:type=\"xsd:integer\">2"
        "</psf:Value>\n </psf:ParameterInit>\n</psf:PrintTicket>\n",
        text.substr(text.find(">\n <")));
}

TEST(Serializer, CommentsComeWithProcessingInstructions) {
    Element root;
    root.children.push_back(ValueElement(Tag::ParameterInit, Keyword("PageCopies"), IntegerValue(2)));
    Behaviour switches;
    switches.layout = Layout::Comments;
    const std::string text = Write(root, switches);
    EXPECT_EQ(std::string(kDeclaration).size(),
              text.find("<?devkit written by the simulated provider?>\n<psf:PrintTicket"));
    EXPECT_NE(std::string::npos, text.find("\n <!-- ParameterInit --><?devkit?>\n <psf:ParameterInit"));
}

TEST(Serializer, EncodingsBeginWithTheirMarks) {
    Behaviour switches;
    switches.encoding = Encoding::Utf8WithMark;
    EXPECT_EQ("\xEF\xBB\xBF" + Write(Element(), {}), Write(Element(), switches));
    switches.encoding = Encoding::Utf16LittleEndian;
    const std::string wide = Write(Element(), switches);
    ASSERT_GT(wide.size(), 8U);
    EXPECT_EQ(std::string("\xFF\xFE<\0?\0", 6), wide.substr(0, 6));
    EXPECT_EQ(0U, wide.size() % 2);
}

}  // namespace
}  // namespace devkit::prntvpt
