#pragma once

/// @file  Numbers as files store them.

#include <bit>
#include <cstdint>
#include <cstring>

namespace rb::imaging {

inline std::uint32_t little16(const unsigned char* at) { return at[0] | std::uint32_t{at[1]} << 8; }

inline std::uint32_t little32(const unsigned char* at) {
    return little16(at) | little16(at + 2) << 16;
}

inline std::uint64_t little64(const unsigned char* at) {
    return little32(at) | std::uint64_t{little32(at + 4)} << 32;
}

inline std::uint32_t big16(const unsigned char* at) { return std::uint32_t{at[0]} << 8 | at[1]; }

/// Not written with shifts: of these not every compiler makes vectors.
inline std::uint32_t big32(const unsigned char* at) {
    std::uint32_t value = 0;
    std::memcpy(&value, at, sizeof value);
    return std::endian::native == std::endian::little ? __builtin_bswap32(value) : value;
}

}  // namespace rb::imaging
