#pragma once

/// @file  The pixel formats of images and what each one looks like in memory.

#include "RenderingBase/host/base/KVRExport.h"

#include <cstdint>

/// Pixel format codes. The suffix tells the type of a channel: none 8 bits, `_16` 16 bits unsigned,
/// `_f16` half, `_f` float. The letters give the channels in memory order.
enum class KVRPixelImageFormat : int {
    L = 0,
    LA = 1,
    RGB = 2,
    RGBA = 3,
    Bilevel = 4,  ///< One byte a pixel: 0 black, 1 white.
    None = 5,     ///< No format: never the format of an image.
    BGR = 6,
    BGRA = 7,
    ARGB = 8,
    ABGR = 9,
    RGB_f = 10,
    RGBA_f = 11,
    RGB_16 = 12,
    RGBA_16 = 13,
    L_f = 14,
    L_f16 = 15,
    L_16 = 16,
    RGB_f16 = 17,
    BGR_f16 = 18,
    RGBA_f16 = 19,
    BGRA_f16 = 20,
};

namespace rb::imaging {

/// The type of one channel of a pixel.
enum class ChannelType : std::uint8_t {
    Bit,    ///< One byte, 0 or 1.
    Byte,   ///< 8 bits, 0 to 255.
    Word,   ///< 16 bits, 0 to 65535.
    Half,   ///< binary16.
    Float,  ///< binary32.
};

/// What a format looks like. Positions are channel indices in memory; -1 where there is no such
/// channel. A grey format has the same position for red, green and blue.
struct PixelLayout {
    const char* name;  ///< As in "RGB_f"; static.
    ChannelType type;
    int channels;  ///< 1 to 4; 0 for `None` and for codes out of range.
    int red, green, blue, alpha;

    int bytesPerChannel() const {
        return type == ChannelType::Float  ? 4
               : type == ChannelType::Half ? 2
               : type == ChannelType::Word ? 2
                                           : 1;
    }
    int bytesPerPixel() const { return channels * bytesPerChannel(); }
    bool isGrey() const { return red == green; }
    bool hasAlpha() const { return alpha >= 0; }
};

/// The layout of @p format. A code out of range gives the layout of `None`.
KVR_EXPORT const PixelLayout& layoutOf(KVRPixelImageFormat format);

}  // namespace rb::imaging
