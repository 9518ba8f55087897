#include "RenderingBase/host/imaging/formats/PsdPixels.h"

#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/SampleRows.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace rb::imaging {
namespace {

KVRPixelImageFormat formatFor(const PsdHeader& header) {
    using enum KVRPixelImageFormat;
    const bool alpha = header.hasAlphaChannel();
    const bool grey = header.colorChannels() == 1;
    // There is no floating-point format of grey and alpha.
    if (header.depth == 32) return alpha ? RGBA_f : grey ? L_f : RGB_f;
    if (header.mode == PsdMode::Indexed) return header.transparentIndex >= 0 ? RGBA : RGB;
    return grey ? (alpha ? LA : L) : (alpha ? RGBA : RGB);
}

/// L*, a* and b* of a stored pixel: L* over the whole range, a* and b* around its middle, with 8
/// more bits behind the unit in 16-bit files.
void decodeLab(std::array<unsigned, 3> stored, bool wide, float* lab) {
    lab[0] = static_cast<float>(stored[0]) * 100 / (wide ? 65535.0F : 255.0F);
    for (std::size_t i = 1; i < 3; ++i)
        lab[i] =
            (static_cast<float>(stored[i]) - (wide ? 32768.0F : 128.0F)) / (wide ? 256.0F : 1.0F);
}

}  // namespace

PsdPixels::PsdPixels(const PsdHeader& header)
    : m_header(header), m_width(header.width), m_format(formatFor(header)) {
    for (std::size_t i = 0; i < 256; ++i) {
        const bool transparent = static_cast<int>(i) == header.transparentIndex;
        m_palette[i] = {header.palette[i], header.palette[256 + i], header.palette[512 + i],
                        static_cast<unsigned char>(transparent ? 0 : 255)};
    }
}

ReadResult PsdPixels::prepare() {
    ColorLayout in, out;
    if (m_header.mode == PsdMode::Cmyk) {
        in.space = ColorSpace::Cmyk;
        in.type = m_header.depth == 16 ? ChannelType::Word : ChannelType::Byte;
        in.inverted = true;
        m_profile = IccProfile::open(m_header.profile);
        if (m_profile)
            m_transform = ColorTransform::create(*m_profile, in, IccProfile::sRGB(), out);
    } else if (m_header.mode == PsdMode::Lab) {
        // In floating point: for integers the engine makes a table, in which white is not quite
        // white and other colours are several steps off.
        in.space = ColorSpace::Lab;
        in.type = out.type = ChannelType::Float;
        m_transform = ColorTransform::create(IccProfile::lab(), in, IccProfile::sRGB(), out);
        if (!m_transform) return refuse("a conversion from Lab to sRGB", "none");
    }
    return {};
}

/// The rows with 8 bits a sample.
PsdChannels PsdPixels::narrow(const PsdChannels& channels, Scratch& scratch) const {
    if (m_header.depth != 16) return channels;
    PsdChannels result{};
    for (std::size_t c = 0; c < m_header.wantedChannels(); ++c) {
        scratch.narrowed[c].resize(m_width);
        narrowSamples(channels[c], scratch.narrowed[c].data(), m_width);
        result[c] = scratch.narrowed[c].data();
    }
    return result;
}

/// A bit is ink: 1 is black.
void PsdPixels::expandBits(const unsigned char* row, unsigned char* out) const {
    for (std::size_t i = 0; i < m_width; ++i) out[i] = row[i / 8] >> (7 - i % 8) & 1 ? 0 : 255;
}

void PsdPixels::expandPalette(const unsigned char* row, unsigned char* out) const {
    const std::size_t channels = m_format == KVRPixelImageFormat::RGBA ? 4 : 3;
    for (std::size_t i = 0; i < m_width; ++i, out += channels)
        std::memcpy(out, m_palette[row[i]].data(), channels);
}

void PsdPixels::toFloats(const PsdChannels& channels, float* out) const {
    const auto delivered = static_cast<std::size_t>(layoutOf(m_format).channels);
    const std::size_t stored = m_header.wantedChannels();
    for (std::size_t c = 0; c < delivered; ++c) {
        // Grey goes into all channels but alpha.
        const std::size_t from = stored == delivered ? c : c + 1 == delivered ? stored - 1 : 0;
        for (std::size_t i = 0; i < m_width; ++i)
            out[delivered * i + c] = std::bit_cast<float>(big32(channels[from] + 4 * i));
    }
}

/// Inks without a profile: each takes its share of what black leaves. What is stored is the paper
/// that an ink leaves.
void PsdPixels::mixInks(const PsdChannels& bytes, Scratch& scratch) const {
    for (std::size_t i = 0; i < m_width; ++i)
        for (std::size_t c = 0; c < 3; ++c)
            scratch.bytes[3 * i + c] =
                static_cast<unsigned char>((bytes[c][i] * unsigned{bytes[3][i]} + 127) / 255);
}

void PsdPixels::transformInks(const PsdChannels& channels, Scratch& scratch) const {
    if (m_header.depth == 16) {
        scratch.words.resize(4 * m_width);
        for (std::size_t i = 0; i < m_width; ++i)
            for (std::size_t c = 0; c < 4; ++c)
                scratch.words[4 * i + c] = static_cast<std::uint16_t>(big16(channels[c] + 2 * i));
        m_transform->apply(scratch.words.data(), scratch.bytes.data(), m_width);
    } else {
        auto& inks = scratch.narrowed[0];
        inks.resize(4 * m_width);
        interleaveRows(4, channels.data(), inks.data(), m_width);
        m_transform->apply(inks.data(), scratch.bytes.data(), m_width);
    }
}

void PsdPixels::transformLab(const PsdChannels& channels, Scratch& scratch) const {
    scratch.floats.resize(3 * m_width);
    const bool wide = m_header.depth == 16;
    const auto at = [&](std::size_t c, std::size_t i) -> unsigned {
        return wide ? big16(channels[c] + 2 * i) : channels[c][i];
    };
    for (std::size_t i = 0; i < m_width; ++i)
        decodeLab({at(0, i), at(1, i), at(2, i)}, wide, scratch.floats.data() + 3 * i);
    m_transform->apply(scratch.floats.data(), scratch.floats.data(), m_width);
    std::transform(
        scratch.floats.begin(), scratch.floats.end(), scratch.bytes.begin(), [](float value) {
            return static_cast<unsigned char>(std::clamp(value, 0.0F, 1.0F) * 255 + 0.5F);
        });
}

void PsdPixels::copyRgbAndAlpha(const unsigned char* alpha, unsigned char* out,
                                const Scratch& scratch) const {
    const std::size_t channels = alpha ? 4 : 3;
    for (std::size_t i = 0; i < m_width; ++i) {
        std::memcpy(out + channels * i, scratch.bytes.data() + 3 * i, 3);
        if (alpha) out[4 * i + 3] = alpha[i];
    }
}

void PsdPixels::convert(const PsdChannels& channels, std::byte* out, Scratch& scratch) const {
    auto* const bytes = reinterpret_cast<unsigned char*>(out);
    if (m_header.depth == 32) return toFloats(channels, reinterpret_cast<float*>(out));
    if (m_header.mode == PsdMode::Bitmap) return expandBits(channels[0], bytes);
    if (m_header.mode == PsdMode::Indexed) return expandPalette(channels[0], bytes);
    const PsdChannels narrowed = narrow(channels, scratch);
    if (!deliversSRGB())
        return interleaveRows(m_header.wantedChannels(), narrowed.data(), bytes, m_width);
    const unsigned char* const alpha =
        m_header.hasAlphaChannel() ? narrowed[m_header.colorChannels()] : nullptr;
    scratch.bytes.resize(3 * m_width);
    if (m_header.mode == PsdMode::Lab)
        transformLab(channels, scratch);
    else if (m_transform)
        transformInks(channels, scratch);
    else
        mixInks(narrowed, scratch);
    copyRgbAndAlpha(alpha, bytes, scratch);
}

}  // namespace rb::imaging
