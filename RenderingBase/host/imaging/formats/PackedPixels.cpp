#include "RenderingBase/host/imaging/formats/PackedPixels.h"

#include <bit>

namespace rb::imaging {
namespace {

/// Loops of constant strides, which compilers turn into few instructions.
template <std::size_t In, std::size_t Out>
void swapRedAndBlue(const unsigned char* in, std::size_t pixels, unsigned char* __restrict out) {
    for (std::size_t i = 0; i < pixels; ++i, in += In, out += Out) {
        out[0] = in[2];
        out[1] = in[1];
        out[2] = in[0];
        if constexpr (Out == 4) out[3] = in[3];
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

void PackedPixels::unpack(const unsigned char* in, std::size_t pixels, unsigned char* out) const {
    if (!wholeBytes()) return unpackByMasks(in, pixels, out);
    if (m_bytesPerPixel == 3) return swapRedAndBlue<3, 3>(in, pixels, out);
    if (m_masks.alpha) return swapRedAndBlue<4, 4>(in, pixels, out);
    swapRedAndBlue<4, 3>(in, pixels, out);
}

void PackedPixels::unpackByMasks(const unsigned char* in, std::size_t pixels,
                                 unsigned char* out) const {
    const std::size_t count = channels();
    for (std::size_t i = 0; i < pixels; ++i) {
        std::uint32_t pixel = 0;
        for (unsigned byte = 0; byte < m_bytesPerPixel; ++byte)
            pixel |= std::uint32_t{*in++} << 8 * byte;
        for (std::size_t c = 0; c < count; ++c) {
            const Channel& channel = m_channels[c];
            // Never a tie: 2^n - 1 is odd. So a double is exact enough for masks of any width.
            const double value = ((pixel & channel.mask) >> channel.shift) * channel.scale;
            *out++ = static_cast<unsigned char>(static_cast<int>(value + 0.5));
        }
    }
}

}  // namespace rb::imaging
