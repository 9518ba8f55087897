#pragma once

/// @file  A stretch of a source in memory, for scanlines whose length shows only while they are
/// decoded.

#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace rb::imaging {

/// A window that moves over a source, from the beginning to the end.
class SourceWindow {
public:
    explicit SourceWindow(ByteSource& source) : m_source(source) {}

    /// Tries to have the next @p count bytes (up to kCapacity) in memory; tells whether they exist.
    bool has(std::size_t count) {
        if (size() >= count || m_offset >= m_source.size()) return size() >= count;
        std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
        m_end -= m_begin;
        m_begin = 0;
        const std::size_t got =
            m_source.read(m_offset, m_buffer.data() + m_end, m_buffer.size() - m_end);
        m_offset += got;
        m_end += got;
        return size() >= count;
    }
    const unsigned char* data() const { return m_buffer.data() + m_begin; }
    std::size_t size() const { return m_end - m_begin; }
    void skip(std::size_t count) { m_begin += count; }
    /// Where `data` is in the source.
    std::uint64_t place() const { return m_offset - size(); }

    /// More than any scanline can take: of a Softimage picture seven bytes for each of 65535
    /// pixels, of a Radiance picture two for each of 4 x 32767.
    static constexpr std::size_t kCapacity = 512 * 1024;

private:
    ByteSource& m_source;
    std::vector<unsigned char> m_buffer = std::vector<unsigned char>(kCapacity);
    std::size_t m_begin = 0, m_end = 0;
    std::uint64_t m_offset = 0;
};

}  // namespace rb::imaging
