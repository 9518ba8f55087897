#include "RenderingBase/host/imaging/PixelConversion.h"

#include "RenderingBase/host/imaging/HalfArrays.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

namespace rb::imaging {
namespace {

// Pixels go through red, green, blue and alpha in a small block that stays in the cache: bytes when
// both sides have bytes, floats otherwise. Every 8-bit and 16-bit value survives the way through
// floats, so that 21 formats need 21 ways in and out, not 441 conversions.

constexpr std::size_t kBlock = 512;  // pixels

template <typename Value>
struct Block {
    std::array<Value, 4 * kBlock> rgba;
    bool grey = false;  ///< Red, green and blue are equal throughout.
};

bool isBytes(const PixelLayout& layout) {
    return layout.type == ChannelType::Byte || layout.type == ChannelType::Bit;
}

/// Spreads interleaved channels of any order over R, G, B, A.
template <typename Value>
void spread(const PixelLayout& layout, const Value* in, Value opaque, std::size_t pixels,
            Block<Value>& block) {
    const auto channels = static_cast<std::size_t>(layout.channels);
    Value* out = block.rgba.data();
    for (std::size_t i = 0; i < pixels; ++i, in += channels, out += 4) {
        out[0] = in[layout.red];
        out[1] = in[layout.green];
        out[2] = in[layout.blue];
        out[3] = layout.alpha >= 0 ? in[layout.alpha] : opaque;
    }
}

std::uint8_t luma(const std::uint8_t* rgb) {
    return static_cast<std::uint8_t>((299 * rgb[0] + 587 * rgb[1] + 114 * rgb[2] + 500) / 1000);
}

float luma(const float* rgb) { return 0.299f * rgb[0] + 0.587f * rgb[1] + 0.114f * rgb[2]; }

/// The inverse of `spread`; colour becomes grey by its luma.
template <typename Value>
void gather(const PixelLayout& layout, const Block<Value>& block, std::size_t pixels, Value* out) {
    const auto channels = static_cast<std::size_t>(layout.channels);
    const Value* in = block.rgba.data();
    for (std::size_t i = 0; i < pixels; ++i, in += 4, out += channels) {
        if (layout.isGrey()) {
            out[layout.red] = block.grey ? in[0] : luma(in);
        } else {
            out[layout.red] = in[0];
            out[layout.green] = in[1];
            out[layout.blue] = in[2];
        }
        if (layout.alpha >= 0) out[layout.alpha] = in[3];
    }
}

void unpack(const PixelLayout& layout, const std::byte* in, std::size_t pixels,
            Block<std::uint8_t>& block) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(in);
    block.grey = layout.isGrey();
    if (layout.type == ChannelType::Byte)
        return spread(layout, bytes, std::uint8_t{255}, pixels, block);
    std::array<std::uint8_t, kBlock> grey;
    std::transform(bytes, bytes + pixels, grey.begin(),
                   [](std::uint8_t bit) { return static_cast<std::uint8_t>(bit ? 255 : 0); });
    spread(layout, grey.data(), std::uint8_t{255}, pixels, block);
}

void pack(const PixelLayout& layout, const Block<std::uint8_t>& block, std::size_t pixels,
          std::byte* out) {
    auto* bytes = reinterpret_cast<std::uint8_t*>(out);
    gather(layout, block, pixels, bytes);
    if (layout.type == ChannelType::Bit)
        std::transform(bytes, bytes + pixels, bytes,
                       [](std::uint8_t grey) { return static_cast<std::uint8_t>(grey >> 7); });
}

/// NaN gives 0: it compares false with everything.
float clamped(float x) { return x > 0 ? (x < 1 ? x : 1.0f) : 0.0f; }

void unpack(const PixelLayout& layout, const std::byte* in, std::size_t pixels,
            Block<float>& block) {
    const std::size_t count = pixels * static_cast<std::size_t>(layout.channels);
    std::array<float, 4 * kBlock> values;
    switch (layout.type) {
        case ChannelType::Bit:
            for (std::size_t i = 0; i < count; ++i) values[i] = in[i] != std::byte{0} ? 1.0f : 0.0f;
            break;
        case ChannelType::Byte:
            for (std::size_t i = 0; i < count; ++i)
                values[i] = static_cast<float>(std::to_integer<int>(in[i])) / 255.0f;
            break;
        case ChannelType::Word: {
            const auto* words = reinterpret_cast<const std::uint16_t*>(in);
            for (std::size_t i = 0; i < count; ++i)
                values[i] = static_cast<float>(words[i]) / 65535.0f;
            break;
        }
        case ChannelType::Half:
            floatsFromHalves({reinterpret_cast<const std::uint16_t*>(in), count}, values);
            break;
        case ChannelType::Float:
            std::memcpy(values.data(), in, count * sizeof(float));
            break;
    }
    block.grey = layout.isGrey();
    spread(layout, values.data(), 1.0f, pixels, block);
}

void pack(const PixelLayout& layout, const Block<float>& block, std::size_t pixels,
          std::byte* out) {
    const std::size_t count = pixels * static_cast<std::size_t>(layout.channels);
    std::array<float, 4 * kBlock> values;
    gather(layout, block, pixels, values.data());
    switch (layout.type) {
        case ChannelType::Bit:
            for (std::size_t i = 0; i < count; ++i) out[i] = std::byte{values[i] >= 0.5f};
            break;
        case ChannelType::Byte:
            for (std::size_t i = 0; i < count; ++i)
                out[i] = static_cast<std::byte>(clamped(values[i]) * 255.0f + 0.5f);
            break;
        case ChannelType::Word: {
            auto* words = reinterpret_cast<std::uint16_t*>(out);
            for (std::size_t i = 0; i < count; ++i)
                words[i] = static_cast<std::uint16_t>(clamped(values[i]) * 65535.0f + 0.5f);
            break;
        }
        case ChannelType::Half:
            halvesFromFloats(std::span(values).first(count),
                             {reinterpret_cast<std::uint16_t*>(out), count});
            break;
        case ChannelType::Float:
            std::memcpy(out, values.data(), count * sizeof(float));
            break;
    }
}

template <typename Value>
void convertThrough(const PixelLayout& from, const std::byte* in, const PixelLayout& to,
                    std::byte* out, std::size_t pixels) {
    Block<Value> block;
    const auto inBytes = static_cast<std::size_t>(from.bytesPerPixel());
    const auto outBytes = static_cast<std::size_t>(to.bytesPerPixel());
    for (std::size_t done = 0; done < pixels; done += kBlock) {
        const std::size_t count = std::min(kBlock, pixels - done);
        unpack(from, in + done * inBytes, count, block);
        pack(to, block, count, out + done * outBytes);
    }
}

}  // namespace

void convertPixels(const PixelLayout& from, const std::byte* in, const PixelLayout& to,
                   std::byte* out, std::size_t pixels) {
    if (isBytes(from) && isBytes(to))
        convertThrough<std::uint8_t>(from, in, to, out, pixels);
    else
        convertThrough<float>(from, in, to, out, pixels);
}

}  // namespace rb::imaging
