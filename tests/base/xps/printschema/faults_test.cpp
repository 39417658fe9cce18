// Each call of the DOM fails once, and then each allocation of a text: what the print schema classes make of
// it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "answers.h"
#include "base/logging/check.h"
#include "base/xps/printschema/inputbindata.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/pageorientationdata.h"
#include "base/xps/printschema/printablemediasizedata.h"
#include "base/xps/printschema/scalingdata.h"
#include "domfaults.h"
#include "domtext.h"
#include "failingallocation.h"
#include "handlertest.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace {

using namespace base::xps::printschema;
using base::xml::LoadDomFromString;
using platform::Bstr;
using platform::ComPtr;
using tests::Dom;
using tests::DomFaults;
using tests::DomText;
using tests::Element;
using tests::Feature;
using tests::HandlerTest;
using tests::Integer;
using tests::kInjected;
using tests::kNotFound;
using tests::Named;
using tests::Node;
using tests::ParameterInit;
using tests::ParameterRef;
using tests::ScoredProperty;
using tests::ThrownCode;
using tests::Ticket;
using tests::Value;

constexpr HRESULT kInvalidData = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);

const Qname kScaling = {SchemaNamespace::Keywords, L"PageScaling"};
const Qname kOffset = {SchemaNamespace::Keywords, L"OffsetWidth"};

std::wstring Referring(std::wstring_view name, std::wstring_view parameter) {
    return ScoredProperty(L"psk:" + std::wstring(name), ParameterRef(parameter));
}

// A ticket that holds all five settings with every value that they carry.
std::wstring FullTicket() {
    std::wstring bounds;
    int length = 100;
    for (const wchar_t* name : {L"krk:MinWidth", L"krk:MinHeight", L"krk:MaxWidth", L"krk:MaxHeight"})
        bounds += Named(L"Property", name, Integer(length++));
    return Ticket(ParameterInit(L"krk:Other", 1) + ParameterInit(L"krk:A", 11) + ParameterInit(L"krk:B", 22) +
                  Feature(L"psk:PageScaling", L"psk:CustomSquare",
                          Referring(L"OffsetWidth", L"krk:A") + Referring(L"OffsetHeight", L"krk:B") +
                              ScoredProperty(L"psk:Scale", Integer(33))) +
                  Feature(L"psk:JobInputBin", L"psk:Tray1",
                          ScoredProperty(L"psk:FeedDirection", Value(L"QName", L"psk:LongEdgeFirst"))) +
                  Feature(L"psk:PageOrientation", L"psk:Landscape") +
                  Feature(L"psk:PageMediaSize", L"psk:CustomMediaSize",
                          ScoredProperty(L"psk:MediaSizeHeight", Integer(2000)) +
                              ScoredProperty(L"psk:MediaSizeWidth", Integer(1000))) +
                  Feature(L"krk:JobPrintableMediaSize", L"krk:PrintableMediaSize", bounds));
}

class FaultTest : public HandlerTest {
  protected:
    // Runs an operation on a fresh ticket with the first call failing, then the second, until none fails.
    template <typename Attempt>
    void FailEachCall(Attempt&& attempt) {
        std::size_t nth = 1;
        for (bool hasFailed = true; hasFailed; ++nth) {
            ASSERT_LT(nth, 1000U);
            const Dom pTicket = LoadDomFromString(FullTicket());
            DomFaults faults(nth, kInjected);
            SCOPED_TRACE("call " + std::to_string(nth));
            attempt(pTicket, [&] { return hasFailed = faults.HasFailed(); });
        }
        EXPECT_GT(nth, 2U) << "no call was made that could fail";
    }

    // Either the failing call's code is thrown, or nothing is.
    template <typename Data, typename Check>
    void ReadWithEachCallFailing(Check&& check) {
        FailEachCall([&](const Dom& pTicket, auto&& hasFailed) {
            Data data;
            const HRESULT thrown = ThrownCode([&] { data.Read(pTicket.Get()); });
            const bool isFaulty = hasFailed();
            EXPECT_TRUE(thrown == S_OK || (isFaulty && thrown == kInjected));
            check(data, thrown, isFaulty);
        });
    }

    // A write that does not throw has written the feature as the last of the ticket.
    template <typename Data>
    void WriteWithEachCallFailing(const Data& data) {
        const Dom pWhole = LoadDomFromString(FullTicket());
        data.Write(pWhole.Get());
        const std::wstring whole = DomText(pWhole.Get());
        const std::wstring feature = whole.substr(whole.rfind(L"<psf:Feature "));
        int thrownCount = 0;
        FailEachCall([&](const Dom& pTicket, auto&& hasFailed) {
            const HRESULT thrown = ThrownCode([&] { data.Write(pTicket.Get()); });
            const bool isFaulty = hasFailed();
            thrownCount += thrown == kInjected;
            EXPECT_TRUE(thrown == S_OK || (isFaulty && thrown == kInjected));
            if (thrown != S_OK) return;
            const std::wstring text = DomText(pTicket.Get());
            EXPECT_TRUE(text.ends_with(feature));
            EXPECT_TRUE(isFaulty || text == whole);
        });
        EXPECT_GT(thrownCount, 0);
    }

    // An operation of the handler answers the failing call's own code.
    void AnswerEachFailure(const std::function<HRESULT(const PrintSchemaHandler&)>& operation) {
        FailEachCall([&](const Dom& pTicket, auto&& hasFailed) {
            HRESULT answered = S_FALSE;
            const HRESULT thrown = ThrownCode([&] {
                const PrintTicketHandler handler(pTicket.Get());
                answered = operation(handler);
            });
            if (thrown == S_OK) {
                EXPECT_EQ(hasFailed() ? kInjected : S_OK, answered);
            } else {
                EXPECT_TRUE(hasFailed());
                EXPECT_EQ(kInjected, thrown);
            }
        });
    }

    // An operation of the handler while one call after the other claims to have succeeded, as S_OK or as
    // S_FALSE, and yields nothing. It answers one of the codes, and the first of them at least once.
    void YieldNothingAtEachCall(std::initializer_list<HRESULT> codes,
                                const std::function<HRESULT(const PrintSchemaHandler&)>& operation) {
        for (const HRESULT claimed : {S_OK, S_FALSE}) {
            std::set<HRESULT> answers;
            std::size_t nth = 1;
            for (bool hasFailed = true; hasFailed; ++nth) {
                ASSERT_LT(nth, 1000U);
                const Dom pTicket = LoadDomFromString(FullTicket());
                const PrintTicketHandler handler(pTicket.Get());
                const DomFaults faults(nth, claimed);
                const HRESULT answered = operation(handler);
                hasFailed = faults.HasFailed();
                answers.insert(answered);
                EXPECT_NE(codes.end(), std::ranges::find(codes, answered))
                    << "call " << nth << " claims " << claimed << ": " << std::hex << answered;
            }
            EXPECT_TRUE(answers.contains(*codes.begin())) << claimed;
        }
    }
};

// What reading a ticket came to: the code or the text that was thrown, without the place that it names.
struct Reading {
    HRESULT code = S_OK;
    std::string text;
};

template <typename Data>
Reading Read(Data& data, const Dom& pTicket) {
    Reading reading;
    const std::string text = tests::MessageOf<std::exception>(
        [&] { reading.code = ThrownCode([&] { data.Read(pTicket.Get()); }); });
    if (!text.empty()) reading = {E_FAIL, text.substr(text.find(" : ") + 3)};
    return reading;
}

TEST_P(FaultTest, AFailingCallIsWhatAQueryAnswers) {
    AnswerEachFailure([](const PrintSchemaHandler& handler) {
        Node pNode;
        const HRESULT hr = handler.SelectSingleNode(L"//psf:Feature", pNode.Put());
        EXPECT_EQ(hr == S_OK, static_cast<bool>(pNode));
        return hr;
    });
    AnswerEachFailure([](const PrintSchemaHandler& handler) {
        ComPtr<IXMLDOMNodeList> pList;
        const HRESULT hr = handler.SelectNodes(L"Feature", pList.Put());
        EXPECT_EQ(hr == S_OK, static_cast<bool>(pList));
        return hr;
    });
}

TEST_P(FaultTest, AnElementWithoutANameIsNoQuestionForTheDom) {
    const Dom pTicket = LoadDomFromString(FullTicket());
    const PrintTicketHandler handler(pTicket.Get());
    const DomFaults faults(1, E_ABORT);
    ComPtr<IXMLDOMNodeList> pList;
    EXPECT_EQ(E_FAIL, handler.SelectNodes(L"", pList.Put()));
    EXPECT_FALSE(faults.HasFailed());
}

TEST_P(FaultTest, AFailingCallIsWhatAReaderAnswers) {
    const auto reading = [&](auto&& read) {
        AnswerEachFailure([&](const PrintSchemaHandler& handler) {
            Bstr text;
            const HRESULT hr = read(handler, text.Put());
            EXPECT_EQ(hr == S_OK, text.Get() != nullptr);
            return hr;
        });
    };
    reading([](const PrintSchemaHandler& handler, BSTR* pText) {
        return handler.GetValue(handler.ScoredPropertyQuery(kOffset), pText);
    });
    reading([](const PrintSchemaHandler& handler, BSTR* pText) {
        Node pOption;
        const HRESULT hr = handler.SelectSingleNode(handler.OptionQuery(kScaling), pOption.Put());
        return hr == S_OK ? handler.ReadLocalName(pOption.Get(), PropertyKind::Scored, kOffset, pText) : hr;
    });
    reading([](const PrintSchemaHandler& handler, BSTR* pText) {
        return handler.GetOptionName(kScaling, SchemaNamespace::Keywords, pText);
    });
    AnswerEachFailure([](const PrintSchemaHandler& handler) {
        std::int32_t value = 7;
        Node pOption;
        HRESULT hr = handler.SelectSingleNode(handler.OptionQuery(kScaling), pOption.Put());
        if (hr == S_OK) hr = handler.ReadInteger(pOption.Get(), PropertyKind::Scored, kOffset, &value);
        EXPECT_EQ(hr == S_OK ? 11 : 7, value);
        return hr;
    });
}

TEST_P(FaultTest, AFailingCallIsWhatABuilderAnswers) {
    AnswerEachFailure([](const PrintSchemaHandler& handler) {
        Element pProperty;
        const HRESULT hr = handler.CreateIntegerProperty(kOffset, 1, pProperty.Put());
        EXPECT_EQ(hr == S_OK, static_cast<bool>(pProperty));
        return hr;
    });
    AnswerEachFailure([](const PrintSchemaHandler& handler) {
        Element pReference;
        Element pInitializer;
        const HRESULT hr = handler.CreateIntegerParameter(L"A", 1, pReference.Put(), pInitializer.Put());
        EXPECT_EQ(hr == S_OK, static_cast<bool>(pReference));
        EXPECT_EQ(hr == S_OK, static_cast<bool>(pInitializer));
        return hr;
    });
    AnswerEachFailure([](const PrintSchemaHandler& handler) {
        Element pFeature;
        Element pOption;
        const HRESULT hr = handler.CreateFeatureOption(kScaling, kOffset, pFeature.Put(), pOption.Put());
        EXPECT_EQ(hr == S_OK, static_cast<bool>(pFeature));
        EXPECT_EQ(hr == S_OK, static_cast<bool>(pOption));
        return hr;
    });
}

TEST_P(FaultTest, AFailingCallIsWhatPlacingAndRemovingAnswer) {
    AnswerEachFailure([](const PrintSchemaHandler& handler) {
        Node pFeature;
        const HRESULT hr = handler.SelectSingleNode(handler.FeatureQuery(kScaling), pFeature.Put());
        return hr == S_OK ? handler.AppendToRoot(pFeature.Get()) : hr;
    });
    AnswerEachFailure([](const PrintSchemaHandler& handler) { return handler.RemoveFeature(kScaling); });
}

TEST_P(FaultTest, AFailedReadOfScalingKeepsItsValues) {
    ReadWithEachCallFailing<ScalingData>([](const ScalingData& data, HRESULT thrown, bool isFaulty) {
        const bool isRead = thrown == S_OK && data.GetOptionId() == ScalingData::CustomSquare;
        EXPECT_TRUE(isRead || isFaulty);
        EXPECT_EQ(isRead ? (ScalingData::Pair{11, 22}) : ScalingData::Pair(), data.GetOffset());
        EXPECT_EQ(isRead ? (ScalingData::Pair{33, 33}) : ScalingData::Pair(), data.GetScale());
    });
}

TEST_P(FaultTest, AFailedReadOfABinKeepsItsFeedDirection) {
    ReadWithEachCallFailing<InputBinData>([](const InputBinData& data, HRESULT, bool isFaulty) {
        const bool isRead = data.GetFeedDirection() == InputBinData::LongEdgeFirst;
        EXPECT_TRUE(isRead || isFaulty);
        EXPECT_TRUE(data.GetOptionId() == 5 || (data.GetOptionId() == 0 && !isRead));
    });
}

TEST_P(FaultTest, AFailedReadOfTheOrientationKeepsIt) {
    ReadWithEachCallFailing<PageOrientationData>([](const PageOrientationData& data, HRESULT, bool isFaulty) {
        const bool isRead = data.GetOptionId() == PageOrientationData::Landscape;
        EXPECT_TRUE(isRead || isFaulty);
        EXPECT_TRUE(isRead || data.GetOptionId() == PageOrientationData::Portrait);
    });
}

TEST_P(FaultTest, AFailedReadOfACustomMediaSizeSaysThatInformationLacksAndKeepsTheSize) {
    int lacking = 0;
    FailEachCall([&](const Dom& pTicket, auto&& hasFailed) {
        MediaSizeData data;
        const Reading reading = Read(data, pTicket);
        const bool isFaulty = hasFailed();
        constexpr MediaDimensions a4 = {210000, 297000};
        if (reading.code == S_OK && data.GetOptionId() == MediaSizeSchema::CustomMediaSize) {
            EXPECT_EQ((MediaDimensions{1000, 2000}), data.GetSize());
            return;
        }
        // The ticket cannot be read, the feature is not found, or its size is not.
        EXPECT_TRUE(isFaulty);
        EXPECT_EQ(a4, data.GetSize());
        if (reading.code == E_FAIL) {
            ++lacking;
            EXPECT_EQ("Unexpected print ticket format. informations lack.\n", reading.text);
            EXPECT_EQ(MediaSizeSchema::CustomMediaSize, data.GetOptionId());
        } else {
            EXPECT_TRUE(reading.code == S_OK || reading.code == kInjected) << std::hex << reading.code;
            EXPECT_EQ(MediaSizeSchema::ISOA4, data.GetOptionId());
        }
    });
    EXPECT_GT(lacking, 1);
}

TEST_P(FaultTest, AFailedReadOfAStandardMediaSizeTakesTheOptionsOwn) {
    const std::wstring ticket = Ticket(Feature(L"psk:PageMediaSize", L"psk:ISOA5",
                                               ScoredProperty(L"psk:MediaSizeHeight", Integer(2000)) +
                                                   ScoredProperty(L"psk:MediaSizeWidth", Integer(1000))));
    std::set<HRESULT> codes;
    int ownSizes = 0;
    std::size_t nth = 1;
    for (bool hasFailed = true; hasFailed; ++nth) {
        ASSERT_LT(nth, 1000U);
        const Dom pTicket = LoadDomFromString(ticket);
        MediaSizeData data;
        const DomFaults faults(nth, kInjected);
        const Reading reading = Read(data, pTicket);
        hasFailed = faults.HasFailed();
        codes.insert(reading.code);
        if (data.GetOptionId() == MediaSizeSchema::ISOA4) {
            EXPECT_TRUE(hasFailed) << "call " << nth;
            EXPECT_EQ((MediaDimensions{210000, 297000}), data.GetSize());
        } else if (hasFailed && data.GetHeight() != 2000) {
            ++ownSizes;
            EXPECT_EQ((MediaDimensions{148000, 210000}), data.GetSize()) << "call " << nth;
        } else {
            EXPECT_EQ((MediaDimensions{1000, 2000}), data.GetSize()) << "call " << nth;
        }
    }
    EXPECT_EQ((std::set<HRESULT>{S_OK, kInjected}), codes);
    EXPECT_GT(ownSizes, 1);
}

TEST_P(FaultTest, AFailedReadOfThePrintableMediaSizeMakesBothLengthsZero) {
    constexpr MediaDimensions zero = {0, 0};
    int withoutMinimum = 0;
    int withoutMaximum = 0;
    FailEachCall([&](const Dom& pTicket, auto&& hasFailed) {
        PrintableMediaSizeData data;
        const Reading reading = Read(data, pTicket);
        const bool isFaulty = hasFailed();
        const PrintableMediaRange& range = data.GetRange();
        if (reading.code == E_FAIL) {
            // The minimum without its maximum.
            ++withoutMaximum;
            EXPECT_TRUE(isFaulty);
            EXPECT_EQ("printticket is in invalid state.\n", reading.text);
            return;
        }
        EXPECT_TRUE(reading.code == S_OK || (isFaulty && reading.code == kInjected))
            << std::hex << reading.code;
        if (range.maximum == zero) {
            EXPECT_TRUE(isFaulty);
            EXPECT_EQ(zero, range.minimum);
            return;
        }
        EXPECT_EQ(S_OK, reading.code);
        EXPECT_EQ((MediaDimensions{102, 103}), range.maximum);
        if (isFaulty && range.minimum == zero) {
            ++withoutMinimum;
        } else {
            EXPECT_EQ((MediaDimensions{100, 101}), range.minimum);
        }
    });
    EXPECT_GT(withoutMinimum, 1);
    EXPECT_GT(withoutMaximum, 1);
}

TEST_P(FaultTest, AReaderToldNothingSaysThatThereIsNothing) {
    YieldNothingAtEachCall({kNotFound, S_OK, kInvalidData}, [](const PrintSchemaHandler& handler) {
        Node pOption;
        if (handler.SelectSingleNode(handler.OptionQuery(kScaling), pOption.Put()) != S_OK) return kNotFound;
        std::int32_t value = 7;
        const HRESULT hr = handler.ReadInteger(pOption.Get(), PropertyKind::Scored, kOffset, &value);
        EXPECT_EQ(hr == S_OK ? 11 : 7, value);
        return hr;
    });
    YieldNothingAtEachCall({kNotFound, S_OK, kInvalidData}, [](const PrintSchemaHandler& handler) {
        std::int32_t value = 7;
        const HRESULT hr = handler.ReadInteger(L"//psf:ParameterInit[@name = \"krk:A\"]", &value);
        EXPECT_EQ(hr == S_OK ? 11 : 7, value);
        return hr;
    });
    // An option whose name is empty is an error.
    YieldNothingAtEachCall({kNotFound, S_OK, E_INVALIDARG}, [](const PrintSchemaHandler& handler) {
        Bstr text;
        const HRESULT hr = handler.GetOptionName(kScaling, SchemaNamespace::Keywords, text.Put());
        // Without the name it is read as the text that is in it.
        EXPECT_TRUE(text.View() == (hr == S_OK ? L"CustomSquare" : L"") ||
                    (hr == S_OK && text.View() == L"33"));
        return hr;
    });
    YieldNothingAtEachCall({S_FALSE, S_OK}, [](const PrintSchemaHandler& handler) {
        Bstr text;
        return handler.GetValue(handler.ScoredPropertyQuery(kOffset), text.Put());
    });
}

TEST_P(FaultTest, ABuilderGivenNothingFails) {
    YieldNothingAtEachCall({E_FAIL, S_OK, S_FALSE}, [](const PrintSchemaHandler& handler) {
        Element pProperty;
        const HRESULT hr = handler.CreateIntegerProperty(kOffset, 1, pProperty.Put());
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(pProperty));
        return hr;
    });
    YieldNothingAtEachCall({E_FAIL, S_OK, S_FALSE}, [](const PrintSchemaHandler& handler) {
        Element pReference;
        Element pInitializer;
        const HRESULT hr = handler.CreateIntegerParameter(L"A", 1, pReference.Put(), pInitializer.Put());
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(pReference));
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(pInitializer));
        return hr;
    });
    YieldNothingAtEachCall({E_FAIL, S_OK, S_FALSE}, [](const PrintSchemaHandler& handler) {
        Element pFeature;
        Element pOption;
        const HRESULT hr = handler.CreateFeatureOption(kScaling, kOffset, pFeature.Put(), pOption.Put());
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(pFeature));
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(pOption));
        return hr;
    });
}

TEST_P(FaultTest, PlacingAndRemovingWithoutAPlaceFail) {
    YieldNothingAtEachCall({E_FAIL, S_OK, S_FALSE}, [](const PrintSchemaHandler& handler) {
        Element pFeature;
        if (FAILED(handler.CreateElement(L"Feature", L"urn:any", pFeature.Put()))) return E_FAIL;
        return handler.AppendToRoot(pFeature.Get());
    });
    YieldNothingAtEachCall({E_FAIL, S_OK, S_FALSE},
                           [](const PrintSchemaHandler& handler) { return handler.RemoveFeature(kScaling); });
}

TEST_P(FaultTest, WhatHasNoParentCannotBeRemoved) {
    for (const HRESULT claimed : {S_OK, S_FALSE}) {
        std::size_t nth = 1;
        for (bool hasFailed = true; hasFailed; ++nth) {
            ASSERT_LT(nth, 1000U);
            const Dom pTicket = LoadDomFromString(FullTicket());
            const PrintTicketHandler handler(pTicket.Get());
            const DomFaults faults(tests::DomCall::GetParentNode, nth, claimed);
            const HRESULT hr = handler.RemoveFeature(kScaling);
            hasFailed = faults.HasFailed();
            EXPECT_EQ(hasFailed ? E_FAIL : S_OK, hr) << "parent " << nth << " claims " << claimed;
        }
        EXPECT_GT(nth, 2U);
    }
}

TEST_P(FaultTest, AnOptionNameWithoutATypedValueIsNotFound) {
    const Dom pTicket = LoadDomFromString(Ticket(Named(
        L"Feature", L"psk:JobInputBin", ScoredProperty(L"psk:OptionName", Value(L"QName", L"psk:Tray1")))));
    const PrintTicketHandler handler(pTicket.Get());
    const DomFaults faults(tests::DomCall::GetNodeTypedValue, 1, S_FALSE);
    Bstr option;
    EXPECT_EQ(kNotFound, handler.GetOptionName({SchemaNamespace::Keywords, L"JobInputBin"},
                                               SchemaNamespace::Keywords, option.Put()));
    EXPECT_TRUE(faults.HasFailed());
    EXPECT_EQ(nullptr, option.Get());
}

TEST_P(FaultTest, AFailedWriteThrowsTheFailingCallsCode) {
    WriteWithEachCallFailing(PageOrientationData());
    WriteWithEachCallFailing(InputBinData());
    WriteWithEachCallFailing(MediaSizeData());
    WriteWithEachCallFailing(PrintableMediaSizeData());
    ScalingData scaling;
    scaling.SetOptionId(ScalingData::Custom);
    WriteWithEachCallFailing(scaling);
}

TEST_P(FaultTest, AFailedRemovalLeavesTheFeatureWithoutAnError) {
    FailEachCall([&](const Dom& pTicket, auto&& hasFailed) {
        const HRESULT thrown = ThrownCode([&] { PageOrientationData().Remove(pTicket.Get()); });
        const bool isFaulty = hasFailed();
        EXPECT_TRUE(thrown == S_OK || (isFaulty && thrown == kInjected));
        const bool isGone = DomText(pTicket.Get()).find(L"psk:PageOrientation") == std::wstring::npos;
        EXPECT_TRUE(isGone || isFaulty);
    });
}

// Runs an operation on a fresh ticket with the first text failing, then the second, until none fails. What
// may be thrown is that there is no memory; the outcome is checked after that, and after a success.
template <typename Attempt, typename Check>
void FailEachText(Attempt&& attempt, Check&& check) {
    std::size_t nth = 1;
    int thrownCount = 0;
    for (bool hasFailed = true; hasFailed; ++nth) {
        ASSERT_LT(nth, 1000U);
        const Dom pTicket = LoadDomFromString(FullTicket());
        SCOPED_TRACE("text " + std::to_string(nth));
        HRESULT thrown = S_OK;
        {
            const tests::FailingText faults(nth);
            const std::string noMemory =
                tests::MessageOf<std::bad_alloc>([&] { thrown = ThrownCode([&] { attempt(pTicket); }); });
            if (!noMemory.empty()) thrown = E_OUTOFMEMORY;
            hasFailed = faults.HasFailed();
        }
        thrownCount += thrown == E_OUTOFMEMORY;
        EXPECT_TRUE(thrown == S_OK || (hasFailed && thrown == E_OUTOFMEMORY)) << std::hex << thrown;
        check(pTicket, thrown, hasFailed);
    }
    EXPECT_GT(thrownCount, 0);
}

class NoMemoryTest : public HandlerTest {};

TEST_P(NoMemoryTest, AValueThatCannotBeAllocatedIsOutOfMemory) {
    FailEachText(
        [](const Dom& pTicket) {
            const PrintTicketHandler handler(pTicket.Get());
            const std::wstring query = handler.ScoredPropertyQuery(kOffset);
            BSTR text = nullptr;
            const HRESULT hr = handler.GetValue(query, &text);
            EXPECT_EQ(hr == S_OK ? L"11" : L"", Bstr::Adopt(text).View());
            base::logging::ThrowIfFailed(hr);
        },
        [](const Dom&, HRESULT thrown, bool hasFailed) { EXPECT_EQ(!hasFailed, thrown == S_OK); });
}

TEST_P(NoMemoryTest, ScalingIsReadWholeOrNotAtAll) {
    ScalingData data;
    FailEachText(
        [&](const Dom& pTicket) {
            data = ScalingData();
            data.Read(pTicket.Get());
        },
        [&](const Dom&, HRESULT thrown, bool hasFailed) {
            // Without memory it is not taken for a ticket that does not say it.
            const bool isRead = thrown == S_OK;
            EXPECT_EQ(!hasFailed, isRead);
            EXPECT_TRUE(!isRead || data.GetOptionId() == ScalingData::CustomSquare);
            EXPECT_EQ(isRead ? (ScalingData::Pair{11, 22}) : ScalingData::Pair(), data.GetOffset());
            EXPECT_EQ(isRead ? (ScalingData::Pair{33, 33}) : ScalingData::Pair(), data.GetScale());
        });
}

TEST_P(NoMemoryTest, AFeedDirectionIsReadWithItsBinOrNotAtAll) {
    InputBinData data;
    FailEachText(
        [&](const Dom& pTicket) {
            data = InputBinData();
            data.Read(pTicket.Get());
        },
        [&](const Dom&, HRESULT thrown, bool hasFailed) {
            EXPECT_EQ(!hasFailed, thrown == S_OK);
            EXPECT_EQ(!hasFailed, data.GetFeedDirection() == InputBinData::LongEdgeFirst);
            EXPECT_TRUE(data.GetOptionId() == 5 || (hasFailed && data.GetOptionId() == 0));
        });
}

TEST_P(NoMemoryTest, WritingThrowsOrWritesEverything) {
    ScalingData written;
    written.SetOptionId(ScalingData::Custom);
    written.SetOffset({1, 2});
    written.SetScale({3, 4});
    FailEachText([&](const Dom& pTicket) { written.Write(pTicket.Get(), Scope::Page); },
                 [](const Dom& pTicket, HRESULT thrown, bool) {
                     if (thrown != S_OK) return;
                     const std::wstring end =
                         Feature(L"psk:PageScaling", L"psk:Custom",
                                 Referring(L"OffsetWidth", L"krk:PageScalingOffsetWidth") +
                                     Referring(L"OffsetHeight", L"krk:PageScalingOffsetHeight") +
                                     Referring(L"ScaleWidth", L"krk:PageScalingScaleWidth") +
                                     Referring(L"ScaleHeight", L"krk:PageScalingScaleHeight")) +
                         L"</psf:PrintTicket>";
                     EXPECT_TRUE(DomText(pTicket.Get()).ends_with(end));
                 });
}

TEST_ON_EACH_DOM(FaultTest);
TEST_ON_EACH_DOM(NoMemoryTest);

}  // namespace
