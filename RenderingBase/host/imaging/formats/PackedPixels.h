#pragma once

/// @file  Colours whose channels share a little endian number.

#include <array>
#include <cstddef>
#include <cstdint>

namespace rb::imaging {

/// Which bits of a pixel belong to a channel: adjacent ones. 0: there is no such channel.
struct ChannelMasks {
    std::uint32_t red = 0, green = 0, blue = 0, alpha = 0;
};

/// Blue, green and red a byte each, as in pixels of 24 and 32 bits; five bits each.
inline constexpr ChannelMasks kBlueGreenRed{0xFF0000, 0xFF00, 0xFF, 0};
inline constexpr ChannelMasks kFiveBits{0x7C00, 0x3E0, 0x1F, 0};

/// From packed pixels to RGB, or to RGBA when there is a mask for alpha. A channel of n bits goes
/// to 8 by v * 255 / (2^n - 1), rounded; one without a mask is 0.
class PackedPixels {
public:
    /// @param bytesPerPixel  2 or 4; 3 with the masks of `kBlueGreenRed`.
    PackedPixels(unsigned bytesPerPixel, const ChannelMasks& masks);
    PackedPixels() : PackedPixels(3, kBlueGreenRed) {}

    std::size_t channels() const { return m_masks.alpha ? 4 : 3; }  ///< Also the bytes of a result.
    void unpack(const unsigned char* in, std::size_t pixels, unsigned char* out) const;

private:
    struct Channel {
        std::uint32_t mask = 0;
        unsigned shift = 0;
        double scale = 0;  // from the number of the channel to 0..255
    };
    bool wholeBytes() const;
    template <std::size_t Stride, std::size_t Count>
    void unpackByMasks(const unsigned char* in, std::size_t pixels, unsigned char* out) const;

    unsigned m_bytesPerPixel;
    ChannelMasks m_masks;
    std::array<Channel, 4> m_channels;  // red, green, blue, alpha
};

}  // namespace rb::imaging
