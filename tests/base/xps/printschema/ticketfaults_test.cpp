// Each call of the DOM fails once: what the merging and the validation of tickets make of it.

#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "answers.h"
#include "base/logging/exceptions.h"
#include "base/xml/xmlmarger.h"
#include "base/xml/xmlutility.h"
#include "base/xps/printschema/imageableareahandler.h"
#include "base/xps/printschema/printticketprovider.h"
#include "base/xps/printschema/printticketstructurecomparator.h"
#include "callrecorder.h"
#include "domfaults.h"
#include "domtext.h"
#include "fakeplatformprovider.h"
#include "handlertest.h"
#include "mockparts.h"
#include "mockstreams.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/variant.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace {

using base::xml::LoadDomFromString;
using base::xml::XmlMarger;
using base::xps::printschema::PrintTicketProvider;
using base::xps::printschema::PrintTicketStructureComparator;
using platform::ComPtr;
using tests::Dom;
using tests::DomCall;
using tests::DomFaults;
using tests::DomText;
using tests::Element;
using tests::kInjected;
using tests::MakeMock;
using tests::Saves;
using tests::ThrownCode;
using tests::Ticket;

const std::wstring kWiderTicket = Ticket(tests::Feature(L"psk:A", L"psk:X"));
const std::wstring kDelta = Ticket(tests::Feature(L"psk:A", L"psk:Y") + tests::Feature(L"krk:B", L"krk:Z"),
                                   L" xmlns:krk=\"urn:krk\"");

// Runs an operation with the first call failing, then the second, until none fails. The operation is given a
// fault that it starts itself, and returns whether it was met.
template <typename Attempt>
void FailEachCall(Attempt&& attempt) {
    std::size_t nth = 1;
    while (attempt(nth)) ASSERT_LT(++nth, 10'000U);
    EXPECT_GT(nth, 1U) << "no call was made that could fail";
}

class TicketFaultTest : public tests::EachDomTest {};

TEST_P(TicketFaultTest, TheComparatorThrowsTheCodeOfEveryFailingCall) {
    FailEachCall([](std::size_t nth) {
        const Dom pFirst = LoadDomFromString(kWiderTicket);
        const Dom pSecond = LoadDomFromString(kWiderTicket);
        Element pFirstRoot;
        Element pSecondRoot;
        EXPECT_EQ(S_OK, pFirst->get_documentElement(pFirstRoot.Put()));
        EXPECT_EQ(S_OK, pSecond->get_documentElement(pSecondRoot.Put()));
        tests::Node pFeature;
        tests::Node pSameFeature;
        EXPECT_EQ(S_OK, pFirstRoot->get_firstChild(pFeature.Put()));
        EXPECT_EQ(S_OK, pSecondRoot->get_firstChild(pSameFeature.Put()));

        DomFaults faults(nth, kInjected, Saves::Counted);
        bool isSame = false;
        const HRESULT thrown = ThrownCode([&] {
            isSame = PrintTicketStructureComparator().IsSameNode(pFeature.Get(), pSameFeature.Get());
        });
        EXPECT_EQ(faults.HasFailed() ? kInjected : S_OK, thrown) << "call " << nth;
        EXPECT_EQ(!faults.HasFailed(), isSame);
        return faults.HasFailed();
    });
}

TEST_P(TicketFaultTest, AMergeThrowsTheCodeOrDoesWithoutADeclarationAndNeverChangesTheTarget) {
    const PrintTicketStructureComparator comparator;
    const auto merge = [&](const Dom& pBase, const Dom& pTarget) {
        return ThrownCode([&] { XmlMarger(comparator).Merge(pBase.Get(), pTarget.Get()); });
    };
    const Dom pWhole = LoadDomFromString(kWiderTicket);
    ASSERT_EQ(S_OK, merge(pWhole, LoadDomFromString(kDelta)));
    const std::wstring whole = DomText(pWhole.Get());
    EXPECT_NE(std::wstring::npos, whole.find(L"krk:B"));

    FailEachCall([&](std::size_t nth) {
        const Dom pBase = LoadDomFromString(kWiderTicket);
        const Dom pTarget = LoadDomFromString(kDelta);
        bool hasFailed = false;
        HRESULT thrown = S_OK;
        {
            const DomFaults faults(nth, kInjected, Saves::Counted);
            thrown = merge(pBase, pTarget);
            hasFailed = faults.HasFailed();
        }
        EXPECT_TRUE(thrown == S_OK || (hasFailed && thrown == kInjected)) << "call " << nth;
        EXPECT_EQ(kDelta, DomText(pTarget.Get()));
        const std::wstring text = DomText(pBase.Get());
        if (!hasFailed) {
            EXPECT_EQ(whole, text);
        }
        if (thrown == S_OK) {
            EXPECT_NE(std::wstring::npos, text.find(L"<psf:Feature name=\"krk:B\">"));
        }
        return hasFailed;
    });
}

// Every two nodes are the same to it, and it asks the DOM nothing.
class AnyPair : public base::xml::XmlNodeComparator {
  public:
    bool IsSameNode(IXMLDOMNode*, IXMLDOMNode*) const override { return true; }
};

constexpr wchar_t kUndeclared[] = L"<r><a/></r>";
constexpr wchar_t kDeclaring[] = L"<r xmlns:k=\"urn:k\"><a xmlns:j=\"urn:j\"/></r>";

TEST_P(TicketFaultTest, ADeclarationThatCannotBeReadOrMadeFailsTheMerge) {
    for (const DomCall call :
         {DomCall::GetNodeName, DomCall::GetText, DomCall::CreateAttribute, DomCall::PutValue}) {
        FailEachCall([&](std::size_t nth) {
            const Dom pBase = LoadDomFromString(kUndeclared);
            const Dom pTarget = LoadDomFromString(kDeclaring);
            const DomFaults faults(call, nth, kInjected);
            const HRESULT thrown =
                ThrownCode([&] { XmlMarger(AnyPair()).Merge(pBase.Get(), pTarget.Get()); });
            EXPECT_EQ(faults.HasFailed() ? kInjected : S_OK, thrown)
                << "call " << nth << " of kind " << static_cast<int>(call);
            return faults.HasFailed();
        });
    }
}

// The base after a merge with declarations while the nth call of a kind fails; empty when none does.
std::wstring DeclaredInSpiteOf(DomCall call, std::size_t nth) {
    const Dom pBase = LoadDomFromString(kUndeclared);
    const Dom pTarget = LoadDomFromString(kDeclaring);
    {
        const DomFaults faults(call, nth, kInjected);
        EXPECT_EQ(S_OK, ThrownCode([&] { XmlMarger(AnyPair()).Merge(pBase.Get(), pTarget.Get()); }))
            << "call " << nth << " of kind " << static_cast<int>(call);
        if (!faults.HasFailed()) return {};
    }
    return DomText(pBase.Get());
}

TEST_P(TicketFaultTest, ADeclarationThatIsRefusedIsLeftOut) {
    std::vector<std::wstring> texts;
    FailEachCall([&](std::size_t nth) {
        const std::wstring text = DeclaredInSpiteOf(DomCall::SetNamedItem, nth);
        if (!text.empty()) texts.push_back(text);
        return !text.empty();
    });
    EXPECT_EQ((std::vector<std::wstring>{L"<r><a xmlns:j=\"urn:j\"/></r>", L"<r xmlns:k=\"urn:k\"><a/></r>"}),
              texts);
}

TEST_P(TicketFaultTest, ANodeWhoseAttributesCannotBeHadDeclaresNothing) {
    std::set<std::wstring> texts;
    for (const DomCall call : {DomCall::GetAttributes, DomCall::NextNode}) {
        for (std::size_t nth = 1;; ++nth) {
            ASSERT_LT(nth, 100U);
            const std::wstring text = DeclaredInSpiteOf(call, nth);
            if (text.empty()) break;
            texts.insert(text);
        }
    }
    EXPECT_TRUE(texts.contains(L"<r><a xmlns:j=\"urn:j\"/></r>"));
    EXPECT_TRUE(texts.contains(L"<r xmlns:k=\"urn:k\"><a/></r>"));
}

TEST_P(TicketFaultTest, ADeclarationThatTheBaseHasAlreadyIsNotSetAgain) {
    const Dom pBase = LoadDomFromString(kDeclaring);
    const Dom pTarget = LoadDomFromString(kDeclaring);
    const DomFaults faults(DomCall::CreateAttribute, 1, kInjected);
    XmlMarger(AnyPair()).Merge(pBase.Get(), pTarget.Get());
    EXPECT_FALSE(faults.HasFailed());
    EXPECT_EQ(kDeclaring, DomText(pBase.Get()));
}

TEST_P(TicketFaultTest, AMapThatCannotBeResetStandsAtItsStart) {
    for (std::size_t nth = 1;; ++nth) {
        ASSERT_LT(nth, 100U);
        const std::wstring text = DeclaredInSpiteOf(DomCall::Reset, nth);
        if (text.empty()) break;
        EXPECT_EQ(kDeclaring, text);
    }
}

TEST_P(TicketFaultTest, AChildThatTheListDoesNotYieldIsAnUnexpectedState) {
    FailEachCall([](std::size_t nth) {
        const Dom pBase = LoadDomFromString(kUndeclared);
        const Dom pTarget = LoadDomFromString(kDeclaring);
        const DomFaults faults(DomCall::GetItem, nth, S_OK);
        const std::string thrown = tests::Thrown<std::runtime_error>(
            [&] { XmlMarger(AnyPair()).Merge(pBase.Get(), pTarget.Get()); });
        EXPECT_EQ(
            faults.HasFailed() ? "base/xml/xmlmarger.cpp(LINE) : Unexpected state.\n" : "nothing was thrown",
            thrown)
            << "item " << nth;
        return faults.HasFailed();
    });
}

TEST_P(TicketFaultTest, LoadingAndSavingThrowTheCode) {
    const Dom pDom = LoadDomFromString(kWiderTicket);
    FailEachCall([&](std::size_t nth) {
        const platform::Variant source(static_cast<IUnknown*>(pDom.Get()));
        const DomFaults faults(nth, kInjected, Saves::Counted);
        const HRESULT thrown = ThrownCode([&] { static_cast<void>(base::xml::LoadDom(source.Get())); });
        EXPECT_EQ(faults.HasFailed() ? kInjected : S_OK, thrown);
        return faults.HasFailed();
    });
    FailEachCall([&](std::size_t nth) {
        const DomFaults faults(nth, kInjected, Saves::Counted);
        const HRESULT thrown = ThrownCode([&] { static_cast<void>(base::xml::DomToString(pDom.Get())); });
        EXPECT_EQ(faults.HasFailed() ? kInjected : S_OK, thrown);
        return faults.HasFailed();
    });
}

class ProviderFaultTest : public TicketFaultTest {
  protected:
    void Open() {
        const auto base = MakeMock<tests::MockReadStream>(m_calls, tests::Bytes(kWiderTicket));
        ASSERT_EQ(S_OK, m_provider.Open(base.Get(), platform::Bstr(L"Printer").Get(), nullptr));
    }
    Dom Get(EPrintTicketScope scope) {
        Dom pTicket;
        EXPECT_EQ(S_OK, m_provider.GetTicket(scope, pTicket.Put()));
        return pTicket;
    }

    tests::CallRecorder m_calls;
    tests::FakePlatformProvider m_platform{m_calls};
    PrintTicketProvider m_provider;
};

TEST_P(ProviderFaultTest, AFailedMergeOfAPartsTicketLeavesTheScopesTicketAsItWas) {
    Open();
    m_platform.merge = [](const std::string&) { return tests::Bytes(kWiderTicket); };
    FailEachCall([&](std::size_t nth) {
        EXPECT_EQ(S_OK, m_provider.MergeTicket(kPTJobScope, nullptr, nullptr));
        const Dom before = Get(kPTJobScope);
        const auto ticket = MakeMock<tests::MockPrintTicket>(m_calls, L"/ticket", tests::Bytes(kDelta));
        const auto part = MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/job",
                                                                     ComPtr<IPartPrintTicket>(ticket.Get()));
        bool hasFailed = false;
        HRESULT hr = S_OK;
        HRESULT thrown = S_OK;
        {
            const DomFaults faults(nth, kInjected, Saves::Counted);
            thrown = ThrownCode([&] { hr = m_provider.SetJobTicket(part.Get(), nullptr); });
            hasFailed = faults.HasFailed();
        }
        const HRESULT failure = FAILED(thrown) ? thrown : hr;
        EXPECT_TRUE(failure == S_OK || (hasFailed && failure == kInjected)) << "call " << nth;
        const Dom after = Get(kPTJobScope);
        EXPECT_EQ(FAILED(failure), after.Get() == before.Get()) << "call " << nth;
        if (FAILED(failure)) {
            EXPECT_EQ(kWiderTicket, DomText(after.Get()));
        }
        return hasFailed;
    });
    EXPECT_NE(std::wstring::npos, DomText(Get(kPTJobScope).Get()).find(L"krk:B"));
}

TEST_P(ProviderFaultTest, AFailedMergeOfAnExtraTicketLeavesACopyOfTheParent) {
    Open();
    const Dom extra = LoadDomFromString(kDelta);
    FailEachCall([&](std::size_t nth) {
        const auto part = MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/job");
        bool hasFailed = false;
        HRESULT hr = S_OK;
        HRESULT thrown = S_OK;
        {
            // What was handed out is not shared with the next part, which therefore gets a copy of its own.
            static_cast<void>(Get(kPTJobScope));
            const DomFaults faults(nth, kInjected, Saves::Counted);
            thrown = ThrownCode([&] { hr = m_provider.SetJobTicket(part.Get(), extra.Get()); });
            hasFailed = faults.HasFailed();
        }
        const HRESULT failure = FAILED(thrown) ? thrown : hr;
        EXPECT_TRUE(failure == S_OK || (hasFailed && failure == kInjected)) << "call " << nth;
        if (FAILED(failure)) {
            EXPECT_EQ(kWiderTicket, DomText(Get(kPTJobScope).Get())) << "call " << nth;
        }
        return hasFailed;
    });
}

TEST_P(ProviderFaultTest, CapabilitiesFailWithTheCodeOrAsEmptyAndDoWithoutRewinding) {
    Open();
    const std::wstring whole = tests::Capabilities(L"");
    m_platform.capabilities = tests::Bytes(whole);
    const Dom pTicket = LoadDomFromString(kWiderTicket);
    int rewindsRefused = 0;
    FailEachCall([&](std::size_t nth) {
        Dom pCapabilities;
        bool hasFailed = false;
        HRESULT hr = S_OK;
        {
            const DomFaults faults(nth, kInjected, Saves::Counted);
            hr = m_provider.GetPrintCapabilities(pTicket.Get(), pCapabilities.Put());
            hasFailed = faults.HasFailed();
        }
        EXPECT_TRUE(hr == S_OK || (hasFailed && (hr == kInjected || hr == E_FAIL))) << "call " << nth;
        EXPECT_EQ(hr == S_OK, static_cast<bool>(pCapabilities));
        if (hr == S_OK) {
            EXPECT_EQ(whole, DomText(pCapabilities.Get()));
            rewindsRefused += hasFailed;
        }
        return hasFailed;
    });
    // Of the ticket's stream, and of the capabilities' stream before and after it is written.
    EXPECT_EQ(3, rewindsRefused);
}

TEST_P(ProviderFaultTest, AnImageableAreaIsFoundWholeOrTheCodeIsReturnedOrThrown) {
    Open();
    const auto number = [](const wchar_t* name) {
        return tests::Property(L"psk:" + std::wstring(name), tests::Integer(7));
    };
    m_platform.capabilities = tests::Bytes(tests::Capabilities(tests::Property(
        L"psk:PageImageableSize",
        number(L"ImageableSizeWidth") + number(L"ImageableSizeHeight") +
            tests::Property(L"psk:ImageableArea", number(L"OriginWidth") + number(L"OriginHeight") +
                                                      number(L"ExtentWidth") + number(L"ExtentHeight")))));
    EXPECT_EQ(kWiderTicket, DomText(Get(kPTPageScope).Get()));
    FailEachCall([&](std::size_t nth) {
        base::xps::printschema::ImageableAreaHandler handler(m_provider);
        base::xps::printschema::ImageableAreaInfo area;
        const DomFaults faults(nth, kInjected, Saves::Counted);
        HRESULT hr = S_OK;
        const HRESULT thrown = ThrownCode([&] {
            hr = handler.GetImageableArea({L"ISOA4", 9, {210000, 297000}}, area);
        });
        const HRESULT failure = FAILED(thrown) ? thrown : hr;
        EXPECT_TRUE(failure == S_OK || (faults.HasFailed() && (failure == kInjected || failure == E_FAIL)))
            << "call " << nth << " " << std::hex << failure;
        if (failure == S_OK) {
            EXPECT_EQ(7, area.extent.height);
        }
        return faults.HasFailed();
    });
}

TEST_ON_EACH_DOM(TicketFaultTest);
TEST_ON_EACH_DOM(ProviderFaultTest);

}  // namespace
