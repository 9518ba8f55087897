// Source: Microsoft, "DXGI_FORMAT enumeration (dxgiformat.h)".

#include "RenderingBase/host/imaging/formats/DxgiFormats.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>

namespace rb::imaging {
namespace {

using Format = KVRPixelImageFormat;
constexpr auto U8 = TexelSample::Unorm8, S8 = TexelSample::Snorm8, U16 = TexelSample::Unorm16,
               S16 = TexelSample::Snorm16, F16 = TexelSample::Half, F32 = TexelSample::Float;

struct DxgiName {
    std::uint32_t number;
    const char* name;
};

struct Plain : DxgiName {
    PlainTexels code;
    Format order = Format::None;  // when the channels are not in the order red, green, blue, alpha
};

const Plain kPlain[] = {
    {{1, "R32G32B32A32_TYPELESS"}, {F32, 4}},
    {{2, "R32G32B32A32_FLOAT"}, {F32, 4}},
    {{5, "R32G32B32_TYPELESS"}, {F32, 3}},
    {{6, "R32G32B32_FLOAT"}, {F32, 3}},
    {{9, "R16G16B16A16_TYPELESS"}, {U16, 4}},
    {{10, "R16G16B16A16_FLOAT"}, {F16, 4}},
    {{11, "R16G16B16A16_UNORM"}, {U16, 4}},
    {{13, "R16G16B16A16_SNORM"}, {S16, 4}},
    {{15, "R32G32_TYPELESS"}, {F32, 2}},
    {{16, "R32G32_FLOAT"}, {F32, 2}},
    {{27, "R8G8B8A8_TYPELESS"}, {U8, 4}},
    {{28, "R8G8B8A8_UNORM"}, {U8, 4}},
    {{29, "R8G8B8A8_UNORM_SRGB"}, {U8, 4}},
    {{31, "R8G8B8A8_SNORM"}, {S8, 4}},
    {{33, "R16G16_TYPELESS"}, {U16, 2}},
    {{34, "R16G16_FLOAT"}, {F16, 2}},
    {{35, "R16G16_UNORM"}, {U16, 2}},
    {{37, "R16G16_SNORM"}, {S16, 2}},
    {{39, "R32_TYPELESS"}, {F32, 1}},
    {{40, "D32_FLOAT"}, {F32, 1}},
    {{41, "R32_FLOAT"}, {F32, 1}},
    {{48, "R8G8_TYPELESS"}, {U8, 2}},
    {{49, "R8G8_UNORM"}, {U8, 2}},
    {{51, "R8G8_SNORM"}, {S8, 2}},
    {{53, "R16_TYPELESS"}, {U16, 1}},
    {{54, "R16_FLOAT"}, {F16, 1}},
    {{55, "D16_UNORM"}, {U16, 1}},
    {{56, "R16_UNORM"}, {U16, 1}},
    {{58, "R16_SNORM"}, {S16, 1}},
    {{60, "R8_TYPELESS"}, {U8, 1}},
    {{61, "R8_UNORM"}, {U8, 1}},
    {{63, "R8_SNORM"}, {S8, 1}},
    {{87, "B8G8R8A8_UNORM"}, {U8, 4}, Format::BGRA},
    {{88, "B8G8R8X8_UNORM"}, {U8, 4}, Format::BGR},
    {{90, "B8G8R8A8_TYPELESS"}, {U8, 4}, Format::BGRA},
    {{91, "B8G8R8A8_UNORM_SRGB"}, {U8, 4}, Format::BGRA},
    {{92, "B8G8R8X8_TYPELESS"}, {U8, 4}, Format::BGR},
    {{93, "B8G8R8X8_UNORM_SRGB"}, {U8, 4}, Format::BGR},
};

struct Masked : DxgiName {
    std::uint32_t bytes;
    MaskedTexels code;
};

const Masked kMasked[] = {
    {{23, "R10G10B10A2_TYPELESS"}, 4, {{0x3FF, 0xFFC00, 0x3FF00000, 0xC0000000}}},
    {{24, "R10G10B10A2_UNORM"}, 4, {{0x3FF, 0xFFC00, 0x3FF00000, 0xC0000000}}},
    {{65, "A8_UNORM"}, 1, {{0, 0, 0, 0xFF}}},
    {{85, "B5G6R5_UNORM"}, 2, {{0xF800, 0x7E0, 0x1F, 0}}},
    {{86, "B5G5R5A1_UNORM"}, 2, {{0x7C00, 0x3E0, 0x1F, 0x8000}}},
    {{115, "B4G4R4A4_UNORM"}, 2, {{0xF00, 0xF0, 0xF, 0xF000}}},
    {{191, "A4B4G4R4_UNORM"}, 2, {{0xF000, 0xF00, 0xF0, 0xF}}},
};

constexpr std::uint32_t kR11G11B10 = 26, kR9G9B9E5 = 67;

struct Block : DxgiName {
    BlockKind kind;
};

const Block kBlocks[] = {
    {{70, "BC1_TYPELESS"}, BlockKind::BC1},    {{71, "BC1_UNORM"}, BlockKind::BC1},
    {{72, "BC1_UNORM_SRGB"}, BlockKind::BC1},  {{73, "BC2_TYPELESS"}, BlockKind::BC2},
    {{74, "BC2_UNORM"}, BlockKind::BC2},       {{75, "BC2_UNORM_SRGB"}, BlockKind::BC2},
    {{76, "BC3_TYPELESS"}, BlockKind::BC3},    {{77, "BC3_UNORM"}, BlockKind::BC3},
    {{78, "BC3_UNORM_SRGB"}, BlockKind::BC3},  {{79, "BC4_TYPELESS"}, BlockKind::BC4},
    {{80, "BC4_UNORM"}, BlockKind::BC4},       {{81, "BC4_SNORM"}, BlockKind::BC4Signed},
    {{82, "BC5_TYPELESS"}, BlockKind::BC5},    {{83, "BC5_UNORM"}, BlockKind::BC5},
    {{84, "BC5_SNORM"}, BlockKind::BC5Signed}, {{94, "BC6H_TYPELESS"}, BlockKind::BC6H},
    {{95, "BC6H_UF16"}, BlockKind::BC6H},      {{96, "BC6H_SF16"}, BlockKind::BC6HSigned},
    {{97, "BC7_TYPELESS"}, BlockKind::BC7},    {{98, "BC7_UNORM"}, BlockKind::BC7},
    {{99, "BC7_UNORM_SRGB"}, BlockKind::BC7},
};

constexpr DxgiName kNoPictures[] = {
    {3, "R32G32B32A32_UINT"},
    {4, "R32G32B32A32_SINT"},
    {7, "R32G32B32_UINT"},
    {8, "R32G32B32_SINT"},
    {12, "R16G16B16A16_UINT"},
    {14, "R16G16B16A16_SINT"},
    {17, "R32G32_UINT"},
    {18, "R32G32_SINT"},
    {19, "R32G8X24_TYPELESS"},
    {20, "D32_FLOAT_S8X24_UINT"},
    {21, "R32_FLOAT_X8X24_TYPELESS"},
    {22, "X32_TYPELESS_G8X24_UINT"},
    {25, "R10G10B10A2_UINT"},
    {30, "R8G8B8A8_UINT"},
    {32, "R8G8B8A8_SINT"},
    {36, "R16G16_UINT"},
    {38, "R16G16_SINT"},
    {42, "R32_UINT"},
    {43, "R32_SINT"},
    {44, "R24G8_TYPELESS"},
    {45, "D24_UNORM_S8_UINT"},
    {46, "R24_UNORM_X8_TYPELESS"},
    {47, "X24_TYPELESS_G8_UINT"},
    {50, "R8G8_UINT"},
    {52, "R8G8_SINT"},
    {57, "R16_UINT"},
    {59, "R16_SINT"},
    {62, "R8_UINT"},
    {64, "R8_SINT"},
    {66, "R1_UNORM"},
    {68, "R8G8_B8G8_UNORM"},
    {69, "G8R8_G8B8_UNORM"},
    {89, "R10G10B10_XR_BIAS_A2_UNORM"},
    {100, "AYUV"},
    {101, "Y410"},
    {102, "Y416"},
    {103, "NV12"},
    {104, "P010"},
    {105, "P016"},
    {106, "420_OPAQUE"},
    {107, "YUY2"},
    {108, "Y210"},
    {109, "Y216"},
    {110, "NV11"},
    {111, "AI44"},
    {112, "IA44"},
    {113, "P8"},
    {114, "A8P8"},
    {130, "P208"},
    {131, "V208"},
    {132, "V408"},
    {189, "SAMPLER_FEEDBACK_MIN_MIP_OPAQUE"},
    {190, "SAMPLER_FEEDBACK_MIP_REGION_USED_OPAQUE"},
};

/// Three numbers for each size of ASTC blocks, and one left out.
constexpr std::uint32_t kFirstAstc = 133;
constexpr std::array kAstcSizes{"4X4", "5X4",  "5X5",  "6X5",  "6X6",   "8X5",   "8X6",
                                "8X8", "10X5", "10X6", "10X8", "10X10", "12X10", "12X12"};

std::string nameOfRefused(std::uint32_t number) {
    for (const DxgiName& known : kNoPictures)
        if (known.number == number) return known.name;
    if (number >= kFirstAstc && (number - kFirstAstc) / 4 < kAstcSizes.size())
        return std::string("ASTC_") + kAstcSizes[(number - kFirstAstc) / 4];
    return "number " + std::to_string(number);
}

template <typename Row, std::size_t count>
const Row* find(const Row (&table)[count], std::uint32_t number) {
    const auto* const row = std::find_if(std::begin(table), std::end(table),
                                         [&](const Row& r) { return r.number == number; });
    return row == std::end(table) ? nullptr : row;
}

}  // namespace

ReadResult dxgiTexels(std::uint32_t number, std::string where, TexelFormat& texels) {
    if (number == kR11G11B10) {
        texels = texelFormat("R11G11B10_FLOAT", PackedFloats::R11G11B10);
    } else if (number == kR9G9B9E5) {
        texels = texelFormat("R9G9B9E5_SHAREDEXP", PackedFloats::R9G9B9E5);
    } else if (const Plain* const plain = find(kPlain, number)) {
        texels = texelFormat(plain->name, plain->code);
        if (plain->order != Format::None) texels = inOrder(std::move(texels), plain->order);
    } else if (const Masked* const masked = find(kMasked, number)) {
        texels = texelFormat(masked->name, masked->code, masked->bytes);
    } else if (const Block* const block = find(kBlocks, number)) {
        texels = texelFormat(block->name, BlockTexels{block->kind});
    } else {
        return refuse("plain texels or BC1 to BC7", "the format " + nameOfRefused(number),
                      std::move(where));
    }
    return {};
}

}  // namespace rb::imaging
