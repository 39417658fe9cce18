#include "base/xps/printschema/inputbindata.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/logging/exceptions.h"
#include "domtext.h"
#include "handlertest.h"
#include "ticketmarkup.h"

namespace {

using namespace base::xps::printschema;
using base::exception::NotSupportedException;
using base::xml::LoadDomFromString;
using tests::Dom;
using tests::DomText;
using tests::Feature;
using tests::HandlerTest;
using tests::Named;
using tests::ScoredProperty;
using tests::Ticket;
using tests::Value;

class InputBinDataTest : public HandlerTest {};

// A ticket whose job bin is Tray1 with the given content in its option.
std::wstring Tray1(std::wstring_view content) {
    return Ticket(Feature(L"psk:JobInputBin", L"psk:Tray1", content));
}

std::wstring FeedDirection(std::wstring_view content) {
    return ScoredProperty(L"psk:FeedDirection", content);
}

// The feed direction after reading the ticket into an object that holds the unlikely id 7.
std::int32_t DirectionAfterRead(std::wstring_view ticket) {
    InputBinData data;
    data.SetFeedDirection(7);
    data.Read(LoadDomFromString(ticket).Get());
    return data.GetFeedDirection();
}

TEST_P(InputBinDataTest, IsTheJobsBinChosenByThePrinterFedShortEdgeFirstByDefault) {
    const InputBinData data;
    EXPECT_EQ(0, data.GetFeatureId());
    EXPECT_EQ(0, data.GetOptionId());
    EXPECT_EQ(InputBinData::ShortEdgeFirst, data.GetFeedDirection());
    EXPECT_TRUE(data.HasFeedDirection());
    EXPECT_EQ(&InputBinFeatureNames::Instance(), &data.GetFeatureNames());
    EXPECT_EQ(&InputBinOptionNames::Instance(), &data.GetOptionNames());
}

TEST_P(InputBinDataTest, AFreshObjectWrittenAtJobScopeYieldsAutoSelectFedShortEdgeFirst) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    InputBinData().Write(pTicket.Get(), Scope::Job);
    EXPECT_EQ(Ticket(Feature(L"psk:JobInputBin", L"psk:AutoSelect",
                             FeedDirection(Value(L"QName", L"psk:ShortEdgeFirst")))),
              DomText(pTicket.Get()));
}

TEST_P(InputBinDataTest, AFeedDirectionIsWrittenWithTheTicketsOwnPrefix) {
    const std::wstring begin = L"<f:PrintTicket xmlns:f=\"" + std::wstring(tests::kFrameworkUri) +
                               L"\" xmlns:k=\"" + std::wstring(tests::kKeywordsUri) +
                               L"\" xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\"" +
                               L" xmlns:s=\"http://www.w3.org/2001/XMLSchema\"";
    const Dom pTicket = LoadDomFromString(begin + L"/>");
    InputBinData data;
    data.SetFeedDirection(InputBinData::LongEdgeFirst);
    data.Write(pTicket.Get(), Scope::Document);
    EXPECT_EQ(begin +
                  L"><f:Feature name=\"k:DocumentInputBin\"><f:Option name=\"k:AutoSelect\">"
                  L"<f:ScoredProperty name=\"k:FeedDirection\"><f:Value i:type=\"s:QName\">k:LongEdgeFirst"
                  L"</f:Value></f:ScoredProperty></f:Option></f:Feature></f:PrintTicket>",
              DomText(pTicket.Get()));
}

TEST_P(InputBinDataTest, AnUnknownFeedDirectionIsNotWritten) {
    const Dom pTicket = LoadDomFromString(Ticket(L""));
    InputBinData data;
    data.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    EXPECT_FALSE(data.HasFeedDirection());
    data.Write(pTicket.Get(), Scope::Page);
    EXPECT_EQ(Ticket(Feature(L"psk:PageInputBin", L"psk:AutoSelect")), DomText(pTicket.Get()));
}

TEST_P(InputBinDataTest, ATicketWithoutFeedDirectionReadsWithoutErrorAndKeepsThePrevious) {
    InputBinData data;
    data.SetFeedDirection(InputBinData::LongEdgeFirst);
    data.Read(LoadDomFromString(Tray1(L"")).Get());
    EXPECT_EQ(5, data.GetOptionId());
    EXPECT_EQ(InputBinData::LongEdgeFirst, data.GetFeedDirection());
}

TEST_P(InputBinDataTest, WritingAtAnUnsupportedScopeFailsBeforeAnythingIsWritten) {
    const std::wstring before = Tray1(L"");
    const Dom pTicket = LoadDomFromString(before);
    EXPECT_THROW(InputBinData().Write(pTicket.Get(), Scope::None), NotSupportedException);
    EXPECT_EQ(before, DomText(pTicket.Get()));
}

TEST_P(InputBinDataTest, AFeedDirectionIsReadWithAnyPrefixAsABareWordAndWithWhiteSpace) {
    for (const std::wstring_view text :
         {L"psk:LongEdgeFirst", L"k:LongEdgeFirst", L"LongEdgeFirst", L"\n  psk:LongEdgeFirst\t"})
        EXPECT_EQ(0, DirectionAfterRead(Tray1(FeedDirection(Value(L"QName", text))))) << std::wstring(text);
    EXPECT_EQ(1, DirectionAfterRead(Tray1(FeedDirection(Value(L"string", L"ShortEdgeFirst")))));
    EXPECT_EQ(1, DirectionAfterRead(Tray1(FeedDirection(L"<psf:Value>psk:ShortEdgeFirst</psf:Value>"))));
}

TEST_P(InputBinDataTest, AFeedDirectionMayBeAParameter) {
    EXPECT_EQ(0, DirectionAfterRead(
                     Ticket(Feature(L"psk:JobInputBin", L"psk:Tray1",
                                    FeedDirection(tests::ParameterRef(L"psk:JobInputBinFeedDirection"))) +
                            Named(L"ParameterInit", L"psk:JobInputBinFeedDirection",
                                  Value(L"string", L"LongEdgeFirst")))));
}

TEST_P(InputBinDataTest, AFeedDirectionThatTheListDoesNotKnowLeavesTheSetting) {
    for (const std::wstring_view text : {L"psk:FaceUp", L"longedgefirst", L"psk:", L"", L"0"})
        EXPECT_EQ(7, DirectionAfterRead(Tray1(FeedDirection(Value(L"QName", text))))) << std::wstring(text);
    EXPECT_EQ(7, DirectionAfterRead(Tray1(FeedDirection(L""))));
}

TEST_P(InputBinDataTest, AFeedDirectionOfAnotherFeatureOrKindIsNotTaken) {
    const std::wstring longEdge = Value(L"QName", L"psk:LongEdgeFirst");
    EXPECT_EQ(7,
              DirectionAfterRead(Ticket(Feature(L"psk:PageMediaSize", L"psk:ISOA4", FeedDirection(longEdge)) +
                                        Feature(L"psk:JobInputBin", L"psk:Tray1"))));
    EXPECT_EQ(7, DirectionAfterRead(Tray1(Named(L"Property", L"psk:FeedDirection", longEdge))));
    EXPECT_EQ(7, DirectionAfterRead(Tray1(ScoredProperty(L"krk:FeedDirection", longEdge))));
}

TEST_P(InputBinDataTest, TheFeedDirectionIsThatOfTheFeatureThatIsRead) {
    const auto bin = [](std::wstring_view feature, std::wstring_view direction) {
        return Feature(feature, L"psk:Tray1", FeedDirection(Value(L"QName", direction)));
    };
    EXPECT_EQ(0, DirectionAfterRead(Ticket(bin(L"psk:PageInputBin", L"psk:ShortEdgeFirst") +
                                           bin(L"psk:JobInputBin", L"psk:LongEdgeFirst"))));
}

TEST_P(InputBinDataTest, AnUnknownBinKeepsTheFeedDirectionToo) {
    EXPECT_EQ(7, DirectionAfterRead(Ticket(Feature(L"psk:JobInputBin", L"psk:Tray9",
                                                   FeedDirection(Value(L"QName", L"psk:LongEdgeFirst"))))));
}

// What is left of a validation that replaced the option: the chosen one, and behind it the refused one that
// was put back.

TEST_P(InputBinDataTest, TheFeedDirectionOfAnOptionThatIsNotSelectedIsNotRead) {
    const std::wstring chosen = Named(L"Option", L"psk:AutoSelect", L"");
    const std::wstring refused =
        Named(L"Option", L"psk:Tray2", FeedDirection(Value(L"QName", L"psk:LongEdgeFirst")));
    EXPECT_EQ(7, DirectionAfterRead(Ticket(Named(L"Feature", L"psk:JobInputBin", chosen + refused))));
    EXPECT_EQ(InputBinData::LongEdgeFirst,
              DirectionAfterRead(Ticket(Named(L"Feature", L"psk:JobInputBin", refused + chosen))));
}

TEST_P(InputBinDataTest, AnOptionThatAPropertyNamesHasNoFeedDirectionOfItsOwn) {
    const std::wstring named = ScoredProperty(L"psk:OptionName", Value(L"QName", L"psk:Tray1"));
    const std::wstring other =
        Named(L"Option", L"psk:Tray2", FeedDirection(Value(L"QName", L"psk:LongEdgeFirst")));
    EXPECT_EQ(7, DirectionAfterRead(Ticket(Named(L"Feature", L"psk:JobInputBin", named + other))));
}

TEST_ON_EACH_DOM(InputBinDataTest);

}  // namespace
