#pragma once

/// @file  Reads a source from its beginning to its end with few calls.

#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace rb::imaging {

/// A place in a source that moves forwards. No operation throws or allocates, so that a codec
/// written in C may call them and leave them by a jump.
class BufferedSource {
public:
    explicit BufferedSource(ByteSource& source) : m_source(source) {}

    /// Where the next byte stands in the file.
    std::uint64_t position() const { return m_ahead - (m_end - m_next); }

    /// Copies up to @p count bytes; returns how many there were.
    std::size_t read(void* to, std::size_t count) {
        std::size_t done = 0;
        while (done < count) {
            if (m_next == m_end && !refill()) break;
            const std::size_t taken = std::min(count - done, m_end - m_next);
            std::memcpy(static_cast<std::byte*>(to) + done, m_buffer.data() + m_next, taken);
            m_next += taken;
            done += taken;
        }
        return done;
    }

    /// The next byte; -1 at the end.
    int get() {
        if (m_next == m_end && !refill()) return -1;
        return std::to_integer<int>(m_buffer[m_next++]);
    }

    /// Passes over @p count bytes, beyond the end if need be.
    void skip(std::uint64_t count) {
        const auto buffered =
            static_cast<std::size_t>(std::min<std::uint64_t>(count, m_end - m_next));
        m_next += buffered;
        m_ahead += count - buffered;
    }

    /// Hands out the next bytes, as many as are at hand, and passes over them; empty at the end.
    std::span<const std::byte> nextBlock() {
        if (m_next == m_end && !refill()) return {};
        const std::span<const std::byte> block(m_buffer.data() + m_next, m_end - m_next);
        m_next = m_end;
        return block;
    }

private:
    bool refill() {
        m_next = 0;
        m_end = m_source.read(m_ahead, m_buffer.data(), m_buffer.size());
        m_ahead += m_end;
        return m_end > 0;
    }

    ByteSource& m_source;
    std::uint64_t m_ahead = 0;  // offset of the first byte behind the buffered ones
    std::size_t m_next = 0;
    std::size_t m_end = 0;
    std::array<std::byte, 64 * 1024> m_buffer;  // undefined beyond m_end
};

}  // namespace rb::imaging
