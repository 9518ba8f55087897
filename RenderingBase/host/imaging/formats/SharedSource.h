#pragma once

/// @file  One source for several threads.

#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include <cstddef>
#include <cstdint>
#include <mutex>

namespace rb::imaging {

/// A source, which must outlive this, that several threads read in turns.
class SharedSource {
public:
    explicit SharedSource(ByteSource& source) : m_source(source), m_size(source.size()) {}
    std::uint64_t size() const { return m_size; }
    /// As `ByteSource::read`.
    std::size_t read(std::uint64_t offset, void* to, std::size_t count) {
        const std::lock_guard lock(m_mutex);
        return m_source.read(offset, to, count);
    }

private:
    std::mutex m_mutex;
    ByteSource& m_source;
    const std::uint64_t m_size;
};

}  // namespace rb::imaging
