#pragma once

/// @file  What the writers of PNG and TIFF files share: rows as differences, and DEFLATE. Private
/// to them, for it includes the header of a codec library.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <libdeflate.h>
#include <memory>
#include <new>

namespace rb::imaging {

/// Writes @p row to @p out with the difference from the pixel to the left in place of every sample
/// but those of the first pixel: the filter Sub of PNG, the horizontal predictor of TIFF.
/// @param pixelBytes  Of one pixel, with a byte a sample.
inline void differentiate(const unsigned char* row, std::size_t bytes, std::size_t pixelBytes,
                          unsigned char* out) {
    std::memcpy(out, row, std::min(bytes, pixelBytes));
    for (std::size_t i = pixelBytes; i < bytes; ++i)
        out[i] = static_cast<unsigned char>(row[i] - row[i - pixelBytes]);
}

/// Makes zlib streams at the lowest level: the others save little on pictures and take many times
/// as long. Threads: one at a time.
class Deflater {
public:
    /// Throws std::bad_alloc.
    Deflater() : m_compressor(libdeflate_alloc_compressor(1)) {
        if (!m_compressor) throw std::bad_alloc();
    }
    /// The most bytes that @p count bytes can become.
    std::size_t bound(std::size_t count) const {
        return libdeflate_zlib_compress_bound(m_compressor.get(), count);
    }
    /// Returns how many bytes @p to holds then, of which there are bound(count) or more.
    std::size_t compress(const void* from, std::size_t count, void* to, std::size_t room) const {
        return libdeflate_zlib_compress(m_compressor.get(), from, count, to, room);
    }

private:
    struct Free {
        void operator()(libdeflate_compressor* compressor) const {
            libdeflate_free_compressor(compressor);
        }
    };
    std::unique_ptr<libdeflate_compressor, Free> m_compressor;
};

}  // namespace rb::imaging
