#include "devkit/printschema/reader.h"

#include <gtest/gtest.h>

#include "devkit/printschema/names.h"
#include "thrown.h"
#include "tickets.h"

namespace devkit::printschema {
namespace {

using namespace tests;

using Lines = std::vector<std::string>;

[[nodiscard]] std::string Refusal(std::string_view bytes, Tag root = Tag::PrintTicket) {
    return ::tests::MessageOf<FormatError>([&] { static_cast<void>(ReadFramework(bytes, root)); });
}

// The refusal of a ticket with these children.
[[nodiscard]] std::string Refused(std::string_view children) { return Refusal(Ticket(children)); }

[[nodiscard]] std::string Nested(const std::string& open, const std::string& close, int depth) {
    std::string text;
    for (int level = 0; level < depth; ++level) text += open;
    for (int level = 0; level < depth; ++level) text += close;
    return text;
}

TEST(FrameworkReader, ReadsATicketWhateverItsPrefixes) {
    const Lines expected{"psk:PageOrientation[psk:Landscape]"};
    EXPECT_EQ(
        expected,
        Summarize(Ticket(
            R"(<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Landscape"/></psf:Feature>)")));
    EXPECT_EQ(
        expected,
        Summarize(
            R"(<PrintTicket xmlns="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
 version="1" xmlns:k="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords">
 <Feature name="k:PageOrientation"><Option name="k:Landscape"/></Feature></PrintTicket>)"));
}

TEST(FrameworkReader, LocalDeclarationsCountWhereTheyStand) {
    EXPECT_EQ(
        (Lines{"psk:PageOrientation[acme:Portrait]"}),
        Summarize(
            R"(<f:PrintTicket xmlns:f="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
 version="1"><f:Feature name="k:PageOrientation"
 xmlns:k="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"><f:Option name="k:Portrait"
 xmlns:k="http://schemas.example.com/acme/filters/v1"/></f:Feature></f:PrintTicket>)"));
}

TEST(FrameworkReader, NotesEachPrefixOnceWithItsFirstNamespace) {
    const FrameworkDocument document = ReadFramework(
        R"(<PrintTicket xmlns="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
 version="1" xmlns:k="urn:a"><Feature name="k:X" xmlns:k="urn:b" xmlns:m="urn:c"/></PrintTicket>)",
        Tag::PrintTicket);
    ASSERT_EQ(2U, document.prefixes.size());
    EXPECT_EQ("k=urn:a", document.prefixes[0].prefix + "=" + document.prefixes[0].uri);
    EXPECT_EQ("m=urn:c", document.prefixes[1].prefix + "=" + document.prefixes[1].uri);
}

TEST(FrameworkReader, RefusesAnotherRoot) {
    const char* const expected = "The root element is not PrintTicket";
    EXPECT_EQ(expected, Refusal("<PrintTicket version=\"1\"/>"));
    EXPECT_EQ(expected, Refusal(R"(<psf:PrintCapabilities version="1"
 xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"/>)"));
    EXPECT_EQ(expected, Refusal(R"(<psf:PrintTicket version="1"
 xmlns:psf="https://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"/>)"));
    EXPECT_EQ("The root element is not PrintCapabilities", Refusal(Ticket(""), Tag::PrintCapabilities));
}

TEST(FrameworkReader, VersionMustBeOne) {
    const std::string before =
        R"(<psf:PrintTicket xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework")";
    EXPECT_EQ("The version is missing", Refusal(before + "/>"));
    EXPECT_EQ("The version is \"2\" and not 1", Refusal(before + " version=\"2\"/>"));
    EXPECT_EQ("The version is \"\" and not 1", Refusal(before + " version=\"\"/>"));
    EXPECT_EQ("The version is \"one\" and not 1", Refusal(before + " version=\"one\"/>"));
    EXPECT_EQ("", Refusal(before + " version=\"1.0\"/>"));
}

TEST(FrameworkReader, RefusesMisplacedElements) {
    EXPECT_EQ("The element \"Option\" is not allowed inside PrintTicket",
              Refused(R"(<psf:Option name="psk:X"/>)"));
    EXPECT_EQ("The element \"ParameterDef\" is not allowed inside PrintTicket",
              Refused(R"(<psf:ParameterDef name="psk:X"/>)"));
    EXPECT_EQ("The element \"ScoredProperty\" is not allowed inside Feature",
              Refused(R"(<psf:Feature name="psk:X"><psf:ScoredProperty name="psk:Y"/></psf:Feature>)"));
    EXPECT_EQ("The element \"Knob\" is not allowed inside PrintTicket",
              Refused(R"(<psf:Knob name="psk:X"/>)"));
    EXPECT_EQ("The element \"Feature\" is not allowed inside PrintTicket",
              Refused(R"(<Feature name="psk:X"/>)"));
    EXPECT_EQ(
        "A Value holds an element",
        Refused(
            R"(<psf:ParameterInit name="psk:X"><psf:Value><psf:Value/></psf:Value></psf:ParameterInit>)"));
}

TEST(FrameworkReader, SkipsElementsOfOtherNamespaces) {
    EXPECT_EQ(
        (Lines{"psk:X"}),
        Summarize(Ticket(
            R"(<acme:Note>any <b/> text</acme:Note><psf:Feature name="psk:X"><acme:Y/></psf:Feature>)")));
}

TEST(FrameworkReader, RefusesMissingAndUnboundNames) {
    EXPECT_EQ("A Feature has no name", Refused("<psf:Feature/>"));
    EXPECT_EQ("A ParameterInit has no name", Refused("<psf:ParameterInit/>"));
    const char* const unbound = "has no prefix, or one that is not declared";
    EXPECT_EQ(std::string("The name \"PageX\" ") + unbound, Refused(R"(<psf:Feature name="PageX"/>)"));
    EXPECT_EQ(std::string("The name \"no:PageX\" ") + unbound, Refused(R"(<psf:Feature name="no:PageX"/>)"));
    EXPECT_EQ(std::string("The name \":PageX\" ") + unbound, Refused(R"(<psf:Feature name=":PageX"/>)"));
    EXPECT_EQ(std::string("The name \"psk:\" ") + unbound, Refused(R"(<psf:Feature name="psk:"/>)"));
    EXPECT_EQ(std::string("The name \"psk:a:b\" ") + unbound, Refused(R"(<psf:Feature name="psk:a:b"/>)"));
}

TEST(FrameworkReader, OptionsNeedNoName) {
    EXPECT_EQ("", Refused(R"(<psf:Feature name="psk:X"><psf:Option/></psf:Feature>)"));
}

TEST(FrameworkReader, RefusesPrivateAttributes) {
    EXPECT_EQ("The attribute \"colour\" is not allowed on Feature",
              Refused(R"(<psf:Feature name="psk:X" colour="red"/>)"));
    EXPECT_EQ("The attribute \"colour\" is not allowed on Feature",
              Refused(R"(<psf:Feature name="psk:X" acme:colour="red"/>)"));
    EXPECT_EQ("The attribute \"constrained\" is not allowed on Feature",
              Refused(R"(<psf:Feature name="psk:X" constrained="psk:None"/>)"));
    EXPECT_EQ("", Refused(R"(<psf:Feature name="psk:X" propagate="a" xml:space="preserve"/>)"));
}

TEST(FrameworkReader, RefusesTextOutsideValue) {
    EXPECT_EQ("Text is not allowed inside PrintTicket", Refused("text"));
    EXPECT_EQ("Text is not allowed inside Feature",
              Refused(R"(<psf:Feature name="psk:X"><![CDATA[x]]></psf:Feature>)"));
    EXPECT_EQ("", Refused(" \r\n\t<!-- text --><?text?>"));
}

TEST(FrameworkReader, ValuesHaveTypes) {
    const Element root =
        ReadFramework(
            Ticket(R"(<psf:Property name="psk:JobA"><psf:Value>a<!-- - -->b</psf:Value></psf:Property>
<psf:Property name="psk:JobB"><psf:Value xsi:type="xsd:QName">psk:C</psf:Value></psf:Property>
<psf:Property name="psk:JobC"><psf:Value xsi:type="xsd:string">psk:C</psf:Value></psf:Property>
<psf:Property name="psk:JobD"><psf:Value xsi:type="xsd:string">no:C</psf:Value></psf:Property>
<psf:Property name="psk:JobE"><psf:Value xsi:type="xsd:QName"/></psf:Property>)"),
            Tag::PrintTicket)
            .root;
    const auto value = [&](const char* name) { return *root.FindProperty(Keyword(name)); };
    EXPECT_EQ(StringValue("ab"), value("JobA"));
    EXPECT_EQ(NameValue(Keyword("C")), value("JobB"));
    EXPECT_EQ(SchemaType("string"), value("JobC").type);
    EXPECT_EQ(Keyword("C"), value("JobC").name);
    EXPECT_EQ(std::nullopt, value("JobD").name);
    EXPECT_EQ("", value("JobE").text);
}

TEST(FrameworkReader, RefusesValuesThatNameNothing) {
    EXPECT_EQ(
        "The prefix of the value \"no:C\" is not declared",
        Refused(
            R"(<psf:Property name="psk:JobB"><psf:Value xsi:type="xsd:QName">no:C</psf:Value></psf:Property>)"));
    EXPECT_EQ(
        "The name \"no:x\" has no prefix, or one that is not declared",
        Refused(R"(<psf:Property name="psk:JobB"><psf:Value xsi:type="no:x">1</psf:Value></psf:Property>)"));
}

TEST(FrameworkReader, RefusesMoreThanOneValue) {
    EXPECT_EQ("The ParameterInit JobP has more than one value",
              Refused(R"(<psf:ParameterInit name="psk:JobP"><psf:Value/><psf:Value/></psf:ParameterInit>)"));
    EXPECT_EQ("The ScoredProperty S has more than one value",
              Refused(R"(<psf:Feature name="psk:X"><psf:Option><psf:ScoredProperty name="psk:S"><psf:Value/>
<psf:ParameterRef name="psk:JobP"/></psf:ScoredProperty></psf:Option></psf:Feature>)"));
    EXPECT_EQ("", Refused(R"(<psf:Property name="psk:JobP"><psf:Value/><psf:Value/></psf:Property>)"));
}

TEST(FrameworkReader, TenElementsOfAKindMayLieInsideEachOther) {
    const std::string open = R"(<psf:Property name="psk:JobP">)";
    EXPECT_EQ("", Refused(Nested(open, "</psf:Property>", 10)));
    EXPECT_EQ("More than ten Property elements inside each other",
              Refused(Nested(open, "</psf:Property>", 11)));
}

TEST(FrameworkReader, RefusesANameTwiceAmongSiblings) {
    const std::string feature = R"(<psf:Feature name="psk:PageX"/>)";
    EXPECT_EQ("Duplicate definitions exist for feature or parameter PageX", Refused(feature + feature));
    const std::string parameter = R"(<psf:ParameterInit name="psk:PageX"/>)";
    EXPECT_EQ("Duplicate definitions exist for feature or parameter PageX", Refused(parameter + parameter));
    const std::string property = R"(<psf:Property name="psk:PageX"/>)";
    EXPECT_EQ("Duplicate definitions exist for property PageX", Refused(property + property));
    EXPECT_EQ("", Refused(feature + parameter + property));
    EXPECT_EQ("", Refused(R"(<psf:Feature name="psk:PageX"/><psf:Feature name="acme:PageX"/>)"));
    const std::string option = R"(<psf:Option name="psk:O"/>)";
    EXPECT_EQ("", Refused(R"(<psf:Feature name="psk:PageX">)" + option + option + "</psf:Feature>"));
}

TEST(FrameworkReader, CanKeepTheFirstOfDuplicates) {
    const std::string bytes = Ticket(R"(<psf:Feature name="psk:PageX"><psf:Option name="psk:A"/></psf:Feature>
<psf:Feature name="psk:PageX"><psf:Option name="psk:B"/></psf:Feature>)");
    const FrameworkDocument ticket = ReadFramework(bytes, Tag::PrintTicket, Duplicates::KeepFirst);
    EXPECT_EQ((Lines{"psk:PageX[psk:A]"}), Summarize(ticket.root));
    EXPECT_TRUE(ticket.hadDuplicates);
    EXPECT_FALSE(ReadFramework(Ticket(""), Tag::PrintTicket, Duplicates::KeepFirst).hadDuplicates);
}

TEST(FrameworkReader, CanKeepTheFirstOfAValueAndAParameterRef) {
    const auto kept = [](const std::string& values) {
        const Element root =
            ReadFramework(Ticket(R"(<psf:Feature name="psk:PageX"><psf:Option name="psk:A">)"
                                 R"(<psf:ScoredProperty name="psk:W">)" +
                                 values + "</psf:ScoredProperty></psf:Option></psf:Feature>"),
                          Tag::PrintTicket, Duplicates::Refuse, MixedValues::KeepFirst)
                .root;
        const Element& property = root.children.at(0).children.at(0).children.at(0);
        EXPECT_EQ(1u, property.children.size());
        return property.children.at(0).tag;
    };
    const std::string value = "<psf:Value>1</psf:Value>";
    const std::string reference = R"(<psf:ParameterRef name="psk:PageXW"/>)";
    EXPECT_EQ(Tag::ParameterRef, kept(reference + value));
    EXPECT_EQ(Tag::Value, kept(value + reference));
    EXPECT_THROW(static_cast<void>(kept(value + value)), FormatError);
    EXPECT_THROW(static_cast<void>(kept(reference + reference)), FormatError);
    EXPECT_THROW(static_cast<void>(kept(value + reference + value)), FormatError);
}

}  // namespace
}  // namespace devkit::printschema
