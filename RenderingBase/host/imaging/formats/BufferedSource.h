#pragma once

/// @file  Reads a source piece by piece with few calls.

#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace rb::imaging {

/// A place in a source. No operation throws or allocates, so that a codec written in C may call
/// them and leave them by a jump.
class BufferedSource {
public:
    static constexpr std::size_t kMostAhead = 64 * 1024;

    /// @param ahead  How many bytes are read at once, up to kMostAhead. What is asked for in larger
    ///               pieces goes straight to its place.
    explicit BufferedSource(ByteSource& source, std::size_t ahead = kMostAhead)
        : m_source(source), m_aheadBytes(ahead) {}

    /// Where the next byte stands in the file.
    std::uint64_t position() const { return m_ahead - (m_end - m_next); }

    /// Copies up to @p count bytes; returns how many there were.
    std::size_t read(void* to, std::size_t count) {
        std::size_t done = 0;
        while (done < count) {
            if (m_next == m_end && count - done >= m_aheadBytes)
                return done + readThrough(static_cast<std::byte*>(to) + done, count - done);
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
    void skip(std::uint64_t count) { seek(position() + count); }

    /// Goes to any place in the file, beyond its end if need be.
    void seek(std::uint64_t place) {
        const std::uint64_t bufferBegin = m_ahead - m_end;
        if (place >= bufferBegin && place <= m_ahead) {
            m_next = static_cast<std::size_t>(place - bufferBegin);
            return;
        }
        m_next = m_end = 0;
        m_ahead = place;
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
        m_end = m_source.read(m_ahead, m_buffer.data(), m_aheadBytes);
        m_ahead += m_end;
        return m_end > 0;
    }

    std::size_t readThrough(void* to, std::size_t count) {
        const std::size_t got = m_source.read(m_ahead, to, count);
        m_ahead += got;
        m_next = m_end = 0;
        return got;
    }

    ByteSource& m_source;
    std::size_t m_aheadBytes;
    std::uint64_t m_ahead = 0;  // offset of the first byte behind the buffered ones
    std::size_t m_next = 0;
    std::size_t m_end = 0;
    std::array<std::byte, kMostAhead> m_buffer;  // undefined beyond m_end
};

}  // namespace rb::imaging
