#pragma once

/// @file  What a mirroring ball inside a cube of pictures looks like. Pure computation.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace rb::kernels {

/// Six pictures of the same size, 8-bit RGBA, rows top first, no padding.
struct CubePictures {
    std::array<const std::uint8_t*, 6> faces;  ///< The pictures seen along +y -y +x -x +z -z.
    std::size_t width;                         ///< Texels.
    std::size_t height;
};

/// Renders the ball, `width` x `width` pixels RGBA, into @p ball: x to the right, y downwards, z
/// away from the eye.
///
/// A pixel of the ball is the texel that its reflected ray hits. Outside the ball, and where a ray
/// meets the very end of a picture, pixels are black with alpha 1; that is not transparent, kept
/// for compatibility. All in double precision. The box is as wide and high as the pictures and as
/// deep as it is wide, a texel a hundredth.
void renderMirrorBall(const CubePictures& cube, std::span<std::uint8_t> ball);

namespace detail {

/// What `renderMirrorBall` does on processors without AVX2.
void renderMirrorBallPortable(const CubePictures& cube, std::span<std::uint8_t> ball);

}  // namespace detail
}  // namespace rb::kernels
