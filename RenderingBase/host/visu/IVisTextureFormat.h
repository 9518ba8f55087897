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

    /// As in "RGB_f16"; "unknown" for a code that means nothing.
    static constexpr const char* NameOf(Type format) {
        switch (format) {
            case L:
                return "L";
            case LA:
                return "LA";
            case RGB:
                return "RGB";
            case RGBA:
                return "RGBA";
            case RGB16:
                return "RGB16";
            case RGBA16:
                return "RGBA16";
            case SRGB_RGBA:
                return "SRGB_RGBA";
            case BGRA:
                return "BGRA";
            case ARGB:
                return "ARGB";
            case ABGR:
                return "ABGR";
            case L_f:
                return "L_f";
            case RGB_f:
                return "RGB_f";
            case RGBA_f:
                return "RGBA_f";
            case L_f16:
                return "L_f16";
            case RGB_f16:
                return "RGB_f16";
            case RGBA_f16:
                return "RGBA_f16";
        }
        return "unknown";
    }
};
