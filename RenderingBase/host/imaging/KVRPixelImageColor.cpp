#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "RenderingBase/host/imaging/ColorEngine.h"
#include "RenderingBase/host/imaging/HalfArrays.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/imaging/ParallelRows.h"
#include "RenderingBase/host/imaging/PixelConversion.h"

using rb::imaging::ChannelType;
using rb::imaging::ColorLayout;
using rb::imaging::ColorSpace;
using rb::imaging::ColorTransform;
using rb::imaging::IccProfile;
using rb::imaging::PixelLayout;

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

/// Converts pixels whose layout the engine knows, in place.
void convertRows(const ColorTransform& transform, const PixelLayout& layout, int width, int height,
                 std::byte* pixels) {
    const auto rowValues =
        static_cast<std::size_t>(width) * static_cast<std::size_t>(layout.channels);
    const auto rowBytes =
        static_cast<std::size_t>(width) * static_cast<std::size_t>(layout.bytesPerPixel());
    const auto count = static_cast<std::size_t>(width);
    rb::imaging::forRowSlices(width, height, [&](std::int64_t first, std::int64_t end) {
        std::vector<float> floats(layout.type == ChannelType::Half ? rowValues : 0);
        for (std::int64_t y = first; y < end; ++y) {
            std::byte* row = pixels + static_cast<std::size_t>(y) * rowBytes;
            if (layout.type != ChannelType::Half) {
                transform.apply(row, row, count);
                continue;
            }
            const std::span halves(reinterpret_cast<std::uint16_t*>(row), rowValues);
            rb::imaging::floatsFromHalves(halves, floats);
            transform.apply(floats.data(), floats.data(), count);
            rb::imaging::halvesFromFloats(floats, halves);
        }
    });
}

/// Grey pixels of a profile for colours (or for a target of colours): each grey is converted as the
/// colour with three equal parts, of which the green one is the grey again.
void convertGreyRows(const ColorTransform& transform, const PixelLayout& layout, int width,
                     int height, std::byte* pixels, bool colorIn, bool colorOut) {
    const auto rowBytes =
        static_cast<std::size_t>(width) * static_cast<std::size_t>(layout.bytesPerPixel());
    const PixelLayout& grey = rb::imaging::layoutOf(KVRPixelImageFormat::L_f);
    const PixelLayout& color = rb::imaging::layoutOf(KVRPixelImageFormat::RGB_f);
    const auto count = static_cast<std::size_t>(width);
    rb::imaging::forRowSlices(width, height, [&](std::int64_t first, std::int64_t end) {
        std::vector<float> in(3 * count), out(3 * count), greys(count);
        std::vector<std::byte> old(rowBytes);
        for (std::int64_t y = first; y < end; ++y) {
            std::byte* row = pixels + static_cast<std::size_t>(y) * rowBytes;
            rb::imaging::convertPixels(layout, row, colorIn ? color : grey,
                                       reinterpret_cast<std::byte*>(in.data()), count);
            transform.apply(in.data(), out.data(), count);
            for (std::size_t x = 0; x < count; ++x) greys[x] = colorOut ? out[3 * x + 1] : out[x];
            std::copy_n(row, rowBytes, old.begin());
            rb::imaging::convertPixels(grey, reinterpret_cast<const std::byte*>(greys.data()),
                                       layout, row, count);
            if (!layout.hasAlpha()) continue;
            const auto step = static_cast<std::size_t>(layout.bytesPerPixel());
            for (auto at = static_cast<std::size_t>(layout.alpha); at < rowBytes; at += step)
                row[at] = old[at];
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
    if (pixels.isGrey())
        convertGreyRows(*transform, pixels, m_width, m_height, m_pixels.data(),
                        in.space == ColorSpace::Rgb, out.space == ColorSpace::Rgb);
    else
        convertRows(*transform, pixels, m_width, m_height, m_pixels.data());
    return AssignColorProfile(to.Get(), flag);
} catch (const std::bad_alloc&) {
    return E_FAIL;
}

KVRMMColorProfile* KVRPixelImage::GetColorProfile() const {
    return KVRVar<KVRMMColorProfile>(m_profile).Detach();
}
