#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"

#include <array>

namespace rb::imaging {

const PixelLayout& layoutOf(KVRPixelImageFormat format) {
    using enum ChannelType;
    static constexpr std::array<PixelLayout, 21> kLayouts{{
        {"L", Byte, 1, 0, 0, 0, -1},       {"LA", Byte, 2, 0, 0, 0, 1},
        {"RGB", Byte, 3, 0, 1, 2, -1},     {"RGBA", Byte, 4, 0, 1, 2, 3},
        {"bilevel", Bit, 1, 0, 0, 0, -1},  {"none", Byte, 0, -1, -1, -1, -1},
        {"BGR", Byte, 3, 2, 1, 0, -1},     {"BGRA", Byte, 4, 2, 1, 0, 3},
        {"ARGB", Byte, 4, 1, 2, 3, 0},     {"ABGR", Byte, 4, 3, 2, 1, 0},
        {"RGB_f", Float, 3, 0, 1, 2, -1},  {"RGBA_f", Float, 4, 0, 1, 2, 3},
        {"RGB_16", Word, 3, 0, 1, 2, -1},  {"RGBA_16", Word, 4, 0, 1, 2, 3},
        {"L_f", Float, 1, 0, 0, 0, -1},    {"L_f16", Half, 1, 0, 0, 0, -1},
        {"L_16", Word, 1, 0, 0, 0, -1},    {"RGB_f16", Half, 3, 0, 1, 2, -1},
        {"BGR_f16", Half, 3, 2, 1, 0, -1}, {"RGBA_f16", Half, 4, 0, 1, 2, 3},
        {"BGRA_f16", Half, 4, 2, 1, 0, 3},
    }};
    const auto code = static_cast<std::size_t>(format);
    return kLayouts[code < kLayouts.size() ? code
                                           : static_cast<std::size_t>(KVRPixelImageFormat::None)];
}

}  // namespace rb::imaging
