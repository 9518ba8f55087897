#pragma once

/// @file  What files that tests put together consist of: numbers and zlib streams.

#include <cstddef>
#include <cstdint>
#include <string>

namespace rb::test {

/// The lowest @p bytes bytes of a number, the highest of them first.
inline std::string bigEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) text += static_cast<char>(value >> 8 * i & 0xFF);
    return text;
}

inline std::string littleEndian(std::uint64_t value, int bytes) {
    const std::string text = bigEndian(value, bytes);
    return {text.rbegin(), text.rend()};
}

/// A zlib stream (RFC 1950) without compression, of stored blocks.
inline std::string zlibStream(const std::string& bytes) {
    std::uint32_t a = 1, b = 0;
    for (const char byte : bytes) {
        a = (a + static_cast<unsigned char>(byte)) % 65521;
        b = (b + a) % 65521;
    }
    std::string stream = "\x78\x01";
    constexpr std::size_t kLongest = 65535;
    std::size_t at = 0;
    do {
        const std::string part = bytes.substr(at, kLongest);
        at += part.size();
        stream += at == bytes.size() ? '\1' : '\0';
        stream += littleEndian(part.size(), 2) + littleEndian(~part.size(), 2) + part;
    } while (at < bytes.size());
    return stream + bigEndian(b << 16 | a, 4);
}

}  // namespace rb::test
