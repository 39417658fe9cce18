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
        left = std::min(left, corner.m_x);
        top = std::min(top, corner.m_y);
    }

    MatrixElements elements{};
    matrix.GetElements(elements);
    elements[4] -= left;
    elements[5] -= top;
    matrix.SetElements(elements);
}

Box TransformCornerBox(const Box& box, const Matrix& matrix) {
    std::array<Point, 2> corners{{{box.m_left, box.m_top}, {box.m_right, box.m_bottom}}};
    matrix.TransformPoints(corners);
    const auto [left, right] = std::minmax(corners[0].m_x, corners[1].m_x);
    const auto [top, bottom] = std::minmax(corners[0].m_y, corners[1].m_y);
    return {left, top, right, bottom};
}

Box OffsetBox(const Box& box, Point point) noexcept {
    return {point.m_x, point.m_y, box.Width() + point.m_x, box.Height() + point.m_y};
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
