#include "base/xps/printschema/printablemediasizedata.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "base/logging/exceptions.h"
#include "base/xml/xmlutility.h"
#include "domtext.h"
#include "handlertest.h"
#include "platform/comptr.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace {

using base::exception::NotSupportedException;
using base::xml::LoadDomFromString;
using base::xps::printschema::MediaDimensions;
using base::xps::printschema::PrintableMediaRange;
using base::xps::printschema::PrintableMediaSizeData;
using base::xps::printschema::PrintableMediaSizeFeatureNames;
using base::xps::printschema::PrintableMediaSizePropertyNames;
using base::xps::printschema::Scope;
using tests::Dom;
using tests::DomText;

std::wstring PrivateTicket(std::wstring_view body) {
    std::wstring declaration = L" xmlns:krk=\"";
    declaration.append(base::xps::printschema::kPrivateNamespace).append(L"\"");
    return tests::Ticket(body, declaration);
}

std::wstring Property(std::wstring_view name, std::wstring_view value) {
    return tests::Property(L"krk:" + std::wstring(name), tests::Value(L"integer", value));
}

std::wstring PrintableMediaSize(std::wstring_view feature, std::wstring_view properties) {
    return tests::Feature(L"krk:" + std::wstring(feature), L"krk:PrintableMediaSize", properties);
}

void ExpectRange(const PrintableMediaSizeData& data, const MediaDimensions& minimum,
                 const MediaDimensions& maximum) {
    EXPECT_EQ(minimum, data.GetRange().minimum);
    EXPECT_EQ(maximum, data.GetRange().maximum);
}

TEST(PrintableMediaRangeTest, HoldsItsLimitsAndNothingBeyond) {
    constexpr PrintableMediaRange range = {{10, 20}, {30, 40}};
    for (const MediaDimensions& inside :
         {MediaDimensions{10, 20}, MediaDimensions{30, 40}, MediaDimensions{20, 30}}) {
        EXPECT_TRUE(range.Contains(inside));
    }
    for (const MediaDimensions& outside :
         {MediaDimensions{9, 20}, MediaDimensions{10, 19}, MediaDimensions{31, 40}, MediaDimensions{30, 41},
          MediaDimensions{-1, -1}}) {
        EXPECT_FALSE(range.Contains(outside));
    }
}

class PrintableMediaSizeDataTest : public tests::HandlerTest {
  protected:
    static PrintableMediaSizeData ReadFrom(std::wstring_view body) {
        PrintableMediaSizeData data;
        data.Read(LoadDomFromString(PrivateTicket(body)).Get());
        return data;
    }
    static PrintableMediaSizeData ReadProperties(std::wstring_view properties) {
        return ReadFrom(PrintableMediaSize(L"PagePrintableMediaSize", properties));
    }
};

const std::wstring kMinima = Property(L"MinWidth", L"76200") + Property(L"MinHeight", L"127000");
const std::wstring kMaxima = Property(L"MaxWidth", L"215900") + Property(L"MaxHeight", L"355600");

TEST_P(PrintableMediaSizeDataTest, StartsAsTheJobsWithNothingPrintable) {
    const PrintableMediaSizeData data;
    EXPECT_EQ(0, data.GetFeatureId());
    EXPECT_EQ(0, data.GetOptionId());
    EXPECT_EQ(L"JobPrintableMediaSize", data.GetFeatureName().localName);
    EXPECT_EQ(L"PrintableMediaSize", data.GetOptionName().localName);
    ExpectRange(data, {0, 0}, {0, 0});
}

TEST_P(PrintableMediaSizeDataTest, HasANameForEachScope) {
    PrintableMediaSizeData data;
    EXPECT_EQ(0u, data.FeatureIndexOfScope(Scope::Job));
    EXPECT_EQ(1u, data.FeatureIndexOfScope(Scope::Document));
    EXPECT_EQ(2u, data.FeatureIndexOfScope(Scope::Page));
    const Scope scopes[] = {Scope::Job, Scope::Document, Scope::Page};
    for (int id = 0; id < 3; ++id) {
        data.SetFeatureId(id);
        EXPECT_EQ(scopes[id], data.GetScope());
    }
    data.SetFeatureId(3);
    EXPECT_EQ(Scope::None, data.GetScope());
    data.SetFeatureId(-1);
    EXPECT_EQ(Scope::None, data.GetScope());
    EXPECT_EQ(&PrintableMediaSizeFeatureNames::Instance(), &data.GetFeatureNames());
    EXPECT_EQ(&PrintableMediaSizePropertyNames::Instance(), &data.GetOptionNames());
}

TEST_P(PrintableMediaSizeDataTest, AnyOtherScopeIsNotSupported) {
    for (const Scope scope : {Scope::None, static_cast<Scope>(4)}) {
        EXPECT_THAT(tests::Thrown<NotSupportedException>(
                        [&] { static_cast<void>(PrintableMediaSizeData().FeatureIndexOfScope(scope)); }),
                    testing::HasSubstr("this scope is not supported in this feature."));
    }
}

TEST_P(PrintableMediaSizeDataTest, TheWholeRangeIsRead) {
    const PrintableMediaSizeData data = ReadProperties(kMinima + kMaxima);
    ExpectRange(data, {76200, 127000}, {215900, 355600});
    EXPECT_EQ(2, data.GetFeatureId());
    EXPECT_EQ(Scope::Page, data.GetScope());
}

TEST_P(PrintableMediaSizeDataTest, MaximaAloneReadWithMinimaOfZero) {
    ExpectRange(ReadProperties(kMaxima), {0, 0}, {215900, 355600});
}

TEST_P(PrintableMediaSizeDataTest, AMinimumWithoutItsOtherLengthReadsAsZero) {
    ExpectRange(ReadProperties(Property(L"MinWidth", L"80000") + kMaxima), {0, 0}, {215900, 355600});
    ExpectRange(ReadProperties(Property(L"MinHeight", L"80000") + kMaxima), {0, 0}, {215900, 355600});
    ExpectRange(ReadProperties(Property(L"MinWidth", L"8e4") + Property(L"MinHeight", L"1") + kMaxima),
                {0, 0}, {215900, 355600});
}

TEST_P(PrintableMediaSizeDataTest, ALengthAloneIsNeitherAMinimumNorAMaximum) {
    for (const wchar_t* name : {L"MinWidth", L"MinHeight", L"MaxWidth", L"MaxHeight"}) {
        ExpectRange(ReadProperties(Property(name, L"80000")), {0, 0}, {0, 0});
    }
}

TEST_P(PrintableMediaSizeDataTest, WhatIsNotStatedForgetsWhatTheObjectHeld) {
    PrintableMediaSizeData data;
    data.SetRange({{1, 2}, {3, 4}});
    data.Read(LoadDomFromString(PrivateTicket(PrintableMediaSize(L"JobPrintableMediaSize", kMaxima))).Get());
    ExpectRange(data, {0, 0}, {215900, 355600});
    data.SetRange({{1, 2}, {3, 4}});
    data.Read(LoadDomFromString(PrivateTicket(PrintableMediaSize(L"JobPrintableMediaSize", L""))).Get());
    ExpectRange(data, {0, 0}, {0, 0});
}

TEST_P(PrintableMediaSizeDataTest, MinimaWithoutMaximaFail) {
    const std::wstring onlyMinima = Property(L"MinWidth", L"80000") + Property(L"MinHeight", L"80000");
    for (const std::wstring& properties : {onlyMinima, onlyMinima + Property(L"MaxWidth", L"90000")}) {
        EXPECT_EQ(
            "base/xps/printschema/printablemediasizedata.cpp(LINE) : printticket is in invalid state.\n",
            tests::Thrown<std::logic_error>([&] { ReadProperties(properties); }));
    }
}

TEST_P(PrintableMediaSizeDataTest, AnInvertedWidthOrHeightFails) {
    EXPECT_THROW(ReadProperties(Property(L"MinWidth", L"11") + Property(L"MinHeight", L"1") +
                                Property(L"MaxWidth", L"10") + Property(L"MaxHeight", L"10")),
                 std::logic_error);
    EXPECT_THROW(ReadProperties(Property(L"MinWidth", L"1") + Property(L"MinHeight", L"11") +
                                Property(L"MaxWidth", L"10") + Property(L"MaxHeight", L"10")),
                 std::logic_error);
}

TEST_P(PrintableMediaSizeDataTest, EqualMinimaAndMaximaAreAccepted) {
    ExpectRange(ReadProperties(Property(L"MinWidth", L"5") + Property(L"MinHeight", L"6") +
                               Property(L"MaxWidth", L"5") + Property(L"MaxHeight", L"6")),
                {5, 6}, {5, 6});
}

TEST_P(PrintableMediaSizeDataTest, NegativeLengthsAreComparedWithTheirSign) {
    ExpectRange(ReadProperties(Property(L"MinWidth", L"-5") + Property(L"MinHeight", L"-6") +
                               Property(L"MaxWidth", L"-1") + Property(L"MaxHeight", L"0")),
                {-5, -6}, {-1, 0});
}

TEST_P(PrintableMediaSizeDataTest, PropertiesOfAnotherFeatureAreNotReadForThisOne) {
    const std::wstring other =
        PrintableMediaSize(L"PageOther", Property(L"MinWidth", L"1") + Property(L"MinHeight", L"1"));
    ExpectRange(ReadFrom(other + PrintableMediaSize(L"PagePrintableMediaSize", kMaxima)), {0, 0},
                {215900, 355600});
}

TEST_P(PrintableMediaSizeDataTest, TheWidestScopeOfTheTicketIsRead) {
    const PrintableMediaSizeData data =
        ReadFrom(PrintableMediaSize(L"PagePrintableMediaSize", kMinima + kMaxima) +
                 PrintableMediaSize(L"DocumentPrintableMediaSize", kMaxima));
    EXPECT_EQ(Scope::Document, data.GetScope());
    ExpectRange(data, {0, 0}, {215900, 355600});
}

TEST_P(PrintableMediaSizeDataTest, ATicketWithoutTheFeatureChangesNothing) {
    PrintableMediaSizeData data;
    data.SetRange({{1, 2}, {3, 4}});
    data.Read(LoadDomFromString(PrivateTicket(L"")).Get());
    ExpectRange(data, {1, 2}, {3, 4});
}

TEST_P(PrintableMediaSizeDataTest, IsWrittenWithMinimaBeforeMaximaAndWidthsBeforeHeights) {
    PrintableMediaSizeData data;
    data.SetRange({{1, 2}, {3, 4}});
    const wchar_t* const features[] = {L"JobPrintableMediaSize", L"DocumentPrintableMediaSize",
                                       L"PagePrintableMediaSize"};
    for (int scope = 1; scope <= 3; ++scope) {
        const Dom ticket = LoadDomFromString(PrivateTicket(L""));
        data.Write(ticket.Get(), static_cast<Scope>(scope));
        EXPECT_EQ(PrivateTicket(PrintableMediaSize(
                      features[scope - 1], Property(L"MinWidth", L"1") + Property(L"MinHeight", L"2") +
                                               Property(L"MaxWidth", L"3") + Property(L"MaxHeight", L"4"))),
                  DomText(ticket.Get()));
        PrintableMediaSizeData readBack;
        readBack.Read(ticket.Get());
        EXPECT_EQ(scope - 1, readBack.GetFeatureId());
        ExpectRange(readBack, {1, 2}, {3, 4});
    }
}

TEST_P(PrintableMediaSizeDataTest, WritingTwiceKeepsTheFirstBecauseOnlyKeywordFeaturesAreRemoved) {
    PrintableMediaSizeData data;
    const Dom ticket = LoadDomFromString(PrivateTicket(L""));
    data.Write(ticket.Get());
    const std::wstring once = DomText(ticket.Get());
    data.Write(ticket.Get());
    EXPECT_GT(DomText(ticket.Get()).size(), once.size());
    data.Remove(ticket.Get());
    EXPECT_FALSE(data.IsSpecified(ticket.Get()));
}

TEST_P(PrintableMediaSizeDataTest, TheLengthsOfAnOptionThatIsNotSelectedAreNotRead) {
    const auto option = [](std::wstring_view properties) {
        std::wstring text = L"<psf:Option name=\"krk:PrintableMediaSize\">";
        return text.append(properties).append(L"</psf:Option>");
    };
    const std::wstring maxima = Property(L"MaxWidth", L"30") + Property(L"MaxHeight", L"40");
    const std::wstring all = Property(L"MinWidth", L"1") + Property(L"MinHeight", L"2") + maxima;
    PrintableMediaSizeData data;
    data.Read(LoadDomFromString(PrivateTicket(L"<psf:Feature name=\"krk:PagePrintableMediaSize\">" +
                                              option(maxima) + option(all) + L"</psf:Feature>"))
                  .Get());
    ExpectRange(data, {0, 0}, {30, 40});
}

TEST_ON_EACH_DOM(PrintableMediaSizeDataTest);

}  // namespace
