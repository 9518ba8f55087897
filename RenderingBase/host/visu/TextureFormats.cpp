#include "RenderingBase/host/visu/TextureFormats.h"

namespace rb::visu {

TexelChoice texelsFor(KVRPixelImageFormat format) {
    using Pixels = KVRPixelImageFormat;
    using Texels = IVisTextureFormat;
    switch (format) {
        case Pixels::L:
            return {format, Texels::L};
        case Pixels::LA:
            return {format, Texels::LA};
        case Pixels::RGB:
        case Pixels::BGR:
            return {Pixels::RGB, Texels::RGB};
        case Pixels::RGBA:
            return {format, Texels::RGBA};
        case Pixels::BGRA:
            return {format, Texels::BGRA};
        case Pixels::ARGB:
            return {format, Texels::ARGB};
        case Pixels::ABGR:
            return {format, Texels::ABGR};
        case Pixels::RGB_16:
        case Pixels::L_16:
            return {Pixels::RGB_16, Texels::RGB16};
        case Pixels::RGBA_16:
            return {format, Texels::RGBA16};
        case Pixels::L_f:
            return {format, Texels::L_f};
        case Pixels::RGB_f:
            return {format, Texels::RGB_f};
        case Pixels::RGBA_f:
            return {format, Texels::RGBA_f};
        case Pixels::L_f16:
            return {format, Texels::L_f16};
        case Pixels::RGB_f16:
        case Pixels::BGR_f16:
            return {Pixels::RGB_f16, Texels::RGB_f16};
        case Pixels::RGBA_f16:
        case Pixels::BGRA_f16:
            return {Pixels::RGBA_f16, Texels::RGBA_f16};
        case Pixels::Bilevel:
        case Pixels::None:
            break;
    }
    return {Pixels::None, Texels::L};
}

}  // namespace rb::visu
