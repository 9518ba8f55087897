#include "RenderingBase/host/imaging/formats/TexelFormat.h"

#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <utility>

namespace rb::imaging {
namespace {

using Format = KVRPixelImageFormat;

constexpr std::uint32_t sampleBytes(TexelSample sample) {
    switch (sample) {
        case TexelSample::Unorm8:
        case TexelSample::Snorm8:
            return 1;
        case TexelSample::Float:
            return 4;
        default:
            return 2;
    }
}

/// Two channels are the red and green of a vector map as a rule, hence no grey with alpha.
Format deliveredFormat(TexelSample sample, int channels) {
    const bool isGrey = channels == 1, hasAlpha = channels == 4;
    switch (sample) {
        case TexelSample::Half:
            return isGrey ? Format::L_f16 : hasAlpha ? Format::RGBA_f16 : Format::RGB_f16;
        case TexelSample::Float:
            return isGrey ? Format::L_f : hasAlpha ? Format::RGBA_f : Format::RGB_f;
        default:
            return isGrey ? Format::L : hasAlpha ? Format::RGBA : Format::RGB;
    }
}

Format deliveredFormat(const MaskedTexels& texels) {
    const bool isGrey = (texels.masks[1] | texels.masks[2]) == 0;
    const bool hasAlpha = texels.masks[3] != 0;
    return isGrey ? (hasAlpha ? Format::LA : Format::L) : hasAlpha ? Format::RGBA : Format::RGB;
}

Format deliveredFormat(const BlockTexels& texels) {
    switch (texels.kind) {
        case BlockKind::BC4:
        case BlockKind::BC4Signed:
            return Format::L;
        case BlockKind::BC5:
        case BlockKind::BC5Signed:
            return Format::RGB;
        case BlockKind::BC6H:
        case BlockKind::BC6HSigned:
            return Format::RGB_f16;
        default:
            return texels.colors == BlockTexels::Colors::All ? Format::RGBA : Format::RGB;
    }
}

}  // namespace

TexelFormat texelFormat(std::string name, const PlainTexels& code) {
    return {std::move(name), deliveredFormat(code.sample, code.storedChannels),
            sampleBytes(code.sample) * static_cast<std::uint32_t>(code.storedChannels), code};
}

TexelFormat texelFormat(std::string name, PackedFloats code) {
    return {std::move(name), Format::RGB_f16, 4, code};
}

TexelFormat texelFormat(std::string name, const BlockTexels& code) {
    return {std::move(name), deliveredFormat(code),
            static_cast<std::uint32_t>(blockBytes(code.kind)), code};
}

TexelFormat texelFormat(std::string name, const MaskedTexels& code, std::uint32_t bytes) {
    return {std::move(name), deliveredFormat(code), bytes, code};
}

TexelFormat inOrder(TexelFormat format, KVRPixelImageFormat delivered) {
    format.delivered = delivered;
    return format;
}

bool TexelFormat::isDeliveredAsStored() const {
    const auto* const plain = std::get_if<PlainTexels>(&code);
    return plain && plain->storedChannels == layoutOf(delivered).channels &&
           plain->sample != TexelSample::Snorm8 && plain->sample != TexelSample::Snorm16 &&
           plain->sample != TexelSample::Unorm16;
}

std::uint64_t TexelFormat::storedBytes(std::int64_t width, std::int64_t height) const {
    auto columns = static_cast<std::uint64_t>(width);
    auto rows = static_cast<std::uint64_t>(height);
    if (std::holds_alternative<BlockTexels>(code)) {
        columns = (columns + 3) / 4;
        rows = (rows + 3) / 4;
    }
    return saturatedProduct(columns, rows, bytes);
}

}  // namespace rb::imaging
