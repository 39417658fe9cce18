#pragma once

#include <string>

#include "base/xps/matrix.h"

// The geometry of a page that is drawn through one matrix. Lengths are the page markup's own, 1/96 inch.
namespace base::xps {

// Ordered edges; a width or a height may be negative in markup that says so.
struct Box {
    float left = 0;
    float top = 0;
    float right = 0;
    float bottom = 0;

    [[nodiscard]] float Width() const noexcept { return right - left; }
    [[nodiscard]] float Height() const noexcept { return bottom - top; }
};

// Makes the matrix rotate by the angle in degrees, scale by the factor, and move the page back to where its
// left and top edges are not negative. The page lies at (0, 0).
void BuildPageMatrix(const Box& page, float angle, float scale, Matrix& matrix);

// The box spanned by the transformed left top and right bottom corners: the bounding box for quarter turns,
// and for those only.
[[nodiscard]] Box TransformCornerBox(const Box& box, const Matrix& matrix);

// The box of the same size with its left top corner at the point.
[[nodiscard]] Box OffsetBox(const Box& box, Point point) noexcept;

// The attribute RenderTransform="m11,m12,m21,m22,dx,dy" with two decimals each. base::exception::Error when
// the matrix has no elements to give.
[[nodiscard]] std::wstring FormatRenderTransform(const Matrix& matrix);

// 0 for a value within 0.001 of it, else the value. A quarter turn leaves cosines of that kind.
[[nodiscard]] float SnapToZero(float value) noexcept;

}  // namespace base::xps
