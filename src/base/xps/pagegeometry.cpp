#include "base/xps/pagegeometry.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/logging/check.h"
#include "base/xps/decimal.h"

namespace base::xps {

void BuildPageMatrix(const Box& page, float angle, float scale, Matrix& matrix) {
    matrix.SetElements({1, 0, 0, 1, 0, 0});
    matrix.Rotate(angle);
    matrix.Scale(scale, scale);

    std::array<Point, 4> corners{
        {{0, 0}, {page.Width(), 0}, {0, page.Height()}, {page.Width(), page.Height()}}};
    matrix.TransformPoints(corners);
    float left = 0;
    float top = 0;
    for (const Point& corner : corners) {
        left = std::min(left, corner.x);
        top = std::min(top, corner.y);
    }

    MatrixElements elements{};
    matrix.GetElements(elements);
    elements[4] -= left;
    elements[5] -= top;
    matrix.SetElements(elements);
}

Box TransformCornerBox(const Box& box, const Matrix& matrix) {
    std::array<Point, 2> corners{{{box.left, box.top}, {box.right, box.bottom}}};
    matrix.TransformPoints(corners);
    const auto [left, right] = std::minmax(corners[0].x, corners[1].x);
    const auto [top, bottom] = std::minmax(corners[0].y, corners[1].y);
    return {left, top, right, bottom};
}

Box OffsetBox(const Box& box, Point point) noexcept {
    return {point.x, point.y, box.Width() + point.x, box.Height() + point.y};
}

std::wstring FormatRenderTransform(const Matrix& matrix) {
    MatrixElements elements{};
    if (matrix.GetElements(elements) != Gdiplus::Ok) {
        logging::Throw<exception::Error>("Matrix.GetElements failed.");
    }
    std::ranges::transform(elements, elements.begin(), SnapToZero);
    return L"RenderTransform=\"" + FormatDecimals(elements) + L"\"";
}

float SnapToZero(float value) noexcept {
    constexpr float kThreshold = 0.001f;
    return std::abs(value) <= kThreshold ? 0.0f : value;
}

}  // namespace base::xps
