#pragma once

/// @file  Pictures changed channel by channel, in place. Pure computation.
///
/// Pixels are 8-bit channels side by side, without padding; every function takes whole pixels.

#include <cstddef>
#include <cstdint>
#include <span>

namespace rb::kernels {

/// Sets the first three bytes of each pixel to their HSL lightness, the mean of the greatest and
/// the smallest, truncated. Pixels of less than three bytes stay.
void greyByLightness(std::span<std::uint8_t> pixels, std::size_t bytesPerPixel);

/// Makes RGBA pixels white or black; alpha stays. A sum of the colours from 383 upwards is white.
void blackAndWhite(std::span<std::uint8_t> rgba);

/// Replaces each alpha of RGBA pixels by 255 minus it.
void invertAlpha(std::span<std::uint8_t> rgba);

/// Replaces colours by 255 minus them: the first byte of one or two, the first three of more. What
/// is behind them stays.
void invertColors(std::span<std::uint8_t> pixels, std::size_t bytesPerPixel);

/// Makes masks, white where pixels are transparent, with opaque alpha. Pixels of one or three bytes
/// have no alpha and become black; of more than four bytes they stay.
void maskFromAlpha(std::span<std::uint8_t> pixels, std::size_t bytesPerPixel);

}  // namespace rb::kernels
