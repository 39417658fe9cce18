#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "base/logging/exceptions.h"
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
using tests::kKeywords;
using tests::kKeywordsUri;
using tests::kPrivate;
using tests::Node;
using tests::Ticket;

const Qname kNameless = {kKeywords, L""};

class SchemaWritingTest : public HandlerTest {
  protected:
    // The ticket with one element that is built and put into it.
    template <typename Build>
    std::wstring With(Build&& build) {
        Element pElement;
        EXPECT_EQ(S_OK, build(m_handler, pElement.Put()));
        EXPECT_EQ(S_OK, m_handler.AppendToRoot(pElement.Get()));
        return DomText(m_pTicket.Get());
    }

    // A failing build leaves its result null and the ticket as it was.
    template <typename Build>
    HRESULT CodeOf(Build&& build) {
        Element pElement;
        const HRESULT hr = build(m_handler, pElement.Put());
        EXPECT_FALSE(pElement);
        EXPECT_EQ(Ticket(L""), DomText(m_pTicket.Get()));
        return hr;
    }

    Dom m_pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler m_handler{m_pTicket.Get()};
};

using Handler = PrintSchemaHandler;

TEST_P(SchemaWritingTest, AnElementHasTheDocumentsFrameworkPrefix) {
    EXPECT_EQ(Ticket(L"<psf:Feature/>"), With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateElement(L"Feature", kFrameworkNamespace, pp);
              }));
}

TEST_P(SchemaWritingTest, AnAttributeIsReplacedByOneOfItsName) {
    EXPECT_EQ(Ticket(L"<psf:Feature name=\"a&lt;b&amp;&quot;c&quot;\"/>"),
              With([](const Handler& handler, IXMLDOMElement** pp) {
                  const HRESULT hr = handler.CreateElement(L"Feature", kFrameworkNamespace, pp);
                  EXPECT_EQ(S_OK, handler.SetAttribute(*pp, L"name", {}, L"first"));
                  EXPECT_EQ(S_OK, handler.SetAttribute(*pp, L"name", {}, L"a<b&\"c\""));
                  return hr;
              }));
}

TEST_P(SchemaWritingTest, APropertyIsNamedWithTheNamespacesPrefix) {
    EXPECT_EQ(Ticket(L"<psf:Property name=\"krk:MinWidth\"/>"),
              With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateProperty({kPrivate, L"MinWidth"}, pp);
              }));
}

TEST_P(SchemaWritingTest, APropertysValueIsTyped) {
    EXPECT_EQ(
        Ticket(L"<psf:Property name=\"psk:Name\"><psf:Value xsi:type=\"xsd:string\">a &lt; b</psf:Value>"
               L"</psf:Property>"),
        With([](const Handler& handler, IXMLDOMElement** pp) {
            return handler.CreatePropertyWithValue({kKeywords, L"Name"}, L"string", L"a < b", pp);
        }));
}

TEST_P(SchemaWritingTest, AnIntegerPropertyHoldsADecimalNumber) {
    EXPECT_EQ(Ticket(L"<psf:Property name=\"krk:MinWidth\"><psf:Value xsi:type=\"xsd:integer\">-2147483648"
                     L"</psf:Value></psf:Property>"),
              With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateIntegerProperty({kPrivate, L"MinWidth"},
                                                       std::numeric_limits<std::int32_t>::min(), pp);
              }));
}

TEST_P(SchemaWritingTest, AScoredPropertyIsBuiltLikeAProperty) {
    EXPECT_EQ(Ticket(L"<psf:ScoredProperty name=\"psk:Scale\"/>"),
              With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateScoredProperty({kKeywords, L"Scale"}, pp);
              }));
}

TEST_P(SchemaWritingTest, AScoredPropertysValueIsTyped) {
    EXPECT_EQ(Ticket(L"<psf:ScoredProperty name=\"psk:FeedDirection\"><psf:Value xsi:type=\"xsd:QName\">"
                     L"psk:LongEdgeFirst</psf:Value></psf:ScoredProperty>"),
              With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateScoredPropertyWithValue({kKeywords, L"FeedDirection"}, L"QName",
                                                               L"psk:LongEdgeFirst", pp);
              }));
}

TEST_P(SchemaWritingTest, AnIntegerScoredPropertyHoldsADecimalNumber) {
    EXPECT_EQ(Ticket(L"<psf:ScoredProperty name=\"psk:MediaSizeWidth\"><psf:Value xsi:type=\"xsd:integer\">"
                     L"210000</psf:Value></psf:ScoredProperty>"),
              With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateIntegerScoredProperty({kKeywords, L"MediaSizeWidth"}, 210000, pp);
              }));
}

TEST_P(SchemaWritingTest, AParameterIsAReferenceAndAnInitializerOfThePrivateNamespace) {
    Element pReference;
    Element pInitializer;
    ASSERT_EQ(S_OK, m_handler.CreateParameter(L"PageScalingScale", L"integer", L"150", pReference.Put(),
                                              pInitializer.Put()));
    ASSERT_EQ(S_OK, m_handler.AppendToRoot(pReference.Get()));
    ASSERT_EQ(S_OK, m_handler.AppendToRoot(pInitializer.Get()));
    EXPECT_EQ(Ticket(L"<psf:ParameterRef name=\"krk:PageScalingScale\"/>"
                     L"<psf:ParameterInit name=\"krk:PageScalingScale\"><psf:Value xsi:type=\"xsd:integer\">"
                     L"150</psf:Value></psf:ParameterInit>"),
              DomText(m_pTicket.Get()));
}

TEST_P(SchemaWritingTest, TheSizeOfTheWatermarkIsAKeywordParameter) {
    for (const std::wstring name : {L"PageWatermarkSizeWidth", L"PageWatermarkSizeHeight"}) {
        Element pReference;
        Element pInitializer;
        ASSERT_EQ(S_OK, m_handler.CreateIntegerParameter(name, -7, pReference.Put(), pInitializer.Put()));
        ASSERT_EQ(S_OK, m_handler.AppendToRoot(pReference.Get()));
        ASSERT_EQ(S_OK, m_handler.AppendToRoot(pInitializer.Get()));
    }
    EXPECT_EQ(Ticket(L"<psf:ParameterRef name=\"psk:PageWatermarkSizeWidth\"/>"
                     L"<psf:ParameterInit name=\"psk:PageWatermarkSizeWidth\"><psf:Value "
                     L"xsi:type=\"xsd:integer\">-7</psf:Value></psf:ParameterInit>"
                     L"<psf:ParameterRef name=\"psk:PageWatermarkSizeHeight\"/>"
                     L"<psf:ParameterInit name=\"psk:PageWatermarkSizeHeight\"><psf:Value "
                     L"xsi:type=\"xsd:integer\">-7</psf:Value></psf:ParameterInit>"),
              DomText(m_pTicket.Get()));
}

TEST_P(SchemaWritingTest, AParametersArgumentsAreChecked) {
    Element pFirst;
    Element pSecond;
    const auto create = [&](const wchar_t* name, const wchar_t* type, const wchar_t* text) {
        return m_handler.CreateParameter(name, type, text, pFirst.Put(), pSecond.Put());
    };
    EXPECT_EQ(E_INVALIDARG, create(L"", L"integer", L"1"));
    EXPECT_EQ(E_INVALIDARG, create(L"Name", L"", L"1"));
    EXPECT_EQ(E_INVALIDARG, create(L"Name", L"integer", L""));
    EXPECT_FALSE(pFirst);
    EXPECT_FALSE(pSecond);
    EXPECT_EQ(E_POINTER, m_handler.CreateParameter(L"", L"", L"", nullptr, pSecond.Put()));
    EXPECT_EQ(E_POINTER, m_handler.CreateParameter(L"", L"", L"", pFirst.Put(), nullptr));
    EXPECT_EQ(E_POINTER, m_handler.CreateIntegerParameter(L"Name", 1, nullptr, pSecond.Put()));
}

TEST_P(SchemaWritingTest, AFeatureHoldsItsOptionEachWithItsOwnPrefix) {
    Element pFeature;
    Element pOption;
    ASSERT_EQ(S_OK, m_handler.CreateFeatureOption({kKeywords, L"PageScaling"}, {kPrivate, L"Own"},
                                                  pFeature.Put(), pOption.Put()));
    EXPECT_EQ(Ticket(L""), DomText(m_pTicket.Get()));
    ASSERT_EQ(S_OK, m_handler.AppendToRoot(pFeature.Get()));
    EXPECT_EQ(S_OK, m_handler.SetAttribute(pOption.Get(), L"constrained", {}, L"psk:None"));
    EXPECT_EQ(Ticket(L"<psf:Feature name=\"psk:PageScaling\">"
                     L"<psf:Option name=\"krk:Own\" constrained=\"psk:None\"/></psf:Feature>"),
              DomText(m_pTicket.Get()));
}

TEST_P(SchemaWritingTest, AFeaturesArgumentsAreChecked) {
    Element pFeature;
    Element pOption;
    const Qname name = {kKeywords, L"PageScaling"};
    EXPECT_EQ(E_POINTER, m_handler.CreateFeatureOption(name, name, nullptr, pOption.Put()));
    EXPECT_EQ(E_POINTER, m_handler.CreateFeatureOption(name, name, pFeature.Put(), nullptr));
    EXPECT_EQ(E_INVALIDARG, m_handler.CreateFeatureOption(kNameless, name, pFeature.Put(), pOption.Put()));
    EXPECT_EQ(E_INVALIDARG, m_handler.CreateFeatureOption(name, kNameless, pFeature.Put(), pOption.Put()));
    EXPECT_FALSE(pFeature);
    EXPECT_FALSE(pOption);
}

TEST_P(SchemaWritingTest, AnEmptyNameIsRefused) {
    EXPECT_EQ(E_INVALIDARG, CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateElement(L"", kFrameworkNamespace, pp);
              }));
    EXPECT_EQ(E_INVALIDARG, CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateProperty(kNameless, pp);
              }));
    EXPECT_EQ(E_INVALIDARG, CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreatePropertyWithValue(kNameless, L"string", L"", pp);
              }));
    EXPECT_EQ(E_INVALIDARG, CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateScoredProperty(kNameless, pp);
              }));
    EXPECT_EQ(E_INVALIDARG, CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateIntegerScoredProperty(kNameless, 1, pp);
              }));
    Element pElement;
    ASSERT_EQ(S_OK, m_handler.CreateElement(L"Feature", kFrameworkNamespace, pElement.Put()));
    EXPECT_EQ(E_INVALIDARG, m_handler.SetAttribute(pElement.Get(), L"", {}, L"value"));
}

TEST_P(SchemaWritingTest, NothingCanBePlacedInADocumentThatHasLostItsRoot) {
    Element pFeature;
    ASSERT_EQ(S_OK, m_handler.CreateElement(L"Feature", kFrameworkNamespace, pFeature.Put()));
    Element pRoot;
    ASSERT_EQ(S_OK, m_pTicket->get_documentElement(pRoot.Put()));
    Node pRemoved;
    ASSERT_EQ(S_OK, m_pTicket->removeChild(pRoot.Get(), pRemoved.Put()));
    EXPECT_EQ(E_FAIL, m_handler.AppendToRoot(pFeature.Get()));
    EXPECT_EQ(S_FALSE, m_pTicket->get_documentElement(pRoot.Put()));
    // Nor under a root of another name.
    ASSERT_EQ(S_OK, m_pTicket->appendChild(pFeature.Get(), pRemoved.Put()));
    Element pOther;
    ASSERT_EQ(S_OK, m_handler.CreateElement(L"Feature", kFrameworkNamespace, pOther.Put()));
    EXPECT_EQ(E_FAIL, m_handler.AppendToRoot(pOther.Get()));
}

TEST_P(SchemaWritingTest, ANullPointerIsRefusedBeforeAnythingElse) {
    EXPECT_EQ(E_POINTER, m_handler.CreateElement(L"", {}, nullptr));
    EXPECT_EQ(E_POINTER, m_handler.CreateProperty(kNameless, nullptr));
    EXPECT_EQ(E_POINTER, m_handler.CreatePropertyWithValue(kNameless, {}, {}, nullptr));
    EXPECT_EQ(E_POINTER, m_handler.CreateIntegerProperty(kNameless, 0, nullptr));
    EXPECT_EQ(E_POINTER, m_handler.CreateScoredProperty(kNameless, nullptr));
    EXPECT_EQ(E_POINTER, m_handler.CreateScoredPropertyWithValue(kNameless, {}, {}, nullptr));
    EXPECT_EQ(E_POINTER, m_handler.CreateIntegerScoredProperty(kNameless, 0, nullptr));
    EXPECT_EQ(E_POINTER, m_handler.SetAttribute(nullptr, L"name", {}, {}));
    EXPECT_EQ(E_POINTER, m_handler.AppendToRoot(nullptr));
}

TEST_P(SchemaWritingTest, ANameThatIsNoNameIsTheDomsToRefuse) {
    EXPECT_TRUE(FAILED(CodeOf([](const Handler& handler, IXMLDOMElement** pp) {
        return handler.CreateElement(L"a b", kFrameworkNamespace, pp);
    })));
}

TEST_P(SchemaWritingTest, APrivateNameNeedsNoDeclarationOfItsPrefix) {
    SetPrivatePrefix(L"other");
    EXPECT_EQ(Ticket(L"<psf:Property name=\"other:MinWidth\"/>"),
              With([](const Handler& handler, IXMLDOMElement** pp) {
                  return handler.CreateProperty({kPrivate, L"MinWidth"}, pp);
              }));
}

class OtherPrefixesTest : public HandlerTest {};

TEST_P(OtherPrefixesTest, ElementsNamesAndTypesHaveTheDocumentsPrefixes) {
    const std::wstring begin = L"<f:PrintTicket xmlns:f=\"" + std::wstring(kFrameworkNamespace) +
                               L"\" xmlns:k=\"" + kKeywordsNamespace + L"\" xmlns:i=\"" +
                               kXmlSchemaInstanceNamespace + L"\" xmlns:s=\"" + kXmlSchemaNamespace + L"\"";
    const Dom pTicket = LoadDomFromString(begin + L"/>");
    const PrintTicketHandler handler(pTicket.Get());
    Element pProperty;
    ASSERT_EQ(S_OK, handler.CreateIntegerScoredProperty({kKeywords, L"Scale"}, 5, pProperty.Put()));
    ASSERT_EQ(S_OK, handler.AppendToRoot(pProperty.Get()));
    EXPECT_EQ(begin +
                  L"><f:ScoredProperty name=\"k:Scale\"><f:Value i:type=\"s:integer\">"
                  L"5</f:Value></f:ScoredProperty></f:PrintTicket>",
              DomText(pTicket.Get()));
}

TEST_P(OtherPrefixesTest, WithoutThePrefixesOfXmlSchemaTheTypeIsABareWord) {
    const std::wstring begin = L"<psf:PrintTicket xmlns:psf=\"" + std::wstring(kFrameworkNamespace) +
                               L"\" xmlns:psk=\"" + kKeywordsNamespace + L"\"";
    const Dom pTicket = LoadDomFromString(begin + L"/>");
    const PrintTicketHandler handler(pTicket.Get());
    Element pProperty;
    ASSERT_EQ(S_OK, handler.CreateIntegerProperty({kKeywords, L"P"}, 5, pProperty.Put()));
    ASSERT_EQ(S_OK, handler.AppendToRoot(pProperty.Get()));
    EXPECT_EQ(begin +
                  L"><psf:Property name=\"psk:P\"><psf:Value type=\"integer\">5"
                  L"</psf:Value></psf:Property></psf:PrintTicket>",
              DomText(pTicket.Get()));
}

TEST_P(OtherPrefixesTest, WithoutTheKeywordPrefixBuildersThrowWhatGetPrefixThrows) {
    const Dom pTicket =
        LoadDomFromString(L"<psf:PrintTicket xmlns:psf=\"" + std::wstring(kFrameworkNamespace) + L"\"/>");
    const PrintTicketHandler handler(pTicket.Get());
    Element pElement;
    EXPECT_EQ(E_UNEXPECTED, tests::ThrownCode([&] {
                  static_cast<void>(handler.CreateProperty({kPrivate, L"P"}, pElement.Put()));
              }));
    EXPECT_FALSE(pElement);
    EXPECT_EQ(S_OK, handler.CreateElement(L"Feature", kFrameworkNamespace, pElement.Put()));
    EXPECT_EQ(S_OK, handler.AppendToRoot(pElement.Get()));
}

class RemovalTest : public HandlerTest {
  protected:
    // The ticket's body after the removal of a feature.
    std::wstring Without(const Qname& feature, std::wstring_view body) {
        const Dom pTicket = LoadDomFromString(Ticket(body));
        const PrintTicketHandler handler(pTicket.Get());
        EXPECT_EQ(S_OK, handler.RemoveFeature(feature));
        return DomText(pTicket.Get());
    }

    const Qname m_scaling = {kKeywords, L"PageScaling"};
};

TEST_P(RemovalTest, NothingToRemoveIsNoError) {
    constexpr wchar_t body[] = L"<psf:Feature name=\"psk:Other\"/><psf:ParameterInit name=\"psk:A\"/>";
    EXPECT_EQ(Ticket(body), Without(m_scaling, body));
}

TEST_P(RemovalTest, AFeatureGoesWithTheParametersItRefersTo) {
    EXPECT_EQ(Ticket(L"<psf:ParameterInit name=\"krk:B\"/><psf:ParameterInit/>"),
              Without(m_scaling,
                      L"<psf:ParameterInit name=\"krk:A\"/><psf:Feature name=\"psk:PageScaling\"><psf:Option>"
                      L"<psf:ScoredProperty><psf:ParameterRef name=\"krk:A\"/></psf:ScoredProperty>"
                      L"<psf:ScoredProperty><psf:ParameterRef name=\"krk:C\"/></psf:ScoredProperty>"
                      L"<psf:ScoredProperty><psf:ParameterRef/></psf:ScoredProperty>"
                      L"<psf:ScoredProperty><psf:ParameterRef name=\"krk:Absent\"/></psf:ScoredProperty>"
                      L"</psf:Option></psf:Feature><psf:ParameterInit name=\"krk:B\"/><psf:ParameterInit/>"
                      L"<psf:ParameterInit name=\"krk:C\"/>"));
}

TEST_P(RemovalTest, EveryDuplicateGoes) {
    EXPECT_EQ(Ticket(L""),
              Without(m_scaling,
                      L"<psf:Feature name=\"psk:PageScaling\"/><psf:ParameterInit name=\"krk:A\"/>"
                      L"<psf:Feature name=\"psk:PageScaling\"><psf:ParameterRef name=\"krk:A\"/>"
                      L"</psf:Feature><psf:ParameterInit name=\"krk:A\"/>"));
}

TEST_P(RemovalTest, NamesAreComparedWithTheirPrefix) {
    constexpr wchar_t body[] =
        L"<psf:Feature name=\"krk:PageScaling\"/><psf:Feature name=\"psk:pagescaling\"/>";
    EXPECT_EQ(Ticket(body), Without(m_scaling, body));
    EXPECT_EQ(Ticket(L"<psf:Feature name=\"psk:pagescaling\"/>"), Without({kPrivate, L"PageScaling"}, body));
}

TEST_P(RemovalTest, ANestedFeatureGoesFromItsParent) {
    EXPECT_EQ(Ticket(L"<psf:Feature name=\"psk:Outer\"/>"),
              Without(m_scaling,
                      L"<psf:Feature name=\"psk:Outer\"><psf:Feature name=\"psk:PageScaling\"/>"
                      L"</psf:Feature>"));
}

TEST_P(RemovalTest, AReferenceWithQuotesInItsNameRemovesItsOwnParameterAlone) {
    EXPECT_EQ(Ticket(L"<psf:ParameterInit name=\"krk:A\"/>"),
              Without(m_scaling,
                      L"<psf:Feature name=\"psk:PageScaling\"><psf:ParameterRef name='\"] | //*[\"'/>"
                      L"</psf:Feature><psf:ParameterInit name=\"krk:A\"/>"
                      L"<psf:ParameterInit name='\"] | //*[\"'/>"));
}

TEST_P(RemovalTest, AnEmptyNameIsRefused) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    EXPECT_EQ(E_INVALIDARG, PrintTicketHandler(pTicket.Get()).RemoveFeature(kNameless));
}

TEST_ON_EACH_DOM(SchemaWritingTest);
TEST_ON_EACH_DOM(OtherPrefixesTest);
TEST_ON_EACH_DOM(RemovalTest);

}  // namespace
