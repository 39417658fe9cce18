#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "base/xps/fixedpagevalidator.h"
#include "base/xps/validatorfixture.h"

namespace base::xps {
namespace {

TEST_F(FixedPageValidatorTest, ThePagesOwnTicketIsKeptButForTheThreeFeatures) {
    GiveTicket();
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    Validate();
    EXPECT_EQ(TICKET_HEAD R"(<psf:Feature name="psk:JobCollate"/>)" +
                  MediaFeature(L"ISOA4Rotated", 297000, 210000) +
                  PlainFeature(L"PageOrientation", L"Portrait") +
                  PlainFeature(L"PageScaling", L"FitApplicationMediaSizeToPageMediaSize") + TICKET_TAIL,
              NewTicket());
    ASSERT_NE(nullptr, m_page->Ticket());
    EXPECT_NE(m_ticket.Get(), m_page->Ticket());
}

TEST_F(FixedPageValidatorTest, APageWithoutTicketThatNeedsAChangeGetsANewTicketFromTheEmptyOne) {
    for (const bool succeeds : {false, true}) {
        m_calls.Clear();
        m_consumer->Clear();
        GiveNoTicket();
        m_page->succeedsWithoutTicket = succeeds;
        SetSize({76200, 126999});
        m_scaling.SetOptionId(6);
        Validate();
        EXPECT_EQ((Calls{"GetTicket 1", "GetPrintTicket /p", "GetNewEmptyPart .xml\\pagevalidator_N_.xml",
                         "Close", "SetPrintTicket /p"}),
                  Steps());
        EXPECT_EQ(TICKET_HEAD + MediaFeature(L"ISOA4", 210000, 297000) +
                      PlainFeature(L"PageOrientation", L"Portrait") + PlainFeature(L"PageScaling", L"None") +
                      TICKET_TAIL,
                  NewTicket());
        EXPECT_TRUE(
            m_consumer->NewParts().back()->Bytes().starts_with(R"(<?xml version="1.0" encoding="UTF-8")"));
        EXPECT_FALSE(IsTurned());
    }
}

// The parameters stand before the feature, because they are put into the ticket while it is being built.
std::string CustomScaling(int percent) {
    std::wstring parameters;
    std::wstring properties;
    for (const auto& [name, value] :
         std::initializer_list<std::pair<std::wstring, int>>{{L"OffsetWidth", 0},
                                                             {L"OffsetHeight", 0},
                                                             {L"ScaleWidth", percent},
                                                             {L"ScaleHeight", percent}}) {
        const std::wstring parameter = L"krk:PageScaling" + name;
        parameters += tests::ParameterInit(parameter, value);
        properties += tests::ScoredProperty(L"psk:" + name, tests::ParameterRef(parameter));
    }
    return tests::Bytes(parameters + tests::Feature(L"psk:PageScaling", L"psk:Custom", properties));
}

std::string TicketOf(const std::string& media, const std::string& scaling,
                     const std::wstring& orientation = L"Portrait") {
    return TICKET_HEAD + media + PlainFeature(L"PageOrientation", orientation) + scaling + TICKET_TAIL;
}

TEST_F(FixedPageValidatorTest, AFittedPageOutOfRangeIsScaledOntoTheFallback) {
    SetSize({420000, 600000});
    m_feedDirection.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    Validate();
    // 297 / 600 is less than 210 / 420.
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(49)), NewTicket());
    EXPECT_FALSE(IsTurned());
}

TEST_F(FixedPageValidatorTest, APageThatIsFittedAnewLosesTheOffsetAndTheScaleThatItHad) {
    m_scaling.SetOffset({5, 6});
    m_scaling.SetScale({70, 80});
    SetSize({420000, 600000});
    m_feedDirection.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    Validate();
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(49)), NewTicket());
}

TEST_F(FixedPageValidatorTest, ThePercentageIsTruncated) {
    SetSize({60000, 60000});
    Validate();
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(350)), NewTicket());
    m_feedDirection.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    ValidateNext({70100, 60000});
    // 299.57
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(299)), NewTicket());
}

TEST_F(FixedPageValidatorTest, ATurnedPageOutOfRangeIsScaledByItsTurnedSize) {
    GiveTicket(L"/t.xml", TICKET_HEAD TICKET_TAIL);
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    SetSize({400000, 500000});
    Validate();
    EXPECT_TRUE(IsTurned());
    // The sheet is 500 mm wide by now: 210 / 500, not 210 / 400.
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(42)), NewTicket());
}

TEST_F(FixedPageValidatorTest, AScaleBeyondWhatATicketCanStateIsTheLargestItCan) {
    m_printable.SetRange({{0, 127000}, {297000, 420000}});
    SetSize({1, 1});
    m_provider.sizes[kPTDocumentScope] = kA4;
    Validate();
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(21000000)), NewTicket());
    m_printable.SetRange({{100, 127000}, {2000000000, 2000000000}});
    m_provider.sizes[kPTDocumentScope] = {2000000000, 2000000000};
    ValidateNext({1, 1});
    EXPECT_NE(std::string::npos, NewTicket().find(">2147483647<")) << NewTicket();
}

TEST_F(FixedPageValidatorTest, ASizeOfZeroIsNotScaled) {
    SetSize({0, 0});
    m_feedDirection.SetFeedDirection(InputBinData::FeedDirectionUnknown);
    Validate();
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(100)), NewTicket());
}

TEST_F(FixedPageValidatorTest, WithAnImageableAreaThePageIsScaledIntoIt) {
    FakeImageableArea area;
    area.extent = {200000, 280000};
    m_pImageableArea = &area;
    SetSize({400000, 500000});
    Validate();
    ASSERT_EQ(1u, area.asked.size());
    EXPECT_EQ(L"ISOA4", area.asked[0].keyword);
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(50)), NewTicket());
}

TEST_F(FixedPageValidatorTest, AnImageableAreaThatIsNotKnownIsTheWholeSheet) {
    FakeImageableArea area;
    area.extent = {200000, 280000};
    area.result = E_ELEMENT_NOT_FOUND;
    m_pImageableArea = &area;
    SetSize({400000, 500000});
    Validate();
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(52)), NewTicket());
}

TEST_F(FixedPageValidatorTest, TheImageableAreaIsAskedForOnlyWhenThePageIsFittedAndOutOfRange) {
    FakeImageableArea area;
    m_pImageableArea = &area;
    Validate();
    SetSize({400000, 500000});
    m_scaling.SetOptionId(6);
    Validate();
    EXPECT_TRUE(area.asked.empty());
}

TEST_F(FixedPageValidatorTest, OtherScalingOptionsStayAsTheyAre) {
    const std::vector<std::pair<int, std::wstring>> options = {
        {2, L"FitApplicationBleedSizeToPageImageableSize"},
        {3, L"FitApplicationContentSizeToPageImageableSize"},
        {4, L"FitApplicationMediaSizeToPageImageableSize"},
        {6, L"None"},
    };
    SetSize({400000, 500000});
    for (const auto& [id, name] : options) {
        m_scaling.SetOptionId(id);
        ValidateNext({400000, 500000});
        EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), PlainFeature(L"PageScaling", name)),
                  NewTicket());
    }
    m_scaling.SetOptionId(7);
    ValidateNext({400000, 500000});
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000),
                       R"(<psf:Feature name="psk:PageScaling"><psf:Option)"
                       R"( name="krk:FitApplicationImageableSizeToImageableSize"/></psf:Feature>)"),
              NewTicket());
}

TEST_F(FixedPageValidatorTest, CustomScalingKeepsItsOwnValues) {
    SetSize({400000, 500000});
    m_scaling.SetOptionId(ScalingData::Custom);
    m_scaling.SetScale({77, 77});
    Validate();
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA4", 210000, 297000), CustomScaling(77)), NewTicket());
}

TEST_F(FixedPageValidatorTest, TheFallbackIsTheCataloguesSheetOfItsId) {
    SetSize({400000, 500000});
    m_scaling.SetOptionId(6);
    const std::string none = PlainFeature(L"PageScaling", L"None");

    m_provider.sizes[kPTDocumentScope] = kA5;
    ValidateNext({400000, 500000});
    EXPECT_EQ(TicketOf(MediaFeature(L"ISOA5", 148000, 210000), none), NewTicket());

    // A custom sheet has no size in the catalogue, whatever the ticket says of it.
    m_provider.sizes[kPTDocumentScope] = {200001, 200002};
    ValidateNext({400000, 500000});
    EXPECT_EQ(TicketOf(MediaFeature(L"CustomMediaSize", 0, 0), none), NewTicket());
}

TEST_F(FixedPageValidatorTest, ALandscapePageIsTakenAsTheNextOrientationWithItsSheetTurned) {
    struct Orientation {
        std::int32_t id;
        std::wstring written;
        bool isSwapped;
    };
    m_scaling.SetOptionId(6);
    const std::string none = PlainFeature(L"PageScaling", L"None");
    for (const Orientation& orientation :
         {Orientation{PageOrientationData::Landscape, L"Portrait", true},
          Orientation{PageOrientationData::Portrait, L"Portrait", false},
          Orientation{PageOrientationData::ReverseLandscape, L"ReversePortrait", true},
          Orientation{PageOrientationData::ReversePortrait, L"ReversePortrait", false}}) {
        GiveNoTicket();
        m_orientation.SetOptionId(orientation.id);
        // Fed so that the page is turned, and so gets a ticket that shows its size, turned once more.
        m_feedDirection.SetFeedDirection(orientation.isSwapped ? InputBinData::ShortEdgeFirst
                                                               : InputBinData::LongEdgeFirst);
        Validate();
        EXPECT_TRUE(IsTurned());
        EXPECT_EQ(TicketOf(orientation.isSwapped ? MediaFeature(L"ISOA4", 210000, 297000)
                                                 : MediaFeature(L"ISOA4Rotated", 297000, 210000),
                           none, orientation.written),
                  NewTicket());
    }
}

TEST_F(FixedPageValidatorTest, AnOrientationThatIsNotSetTurnsNoSheet) {
    m_orientation.SetOptionId(-1);
    m_printable.SetRange({{0, 0}, {210000, 297000}});
    Validate();
    EXPECT_FALSE(IsTurned());
    EXPECT_FALSE(HasNewTicket());
    // Such a page cannot get a ticket.
    m_feedDirection.SetFeedDirection(InputBinData::LongEdgeFirst);
    EXPECT_THROW(Validate(), exception::InvalidOptionIdError);
    EXPECT_FALSE(HasNewTicket());
}

}  // namespace
}  // namespace base::xps
