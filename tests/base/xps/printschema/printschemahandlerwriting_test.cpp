#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "base/xps/printschema/printschemahandler.h"
#include "domtext.h"
#include "handlertest.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace {

using namespace base::xps::printschema;
using base::xml::LoadDomFromString;
using tests::Dom;
using tests::DomText;
using tests::Element;
using tests::HandlerTest;
using tests::KeywordsUri;
using tests::Node;
using tests::Ticket;

constexpr SchemaNamespace Keywords = SchemaNamespace::Keywords;
constexpr SchemaNamespace Private = SchemaNamespace::Private;

const Qname Nameless = {Keywords, L""};

class SchemaWritingTest : public HandlerTest {
  protected:
    // The ticket with one element that is built and put into it.
    template <typename Build>
    std::wstring With(Build&& build) {
        Element pElement;
        EXPECT_EQ(build(m_handler, pElement.Put()), S_OK);
        EXPECT_EQ(m_handler.AppendToRoot(pElement.Get()), S_OK);
        return DomText(m_pTicket.Get());
    }

    // A failing build leaves its result null and the ticket as it was.
    template <typename Build>
    HRESULT CodeOf(Build&& build) {
        Element pElement;
        const HRESULT hr = build(m_handler, pElement.Put());
        EXPECT_FALSE(pElement);
        EXPECT_EQ(DomText(m_pTicket.Get()), Ticket(L""));
        return hr;
    }

    Dom m_pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler m_handler{m_pTicket.Get()};
};

using Handler = PrintSchemaHandler;

TEST_P(SchemaWritingTest, AnElementHasTheDocumentsFrameworkPrefix) {
    EXPECT_EQ(With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateElement(L"Feature", kFrameworkNamespace, pp);
              }),
              Ticket(L"<psf:Feature/>"));
}

TEST_P(SchemaWritingTest, AnAttributeIsReplacedByOneOfItsName) {
    EXPECT_EQ(With([](const Handler& handler, IXMLDOMElement** pp) {
                  const HRESULT hr = handler.CreateElement(L"Feature", kFrameworkNamespace, pp);
                  EXPECT_EQ(handler.SetAttribute(*pp, L"name", {}, L"first"), S_OK);
                  EXPECT_EQ(handler.SetAttribute(*pp, L"name", {}, L"a<b&\"c\""), S_OK);
                  return hr;
              }),
              Ticket(L"<psf:Feature name=\"a&lt;b&amp;&quot;c&quot;\"/>"));
}

TEST_P(SchemaWritingTest, APropertyIsNamedWithTheNamespacesPrefix) {
    EXPECT_EQ(With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateProperty({Private, L"MinWidth"}, pp);
              }),
              Ticket(L"<psf:Property name=\"krk:MinWidth\"/>"));
}

TEST_P(SchemaWritingTest, APropertysValueIsTyped) {
    EXPECT_EQ(
        With([](const Handler& handler, IXMLDOMElement** pp) {
            return handler.CreatePropertyWithValue({Keywords, L"Name"}, L"string", L"a < b", pp);
        }),
        Ticket(L"<psf:Property name=\"psk:Name\"><psf:Value xsi:type=\"xsd:string\">a &lt; b</psf:Value>"
               L"</psf:Property>"));
}

TEST_P(SchemaWritingTest, AnIntegerPropertyHoldsADecimalNumber) {
    EXPECT_EQ(With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateIntegerProperty({Private, L"MinWidth"},
                                                       std::numeric_limits<std::int32_t>::min(), pp);
              }),
              Ticket(L"<psf:Property name=\"krk:MinWidth\"><psf:Value xsi:type=\"xsd:integer\">-2147483648"
                     L"</psf:Value></psf:Property>"));
}

TEST_P(SchemaWritingTest, AScoredPropertyIsBuiltLikeAProperty) {
    EXPECT_EQ(With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateScoredProperty({Keywords, L"Scale"}, pp);
              }),
              Ticket(L"<psf:ScoredProperty name=\"psk:Scale\"/>"));
}

TEST_P(SchemaWritingTest, AScoredPropertysValueIsTyped) {
    EXPECT_EQ(With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateScoredPropertyWithValue({Keywords, L"FeedDirection"}, L"QName",
                                                               L"psk:LongEdgeFirst", pp);
              }),
              Ticket(L"<psf:ScoredProperty name=\"psk:FeedDirection\"><psf:Value xsi:type=\"xsd:QName\">"
                     L"psk:LongEdgeFirst</psf:Value></psf:ScoredProperty>"));
}

TEST_P(SchemaWritingTest, AnIntegerScoredPropertyHoldsADecimalNumber) {
    EXPECT_EQ(With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateIntegerScoredProperty({Keywords, L"MediaSizeWidth"}, 210000, pp);
              }),
              Ticket(L"<psf:ScoredProperty name=\"psk:MediaSizeWidth\"><psf:Value xsi:type=\"xsd:integer\">"
                     L"210000</psf:Value></psf:ScoredProperty>"));
}

TEST_P(SchemaWritingTest, AParameterIsAReferenceAndAnInitializerOfThePrivateNamespace) {
    Element pReference;
    Element pInitializer;
    ASSERT_EQ(m_handler.CreateParameter(L"PageScalingScale", L"integer", L"150", pReference.Put(),
                                        pInitializer.Put()),
              S_OK);
    ASSERT_EQ(m_handler.AppendToRoot(pReference.Get()), S_OK);
    ASSERT_EQ(m_handler.AppendToRoot(pInitializer.Get()), S_OK);
    EXPECT_EQ(DomText(m_pTicket.Get()),
              Ticket(L"<psf:ParameterRef name=\"krk:PageScalingScale\"/>"
                     L"<psf:ParameterInit name=\"krk:PageScalingScale\"><psf:Value xsi:type=\"xsd:integer\">"
                     L"150</psf:Value></psf:ParameterInit>"));
}

TEST_P(SchemaWritingTest, TheSizeOfTheWatermarkIsAKeywordParameter) {
    for (const std::wstring name : {L"PageWatermarkSizeWidth", L"PageWatermarkSizeHeight"}) {
        Element pReference;
        Element pInitializer;
        ASSERT_EQ(m_handler.CreateIntegerParameter(name, -7, pReference.Put(), pInitializer.Put()), S_OK);
        ASSERT_EQ(m_handler.AppendToRoot(pReference.Get()), S_OK);
        ASSERT_EQ(m_handler.AppendToRoot(pInitializer.Get()), S_OK);
    }
    EXPECT_EQ(DomText(m_pTicket.Get()),
              Ticket(L"<psf:ParameterRef name=\"psk:PageWatermarkSizeWidth\"/>"
                     L"<psf:ParameterInit name=\"psk:PageWatermarkSizeWidth\"><psf:Value "
                     L"xsi:type=\"xsd:integer\">-7</psf:Value></psf:ParameterInit>"
                     L"<psf:ParameterRef name=\"psk:PageWatermarkSizeHeight\"/>"
                     L"<psf:ParameterInit name=\"psk:PageWatermarkSizeHeight\"><psf:Value "
                     L"xsi:type=\"xsd:integer\">-7</psf:Value></psf:ParameterInit>"));
}

TEST_P(SchemaWritingTest, AParametersArgumentsAreChecked) {
    Element pFirst;
    Element pSecond;
    const auto create = [&](const wchar_t* name, const wchar_t* type, const wchar_t* text) {
        return m_handler.CreateParameter(name, type, text, pFirst.Put(), pSecond.Put());
    };
    EXPECT_EQ(create(L"", L"integer", L"1"), E_INVALIDARG);
    EXPECT_EQ(create(L"Name", L"", L"1"), E_INVALIDARG);
    EXPECT_EQ(create(L"Name", L"integer", L""), E_INVALIDARG);
    EXPECT_FALSE(pFirst);
    EXPECT_FALSE(pSecond);
    EXPECT_EQ(m_handler.CreateParameter(L"", L"", L"", nullptr, pSecond.Put()), E_POINTER);
    EXPECT_EQ(m_handler.CreateParameter(L"", L"", L"", pFirst.Put(), nullptr), E_POINTER);
    EXPECT_EQ(m_handler.CreateIntegerParameter(L"Name", 1, nullptr, pSecond.Put()), E_POINTER);
}

TEST_P(SchemaWritingTest, AFeatureHoldsItsOptionEachWithItsOwnPrefix) {
    Element pFeature;
    Element pOption;
    ASSERT_EQ(m_handler.CreateFeatureOption({Keywords, L"PageScaling"}, {Private, L"Own"}, pFeature.Put(),
                                            pOption.Put()),
              S_OK);
    EXPECT_EQ(DomText(m_pTicket.Get()), Ticket(L""));
    ASSERT_EQ(m_handler.AppendToRoot(pFeature.Get()), S_OK);
    EXPECT_EQ(m_handler.SetAttribute(pOption.Get(), L"constrained", {}, L"psk:None"), S_OK);
    EXPECT_EQ(DomText(m_pTicket.Get()),
              Ticket(L"<psf:Feature name=\"psk:PageScaling\">"
                     L"<psf:Option name=\"krk:Own\" constrained=\"psk:None\"/></psf:Feature>"));
}

TEST_P(SchemaWritingTest, AFeaturesArgumentsAreChecked) {
    Element pFeature;
    Element pOption;
    const Qname name = {Keywords, L"PageScaling"};
    EXPECT_EQ(m_handler.CreateFeatureOption(name, name, nullptr, pOption.Put()), E_POINTER);
    EXPECT_EQ(m_handler.CreateFeatureOption(name, name, pFeature.Put(), nullptr), E_POINTER);
    EXPECT_EQ(m_handler.CreateFeatureOption(Nameless, name, pFeature.Put(), pOption.Put()), E_INVALIDARG);
    EXPECT_EQ(m_handler.CreateFeatureOption(name, Nameless, pFeature.Put(), pOption.Put()), E_INVALIDARG);
    EXPECT_FALSE(pFeature);
    EXPECT_FALSE(pOption);
}

TEST_P(SchemaWritingTest, AnEmptyNameIsRefused) {
    EXPECT_EQ(CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateElement(L"", kFrameworkNamespace, pp);
              }),
              E_INVALIDARG);
    EXPECT_EQ(CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateProperty(Nameless, pp);
              }),
              E_INVALIDARG);
    EXPECT_EQ(CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreatePropertyWithValue(Nameless, L"string", L"", pp);
              }),
              E_INVALIDARG);
    EXPECT_EQ(CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateScoredProperty(Nameless, pp);
              }),
              E_INVALIDARG);
    EXPECT_EQ(CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateIntegerScoredProperty(Nameless, 1, pp);
              }),
              E_INVALIDARG);
    Element pElement;
    ASSERT_EQ(m_handler.CreateElement(L"Feature", kFrameworkNamespace, pElement.Put()), S_OK);
    EXPECT_EQ(m_handler.SetAttribute(pElement.Get(), L"", {}, L"value"), E_INVALIDARG);
}

TEST_P(SchemaWritingTest, NothingCanBePlacedInADocumentThatHasLostItsRoot) {
    Element pFeature;
    ASSERT_EQ(m_handler.CreateElement(L"Feature", kFrameworkNamespace, pFeature.Put()), S_OK);
    Element pRoot;
    ASSERT_EQ(m_pTicket->get_documentElement(pRoot.Put()), S_OK);
    Node pRemoved;
    ASSERT_EQ(m_pTicket->removeChild(pRoot.Get(), pRemoved.Put()), S_OK);
    EXPECT_EQ(m_handler.AppendToRoot(pFeature.Get()), E_FAIL);
    EXPECT_EQ(m_pTicket->get_documentElement(pRoot.Put()), S_FALSE);
    // Nor under a root of another name.
    ASSERT_EQ(m_pTicket->appendChild(pFeature.Get(), pRemoved.Put()), S_OK);
    Element pOther;
    ASSERT_EQ(m_handler.CreateElement(L"Feature", kFrameworkNamespace, pOther.Put()), S_OK);
    EXPECT_EQ(m_handler.AppendToRoot(pOther.Get()), E_FAIL);
}

TEST_P(SchemaWritingTest, ANullPointerIsRefusedBeforeAnythingElse) {
    EXPECT_EQ(m_handler.CreateElement(L"", {}, nullptr), E_POINTER);
    EXPECT_EQ(m_handler.CreateProperty(Nameless, nullptr), E_POINTER);
    EXPECT_EQ(m_handler.CreatePropertyWithValue(Nameless, {}, {}, nullptr), E_POINTER);
    EXPECT_EQ(m_handler.CreateIntegerProperty(Nameless, 0, nullptr), E_POINTER);
    EXPECT_EQ(m_handler.CreateScoredProperty(Nameless, nullptr), E_POINTER);
    EXPECT_EQ(m_handler.CreateScoredPropertyWithValue(Nameless, {}, {}, nullptr), E_POINTER);
    EXPECT_EQ(m_handler.CreateIntegerScoredProperty(Nameless, 0, nullptr), E_POINTER);
    EXPECT_EQ(m_handler.SetAttribute(nullptr, L"name", {}, {}), E_POINTER);
    EXPECT_EQ(m_handler.AppendToRoot(nullptr), E_POINTER);
}

TEST_P(SchemaWritingTest, ANameThatIsNoNameIsTheDomsToRefuse) {
    EXPECT_TRUE(FAILED(CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
        return handler.CreateElement(L"a b", kFrameworkNamespace, pp);
    })));
}

TEST_P(SchemaWritingTest, APrivateNameNeedsNoDeclarationOfItsPrefix) {
    SetPrivatePrefix(L"other");
    EXPECT_EQ(With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateProperty({Private, L"MinWidth"}, pp);
              }),
              Ticket(L"<psf:Property name=\"other:MinWidth\"/>"));
}

class OtherPrefixesTest : public HandlerTest {};

TEST_P(OtherPrefixesTest, ElementsNamesAndTypesHaveTheDocumentsPrefixes) {
    const std::wstring begin = L"<f:PrintTicket xmlns:f=\"" + std::wstring(kFrameworkNamespace) +
                               L"\" xmlns:k=\"" + kKeywordsNamespace + L"\" xmlns:i=\"" +
                               kXmlSchemaInstanceNamespace + L"\" xmlns:s=\"" + kXmlSchemaNamespace + L"\"";
    const Dom pTicket = LoadDomFromString(begin + L"/>");
    const PrintTicketHandler handler(pTicket.Get());
    Element pProperty;
    ASSERT_EQ(handler.CreateIntegerScoredProperty({Keywords, L"Scale"}, 5, pProperty.Put()), S_OK);
    ASSERT_EQ(handler.AppendToRoot(pProperty.Get()), S_OK);
    EXPECT_EQ(DomText(pTicket.Get()),
              begin +
                  L"><f:ScoredProperty name=\"k:Scale\"><f:Value i:type=\"s:integer\">"
                  L"5</f:Value></f:ScoredProperty></f:PrintTicket>");
}

TEST_P(OtherPrefixesTest, WithoutThePrefixesOfXmlSchemaTheTypeIsABareWord) {
    const std::wstring begin = L"<psf:PrintTicket xmlns:psf=\"" + std::wstring(kFrameworkNamespace) +
                               L"\" xmlns:psk=\"" + kKeywordsNamespace + L"\"";
    const Dom pTicket = LoadDomFromString(begin + L"/>");
    const PrintTicketHandler handler(pTicket.Get());
    Element pProperty;
    ASSERT_EQ(handler.CreateIntegerProperty({Keywords, L"P"}, 5, pProperty.Put()), S_OK);
    ASSERT_EQ(handler.AppendToRoot(pProperty.Get()), S_OK);
    EXPECT_EQ(DomText(pTicket.Get()), begin +
                                          L"><psf:Property name=\"psk:P\"><psf:Value type=\"integer\">5"
                                          L"</psf:Value></psf:Property></psf:PrintTicket>");
}

TEST_P(OtherPrefixesTest, WithoutTheKeywordPrefixBuildersThrowWhatGetPrefixThrows) {
    const Dom pTicket =
        LoadDomFromString(L"<psf:PrintTicket xmlns:psf=\"" + std::wstring(kFrameworkNamespace) + L"\"/>");
    const PrintTicketHandler handler(pTicket.Get());
    Element pElement;
    EXPECT_EQ(tests::ThrownCode([&] {
                  static_cast<void>(handler.CreateProperty({Private, L"P"}, pElement.Put()));
              }),
              E_UNEXPECTED);
    EXPECT_FALSE(pElement);
    EXPECT_EQ(handler.CreateElement(L"Feature", kFrameworkNamespace, pElement.Put()), S_OK);
    EXPECT_EQ(handler.AppendToRoot(pElement.Get()), S_OK);
}

class RemovalTest : public HandlerTest {
  protected:
    // The ticket's body after the removal of a feature.
    std::wstring Without(const Qname& feature, std::wstring_view body) {
        const Dom pTicket = LoadDomFromString(Ticket(body));
        const PrintTicketHandler handler(pTicket.Get());
        EXPECT_EQ(handler.RemoveFeature(feature), S_OK);
        return DomText(pTicket.Get());
    }

    const Qname m_scaling = {Keywords, L"PageScaling"};
};

TEST_P(RemovalTest, NothingToRemoveIsNoError) {
    constexpr wchar_t body[] = L"<psf:Feature name=\"psk:Other\"/><psf:ParameterInit name=\"psk:A\"/>";
    EXPECT_EQ(Without(m_scaling, body), Ticket(body));
}

TEST_P(RemovalTest, AFeatureGoesWithTheParametersItRefersTo) {
    EXPECT_EQ(Without(m_scaling,
                      L"<psf:ParameterInit name=\"krk:A\"/><psf:Feature name=\"psk:PageScaling\"><psf:Option>"
                      L"<psf:ScoredProperty><psf:ParameterRef name=\"krk:A\"/></psf:ScoredProperty>"
                      L"<psf:ScoredProperty><psf:ParameterRef name=\"krk:C\"/></psf:ScoredProperty>"
                      L"<psf:ScoredProperty><psf:ParameterRef/></psf:ScoredProperty>"
                      L"<psf:ScoredProperty><psf:ParameterRef name=\"krk:Absent\"/></psf:ScoredProperty>"
                      L"</psf:Option></psf:Feature><psf:ParameterInit name=\"krk:B\"/><psf:ParameterInit/>"
                      L"<psf:ParameterInit name=\"krk:C\"/>"),
              Ticket(L"<psf:ParameterInit name=\"krk:B\"/><psf:ParameterInit/>"));
}

TEST_P(RemovalTest, EveryDuplicateGoes) {
    EXPECT_EQ(Without(m_scaling,
                      L"<psf:Feature name=\"psk:PageScaling\"/><psf:ParameterInit name=\"krk:A\"/>"
                      L"<psf:Feature name=\"psk:PageScaling\"><psf:ParameterRef name=\"krk:A\"/>"
                      L"</psf:Feature><psf:ParameterInit name=\"krk:A\"/>"),
              Ticket(L""));
}

TEST_P(RemovalTest, NamesAreComparedWithTheirPrefix) {
    constexpr wchar_t body[] =
        L"<psf:Feature name=\"krk:PageScaling\"/><psf:Feature name=\"psk:pagescaling\"/>";
    EXPECT_EQ(Without(m_scaling, body), Ticket(body));
    EXPECT_EQ(Without({Private, L"PageScaling"}, body), Ticket(L"<psf:Feature name=\"psk:pagescaling\"/>"));
}

TEST_P(RemovalTest, ANestedFeatureGoesFromItsParent) {
    EXPECT_EQ(Without(m_scaling,
                      L"<psf:Feature name=\"psk:Outer\"><psf:Feature name=\"psk:PageScaling\"/>"
                      L"</psf:Feature>"),
              Ticket(L"<psf:Feature name=\"psk:Outer\"/>"));
}

TEST_P(RemovalTest, AReferenceWithQuotesInItsNameRemovesItsOwnParameterAlone) {
    EXPECT_EQ(Without(m_scaling,
                      L"<psf:Feature name=\"psk:PageScaling\"><psf:ParameterRef name='\"] | //*[\"'/>"
                      L"</psf:Feature><psf:ParameterInit name=\"krk:A\"/>"
                      L"<psf:ParameterInit name='\"] | //*[\"'/>"),
              Ticket(L"<psf:ParameterInit name=\"krk:A\"/>"));
}

TEST_P(RemovalTest, AnEmptyNameIsRefused) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    EXPECT_EQ(PrintTicketHandler(pTicket.Get()).RemoveFeature(Nameless), E_INVALIDARG);
}

TEST_ON_EACH_DOM(SchemaWritingTest);
TEST_ON_EACH_DOM(OtherPrefixesTest);
TEST_ON_EACH_DOM(RemovalTest);

}  // namespace
