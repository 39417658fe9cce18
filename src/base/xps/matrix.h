#pragma once

#include <array>
#include <span>
#include <utility>

#include "platform/gdiplus.h"

namespace base::xps {

// A point on a page, in 1/96 inch; laid out as GDI+ wants it.
struct Point {
    float x = 0;
    float y = 0;
};

// m11, m12, m21, m22, dx, dy of an affine matrix in the row-vector convention: a point (x, y) goes to
// (x*m11 + y*m21 + dx, x*m12 + y*m22 + dy).
using MatrixElements = std::array<float, 6>;

// Owns a GDI+ matrix. Every operation returns GDI+'s status and keeps the last one that was not Ok; none
// throws. A matrix that could not be created, or that was moved from, answers InvalidParameter. GDI+ must be
// started for the matrix's whole life.
class Matrix {
  public:
    // The identity.
    Matrix() noexcept;
    Matrix(const Matrix&) = delete;
    Matrix& operator=(const Matrix&) = delete;
    Matrix(Matrix&& other) noexcept
        : m_pMatrix(std::exchange(other.m_pMatrix, nullptr)), m_lastStatus(other.m_lastStatus) {}
    Matrix& operator=(Matrix&& other) noexcept {
        std::swap(m_pMatrix, other.m_pMatrix);
        std::swap(m_lastStatus, other.m_lastStatus);
        return *this;
    }
    ~Matrix();

    Gdiplus::Status GetElements(MatrixElements& elements) const noexcept;
    Gdiplus::Status SetElements(const MatrixElements& elements) noexcept;
    // Both put the new operation before what the matrix already does.
    Gdiplus::Status Scale(float sx, float sy) noexcept;
    // Degrees, clockwise on a page whose y axis points down.
    Gdiplus::Status Rotate(float angle) noexcept;
    // In place. No points at all are InvalidParameter.
    Gdiplus::Status TransformPoints(std::span<Point> points) const noexcept;

    [[nodiscard]] Gdiplus::Status LastStatus() const noexcept { return m_lastStatus; }

  private:
    Gdiplus::Status Keep(Gdiplus::Status status) const noexcept;

    Gdiplus::GpMatrix* m_pMatrix = nullptr;
    mutable Gdiplus::Status m_lastStatus = Gdiplus::Ok;
};

}  // namespace base::xps
