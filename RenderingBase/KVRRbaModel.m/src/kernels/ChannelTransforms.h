#pragma once

/// @file  Pictures changed channel by channel. Pure computation.
///
/// Pixels are 8-bit channels side by side, without padding. Every function writes as many bytes as
/// it reads: to a place as long as the source that is the source itself or does not touch it. What
/// is said to stay, and what is behind the last whole pixel, is copied. Every processor gives the
/// same bytes.

#include <cstddef>
#include <cstdint>
#include <span>

namespace rb::kernels {

using Bytes = std::span<const std::uint8_t>;
using BytesToWrite = std::span<std::uint8_t>;

/// Sets the first three bytes of each pixel to their HSL lightness, the mean of the greatest and
/// the smallest, truncated. Pixels of less than three bytes stay.
void greyByLightness(Bytes source, std::size_t bytesPerPixel, BytesToWrite target);

/// Makes RGBA pixels white or black; alpha stays. A sum of the colours from 383 upwards is white.
void blackAndWhite(Bytes rgba, BytesToWrite target);

/// Replaces each alpha of RGBA pixels by 255 minus it.
void invertAlpha(Bytes rgba, BytesToWrite target);

/// Replaces colours by 255 minus them: the first byte of one or two, the first three of more. What
/// is behind them stays.
void invertColors(Bytes source, std::size_t bytesPerPixel, BytesToWrite target);

/// Makes masks, white where pixels are transparent, with opaque alpha. Pixels of one or three bytes
/// have no alpha and become black; of more than four bytes they stay.
void maskFromAlpha(Bytes source, std::size_t bytesPerPixel, BytesToWrite target);

}  // namespace rb::kernels
