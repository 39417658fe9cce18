#include "base/xps/matrix.h"

#include <gtest/gtest.h>

#include "base/xps/gdiplusguard.h"

namespace base::xps {
namespace {

class MatrixTest : public testing::Test {
  protected:
    static MatrixElements ElementsOf(const Matrix& matrix) {
        MatrixElements elements{};
        EXPECT_EQ(Gdiplus::Ok, matrix.GetElements(elements));
        return elements;
    }

    GdiplusGuard m_guard;
};

TEST_F(MatrixTest, IsTheIdentityWhenMade) {
    const Matrix matrix;
    EXPECT_EQ((MatrixElements{1, 0, 0, 1, 0, 0}), ElementsOf(matrix));
    EXPECT_EQ(Gdiplus::Ok, matrix.LastStatus());
}

TEST_F(MatrixTest, KeepsTheElementsThatAreSet) {
    Matrix matrix;
    EXPECT_EQ(Gdiplus::Ok, matrix.SetElements({1, 2, 3, 4, 5, 6}));
    EXPECT_EQ((MatrixElements{1, 2, 3, 4, 5, 6}), ElementsOf(matrix));
}

TEST_F(MatrixTest, ScalesBeforeWhatTheMatrixDoes) {
    Matrix matrix;
    matrix.SetElements({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(Gdiplus::Ok, matrix.Scale(2, 3));
    EXPECT_EQ((MatrixElements{2, 4, 9, 12, 5, 6}), ElementsOf(matrix));
}

TEST_F(MatrixTest, RotatesBeforeWhatTheMatrixDoes) {
    Matrix matrix;
    matrix.SetElements({2, 0, 0, 3, 10, 20});
    EXPECT_EQ(Gdiplus::Ok, matrix.Rotate(90));
    const MatrixElements elements = ElementsOf(matrix);
    EXPECT_NEAR(0, elements[0], 1e-6);
    EXPECT_NEAR(3, elements[1], 1e-6);
    EXPECT_NEAR(-2, elements[2], 1e-6);
    EXPECT_NEAR(0, elements[3], 1e-6);
    EXPECT_EQ(10, elements[4]);
    EXPECT_EQ(20, elements[5]);
}

TEST_F(MatrixTest, TransformsPointsAsRowVectors) {
    Matrix matrix;
    matrix.SetElements({1, 2, 3, 4, 5, 6});
    Point points[] = {{0, 0}, {1, 0}, {0, 1}, {10, 100}};
    EXPECT_EQ(Gdiplus::Ok, matrix.TransformPoints(points));
    EXPECT_EQ(5, points[0].x);
    EXPECT_EQ(6, points[0].y);
    EXPECT_EQ(6, points[1].x);
    EXPECT_EQ(8, points[1].y);
    EXPECT_EQ(8, points[2].x);
    EXPECT_EQ(10, points[2].y);
    EXPECT_EQ(315, points[3].x);
    EXPECT_EQ(426, points[3].y);
}

TEST_F(MatrixTest, KeepsTheLastStatusThatWasNotOk) {
    Matrix matrix;
    EXPECT_EQ(Gdiplus::InvalidParameter, matrix.TransformPoints({}));
    EXPECT_EQ(Gdiplus::Ok, matrix.Scale(2, 2));
    EXPECT_EQ(Gdiplus::InvalidParameter, matrix.LastStatus());
}

TEST_F(MatrixTest, EveryOperationOfAnEmptyMatrixAnswersInvalidParameter) {
    Matrix matrix;
    const Matrix taker = std::move(matrix);
    MatrixElements elements{};
    Point point;
    EXPECT_EQ(Gdiplus::Ok, matrix.LastStatus());
    EXPECT_EQ(Gdiplus::InvalidParameter, matrix.GetElements(elements));
    EXPECT_EQ(Gdiplus::InvalidParameter, matrix.SetElements(elements));
    EXPECT_EQ(Gdiplus::InvalidParameter, matrix.Scale(1, 1));
    EXPECT_EQ(Gdiplus::InvalidParameter, matrix.Rotate(90));
    EXPECT_EQ(Gdiplus::InvalidParameter, matrix.TransformPoints({&point, 1}));
    EXPECT_EQ(Gdiplus::InvalidParameter, matrix.LastStatus());
    EXPECT_EQ((MatrixElements{1, 0, 0, 1, 0, 0}), ElementsOf(taker));
}

TEST_F(MatrixTest, AssignmentTakesTheOtherMatrixOver) {
    Matrix source;
    source.SetElements({1, 2, 3, 4, 5, 6});
    Matrix target;
    target = std::move(source);
    EXPECT_EQ((MatrixElements{1, 2, 3, 4, 5, 6}), ElementsOf(target));
}

}  // namespace
}  // namespace base::xps
