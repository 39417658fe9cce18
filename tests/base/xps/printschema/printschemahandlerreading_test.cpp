#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "answers.h"
#include "base/xps/printschema/printschemahandler.h"
#include "handlertest.h"
#include "ticketmarkup.h"

namespace {

using namespace base::xps::printschema;
using base::xml::LoadDomFromString;
using platform::Bstr;
using platform::ComPtr;
using tests::Dom;
using tests::HandlerTest;
using tests::kKeywords;
using tests::kNoInteger;
using tests::kNotFound;
using tests::kPrivate;
using tests::Node;
using tests::Ticket;

const Qname kJobInputBin = {kKeywords, L"JobInputBin"};
const Qname kFeedDirection = {kKeywords, L"FeedDirection"};

// The property psk:P with a value.
std::wstring PropertyOf(std::wstring_view value) {
    return tests::Property(L"psk:P", L"<psf:Value>" + std::wstring(value) + L"</psf:Value>");
}

// What an operation with one text as its result answers: the text, or its code.
template <typename Operation>
std::wstring TextOf(Operation&& operation) {
    Bstr text;
    const HRESULT hr = operation(text.Put());
    if (hr == S_OK) return std::wstring(text.View());
    EXPECT_EQ(nullptr, text.Get());
    wchar_t code[11] = {};
    swprintf(code, 11, L"0x%08lX", static_cast<unsigned long>(hr));
    return code;
}

std::wstring ValueOf(const PrintSchemaHandler& handler, std::wstring_view query) {
    return TextOf([&](BSTR* pText) { return handler.GetValue(query, pText); });
}

class SchemaReadingTest : public HandlerTest {
  protected:
    const PrintTicketHandler& Open(std::wstring_view body, std::wstring_view declarations = {}) {
        m_pTicket = LoadDomFromString(Ticket(body, declarations));
        m_handler.emplace(m_pTicket.Get());
        return *m_handler;
    }

    // What GetValue reads of the scored property psk:P of a ticket with that content.
    std::wstring ScoredValueIn(std::wstring_view body, std::wstring_view declarations = {}) {
        const PrintTicketHandler& handler = Open(body, declarations);
        return ValueOf(handler, handler.ScoredPropertyQuery({kKeywords, L"P"}));
    }
    HRESULT ReadIntegerOf(std::wstring_view text, std::int32_t& value) {
        const PrintTicketHandler& handler = Open(PropertyOf(text));
        return handler.ReadInteger(handler.PropertyQuery({kKeywords, L"P"}), &value);
    }

  private:
    Dom m_pTicket;
    std::optional<PrintTicketHandler> m_handler;
};

// The local name in the property psk:P anywhere in the document, or the code.
std::wstring LocalNameIn(const PrintSchemaHandler& handler, PropertyKind kind) {
    Node pRoot;
    EXPECT_EQ(S_OK, handler.SelectSingleNode(L"/*", pRoot.Put()));
    return TextOf([&](BSTR* pText) {
        return handler.ReadLocalName(pRoot.Get(), kind, {kKeywords, L"P"}, pText);
    });
}

std::wstring OptionOf(const PrintSchemaHandler& handler, const Qname& feature = kJobInputBin,
                      SchemaNamespace optionSpace = kKeywords) {
    return TextOf([&](BSTR* pText) { return handler.GetOptionName(feature, optionSpace, pText); });
}

TEST_P(SchemaReadingTest, QueriesNameElementsWithTheDocumentsPrefixes) {
    const PrintTicketHandler& handler = Open(L"");
    const Qname bound = {kPrivate, L"MinWidth"};
    EXPECT_EQ(L"//psf:Feature[@name = \"psk:JobInputBin\"]", handler.FeatureQuery(kJobInputBin));
    EXPECT_EQ(L"//psf:Feature[@name = \"psk:JobInputBin\"]/psf:Option", handler.OptionQuery(kJobInputBin));
    EXPECT_EQ(L"//psf:Property[@name = \"krk:MinWidth\"]", handler.PropertyQuery(bound));
    EXPECT_EQ(L"//psf:ScoredProperty[@name = \"psk:FeedDirection\"]",
              handler.ScoredPropertyQuery(kFeedDirection));
}

TEST_P(SchemaReadingTest, ADoubleQuoteInANameIsAPieceOfItsOwnInAQuery) {
    const PrintTicketHandler& handler = Open(L"");
    EXPECT_EQ(L"//psf:Feature[@name = \"psk:it's\"]", handler.FeatureQuery({kKeywords, L"it's"}));
    EXPECT_EQ(L"//psf:Feature[@name = concat(\"psk:a\", '\"', \"b'c\")]",
              handler.FeatureQuery({kKeywords, L"a\"b'c"}));
    EXPECT_EQ(L"//psf:Property[@name = concat(\"psk:\", '\"', \"\")]",
              handler.PropertyQuery({kKeywords, L"\""}));
}

TEST_P(SchemaReadingTest, SelectSingleNodeTakesTheFirstMatchInDocumentOrder) {
    const PrintTicketHandler& handler = Open(L"<psf:Feature name=\"a\"/><psf:Feature name=\"b\"/>");
    Node pNode;
    ASSERT_EQ(S_OK, handler.SelectSingleNode(L"//psf:Feature", pNode.Put()));
    EXPECT_EQ(L"a", TextOf([&](BSTR* pText) { return handler.GetAttribute(pNode.Get(), L"name", pText); }));
}

TEST_P(SchemaReadingTest, SelectSingleNodeTellsWhyThereIsNoNode) {
    const PrintTicketHandler& handler = Open(L"");
    Node pNode;
    EXPECT_EQ(E_POINTER, handler.SelectSingleNode(L"//psf:Feature", nullptr));
    EXPECT_EQ(E_INVALIDARG, handler.SelectSingleNode(L"", pNode.Put()));
    EXPECT_EQ(S_FALSE, handler.SelectSingleNode(L"//psf:Feature", pNode.Put()));
    EXPECT_FALSE(pNode);
    EXPECT_TRUE(FAILED(handler.SelectSingleNode(L"//undeclared:Feature", pNode.Put())));
    EXPECT_FALSE(pNode);
    EXPECT_TRUE(FAILED(handler.SelectSingleNode(L"//[", pNode.Put())));
    EXPECT_FALSE(pNode);
}

TEST_P(SchemaReadingTest, SelectNodesFindsEveryElementOfTheName) {
    const PrintTicketHandler& handler =
        Open(L"<psf:Feature name=\"a\"><psf:Feature name=\"b\"/></psf:Feature><other:Feature/>",
             L" xmlns:other=\"urn:other\"");
    ComPtr<IXMLDOMNodeList> pList;
    long length = -1;
    ASSERT_EQ(S_OK, handler.SelectNodes(L"Feature", pList.Put()));
    EXPECT_EQ(S_OK, pList->get_length(&length));
    EXPECT_EQ(2, length);
    ASSERT_EQ(S_OK, handler.SelectNodes(L"Absent", pList.Put()));
    EXPECT_EQ(S_OK, pList->get_length(&length));
    EXPECT_EQ(0, length);
    EXPECT_EQ(E_FAIL, handler.SelectNodes(L"", pList.Put()));
    EXPECT_FALSE(pList);
    EXPECT_EQ(E_POINTER, handler.SelectNodes(L"Feature", nullptr));
}

TEST_P(SchemaReadingTest, GetAttributeTellsAnEmptyOneFromNone) {
    const PrintTicketHandler& handler = Open(L"<psf:Feature name=\"\"/>text");
    Node pFeature;
    ASSERT_EQ(S_OK, handler.SelectSingleNode(L"//psf:Feature", pFeature.Put()));
    const auto attribute = [&](IXMLDOMNode* pNode, const wchar_t* name) {
        return TextOf([&](BSTR* pText) { return handler.GetAttribute(pNode, name, pText); });
    };
    EXPECT_EQ(L"", attribute(pFeature.Get(), L"name"));
    EXPECT_EQ(L"0x00000001", attribute(pFeature.Get(), L"type"));
    Node pText;
    ASSERT_EQ(S_OK, handler.SelectSingleNode(L"//text()", pText.Put()));
    EXPECT_EQ(L"0x00000001", attribute(pText.Get(), L"name"));
    EXPECT_EQ(L"0x80004003", attribute(nullptr, L"name"));
    EXPECT_EQ(E_POINTER, handler.GetAttribute(pFeature.Get(), L"name", nullptr));
}

TEST_P(SchemaReadingTest, GetAttributeWithoutANodeLeavesNoText) {
    const PrintTicketHandler& handler = Open(L"");
    wchar_t old[] = L"old";
    BSTR text = old;
    EXPECT_EQ(E_POINTER, handler.GetAttribute(nullptr, L"name", &text));
    EXPECT_EQ(nullptr, text);
}

TEST_P(SchemaReadingTest, GetValueReadsALiteralValue) {
    const PrintTicketHandler& handler = Open(
        L"<psf:Property name=\"psk:P\"><psf:Value>first</psf:Value><psf:Value>second</psf:Value>"
        L"</psf:Property><psf:Property name=\"psk:Empty\"><psf:Value/></psf:Property>");
    EXPECT_EQ(L"first", ValueOf(handler, handler.PropertyQuery({kKeywords, L"P"})));
    EXPECT_EQ(L"", ValueOf(handler, handler.PropertyQuery({kKeywords, L"Empty"})));
}

TEST_P(SchemaReadingTest, GetValueFollowsAParameterReference) {
    EXPECT_EQ(L"first",
              ScoredValueIn(
                  L"<psf:ParameterInit/><psf:ParameterInit name=\"psk:B\"><psf:Value>b</psf:Value>"
                  L"</psf:ParameterInit><psf:ScoredProperty name=\"psk:P\"><psf:ParameterRef name=\"psk:A\"/>"
                  L"</psf:ScoredProperty><psf:ParameterInit name=\"psk:A\"><psf:Value>first</psf:Value>"
                  L"</psf:ParameterInit><psf:ParameterInit name=\"psk:A\"><psf:Value>second</psf:Value>"
                  L"</psf:ParameterInit>"));
}

TEST_P(SchemaReadingTest, ALiteralValueWinsOverAParameterReference) {
    EXPECT_EQ(
        L"literal",
        ScoredValueIn(L"<psf:ScoredProperty name=\"psk:P\"><psf:ParameterRef name=\"psk:A\"/>"
                      L"<psf:Value>literal</psf:Value></psf:ScoredProperty>"
                      L"<psf:ParameterInit name=\"psk:A\"><psf:Value>a</psf:Value></psf:ParameterInit>"));
}

TEST_P(SchemaReadingTest, AValueIsAnElementOfTheFrameworkUnderAnyPrefix) {
    const std::wstring none =
        L"<Value>1</Value><x:Value xmlns:x=\"urn:x\">2</x:Value><?Value 3?><!--Value-->"
        L"Value<psf:value>4</psf:value><psf:P><psf:Value>5</psf:Value></psf:P>";
    const std::wstring other =
        L"<f:Value xmlns:f=\"" + std::wstring(tests::kFrameworkUri) + L"\">6</f:Value>";
    const std::wstring query = L"//psf:Property[@name = \"psk:P\"]";
    EXPECT_EQ(L"0x00000001", ValueOf(Open(tests::Property(L"psk:P", none)), query));
    EXPECT_EQ(L"6", ValueOf(Open(tests::Property(L"psk:P", none + other)), query));
    EXPECT_EQ(L"7",
              ValueOf(Open(tests::Property(L"psk:P", none + L"<psf:Value>7</psf:Value>" + other)), query));
}

TEST_P(SchemaReadingTest, AParameterIsOfTheReferencesExactName) {
    EXPECT_EQ(
        L"0x00000001",
        ScoredValueIn(
            L"<psf:ScoredProperty name=\"psk:P\"><psf:ParameterRef name=\"psk:A\"/></psf:ScoredProperty>"
            L"<psf:ParameterInit name=\"k:A\"><psf:Value>other prefix</psf:Value></psf:ParameterInit>"
            L"<psf:ParameterInit name=\"psk:a\"><psf:Value>other case</psf:Value></psf:ParameterInit>",
            L" xmlns:k=\"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords\""));
}

TEST_P(SchemaReadingTest, AParametersNameMayHoldQuotes) {
    EXPECT_EQ(
        L"own",
        ScoredValueIn(
            L"<psf:ScoredProperty name=\"psk:P\"><psf:ParameterRef name='psk:\"] | //*[\"'/>"
            L"</psf:ScoredProperty>"
            L"<psf:ParameterInit name=\"psk:other\"><psf:Value>other</psf:Value></psf:ParameterInit>"
            L"<psf:ParameterInit name='psk:\"] | //*[\"'><psf:Value>own</psf:Value></psf:ParameterInit>"));
}

TEST_P(SchemaReadingTest, GetValueTellsWhatIsMissing) {
    const PrintTicketHandler& handler = Open(
        L"<psf:Property name=\"psk:Bare\"/>"
        L"<psf:Property name=\"psk:Nameless\"><psf:ParameterRef/></psf:Property>"
        L"<psf:Property name=\"psk:Dangling\"><psf:ParameterRef name=\"psk:None\"/></psf:Property>"
        L"<psf:Property name=\"psk:Valueless\"><psf:ParameterRef name=\"psk:Init\"/></psf:Property>"
        L"<psf:Property "
        L"name=\"psk:Deep\"><psf:Property><psf:Value>1</psf:Value></psf:Property></psf:Property>"
        L"<psf:ParameterInit name=\"psk:Init\"/>");
    for (const wchar_t* name : {L"Absent", L"Bare", L"Nameless", L"Dangling", L"Valueless", L"Deep"}) {
        const std::wstring query = handler.PropertyQuery({kKeywords, name});
        EXPECT_EQ(L"0x00000001", ValueOf(handler, query)) << name;
        EXPECT_EQ(L"0x80070490", TextOf([&](BSTR* pText) { return handler.ReadValue(query, pText); }))
            << name;
    }
    EXPECT_EQ(L"0x80070057", ValueOf(handler, L""));
    EXPECT_EQ(E_POINTER, handler.GetValue(L"//psf:Value", nullptr));
    EXPECT_EQ(E_POINTER, handler.ReadValue(L"//psf:Value", nullptr));
    Bstr text;
    EXPECT_TRUE(FAILED(handler.GetValue(L"//undeclared:Value", text.Put())));
}

TEST_P(SchemaReadingTest, ReadIntegerTakesEvery32BitNumberInTheFormsOfASchemaInteger) {
    const std::pair<const wchar_t*, std::int32_t> numbers[] = {
        {L"0", 0},
        {L"210000", 210000},
        {L"-300", -300},
        {L"2147483647", 2147483647},
        {L"-2147483648", -2147483647 - 1},
        {L"+12", 12},
        {L"-0", 0},
        {L"00000000000000012", 12},
        {L"\n  -210000\t", -210000},
        {L" \t\r\n5 ", 5},
    };
    for (const auto& [text, number] : numbers) {
        std::int32_t value = 7;
        EXPECT_EQ(S_OK, ReadIntegerOf(text, value)) << text;
        EXPECT_EQ(number, value) << text;
    }
}

TEST_P(SchemaReadingTest, AnythingThatIsNo32BitIntegerIsAFailingReadAndNever0) {
    const std::wstring digits(1000, L'9');
    for (const wchar_t* text : {L"",           L"  ",          L"+",
                                L"-",          L"+-5",         L"--5",
                                L"- 5",        L"1 2",         L"12px",
                                L"1.0",        L"1.5",         L"1e3",
                                L"0x10",       L"1,000",       L"psk:None",
                                L"\u0661",     L"\uFF11",      L"\u00A05",
                                L"2147483648", L"-2147483649", L"18446744073709551616",
                                digits.c_str()}) {
        std::int32_t value = 7;
        EXPECT_EQ(kNoInteger, ReadIntegerOf(text, value)) << text;
        EXPECT_EQ(7, value) << text;
    }
}

TEST_P(SchemaReadingTest, ReadIntegerDoesNotDependOnTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "German_Germany.1252");
    std::int32_t value = 7;
    EXPECT_EQ(kNoInteger, ReadIntegerOf(L"1.000", value));
    EXPECT_EQ(S_OK, ReadIntegerOf(L"1000", value));
    EXPECT_EQ(1000, value);
    std::setlocale(LC_ALL, before.c_str());
}

TEST_P(SchemaReadingTest, ReadIntegerTellsWhatIsMissing) {
    const PrintTicketHandler& handler = Open(L"");
    std::int32_t value = 7;
    EXPECT_EQ(kNotFound, handler.ReadInteger(L"//psf:Property", &value));
    EXPECT_EQ(E_INVALIDARG, handler.ReadInteger(L"", &value));
    EXPECT_EQ(E_POINTER, handler.ReadInteger(L"//psf:Property", nullptr));
    EXPECT_EQ(7, value);
}

TEST_P(SchemaReadingTest, ReadLocalNameTakesAnyPrefixAndABareWord) {
    for (const wchar_t* text :
         {L"psk:LongEdgeFirst", L"any:LongEdgeFirst", L"LongEdgeFirst", L"\n psk:LongEdgeFirst\t"}) {
        const PrintTicketHandler& handler = Open(PropertyOf(text));
        EXPECT_EQ(L"LongEdgeFirst", LocalNameIn(handler, PropertyKind::Plain));
        EXPECT_EQ(L"0x80070490", LocalNameIn(handler, PropertyKind::Scored));
    }
    const PrintTicketHandler& handler = Open(L"<psf:Property name=\"psk:P\"/>");
    EXPECT_EQ(L"0x80070490", LocalNameIn(handler, PropertyKind::Plain));
    EXPECT_EQ(L"b:c", LocalNameIn(Open(PropertyOf(L"a:b:c")), PropertyKind::Plain));
    EXPECT_EQ(L"", LocalNameIn(Open(PropertyOf(L"psk:")), PropertyKind::Plain));
    EXPECT_EQ(L"", LocalNameIn(Open(PropertyOf(L"")), PropertyKind::Plain));
}

TEST_P(SchemaReadingTest, ReadingBelowANodeRefusesNullPointers) {
    const PrintTicketHandler& handler = Open(L"<psf:Property name=\"psk:P\"/>");
    Node pRoot;
    ASSERT_EQ(S_OK, handler.SelectSingleNode(L"/*", pRoot.Put()));
    const Qname name = {kKeywords, L"P"};
    EXPECT_EQ(E_POINTER, handler.ReadLocalName(pRoot.Get(), PropertyKind::Plain, name, nullptr));
    BSTR text = nullptr;
    EXPECT_EQ(E_POINTER, handler.ReadLocalName(nullptr, PropertyKind::Plain, name, &text));
    std::int32_t value = 7;
    EXPECT_EQ(E_POINTER, handler.ReadInteger(nullptr, PropertyKind::Plain, name, &value));
    EXPECT_EQ(E_POINTER, handler.ReadInteger(pRoot.Get(), PropertyKind::Plain, name, nullptr));
}

TEST_P(SchemaReadingTest, APropertyIsReadInsideItsFeaturesOwnOption) {
    const PrintTicketHandler& handler = Open(
        L"<psf:ScoredProperty name=\"psk:Width\"><psf:Value>1</psf:Value></psf:ScoredProperty>"
        L"<psf:Feature name=\"psk:Other\"><psf:Option><psf:ScoredProperty name=\"psk:Width\">"
        L"<psf:Value>2</psf:Value></psf:ScoredProperty></psf:Option></psf:Feature>"
        L"<psf:Feature name=\"psk:Own\"><psf:ScoredProperty name=\"psk:Width\"><psf:Value>3</psf:Value>"
        L"</psf:ScoredProperty><psf:Option name=\"psk:One\"><psf:ScoredProperty name=\"psk:Width\">"
        L"<psf:Value>4</psf:Value>"
        L"</psf:ScoredProperty></psf:Option></psf:Feature>");
    const Qname width = {kKeywords, L"Width"};
    Bstr name;
    Node pOption;
    ASSERT_EQ(S_OK, handler.GetOption({kKeywords, L"Own"}, kKeywords, name.Put(), pOption.Put()));
    EXPECT_EQ(L"One", name.View());
    std::int32_t value = 0;
    EXPECT_EQ(S_OK, handler.ReadInteger(pOption.Get(), PropertyKind::Scored, width, &value));
    EXPECT_EQ(4, value);
    EXPECT_EQ(kNotFound, handler.ReadInteger(pOption.Get(), PropertyKind::Plain, width, &value));
}

TEST_P(SchemaReadingTest, GetOptionGivesBothOrNeither) {
    const PrintTicketHandler& handler =
        Open(L"<psf:Feature name=\"psk:JobInputBin\"><psf:Option/></psf:Feature>");
    Bstr name;
    Node pOption;
    EXPECT_EQ(E_INVALIDARG, handler.GetOption(kJobInputBin, kKeywords, name.Put(), pOption.Put()));
    EXPECT_TRUE(name.Empty());
    EXPECT_FALSE(pOption);
    EXPECT_EQ(E_POINTER, handler.GetOption(kJobInputBin, kKeywords, nullptr, pOption.Put()));
    EXPECT_EQ(E_POINTER, handler.GetOption(kJobInputBin, kKeywords, name.Put(), nullptr));
    EXPECT_EQ(kNotFound, handler.GetOption({kKeywords, L"No"}, kKeywords, name.Put(), pOption.Put()));
}

TEST_P(SchemaReadingTest, TheSelectedOptionIsTheFirstOptionsName) {
    const PrintTicketHandler& handler = Open(
        L"<psf:Feature name=\"psk:JobInputBin\"><psf:Feature name=\"psk:Sub\">"
        L"<psf:Option name=\"psk:Nested\"/></psf:Feature><psf:Option name=\"psk:Tray1\"/>"
        L"<psf:Option name=\"psk:Tray2\"/></psf:Feature>");
    EXPECT_EQ(L"Tray1", OptionOf(handler));
}

constexpr wchar_t kOption[] = L"<psf:Option name=\"psk:Tray1\"/>";
constexpr wchar_t kOptionName[] =
    L"<psf:ScoredProperty name=\"psk:OptionName\"><psf:Value>psk:Tray2</psf:Value></psf:ScoredProperty>";

std::wstring InputBin(std::wstring_view content) {
    std::wstring text = L"<psf:Feature name=\"psk:JobInputBin\">";
    return text.append(content).append(L"</psf:Feature>");
}

TEST_P(SchemaReadingTest, AnOptionGivenOnlyThroughOptionNameIsFoundWhenNoOptionPrecedesIt) {
    EXPECT_EQ(L"Tray2", OptionOf(Open(InputBin(kOptionName))));
    EXPECT_EQ(L"Tray2", OptionOf(Open(InputBin(std::wstring(kOptionName) + kOption))));
    EXPECT_EQ(L"Tray1", OptionOf(Open(InputBin(std::wstring(kOption) + kOptionName))));
}

TEST_P(SchemaReadingTest, TheOptionsNamespaceTellsThePrefixOfOptionNameAlone) {
    const std::wstring content =
        L"<psf:ScoredProperty name=\"krk:OptionName\"><psf:Value>krk:Tray2</psf:Value></psf:ScoredProperty>";
    EXPECT_EQ(L"Tray2", OptionOf(Open(InputBin(content)), kJobInputBin, kPrivate));
    EXPECT_EQ(L"0x80070490", OptionOf(Open(InputBin(content)), kJobInputBin, kKeywords));
    EXPECT_EQ(L"psk:Tray1", OptionOf(Open(InputBin(kOption)), kJobInputBin, kPrivate));
}

TEST_P(SchemaReadingTest, APrivateOptionIsFoundAmongTheKeywordsWithoutItsPrefix) {
    EXPECT_EQ(L"Own", OptionOf(Open(InputBin(L"<psf:Option name=\"krk:Own\"/>"))));
    EXPECT_EQ(L"Own", OptionOf(Open(InputBin(L"<psf:Option name=\"ns0000:Own\"/>"))));
    EXPECT_EQ(L"oem:Own", OptionOf(Open(InputBin(L"<psf:Option name=\"oem:Own\"/>"))));
}

TEST_P(SchemaReadingTest, AnOptionWithoutANameIsReadAsItsText) {
    EXPECT_EQ(L"Tray3",
              OptionOf(Open(InputBin(L"<psf:Option><psf:ScoredProperty><psf:Value>psk:Tray3</psf:Value>"
                                     L"</psf:ScoredProperty></psf:Option>"))));
    EXPECT_EQ(L"0x80070057", OptionOf(Open(InputBin(L"<psf:Option/>"))));
    EXPECT_EQ(L"0x80070057", OptionOf(Open(InputBin(L"<psf:Option name=\"\"/>"))));
}

TEST_P(SchemaReadingTest, AFeatureWithoutAnOptionIsNotFound) {
    EXPECT_EQ(L"0x80070490", OptionOf(Open(L"")));
    EXPECT_EQ(L"0x80070490", OptionOf(Open(InputBin(L""))));
    EXPECT_EQ(L"0x80070490",
              OptionOf(Open(L"<psf:Feature name=\"k:JobInputBin\"><psf:Option name=\"k:Tray1\"/>"
                            L"</psf:Feature>",
                            L" xmlns:k=\"" + std::wstring(tests::kKeywordsUri) + L"\"")));
}

TEST_P(SchemaReadingTest, AnOptionsArgumentsAreChecked) {
    const PrintTicketHandler& handler = Open(L"");
    EXPECT_EQ(E_POINTER, handler.GetOptionName(kJobInputBin, kKeywords, nullptr));
    EXPECT_EQ(L"0x80070057", OptionOf(handler, {kKeywords, L""}));
}

TEST_P(SchemaReadingTest, AQuoteInThePrivatePrefixIsNoPartOfTheQuery) {
    SetPrivatePrefix(L"x\"] | //psf:Option[\"1\" = \"1");
    const Qname feature = {kPrivate, L"JobPrintableMediaSize"};
    EXPECT_EQ(L"0x80070490", OptionOf(Open(InputBin(kOption)), feature, kPrivate));
    EXPECT_EQ(L"psk:Found",
              OptionOf(Open(L"<psf:Feature name='x\"] | //psf:Option[\"1\" = \"1:JobPrintableMediaSize'>"
                            L"<psf:Option name=\"psk:Found\"/></psf:Feature>"),
                       feature, kPrivate));
}

TEST_ON_EACH_DOM(SchemaReadingTest);

}  // namespace
