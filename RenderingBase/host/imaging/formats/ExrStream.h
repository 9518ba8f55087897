#pragma once

/// @file  Where the OpenEXR library takes its bytes from.

#include "RenderingBase/host/imaging/formats/BufferedSource.h"

#include <ImfIO.h>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace rb::imaging {

/// The library's view of a source. It reads headers and tables in pieces of some bytes, which come
/// out of a buffer, and chunks of pixels as a whole, which go straight to their places.
class ExrStream final : public Imf::IStream {
public:
    explicit ExrStream(ByteSource& source)
        : IStream("image"), m_size(source.size()), m_input(source, kBytesAhead) {}

    /// Throws when the file ends before, as the library expects.
    bool read(char* to, int count) override {
        const auto wanted = static_cast<std::size_t>(std::max(count, 0));
        if (m_input.read(to, wanted) != wanted)
            throw std::runtime_error("the end of the file at byte " + std::to_string(m_size));
        return m_input.position() < m_size;
    }
    std::uint64_t tellg() override { return m_input.position(); }
    void seekg(std::uint64_t position) override { m_input.seek(position); }

private:
    static constexpr std::size_t kBytesAhead = 4096;

    std::uint64_t m_size;
    BufferedSource m_input;
};

}  // namespace rb::imaging
