#include "base/xps/matrix.h"

namespace base::xps {

namespace flat = Gdiplus::DllExports;

static_assert(sizeof(Point) == sizeof(Gdiplus::PointF));

Matrix::Matrix() noexcept { Keep(flat::GdipCreateMatrix(&m_pMatrix)); }

Matrix::~Matrix() {
    if (m_pMatrix != nullptr) flat::GdipDeleteMatrix(m_pMatrix);
}

Gdiplus::Status Matrix::GetElements(MatrixElements& elements) const noexcept {
    return Keep(flat::GdipGetMatrixElements(m_pMatrix, elements.data()));
}

Gdiplus::Status Matrix::SetElements(const MatrixElements& elements) noexcept {
    const auto& [m11, m12, m21, m22, dx, dy] = elements;
    return Keep(flat::GdipSetMatrixElements(m_pMatrix, m11, m12, m21, m22, dx, dy));
}

Gdiplus::Status Matrix::Scale(float sx, float sy) noexcept {
    return Keep(flat::GdipScaleMatrix(m_pMatrix, sx, sy, Gdiplus::MatrixOrderPrepend));
}

Gdiplus::Status Matrix::Rotate(float angle) noexcept {
    return Keep(flat::GdipRotateMatrix(m_pMatrix, angle, Gdiplus::MatrixOrderPrepend));
}

Gdiplus::Status Matrix::TransformPoints(std::span<Point> points) const noexcept {
    return Keep(flat::GdipTransformMatrixPoints(m_pMatrix, reinterpret_cast<Gdiplus::PointF*>(points.data()),
                                                static_cast<INT>(points.size())));
}

Gdiplus::Status Matrix::Keep(Gdiplus::Status status) const noexcept {
    if (status != Gdiplus::Ok) m_lastStatus = status;
    return status;
}

}  // namespace base::xps
