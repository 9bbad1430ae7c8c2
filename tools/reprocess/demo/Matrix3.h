#pragma once

#include <array>
#include <cstddef>

namespace quen::reprocess {

/** Three rows of three. */
using Matrix3 = std::array<double, 9>;

/** What a matrix makes of the columns of another. */
constexpr Matrix3 product(Matrix3 const& a, Matrix3 const& b) {
    Matrix3 result{};
    for (size_t i = 0; i < result.size(); ++i) {
        for (size_t k = 0; k < 3; ++k) {
            result[i] += a[i / 3 * 3 + k] * b[k * 3 + i % 3];
        }
    }
    return result;
}

/** The matrix that undoes a regular one. */
constexpr Matrix3 inverse(Matrix3 const& m) {
    // The cofactor of a row and a column, the others taken in cyclic order.
    auto const cofactor = [&](size_t row, size_t column) {
        size_t const r1 = (row + 1) % 3 * 3;
        size_t const r2 = (row + 2) % 3 * 3;
        size_t const c1 = (column + 1) % 3;
        size_t const c2 = (column + 2) % 3;
        return m[r1 + c1] * m[r2 + c2] - m[r1 + c2] * m[r2 + c1];
    };
    double const determinant =
            m[0] * cofactor(0, 0) + m[1] * cofactor(0, 1) + m[2] * cofactor(0, 2);
    Matrix3 result{};
    for (size_t i = 0; i < result.size(); ++i) {
        result[i] = cofactor(i % 3, i / 3) / determinant;
    }
    return result;
}

}  // namespace quen::reprocess
