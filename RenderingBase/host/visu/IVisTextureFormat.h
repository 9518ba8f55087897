#pragma once

/// @file  The pixel formats of textures on the graphics device.

/// A name space for the codes. Letters give the channels in memory order; a suffix tells the type
/// of a channel: none 8 bits, `16` 16 bits unsigned, `_f16` half, `_f` float.
class IVisTextureFormat {
public:
    IVisTextureFormat() = delete;

    /// Codes are kept for compatibility; those left out mean nothing.
    enum Type : int {
        L = 1,
        LA = 2,
        RGB = 3,
        RGBA = 4,
        RGB16 = 6,
        RGBA16 = 7,
        SRGB_RGBA = 8,  ///< Colours as sRGB has them; alpha is linear.
        BGRA = 9,
        ARGB = 10,
        ABGR = 11,
        L_f = 18,
        RGB_f = 19,
        RGBA_f = 20,
        L_f16 = 21,
        RGB_f16 = 22,
        RGBA_f16 = 23,
    };
};
