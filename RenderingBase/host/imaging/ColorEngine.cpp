#include "RenderingBase/host/imaging/ColorEngine.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <lcms2.h>
#include <utility>

namespace rb::imaging {
namespace {

// A fixed profile: the engine's own sRGB profile carries the present time as its creation date.
constexpr unsigned char kSrgbBytes[] = {
#include "RenderingBase/host/imaging/SrgbProfile.inc"
};

ColorSpace spaceOf(cmsColorSpaceSignature signature) {
    switch (signature) {
        case cmsSigGrayData:
            return ColorSpace::Grey;
        case cmsSigRgbData:
            return ColorSpace::Rgb;
        case cmsSigCmykData:
            return ColorSpace::Cmyk;
        case cmsSigLabData:
            return ColorSpace::Lab;
        default:
            return ColorSpace::Other;
    }
}

std::uint32_t bigEndian(std::span<const std::byte> bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + count; ++i)
        value = value << 8 | (i < bytes.size() ? std::to_integer<std::uint32_t>(bytes[i]) : 0);
    return value;
}

void appendUtf8(std::string& text, std::uint32_t c) {
    const auto put = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) return put(c);
    if (c < 0x800) {
        put(0xC0 | c >> 6);
    } else {
        if (c < 0x10000) {
            put(0xE0 | c >> 12);
        } else {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
        }
        put(0x80 | (c >> 6 & 0x3F));
    }
    put(0x80 | (c & 0x3F));
}

/// A text of the profile. The engine hands out UTF-16 units, one to a wide character.
std::string profileText(cmsHPROFILE profile, cmsInfoType type) {
    const cmsUInt32Number bytes = cmsGetProfileInfo(profile, type, "en", "US", nullptr, 0);
    std::vector<wchar_t> units(bytes / sizeof(wchar_t) + 1);
    cmsGetProfileInfo(profile, type, "en", "US", units.data(), bytes);
    std::string text;
    for (std::size_t i = 0; i < units.size() && units[i]; ++i) {
        // NOLINTNEXTLINE(bugprone-signed-char-misuse): a wide character, no narrow one
        auto c = static_cast<std::uint32_t>(units[i]);
        const auto next = i + 1 < units.size() ? static_cast<std::uint32_t>(units[i + 1]) : 0;
        if (c >= 0xD800 && c < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
            c = 0x10000 + ((c - 0xD800) << 10) + (next - 0xDC00);
            ++i;
        } else if ((c >= 0xD800 && c < 0xE000) || c > 0x10FFFF) {
            c = 0xFFFD;  // half a pair
        }
        appendUtf8(text, c);
    }
    return text;
}

bool hasSrgbColorants(cmsHPROFILE profile) {
    // IEC 61966-2-1 primaries, adapted to D50 (Bradford).
    struct Colorant {
        cmsTagSignature tag;
        double x, y, z;
    };
    constexpr std::array<Colorant, 3> kColorants{
        {{cmsSigRedColorantTag, 0.43607, 0.22249, 0.01392},
         {cmsSigGreenColorantTag, 0.38515, 0.71687, 0.09708},
         {cmsSigBlueColorantTag, 0.14307, 0.06061, 0.71410}}};
    constexpr double kTolerance = 0.004;
    for (const Colorant& expected : kColorants) {
        const auto* found = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, expected.tag));
        if (!found || std::abs(found->X - expected.x) > kTolerance ||
            std::abs(found->Y - expected.y) > kTolerance ||
            std::abs(found->Z - expected.z) > kTolerance)
            return false;
    }
    return true;
}

bool hasSrgbCurves(cmsHPROFILE profile) {
    constexpr double kTolerance = 0.01;
    constexpr int kSteps = 64;
    for (cmsTagSignature tag : {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag}) {
        const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, tag));
        if (!curve) return false;
        for (int i = 0; i <= kSteps; ++i) {
            const double x = static_cast<double>(i) / kSteps;
            const double linear = x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
            const double y =
                static_cast<double>(cmsEvalToneCurveFloat(curve, static_cast<float>(x)));
            if (!(std::abs(y - linear) <= kTolerance)) return false;
        }
    }
    return true;
}

/// The engine's code for a memory layout.
cmsUInt32Number pixelType(ColorLayout layout) {
    cmsUInt32Number type = 0;
    switch (layout.space) {
        case ColorSpace::Grey:
            type = COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1);
            break;
        case ColorSpace::Cmyk:
            type = COLORSPACE_SH(PT_CMYK) | CHANNELS_SH(4);
            break;
        case ColorSpace::Lab:
            type = COLORSPACE_SH(PT_Lab) | CHANNELS_SH(3);
            break;
        default:
            type = COLORSPACE_SH(PT_RGB) | CHANNELS_SH(3);
    }
    type |= layout.type == ChannelType::Float  ? BYTES_SH(4) | FLOAT_SH(1)
            : layout.type == ChannelType::Word ? BYTES_SH(2)
                                               : BYTES_SH(1);
    if (layout.alpha) type |= EXTRA_SH(1);
    if (layout.inverted) type |= FLAVOR_SH(1);
    // "First" rotates the channels by one, "swap" reverses all of them, the extra one included.
    if (layout.reversed) type |= DOSWAP_SH(1);
    if (layout.alpha && layout.alphaFirst != layout.reversed) type |= SWAPFIRST_SH(1);
    return type;
}

}  // namespace

IccProfile::IccProfile(std::vector<std::byte> bytes, void* handle)
    : m_bytes(std::move(bytes)), m_handle(handle) {}

IccProfile::~IccProfile() { cmsCloseProfile(m_handle); }

std::unique_ptr<const IccProfile> IccProfile::open(std::span<const std::byte> bytes) {
    constexpr std::size_t kHeaderBytes = 128, kLongest = std::size_t{1} << 30;
    if (bytes.size() < kHeaderBytes || bytes.size() > kLongest) return nullptr;
    std::vector<std::byte> copy(bytes.begin(), bytes.end());
    const cmsHPROFILE handle =
        cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
    if (!handle) return nullptr;
    return std::unique_ptr<const IccProfile>(new IccProfile(std::move(copy), handle));
}

const IccProfile& IccProfile::sRGB() {
    // Never closed, like the one below: code that runs at exit may still convert colours.
    static const auto* profile = open(std::as_bytes(std::span(kSrgbBytes))).release();
    return *profile;
}

const IccProfile& IccProfile::lab() {
    static const auto* profile = new IccProfile({}, cmsCreateLab4Profile(nullptr));
    return *profile;
}

ColorSpace IccProfile::space() const { return spaceOf(cmsGetColorSpace(m_handle)); }

std::string IccProfile::description() const { return profileText(m_handle, cmsInfoDescription); }

std::string IccProfile::creationDate() const {
    // ICC.1, 7.2.8: six 16-bit numbers from byte 24 on: year, month, day, hours, minutes, seconds.
    std::array<unsigned, 6> parts{};
    for (std::size_t i = 0; i < parts.size(); ++i) parts[i] = bigEndian(m_bytes, 24 + 2 * i, 2);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04u-%02u-%02u %02u:%02u:%02u", parts[0], parts[1],
                  parts[2], parts[3], parts[4], parts[5]);
    return text.data();
}

std::string IccProfile::model() const {
    // ICC.1, 7.2.13: the device model, four characters at byte 52.
    const std::uint32_t signature = bigEndian(m_bytes, 52, 4);
    std::string model;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = static_cast<char>(signature >> shift & 0xFF);
        if (c >= ' ' && c <= '~') model += c;
    }
    while (!model.empty() && model.back() == ' ') model.pop_back();
    if (model == "sRGB") return model;
    if (space() == ColorSpace::Rgb && cmsIsMatrixShaper(m_handle) && hasSrgbColorants(m_handle) &&
        hasSrgbCurves(m_handle))
        return "sRGB";
    return model.empty() ? profileText(m_handle, cmsInfoModel) : model;
}

std::unique_ptr<const ColorTransform> ColorTransform::create(const IccProfile& from, ColorLayout in,
                                                             const IccProfile& to,
                                                             ColorLayout out) {
    if (from.space() != in.space || to.space() != out.space) return nullptr;
    // Without a cache of the last colour, one transform serves several threads.
    cmsUInt32Number flags = cmsFLAGS_NOCACHE | cmsFLAGS_BLACKPOINTCOMPENSATION;
    if (in.alpha && out.alpha) flags |= cmsFLAGS_COPY_ALPHA;
    void* const handle = cmsCreateTransform(from.handle(), pixelType(in), to.handle(),
                                            pixelType(out), INTENT_RELATIVE_COLORIMETRIC, flags);
    return std::unique_ptr<const ColorTransform>(handle ? new ColorTransform(handle) : nullptr);
}

ColorTransform::~ColorTransform() { cmsDeleteTransform(m_handle); }

void ColorTransform::apply(const void* in, void* out, std::size_t pixels) const {
    // The engine counts in 32 bits.
    cmsDoTransform(m_handle, in, out, static_cast<cmsUInt32Number>(pixels));
}

}  // namespace rb::imaging
