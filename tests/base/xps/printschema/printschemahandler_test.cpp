#include "base/xps/printschema/printschemahandler.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

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
using tests::FrameworkUri;
using tests::HandlerTest;
using tests::KeywordsUri;
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
    const Dom pTicket =
        Root(L"f:PrintTicket", Declaration(L"xmlns:k", KeywordsUri) + Declaration(L"xmlns:f", FrameworkUri));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(handler.GetPrefix(SchemaNamespace::Keywords), L"k:");
    EXPECT_EQ(handler.GetPrefix(SchemaNamespace::Framework), L"f:");
    EXPECT_EQ(handler.GetPrefix(SchemaNamespace::Private), L"krk:");
    EXPECT_EQ(handler.GetPrefix(SchemaNamespace::Fallback), L"ns0000:");
}

TEST_P(PrintSchemaHandlerTest, CapabilitiesHaveAHandlerOfTheirOwn) {
    const Dom pCapabilities = LoadDomFromString(tests::Capabilities(L""));
    EXPECT_EQ(PrintCapabilitiesHandler(pCapabilities.Get()).GetPrefix(SchemaNamespace::Framework), L"psf:");
    EXPECT_EQ(CodeOfConstruction(pCapabilities.Get()), E_FAIL);
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    EXPECT_EQ(ThrownCode([&] { const PrintCapabilitiesHandler handler(pTicket.Get()); }), E_FAIL);
}

TEST_P(PrintSchemaHandlerTest, ANullDocumentIsPending) {
    EXPECT_EQ(CodeOfConstruction(nullptr), E_PENDING);
    EXPECT_EQ(Thrown<HresultError>([] {
                  const PrintTicketHandler handler(nullptr);
              }).find("base/xps/printschema/printschemahandler.cpp(LINE) : "),
              0U);
}

TEST_P(PrintSchemaHandlerTest, ATicketWhoseFrameworkNamespaceIsTheDefaultNamespaceFailsConstruction) {
    const Dom pTicket =
        Root(L"PrintTicket", Declaration(L"xmlns", FrameworkUri) + Declaration(L"xmlns:psk", KeywordsUri));
    EXPECT_EQ(CodeOfConstruction(pTicket.Get()), E_FAIL);
}

TEST_P(PrintSchemaHandlerTest, ADefaultDeclarationBeforeThePrefixFailsConstruction) {
    const std::wstring byDefault = Declaration(L"xmlns", FrameworkUri);
    const std::wstring byPrefix = Declaration(L"xmlns:psf", FrameworkUri);
    EXPECT_EQ(CodeOfConstruction(Root(L"psf:PrintTicket", byDefault + byPrefix).Get()), E_FAIL);
    EXPECT_EQ(CodeOfConstruction(Root(L"psf:PrintTicket", byPrefix + byDefault).Get()), S_OK);
}

TEST_P(PrintSchemaHandlerTest, AnyOtherNamespaceThatIsTheDefaultFailsConstructionToo) {
    for (const std::wstring_view uri :
         {KeywordsUri, std::wstring_view(L"http://www.w3.org/2001/XMLSchema-instance"),
          std::wstring_view(L"http://www.w3.org/2001/XMLSchema")}) {
        const Dom pTicket =
            Root(L"psf:PrintTicket", Declaration(L"xmlns:psf", FrameworkUri) + Declaration(L"xmlns", uri));
        EXPECT_EQ(CodeOfConstruction(pTicket.Get()), E_FAIL) << std::wstring(uri);
    }
}

TEST_P(PrintSchemaHandlerTest, AnAttributeThatIsNoDeclarationFailsConstructionWhenItHoldsTheNamespace) {
    const Dom pTicket = Root(L"psf:PrintTicket",
                             Declaration(L"xmlns:psf", FrameworkUri) + Declaration(L"keywords", KeywordsUri));
    EXPECT_EQ(CodeOfConstruction(pTicket.Get()), E_FAIL);
}

TEST_P(PrintSchemaHandlerTest, ADocumentInWhichTheRootQueryFindsNothingFailsConstruction) {
    EXPECT_EQ(CodeOfConstruction(CreateDom().Get()), E_FAIL);
    EXPECT_EQ(CodeOfConstruction(LoadDomFromString(L"<PrintTicket/>").Get()), E_FAIL);
    EXPECT_EQ(CodeOfConstruction(LoadDomFromString(SchemaDocument(L"printTicket", L"")).Get()), E_FAIL);
    EXPECT_EQ(CodeOfConstruction(Root(L"psf:PrintTicket", L" xmlns:psf=\"urn:other\"").Get()), E_FAIL);
}

TEST_P(PrintSchemaHandlerTest, ADocumentWithoutTheKeywordPrefixConstructsAndItsFirstGetPrefixThrows) {
    const Dom pTicket = Root(L"psf:PrintTicket", Declaration(L"xmlns:psf", FrameworkUri));
    const PrintTicketHandler handler(pTicket.Get());
    for (const std::uint32_t index : {0U, 1U, 2U, 3U, 4U})
        EXPECT_EQ(ThrownCode([&] { static_cast<void>(handler.GetPrefix(SchemaNamespace{index})); }),
                  E_UNEXPECTED)
            << index;
    Bstr option;
    EXPECT_EQ(ThrownCode([&] {
                  static_cast<void>(handler.GetOptionName({SchemaNamespace::Keywords, L"PageScaling"},
                                                          SchemaNamespace::Keywords, option.Put()));
              }),
              E_UNEXPECTED);
}

TEST_P(PrintSchemaHandlerTest, AKeywordPrefixThatOnlyAFeatureDeclaresIsNotSeen) {
    std::wstring text = L"<psf:PrintTicket" + Declaration(L"xmlns:psf", FrameworkUri);
    text += L"><psf:Feature" + Declaration(L"xmlns:psk", KeywordsUri);
    const Dom pTicket = LoadDomFromString(text + L" name=\"psk:PageScaling\"/></psf:PrintTicket>");
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(ThrownCode([&] { static_cast<void>(handler.GetPrefix(SchemaNamespace::Keywords)); }),
              E_UNEXPECTED);
}

TEST_P(PrintSchemaHandlerTest, GetPrefixOf4Throws) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(ThrownCode([&] { static_cast<void>(handler.GetPrefix(SchemaNamespace{4})); }), E_INVALIDARG);
}

TEST_P(PrintSchemaHandlerTest, GetPrefixThrowsWhileThePrivatePrefixIsUnset) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    SetPrivatePrefix({});
    EXPECT_EQ(ThrownCode([&] { static_cast<void>(handler.GetPrefix(SchemaNamespace::Keywords)); }),
              E_UNEXPECTED);
}

TEST_P(PrintSchemaHandlerTest, TheFirstOfTwoPrefixesWins) {
    const Dom pTicket =
        Root(L"b:PrintTicket", Declaration(L"xmlns:a", FrameworkUri) + Declaration(L"xmlns:b", FrameworkUri) +
                                   Declaration(L"xmlns:second", KeywordsUri) +
                                   Declaration(L"xmlns:first", KeywordsUri));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(handler.GetPrefix(SchemaNamespace::Framework), L"a:");
    EXPECT_EQ(handler.GetPrefix(SchemaNamespace::Keywords), L"second:");
}

TEST_P(PrintSchemaHandlerTest, AnUnsetPrivatePrefixBecomesTheFallback) {
    SetPrivatePrefix({});
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(handler.GetPrefix(SchemaNamespace::Private), L"ns0000:");
    EXPECT_EQ(PrivatePrefix(), L"ns0000:");
}

TEST_P(PrintSchemaHandlerTest, AFailingPrefixLeavesThePrivatePrefixUnset) {
    SetPrivatePrefix({});
    EXPECT_EQ(CodeOfConstruction(Root(L"PrintTicket", Declaration(L"xmlns", FrameworkUri)).Get()), E_FAIL);
    EXPECT_EQ(PrivatePrefix(), L"");
    EXPECT_EQ(CodeOfConstruction(CreateDom().Get()), E_FAIL);
    EXPECT_EQ(PrivatePrefix(), L"ns0000:");
}

TEST_P(PrintSchemaHandlerTest, TheDocumentIsLeftSelectingByItsOwnPrefix) {
    const Dom pTicket = Root(L"f:PrintTicket", Declaration(L"xmlns:f", FrameworkUri));
    const PrintTicketHandler handler(pTicket.Get());
    EXPECT_EQ(Property(pTicket.Get(), L"SelectionLanguage"), L"XPath");
    EXPECT_EQ(Property(pTicket.Get(), L"SelectionNamespaces"),
              L"xmlns:f='" + std::wstring(FrameworkUri) + L"'");
}

TEST_P(PrintSchemaHandlerTest, FindPrefixTellsWhatIsWrongWithItsArguments) {
    const Dom pTicket = LoadDomFromString(Ticket(L"", L" xmlns:own=\"urn:own\" other=\"urn:other\""));
    const OpenHandler handler(pTicket.Get());
    EXPECT_EQ(handler.FindPrefix(L"urn:own", nullptr), E_POINTER);
    Bstr prefix(L"before");
    EXPECT_EQ(handler.FindPrefix(L"", prefix.Put()), E_INVALIDARG);
    EXPECT_EQ(prefix.Get(), nullptr);
    EXPECT_EQ(handler.FindPrefix(L"urn:absent", prefix.Put()), S_FALSE);
    EXPECT_EQ(prefix.Get(), nullptr);
    EXPECT_EQ(handler.FindPrefix(L"urn:other", prefix.Put()), E_FAIL);
    EXPECT_EQ(prefix.Get(), nullptr);
    EXPECT_EQ(handler.FindPrefix(L"urn:own", prefix.Put()), S_OK);
    EXPECT_EQ(prefix.View(), L"own:");
    EXPECT_EQ(handler.FindPrefix(L"URN:own", prefix.Put()), S_FALSE);
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
    EXPECT_EQ(Stripped(L"psk:Tray1"), L"Tray1");
    EXPECT_EQ(Stripped(L"psf:Tray1"), L"Tray1");
    EXPECT_EQ(Stripped(L"krk:Tray1"), L"Tray1");
    EXPECT_EQ(Stripped(L"ns0000:Tray1"), L"Tray1");
}

TEST_P(StripPrefixTest, AnUnknownPrefixStays) {
    EXPECT_EQ(Stripped(L"ns0001:Tray1"), L"ns0001:Tray1");
    EXPECT_EQ(Stripped(L"Tray1"), L"Tray1");
}

TEST_P(StripPrefixTest, OnlyOneIsTakenOffWhereverItStands) {
    EXPECT_EQ(Stripped(L"psk:psk:Tray1"), L"psk:Tray1");
    EXPECT_EQ(Stripped(L"krk:psk:Tray1"), L"krk:Tray1");
    EXPECT_EQ(Stripped(L"apsk:Tray1"), L"aTray1");
    EXPECT_EQ(Stripped(L"psk:"), L"");
}

TEST_P(StripPrefixTest, PrefixesBeforeTheGivenNamespaceAreNotTried) {
    EXPECT_EQ(Stripped(L"psk:Tray1", SchemaNamespace::Framework), L"psk:Tray1");
    EXPECT_EQ(Stripped(L"krk:psk:Tray1", SchemaNamespace::Private), L"psk:Tray1");
    EXPECT_EQ(Stripped(L"ns0000:Tray1", SchemaNamespace::Private), L"Tray1");
}

TEST_P(StripPrefixTest, ANullPointerAndAnEmptyTextAreRefused) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    BSTR text = nullptr;
    EXPECT_EQ(handler.StripPrefix(nullptr, SchemaNamespace::Keywords), E_POINTER);
    EXPECT_EQ(handler.StripPrefix(&text, SchemaNamespace::Keywords), E_INVALIDARG);
    EXPECT_EQ(text, nullptr);
}

TEST_ON_EACH_DOM(PrintSchemaHandlerTest);
TEST_ON_EACH_DOM(StripPrefixTest);

}  // namespace
