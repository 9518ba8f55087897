#pragma once

/// @file  Which texels the pixels of a mirror ball show, estimated. Private to the mirror ball.
///
/// What a pixel shows is defined operation by operation (`MirrorBall.cpp`), with eleven divisions.
/// The estimate takes one, and names the same texel or says that it is in doubt:
///
/// - Hits are measured in half sides of the box. Both computations take where a pixel lies and how
///   deep the ball is there from the same bits (`square`); from there on the parts of their unit
///   rays differ by less than 2^-47, some dozens of roundings of values of at most 1. No side of
///   the box is longer than 16 times another, so the part towards the side that is hit is at least
///   1/36, and the hits differ by less than 2^-40.
/// - A hit is in doubt unless it is 2^-30 of a picture's side away from all borders of texels,
///   hence from all edges of the box. One that is not is in the same texel by the definition.
/// - The definition accepts no other side for it. Where the ray meets another side's plane it has
///   left the box by 2^-35 or more. Where its part towards that plane is too small to see so
///   little, or even to know its sign, it meets the plane ten half sides away or further.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace rb::kernels::ball {

constexpr double kRadius = 0.001;         // of the ball
constexpr double kTexelsPerLength = 100;  // on the box

/// From -1 to 1 over the ball. A ball of one pixel has no such place, and no ray hits.
inline double place(std::size_t i, std::size_t size) {
    return 2 * (static_cast<double>(i) / (static_cast<double>(size) - 1) - 0.5);
}

/// Estimates row by row.
/// Threads: an object of its own for each. Lifetime: views end with the next call.
class RowEstimate {
public:
    static constexpr std::int32_t kInDoubt = 6;

    /// Whether estimates of such pictures are good, and their numbers small enough.
    static bool isPossible(std::size_t width, std::size_t height);

    /// @param mayUseAvx2  Where the processor has it. Results are the same.
    RowEstimate(std::size_t width, std::size_t height, bool mayUseAvx2);

    /// Estimates the pixels from @p begin to @p end of the row at @p v, all of them on the ball.
    void compute(double v, std::size_t begin, std::size_t end);

    /// Where each pixel of a row lies, from -1 to 1.
    std::span<const double> u() const { return m_u; }
    /// The number of a pixel's picture, or `kInDoubt`.
    std::span<const std::int32_t> faces() const { return m_faces; }
    /// The index of its texel; may be beyond the picture.
    std::span<const std::int32_t> texels() const { return m_texels; }

private:
    void computeAvx2(double v, std::size_t begin, std::size_t end);
    void findHits(double v, std::size_t begin, std::size_t end);
    void findTexels(double v, std::size_t begin, std::size_t end);

    std::int32_t m_width, m_height;
    bool m_usesAvx2;
    std::vector<double> m_u;
    std::vector<double> m_x, m_y, m_z;  // hits
    std::vector<std::int32_t> m_axes;   // of the sides hit
    std::vector<std::int32_t> m_faces, m_texels;
};

}  // namespace rb::kernels::ball
