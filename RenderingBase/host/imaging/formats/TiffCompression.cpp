#include "RenderingBase/host/imaging/formats/TiffCompression.h"

#include <algorithm>
#include <array>

namespace rb::imaging {

const TiffCompression* findTiffCompression(std::uint16_t code) {
    // Ratios: fax, see the header; LZW, a code of 12 bits for a string of up to 4096 bytes;
    // JPEG, a bit for a block of 8 x 8, of which 32 x 32 pixels of four samples take at least 19;
    // DEFLATE, the 1032:1 of zlib's technical notes; PackBits and SGI's log run lengths, 128 bytes
    // in 2 (the latter decode 4 stored bytes to 12); Pixar's log, DEFLATE of 16-bit codes for
    // 32-bit floats; LZMA, 273 bytes in a third of a bit; Zstandard, 128 KiB in 4 bytes (RFC 8878,
    // 3.1.1.2).
    static constexpr std::array<TiffCompression, 16> kSchemes{{
        {1, "none", 1},
        {2, "CCITT RLE", 0},
        {3, "CCITT G3", 0},
        {4, "CCITT G4", 0},
        {5, "LZW", 4096},
        {6, "old-style JPEG", 1725},
        {7, "JPEG", 1725},
        {8, "DEFLATE", 1032},
        {32771, "CCITT RLE with word alignment", 0},
        {32773, "PackBits", 64},
        {32909, "Pixar log", 2 * 1032},
        {32946, "DEFLATE", 1032},
        {34676, "SGI log", 3 * 64},
        {34677, "SGI log 24", 4},
        {34925, "LZMA", 8192},
        {50000, "Zstandard", 1 << 15},
    }};
    const auto* const found = std::find_if(kSchemes.begin(), kSchemes.end(),
                                           [code](auto& scheme) { return scheme.code == code; });
    return found == kSchemes.end() ? nullptr : found;
}

}  // namespace rb::imaging
