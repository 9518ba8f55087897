#pragma once

/// @file  Reads the sections before the pixels of PSD files: big-endian numbers and places.

#include "RenderingBase/host/imaging/formats/BufferedSource.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace rb::imaging {

/// Moves over a file. Beyond its end, bytes are zero and `ended` tells.
class PsdInput {
public:
    explicit PsdInput(ByteSource& source) : m_source(source), m_size(source.size()) {}

    std::uint64_t size() const { return m_size; }
    std::uint64_t position() const { return m_source.position(); }
    bool ended() const { return m_ended; }
    void seek(std::uint64_t place) { m_source.seek(place); }

    /// A number of 1 to 8 bytes.
    std::uint64_t number(int bytes) {
        std::uint64_t value = 0;
        for (int i = 0; i < bytes; ++i) value = value << 8 | next();
        return value;
    }
    std::uint32_t number16() { return static_cast<std::uint32_t>(number(2)); }
    std::uint32_t number32() { return static_cast<std::uint32_t>(number(4)); }

    /// A signature or a key.
    std::string text(std::size_t bytes) {
        std::string result(bytes, '\0');
        read(result.data(), bytes);
        return result;
    }
    void read(void* to, std::size_t bytes) {
        if (m_source.read(to, bytes) < bytes) m_ended = true;
    }

private:
    std::uint64_t next() {
        const int byte = m_source.get();
        if (byte < 0) m_ended = true;
        return byte < 0 ? 0 : static_cast<std::uint64_t>(byte);
    }

    BufferedSource m_source;
    std::uint64_t m_size;
    bool m_ended = false;
};

}  // namespace rb::imaging
