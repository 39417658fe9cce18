#include "base/xps/printschema/printschemahandler.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/logging/exceptions.h"
#include "domslots.h"
#include "handlertest.h"
#include "platform/variant.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace {

using namespace base::xps::printschema;
using base::exception::HresultError;
using base::xml::CreateDom;
using base::xml::LoadDomFromString;
using platform::Bstr;
using platform::Variant;
using tests::Dom;
using tests::HandlerTest;
using tests::kFrameworkUri;
using tests::kKeywordsUri;
using tests::SchemaDocument;
using tests::Thrown;
using tests::ThrownCode;
using tests::Ticket;

class PrintSchemaHandlerTest : public HandlerTest {};

// Looks the prefixes of a document up that uses "psf" itself.
class OpenHandler : public PrintSchemaHandler {
  public:
    explicit OpenHandler(IXMLDOMDocument2* pDocument) : PrintSchemaHandler(L"PrintTicket", pDocument) {}
    using PrintSchemaHandler::FindPrefix;
};

std::wstring Declaration(std::wstring_view name, std::wstring_view uri) {
    std::wstring text = L" ";
    return text.append(name).append(L"=\"").append(uri).append(L"\"");
}

// A ticket without content whose root is of the given name and has the given attributes.
Dom Root(std::wstring_view name, std::wstring_view attributes) {
    std::wstring text = L"<";
    return LoadDomFromString(text.append(name).append(attributes).append(L"/>"));
}

HRESULT CodeOfConstruction(IXMLDOMDocument2* pDocument) {
    return ThrownCode([&] { const PrintTicketHandler handler(pDocument); });
}

std::wstring Property(IXMLDOMDocument2* pDocument, const wchar_t* name) {
    Variant value;
    if (pDocument->getProperty(Bstr(name).Get(), value.Put()) != S_OK) return L"none";
    return std::wstring(value.Text(), SysStringLen(value.Text()));
}

TEST_P(PrintSchemaHandlerTest, PrefixesAreTheDocumentsOwn) {
    const Dom pTicket = Root(L"f:PrintTicket",
                             Declaration(L"xmlns:k", kKeywordsUri) + Declaration(L"xmlns:f", kFrameworkUri));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(L"k:", handler.GetPrefix(SchemaNamespace::Keywords));
    EXPECT_EQ(L"f:", handler.GetPrefix(SchemaNamespace::Framework));
    EXPECT_EQ(L"krk:", handler.GetPrefix(SchemaNamespace::Private));
    EXPECT_EQ(L"ns0000:", handler.GetPrefix(SchemaNamespace::Fallback));
}

TEST_P(PrintSchemaHandlerTest, CapabilitiesHaveAHandlerOfTheirOwn) {
    const Dom pCapabilities = LoadDomFromString(tests::Capabilities(L""));
    EXPECT_EQ(L"psf:", PrintCapabilitiesHandler(pCapabilities.Get()).GetPrefix(SchemaNamespace::Framework));
    EXPECT_EQ(E_FAIL, CodeOfConstruction(pCapabilities.Get()));
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    EXPECT_EQ(E_FAIL, ThrownCode([&] { const PrintCapabilitiesHandler handler(pTicket.Get()); }));
}

TEST_P(PrintSchemaHandlerTest, ANullDocumentIsPending) {
    EXPECT_EQ(E_PENDING, CodeOfConstruction(nullptr));
    EXPECT_EQ(0U, Thrown<HresultError>([] {
                      const PrintTicketHandler handler(nullptr);
                  }).find("base/xps/printschema/printschemahandler.cpp(LINE) : "));
}

TEST_P(PrintSchemaHandlerTest, ATicketWhoseFrameworkNamespaceIsTheDefaultNamespaceFailsConstruction) {
    const Dom pTicket =
        Root(L"PrintTicket", Declaration(L"xmlns", kFrameworkUri) + Declaration(L"xmlns:psk", kKeywordsUri));
    EXPECT_EQ(E_FAIL, CodeOfConstruction(pTicket.Get()));
}

TEST_P(PrintSchemaHandlerTest, ADefaultDeclarationBeforeThePrefixFailsConstruction) {
    const std::wstring byDefault = Declaration(L"xmlns", kFrameworkUri);
    const std::wstring byPrefix = Declaration(L"xmlns:psf", kFrameworkUri);
    EXPECT_EQ(E_FAIL, CodeOfConstruction(Root(L"psf:PrintTicket", byDefault + byPrefix).Get()));
    EXPECT_EQ(S_OK, CodeOfConstruction(Root(L"psf:PrintTicket", byPrefix + byDefault).Get()));
}

TEST_P(PrintSchemaHandlerTest, AnyOtherNamespaceThatIsTheDefaultFailsConstructionToo) {
    for (const std::wstring_view uri :
         {kKeywordsUri, std::wstring_view(L"http://www.w3.org/2001/XMLSchema-instance"),
          std::wstring_view(L"http://www.w3.org/2001/XMLSchema")}) {
        const Dom pTicket =
            Root(L"psf:PrintTicket", Declaration(L"xmlns:psf", kFrameworkUri) + Declaration(L"xmlns", uri));
        EXPECT_EQ(E_FAIL, CodeOfConstruction(pTicket.Get())) << std::wstring(uri);
    }
}

TEST_P(PrintSchemaHandlerTest, AnAttributeThatIsNoDeclarationFailsConstructionWhenItHoldsTheNamespace) {
    const Dom pTicket = Root(L"psf:PrintTicket", Declaration(L"xmlns:psf", kFrameworkUri) +
                                                     Declaration(L"keywords", kKeywordsUri));
    EXPECT_EQ(E_FAIL, CodeOfConstruction(pTicket.Get()));
}

TEST_P(PrintSchemaHandlerTest, ADocumentInWhichTheRootQueryFindsNothingFailsConstruction) {
    EXPECT_EQ(E_FAIL, CodeOfConstruction(CreateDom().Get()));
    EXPECT_EQ(E_FAIL, CodeOfConstruction(LoadDomFromString(L"<PrintTicket/>").Get()));
    EXPECT_EQ(E_FAIL, CodeOfConstruction(LoadDomFromString(SchemaDocument(L"printTicket", L"")).Get()));
    EXPECT_EQ(E_FAIL, CodeOfConstruction(Root(L"psf:PrintTicket", L" xmlns:psf=\"urn:other\"").Get()));
}

TEST_P(PrintSchemaHandlerTest, ADocumentWithoutTheKeywordPrefixConstructsAndItsFirstGetPrefixThrows) {
    const Dom pTicket = Root(L"psf:PrintTicket", Declaration(L"xmlns:psf", kFrameworkUri));
    const PrintTicketHandler handler(pTicket.Get());
    for (const std::uint32_t index : {0U, 1U, 2U, 3U, 4U})
        EXPECT_EQ(E_UNEXPECTED,
                  ThrownCode([&] { static_cast<void>(handler.GetPrefix(SchemaNamespace{index})); }))
            << index;
    Bstr option;
    EXPECT_EQ(E_UNEXPECTED, ThrownCode([&] {
                  static_cast<void>(handler.GetOptionName({SchemaNamespace::Keywords, L"PageScaling"},
                                                          SchemaNamespace::Keywords, option.Put()));
              }));
}

TEST_P(PrintSchemaHandlerTest, AKeywordPrefixThatOnlyAFeatureDeclaresIsNotSeen) {
    std::wstring text = L"<psf:PrintTicket" + Declaration(L"xmlns:psf", kFrameworkUri);
    text += L"><psf:Feature" + Declaration(L"xmlns:psk", kKeywordsUri);
    const Dom pTicket = LoadDomFromString(text + L" name=\"psk:PageScaling\"/></psf:PrintTicket>");
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(E_UNEXPECTED,
              ThrownCode([&] { static_cast<void>(handler.GetPrefix(SchemaNamespace::Keywords)); }));
}

TEST_P(PrintSchemaHandlerTest, GetPrefixOf4Throws) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(E_INVALIDARG, ThrownCode([&] { static_cast<void>(handler.GetPrefix(SchemaNamespace{4})); }));
}

TEST_P(PrintSchemaHandlerTest, GetPrefixThrowsWhileThePrivatePrefixIsUnset) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    SetPrivatePrefix({});
    EXPECT_EQ(E_UNEXPECTED,
              ThrownCode([&] { static_cast<void>(handler.GetPrefix(SchemaNamespace::Keywords)); }));
}

TEST_P(PrintSchemaHandlerTest, TheFirstOfTwoPrefixesWins) {
    const Dom pTicket =
        Root(L"b:PrintTicket",
             Declaration(L"xmlns:a", kFrameworkUri) + Declaration(L"xmlns:b", kFrameworkUri) +
                 Declaration(L"xmlns:second", kKeywordsUri) + Declaration(L"xmlns:first", kKeywordsUri));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(L"a:", handler.GetPrefix(SchemaNamespace::Framework));
    EXPECT_EQ(L"second:", handler.GetPrefix(SchemaNamespace::Keywords));
}

TEST_P(PrintSchemaHandlerTest, AnUnsetPrivatePrefixBecomesTheFallback) {
    SetPrivatePrefix({});
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(L"ns0000:", handler.GetPrefix(SchemaNamespace::Private));
    EXPECT_EQ(L"ns0000:", PrivatePrefix());
}

TEST_P(PrintSchemaHandlerTest, AFailingPrefixLeavesThePrivatePrefixUnset) {
    SetPrivatePrefix({});
    EXPECT_EQ(E_FAIL, CodeOfConstruction(Root(L"PrintTicket", Declaration(L"xmlns", kFrameworkUri)).Get()));
    EXPECT_EQ(L"", PrivatePrefix());
    EXPECT_EQ(E_FAIL, CodeOfConstruction(CreateDom().Get()));
    EXPECT_EQ(L"ns0000:", PrivatePrefix());
}

TEST_P(PrintSchemaHandlerTest, TheDocumentIsLeftSelectingByItsOwnPrefix) {
    const Dom pTicket = Root(L"f:PrintTicket", Declaration(L"xmlns:f", kFrameworkUri));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(L"XPath", Property(pTicket.Get(), L"SelectionLanguage"));
    EXPECT_EQ(L"xmlns:f='" + std::wstring(kFrameworkUri) + L"'",
              Property(pTicket.Get(), L"SelectionNamespaces"));
}

TEST_P(PrintSchemaHandlerTest, WithoutItsRootADocumentHasNoPrefixes) {
    const Dom pDocument = LoadDomFromString(Ticket(L""));
    const OpenHandler handler(pDocument.Get());
    tests::Element pRoot;
    tests::Node pRemoved;
    ASSERT_EQ(S_OK, pDocument->get_documentElement(pRoot.Put()));
    ASSERT_EQ(S_OK, pDocument->removeChild(pRoot.Get(), pRemoved.Put()));
    Bstr prefix;
    EXPECT_EQ(S_FALSE, handler.FindPrefix(kKeywordsUri, prefix.Put()));
    EXPECT_EQ(nullptr, prefix.Get());
}

HRESULT STDMETHODCALLTYPE ThrowFromProperty(IXMLDOMDocument2*, BSTR, VARIANT) {
    throw base::exception::CXDException(E_ABORT);
}

TEST_P(PrintSchemaHandlerTest, AWrappersOwnFailureBecomesTheCodeThatItCarries) {
    const Dom pDocument = LoadDomFromString(Ticket(L""));
    tests::VtablePatches patches;
    patches.Replace(pDocument.Get(), tests::DocumentSetProperty, &ThrowFromProperty);
    EXPECT_EQ(E_ABORT, CodeOfConstruction(pDocument.Get()));
}

TEST_P(PrintSchemaHandlerTest, FindPrefixTellsWhatIsWrongWithItsArguments) {
    const Dom pTicket = LoadDomFromString(Ticket(L"", L" xmlns:own=\"urn:own\" other=\"urn:other\""));
    const OpenHandler handler(pTicket.Get());
    EXPECT_EQ(E_POINTER, handler.FindPrefix(L"urn:own", nullptr));
    Bstr prefix(L"before");
    EXPECT_EQ(E_INVALIDARG, handler.FindPrefix(L"", prefix.Put()));
    EXPECT_EQ(nullptr, prefix.Get());
    EXPECT_EQ(S_FALSE, handler.FindPrefix(L"urn:absent", prefix.Put()));
    EXPECT_EQ(nullptr, prefix.Get());
    EXPECT_EQ(E_FAIL, handler.FindPrefix(L"urn:other", prefix.Put()));
    EXPECT_EQ(nullptr, prefix.Get());
    EXPECT_EQ(S_OK, handler.FindPrefix(L"urn:own", prefix.Put()));
    EXPECT_EQ(L"own:", prefix.View());
    EXPECT_EQ(S_FALSE, handler.FindPrefix(L"URN:own", prefix.Put()));
}

class StripPrefixTest : public HandlerTest {
  protected:
    std::wstring Stripped(std::wstring_view text, SchemaNamespace first = SchemaNamespace::Keywords) {
        BSTR raw = Bstr(text).Detach();
        const HRESULT hr = m_handler.StripPrefix(&raw, first);
        const Bstr stripped = Bstr::Adopt(raw);
        return hr == S_OK ? std::wstring(stripped.View()) : L"failed";
    }

  private:
    Dom m_pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler m_handler{m_pTicket.Get()};
};

TEST_P(StripPrefixTest, EveryKnownPrefixIsTakenOff) {
    EXPECT_EQ(L"Tray1", Stripped(L"psk:Tray1"));
    EXPECT_EQ(L"Tray1", Stripped(L"psf:Tray1"));
    EXPECT_EQ(L"Tray1", Stripped(L"krk:Tray1"));
    EXPECT_EQ(L"Tray1", Stripped(L"ns0000:Tray1"));
}

TEST_P(StripPrefixTest, AnUnknownPrefixStays) {
    EXPECT_EQ(L"ns0001:Tray1", Stripped(L"ns0001:Tray1"));
    EXPECT_EQ(L"Tray1", Stripped(L"Tray1"));
}

TEST_P(StripPrefixTest, OnlyOneIsTakenOffWhereverItStands) {
    EXPECT_EQ(L"psk:Tray1", Stripped(L"psk:psk:Tray1"));
    EXPECT_EQ(L"krk:Tray1", Stripped(L"krk:psk:Tray1"));
    EXPECT_EQ(L"aTray1", Stripped(L"apsk:Tray1"));
    EXPECT_EQ(L"", Stripped(L"psk:"));
}

TEST_P(StripPrefixTest, PrefixesBeforeTheGivenNamespaceAreNotTried) {
    EXPECT_EQ(L"psk:Tray1", Stripped(L"psk:Tray1", SchemaNamespace::Framework));
    EXPECT_EQ(L"psk:Tray1", Stripped(L"krk:psk:Tray1", SchemaNamespace::Private));
    EXPECT_EQ(L"Tray1", Stripped(L"ns0000:Tray1", SchemaNamespace::Private));
}

TEST_P(StripPrefixTest, ANullPointerAndAnEmptyTextAreRefused) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    BSTR text = nullptr;
    EXPECT_EQ(E_POINTER, handler.StripPrefix(nullptr, SchemaNamespace::Keywords));
    EXPECT_EQ(E_INVALIDARG, handler.StripPrefix(&text, SchemaNamespace::Keywords));
    EXPECT_EQ(nullptr, text);
}

TEST_ON_EACH_DOM(PrintSchemaHandlerTest);
TEST_ON_EACH_DOM(StripPrefixTest);

}  // namespace
