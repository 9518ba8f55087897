#pragma once

/// @file  Pixels of floating-point channels made displayable. Pure computation.

#include <cstddef>
#include <cstdint>
#include <span>

namespace rb::kernels {

/// What becomes of an alpha outside 0..1.
enum class AlphaRange {
    Clamped,
    /// Not looked at: the byte is the low 8 bits of 255 alpha, truncated. No number, and what is
    /// beyond 32 bits, gives 0.
    Wrapped,
};

/// Makes RGBA bytes of floats.
///
/// Colours are clamped to 0..1, no number becoming 0, and multiplied by a factor between 3 for
/// black and 1 for white: 0.85 s^2 - 0.1083333 s^3 - 2.2416666 s + 3, with s the sum of the clamped
/// colours. The product is limited to 1, and its bytes are truncated, never rounded. All in single
/// precision, term by term as written; every processor gives the same bytes.
/// @param channels  1 grey, 3 colours, 4 colours and alpha. Without alpha pixels are opaque.
/// @param values    As many pixels as both spans have are converted.
void toneMap(std::span<const float> values, std::size_t channels, AlphaRange alphaRange,
             std::span<std::uint8_t> rgba);

/// The same of the bits of half-precision floats, with clamped alpha.
void toneMapHalves(std::span<const std::uint16_t> halves, std::size_t channels,
                   std::span<std::uint8_t> rgba);

/// Repeats each of @p values three times, bit by bit, as far as both spans go.
void repeatForColors(std::span<const float> values, std::span<float> rgb);

}  // namespace rb::kernels
