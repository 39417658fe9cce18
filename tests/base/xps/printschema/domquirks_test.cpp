#include "domquirks.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "base/xml/xmlmarger.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/printticketstructurecomparator.h"
#include "domtext.h"
#include "handlertest.h"
#include "ticketmarkup.h"

namespace {

using namespace base::xps::printschema;
using base::xml::LoadDomFromString;
using platform::Bstr;
using tests::Dom;
using tests::DomText;
using tests::Feature;
using tests::Named;
using tests::Ticket;

class DomQuirksTest : public tests::HandlerTest {
  protected:
    Dom m_pTicket = LoadDomFromString(
        Ticket(Named(L"Property", L"psk:P", L"<psf:Value>text</psf:Value>") +
               Named(L"Feature", L"psk:JobInputBin",
                     Named(L"ScoredProperty", L"psk:OptionName", L"<psf:Value>psk:Tray1</psf:Value>"))));
    const PrintTicketHandler m_handler{m_pTicket.Get()};
    const std::wstring m_query = m_handler.PropertyQuery({SchemaNamespace::Keywords, L"P"});
};

VARIANT Number(LONG value) {
    VARIANT number = {};
    number.vt = VT_I4;
    number.lVal = value;
    return number;
}

TEST_P(DomQuirksTest, AValueTypedAsANumberIsReadAsItsText) {
    const tests::TypedValue typed(Number(-210000));
    Bstr text;
    EXPECT_EQ(S_OK, m_handler.GetValue(m_query, text.Put()));
    EXPECT_EQ(L"-210000", text.View());
    std::int32_t value = 0;
    EXPECT_EQ(S_OK, m_handler.ReadInteger(m_query, &value));
    EXPECT_EQ(-210000, value);
}

TEST_P(DomQuirksTest, AnOptionNameTypedAsANumberIsItsText) {
    const tests::TypedValue typed(Number(42));
    Bstr option;
    EXPECT_EQ(S_OK, m_handler.GetOptionName({SchemaNamespace::Keywords, L"JobInputBin"},
                                            SchemaNamespace::Keywords, option.Put()));
    EXPECT_EQ(L"42", option.View());
}

TEST_P(DomQuirksTest, AValueTypedAsAFractionIsItsTextAndNoInteger) {
    VARIANT fraction = {};
    fraction.vt = VT_R8;
    fraction.dblVal = 2.5;
    const tests::TypedValue typed(fraction);
    Bstr text;
    EXPECT_EQ(S_OK, m_handler.GetValue(m_query, text.Put()));
    EXPECT_EQ(L"2.5", text.View());
    std::int32_t value = 7;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), m_handler.ReadInteger(m_query, &value));
    EXPECT_EQ(7, value);
}

TEST_P(DomQuirksTest, AValueThatHasNoTextIsTheConversionsFailure) {
    VARIANT null = {};
    null.vt = VT_NULL;
    const tests::TypedValue typed(null);
    Bstr text(L"before");
    EXPECT_EQ(DISP_E_TYPEMISMATCH, m_handler.GetValue(m_query, text.Put()));
    EXPECT_EQ(nullptr, text.Get());
    std::int32_t value = 7;
    EXPECT_EQ(DISP_E_TYPEMISMATCH, m_handler.ReadInteger(m_query, &value));
    EXPECT_EQ(7, value);
}

TEST_P(DomQuirksTest, AnEmptyValueIsNoInteger) {
    const tests::TypedValue typed(VARIANT{});
    std::int32_t value = 7;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), m_handler.ReadInteger(m_query, &value));
    EXPECT_EQ(7, value);
}

TEST_P(DomQuirksTest, PrefixesAreFoundFromTheFirstDeclarationOnWhereverTheMapStands) {
    const tests::WalkedMaps walked;
    const PrintTicketHandler handler(m_pTicket.Get());
    EXPECT_EQ(L"psf:", handler.GetPrefix(SchemaNamespace::Framework));
    EXPECT_EQ(L"psk:", handler.GetPrefix(SchemaNamespace::Keywords));
    MediaSizeData mediaSize;
    mediaSize.Write(m_pTicket.Get());
    EXPECT_NE(std::wstring::npos, DomText(m_pTicket.Get()).find(L"xsi:type=\"xsd:integer\""));
}

TEST_P(DomQuirksTest, DeclarationsAreMergedFromTheFirstOnWhereverTheMapStands) {
    const Dom pBase = LoadDomFromString(L"<r/>");
    const Dom pTarget = LoadDomFromString(L"<r xmlns:j=\"urn:j\" xmlns:k=\"urn:k\"/>");
    const PrintTicketStructureComparator comparator;
    {
        const tests::WalkedMaps walked;
        base::xml::XmlMarger(comparator).Merge(pBase.Get(), pTarget.Get());
    }
    EXPECT_EQ(L"<r xmlns:j=\"urn:j\" xmlns:k=\"urn:k\"/>", DomText(pBase.Get()));
}

TEST_ON_EACH_DOM(DomQuirksTest);

}  // namespace
