#include "devkit/prntvpt/merge/serializer.h"

#include <gtest/gtest.h>

#include "devkit/printschema/names.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace printschema;

using namespace tests;

constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const std::string kPsf = "http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";
const std::string kPsk = "http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords";
const std::string kXsi = "http://www.w3.org/2001/XMLSchema-instance";
const std::string kXsd = "http://www.w3.org/2001/XMLSchema";
const std::string kDev = "http://schemas.example.com/printing/simdevice/v1";
const std::string kAcme = "http://schemas.example.com/acme/filters/v1";

[[nodiscard]] Element Sample() {
    Element root;
    root.children.push_back(ValueElement(Tag::ParameterInit, Keyword("PageCopies"), IntegerValue(2)));
    Element& feature = root.children.emplace_back();
    feature.tag = Tag::Feature;
    feature.name = QName{kAcme, "PageStamp"};
    Element& option = feature.children.emplace_back();
    option.tag = Tag::Option;
    option.children.push_back(
        ValueElement(Tag::ScoredProperty, Keyword("Side"), NameValue(QName{kDev, "Front"})));
    return root;
}

[[nodiscard]] std::string Write(const Element& root, const Switches& switches,
                                const std::vector<PrefixBinding>& input = {}) {
    return Serialize(root, switches, {{kDev}, input});
}

[[nodiscard]] Switches With(PrefixStyle prefixes) {
    Switches switches;
    switches.prefixes = prefixes;
    return switches;
}

TEST(Serializer, DeclaresEverythingOnTheRootInTheOrderOfThePlatform) {
    EXPECT_EQ(
        kDeclaration + std::string("<psf:PrintTicket xmlns:psf=\"") + kPsf + "\" xmlns:xsi=\"" + kXsi +
            "\" xmlns:xsd=\"" + kXsd + "\" version=\"1\" xmlns:ns0000=\"" + kDev + "\" xmlns:ns0001=\"" +
            kAcme + "\" xmlns:psk=\"" + kPsk + "\">" +
            "<psf:ParameterInit name=\"psk:PageCopies\"><psf:Value xsi:type=\"xsd:integer\">2</psf:Value>"
            "</psf:ParameterInit><psf:Feature name=\"ns0001:PageStamp\"><psf:Option>"
            "<psf:ScoredProperty name=\"psk:Side\"><psf:Value xsi:type=\"xsd:QName\">ns0000:Front"
            "</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature></psf:PrintTicket>",
        Write(Sample(), {}));
}

TEST(Serializer, MangledPrefixesAreNumbered) {
    EXPECT_EQ(kDeclaration + std::string("<ns0001:PrintTicket xmlns:ns0001=\"") + kPsf +
                  "\" xmlns:ns0003=\"" + kXsi + "\" xmlns:ns0004=\"" + kXsd +
                  "\" version=\"1\" xmlns:ns0005=\"" + kDev + "\" xmlns:ns0002=\"" + kPsk + "\"/>",
              Write(Element(), With(PrefixStyle::Mangled)));
}

TEST(Serializer, DefaultNamespaceHasNoPrefix) {
    EXPECT_EQ(kDeclaration + std::string("<PrintTicket xmlns=\"") + kPsf + "\" xmlns:xsi=\"" + kXsi +
                  "\" xmlns:xsd=\"" + kXsd + "\" version=\"1\" xmlns:ns0000=\"" + kDev + "\" xmlns:psk=\"" +
                  kPsk + "\"/>",
              Write(Element(), With(PrefixStyle::DefaultNamespace)));
}

TEST(Serializer, NamesOfTheFrameworkNeedAPrefixBesideTheDefaultNamespace) {
    Element root;
    root.children.push_back(ValueElement(Tag::Property, FrameworkName("PageX"), StringValue("")));
    EXPECT_EQ(kDeclaration + std::string("<PrintTicket xmlns=\"") + kPsf + "\" xmlns:psf=\"" + kPsf +
                  "\" xmlns:xsi=\"" + kXsi + "\" xmlns:xsd=\"" + kXsd + "\" version=\"1\" xmlns:ns0000=\"" +
                  kDev + "\" xmlns:psk=\"" + kPsk +
                  "\"><Property name=\"psf:PageX\"><Value xsi:type=\"xsd:string\"/></Property></PrintTicket>",
              Write(root, With(PrefixStyle::DefaultNamespace)));
}

TEST(Serializer, LocalDeclarationsStandOnEachElementThatNeedsThem) {
    Element root;
    root.children.push_back(ValueElement(Tag::ParameterInit, Keyword("PageCopies"), IntegerValue(2)));
    EXPECT_EQ(kDeclaration + std::string("<psf:PrintTicket xmlns:psf=\"") + kPsf +
                  "\" version=\"1\"><psf:ParameterInit xmlns:psf=\"" + kPsf + "\" xmlns:psk=\"" + kPsk +
                  "\" name=\"psk:PageCopies\"><psf:Value xmlns:psf=\"" + kPsf + "\" xmlns:xsd=\"" + kXsd +
                  "\" xmlns:xsi=\"" + kXsi +
                  "\" xsi:type=\"xsd:integer\">2</psf:Value></psf:ParameterInit></psf:PrintTicket>",
              Write(root, With(PrefixStyle::Local)));
}

TEST(Serializer, CollidingPrefixesAreTheInputsOnOtherNamespaces) {
    const std::string text =
        Write(Element(), With(PrefixStyle::Collide), {{"psf", kPsf}, {"psk", kPsk}, {"krk", kAcme}});
    EXPECT_EQ(kDeclaration + std::string("<psk:PrintTicket xmlns:psk=\"") + kPsf + "\" xmlns:psf=\"" + kXsi +
                  "\" xmlns:krk=\"" + kXsd + "\" version=\"1\" xmlns:ns0000=\"" + kDev +
                  "\" xmlns:ns0001=\"" + kPsk + "\"/>",
              text);
}

TEST(Serializer, CollidingPrefixesNeverRepeat) {
    const std::string text =
        Write(Element(), With(PrefixStyle::Collide), {{"ns0000", kPsf}, {"ns0001", kPsk}});
    EXPECT_EQ(kDeclaration + std::string("<ns0001:PrintTicket xmlns:ns0001=\"") + kPsf +
                  "\" xmlns:ns0000=\"" + kXsi + "\" xmlns:ns0002=\"" + kXsd +
                  "\" version=\"1\" xmlns:ns0003=\"" + kDev + "\" xmlns:ns0004=\"" + kPsk + "\"/>",
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
    Switches switches;
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
    Switches switches;
    switches.layout = Layout::Comments;
    const std::string text = Write(root, switches);
    EXPECT_EQ(std::string(kDeclaration).size(),
              text.find("<?devkit written by the simulated provider?>\n<psf:PrintTicket"));
    EXPECT_NE(std::string::npos, text.find("\n <!-- ParameterInit --><?devkit?>\n <psf:ParameterInit"));
}

TEST(Serializer, EncodingsBeginWithTheirMarks) {
    Switches switches;
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
