// From stored texels to pixels. Sources: the DXGI_FORMAT reference (Microsoft), the Khronos Data
// Format Standard 1.3 (section 10, unsigned floats of 10, 11 and 14 bits; shared exponents).

#include "RenderingBase/host/imaging/HalfBits.h"
#include "RenderingBase/host/imaging/ParallelRows.h"
#include "RenderingBase/host/imaging/formats/TexelFormat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

namespace rb::imaging {
namespace {

using Byte = unsigned char;

/// Some texels one after the other, to be decoded.
struct TexelRun {
    const std::byte* stored;
    std::byte* pixels;
    std::size_t count;
};

template <typename Value>
Value loaded(const std::byte* at) {
    Value value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

/// A number of the range 0..most as a byte, rounded.
constexpr std::uint8_t scaledToByte(std::uint32_t value, std::uint32_t most) {
    return static_cast<std::uint8_t>((value * 255ULL + most / 2) / most);
}

/// A number in two's complement of the range -most..most for -1 to 1; the one below counts as -1.
constexpr std::uint8_t signedToByte(std::int32_t value, std::int32_t most) {
    return scaledToByte(static_cast<std::uint32_t>(std::max(value, -most) + most),
                        2 * static_cast<std::uint32_t>(most));
}

/// Copies channels, each put through @p convert; those that are not stored become 0.
template <typename Stored, typename Delivered, typename Convert>
void convertChannels(const TexelRun& run, int stored, int delivered, const Convert& convert) {
    const int copied = std::min(stored, delivered);
    const std::byte* in = run.stored;
    std::byte* out = run.pixels;
    for (std::size_t i = 0; i < run.count; ++i) {
        for (int c = 0; c < delivered; ++c) {
            const auto at = static_cast<std::size_t>(c);
            const Delivered value =
                c < copied ? convert(loaded<Stored>(in + at * sizeof(Stored))) : Delivered{};
            std::memcpy(out + at * sizeof value, &value, sizeof value);
        }
        in += static_cast<std::size_t>(stored) * sizeof(Stored);
        out += static_cast<std::size_t>(delivered) * sizeof(Delivered);
    }
}

void decodePlain(const PlainTexels& texels, int delivered, const TexelRun& run) {
    const int stored = texels.storedChannels;
    const auto same = [](auto value) { return value; };
    switch (texels.sample) {
        case TexelSample::Unorm8:
            return convertChannels<std::uint8_t, std::uint8_t>(run, stored, delivered, same);
        case TexelSample::Snorm8:
            return convertChannels<std::int8_t, std::uint8_t>(
                run, stored, delivered, [](std::int8_t v) { return signedToByte(v, 127); });
        case TexelSample::Unorm16:
            return convertChannels<std::uint16_t, std::uint8_t>(
                run, stored, delivered, [](std::uint16_t v) { return scaledToByte(v, 65535); });
        case TexelSample::Snorm16:
            return convertChannels<std::int16_t, std::uint8_t>(
                run, stored, delivered, [](std::int16_t v) { return signedToByte(v, 32767); });
        case TexelSample::Half:
            return convertChannels<std::uint16_t, std::uint16_t>(run, stored, delivered, same);
        case TexelSample::Float:
            return convertChannels<float, float>(run, stored, delivered, same);
    }
}

/// A field of 1 to 16 bits as a byte.
std::uint8_t fieldToByte(std::uint32_t field, int width, bool isSigned) {
    const std::uint32_t values = std::uint32_t{1} << width;
    if (!isSigned || width == 1) return scaledToByte(field, values - 1);
    const bool isNegative = field >= values / 2;
    return signedToByte(static_cast<std::int32_t>(isNegative ? field - values : field),
                        static_cast<std::int32_t>(values / 2 - 1));
}

/// The byte for every value that one channel of a masked texel can have.
class MaskedChannel {
public:
    MaskedChannel(std::uint32_t mask, bool isSigned) : m_mask(mask) {
        constexpr int kMostBits = 16;  // of a wider channel the upper bits count
        const int width = std::min(std::popcount(mask), kMostBits);
        if (width == 0) return;
        m_shift = std::countr_zero(mask) + std::popcount(mask) - width;
        m_bytes.resize(std::size_t{1} << width);
        for (std::uint32_t v = 0; v < m_bytes.size(); ++v)
            m_bytes[v] = fieldToByte(v, width, isSigned);
    }
    std::uint8_t of(std::uint32_t texel) const { return m_bytes[(texel & m_mask) >> m_shift]; }

private:
    std::uint32_t m_mask;
    int m_shift = 0;
    std::vector<std::uint8_t> m_bytes = std::vector<std::uint8_t>(1);  // without a mask: 0
};

/// The channels of a masked format that are delivered, in the order of the pixels.
std::vector<MaskedChannel> maskedChannels(const MaskedTexels& texels, const PixelLayout& layout) {
    const std::array<int, 4> places{layout.red, layout.green, layout.blue, layout.alpha};
    std::vector<MaskedChannel> channels(static_cast<std::size_t>(layout.channels),
                                        MaskedChannel(0, false));
    for (std::size_t i = places.size(); i-- > 0;)  // red last: it is the one that a grey has
        if (places[i] >= 0)
            channels[static_cast<std::size_t>(places[i])] =
                MaskedChannel(texels.masks[i], texels.isSigned);
    return channels;
}

void decodeMasked(std::span<const MaskedChannel> channels, std::uint32_t texelBytes,
                  const TexelRun& run) {
    const std::byte* in = run.stored;
    auto* out = reinterpret_cast<Byte*>(run.pixels);
    for (std::size_t i = 0; i < run.count; ++i, in += texelBytes) {
        std::uint32_t texel = 0;
        for (std::uint32_t b = 0; b < texelBytes; ++b)
            texel |= std::to_integer<std::uint32_t>(in[b]) << 8 * b;
        for (const MaskedChannel& channel : channels) *out++ = channel.of(texel);
    }
}

/// All three have the exponent of a half, and fewer bits of mantissa.
void decodeFloat11(const TexelRun& run) {
    for (std::size_t i = 0; i < run.count; ++i) {
        const auto texel = loaded<std::uint32_t>(run.stored + 4 * i);
        const std::array<std::uint16_t, 3> halves{
            static_cast<std::uint16_t>((texel & 0x7FF) << 4),
            static_cast<std::uint16_t>((texel >> 11 & 0x7FF) << 4),
            static_cast<std::uint16_t>((texel >> 22) << 5)};
        std::memcpy(run.pixels + sizeof halves * i, halves.data(), sizeof halves);
    }
}

/// Nine bits of mantissa times 2^(exponent - 24); every such number is a half.
void decodeShared9(const TexelRun& run) {
    for (std::size_t i = 0; i < run.count; ++i) {
        const auto texel = loaded<std::uint32_t>(run.stored + 4 * i);
        const float unit = std::ldexp(1.0F, static_cast<int>(texel >> 27) - 24);
        std::array<std::uint16_t, 3> halves{};
        for (std::uint32_t c = 0; c < 3; ++c)
            halves[c] = halfBitsFromFloatBits(
                std::bit_cast<std::uint32_t>(static_cast<float>(texel >> 9 * c & 0x1FF) * unit));
        std::memcpy(run.pixels + sizeof halves * i, halves.data(), sizeof halves);
    }
}

/// Drops the alpha of what the blocks decode to, or takes it for red.
void decodeToRgb(const BlockTexels& texels, std::span<const std::byte> stored, std::int64_t width,
                 std::int64_t height, std::byte* out) {
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<std::byte> rgba(4 * count);
    decodeBlocks(texels.kind, stored, width, height, rgba);
    const std::size_t red = texels.colors == BlockTexels::Colors::RedInAlpha ? 3 : 0;
    for (std::size_t i = 0; i < count; ++i) {
        out[3 * i] = rgba[4 * i + red];
        out[3 * i + 1] = rgba[4 * i + 1];
        out[3 * i + 2] = rgba[4 * i + 2];
    }
}

/// Calls decode(run) for slices of the picture.
template <typename Decode>
void forRuns(const TexelFormat& format, std::span<const std::byte> stored, std::int64_t width,
             std::int64_t height, std::span<std::byte> pixels, const Decode& decode) {
    const auto pixelBytes = static_cast<std::size_t>(layoutOf(format.delivered).bytesPerPixel());
    forRowSlices(width, height, [&](std::int64_t begin, std::int64_t end) {
        const auto first = static_cast<std::size_t>(begin * width);
        decode(TexelRun{stored.data() + first * format.bytes, pixels.data() + first * pixelBytes,
                        static_cast<std::size_t>((end - begin) * width)});
    });
}

}  // namespace

void decodeTexels(const TexelFormat& format, std::span<const std::byte> stored, std::int64_t width,
                  std::int64_t height, std::span<std::byte> pixels) {
    const PixelLayout& layout = layoutOf(format.delivered);
    const auto eachRun = [&](const auto& decode) {
        forRuns(format, stored, width, height, pixels, decode);
    };
    if (const auto* const plain = std::get_if<PlainTexels>(&format.code)) {
        eachRun([&](const TexelRun& run) { decodePlain(*plain, layout.channels, run); });
    } else if (const auto* const masked = std::get_if<MaskedTexels>(&format.code)) {
        const auto channels = maskedChannels(*masked, layout);
        eachRun([&](const TexelRun& run) { decodeMasked(channels, format.bytes, run); });
    } else if (const auto* const packed = std::get_if<PackedFloats>(&format.code)) {
        eachRun(*packed == PackedFloats::R11G11B10 ? decodeFloat11 : decodeShared9);
    } else if (const auto* const blocks = std::get_if<BlockTexels>(&format.code)) {
        if (decodedPixelBytes(blocks->kind) == static_cast<std::size_t>(layout.bytesPerPixel()))
            decodeBlocks(blocks->kind, stored, width, height, pixels);
        else
            decodeToRgb(*blocks, stored, width, height, pixels.data());
    }
}

}  // namespace rb::imaging
