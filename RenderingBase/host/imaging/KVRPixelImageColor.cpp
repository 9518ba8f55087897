#include "RenderingBase/host/imaging/ColorEngine.h"
#include "RenderingBase/host/imaging/HalfArrays.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/imaging/ParallelRows.h"
#include "RenderingBase/host/imaging/PixelConversion.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>
#include <vector>

using rb::imaging::ChannelType;
using rb::imaging::ColorLayout;
using rb::imaging::ColorSpace;
using rb::imaging::ColorTransform;
using rb::imaging::IccProfile;
using rb::imaging::PixelLayout;
using rb::imaging::PixelStorage;

namespace {

/// How the pixels of @p layout lie for the engine. Halves go through floats.
ColorLayout engineLayout(const PixelLayout& layout) {
    ColorLayout engine;
    engine.space = layout.isGrey() ? ColorSpace::Grey : ColorSpace::Rgb;
    engine.type = layout.type == ChannelType::Half ? ChannelType::Float : layout.type;
    engine.alpha = layout.hasAlpha();
    engine.reversed = layout.red > layout.blue;
    engine.alphaFirst = layout.alpha == 0;
    return engine;
}

/// Converts pixels whose layout the engine knows; @p in and @p out may be the same.
void convertRows(const ColorTransform& transform, const PixelLayout& layout, int width, int height,
                 const std::byte* in, std::byte* out) {
    const auto count = static_cast<std::size_t>(width);
    const auto rowBytes = count * static_cast<std::size_t>(layout.bytesPerPixel());
    rb::imaging::forRowSlices(width, height, [&](std::int64_t first, std::int64_t end) {
        for (std::int64_t y = first; y < end; ++y) {
            const auto row = static_cast<std::size_t>(y) * rowBytes;
            transform.apply(in + row, out + row, count);
        }
    });
}

void convertHalfRows(const ColorTransform& transform, const PixelLayout& layout, int width,
                     int height, const std::byte* in, std::byte* out) {
    const auto count = static_cast<std::size_t>(width);
    const auto rowValues = count * static_cast<std::size_t>(layout.channels);
    rb::imaging::forRowSlices(width, height, [&](std::int64_t first, std::int64_t end) {
        std::vector<float> floats(rowValues);
        for (std::int64_t y = first; y < end; ++y) {
            const auto row = static_cast<std::size_t>(y) * rowValues;
            rb::imaging::floatsFromHalves(
                {reinterpret_cast<const std::uint16_t*>(in) + row, rowValues}, floats);
            transform.apply(floats.data(), floats.data(), count);
            rb::imaging::halvesFromFloats(floats,
                                          {reinterpret_cast<std::uint16_t*>(out) + row, rowValues});
        }
    });
}

/// Grey pixels of a profile for colours (or for a target of colours): each grey is converted as the
/// colour with three equal parts, of which the green one is the grey again.
void convertGreyRows(const ColorTransform& transform, const PixelLayout& layout, int width,
                     int height, bool colorIn, bool colorOut, const std::byte* in, std::byte* out) {
    const auto count = static_cast<std::size_t>(width);
    const auto pixelBytes = static_cast<std::size_t>(layout.bytesPerPixel());
    const PixelLayout& grey = rb::imaging::layoutOf(KVRPixelImageFormat::L_f);
    const PixelLayout& color = rb::imaging::layoutOf(KVRPixelImageFormat::RGB_f);
    rb::imaging::forRowSlices(width, height, [&](std::int64_t first, std::int64_t end) {
        std::vector<float> before(3 * count), after(3 * count), greys(count);
        for (std::int64_t y = first; y < end; ++y) {
            const std::byte* inRow = in + static_cast<std::size_t>(y) * count * pixelBytes;
            std::byte* outRow = out + static_cast<std::size_t>(y) * count * pixelBytes;
            rb::imaging::convertPixels(layout, inRow, colorIn ? color : grey,
                                       reinterpret_cast<std::byte*>(before.data()), count);
            transform.apply(before.data(), after.data(), count);
            for (std::size_t x = 0; x < count; ++x)
                greys[x] = colorOut ? after[3 * x + 1] : after[x];
            rb::imaging::convertPixels(grey, reinterpret_cast<const std::byte*>(greys.data()),
                                       layout, outRow, count);
            if (!layout.hasAlpha()) continue;
            for (auto at = static_cast<std::size_t>(layout.alpha); at < count * pixelBytes;
                 at += pixelBytes)
                outRow[at] = inRow[at];
        }
    });
}

}  // namespace

HRESULT KVRPixelImage::AssignColorProfile(KVRMMColorProfile* profile, int) {
    m_profile = profile ? KVRVar<KVRMMColorProfile>(profile)
                        : KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    return S_OK;
}

HRESULT KVRPixelImage::ApplyColorProfile(KVRMMColorProfile* target, int flag) try {
    const auto sRGB = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    const KVRVar<KVRMMColorProfile> to = target ? KVRVar<KVRMMColorProfile>(target) : sRGB;
    const KVRVar<KVRMMColorProfile> from = m_profile ? m_profile : sRGB;
    const PixelLayout& pixels = layout();
    const auto fits = [&](const KVRMMColorProfile& profile) {
        const ColorSpace space = profile.icc().space();
        return space == ColorSpace::Rgb || (space == ColorSpace::Grey && pixels.isGrey());
    };
    if (pixels.channels == 0 || !fits(*from.Get()) || !fits(*to.Get())) return E_FAIL;

    // Black and white are the same in every profile, and so is everything in one and the same.
    const bool same = std::ranges::equal(from->GetData(), to->GetData());
    if (same || pixels.type == ChannelType::Bit || m_pixels.size() == 0)
        return AssignColorProfile(to.Get(), flag);

    ColorLayout in = engineLayout(pixels), out = in;
    in.space = from->icc().space();
    out.space = to->icc().space();
    if (pixels.isGrey()) in.type = out.type = ChannelType::Float, in.alpha = out.alpha = false;
    const auto transform = ColorTransform::create(from->icc(), in, to->icc(), out);
    if (!transform) return E_FAIL;
    if (!pixels.isGrey() && pixels.type != ChannelType::Half) {
        convertRows(*transform, pixels, m_width, m_height, m_pixels.data(), m_pixels.data());
        return AssignColorProfile(to.Get(), flag);
    }
    // These need memory on the way, and may not fail half done.
    PixelStorage converted(m_pixels.size(), PixelStorage::Fill::None);
    if (pixels.isGrey())
        convertGreyRows(*transform, pixels, m_width, m_height, in.space == ColorSpace::Rgb,
                        out.space == ColorSpace::Rgb, m_pixels.data(), converted.data());
    else
        convertHalfRows(*transform, pixels, m_width, m_height, m_pixels.data(), converted.data());
    replacePixels(m_format, std::move(converted));
    return AssignColorProfile(to.Get(), flag);
} catch (const std::bad_alloc&) {
    return E_FAIL;
}

KVRMMColorProfile* KVRPixelImage::GetColorProfile() const {
    return KVRVar<KVRMMColorProfile>(m_profile).Detach();
}
