#include "RenderingBase/host/imaging/formats/TiffPixels.h"

#include "RenderingBase/host/imaging/HalfBits.h"
#include "RenderingBase/host/imaging/formats/XyzColor.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace rb::imaging {
namespace {

KVRPixelImageFormat formatFor(SampleType type, bool grey, bool alpha) {
    using enum KVRPixelImageFormat;
    if (type.kind != SampleKind::Float) return grey ? (alpha ? LA : L) : (alpha ? RGBA : RGB);
    // There is no floating-point format of grey and alpha.
    if (type.bits == 16) return alpha ? RGBA_f16 : grey ? L_f16 : RGB_f16;
    return alpha ? RGBA_f : grey ? L_f : RGB_f;
}

/// 1 - x for a number counted from white.
std::uint16_t halfFromWhite(std::uint16_t half) {
    const float value = std::bit_cast<float>(floatBitsFromHalfBits(half));
    return halfBitsFromFloatBits(std::bit_cast<std::uint32_t>(1 - value));
}

/// L*, a* and b* of one stored pixel. TIFF 6.0, section 23: L* over the whole range, a* and b*
/// signed, with 8 more bits behind the unit in 16-bit files. Adobe TIFF Technical Note 4: a* and b*
/// with an offset, and in 16-bit files 0xFF00 for an L* of 100.
void decodeLab(const std::uint16_t* stored, bool wide, bool icc, float* lab) {
    const float unit = wide ? 256 : 1;
    const float white = !wide ? 255 : icc ? 65280 : 65535;
    lab[0] = std::min(100.0F, static_cast<float>(stored[0]) * 100 / white);
    for (int i = 1; i < 3; ++i) {
        const int offset = wide ? 32768 : 128;
        // Signed numbers become offset ones with their first bit turned over.
        const int value = icc ? stored[i] : stored[i] ^ offset;
        lab[i] = static_cast<float>(value - offset) / unit;
    }
}

}  // namespace

TiffPixels::TiffPixels(const TiffDirectory& directory) : m_directory(directory) {
    for (int i = 0; i < directory.colorSamples(); ++i) m_wanted.push_back(i);
    const bool alpha = directory.alphaSample >= 0;
    if (alpha) m_wanted.push_back(directory.alphaSample);
    m_format = formatFor(directory.type, isGrey(), alpha);
    m_channels = static_cast<std::size_t>(layoutOf(m_format).channels);
}

std::vector<std::uint32_t> TiffPixels::planes() const {
    if (!m_directory.planar) return {0};
    return {m_wanted.begin(), m_wanted.end()};
}

bool TiffPixels::isGrey() const {
    return m_directory.color == TiffColor::MinIsWhite ||
           m_directory.color == TiffColor::MinIsBlack || m_directory.color == TiffColor::LogL;
}

/// Whether a decoded row has the delivered channels and no others, in their order.
bool TiffPixels::interleavedAsDelivered() const {
    return !m_directory.planar && static_cast<std::size_t>(m_directory.samples) == m_channels &&
           m_wanted.size() == m_channels;
}

bool TiffPixels::keepsRows() const {
    const SampleType type = m_directory.type;
    const bool typeStays = type.kind == SampleKind::Float
                               ? type.bits == 16 || type.bits == 32
                               : type.kind == SampleKind::Unsigned && type.bits == 8;
    const bool colorStays = m_directory.color == TiffColor::MinIsBlack ||
                            m_directory.color == TiffColor::Rgb ||
                            m_directory.color == TiffColor::LogL;
    return typeStays && colorStays && interleavedAsDelivered();
}

ReadResult TiffPixels::prepare() {
    ColorLayout in, out;
    if (m_directory.color == TiffColor::Cmyk) {
        in.space = ColorSpace::Cmyk;
        in.type = m_directory.type.bits > 8 ? ChannelType::Word : ChannelType::Byte;
        m_profile = IccProfile::open(m_directory.profile);
        if (m_profile)
            m_transform = ColorTransform::create(*m_profile, in, IccProfile::sRGB(), out);
    } else if (isLab()) {
        if (m_directory.type.bits != 8 && m_directory.type.bits != 16)
            return refuse("Lab samples of 8 or 16 bits",
                          "bits: " + std::to_string(m_directory.type.bits));
        // In floating point: for integers the engine makes a table, in which white is not quite
        // white and other colours are several steps off.
        in.space = ColorSpace::Lab;
        in.type = out.type = ChannelType::Float;
        m_transform = ColorTransform::create(IccProfile::lab(), in, IccProfile::sRGB(), out);
        if (!m_transform) return refuse("a conversion from Lab to sRGB", "none");
    }
    return {};
}

/// Which of the wanted samples goes into a delivered channel; grey goes into all but alpha.
std::size_t TiffPixels::sampleOf(std::size_t channel) const {
    if (m_wanted.size() == m_channels) return channel;
    return channel + 1 == m_channels ? m_wanted.size() - 1 : 0;
}

SampleRun TiffPixels::run(TiffRows rows, std::size_t index, std::size_t pixels) const {
    if (m_directory.planar) return {rows[index], 0, 1, pixels};
    return {rows[0], static_cast<std::size_t>(m_wanted[index]),
            static_cast<std::size_t>(m_directory.samples), pixels};
}

/// Whether a delivered value is not alpha.
bool TiffPixels::isColor(std::size_t value) const {
    return !layoutOf(m_format).hasAlpha() || value % m_channels != m_channels - 1;
}

void TiffPixels::toFloats(TiffRows rows, std::size_t pixels, float* out) const {
    for (std::size_t c = 0; c < m_channels; ++c)
        readFloats(m_directory.type, run(rows, sampleOf(c), pixels), out + c, m_channels);
    if (m_directory.color == TiffColor::LogLuv) {
        static constexpr ColorMatrix kMatrix = rgbFromXyz(kLogLuvColors);
        convertXyzToRgb(kMatrix, out, pixels);
    } else if (m_directory.color == TiffColor::MinIsWhite) {
        for (std::size_t i = 0; i < pixels * m_channels; ++i)
            if (isColor(i)) out[i] = 1 - out[i];
    }
}

void TiffPixels::toHalves(TiffRows rows, std::size_t pixels, std::uint16_t* out) const {
    for (std::size_t c = 0; c < m_channels; ++c)
        readHalves(run(rows, sampleOf(c), pixels), out + c, m_channels);
    if (m_directory.color == TiffColor::MinIsWhite)
        for (std::size_t i = 0; i < pixels * m_channels; ++i)
            if (isColor(i)) out[i] = halfFromWhite(out[i]);
}

void TiffPixels::toBytes(TiffRows rows, std::size_t pixels, unsigned char* out) const {
    if (interleavedAsDelivered())
        readBytes(m_directory.type, {rows[0], 0, 1, pixels * m_channels}, out, 1);
    else
        for (std::size_t c = 0; c < m_channels; ++c)
            readBytes(m_directory.type, run(rows, c, pixels), out + c, m_channels);
    if (m_directory.color == TiffColor::MinIsWhite)
        for (std::size_t i = 0; i < pixels * m_channels; i += m_channels)
            out[i] = static_cast<unsigned char>(255 - out[i]);
}

void TiffPixels::expandPalette(TiffRows rows, std::size_t pixels, unsigned char* out,
                               Scratch& scratch) const {
    scratch.words.resize(pixels);
    readIndices(m_directory.type, run(rows, 0, pixels), scratch.words.data(), 1);
    for (std::size_t i = 0; i < pixels; ++i)
        std::memcpy(out + i * m_channels, m_directory.palette.data() + 3 * scratch.words[i], 3);
    if (m_channels == 4) readBytes(m_directory.type, run(rows, 1, pixels), out + 3, 4);
}

/// Inks without a profile: each takes its share of what black leaves.
void TiffPixels::mixInks(TiffRows rows, std::size_t pixels, Scratch& scratch) const {
    scratch.bytes.resize(4 * pixels);
    for (std::size_t c = 0; c < 4; ++c)
        readBytes(m_directory.type, run(rows, c, pixels), scratch.bytes.data() + c, 4);
    for (std::size_t i = 0; i < pixels; ++i) {
        const unsigned paper = 255U - scratch.bytes[4 * i + 3];
        for (std::size_t c = 0; c < 3; ++c)
            scratch.rgb[3 * i + c] =
                static_cast<unsigned char>(((255U - scratch.bytes[4 * i + c]) * paper + 127) / 255);
    }
}

void TiffPixels::transformInks(TiffRows rows, std::size_t pixels, Scratch& scratch) const {
    if (m_directory.type.bits > 8) {
        scratch.words.resize(4 * pixels);
        for (std::size_t c = 0; c < 4; ++c)
            readWords(m_directory.type, run(rows, c, pixels), scratch.words.data() + c, 4);
        m_transform->apply(scratch.words.data(), scratch.rgb.data(), pixels);
    } else {
        scratch.bytes.resize(4 * pixels);
        for (std::size_t c = 0; c < 4; ++c)
            readBytes(m_directory.type, run(rows, c, pixels), scratch.bytes.data() + c, 4);
        m_transform->apply(scratch.bytes.data(), scratch.rgb.data(), pixels);
    }
}

void TiffPixels::transformLab(TiffRows rows, std::size_t pixels, Scratch& scratch) const {
    scratch.words.resize(3 * pixels);
    scratch.floats.resize(3 * pixels);
    const SampleType plain{SampleKind::Unsigned, m_directory.type.bits};
    for (std::size_t c = 0; c < 3; ++c)
        readIndices(plain, run(rows, c, pixels), scratch.words.data() + c, 3);
    const bool wide = m_directory.type.bits == 16;
    const bool icc = m_directory.color == TiffColor::IccLab;
    for (std::size_t i = 0; i < 3 * pixels; i += 3)
        decodeLab(scratch.words.data() + i, wide, icc, scratch.floats.data() + i);
    m_transform->apply(scratch.floats.data(), scratch.floats.data(), pixels);
    std::transform(
        scratch.floats.begin(), scratch.floats.end(), scratch.rgb.begin(), [](float value) {
            return static_cast<unsigned char>(std::clamp(value, 0.0F, 1.0F) * 255 + 0.5F);
        });
}

void TiffPixels::copyRgbAndAlpha(TiffRows rows, std::size_t pixels, unsigned char* out,
                                 const Scratch& scratch) const {
    for (std::size_t i = 0; i < pixels; ++i)
        std::memcpy(out + i * m_channels, scratch.rgb.data() + 3 * i, 3);
    if (m_channels == 4)
        readBytes(m_directory.type, run(rows, m_wanted.size() - 1, pixels), out + 3, 4);
}

void TiffPixels::convert(TiffRows rows, std::size_t pixels, std::byte* out,
                         Scratch& scratch) const {
    const ChannelType channel = layoutOf(m_format).type;
    auto* const bytes = reinterpret_cast<unsigned char*>(out);
    if (channel == ChannelType::Float) return toFloats(rows, pixels, reinterpret_cast<float*>(out));
    if (channel == ChannelType::Half)
        return toHalves(rows, pixels, reinterpret_cast<std::uint16_t*>(out));
    if (m_directory.color == TiffColor::Palette) return expandPalette(rows, pixels, bytes, scratch);
    if (!deliversSRGB()) return toBytes(rows, pixels, bytes);
    scratch.rgb.resize(3 * pixels);
    if (isLab())
        transformLab(rows, pixels, scratch);
    else if (m_transform)
        transformInks(rows, pixels, scratch);
    else
        mixInks(rows, pixels, scratch);
    copyRgbAndAlpha(rows, pixels, bytes, scratch);
}

}  // namespace rb::imaging
