#include "base/xps/printschema/measurementsystem.h"

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <optional>

#include "measurementsetting.h"

namespace {

using base::xps::printschema::IsMetricSetting;
using base::xps::printschema::IsUserLocaleMetric;
using tests::MeasurementSetting;

TEST(MeasurementSystemTest, OnlyExactlyOneMeansTheUsSystem) {
    EXPECT_FALSE(IsMetricSetting(L"1"));
    for (const wchar_t* setting : {L"0", L"2", L"", L"11", L"1 ", L"01"}) {
        EXPECT_TRUE(IsMetricSetting(setting)) << setting;
    }
}

TEST(MeasurementSystemTest, TheUsersSettingDecides) {
    {
        const MeasurementSetting us(L"1");
        EXPECT_FALSE(IsUserLocaleMetric());
    }
    {
        const MeasurementSetting metric(L"0");
        EXPECT_TRUE(IsUserLocaleMetric());
    }
    const MeasurementSetting tooLong(L"11");
    EXPECT_TRUE(IsUserLocaleMetric());
}

TEST(MeasurementSystemTest, ASettingThatCannotBeReadCountsAsMetric) {
    const MeasurementSetting unreadable(std::nullopt);
    EXPECT_TRUE(IsUserLocaleMetric());
}

TEST(MeasurementSystemTest, WithoutAReplacementTheSystemsOwnSettingIsRead) {
    wchar_t setting[2] = {};
    ASSERT_NE(GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_IMEASURE, setting, 2), 0);
    EXPECT_EQ(IsUserLocaleMetric(), setting[0] != L'1');
}

}  // namespace
