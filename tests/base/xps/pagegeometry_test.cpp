#include "base/xps/pagegeometry.h"

#include <gtest/gtest.h>

#include "base/logging/exceptions.h"
#include "base/xps/gdiplusguard.h"
#include "thrown.h"

namespace base::xps {
namespace {

class PageGeometryTest : public testing::Test {
  protected:
    static constexpr Box kLetter = {0, 0, 816, 1056};

    static void ExpectBox(const Box& expected, const Box& actual) {
        EXPECT_NEAR(expected.left, actual.left, 0.001);
        EXPECT_NEAR(expected.top, actual.top, 0.001);
        EXPECT_NEAR(expected.right, actual.right, 0.001);
        EXPECT_NEAR(expected.bottom, actual.bottom, 0.001);
    }

    static std::wstring TransformOf(const Box& page, float angle, float scale) {
        Matrix matrix;
        BuildPageMatrix(page, angle, scale, matrix);
        return FormatRenderTransform(matrix);
    }

    GdiplusGuard m_guard;
};

TEST_F(PageGeometryTest, AngleZeroAndScaleOneGiveTheIdentity) {
    EXPECT_EQ(L"RenderTransform=\"1.00,0.00,0.00,1.00,0.00,0.00\"", TransformOf(kLetter, 0, 1));
}

TEST_F(PageGeometryTest, Angle270TurnsALetterPageIntoItsPlace) {
    EXPECT_EQ(L"RenderTransform=\"0.00,-1.00,1.00,0.00,0.00,816.00\"", TransformOf(kLetter, 270, 1));

    Matrix matrix;
    BuildPageMatrix(kLetter, 270, 1, matrix);
    ExpectBox({0, 0, 1056, 816}, TransformCornerBox(kLetter, matrix));
    Point point[] = {{100, 200}};
    matrix.TransformPoints(point);
    EXPECT_NEAR(200, point[0].x, 0.001);
    EXPECT_NEAR(816 - 100, point[0].y, 0.001);
}

TEST_F(PageGeometryTest, EveryQuarterTurnEndsInThePositiveQuadrant) {
    EXPECT_EQ(L"RenderTransform=\"0.00,1.00,-1.00,0.00,1056.00,0.00\"", TransformOf(kLetter, 90, 1));
    EXPECT_EQ(L"RenderTransform=\"-1.00,0.00,0.00,-1.00,816.00,1056.00\"", TransformOf(kLetter, 180, 1));
    EXPECT_EQ(L"RenderTransform=\"1.00,0.00,0.00,1.00,0.00,0.00\"", TransformOf(kLetter, 360, 1));
}

TEST_F(PageGeometryTest, TheScaleAppliesToBothAxesBeforeTheShift) {
    EXPECT_EQ(L"RenderTransform=\"0.00,-0.50,0.50,0.00,0.00,408.00\"", TransformOf(kLetter, 270, 0.5f));
}

TEST_F(PageGeometryTest, WhatTheMatrixHeldBeforeDoesNotMatter) {
    Matrix matrix;
    matrix.SetElements({9, 8, 7, 6, 5, 4});
    BuildPageMatrix(kLetter, 270, 1, matrix);
    EXPECT_EQ(L"RenderTransform=\"0.00,-1.00,1.00,0.00,0.00,816.00\"", FormatRenderTransform(matrix));
}

TEST_F(PageGeometryTest, APageWithoutHeightStaysInPlace) {
    EXPECT_EQ(L"RenderTransform=\"0.00,-1.00,1.00,0.00,0.00,816.00\"", TransformOf({0, 0, 816, 0}, 270, 1));
}

TEST_F(PageGeometryTest, OnlyTwoCornersAreTransformed) {
    Matrix matrix;
    matrix.Rotate(45);
    // The true bounding box of the turned square is 2 * 70.71 wide; the two corners span a line.
    ExpectBox({0, 0, 0, 141.4214f}, TransformCornerBox({0, 0, 100, 100}, matrix));
}

TEST_F(PageGeometryTest, TheTransformedCornersAreOrderedPerAxis) {
    Matrix matrix;
    matrix.SetElements({-1, 0, 0, -1, 0, 0});
    ExpectBox({-30, -40, -10, -20}, TransformCornerBox({10, 20, 30, 40}, matrix));
    matrix.SetElements({-1, 0, 0, 1, 0, 0});
    ExpectBox({-30, 20, -10, 40}, TransformCornerBox({10, 20, 30, 40}, matrix));
}

TEST_F(PageGeometryTest, OffsettingABoxKeepsItsSize) {
    ExpectBox({5, 6, 25, 46}, OffsetBox({100, 200, 120, 240}, {5, 6}));
    ExpectBox({-5, -6, 15, 34}, OffsetBox({0, 0, 20, 40}, {-5, -6}));
}

TEST_F(PageGeometryTest, AnElementOfExactlyTheThresholdPrintsAsZero) {
    EXPECT_EQ(0.0f, SnapToZero(0.001f));
    EXPECT_EQ(0.0f, SnapToZero(-0.001f));
    EXPECT_FALSE(std::signbit(SnapToZero(-0.0f)));
    Matrix matrix;
    matrix.SetElements({0.001f, -0.001f, 0.001f, -0.001f, 0.001f, -0.001f});
    EXPECT_EQ(L"RenderTransform=\"0.00,0.00,0.00,0.00,0.00,0.00\"", FormatRenderTransform(matrix));
}

TEST_F(PageGeometryTest, AnElementJustOverTheThresholdPrintsAsZeroButIsNotSnapped) {
    EXPECT_EQ(0.0011f, SnapToZero(0.0011f));
    EXPECT_EQ(-0.0011f, SnapToZero(-0.0011f));
    Matrix matrix;
    matrix.SetElements({0.0011f, -0.0011f, 1, 1, 0, 0});
    EXPECT_EQ(L"RenderTransform=\"0.00,-0.00,1.00,1.00,0.00,0.00\"", FormatRenderTransform(matrix));
}

TEST_F(PageGeometryTest, AMatrixWithoutElementsCannotBeFormatted) {
    Matrix matrix;
    const Matrix taker = std::move(matrix);
    EXPECT_EQ("base/xps/pagegeometry.cpp(LINE) : Matrix.GetElements failed.\n",
              tests::Thrown<exception::Error>([&] { static_cast<void>(FormatRenderTransform(matrix)); }));
}

}  // namespace
}  // namespace base::xps
