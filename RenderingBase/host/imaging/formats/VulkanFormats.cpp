// Source: Khronos, Vulkan 1.3, section "Formats" (VkFormat).

#include "RenderingBase/host/imaging/formats/VulkanFormats.h"

#include <string>
#include <variant>

namespace rb::imaging {
namespace {

using Format = KVRPixelImageFormat;
using Colors = BlockTexels::Colors;
constexpr auto U8 = TexelSample::Unorm8, S8 = TexelSample::Snorm8, U16 = TexelSample::Unorm16,
               S16 = TexelSample::Snorm16, F16 = TexelSample::Half, F32 = TexelSample::Float;

struct Row {
    std::uint32_t number;
    const char* name;
    std::variant<PlainTexels, PackedFloats, BlockTexels> code;
    Format order = Format::None;  // when the channels are not in the order red, green, blue, alpha
};

const Row kRows[] = {
    {9, "R8_UNORM", PlainTexels{U8, 1}},
    {10, "R8_SNORM", PlainTexels{S8, 1}},
    {15, "R8_SRGB", PlainTexels{U8, 1}},
    {16, "R8G8_UNORM", PlainTexels{U8, 2}},
    {17, "R8G8_SNORM", PlainTexels{S8, 2}},
    {22, "R8G8_SRGB", PlainTexels{U8, 2}},
    {23, "R8G8B8_UNORM", PlainTexels{U8, 3}},
    {24, "R8G8B8_SNORM", PlainTexels{S8, 3}},
    {29, "R8G8B8_SRGB", PlainTexels{U8, 3}},
    {30, "B8G8R8_UNORM", PlainTexels{U8, 3}, Format::BGR},
    {36, "B8G8R8_SRGB", PlainTexels{U8, 3}, Format::BGR},
    {37, "R8G8B8A8_UNORM", PlainTexels{U8, 4}},
    {38, "R8G8B8A8_SNORM", PlainTexels{S8, 4}},
    {43, "R8G8B8A8_SRGB", PlainTexels{U8, 4}},
    {44, "B8G8R8A8_UNORM", PlainTexels{U8, 4}, Format::BGRA},
    {50, "B8G8R8A8_SRGB", PlainTexels{U8, 4}, Format::BGRA},
    {70, "R16_UNORM", PlainTexels{U16, 1}},
    {71, "R16_SNORM", PlainTexels{S16, 1}},
    {76, "R16_SFLOAT", PlainTexels{F16, 1}},
    {77, "R16G16_UNORM", PlainTexels{U16, 2}},
    {78, "R16G16_SNORM", PlainTexels{S16, 2}},
    {83, "R16G16_SFLOAT", PlainTexels{F16, 2}},
    {84, "R16G16B16_UNORM", PlainTexels{U16, 3}},
    {85, "R16G16B16_SNORM", PlainTexels{S16, 3}},
    {90, "R16G16B16_SFLOAT", PlainTexels{F16, 3}},
    {91, "R16G16B16A16_UNORM", PlainTexels{U16, 4}},
    {92, "R16G16B16A16_SNORM", PlainTexels{S16, 4}},
    {97, "R16G16B16A16_SFLOAT", PlainTexels{F16, 4}},
    {100, "R32_SFLOAT", PlainTexels{F32, 1}},
    {103, "R32G32_SFLOAT", PlainTexels{F32, 2}},
    {106, "R32G32B32_SFLOAT", PlainTexels{F32, 3}},
    {109, "R32G32B32A32_SFLOAT", PlainTexels{F32, 4}},
    {122, "B10G11R11_UFLOAT_PACK32", PackedFloats::R11G11B10},
    {123, "E5B9G9R9_UFLOAT_PACK32", PackedFloats::R9G9B9E5},
    {131, "BC1_RGB_UNORM_BLOCK", BlockTexels{BlockKind::BC1, Colors::Opaque}},
    {132, "BC1_RGB_SRGB_BLOCK", BlockTexels{BlockKind::BC1, Colors::Opaque}},
    {133, "BC1_RGBA_UNORM_BLOCK", BlockTexels{BlockKind::BC1}},
    {134, "BC1_RGBA_SRGB_BLOCK", BlockTexels{BlockKind::BC1}},
    {135, "BC2_UNORM_BLOCK", BlockTexels{BlockKind::BC2}},
    {136, "BC2_SRGB_BLOCK", BlockTexels{BlockKind::BC2}},
    {137, "BC3_UNORM_BLOCK", BlockTexels{BlockKind::BC3}},
    {138, "BC3_SRGB_BLOCK", BlockTexels{BlockKind::BC3}},
    {139, "BC4_UNORM_BLOCK", BlockTexels{BlockKind::BC4}},
    {140, "BC4_SNORM_BLOCK", BlockTexels{BlockKind::BC4Signed}},
    {141, "BC5_UNORM_BLOCK", BlockTexels{BlockKind::BC5}},
    {142, "BC5_SNORM_BLOCK", BlockTexels{BlockKind::BC5Signed}},
    {143, "BC6H_UFLOAT_BLOCK", BlockTexels{BlockKind::BC6H}},
    {144, "BC6H_SFLOAT_BLOCK", BlockTexels{BlockKind::BC6HSigned}},
    {145, "BC7_UNORM_BLOCK", BlockTexels{BlockKind::BC7}},
    {146, "BC7_SRGB_BLOCK", BlockTexels{BlockKind::BC7}},
};

}  // namespace

ReadResult vulkanTexels(std::uint32_t number, TexelFormat& texels) {
    for (const Row& row : kRows) {
        if (row.number != number) continue;
        texels =
            std::visit([&](const auto& code) { return texelFormat(row.name, code); }, row.code);
        if (row.order != Format::None) texels = inOrder(std::move(texels), row.order);
        return {};
    }
    return refuse("plain texels of 8 or 16 bits or float, or BC1 to BC7",
                  "VkFormat " + std::to_string(number), "byte 12");
}

}  // namespace rb::imaging
