#include "base/xps/filterpipeline/defaultprinttickets.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "base/logging/exceptions.h"
#include "domtest.h"
#include "mockproperties.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"
#include "platform/variant.h"
#include "thrown.h"

namespace base::xps::filterpipeline {
namespace {

using platform::Bstr;
using platform::ComPtr;
using tests::MakeMock;

// The document as one line an element, in document order: its depth as dots, its qualified name, its
// attributes as they stand, the text of one without elements.
using Lines = std::vector<std::wstring>;

std::wstring AttributesOf(IXMLDOMNode* pElement) {
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    EXPECT_EQ(S_OK, pElement->get_attributes(pAttributes.Put()));
    std::wstring text;
    ComPtr<IXMLDOMNode> pAttribute;
    while (pAttributes->nextNode(pAttribute.Put()) == S_OK) {
        Bstr name;
        Bstr value;
        EXPECT_EQ(S_OK, pAttribute->get_nodeName(name.Put()));
        EXPECT_EQ(S_OK, pAttribute->get_text(value.Put()));
        text.append(L" ").append(name.View()).append(L"=").append(value.View());
    }
    return text;
}

void Describe(IXMLDOMNode* pElement, std::size_t depth, Lines& lines) {
    Bstr name;
    EXPECT_EQ(S_OK, pElement->get_nodeName(name.Put()));
    lines.push_back(std::wstring(depth, L'.').append(name.View()) + AttributesOf(pElement));
    const std::size_t own = lines.size() - 1;
    ComPtr<IXMLDOMNode> pChild;
    for (HRESULT hr = pElement->get_firstChild(pChild.Put()); hr == S_OK;) {
        DOMNodeType type = NODE_INVALID;
        EXPECT_EQ(S_OK, pChild->get_nodeType(&type));
        if (type == NODE_ELEMENT) {
            Describe(pChild.Get(), depth + 1, lines);
        } else {
            Bstr text;
            EXPECT_EQ(S_OK, pChild->get_text(text.Put()));
            lines[own].append(L" ").append(text.View());
        }
        ComPtr<IXMLDOMNode> pNext;
        hr = pChild->get_nextSibling(pNext.Put());
        pChild = pNext;
    }
}

Lines Describe(IXMLDOMDocument2* pDocument) {
    ComPtr<IXMLDOMElement> pRoot;
    EXPECT_EQ(S_OK, pDocument->get_documentElement(pRoot.Put()));
    Lines lines;
    Describe(pRoot.Get(), 0, lines);
    return lines;
}

// The five values that the tickets differ in.
struct Differences {
    std::wstring jobCompress;
    std::wstring threshold;
    std::wstring alignementBytes;
    std::wstring jobTeskType;
    std::wstring jobBitsPerPixel;
};
const Differences kType1 = {L"krk:Type4", L"24641536", L"8", L"krk:Type1", L"krk:Bits8"};
const Differences kType76 = {L"krk:Type3", L"77594624", L"256", L"krk:TypeL", L"krk:Bits2"};
const Differences kType7 = {L"krk:Type2", L"52428800", L"8", L"krk:Type7", L"krk:Bits8"};

Lines Expected(const Differences& of) {
    const std::wstring integer = L"...psf:Value xsi:type=xsd:integer ";
    return {
        L"psf:PrintTicket xmlns:xsd=http://www.w3.org/2001/XMLSchema"
        L" xmlns:xsi=http://www.w3.org/2001/XMLSchema-instance"
        L" xmlns:psf=http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework"
        L" xmlns:psk=http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords"
        L" xmlns:krk=http://schemas.pagevalidate.example/printing/ptpc/2008/11",
        L".psf:Feature name=psk:PageScaling",
        L"..psf:Option name=psk:FitApplicationMediaSizeToPageMediaSize",
        L".psf:Feature name=krk:JobIcmMode",
        L"..psf:Option name=krk:QvAcct",
        L".psf:Feature name=krk:JobCompress",
        L"..psf:Option name=" + of.jobCompress,
        L"...psf:Property name=krk:Threshold",
        L"." + integer + of.threshold,
        L"...psf:Property name=krk:AlignementBytes",
        L"." + integer + of.alignementBytes,
        L".psf:Feature name=krk:PagePrintableMediaSize",
        L"..psf:Option name=krk:PrintableMediaSize",
        L"...psf:Property name=krk:MinWidth",
        L"." + integer + L"76200",
        L"...psf:Property name=krk:MinHeight",
        L"." + integer + L"127000",
        L"...psf:Property name=krk:MaxWidth",
        L"." + integer + L"215900",
        L"...psf:Property name=krk:MaxHeight",
        L"." + integer + L"355600",
        L".psf:Feature name=krk:JobRtabContentType",
        L"..psf:Option name=krk:RtabIndex",
        L"...psf:Property name=krk:Image",
        L"." + integer + L"1",
        L"...psf:Property name=krk:Text",
        L"." + integer + L"1",
        L"...psf:Property name=krk:Graphics",
        L"." + integer + L"1",
        L".psf:Feature name=krk:JobTeskType",
        L"..psf:Option name=" + of.jobTeskType,
        L".psf:Feature name=krk:JobTeskVersion",
        L"..psf:Option name=krk:Version1",
        L".psf:Feature name=krk:JobBitsPerPixel",
        L"..psf:Option name=" + of.jobBitsPerPixel,
    };
}

class DefaultPrintTicketTest : public tests::DomTest {
  protected:
    // The ticket for a driver with a property bag.
    Lines TicketFor(std::optional<LONG> teskType) {
        const auto pDriverBag = MakeMock<tests::MockPrinterPropertyBag>(m_calls);
        if (teskType) pDriverBag->SetNumber(L"KoraTeskType", *teskType);
        m_pBag->SetObject(L"DriverPropertyBag", pDriverBag.Get());
        return Ticket();
    }
    Lines Ticket() {
        const Lines lines = Describe(CreateDefaultPrintTicket(m_pBag.Get()).Get());
        EXPECT_EQ(1u, m_pBag->References());
        return lines;
    }

    tests::CallRecorder m_calls;
    ComPtr<tests::MockPropertyBag> m_pBag = MakeMock<tests::MockPropertyBag>(m_calls);
};

TEST_F(DefaultPrintTicketTest, KoraTeskType1YieldsTheType1Template) {
    EXPECT_EQ(Expected(kType1), TicketFor(1));
}

TEST_F(DefaultPrintTicketTest, KoraTeskType7YieldsTheType7Template) {
    EXPECT_EQ(Expected(kType7), TicketFor(7));
}

TEST_F(DefaultPrintTicketTest, KoraTeskType76YieldsTheType76TemplateWithBits2AndAnAlignmentOf256) {
    EXPECT_EQ(Expected(kType76), TicketFor(76));
}

TEST_F(DefaultPrintTicketTest, KoraTeskTypeOfAnyOtherValueYieldsTheType7Template) {
    for (const LONG other : {0L, 2L, 6L, 8L, 75L, 77L, -1L, -7L, 0x7FFFFFFFL}) {
        EXPECT_EQ(Expected(kType7), TicketFor(other)) << other;
    }
}

TEST_F(DefaultPrintTicketTest, ADriverPropertyBagThatLacksKoraTeskTypeYieldsTheType7Template) {
    EXPECT_EQ(Expected(kType7), TicketFor(std::nullopt));
    EXPECT_EQ((std::vector<std::string>{"GetProperty DriverPropertyBag", "GetInt32 KoraTeskType"}),
              m_calls.Calls());
}

TEST_F(DefaultPrintTicketTest, AMissingOrUnusableDriverPropertyBagYieldsTheType7Template) {
    EXPECT_EQ(Expected(kType7), Ticket());
    m_pBag->SetObject(L"DriverPropertyBag", MakeMock<tests::MockUnknown>().Get());
    EXPECT_EQ(Expected(kType7), Ticket());
    m_pBag->SetObject(L"DriverPropertyBag", nullptr);
    EXPECT_EQ(Expected(kType7), Ticket());
    m_pBag->SetText(L"DriverPropertyBag", L"76");
    EXPECT_EQ(Expected(kType7), Ticket());
}

TEST_F(DefaultPrintTicketTest, AFailedReadKeepsType7WhateverItLeftBehind) {
    m_calls.Fail("GetInt32 KoraTeskType", E_FAIL);
    EXPECT_EQ(Expected(kType7), TicketFor(76));
    m_calls.Fail("GetProperty DriverPropertyBag", E_FAIL);
    EXPECT_EQ(Expected(kType7), TicketFor(76));
}

TEST_F(DefaultPrintTicketTest, EachCallMakesADocumentOfItsOwn) {
    const auto pFirst = CreateDefaultPrintTicket(m_pBag.Get());
    const auto pSecond = CreateDefaultPrintTicket(m_pBag.Get());
    EXPECT_NE(pFirst.Get(), pSecond.Get());
}

TEST_F(DefaultPrintTicketTest, TheTextStartsWithTheDeclarationAndOneSpace) {
    const std::wstring start =
        LR"(<?xml version="1.0" encoding="UTF-8" ?> <psf:PrintTicket xmlns:xsd="http://www.w3.org/2001/XMLSchema" )"
        LR"(xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" )"
        LR"(xmlns:psf="http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework" )"
        LR"(xmlns:psk="http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords" )"
        LR"(xmlns:krk="http://schemas.pagevalidate.example/printing/ptpc/2008/11">)";
    for (const LONG teskType : {1L, 7L, 76L}) {
        EXPECT_EQ(start, DefaultPrintTicketText(teskType).substr(0, start.size())) << teskType;
    }
}

TEST(DefaultPrintTicketTextTest, ADocumentThatCannotBeMadeIsAFailureWithTheDomsCode) {
    tests::CallRecorder calls;
    const auto pBag = MakeMock<tests::MockPropertyBag>(calls);
    // A thread outside every apartment gets no document.
    CoUninitialize();
    const HRESULT thrown =
        tests::ThrownCode([&] { static_cast<void>(CreateDefaultPrintTicket(pBag.Get())); });
    EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    EXPECT_EQ(CO_E_NOTINITIALIZED, thrown);
}

}  // namespace
}  // namespace base::xps::filterpipeline
