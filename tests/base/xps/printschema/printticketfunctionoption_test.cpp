#include "base/xps/printschema/printticketfunctionoption.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

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
using tests::Named;
using tests::ScoredProperty;
using tests::Thrown;
using tests::ThrownCode;
using tests::Ticket;
using tests::Value;

constexpr SchemaNamespace Keywords = SchemaNamespace::Keywords;

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

constexpr Ids Unchanged = {1, 6};

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
        EXPECT_EQ(featureName, (Qname{Keywords, L"PageOrientation"}));
        EXPECT_EQ(handler.GetPrefix(Keywords), L"psk:");
        calls += "read; ";
    }
    void OnWrite(const PrintSchemaHandler&, IXMLDOMElement* pOption, Scope scope) const override {
        calls += "write " + std::to_string(static_cast<int>(scope)) + "; ";
        Element pMark;
        const HRESULT created = pTicket->createElement(platform::Bstr(L"mark").Get(), pMark.Put());
        tests::Node pAppended;
        EXPECT_EQ(created, S_OK);
        EXPECT_EQ(pOption->appendChild(pMark.Get(), pAppended.Put()), S_OK);
        ticketAtWrite = DomText(pTicket);
    }
};

TEST_P(FunctionOptionTest, AnUnsetFeatureIdMakesTheOptionIdUnreadable) {
    InputBinData data;
    data.SetOptionId(5);
    data.SetFeatureId(static_cast<std::int32_t>(0xFFFFFFFF));
    EXPECT_EQ(Thrown<InvalidOptionIdError>([&] { static_cast<void>(data.GetOptionId()); }),
              "base/xps/printschema/printticketfunctionoption.cpp(LINE) : "
              "option id has not set yet or invalid feature id has set.\n");
    EXPECT_EQ(Thrown<InvalidFeatureIdError>([&] { static_cast<void>(data.GetFeatureId()); }),
              "base/xps/printschema/printticketfunctionoption.cpp(LINE) : feature id has not set yet.\n");
    EXPECT_FALSE(data.IsSet());
    data.SetFeatureId(2);
    EXPECT_TRUE(data.IsSet());
    EXPECT_EQ(data.GetOptionId(), 5);
}

TEST_P(FunctionOptionTest, AnUnsetOptionIdLeavesTheFeatureIdReadable) {
    InputBinData data;
    data.SetOptionId(-1);
    EXPECT_EQ(data.GetFeatureId(), 0);
    EXPECT_FALSE(data.IsSet());
    EXPECT_THROW(static_cast<void>(data.GetOptionId()), InvalidOptionIdError);
    EXPECT_THROW(static_cast<void>(data.GetOptionName()), InvalidOptionIdError);
}

TEST_P(FunctionOptionTest, NamesAreThoseOfTheIds) {
    InputBinData data;
    data.SetFeatureId(2);
    data.SetOptionId(9);
    EXPECT_EQ(data.GetFeatureName(), (Qname{Keywords, L"PageInputBin"}));
    EXPECT_EQ(data.GetFeatureName(Scope::Job), (Qname{Keywords, L"JobInputBin"}));
    EXPECT_EQ(data.GetOptionName(), (Qname{Keywords, L"Tray5"}));
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
    EXPECT_EQ(copy.GetFeatureId(), 2);
    EXPECT_EQ(copy.GetOptionId(), 9);
}

TEST_P(FunctionOptionTest, AThreeScopeFeaturesScopeIsItsNames) {
    InputBinData data;
    EXPECT_EQ(data.GetScope(), Scope::Job);
    data.SetFeatureId(1);
    EXPECT_EQ(data.GetScope(), Scope::Document);
    data.SetFeatureId(2);
    EXPECT_EQ(data.GetScope(), Scope::Page);
    data.SetFeatureId(3);
    EXPECT_EQ(data.GetScope(), Scope::None);
    data.SetFeatureId(-1);
    EXPECT_EQ(data.GetScope(), Scope::None);
}

TEST_P(FunctionOptionTest, ASingleNameFeatureIsThePages) {
    PageOrientationData data;
    EXPECT_EQ(data.GetScope(), Scope::Page);
    data.SetFeatureId(1);
    EXPECT_EQ(data.GetScope(), Scope::None);
    data.SetFeatureId(-1);
    EXPECT_EQ(data.GetScope(), Scope::None);
}

TEST_P(FunctionOptionTest, AScopeOutsideTheThreeIsNotSupported) {
    const InputBinData threeNames;
    const PageOrientationData singleName;
    EXPECT_EQ(threeNames.FeatureIndexOfScope(Scope::Job), 0U);
    EXPECT_EQ(threeNames.FeatureIndexOfScope(Scope::Document), 1U);
    EXPECT_EQ(threeNames.FeatureIndexOfScope(Scope::Page), 2U);
    for (const Scope scope : {Scope::Job, Scope::Document, Scope::Page})
        EXPECT_EQ(singleName.FeatureIndexOfScope(scope), 0U);
    for (const Scope scope : {Scope::None, Scope{4}, Scope{-1}}) {
        const std::string text =
            "base/xps/printschema/printticketfunctionoption.cpp(LINE) : "
            "this scope is not supported in this feature.\n";
        EXPECT_EQ(
            Thrown<NotSupportedException>([&] { static_cast<void>(threeNames.FeatureIndexOfScope(scope)); }),
            text);
        EXPECT_EQ(
            Thrown<NotSupportedException>([&] { static_cast<void>(singleName.FeatureIndexOfScope(scope)); }),
            text);
    }
}

TEST_P(FunctionOptionTest, ReadTakesFeatureAndOption) {
    EXPECT_EQ(IdsAfterRead(Feature(L"psk:PageInputBin", L"psk:Cassette")), (Ids{2, 2}));
}

TEST_P(FunctionOptionTest, ReadingAnOptionThatIsNotInTheListLeavesTheIds) {
    EXPECT_EQ(IdsAfterRead(Feature(L"psk:JobInputBin", L"psk:Tray9")), Unchanged);
}

TEST_P(FunctionOptionTest, ReadingATicketWithoutTheFeatureLeavesTheIds) {
    EXPECT_EQ(IdsAfterRead(L""), Unchanged);
    EXPECT_EQ(IdsAfterRead(Feature(L"psk:PageScaling", L"psk:None")), Unchanged);
    EXPECT_EQ(IdsAfterRead(Named(L"Feature", L"psk:JobInputBin", L"")), Unchanged);
}

TEST_P(FunctionOptionTest, TheFirstNameOfTheListIsReadWhateverItsPlaceInTheTicket) {
    const std::wstring page = Feature(L"psk:PageInputBin", L"psk:Tray1");
    const std::wstring document = Feature(L"psk:DocumentInputBin", L"psk:Tray2");
    const std::wstring job = Feature(L"psk:JobInputBin", L"psk:Tray3");
    EXPECT_EQ(IdsAfterRead(page + document + job), (Ids{0, 7}));
    EXPECT_EQ(IdsAfterRead(page + document), (Ids{1, 6}));
    EXPECT_EQ(IdsAfterRead(page), (Ids{2, 5}));
}

TEST_P(FunctionOptionTest, AnUnknownOptionOfTheFirstNameHidesTheOthers) {
    EXPECT_EQ(
        IdsAfterRead(Feature(L"psk:JobInputBin", L"psk:Tray9") + Feature(L"psk:PageInputBin", L"psk:Tray1")),
        Unchanged);
}

TEST_P(FunctionOptionTest, AnOptionOfThePrefixOfLastResortIsReadAsTheKeywordItIsNamedAfter) {
    EXPECT_EQ(IdsAfterRead(Feature(L"psk:JobInputBin", L"ns0000:Tray2"), L" xmlns:ns0000=\"urn:oem\""),
              (Ids{0, 6}));
    EXPECT_EQ(IdsAfterRead(Feature(L"psk:JobInputBin", L"oem:Tray1"), L" xmlns:oem=\"urn:oem\""), Unchanged);
}

TEST_P(FunctionOptionTest, NamesUnderASecondPrefixOfTheSameNamespaceAreNotRead) {
    const std::wstring declaration = L" xmlns:k=\"" + std::wstring(tests::KeywordsUri) + L"\"";
    EXPECT_EQ(IdsAfterRead(Feature(L"k:JobInputBin", L"k:Tray1"), declaration), Unchanged);
    EXPECT_EQ(IdsAfterRead(Feature(L"psk:JobInputBin", L"k:Tray1"), declaration), Unchanged);
}

TEST_P(FunctionOptionTest, ADocumentThatIsNoTicketIsThrown) {
    InputBinData data;
    const Dom pCapabilities = LoadDomFromString(tests::Capabilities(L""));
    EXPECT_EQ(ThrownCode([&] { data.Read(pCapabilities.Get()); }), E_FAIL);
    EXPECT_EQ(ThrownCode([&] { data.Write(pCapabilities.Get(), Scope::Job); }), E_FAIL);
    EXPECT_EQ(ThrownCode([&] { data.Remove(pCapabilities.Get()); }), E_FAIL);
    EXPECT_EQ(ThrownCode([&] { static_cast<void>(data.IsSpecified(pCapabilities.Get())); }), E_FAIL);
    EXPECT_EQ(ThrownCode([&] { data.Read(nullptr); }), E_PENDING);
}

TEST_P(FunctionOptionTest, ATicketWithoutTheKeywordPrefixIsUnexpected) {
    InputBinData data;
    const Dom pTicket =
        LoadDomFromString(L"<psf:PrintTicket xmlns:psf=\"" + std::wstring(tests::FrameworkUri) + L"\"/>");
    EXPECT_EQ(ThrownCode([&] { data.Read(pTicket.Get()); }), E_UNEXPECTED);
    EXPECT_EQ(ThrownCode([&] { data.Write(pTicket.Get()); }), E_UNEXPECTED);
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
    EXPECT_EQ(data.calls, "feature 0; option 3; read; ");
}

TEST_P(FunctionOptionTest, ReadOfAnUnknownOptionCallsNothing) {
    RecordingData data;
    data.Read(LoadDomFromString(Ticket(Feature(L"psk:PageOrientation", L"psk:Upright"))).Get());
    EXPECT_EQ(data.calls, "");
}

TEST_P(FunctionOptionTest, WriteCallsTheHookBeforeTheFeatureIsInTheTicket) {
    const Dom pTicket = LoadDomFromString(
        Ticket(Feature(L"psk:PageOrientation", L"psk:Landscape") + Feature(L"psk:Other", L"psk:Option")));
    RecordingData data;
    data.pTicket = pTicket.Get();
    data.Write(pTicket.Get(), Scope::Document);
    EXPECT_EQ(data.calls, "write 2; ");
    EXPECT_EQ(data.ticketAtWrite, Ticket(Feature(L"psk:Other", L"psk:Option")));
    EXPECT_EQ(DomText(pTicket.Get()), Ticket(Feature(L"psk:Other", L"psk:Option") +
                                             Feature(L"psk:PageOrientation", L"psk:Portrait", L"<mark/>")));
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
    EXPECT_EQ(DomText(pTicket.Get()), Ticket(Feature(L"psk:DocumentInputBin", L"psk:AutoSelect")));
}

TEST_P(FunctionOptionTest, WriteWithoutAScopeNeedsAFeatureIdOfOne) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    InputBinData data;
    for (const std::int32_t id : {-1, 3}) {
        data.SetFeatureId(id);
        EXPECT_THROW(data.Write(pTicket.Get()), NotSupportedException) << id;
    }
    EXPECT_EQ(DomText(pTicket.Get()), Ticket(L""));
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
    EXPECT_EQ(DomText(pTicket.Get()), before);
}

TEST_P(FunctionOptionTest, WriteReplacesTheFeatureOfItsNameAlone) {
    const Dom pTicket = LoadDomFromString(
        Ticket(Feature(L"psk:JobInputBin", L"psk:Tray1") + Feature(L"psk:PageInputBin", L"psk:Tray2")));
    InputBinData data;
    data.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    data.Write(pTicket.Get(), Scope::Job);
    EXPECT_EQ(DomText(pTicket.Get()), Ticket(Feature(L"psk:PageInputBin", L"psk:Tray2") +
                                             Feature(L"psk:JobInputBin", L"psk:AutoSelect")));
}

TEST_P(FunctionOptionTest, RemoveTakesEveryNameOutOfTheTicket) {
    const Dom pTicket = LoadDomFromString(
        Ticket(Feature(L"psk:JobInputBin", L"psk:Tray1") + Feature(L"psk:Other", L"psk:Option") +
               Feature(L"psk:PageInputBin", L"psk:Tray2") + Feature(L"krk:DocumentInputBin", L"psk:Tray2")));
    InputBinData().Remove(pTicket.Get());
    EXPECT_EQ(DomText(pTicket.Get()),
              Ticket(Feature(L"psk:Other", L"psk:Option") + Feature(L"krk:DocumentInputBin", L"psk:Tray2")));
}

class AppendingData : public PageOrientationData {
  public:
    using PageOrientationData::AppendIntegerProperty;
};

TEST_P(FunctionOptionTest, AppendIntegerPropertyAppendsToTheParent) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const PrintTicketHandler handler(pTicket.Get());
    Element pRoot;
    ASSERT_EQ(pTicket->get_documentElement(pRoot.Put()), S_OK);
    AppendingData::AppendIntegerProperty(handler, pRoot.Get(), L"MinWidth", -1, SchemaNamespace::Private);
    AppendingData::AppendIntegerProperty(handler, pRoot.Get(), L"P", 2, Keywords);
    EXPECT_EQ(DomText(pTicket.Get()), Ticket(Named(L"Property", L"krk:MinWidth", Integer(-1)) +
                                             Named(L"Property", L"psk:P", Integer(2))));
}

TEST_P(FunctionOptionTest, AppendIntegerPropertyThrowsWhatFails) {
    const Dom pTicket = LoadDomFromString(Ticket(L"text"));
    const PrintTicketHandler handler(pTicket.Get());
    tests::Node pText;
    ASSERT_EQ(handler.SelectSingleNode(L"//text()", pText.Put()), S_OK);
    EXPECT_EQ(
        ThrownCode([&] { AppendingData::AppendIntegerProperty(handler, pText.Get(), L"", 1, Keywords); }),
        E_INVALIDARG);
    EXPECT_TRUE(FAILED(
        ThrownCode([&] { AppendingData::AppendIntegerProperty(handler, pText.Get(), L"P", 1, Keywords); })));
}

TEST_P(FunctionOptionTest, PageOrientationIsPortraitByDefaultAndHasNoHooks) {
    const PageOrientationData data;
    EXPECT_EQ(data.GetFeatureId(), 0);
    EXPECT_EQ(data.GetOptionId(), PageOrientationData::Portrait);
    EXPECT_EQ(&data.GetFeatureNames(), &PageOrientationFeatureNames::Instance());
    EXPECT_EQ(&data.GetOptionNames(), &PageOrientationOptionNames::Instance());
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    data.Write(pTicket.Get());
    EXPECT_EQ(DomText(pTicket.Get()), Ticket(Feature(L"psk:PageOrientation", L"psk:Portrait")));
}

TEST_ON_EACH_DOM(FunctionOptionTest);

}  // namespace
