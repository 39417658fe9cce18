#include "base/xps/printschema/printticketfunctionoption.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "base/logging/exceptions.h"
#include "base/xps/printschema/inputbindata.h"
#include "base/xps/printschema/pageorientationdata.h"
#include "base/xps/printschema/scalingdata.h"
#include "domtext.h"
#include "handlertest.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace {

using namespace base::xps::printschema;
using base::exception::InvalidFeatureIdError;
using base::exception::InvalidOptionIdError;
using base::exception::NotSupportedException;
using base::xml::LoadDomFromString;
using tests::Dom;
using tests::DomText;
using tests::Element;
using tests::Feature;
using tests::HandlerTest;
using tests::Integer;
using tests::kKeywords;
using tests::Named;
using tests::ScoredProperty;
using tests::Thrown;
using tests::ThrownCode;
using tests::Ticket;
using tests::Value;

class FunctionOptionTest : public HandlerTest {};

// The ids after reading a ticket with the given body into an object that holds DocumentInputBin and Tray2.
struct Ids {
    std::int32_t feature;
    std::int32_t option;

    bool operator==(const Ids&) const = default;
};

[[maybe_unused]] void PrintTo(const Ids& ids, std::ostream* pStream) {
    *pStream << ids.feature << ", " << ids.option;
}

Ids IdsAfterRead(std::wstring_view body, std::wstring_view declarations = {}) {
    InputBinData data;
    data.SetFeatureId(1);
    data.SetOptionId(6);
    data.Read(LoadDomFromString(Ticket(body, declarations)).Get());
    return {data.GetFeatureId(), data.GetOptionId()};
}

constexpr Ids kUnchanged = {1, 6};

// Notes what its hooks and setters are called with.
class RecordingData : public PageOrientationData {
  public:
    void SetFeatureId(std::int32_t id) override {
        calls += "feature " + std::to_string(id) + "; ";
        PageOrientationData::SetFeatureId(id);
    }
    void SetOptionId(std::int32_t id) override {
        calls += "option " + std::to_string(id) + "; ";
        PageOrientationData::SetOptionId(id);
    }

    mutable std::string calls;
    mutable std::wstring ticketAtWrite;
    IXMLDOMDocument2* pTicket = nullptr;

  protected:
    void OnRead(const PrintSchemaHandler& handler, const Qname& featureName, IXMLDOMNode* pOption) override {
        EXPECT_NE(nullptr, pOption);
        EXPECT_EQ((Qname{kKeywords, L"PageOrientation"}), featureName);
        EXPECT_EQ(L"psk:", handler.GetPrefix(kKeywords));
        calls += "read; ";
    }
    void OnWrite(const PrintSchemaHandler&, IXMLDOMElement* pOption, Scope scope) const override {
        calls += "write " + std::to_string(static_cast<int>(scope)) + "; ";
        Element pMark;
        const HRESULT created = pTicket->createElement(platform::Bstr(L"mark").Get(), pMark.Put());
        tests::Node pAppended;
        EXPECT_EQ(S_OK, created);
        EXPECT_EQ(S_OK, pOption->appendChild(pMark.Get(), pAppended.Put()));
        ticketAtWrite = DomText(pTicket);
    }
};

TEST_P(FunctionOptionTest, AnUnsetFeatureIdMakesTheOptionIdUnreadable) {
    InputBinData data;
    data.SetOptionId(5);
    data.SetFeatureId(static_cast<std::int32_t>(0xFFFFFFFF));
    EXPECT_EQ(
        "base/xps/printschema/printticketfunctionoption.cpp(LINE) : "
        "option id has not set yet or invalid feature id has set.\n",
        Thrown<InvalidOptionIdError>([&] { static_cast<void>(data.GetOptionId()); }));
    EXPECT_EQ("base/xps/printschema/printticketfunctionoption.cpp(LINE) : feature id has not set yet.\n",
              Thrown<InvalidFeatureIdError>([&] { static_cast<void>(data.GetFeatureId()); }));
    EXPECT_FALSE(data.IsSet());
    data.SetFeatureId(2);
    EXPECT_TRUE(data.IsSet());
    EXPECT_EQ(5, data.GetOptionId());
}

TEST_P(FunctionOptionTest, AnUnsetOptionIdLeavesTheFeatureIdReadable) {
    InputBinData data;
    data.SetOptionId(-1);
    EXPECT_EQ(0, data.GetFeatureId());
    EXPECT_FALSE(data.IsSet());
    EXPECT_THROW(static_cast<void>(data.GetOptionId()), InvalidOptionIdError);
    EXPECT_THROW(static_cast<void>(data.GetOptionName()), InvalidOptionIdError);
}

TEST_P(FunctionOptionTest, NamesAreThoseOfTheIds) {
    InputBinData data;
    data.SetFeatureId(2);
    data.SetOptionId(9);
    EXPECT_EQ((Qname{kKeywords, L"PageInputBin"}), data.GetFeatureName());
    EXPECT_EQ((Qname{kKeywords, L"JobInputBin"}), data.GetFeatureName(Scope::Job));
    EXPECT_EQ((Qname{kKeywords, L"Tray5"}), data.GetOptionName());
    data.SetFeatureId(3);
    EXPECT_THROW(static_cast<void>(data.GetFeatureName()), std::invalid_argument);
    data.SetFeatureId(-1);
    EXPECT_THROW(static_cast<void>(data.GetFeatureName()), InvalidFeatureIdError);
}

TEST_P(FunctionOptionTest, ACopyHasTheIds) {
    InputBinData data;
    data.SetFeatureId(2);
    data.SetOptionId(9);
    const InputBinData copy = data;
    EXPECT_EQ(2, copy.GetFeatureId());
    EXPECT_EQ(9, copy.GetOptionId());
}

TEST_P(FunctionOptionTest, AThreeScopeFeaturesScopeIsItsNames) {
    InputBinData data;
    EXPECT_EQ(Scope::Job, data.GetScope());
    data.SetFeatureId(1);
    EXPECT_EQ(Scope::Document, data.GetScope());
    data.SetFeatureId(2);
    EXPECT_EQ(Scope::Page, data.GetScope());
    data.SetFeatureId(3);
    EXPECT_EQ(Scope::None, data.GetScope());
    data.SetFeatureId(-1);
    EXPECT_EQ(Scope::None, data.GetScope());
}

TEST_P(FunctionOptionTest, ASingleNameFeatureIsThePages) {
    PageOrientationData data;
    EXPECT_EQ(Scope::Page, data.GetScope());
    data.SetFeatureId(1);
    EXPECT_EQ(Scope::None, data.GetScope());
    data.SetFeatureId(-1);
    EXPECT_EQ(Scope::None, data.GetScope());
}

TEST_P(FunctionOptionTest, AScopeOutsideTheThreeIsNotSupported) {
    const InputBinData threeNames;
    const PageOrientationData singleName;
    EXPECT_EQ(0U, threeNames.FeatureIndexOfScope(Scope::Job));
    EXPECT_EQ(1U, threeNames.FeatureIndexOfScope(Scope::Document));
    EXPECT_EQ(2U, threeNames.FeatureIndexOfScope(Scope::Page));
    for (const Scope scope : {Scope::Job, Scope::Document, Scope::Page})
        EXPECT_EQ(0U, singleName.FeatureIndexOfScope(scope));
    for (const Scope scope : {Scope::None, Scope{4}, Scope{-1}}) {
        const std::string text =
            "base/xps/printschema/printticketfunctionoption.cpp(LINE) : "
            "this scope is not supported in this feature.\n";
        EXPECT_EQ(text, Thrown<NotSupportedException>(
                            [&] { static_cast<void>(threeNames.FeatureIndexOfScope(scope)); }));
        EXPECT_EQ(text, Thrown<NotSupportedException>(
                            [&] { static_cast<void>(singleName.FeatureIndexOfScope(scope)); }));
    }
}

TEST_P(FunctionOptionTest, ReadTakesFeatureAndOption) {
    EXPECT_EQ((Ids{2, 2}), IdsAfterRead(Feature(L"psk:PageInputBin", L"psk:Cassette")));
}

TEST_P(FunctionOptionTest, ReadingAnOptionThatIsNotInTheListLeavesTheIds) {
    EXPECT_EQ(kUnchanged, IdsAfterRead(Feature(L"psk:JobInputBin", L"psk:Tray9")));
}

TEST_P(FunctionOptionTest, ReadingATicketWithoutTheFeatureLeavesTheIds) {
    EXPECT_EQ(kUnchanged, IdsAfterRead(L""));
    EXPECT_EQ(kUnchanged, IdsAfterRead(Feature(L"psk:PageScaling", L"psk:None")));
    EXPECT_EQ(kUnchanged, IdsAfterRead(Named(L"Feature", L"psk:JobInputBin", L"")));
}

TEST_P(FunctionOptionTest, TheFirstNameOfTheListIsReadWhateverItsPlaceInTheTicket) {
    const std::wstring page = Feature(L"psk:PageInputBin", L"psk:Tray1");
    const std::wstring document = Feature(L"psk:DocumentInputBin", L"psk:Tray2");
    const std::wstring job = Feature(L"psk:JobInputBin", L"psk:Tray3");
    EXPECT_EQ((Ids{0, 7}), IdsAfterRead(page + document + job));
    EXPECT_EQ((Ids{1, 6}), IdsAfterRead(page + document));
    EXPECT_EQ((Ids{2, 5}), IdsAfterRead(page));
}

TEST_P(FunctionOptionTest, AnUnknownOptionOfTheFirstNameHidesTheOthers) {
    EXPECT_EQ(kUnchanged, IdsAfterRead(Feature(L"psk:JobInputBin", L"psk:Tray9") +
                                       Feature(L"psk:PageInputBin", L"psk:Tray1")));
}

TEST_P(FunctionOptionTest, AnOptionOfThePrefixOfLastResortIsReadAsTheKeywordItIsNamedAfter) {
    EXPECT_EQ((Ids{0, 6}),
              IdsAfterRead(Feature(L"psk:JobInputBin", L"ns0000:Tray2"), L" xmlns:ns0000=\"urn:oem\""));
    EXPECT_EQ(kUnchanged, IdsAfterRead(Feature(L"psk:JobInputBin", L"oem:Tray1"), L" xmlns:oem=\"urn:oem\""));
}

TEST_P(FunctionOptionTest, NamesUnderASecondPrefixOfTheSameNamespaceAreNotRead) {
    const std::wstring declaration = L" xmlns:k=\"" + std::wstring(tests::kKeywordsUri) + L"\"";
    EXPECT_EQ(kUnchanged, IdsAfterRead(Feature(L"k:JobInputBin", L"k:Tray1"), declaration));
    EXPECT_EQ(kUnchanged, IdsAfterRead(Feature(L"psk:JobInputBin", L"k:Tray1"), declaration));
}

TEST_P(FunctionOptionTest, ADocumentThatIsNoTicketIsThrown) {
    InputBinData data;
    const Dom pCapabilities = LoadDomFromString(tests::Capabilities(L""));
    EXPECT_EQ(E_FAIL, ThrownCode([&] { data.Read(pCapabilities.Get()); }));
    EXPECT_EQ(E_FAIL, ThrownCode([&] { data.Write(pCapabilities.Get(), Scope::Job); }));
    EXPECT_EQ(E_FAIL, ThrownCode([&] { data.Remove(pCapabilities.Get()); }));
    EXPECT_EQ(E_FAIL, ThrownCode([&] { static_cast<void>(data.IsSpecified(pCapabilities.Get())); }));
    EXPECT_EQ(E_PENDING, ThrownCode([&] { data.Read(nullptr); }));
}

TEST_P(FunctionOptionTest, ATicketWithoutTheKeywordPrefixIsUnexpected) {
    InputBinData data;
    const Dom pTicket =
        LoadDomFromString(L"<psf:PrintTicket xmlns:psf=\"" + std::wstring(tests::kFrameworkUri) + L"\"/>");
    EXPECT_EQ(E_UNEXPECTED, ThrownCode([&] { data.Read(pTicket.Get()); }));
    EXPECT_EQ(E_UNEXPECTED, ThrownCode([&] { data.Write(pTicket.Get()); }));
}

TEST_P(FunctionOptionTest, IsSpecifiedWithAnyOptionUnderAnyName) {
    const auto isSpecified = [](std::wstring_view body) {
        return InputBinData().IsSpecified(LoadDomFromString(Ticket(body)).Get());
    };
    EXPECT_TRUE(isSpecified(Feature(L"psk:JobInputBin", L"psk:Tray1")));
    EXPECT_TRUE(isSpecified(Feature(L"psk:PageInputBin", L"psk:Unknown")));
    EXPECT_FALSE(isSpecified(L""));
    EXPECT_FALSE(isSpecified(Named(L"Feature", L"psk:JobInputBin", L"")));
    EXPECT_FALSE(isSpecified(Feature(L"psk:PageScaling", L"psk:None")));
}

TEST_P(FunctionOptionTest, IsSpecifiedThroughTheOptionNameOfEitherNamespace) {
    const auto isSpecified = [](std::wstring_view property) {
        const std::wstring option = ScoredProperty(property, Value(L"QName", L"krk:Own"));
        const Dom pTicket = LoadDomFromString(Ticket(Named(L"Feature", L"psk:PageScaling", option)));
        return ScalingData().IsSpecified(pTicket.Get());
    };
    EXPECT_TRUE(isSpecified(L"psk:OptionName"));
    EXPECT_TRUE(isSpecified(L"krk:OptionName"));
    EXPECT_FALSE(isSpecified(L"oem:OptionName"));
}

TEST_P(FunctionOptionTest, ReadSetsTheFeatureThenTheOptionThenCallsTheHook) {
    RecordingData data;
    data.Read(LoadDomFromString(Ticket(Feature(L"psk:PageOrientation", L"psk:ReversePortrait"))).Get());
    EXPECT_EQ("feature 0; option 3; read; ", data.calls);
}

TEST_P(FunctionOptionTest, ReadOfAnUnknownOptionCallsNothing) {
    RecordingData data;
    data.Read(LoadDomFromString(Ticket(Feature(L"psk:PageOrientation", L"psk:Upright"))).Get());
    EXPECT_EQ("", data.calls);
}

TEST_P(FunctionOptionTest, WriteCallsTheHookBeforeTheFeatureIsInTheTicket) {
    const Dom pTicket = LoadDomFromString(
        Ticket(Feature(L"psk:PageOrientation", L"psk:Landscape") + Feature(L"psk:Other", L"psk:Option")));
    RecordingData data;
    data.pTicket = pTicket.Get();
    data.Write(pTicket.Get(), Scope::Document);
    EXPECT_EQ("write 2; ", data.calls);
    EXPECT_EQ(Ticket(Feature(L"psk:Other", L"psk:Option")), data.ticketAtWrite);
    EXPECT_EQ(Ticket(Feature(L"psk:Other", L"psk:Option") +
                     Feature(L"psk:PageOrientation", L"psk:Portrait", L"<mark/>")),
              DomText(pTicket.Get()));
}

TEST_P(FunctionOptionTest, SeveralFeaturesWrittenInTurnAreWrittenAsEachForItself) {
    const std::wstring before = Ticket(Feature(L"psk:PageOrientation", L"psk:Landscape"));
    const Dom pTicket = LoadDomFromString(before);
    const PrintTicketHandler ticket(pTicket.Get());
    PageOrientationData().WriteTo(ticket, Scope::Page);
    InputBinData().WriteTo(ticket, Scope::Document);
    const Dom pOther = LoadDomFromString(before);
    PageOrientationData().Write(pOther.Get(), Scope::Page);
    InputBinData().Write(pOther.Get(), Scope::Document);
    EXPECT_EQ(DomText(pOther.Get()), DomText(pTicket.Get()));
    EXPECT_NE(before, DomText(pTicket.Get()));
}

TEST_P(FunctionOptionTest, WriteWithoutAScopeUsesTheNameOfTheFeatureId) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    InputBinData data;
    data.SetFeatureId(1);
    data.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    data.Write(pTicket.Get());
    EXPECT_EQ(Ticket(Feature(L"psk:DocumentInputBin", L"psk:AutoSelect")), DomText(pTicket.Get()));
}

TEST_P(FunctionOptionTest, WriteWithoutAScopeNeedsAFeatureIdOfOne) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    InputBinData data;
    for (const std::int32_t id : {-1, 3}) {
        data.SetFeatureId(id);
        EXPECT_THROW(data.Write(pTicket.Get()), NotSupportedException) << id;
    }
    EXPECT_EQ(Ticket(L""), DomText(pTicket.Get()));
}

TEST_P(FunctionOptionTest, WriteWithUnsetIdsThrowsBeforeAnythingIsRemoved) {
    const std::wstring before = Ticket(Feature(L"psk:PageOrientation", L"psk:Landscape"));
    const Dom pTicket = LoadDomFromString(before);
    PageOrientationData data;
    data.SetOptionId(-1);
    EXPECT_THROW(data.Write(pTicket.Get(), Scope::Page), InvalidOptionIdError);
    data.SetOptionId(4);
    EXPECT_THROW(data.Write(pTicket.Get(), Scope::Page), std::invalid_argument);
    data.SetOptionId(0);
    EXPECT_THROW(data.Write(pTicket.Get(), Scope::None), NotSupportedException);
    EXPECT_EQ(before, DomText(pTicket.Get()));
}

TEST_P(FunctionOptionTest, WriteReplacesTheFeatureOfItsNameAlone) {
    const Dom pTicket = LoadDomFromString(
        Ticket(Feature(L"psk:JobInputBin", L"psk:Tray1") + Feature(L"psk:PageInputBin", L"psk:Tray2")));
    InputBinData data;
    data.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    data.Write(pTicket.Get(), Scope::Job);
    EXPECT_EQ(
        Ticket(Feature(L"psk:PageInputBin", L"psk:Tray2") + Feature(L"psk:JobInputBin", L"psk:AutoSelect")),
        DomText(pTicket.Get()));
}

TEST_P(FunctionOptionTest, RemoveTakesEveryNameOutOfTheTicket) {
    const Dom pTicket = LoadDomFromString(
        Ticket(Feature(L"psk:JobInputBin", L"psk:Tray1") + Feature(L"psk:Other", L"psk:Option") +
               Feature(L"psk:PageInputBin", L"psk:Tray2") + Feature(L"krk:DocumentInputBin", L"psk:Tray2")));
    InputBinData().Remove(pTicket.Get());
    EXPECT_EQ(Ticket(Feature(L"psk:Other", L"psk:Option") + Feature(L"krk:DocumentInputBin", L"psk:Tray2")),
              DomText(pTicket.Get()));
}

class AppendingData : public PageOrientationData {
  public:
    using PageOrientationData::AppendIntegerProperty;
};

TEST_P(FunctionOptionTest, AppendIntegerPropertyAppendsToTheParent) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    Element pRoot;
    ASSERT_EQ(S_OK, pTicket->get_documentElement(pRoot.Put()));
    AppendingData::AppendIntegerProperty(handler, pRoot.Get(), L"MinWidth", -1, SchemaNamespace::Private);
    AppendingData::AppendIntegerProperty(handler, pRoot.Get(), L"P", 2, kKeywords);
    EXPECT_EQ(
        Ticket(Named(L"Property", L"krk:MinWidth", Integer(-1)) + Named(L"Property", L"psk:P", Integer(2))),
        DomText(pTicket.Get()));
}

TEST_P(FunctionOptionTest, AppendIntegerPropertyThrowsWhatFails) {
    const Dom pTicket = LoadDomFromString(Ticket(L"text"));
    const PrintTicketHandler handler(pTicket.Get());
    tests::Node pText;
    ASSERT_EQ(S_OK, handler.SelectSingleNode(L"//text()", pText.Put()));
    EXPECT_EQ(E_INVALIDARG, ThrownCode([&] {
                  AppendingData::AppendIntegerProperty(handler, pText.Get(), L"", 1, kKeywords);
              }));
    EXPECT_TRUE(FAILED(
        ThrownCode([&] { AppendingData::AppendIntegerProperty(handler, pText.Get(), L"P", 1, kKeywords); })));
}

TEST_P(FunctionOptionTest, PageOrientationIsPortraitByDefaultAndHasNoHooks) {
    const PageOrientationData data;
    EXPECT_EQ(0, data.GetFeatureId());
    EXPECT_EQ(PageOrientationData::Portrait, data.GetOptionId());
    EXPECT_EQ(&PageOrientationFeatureNames::Instance(), &data.GetFeatureNames());
    EXPECT_EQ(&PageOrientationOptionNames::Instance(), &data.GetOptionNames());
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    data.Write(pTicket.Get());
    EXPECT_EQ(Ticket(Feature(L"psk:PageOrientation", L"psk:Portrait")), DomText(pTicket.Get()));
}

TEST_ON_EACH_DOM(FunctionOptionTest);

}  // namespace
