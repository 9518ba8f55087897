#include "RenderingBase/host/imaging/formats/PackedPixels.h"

#include "RenderingBase/host/imaging/formats/Endian.h"

#include <bit>
#include <cstring>
#include <utility>

namespace rb::imaging {
namespace {

using Bytes = unsigned char __attribute__((vector_size(16)));

/// Which bytes of a vector of pixels of @p Stride bytes are those at @p place of a pixel, or at
/// @p other; bytes that do not make a whole pixel are left out.
template <std::size_t Stride>
constexpr Bytes bytesAt(std::size_t place, std::size_t other) {
    Bytes mask{};
    for (std::size_t i = 0; i < 16 / Stride * Stride; ++i)
        mask[i] = i % Stride == place || i % Stride == other ? 255 : 0;
    return mask;
}

/// Swaps the first byte of every pixel with the third, 16 bytes at once: a loop of single bytes
/// takes several times as long as all else that is done with a large picture.
template <std::size_t Stride>
void swapRedAndBlue(const unsigned char* in, std::size_t pixels, unsigned char* out) {
    constexpr std::size_t kAtOnce = 16 / Stride;
    const Bytes first = bytesAt<Stride>(0, 0), third = bytesAt<Stride>(2, 2);
    const Bytes others = bytesAt<Stride>(1, 3);
    // One pixel more than needed: a vector may reach into it.
    for (; pixels > kAtOnce; pixels -= kAtOnce, in += kAtOnce * Stride, out += kAtOnce * Stride) {
        Bytes bytes;
        std::memcpy(&bytes, in, sizeof bytes);
        const Bytes fromTwoOn = __builtin_shufflevector(bytes, Bytes{}, 2, 3, 4, 5, 6, 7, 8, 9, 10,
                                                        11, 12, 13, 14, 15, 16, 17);
        const Bytes fromTwoBack = __builtin_shufflevector(bytes, Bytes{}, 16, 17, 0, 1, 2, 3, 4, 5,
                                                          6, 7, 8, 9, 10, 11, 12, 13);
        bytes = (bytes & others) | (fromTwoOn & first) | (fromTwoBack & third);
        std::memcpy(out, &bytes, sizeof bytes);
    }
    for (; pixels > 0; --pixels, in += Stride, out += Stride) {
        std::array<unsigned char, Stride> pixel;
        std::memcpy(pixel.data(), in, Stride);
        std::swap(pixel[0], pixel[2]);
        std::memcpy(out, pixel.data(), Stride);
    }
}

/// From blue, green, red and a byte that means nothing.
void swapAndDropFourth(const unsigned char* in, std::size_t pixels, unsigned char* __restrict out) {
    for (std::size_t i = 0; i < pixels; ++i, in += 4, out += 3) {
        out[0] = in[2];
        out[1] = in[1];
        out[2] = in[0];
    }
}

}  // namespace

PackedPixels::PackedPixels(unsigned bytesPerPixel, const ChannelMasks& masks)
    : m_bytesPerPixel(bytesPerPixel), m_masks(masks) {
    const std::array<std::uint32_t, 4> inOrder{masks.red, masks.green, masks.blue, masks.alpha};
    for (std::size_t c = 0; c < inOrder.size(); ++c) {
        const std::uint32_t mask = inOrder[c];
        if (!mask) continue;
        const auto shift = static_cast<unsigned>(std::countr_zero(mask));
        m_channels[c] = {mask, shift, 255.0 / (mask >> shift)};
    }
}

bool PackedPixels::wholeBytes() const {
    return m_bytesPerPixel >= 3 && m_masks.red == kBlueGreenRed.red &&
           m_masks.green == kBlueGreenRed.green && m_masks.blue == kBlueGreenRed.blue &&
           (m_masks.alpha == 0 || m_masks.alpha == 0xFF000000);
}

template <std::size_t Stride, std::size_t Count>
void PackedPixels::unpackByMasks(const unsigned char* in, std::size_t pixels,
                                 unsigned char* __restrict out) const {
    const std::array<Channel, 4> channels = m_channels;
    for (std::size_t i = 0; i < pixels; ++i, in += Stride, out += Count) {
        const std::uint32_t pixel = Stride == 2 ? little16(in) : little32(in);
        for (std::size_t c = 0; c < Count; ++c) {
            const std::uint32_t value = (pixel & channels[c].mask) >> channels[c].shift;
            // Never a tie: 2^n - 1 is odd. So a double is exact enough for masks of any width.
            out[c] = static_cast<unsigned char>(static_cast<int>(value * channels[c].scale + 0.5));
        }
    }
}

void PackedPixels::unpack(const unsigned char* in, std::size_t pixels, unsigned char* out) const {
    const bool alpha = m_masks.alpha != 0;
    if (wholeBytes()) {
        if (m_bytesPerPixel == 3) return swapRedAndBlue<3>(in, pixels, out);
        return alpha ? swapRedAndBlue<4>(in, pixels, out) : swapAndDropFourth(in, pixels, out);
    }
    if (m_bytesPerPixel == 2)
        return alpha ? unpackByMasks<2, 4>(in, pixels, out) : unpackByMasks<2, 3>(in, pixels, out);
    alpha ? unpackByMasks<4, 4>(in, pixels, out) : unpackByMasks<4, 3>(in, pixels, out);
}

}  // namespace rb::imaging
