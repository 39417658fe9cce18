#include "base/xps/printschema/imageableareahandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "answers.h"
#include "base/logging/exceptions.h"
#include "base/xml/xmlutility.h"
#include "base/xps/printschema/mediasizedata.h"
#include "domtext.h"
#include "eachdom.h"
#include "platform/comptr.h"
#include "stubticketprovider.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace {

using base::exception::HresultError;
using base::xml::LoadDomFromString;
using base::xps::printschema::ImageableAreaHandler;
using base::xps::printschema::ImageableAreaInfo;
using base::xps::printschema::ImageableAreaSource;
using base::xps::printschema::MediaDimensions;
using base::xps::printschema::MediaScaleFactor;
using base::xps::printschema::MediaSizeData;
using base::xps::printschema::MediaSizeOption;
using testing::ElementsAre;
using tests::Capabilities;
using tests::DomText;
using tests::kNotFound;
using tests::Ticket;

const MediaSizeOption kA5 = {L"ISOA5", 12, {148000, 210000}};

std::wstring Keyword(std::wstring_view name, std::wstring_view content) {
    return tests::Property(L"psk:" + std::wstring(name), content);
}

std::wstring Number(std::wstring_view name, std::wstring_view value) {
    return Keyword(name, tests::Value(L"integer", value));
}

const std::vector<std::wstring> kPageNumbers = {Number(L"ImageableSizeWidth", L"148001"),
                                                Number(L"ImageableSizeHeight", L"210001")};
const std::vector<std::wstring> kAreaNumbers = {
    Number(L"OriginWidth", L"4001"), Number(L"OriginHeight", L"5001"), Number(L"ExtentWidth", L"140001"),
    Number(L"ExtentHeight", L"200001")};
const std::wstring kWholeArea = Keyword(
    L"PageImageableSize",
    kPageNumbers[0] + kPageNumbers[1] +
        Keyword(L"ImageableArea", kAreaNumbers[0] + kAreaNumbers[1] + kAreaNumbers[2] + kAreaNumbers[3]));
const ImageableAreaInfo kWholeAreaInfo = {{148001, 210001}, {4001, 5001}, {140001, 200001}};

class ImageableAreaHandlerTest : public tests::EachDomTest {
  protected:
    ImageableAreaHandlerTest() { m_provider.tickets[kPTPageScope] = LoadDomFromString(PageTicket); }

    HRESULT Find(std::wstring_view capabilities, ImageableAreaInfo& area) {
        m_provider.pCapabilities = LoadDomFromString(Capabilities(capabilities));
        return ImageableAreaHandler(m_provider).GetImageableArea(kA5, area);
    }
    HRESULT ThrownByFind() {
        ImageableAreaInfo area;
        return tests::ThrownCode(
            [&] { static_cast<void>(ImageableAreaHandler(m_provider).GetImageableArea(kA5, area)); });
    }

    const std::wstring PageTicket = Ticket(L"<psf:Feature name=\"psk:PageOrientation\"/>");
    tests::StubTicketProvider m_provider;
};

TEST_P(ImageableAreaHandlerTest, AllSixValuesAreRead) {
    ImageableAreaInfo area;
    EXPECT_EQ(S_OK, Find(kWholeArea, area));
    EXPECT_EQ(kWholeAreaInfo, area);
}

TEST_P(ImageableAreaHandlerTest, TheCapabilitiesAreAskedForUnderACopyOfThePageTicketThatSelectsTheMedium) {
    ImageableAreaInfo area;
    ASSERT_EQ(S_OK, Find(kWholeArea, area));
    EXPECT_THAT(m_provider.scopes, ElementsAre(kPTPageScope));
    EXPECT_EQ(PageTicket, DomText(m_provider.tickets[kPTPageScope].Get()));
    ASSERT_TRUE(m_provider.pAskedTicket);
    EXPECT_NE(m_provider.tickets[kPTPageScope].Get(), m_provider.pAskedTicket.Get());
    MediaSizeData selected;
    selected.Read(m_provider.pAskedTicket.Get());
    EXPECT_EQ(kA5, selected.ToRecord());
    EXPECT_THAT(DomText(m_provider.pAskedTicket.Get()),
                testing::HasSubstr(L"<psf:Feature name=\"psk:PageOrientation\"/><psf:Feature "
                                   L"name=\"psk:PageMediaSize\">"));
}

TEST_P(ImageableAreaHandlerTest, AValueThatIsMissingStopsTheReading) {
    ImageableAreaInfo area;
    EXPECT_EQ(kNotFound, Find(L"", area));
    EXPECT_EQ(ImageableAreaInfo(), area);
    EXPECT_EQ(kNotFound, Find(Keyword(L"PageImageableSize", kPageNumbers[0]), area));
    EXPECT_EQ((ImageableAreaInfo{{148001, 0}, {0, 0}, {0, 0}}), area);
    EXPECT_EQ(kNotFound, Find(Keyword(L"PageImageableSize", kPageNumbers[0] + kPageNumbers[1]), area));
    EXPECT_EQ((ImageableAreaInfo{{148001, 210001}, {0, 0}, {0, 0}}), area);
    area = {};
    const std::wstring withoutOriginHeight = kAreaNumbers[0] + kAreaNumbers[2] + kAreaNumbers[3];
    EXPECT_EQ(kNotFound,
              Find(Keyword(L"PageImageableSize", kPageNumbers[0] + kPageNumbers[1] +
                                                     Keyword(L"ImageableArea", withoutOriginHeight)),
                   area));
    EXPECT_EQ((ImageableAreaInfo{{148001, 210001}, {4001, 0}, {0, 0}}), area);
}

TEST_P(ImageableAreaHandlerTest, TheValuesBeforeTheFirstThatIsMissingAreReadAndNoneBehindIt) {
    const std::int32_t values[] = {148001, 210001, 4001, 5001, 140001, 200001};
    for (std::size_t missing = 0; missing < std::size(values); ++missing) {
        std::wstring page;
        for (std::size_t index = 0; index < kPageNumbers.size(); ++index) {
            if (index != missing) page += kPageNumbers[index];
        }
        std::wstring rectangle;
        for (std::size_t index = 0; index < kAreaNumbers.size(); ++index) {
            if (kPageNumbers.size() + index != missing) rectangle += kAreaNumbers[index];
        }
        ImageableAreaInfo area;
        EXPECT_EQ(kNotFound,
                  Find(Keyword(L"PageImageableSize", page + Keyword(L"ImageableArea", rectangle)), area));
        const std::int32_t read[] = {area.imageableSize.width, area.imageableSize.height, area.origin.width,
                                     area.origin.height,       area.extent.width,         area.extent.height};
        for (std::size_t index = 0; index < std::size(values); ++index) {
            EXPECT_EQ(index < missing ? values[index] : 0, read[index]) << missing << " " << index;
        }
    }
}

TEST_P(ImageableAreaHandlerTest, AValueThatIsNoIntegerIsAFailure) {
    ImageableAreaInfo area;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA),
              Find(Keyword(L"PageImageableSize", Number(L"ImageableSizeWidth", L"wide")), area));
    EXPECT_EQ(ImageableAreaInfo(), area);
}

TEST_P(ImageableAreaHandlerTest, ValuesOfTheSameNameElsewhereAreNotTaken) {
    const std::wstring elsewhere =
        Number(L"ImageableSizeWidth", L"1") + Number(L"ImageableSizeHeight", L"2") +
        Keyword(L"ImageableArea", Number(L"OriginWidth", L"3") + Number(L"OriginHeight", L"4")) +
        Keyword(L"PageOther", Number(L"ExtentWidth", L"5") + Number(L"ExtentHeight", L"6"));
    ImageableAreaInfo area;
    EXPECT_EQ(S_OK, Find(elsewhere + kWholeArea, area));
    EXPECT_EQ(kWholeAreaInfo, area);
    EXPECT_EQ(kNotFound, Find(elsewhere, area));
    // Beside the area is not in it.
    area = {};
    EXPECT_EQ(kNotFound,
              Find(Keyword(L"PageImageableSize", kPageNumbers[0] + kPageNumbers[1] + kAreaNumbers[0] +
                                                     kAreaNumbers[1] + kAreaNumbers[2] + kAreaNumbers[3]),
                   area));
    EXPECT_EQ(0, area.origin.width);
}

TEST_P(ImageableAreaHandlerTest, APageTicketThatCannotBeHadThrowsItsCode) {
    m_provider.tickets.clear();
    EXPECT_EQ(E_PENDING, ThrownByFind());
}

TEST_P(ImageableAreaHandlerTest, CapabilitiesThatCannotBeHadThrowTheirCode) {
    EXPECT_EQ(E_PENDING, ThrownByFind());
    EXPECT_TRUE(m_provider.pAskedTicket);
}

TEST_P(ImageableAreaHandlerTest, APageTicketThatCannotBeCopiedThrows) {
    m_provider.tickets[kPTPageScope] = base::xml::CreateDom();
    EXPECT_EQ(E_FAIL, ThrownByFind());
    EXPECT_FALSE(m_provider.pAskedTicket);
    ImageableAreaInfo area;
    const std::string message = tests::MessageOf<std::exception>(
        [&] { static_cast<void>(ImageableAreaHandler(m_provider).GetImageableArea({}, area)); });
    EXPECT_TRUE(message.starts_with("base/xps/printschema/imageableareahandler.cpp(")) << message;
}

TEST_P(ImageableAreaHandlerTest, ADocumentThatIsNoCapabilitiesThrows) {
    m_provider.pCapabilities = LoadDomFromString(Ticket(kWholeArea));
    EXPECT_EQ(E_FAIL, ThrownByFind());
}

TEST_ON_EACH_DOM(ImageableAreaHandlerTest);

class FixedArea : public ImageableAreaSource {
  public:
    FixedArea(HRESULT result, const MediaDimensions& extent) : m_result(result), m_extent(extent) {}

    HRESULT GetImageableArea(const MediaSizeOption& mediaSize, ImageableAreaInfo& area) override {
        asked = mediaSize;
        area = {{1, 2}, {3, 4}, m_extent};
        return m_result;
    }

    MediaSizeOption asked;

  private:
    HRESULT m_result;
    MediaDimensions m_extent;
};

const MediaSizeOption kA4Sheet = {L"ISOA4", 9, {210000, 297000}};

TEST(MediaScaleFactorTest, WithoutASourceTheSmallerRatioOfTheSizesIsTaken) {
    EXPECT_EQ(0.5, MediaScaleFactor({420000, 297000}, kA4Sheet, nullptr));
    EXPECT_EQ(0.5, MediaScaleFactor({210000, 594000}, kA4Sheet, nullptr));
    EXPECT_EQ(2.0, MediaScaleFactor({105000, 99000}, kA4Sheet, nullptr));
    EXPECT_EQ(1.0, MediaScaleFactor({210000, 297000}, kA4Sheet, nullptr));
}

TEST(MediaScaleFactorTest, TheFactorIsNotRounded) {
    EXPECT_EQ(148000.0 / 210000.0, MediaScaleFactor({210000, 297000}, kA5, nullptr));
}

TEST(MediaScaleFactorTest, WithASourceTheExtentTakesThePlaceOfTheFallbacksSize) {
    FixedArea area(S_OK, {200000, 287000});
    EXPECT_EQ(0.5, MediaScaleFactor({400000, 287000}, kA4Sheet, &area));
    EXPECT_EQ(kA4Sheet, area.asked);
}

TEST(MediaScaleFactorTest, ASourceThatDoesNotKnowTheAreaLeavesTheWholeSheet) {
    FixedArea area(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), {1, 1});
    EXPECT_EQ(0.5, MediaScaleFactor({420000, 297000}, kA4Sheet, &area));
}

TEST(MediaScaleFactorTest, AZeroOrNegativeSizeGivesTheFactor1) {
    for (const std::int32_t length : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        EXPECT_EQ(1.0, MediaScaleFactor({length, 297000}, kA5, nullptr));
        EXPECT_EQ(1.0, MediaScaleFactor({210000, length}, kA5, nullptr));
        EXPECT_EQ(1.0, MediaScaleFactor(kA4Sheet.size, {L"CustomMediaSize", 0, {length, 210000}}, nullptr));
        EXPECT_EQ(1.0, MediaScaleFactor(kA4Sheet.size, {L"CustomMediaSize", 0, {148000, length}}, nullptr));
        FixedArea area(S_OK, {length, 1000});
        EXPECT_EQ(1.0, MediaScaleFactor(kA4Sheet.size, kA5, &area));
    }
}

TEST(MediaScaleFactorTest, TheLargestLengthsDoNotOverflow) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(2147483647.0, MediaScaleFactor({1, 1}, {L"CustomMediaSize", 0, {most, most}}, nullptr));
    EXPECT_EQ(1.0, MediaScaleFactor({most, most}, {L"CustomMediaSize", 0, {most, most}}, nullptr));
}

TEST(ImageableAreaInfoTest, IsTheSameWhenAllOfItIs) {
    const ImageableAreaInfo area = {{1, 2}, {3, 4}, {5, 6}};
    EXPECT_EQ((ImageableAreaInfo{{1, 2}, {3, 4}, {5, 6}}), area);
    EXPECT_NE((ImageableAreaInfo{{0, 2}, {3, 4}, {5, 6}}), area);
    EXPECT_NE((ImageableAreaInfo{{1, 2}, {3, 0}, {5, 6}}), area);
    EXPECT_NE((ImageableAreaInfo{{1, 2}, {3, 4}, {0, 6}}), area);
}

}  // namespace
