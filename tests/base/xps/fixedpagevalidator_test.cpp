#include "base/xps/fixedpagevalidator.h"

#include <gtest/gtest.h>

#include <sstream>

#include "base/xps/validatorfixture.h"

namespace base::xps {
namespace {

TEST_F(FixedPageValidatorTest, TheFallbackComesFromTheDocumentsTicketWithoutTheJobsWhenItFits) {
    (void)Validator();
    EXPECT_EQ(Calls{"GetTicket 1"}, m_calls.Calls());
}

TEST_F(FixedPageValidatorTest, TheFallbackComesFromTheJobsTicketWhenTheDocumentsDoesNotFit) {
    m_provider.sizes[kPTDocumentScope] = {1, 1};
    (void)Validator();
    EXPECT_EQ((Calls{"GetTicket 1", "GetTicket 2"}), m_calls.Calls());
}

TEST_F(FixedPageValidatorTest, APageThatNeedsNoChangeGetsNoNewTicketAndKeepsItsMarkup) {
    GiveTicket();
    Validate();
    EXPECT_EQ(Calls{"GetTicket 1"}, m_calls.Calls());
    EXPECT_EQ(m_ticket.Get(), m_page->Ticket());
    EXPECT_FALSE(IsTurned());
    EXPECT_FALSE(HasNewTicket());
}

TEST_F(FixedPageValidatorTest, LongEdgeFirstWithASquareMediumTurnsThePage) {
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    SetSize(kSquare);
    Validate();
    EXPECT_TRUE(IsTurned());
    EXPECT_TRUE(HasNewTicket());
}

TEST_F(FixedPageValidatorTest, ShortEdgeFirstWithASquareMediumDoesNotTurnThePage) {
    m_feedDirection.SetFeedDirection(InputBinData::ShortEdgeFirst);
    SetSize(kSquare);
    Validate();
    EXPECT_FALSE(IsTurned());
    EXPECT_FALSE(HasNewTicket());
}

TEST_F(FixedPageValidatorTest, WithoutAFeedDirectionNothingIsTurnedWhateverTheMedia) {
    m_feedDirection.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    m_printable.SetRange({{0, 0}, {300000, 300000}});
    for (const MediaDimensions& size : {kA4, kA4Rotated, kSquare, kA5}) {
        SetSize(size);
        Validate();
    }
    EXPECT_FALSE(IsTurned());
    EXPECT_FALSE(HasNewTicket());
}

TEST_F(FixedPageValidatorTest, AnUnknownFeedDirectionTurnsNothing) {
    m_feedDirection.SetFeedDirection(2);
    m_printable.SetRange({{0, 0}, {300000, 300000}});
    for (const MediaDimensions& size : {kA4, kA4Rotated}) {
        SetSize(size);
        Validate();
    }
    EXPECT_FALSE(IsTurned());
}

struct Turn {
    std::int32_t feedDirection;
    MediaDimensions size;
    bool isTurned;
};

TEST_F(FixedPageValidatorTest, APageIsTurnedWhenItsSheetWouldBeFedByTheOtherEdge) {
    m_printable.SetRange({{0, 0}, {300000, 300000}});
    for (const Turn& turn :
         {Turn{InputBinData::LongEdgeFirst, kA4, true}, Turn{InputBinData::LongEdgeFirst, kA4Rotated, false},
          Turn{InputBinData::LongEdgeFirst, {220001, 220000}, false},
          Turn{InputBinData::ShortEdgeFirst, kA4, false},
          Turn{InputBinData::ShortEdgeFirst, kA4Rotated, true},
          Turn{InputBinData::ShortEdgeFirst, {220001, 220000}, true}}) {
        GiveNoTicket();
        m_feedDirection.SetFeedDirection(turn.feedDirection);
        SetSize(turn.size);
        Validate();
        EXPECT_EQ(turn.isTurned, IsTurned())
            << turn.feedDirection << " " << turn.size.width << " " << turn.size.height;
    }
}

TEST_F(FixedPageValidatorTest, ATurnedPageGetsItsTicketFirstAndItsMarkupThen) {
    GiveTicket();
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    Validate();
    EXPECT_EQ((Calls{"GetTicket 1", "GetPrintTicket /p", "GetStream", "GetUri",
                     "DeleteResource /Documents/1/Pages/1_PT.xml",
                     "GetNewEmptyPart /Documents/1/Pages\\pagevalidator_N_1_PT.xml", "Close",
                     "SetPrintTicket /p", "GetWriteStream /p", "GetStream /p", "Close", "Seek 0 0"}),
              Steps());
    ASSERT_NE(nullptr, m_page->Written());
    EXPECT_EQ(kTurnedMarkup, m_page->Written()->Bytes());
    EXPECT_EQ(1, m_page->Written()->Closes());
}

TEST_F(FixedPageValidatorTest, TwoPagesHandledInOneProcessNeverGetTheSameNumber) {
    SetSize({76200, 126999});
    Validate();
    GiveNoTicket();
    Validate();
    Calls names;
    for (const std::string& call : m_calls.Calls()) {
        if (call.starts_with("GetNewEmptyPart")) names.push_back(call);
    }
    ASSERT_EQ(2u, names.size());
    const auto numberOf = [](const std::string& name) { return std::stoi(name.substr(name.find("r_") + 2)); };
    EXPECT_EQ(numberOf(names[0]) + 1, numberOf(names[1]));
}

struct Range {
    MediaDimensions size;
    bool isOut;
};

TEST_F(FixedPageValidatorTest, AMediaSizeExactlyAtALimitIsInRangeAndOneMicronOverIsOut) {
    m_feedDirection.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    m_printable.SetRange({{200000, 290000}, {220000, 310000}});
    for (const Range& range :
         {Range{{200000, 290000}, false}, Range{{220000, 310000}, false}, Range{{220000, 290000}, false},
          Range{{200000, 310000}, false}, Range{{210000, 310001}, true}, Range{{220001, 300000}, true},
          Range{{210000, 289999}, true}, Range{{199999, 300000}, true}}) {
        m_consumer->Clear();
        GiveNoTicket();
        SetSize(range.size);
        Validate();
        EXPECT_EQ(range.isOut, HasNewTicket()) << range.size.width << " " << range.size.height;
        EXPECT_FALSE(IsTurned());
    }
}

TEST_F(FixedPageValidatorTest, TheRangeIsTestedOnTheTurnedSheet) {
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    m_printable.SetRange({{0, 0}, {297000, 210000}});
    m_provider.sizes[kPTDocumentScope] = kA4Rotated;
    Validate();
    EXPECT_TRUE(IsTurned());
    EXPECT_NE(std::string::npos, NewTicket().find(MediaFeature(L"ISOA4Rotated", 297000, 210000)));
    EXPECT_NE(std::string::npos,
              NewTicket().find(PlainFeature(L"PageScaling", L"FitApplicationMediaSizeToPageMediaSize")));
}

TEST_F(FixedPageValidatorTest, TheSettingsAreThoseThatTheCallerHadWhenTheValidatorWasMade) {
    m_scaling.SetOptionId(6);
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    FixedPageValidator validator = Validator();
    m_feedDirection.SetFeedDirection(InputBinData::ShortEdgeFirst);
    SetSize({400000, 500000});
    m_orientation.SetOptionId(PageOrientationData::ReversePortrait);
    m_scaling.SetOptionId(2);
    m_printable.SetRange({{0, 0}, {1, 1}});
    validator.Validate();
    EXPECT_TRUE(IsTurned());
    EXPECT_EQ(TICKET_HEAD + MediaFeature(L"ISOA4Rotated", 297000, 210000) +
                  PlainFeature(L"PageOrientation", L"Portrait") + PlainFeature(L"PageScaling", L"None") +
                  TICKET_TAIL,
              NewTicket());
}

TEST_F(FixedPageValidatorTest, ThePagesStreamsAreThoseOfThePage) {
    FixedPageValidator validator = Validator();
    EXPECT_TRUE(validator.GetPageReadStream());
    EXPECT_TRUE(validator.GetPageWriteStream());
    EXPECT_EQ((Calls{"GetTicket 1", "GetStream /p", "GetWriteStream /p"}), m_calls.Calls());
}

TEST_F(FixedPageValidatorTest, TheContentHandlerTurnsBy270DegreesAndDoesNotScale) {
    FixedPageValidator validator = Validator();
    std::ostringstream sink;
    const ComPtr<ISAXContentHandler> handler = validator.CreateContentHandler(sink);
    EXPECT_EQ(S_OK, handler->startElement(L"", 0, L"FixedPage", 9, L"FixedPage", 9, nullptr));
    EXPECT_NE(std::string::npos, sink.str().find("\"0.00,-1.00,1.00,0.00,0.00,0.00\""));
    EXPECT_EQ(2u, handler.Get()->AddRef());
    EXPECT_EQ(1u, handler.Get()->Release());
}

}  // namespace
}  // namespace base::xps
