#pragma once

/// @file  The ICC engine behind a small interface; the only source that includes it is
/// ColorEngine.cpp. Private to host/imaging.

#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace rb::imaging {

enum class ColorSpace {
    Grey,
    Rgb,
    Cmyk,
    Lab,
    Other,
};

/// An open ICC profile. Threads: any, after creation.
class IccProfile {
public:
    /// Null when @p bytes is not a profile that the engine can open.
    static std::unique_ptr<const IccProfile> open(std::span<const std::byte> bytes);
    /// The built-in sRGB profile; lives as long as the process.
    static const IccProfile& sRGB();
    /// Device-independent Lab (D50), for Lab files without a profile; lives as long as the process.
    static const IccProfile& lab();
    ~IccProfile();

    ColorSpace space() const;
    std::string description() const;
    std::string creationDate() const;
    std::string model() const;
    std::span<const std::byte> bytes() const { return m_bytes; }
    void* handle() const { return m_handle; }  ///< The engine's own handle.

private:
    IccProfile(std::vector<std::byte> bytes, void* handle);
    std::vector<std::byte> m_bytes;
    void* m_handle;
};

/// How samples lie in memory, on one side of a conversion.
struct ColorLayout {
    ColorSpace space = ColorSpace::Rgb;
    ChannelType type = ChannelType::Byte;  ///< Byte, Word or Float.
    bool alpha = false;     ///< One more channel behind the colour ones (or before: alphaFirst).
    bool reversed = false;  ///< BGR, and ABGR with alpha first.
    bool alphaFirst = false;
    bool inverted = false;  ///< CMYK where 0 is full ink.
};

/// A conversion between two profiles: relative colorimetric with black point compensation.
/// Alpha is copied. Threads: apply may run on several threads at once.
class ColorTransform {
public:
    /// Null when a profile's colour space is not that of its layout, or the engine refuses.
    static std::unique_ptr<const ColorTransform> create(const IccProfile& from, ColorLayout in,
                                                        const IccProfile& to, ColorLayout out);
    ~ColorTransform();
    /// Converts @p pixels pixels; in and out may be the same memory when their layouts agree.
    void apply(const void* in, void* out, std::size_t pixels) const;

private:
    explicit ColorTransform(void* handle) : m_handle(handle) {}
    void* m_handle;
};

}  // namespace rb::imaging
