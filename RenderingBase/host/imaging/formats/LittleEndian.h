#pragma once

/// @file  Numbers as little endian formats store them.

#include <cstdint>

namespace rb::imaging {

inline std::uint32_t little16(const unsigned char* at) { return at[0] | std::uint32_t{at[1]} << 8; }

inline std::uint32_t little32(const unsigned char* at) {
    return little16(at) | little16(at + 2) << 16;
}

}  // namespace rb::imaging
