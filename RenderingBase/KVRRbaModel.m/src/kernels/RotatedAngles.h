#pragma once

/// @file  Polar angle and azimuth of a direction, in single precision. Pure computation.
///
/// The same operations in the same order as the vectors of TableDirections.cpp, so that both give
/// the same bits. No table of the compiler's mathematics library is asked: its last bits differ
/// between systems.

#include <algorithm>
#include <cmath>

namespace rb::kernels {

inline constexpr float kHalfPi = 1.5707964F, kPi = 3.1415927F, kTwoPi = 6.2831855F;
/// What is missing to pi / 2 and to pi.
inline constexpr float kHalfPiRest = -4.371139e-8F, kPiRest = -8.742278e-8F;

/// (asin(s) / s - 1) / s^2 as a polynomial of s^2 up to 0.25, and (atan(t) / t - 1) / t^2 as one of
/// t^2 up to 1; lowest power first. Fitted by Remez' exchange: the least largest error, 8e-9 and
/// 4e-9 of the angle.
inline constexpr float kArcSine[] = {0.166667037F, 0.0749695419F, 0.0452874073F, 0.0249963671F,
                                     0.0408893114F};
inline constexpr float kArcTangent[] = {-0.333333258F,  0.199993499F,  -0.142726338F,
                                        0.109952574F,   -0.085268717F, 0.0600318591F,
                                        -0.0332096059F, 0.0119884017F, -0.00203025466F};

template <std::size_t kCount>
constexpr float polynomial(const float (&coefficients)[kCount], float x) {
    float sum = coefficients[kCount - 1];
    for (std::size_t i = kCount - 1; i-- > 0;) sum = sum * x + coefficients[i];
    return sum;
}

/// The inverse cosine, at most 2 units in the last place away. What is beyond 1 by rounding counts
/// as 1.
inline float inverseCosine(float x) {
    const float size = std::min(std::abs(x), 1.0F);
    const bool isLarge = size > 0.5F;
    // Near 1 by the half angle: asin(x) = pi/2 - 2 asin(sqrt((1 - x) / 2)).
    const float square = isLarge ? (1 - size) * 0.5F : size * size;
    const float sine = isLarge ? std::sqrt(square) : size;
    const float angle = sine + sine * square * polynomial(kArcSine, square);
    const float twice = angle + angle;
    if (isLarge) return x < 0 ? kPi - (twice - kPiRest) : twice;
    return kHalfPi - ((x < 0 ? -angle : angle) - kHalfPiRest);
}

/// The azimuth of (@p x, @p y) from 0 to 2 pi, at most 2 units in the last place away; of (0, 0) no
/// number.
inline float azimuth(float y, float x) {
    const float sizeX = std::abs(x), sizeY = std::abs(y);
    const float t = std::min(sizeX, sizeY) / std::max(sizeX, sizeY);
    const float square = t * t;
    float angle = t + t * square * polynomial(kArcTangent, square);
    if (sizeY > sizeX) angle = kHalfPi - (angle - kHalfPiRest);
    if (x < 0) angle = kPi - (angle - kPiRest);
    return y < 0 ? kTwoPi - angle : angle;
}

}  // namespace rb::kernels
