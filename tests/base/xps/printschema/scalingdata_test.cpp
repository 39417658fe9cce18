#include "base/xps/printschema/scalingdata.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "answers.h"
#include "base/logging/exceptions.h"
#include "domtext.h"
#include "handlertest.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace base::xps::printschema {

[[maybe_unused]] static void PrintTo(const ScalingData::Pair& pair, std::ostream* pStream) {
    *pStream << pair.width << " x " << pair.height;
}

}  // namespace base::xps::printschema

namespace {

using namespace base::xps::printschema;
using base::exception::NotSupportedException;
using base::xml::LoadDomFromString;
using tests::Dom;
using tests::DomText;
using tests::Feature;
using tests::HandlerTest;
using tests::Integer;
using tests::kNoInteger;
using tests::kNotFound;
using tests::ParameterInit;
using tests::ParameterRef;
using tests::ScoredProperty;
using tests::Thrown;
using tests::ThrownCode;
using tests::Ticket;
using tests::Value;

using Pair = ScalingData::Pair;

constexpr std::int32_t kNone = 6;
constexpr std::int32_t kPrivateOption = 7;

class ScalingDataTest : public HandlerTest {};

ScalingData Custom(const Pair& offset, const Pair& scale, std::int32_t option = ScalingData::Custom) {
    ScalingData data;
    data.SetOptionId(option);
    data.SetOffset(offset);
    data.SetScale(scale);
    return data;
}

ScalingData CustomSquare(const Pair& offset, const Pair& scale) {
    return Custom(offset, scale, ScalingData::CustomSquare);
}

std::wstring Literal(std::wstring_view name, int value) {
    return ScoredProperty(L"psk:" + std::wstring(name), Integer(value));
}

// A scored property with its value as a parameter, as the program writes it.
std::wstring Referring(std::wstring_view name) {
    return ScoredProperty(L"psk:" + std::wstring(name),
                          ParameterRef(L"krk:PageScaling" + std::wstring(name)));
}

std::wstring Initializing(std::wstring_view name, int value) {
    return ParameterInit(L"krk:PageScaling" + std::wstring(name), value);
}

void Read(ScalingData& data, std::wstring_view body) { data.Read(LoadDomFromString(Ticket(body)).Get()); }

TEST_P(ScalingDataTest, FitsTheMediaSizeAndHoldsFourZerosByDefault) {
    const ScalingData data;
    EXPECT_EQ(0, data.GetFeatureId());
    EXPECT_EQ(ScalingData::FitApplicationMediaSizeToPageMediaSize, data.GetOptionId());
    EXPECT_EQ(L"FitApplicationMediaSizeToPageMediaSize", data.GetOptionName().localName);
    EXPECT_EQ((Pair{0, 0}), data.GetOffset());
    EXPECT_EQ((Pair{0, 0}), data.GetScale());
    EXPECT_EQ(&PageScalingFeatureNames::Instance(), &data.GetFeatureNames());
    EXPECT_EQ(&PageScalingOptionNames::Instance(), &data.GetOptionNames());
}

TEST_P(ScalingDataTest, IsThePagesFeatureAtEveryScope) {
    ScalingData data;
    EXPECT_EQ(Scope::Page, data.GetScope());
    data.SetFeatureId(1);
    EXPECT_EQ(Scope::None, data.GetScope());
    data.SetFeatureId(-1);
    EXPECT_EQ(Scope::None, data.GetScope());
    for (const Scope scope : {Scope::Job, Scope::Document, Scope::Page})
        EXPECT_EQ(0U, data.FeatureIndexOfScope(scope));
    EXPECT_THROW(static_cast<void>(data.FeatureIndexOfScope(Scope::None)), NotSupportedException);
}

TEST_P(ScalingDataTest, ATicketSelectingNoneReadIntoAFreshObjectYieldsFourZeros) {
    ScalingData data;
    Read(data, Feature(L"psk:PageScaling", L"psk:None"));
    EXPECT_EQ(kNone, data.GetOptionId());
    EXPECT_EQ((Pair{0, 0}), data.GetOffset());
    EXPECT_EQ((Pair{0, 0}), data.GetScale());
}

TEST_P(ScalingDataTest, ATicketSelectingNoneReadIntoACustomObjectKeepsTheHeights) {
    ScalingData data = Custom({100, 200}, {50, 60});
    Read(data, Feature(L"psk:PageScaling", L"psk:None"));
    EXPECT_EQ(kNone, data.GetOptionId());
    EXPECT_EQ((Pair{0, 200}), data.GetOffset());
    EXPECT_EQ((Pair{0, 60}), data.GetScale());
}

TEST_P(ScalingDataTest, ATicketWithoutScalingKeepsEverything) {
    ScalingData data = Custom({100, 200}, {50, 60});
    Read(data, L"");
    EXPECT_EQ(ScalingData::Custom, data.GetOptionId());
    EXPECT_EQ((Pair{100, 200}), data.GetOffset());
    EXPECT_EQ((Pair{50, 60}), data.GetScale());
}

TEST_P(ScalingDataTest, CustomSquareReadsOneScaleForBoth) {
    ScalingData data;
    Read(data, Feature(L"psk:PageScaling", L"psk:CustomSquare",
                       Literal(L"OffsetWidth", 1) + Literal(L"OffsetHeight", 2) + Literal(L"Scale", 150) +
                           Literal(L"ScaleWidth", 3) + Literal(L"ScaleHeight", 4)));
    EXPECT_EQ(ScalingData::CustomSquare, data.GetOptionId());
    EXPECT_EQ((Pair{1, 2}), data.GetOffset());
    EXPECT_EQ((Pair{150, 150}), data.GetScale());
}

TEST_P(ScalingDataTest, CustomReadsLiteralValuesInAnyOrder) {
    ScalingData data;
    Read(data, Feature(L"psk:PageScaling", L"psk:Custom",
                       Literal(L"ScaleHeight", 60) + Literal(L"ScaleWidth", 50) +
                           Literal(L"OffsetHeight", 200) + Literal(L"OffsetWidth", 100)));
    EXPECT_EQ((Pair{100, 200}), data.GetOffset());
    EXPECT_EQ((Pair{50, 60}), data.GetScale());
}

TEST_P(ScalingDataTest, CustomReadsParametersOfAnyName) {
    ScalingData data;
    Read(data, ParameterInit(L"psk:PageScalingOffsetWidth", -5) + ParameterInit(L"oem:Y", 6) +
                   Feature(L"psk:PageScaling", L"psk:Custom",
                           ScoredProperty(L"psk:OffsetWidth", ParameterRef(L"psk:PageScalingOffsetWidth")) +
                               ScoredProperty(L"psk:OffsetHeight", ParameterRef(L"oem:Y")) +
                               Referring(L"ScaleWidth") + Literal(L"ScaleHeight", 8)) +
                   Initializing(L"ScaleWidth", 7));
    EXPECT_EQ((Pair{-5, 6}), data.GetOffset());
    EXPECT_EQ((Pair{7, 8}), data.GetScale());
}

TEST_P(ScalingDataTest, ACustomOptionWithoutOneOfItsValuesIsAnErrorAndKeepsThePreviousOnes) {
    const std::wstring_view names[] = {L"OffsetWidth", L"OffsetHeight", L"ScaleWidth", L"ScaleHeight"};
    for (const std::wstring_view missing : names) {
        std::wstring content;
        for (const std::wstring_view name : names)
            if (name != missing) content += Literal(name, 1);
        ScalingData data = CustomSquare({100, 200}, {50, 60});
        EXPECT_EQ(kNotFound,
                  ThrownCode([&] { Read(data, Feature(L"psk:PageScaling", L"psk:Custom", content)); }))
            << std::wstring(missing);
        EXPECT_EQ(ScalingData::Custom, data.GetOptionId());
        EXPECT_EQ((Pair{100, 200}), data.GetOffset());
        EXPECT_EQ((Pair{50, 60}), data.GetScale());
    }
}

TEST_P(ScalingDataTest, CustomSquareWithoutOneOfItsValuesIsAnErrorAndKeepsThePreviousOnes) {
    const std::wstring_view names[] = {L"OffsetWidth", L"OffsetHeight", L"Scale"};
    for (const std::wstring_view missing : names) {
        std::wstring content;
        for (const std::wstring_view name : names)
            if (name != missing) content += Literal(name, 1);
        ScalingData data = Custom({100, 200}, {50, 60});
        EXPECT_EQ(kNotFound,
                  ThrownCode([&] { Read(data, Feature(L"psk:PageScaling", L"psk:CustomSquare", content)); }))
            << std::wstring(missing);
        EXPECT_EQ((Pair{100, 200}), data.GetOffset());
        EXPECT_EQ((Pair{50, 60}), data.GetScale());
    }
}

TEST_P(ScalingDataTest, AValueThatIsNoIntegerIsAnError) {
    ScalingData data;
    EXPECT_EQ(kNoInteger, ThrownCode([&] {
                  Read(data, Feature(L"psk:PageScaling", L"psk:CustomSquare",
                                     Literal(L"OffsetWidth", 1) + Literal(L"OffsetHeight", 2) +
                                         ScoredProperty(L"psk:Scale", Value(L"integer", L"150 %"))));
              }));
    EXPECT_EQ((Pair{0, 0}), data.GetScale());
}

TEST_P(ScalingDataTest, AFailingReadNamesItsPlace) {
    ScalingData data;
    const std::string text = Thrown<base::exception::HresultError>(
        [&] { Read(data, Feature(L"psk:PageScaling", L"psk:Custom")); });
    EXPECT_EQ(0U, text.find("base/xps/printschema/scalingdata.cpp(LINE) : ")) << text;
}

TEST_P(ScalingDataTest, ValuesOfAnotherFeatureAreNotTaken) {
    ScalingData data;
    const std::wstring values =
        Literal(L"OffsetWidth", 1) + Literal(L"OffsetHeight", 2) + Literal(L"Scale", 3);
    EXPECT_EQ(kNotFound, ThrownCode([&] {
                  Read(data, Feature(L"psk:JobNUp", L"psk:Option", values) +
                                 Feature(L"psk:PageScaling", L"psk:CustomSquare"));
              }));
    Read(data, Feature(L"psk:JobNUp", L"psk:Option", Literal(L"Scale", 9)) +
                   Feature(L"psk:PageScaling", L"psk:CustomSquare", values));
    EXPECT_EQ((Pair{3, 3}), data.GetScale());
}

TEST_P(ScalingDataTest, WritingCustomProducesFourPropertiesAndFourInitializersInOrder) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    Custom({100, 200}, {50, 60}).Write(pTicket.Get(), Scope::Page);
    EXPECT_EQ(Ticket(Initializing(L"OffsetWidth", 100) + Initializing(L"OffsetHeight", 200) +
                     Initializing(L"ScaleWidth", 50) + Initializing(L"ScaleHeight", 60) +
                     Feature(L"psk:PageScaling", L"psk:Custom",
                             Referring(L"OffsetWidth") + Referring(L"OffsetHeight") +
                                 Referring(L"ScaleWidth") + Referring(L"ScaleHeight"))),
              DomText(pTicket.Get()));
}

TEST_P(ScalingDataTest, WritingCustomSquareProducesOneScale) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    CustomSquare({100, 200}, {150, 150}).Write(pTicket.Get(), Scope::Job);
    EXPECT_EQ(Ticket(Initializing(L"OffsetWidth", 100) + Initializing(L"OffsetHeight", 200) +
                     Initializing(L"Scale", 150) +
                     Feature(L"psk:PageScaling", L"psk:CustomSquare",
                             Referring(L"OffsetWidth") + Referring(L"OffsetHeight") + Referring(L"Scale"))),
              DomText(pTicket.Get()));
}

TEST_P(ScalingDataTest, WritingCustomSquareWithTwoScalesFailsAfterTheOffsets) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    EXPECT_EQ(
        "base/xps/printschema/scalingdata.cpp(LINE) : "
        "CustomSquare needs same values of Width and Height.\n",
        Thrown<std::logic_error>([&] {
            CustomSquare({1, 2}, {100, 101}).Write(pTicket.Get(), Scope::Page);
        }));
    EXPECT_EQ(Ticket(Initializing(L"OffsetWidth", 1) + Initializing(L"OffsetHeight", 2)),
              DomText(pTicket.Get()));
}

TEST_P(ScalingDataTest, AnyOtherOptionWritesNoValues) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    Custom({1, 2}, {3, 4}, kNone).Write(pTicket.Get(), Scope::Page);
    EXPECT_EQ(Ticket(Feature(L"psk:PageScaling", L"psk:None")), DomText(pTicket.Get()));
}

TEST_P(ScalingDataTest, NegativeOffsetsAreCarriedThroughUnchanged) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    const std::int32_t least = std::numeric_limits<std::int32_t>::min();
    Custom({-1, least}, {0, std::numeric_limits<std::int32_t>::max()}).Write(pTicket.Get(), Scope::Page);
    ScalingData data;
    data.Read(pTicket.Get());
    EXPECT_EQ((Pair{-1, least}), data.GetOffset());
    EXPECT_EQ((Pair{0, std::numeric_limits<std::int32_t>::max()}), data.GetScale());
}

TEST_P(ScalingDataTest, WritingAgainReplacesTheParametersToo) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    Custom({1, 2}, {3, 4}).Write(pTicket.Get(), Scope::Page);
    CustomSquare({5, 6}, {7, 7}).Write(pTicket.Get(), Scope::Page);
    EXPECT_EQ(Ticket(Initializing(L"OffsetWidth", 5) + Initializing(L"OffsetHeight", 6) +
                     Initializing(L"Scale", 7) +
                     Feature(L"psk:PageScaling", L"psk:CustomSquare",
                             Referring(L"OffsetWidth") + Referring(L"OffsetHeight") + Referring(L"Scale"))),
              DomText(pTicket.Get()));
    ScalingData().Write(pTicket.Get(), Scope::Page);
    EXPECT_EQ(Ticket(Feature(L"psk:PageScaling", L"psk:FitApplicationMediaSizeToPageMediaSize")),
              DomText(pTicket.Get()));
}

TEST_P(ScalingDataTest, ThePrivateOptionIsWrittenWithThePrivatePrefix) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    Custom({}, {}, kPrivateOption).Write(pTicket.Get(), Scope::Page);
    EXPECT_EQ(Ticket(Feature(L"psk:PageScaling", L"krk:FitApplicationImageableSizeToImageableSize")),
              DomText(pTicket.Get()));
}

TEST_P(ScalingDataTest, ThePrivateOptionsElementIsLookedUpAmongTheKeywordsAndLeavesTheSetting) {
    ScalingData data;
    Read(data, Feature(L"psk:PageScaling", L"krk:FitApplicationImageableSizeToImageableSize"));
    EXPECT_EQ(ScalingData::FitApplicationMediaSizeToPageMediaSize, data.GetOptionId());
}

TEST_P(ScalingDataTest, ThePrivateOptionIsReadThroughAPrivateOptionName) {
    ScalingData data;
    Read(data,
         tests::Named(L"Feature", L"psk:PageScaling",
                      ScoredProperty(L"krk:OptionName",
                                     Value(L"QName", L"krk:FitApplicationImageableSizeToImageableSize"))));
    EXPECT_EQ(kPrivateOption, data.GetOptionId());
}

TEST_P(ScalingDataTest, ValuesOfAnOptionThatIsNotSelectedAreNotTaken) {
    const std::wstring refused =
        tests::Named(L"Option", L"psk:Custom",
                     Literal(L"OffsetWidth", 1) + Literal(L"OffsetHeight", 2) + Literal(L"ScaleWidth", 3) +
                         Literal(L"ScaleHeight", 4) + Literal(L"Scale", 5));
    ScalingData data = Custom({7, 8}, {9, 10});
    const HRESULT code = ThrownCode([&] {
        Read(data, tests::Named(L"Feature", L"psk:PageScaling",
                                tests::Named(L"Option", L"psk:CustomSquare", L"") + refused));
    });
    EXPECT_EQ(kNotFound, code);
    EXPECT_EQ((Pair{7, 8}), data.GetOffset());
    EXPECT_EQ((Pair{9, 10}), data.GetScale());
}

TEST_ON_EACH_DOM(ScalingDataTest);

}  // namespace
