#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/imaging/PixelConversion.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

// The resizer is one header with its implementation; this is the only source that includes it.
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#define STB_IMAGE_RESIZE_STATIC
#include <stb/stb_image_resize.h>

using rb::imaging::ChannelType;
using rb::imaging::PixelLayout;

namespace {

void zoomNearest(const KVRPixelImage& from, int width, int height, KVRPixelImage& to) {
    int fromWidth = 0, fromHeight = 0;
    from.GetSize(fromWidth, fromHeight);
    const auto pixelBytes = static_cast<std::size_t>(from.GetBytesPerPixel());
    const std::byte* in = from.GetRawPixels().data();
    std::byte* out = to.GetRawPixels().data();
    // The source pixel under the centre of the target pixel, in integers.
    const auto nearest = [](std::int64_t at, std::int64_t size, std::int64_t fromSize) {
        return static_cast<std::size_t>((2 * at + 1) * fromSize / (2 * size));
    };
    std::vector<std::size_t> columns(static_cast<std::size_t>(width));
    for (int x = 0; x < width; ++x)
        columns[static_cast<std::size_t>(x)] = nearest(x, width, fromWidth) * pixelBytes;
    for (int y = 0; y < height; ++y) {
        const std::byte* row =
            in + nearest(y, height, fromHeight) * static_cast<std::size_t>(fromWidth) * pixelBytes;
        for (const std::size_t column : columns) {
            std::memcpy(out, row + column, pixelBytes);
            out += pixelBytes;
        }
    }
}

/// Where a target position falls between two source positions.
struct Between {
    std::size_t low, high;
    float weight;  ///< Of the high one.
};

Between between(int at, int size, int fromSize) {
    const double position =
        std::clamp((at + 0.5) * fromSize / size - 0.5, 0.0, static_cast<double>(fromSize - 1));
    const auto low = static_cast<std::size_t>(position);
    return {low, std::min(low + 1, static_cast<std::size_t>(fromSize - 1)),
            static_cast<float>(position - static_cast<double>(low))};
}

/// The four neighbours of a target pixel, in RGBA floats. Colours are weighted with their alpha, so
/// that what lies hidden under transparent pixels does not bleed out.
void blendFour(const float* const pixels[4], const float weights[4], float* out) {
    float alpha = 0, color[3] = {0, 0, 0}, plain[3] = {0, 0, 0};
    for (int i = 0; i < 4; ++i) {
        alpha += weights[i] * pixels[i][3];
        for (int c = 0; c < 3; ++c) {
            color[c] += weights[i] * pixels[i][3] * pixels[i][c];
            plain[c] += weights[i] * pixels[i][c];
        }
    }
    for (int c = 0; c < 3; ++c) out[c] = alpha > 0 ? color[c] / alpha : plain[c];
    out[3] = alpha;
}

void zoomBilinear(const KVRPixelImage& from, int width, int height, KVRPixelImage& to) {
    const PixelLayout& rgba = rb::imaging::layoutOf(KVRPixelImageFormat::RGBA_f);
    const PixelLayout& layout = rb::imaging::layoutOf(from.GetFormat());
    int fromWidth = 0, fromHeight = 0;
    from.GetSize(fromWidth, fromHeight);
    const auto fromCount = static_cast<std::size_t>(fromWidth);
    const auto count = static_cast<std::size_t>(width);
    const auto fromRowBytes = fromCount * static_cast<std::size_t>(layout.bytesPerPixel());
    const auto rowBytes = count * static_cast<std::size_t>(layout.bytesPerPixel());
    std::vector<float> rows[2] = {std::vector<float>(4 * fromCount),
                                  std::vector<float>(4 * fromCount)};
    std::vector<float> out(4 * count);
    for (int y = 0; y < height; ++y) {
        const Between vertical = between(y, height, fromHeight);
        const std::size_t lines[2] = {vertical.low, vertical.high};
        for (int i = 0; i < 2; ++i)
            rb::imaging::convertPixels(layout, from.GetRawPixels().data() + lines[i] * fromRowBytes,
                                       rgba, reinterpret_cast<std::byte*>(rows[i].data()),
                                       fromCount);
        for (int x = 0; x < width; ++x) {
            const Between across = between(x, width, fromWidth);
            const float* const pixels[4] = {&rows[0][4 * across.low], &rows[0][4 * across.high],
                                            &rows[1][4 * across.low], &rows[1][4 * across.high]};
            const float v = vertical.weight, u = across.weight;
            const float weights[4] = {(1 - u) * (1 - v), u * (1 - v), (1 - u) * v, u * v};
            blendFour(pixels, weights, &out[4 * static_cast<std::size_t>(x)]);
        }
        rb::imaging::convertPixels(
            rgba, reinterpret_cast<const std::byte*>(out.data()), layout,
            to.GetRawPixels().data() + static_cast<std::size_t>(y) * rowBytes, count);
    }
}

/// The triangle filter over everything under a target pixel, straight alpha weighted, values taken
/// as they are (no transfer curve is undone).
///
/// Done in slices of columns: the resizer keeps all source rows under a target row, of the target's
/// width, and counts the bytes of its working memory in 32 bits.
bool zoomFiltered(const KVRPixelImage& from, int width, int height, KVRPixelImage& to) {
    constexpr std::int64_t kSliceBytes = std::int64_t{256} << 20;
    const PixelLayout& layout = rb::imaging::layoutOf(from.GetFormat());
    int fromWidth = 0, fromHeight = 0;
    from.GetSize(fromWidth, fromHeight);
    // The resizer's positions are single precision.
    if (std::max({fromWidth, fromHeight, width, height}) > KVRPixelImage::kLongestFilteredSide)
        return false;
    const stbir_datatype type = layout.type == ChannelType::Float  ? STBIR_TYPE_FLOAT
                                : layout.type == ChannelType::Word ? STBIR_TYPE_UINT16
                                                                   : STBIR_TYPE_UINT8;
    const int alpha = layout.hasAlpha() ? layout.alpha : STBIR_ALPHA_CHANNEL_NONE;
    const float xScale = static_cast<float>(width) / static_cast<float>(fromWidth);
    const float yScale = static_cast<float>(height) / static_cast<float>(fromHeight);
    // A target row rests on two of its own heights of source rows; one more each for the resizer's
    // rounding and for the row in work.
    const std::int64_t heldRows = 2 * (fromHeight / height + 1) + 2;
    const std::int64_t columnBytes = heldRows * layout.channels * std::int64_t{sizeof(float)};
    const int sliceWidth =
        static_cast<int>(std::clamp<std::int64_t>(kSliceBytes / columnBytes, 1, width));
    const auto pixelBytes = static_cast<std::size_t>(layout.bytesPerPixel());
    const int rowBytes = width * layout.bytesPerPixel();
    for (int x = 0; x < width; x += sliceWidth) {
        if (!stbir_resize_subpixel(
                from.GetRawPixels().data(), fromWidth, fromHeight, 0,
                to.GetRawPixels().data() + static_cast<std::size_t>(x) * pixelBytes,
                std::min(sliceWidth, width - x), height, rowBytes, type, layout.channels, alpha, 0,
                STBIR_EDGE_CLAMP, STBIR_EDGE_CLAMP, STBIR_FILTER_TRIANGLE, STBIR_FILTER_TRIANGLE,
                STBIR_COLORSPACE_LINEAR, nullptr, xScale, yScale, static_cast<float>(x), 0))
            return false;
    }
    return true;
}

/// The format in which the filter works: it knows neither halves nor single bits.
KVRPixelImageFormat filterFormat(const PixelLayout& layout, KVRPixelImageFormat format) {
    if (layout.type == ChannelType::Bit) return KVRPixelImageFormat::L;
    if (layout.type != ChannelType::Half) return format;
    return layout.isGrey()     ? KVRPixelImageFormat::L_f
           : layout.hasAlpha() ? KVRPixelImageFormat::RGBA_f
                               : KVRPixelImageFormat::RGB_f;
}

}  // namespace

KVRPixelImage* KVRPixelImage::CreateZoomedImage(int width, int height, int mode) const try {
    if (width < 1 || height < 1 || m_pixels.size() == 0) return nullptr;
    if (mode == static_cast<int>(KVRPixelZoom::Filtered)) {
        const KVRPixelImageFormat format = filterFormat(layout(), m_format);
        if (format != m_format) {
            const auto source = KVRVar<KVRPixelImage>::Adopt(Duplicate(format));
            auto zoomed = KVRVar<KVRPixelImage>::Adopt(
                source ? source->CreateZoomedImage(width, height, mode) : nullptr);
            if (!zoomed || Failed(zoomed->ChangeFormat(m_format))) return nullptr;
            return zoomed.Detach();
        }
    }
    auto zoomed = KVRVar<KVRPixelImage>::Adopt(CreateUnfilled(width, height, m_format));
    switch (static_cast<KVRPixelZoom>(mode)) {
        case KVRPixelZoom::Nearest:
            zoomNearest(*this, width, height, *zoomed.Get());
            break;
        case KVRPixelZoom::Bilinear:
            zoomBilinear(*this, width, height, *zoomed.Get());
            break;
        case KVRPixelZoom::Filtered:
            if (!zoomFiltered(*this, width, height, *zoomed.Get())) return nullptr;
            break;
        default:
            return nullptr;
    }
    zoomed->copyAttributesFrom(*this);
    // The same picture on the same paper with other pixels.
    zoomed->m_resolution.x *= static_cast<double>(width) / m_width;
    zoomed->m_resolution.y *= static_cast<double>(height) / m_height;
    return zoomed.Detach();
} catch (const std::bad_alloc&) {
    return nullptr;
}
