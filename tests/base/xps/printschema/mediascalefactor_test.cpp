#include "base/xps/printschema/mediascalefactor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using base::xps::printschema::ImageableAreaInfo;
using base::xps::printschema::ImageableAreaSource;
using base::xps::printschema::MediaDimensions;
using base::xps::printschema::MediaScaleFactor;
using base::xps::printschema::MediaSizeOption;

class FixedArea : public ImageableAreaSource {
  public:
    FixedArea(HRESULT result, const MediaDimensions& extent) : m_result(result), m_extent(extent) {}

    HRESULT GetImageableArea(const MediaSizeOption& mediaSize, ImageableAreaInfo& area) override {
        m_asked = mediaSize;
        area = {{1, 2}, {3, 4}, m_extent};
        return m_result;
    }

    MediaSizeOption m_asked;

  private:
    HRESULT m_result;
    MediaDimensions m_extent;
};

const MediaSizeOption A4 = {L"ISOA4", 9, {210000, 297000}};
const MediaSizeOption A5 = {L"ISOA5", 12, {148000, 210000}};

TEST(MediaScaleFactorTest, WithoutASourceTheSmallerRatioOfTheSizesIsTaken) {
    EXPECT_EQ(MediaScaleFactor({420000, 297000}, A4, nullptr), 0.5);
    EXPECT_EQ(MediaScaleFactor({210000, 594000}, A4, nullptr), 0.5);
    EXPECT_EQ(MediaScaleFactor({105000, 99000}, A4, nullptr), 2.0);
    EXPECT_EQ(MediaScaleFactor({210000, 297000}, A4, nullptr), 1.0);
}

TEST(MediaScaleFactorTest, TheFactorIsNotRounded) {
    EXPECT_EQ(MediaScaleFactor({210000, 297000}, A5, nullptr), 148000.0 / 210000.0);
}

TEST(MediaScaleFactorTest, WithASourceTheExtentTakesThePlaceOfTheFallbacksSize) {
    FixedArea area(S_OK, {200000, 287000});
    EXPECT_EQ(MediaScaleFactor({400000, 287000}, A4, &area), 0.5);
    EXPECT_EQ(area.m_asked, A4);
}

TEST(MediaScaleFactorTest, ASourceThatDoesNotKnowTheAreaLeavesTheWholeSheet) {
    FixedArea area(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), {1, 1});
    EXPECT_EQ(MediaScaleFactor({420000, 297000}, A4, &area), 0.5);
}

TEST(MediaScaleFactorTest, AZeroOrNegativeSizeGivesTheFactor1) {
    for (const std::int32_t length : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        EXPECT_EQ(MediaScaleFactor({length, 297000}, A5, nullptr), 1.0);
        EXPECT_EQ(MediaScaleFactor({210000, length}, A5, nullptr), 1.0);
        EXPECT_EQ(MediaScaleFactor(A4.size, {L"CustomMediaSize", 0, {length, 210000}}, nullptr), 1.0);
        EXPECT_EQ(MediaScaleFactor(A4.size, {L"CustomMediaSize", 0, {148000, length}}, nullptr), 1.0);
        FixedArea area(S_OK, {length, 1000});
        EXPECT_EQ(MediaScaleFactor(A4.size, A5, &area), 1.0);
    }
}

TEST(MediaScaleFactorTest, TheLargestLengthsDoNotOverflow) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(MediaScaleFactor({1, 1}, {L"CustomMediaSize", 0, {most, most}}, nullptr), 2147483647.0);
    EXPECT_EQ(MediaScaleFactor({most, most}, {L"CustomMediaSize", 0, {most, most}}, nullptr), 1.0);
}

}  // namespace
