#pragma once

/// @file  From CIE XYZ to linear RGB, for files that store XYZ.

#include <array>

namespace rb::imaging {

/// CIE x and y of three primaries and of white.
struct Chromaticities {
    double redX, redY, greenX, greenY, blueX, blueY, whiteX, whiteY;
};

/// Primaries of the Radiance picture format ("The RADIANCE Picture File Format", PRIMARIES), white
/// of equal energy.
inline constexpr Chromaticities kRadianceColors{0.640, 0.330, 0.290,   0.600,
                                                0.150, 0.060, 1.0 / 3, 1.0 / 3};
/// Primaries of ITU-R BT.709 with a white of equal energy, which is how log-encoded TIFF files are
/// shown (G. Ward Larson, "LogLuv encoding for full-gamut, high-dynamic range images", 1998).
inline constexpr Chromaticities kLogLuvColors{0.640, 0.330, 0.300,   0.600,
                                              0.150, 0.060, 1.0 / 3, 1.0 / 3};

/// A 3 x 3 matrix, row after row.
using ColorMatrix = std::array<double, 9>;

constexpr ColorMatrix inverse(const ColorMatrix& m) {
    const auto minor = [&m](int a, int b, int c, int d) {
        const auto at = [&m](int i) { return m[static_cast<std::size_t>(i)]; };
        return at(a) * at(d) - at(b) * at(c);
    };
    const double determinant =
        m[0] * minor(4, 5, 7, 8) - m[1] * minor(3, 5, 6, 8) + m[2] * minor(3, 4, 6, 7);
    ColorMatrix result{minor(4, 5, 7, 8), minor(2, 1, 8, 7), minor(1, 2, 4, 5),
                       minor(5, 3, 8, 6), minor(0, 2, 6, 8), minor(2, 0, 5, 3),
                       minor(3, 4, 6, 7), minor(1, 0, 7, 6), minor(0, 1, 3, 4)};
    for (double& value : result) value /= determinant;
    return result;
}

/// The matrix for columns of XYZ: that which takes white (with Y = 1) to (1, 1, 1) and each primary
/// to a multiple of its unit vector.
constexpr ColorMatrix rgbFromXyz(const Chromaticities& c) {
    const ColorMatrix primaries{c.redX,
                                c.greenX,
                                c.blueX,
                                c.redY,
                                c.greenY,
                                c.blueY,
                                1 - c.redX - c.redY,
                                1 - c.greenX - c.greenY,
                                1 - c.blueX - c.blueY};
    const ColorMatrix shares = inverse(primaries);
    const double white[3] = {c.whiteX / c.whiteY, 1, (1 - c.whiteX - c.whiteY) / c.whiteY};
    ColorMatrix result = shares;
    for (std::size_t row = 0; row < 3; ++row) {
        const double scale = shares[3 * row] * white[0] + shares[3 * row + 1] * white[1] +
                             shares[3 * row + 2] * white[2];
        for (std::size_t column = 0; column < 3; ++column) result[3 * row + column] /= scale;
    }
    return result;
}

/// Turns @p pixels XYZ triples into RGB in place.
inline void convertXyzToRgb(const ColorMatrix& matrix, float* values, std::size_t pixels) {
    std::array<float, 9> m{};
    for (std::size_t i = 0; i < 9; ++i) m[i] = static_cast<float>(matrix[i]);
    for (float* end = values + 3 * pixels; values != end; values += 3) {
        const float x = values[0], y = values[1], z = values[2];
        for (std::size_t row = 0; row < 3; ++row)
            values[row] = m[3 * row] * x + m[3 * row + 1] * y + m[3 * row + 2] * z;
    }
}

}  // namespace rb::imaging
