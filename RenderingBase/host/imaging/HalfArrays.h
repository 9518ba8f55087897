#pragma once

/// @file  Conversion of whole arrays between 32-bit and 16-bit floating-point numbers.
///
/// For single values use `RenderingBase/public/openexr_half.h`, whose bits these functions
/// reproduce.
///
///     std::vector<std::uint16_t> halves(floats.size());
///     rb::imaging::halvesFromFloats(floats, halves);

#include "RenderingBase/host/base/KVRExport.h"

#include <cstdint>
#include <span>

namespace rb::imaging {

/// Converts @p source to IEEE 754 binary16, element by element, into @p target.
///
/// Rounds to the nearest, ties to even. Every bit is that of `float_to_half`, NaNs included. As
/// many elements as the shorter of both spans has are converted; the rest of @p target is left
/// alone. The spans must not overlap; they need no more than the alignment of their elements.
///
/// The floating-point state of the thread is not used, and is afterwards as it was: unlike
/// `float_to_half`, no exception flag is raised, and traps, rounding mode and the treatment of
/// subnormal numbers play no part.
///
/// Errors: none. Threads: may be called at once on different targets. Cost: no allocation; a target
/// of 16 MiB and more is written past the processor's caches.
KVR_EXPORT void halvesFromFloats(std::span<const float> source,
                                 std::span<std::uint16_t> target) noexcept;

/// Converts IEEE 754 binary16 numbers to `float`, element by element, into @p target.
///
/// Every conversion is exact, and every bit is that of `half_to_float`, NaNs included. Lengths,
/// overlap, alignment, floating-point state, threads and cost as for `halvesFromFloats`.
KVR_EXPORT void floatsFromHalves(std::span<const std::uint16_t> source,
                                 std::span<float> target) noexcept;

namespace detail {

/// What `halvesFromFloats` does on processors without conversion instructions.
KVR_EXPORT void halvesFromFloatsPortable(std::span<const float> source,
                                         std::span<std::uint16_t> target) noexcept;

/// What `floatsFromHalves` does on processors without conversion instructions.
KVR_EXPORT void floatsFromHalvesPortable(std::span<const std::uint16_t> source,
                                         std::span<float> target) noexcept;

}  // namespace detail
}  // namespace rb::imaging
