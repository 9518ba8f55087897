#pragma once

/// @file  Real files of other programs, and what is known of each. They lie outside the project, in
/// the folder that RB_DATA_DIR names.

#include "tests/image/ImageFiles.h"
#include "tests/support/ForeignPrograms.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <span>
#include <string>

namespace rb::test {

struct RealFile {
    const char* path;  ///< Below the data folder.
    int width;
    int height;
    Format format;
    float dpi;  ///< 0: the file says nothing.
};

struct RefusedFile {
    const char* path;
    const char* reason;  ///< A part of what is said to have been found or expected.
};

inline constexpr Format L = Format::L, RGB = Format::RGB, RGBA = Format::RGBA;

// Sizes, channels and resolutions: from `oiiotool --info -v` and `identify`.
inline const RealFile kRealFiles[] = {
    {"images/bmp/bmpsuite/g01bg.bmp", 127, 64, RGB, 0},
    {"images/bmp/bmpsuite/g08p256.bmp", 127, 64, RGB, 0},
    {"images/bmp/bmpsuite/g08w125.bmp", 125, 62, RGB, 0},
    {"images/exr/openexr-images/GrayRampsDiagonal.exr", 800, 800, Format::L_f16, 0},
    {"images/exr/openexr-images/t02.exr", 400, 300, Format::RGB_f16, 0},
    {"images/exr/openexr-images/t07.exr", 400, 300, Format::RGB_f16, 0},
    {"images/hdr/radiance/mirror_fish.hdr", 128, 124, Format::RGB_f, 0},
    {"images/jpeg/pillow/exif-72dpi-int.jpg", 500, 450, RGB, 72},
    {"images/jpeg/pillow/hopper_orientation_2.jpg", 128, 128, RGB, 0},
    {"images/jpeg/pillow/hopper_orientation_7.jpg", 128, 128, RGB, 0},
    {"images/jpeg/pillow/junk_jpeg_header.jpg", 1024, 768, RGB, 0},
    {"images/jpeg/pillow/pil_sample_rgb.jpg", 100, 100, RGB, 72},
    {"images/jpeg/sharp/Channel_digital_image_CMYK_color_no_profile.jpg", 500, 333, RGB, 0},
    {"images/png/pillow/icc_profile.png", 57, 57, RGBA, 0},
    {"images/png/pillow/padded_idat.png", 256, 10, L, 0},
    {"images/png/pngsuite/PngSuite.png", 256, 256, RGB, 0},
    {"images/png/pngsuite/basi0g16.png", 32, 32, L, 0},
    {"images/png/pngsuite/basi3p04.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/basi6a16.png", 32, 32, RGBA, 0},
    {"images/png/pngsuite/basn0g16.png", 32, 32, L, 0},
    {"images/png/pngsuite/basn3p04.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/basn6a16.png", 32, 32, RGBA, 0},
    {"images/png/pngsuite/ccwn2c08.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/cdun2c08.png", 32, 32, RGB, 25.4F},
    {"images/png/pngsuite/cm9n0g04.png", 32, 32, L, 0},
    {"images/png/pngsuite/cs8n2c08.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/ctfn0g04.png", 32, 32, L, 0},
    {"images/png/pngsuite/f00n0g08.png", 32, 32, L, 0},
    {"images/png/pngsuite/f02n2c08.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/f99n0g04.png", 32, 32, L, 0},
    {"images/png/pngsuite/g04n2c08.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/g07n0g16.png", 32, 32, L, 0},
    {"images/png/pngsuite/g10n3p04.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/oi2n2c16.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/pp0n2c16.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/ps2n2c16.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/s03i3p01.png", 3, 3, RGB, 0},
    {"images/png/pngsuite/s05n3p02.png", 5, 5, RGB, 0},
    {"images/png/pngsuite/s08i3p02.png", 8, 8, RGB, 0},
    {"images/png/pngsuite/s32n3p04.png", 32, 32, RGB, 0},
    {"images/png/pngsuite/s35i3p04.png", 35, 35, RGB, 0},
    {"images/png/pngsuite/s37n3p04.png", 37, 37, RGB, 0},
    {"images/png/pngsuite/s40i3p04.png", 40, 40, RGB, 0},
    {"images/png/pngsuite/tbgn2c16.png", 32, 32, RGBA, 0},
    {"images/png/pngsuite/tbyn3p08.png", 32, 32, RGBA, 0},
    {"images/png/pngsuite/tp1n3p08.png", 32, 32, RGBA, 0},
    {"images/png/pngsuite/z00n2c08.png", 32, 32, RGB, 0},
    {"images/png/sharp/2x2_fdcce6.png", 2, 2, RGB, 0},
    {"images/png/sharp/prophoto.png", 1, 1, RGB, 240.00461F},
    {"images/pic/oiio/astone64.pic", 64, 64, RGB, 0},
    {"images/psd/pillow/five_channels.psd", 1, 1, RGB, 300},
    {"images/psd/pillow/rgba.psd", 100, 100, RGBA, 0},
    {"images/psd/psd-tools/32bit5x5.psb", 5, 5, Format::RGB_f, 72},
    {"images/psd/psd-tools/32bit5x5.psd", 5, 5, Format::RGB_f, 72},
    {"images/psd/psd-tools/4x4_1bit_bitmap.psd", 4, 4, L, 72},
    {"images/psd/psd-tools/4x4_8bit_index_color.psd", 4, 4, RGBA, 72},
    {"images/psd/psd-tools/group.psb", 100, 200, RGB, 71.999985F},
    {"images/psd/psd-tools/group.psd", 100, 200, RGB, 71.999985F},
    {"images/sgi/pillow/hopper16.rgb", 128, 128, RGB, 0},
    {"images/tga/oiio/CTC24.TGA", 128, 128, RGB, 0},
    {"images/tga/oiio/UTC24.TGA", 128, 128, RGB, 0},
    {"images/tga/pillow/1x1_l_bl_rle.tga", 1, 1, L, 0},
    {"images/tga/pillow/200x32_l_bl_rle.tga", 200, 32, L, 0},
    {"images/tga/pillow/200x32_la_bl_rle.tga", 200, 32, Format::LA, 0},
    {"images/tga/pillow/200x32_p_bl_raw_origin.tga", 200, 32, RGB, 0},
    {"images/tga/pillow/200x32_rgb_bl_raw.tga", 200, 32, RGB, 0},
    {"images/tga/pillow/200x32_rgba_bl_rle.tga", 200, 32, RGBA, 0},
    {"images/tga/pillow/la.tga", 64, 64, Format::LA, 0},
    {"images/tga/pillow/rgb32rle_top_right.tga", 199, 199, RGBA, 0},
    {"images/tiff/oiio/flower-minisblack-24.tif", 73, 43, L, 72},
    {"images/tiff/oiio/flower-rgb-contig-10.tif", 73, 43, RGB, 72},
    {"images/tiff/oiio/flower-rgb-planar-16.tif", 73, 43, RGB, 72},
    {"images/tiff/oiio/off_l16.tif", 333, 225, Format::L_f, 72},
    {"images/tiff/oiio/zackthecat.tif", 234, 213, RGB, 75},
    {"images/tiff/pillow/16bit.MM.deflate.tif", 64, 64, L, 72},
    {"images/tiff/pillow/g4_orientation_5.tif", 88, 590, L, 96},
    {"images/tiff/pillow/hopper.Lab.tif", 128, 128, RGB, 96},
    {"images/tiff/pillow/hopper_float_dpi_None.tif", 128, 128, RGB, 72.8F},
    {"images/tiff/pillow/multipage.tiff", 10, 10, RGB, 0},
    {"images/tiff/pillow/tiff_strip_cmyk_16l_jpeg.tif", 100, 100, RGB, 72},
    {"images/tiff/pillow/tiff_tiled_planar_16bit_RGBa.tiff", 100, 40, RGBA, 72},
};

inline const RefusedFile kRefusedFiles[] = {
    {"images/exr/openexr-damaged/"
     "asan_heap-oob_4cb169_380_4572f174dd4e48b879ca6d516486f30e_exr",
     "55 bytes"},  // of channels, where it says 49
    {"images/exr/openexr-damaged/"
     "asan_heap-oob_7f35311a1426_780_4871d40882e0fe7fae1427a82319e144_exr",
     "an attribute of 1073741840 bytes"},
    {"images/png/pngsuite/xd0n2c08.png", "IHDR"},  // a bit depth of 0
    {"images/png/pngsuite/xlfn0g04.png", "89 50 4e 47 0a 0a 1a 0a"},
    // Their merged picture is a blank or a notice: they hold layers only.
    {"images/psd/oiio/psd_123_nomaxcompat.psd", "only its layers"},
    {"images/psd/psd-tools/type-layer.psd", "only its layers"},
    {"images/tiff/pillow/crash-0c7e0e8e11ce787078f00b5b0ca409a167f070e0.tif", "2529 bytes"},
};

/// A texture: its size, faces and levels as its header has them.
struct RealTexture {
    const char* path;
    int width;
    int height;
    int faces;
    int levels;
    Format format;
};

inline const RealTexture kRealTextures[] = {
    {"dds/bc-fuzz/bc6 SF16 mode one 00011.dds", 256, 128, 1, 1, Format::RGB_f16},
    {"dds/bc-fuzz/bc7 mode 4.dds", 1024, 32, 1, 1, RGBA},
    {"dds/bc/DX10 BC1_UNORM.dds", 129, 66, 1, 8, RGBA},
    {"dds/bc/DX10 BC2_UNORM_SRGB.dds", 129, 66, 1, 8, RGBA},
    {"dds/bc/DX10 BC4_SNORM.dds", 129, 66, 1, 8, L},
    {"dds/bc/DX10 BC5_UNORM.dds", 129, 66, 1, 8, RGB},
    {"dds/bc/DX10 BC7_UNORM.dds", 129, 66, 1, 8, RGBA},
    {"dds/bc/DX9 BC2_UNORM.dds", 129, 66, 1, 8, RGBA},
    {"dds/bc/DX9 BC4_SNORM.dds", 129, 66, 1, 8, L},
    {"dds/bc/DX9 BC5_UNORM.dds", 129, 66, 1, 8, RGB},
    {"dds/bc/dxt1.dds", 120, 120, 1, 1, RGBA},
    {"dds/bc/dxt3.dds", 120, 120, 1, 1, RGBA},
    {"dds/bc/dxt5-simple.dds", 64, 64, 1, 1, RGBA},
    {"dds/cube/DXT1 Pretoria Gardens DX9.dds", 128, 128, 6, 8, RGBA},
    {"dds/cube/SYSTEX_ENVLIGHT.dds", 32, 32, 6, 1, Format::RGBA_f16},
    {"dds/image_dds/bc1_r.dds", 128, 128, 1, 1, RGBA},
    {"dds/image_dds/bc2_r.dds", 128, 128, 1, 1, RGBA},
    {"dds/nvtt/32f R.dds", 129, 66, 1, 8, Format::L_f},
    {"dds/nvtt/BC1a RGBA.dds", 129, 66, 1, 8, RGBA},
    {"dds/oiio/dds_a8.dds", 24, 20, 1, 1, Format::LA},
    {"dds/oiio/dds_bc1_mips.dds", 16, 8, 1, 5, RGBA},
    {"dds/oiio/dds_bc3rxgb.dds", 24, 20, 1, 1, RGB},
    {"dds/oiio/dds_bc5.dds", 16, 8, 1, 1, RGB},
    {"dds/oiio/dds_bc7.dds", 16, 8, 1, 1, RGBA},
    {"dds/oiio/dds_bgr8.dds", 16, 8, 1, 1, RGB},
    {"dds/oiio/dds_dxgi_bc3_srgb.dds", 16, 8, 1, 1, RGBA},
    {"dds/oiio/dds_dxgi_bgrx8_srgb.dds", 16, 8, 1, 1, Format::BGR},
    {"dds/oiio/dds_dxgi_rgba8_srgb.dds", 16, 8, 1, 1, RGBA},
    {"dds/oiio/dds_npot_bc3.dds", 13, 7, 1, 1, RGBA},
    {"dds/oiio/dds_npot_rgba8_mips.dds", 13, 7, 1, 4, Format::BGRA},
    {"dds/oiio/dds_rgb332.dds", 24, 20, 1, 1, RGB},
    {"dds/oiio/dds_rgba4.dds", 16, 8, 1, 1, RGBA},
    {"dds/oiio/sample-DXT1.dds", 123, 456, 1, 1, RGBA},
    {"dds/other/32-bit-uncompressed-odd.dds", 5, 9, 1, 1, Format::BGRA},
    {"dds/other/ati2-custom-flags.dds", 129, 66, 1, 8, RGB},
    {"dds/other/both-dx10-and-pixel-format.dds", 129, 66, 1, 8, Format::BGR},
    {"dds/other/non-standard header flag.dds", 4, 4, 1, 3, Format::BGR},
    {"dds/permissive/array_size 0.dds", 32, 32, 1, 1, RGBA},
    {"dds/permissive/dds pixel_format size 24.dds", 32, 32, 1, 1, RGBA},
    {"dds/permissive/wrong mipmap count 2.dds", 32, 32, 1, 6, RGBA},  // it says 1
    {"dds/permissive/wrong mipmap count 5.dds", 32, 32, 1, 1, RGBA},  // it says 3
    {"dds/pillow/DXGI_FORMAT_R8G8B8A8_UNORM_SRGB.dds", 16, 16, 1, 1, RGBA},
    {"dds/pillow/bc1.dds", 256, 256, 1, 1, RGBA},
    {"dds/pillow/bc4_unorm.dds", 64, 64, 1, 7, L},
    {"dds/pillow/bc5_typeless.dds", 256, 256, 1, 9, RGB},
    {"dds/pillow/bc5u.dds", 256, 256, 1, 9, RGB},
    {"dds/pillow/bc7-argb-8bpp_MipMaps-1.dds", 256, 256, 1, 1, RGBA},
    {"dds/pillow/dxt3-argb-8bbp-explicitalpha_MipMaps-1.dds", 256, 256, 1, 1, RGBA},
    {"dds/pillow/hopper.dds", 128, 128, 1, 8, Format::BGR},
    {"dds/pillow/uncompressed_l.dds", 128, 128, 1, 1, L},
    {"dds/uncompressed/DX10 R11G11B10_FLOAT.dds", 129, 66, 1, 8, Format::RGB_f16},
    {"dds/uncompressed/DX10 R16_FLOAT.dds", 129, 66, 1, 8, Format::L_f16},
    {"dds/uncompressed/DX10 R32_FLOAT.dds", 129, 66, 1, 8, Format::L_f},
    {"dds/uncompressed/DX10 R9G9B9E5_SHAREDEXP.dds", 129, 66, 1, 8, Format::RGB_f16},
    {"dds/uncompressed/DX9 B5G5R5A1_UNORM.dds", 129, 66, 1, 8, RGBA},
    {"dds/uncompressed/DX9 B8G8R8X8_UNORM.dds", 129, 66, 1, 8, Format::BGR},
    {"dds/uncompressed/DX9 R16G16B16A16_UNORM.dds", 129, 66, 1, 8, RGBA},
    {"dds/uncompressed/DX9 R32_FLOAT.dds", 129, 66, 1, 8, Format::L_f},
    {"dds/uncompressed/DX9 R8_UNORM.dds", 129, 66, 1, 8, L},
};

inline const RefusedFile kRefusedTextures[] = {
    {"dds/exotic/ASTC 4x4.dds", "ASTC_4X4"},
    {"dds/exotic/DX9 YUY2.dds", "YUY2"},
    {"dds/oiio/dds_bc3_just_header.dds", "a file of 128 bytes"},
    {"dds/pillow/timeout-52d106579505547091ef69b58341351a37c23e31.dds", "video"},
    {"dds/pillow/unimplemented_pfflags.dds", "the flags 0x8"},
    {"dds/pillow/zero_mask_totals.dds", "masks of channels, found none"},
};

/// Pictures of textures, as another program decoded them: level 0, of cubes all faces.
inline const char* const kReferencePictures[] = {
    "dds/bc-ref/DX10 BC1_UNORM.png",
    "dds/bc-ref/DX10 BC2_UNORM_SRGB.png",
    "dds/bc-ref/DX10 BC4_SNORM.png",
    "dds/bc-ref/DX10 BC5_UNORM.png",
    "dds/bc-ref/DX10 BC7_UNORM.png",
    "dds/bc-ref/DX9 BC2_UNORM.png",
    "dds/bc-ref/DX9 BC4_SNORM.png",
    "dds/bc-ref/DX9 BC5_UNORM.png",
    "dds/bc-ref/dxt1.png",
    "dds/bc-ref/dxt3.png",
    "dds/bc-ref/dxt5-simple.png",
    "dds/cube-ref/DXT1 Pretoria Gardens DX9.png",
    "dds/cube-ref/SYSTEX_ENVLIGHT.png",
    "dds/other-ref/32-bit-uncompressed-odd.png",
    "dds/other-ref/ati2-custom-flags.png",
    "dds/other-ref/both-dx10-and-pixel-format.png",
    "dds/other-ref/non-standard header flag.png",
};

/// The path of a file of the data folder; empty when there is no such folder.
inline std::string dataFile(const char* path) {
    const char* const folder = std::getenv("RB_DATA_DIR");
    return folder && *folder ? std::string(folder) + "/" + path : std::string();
}

#define RB_NEED_DATA(file) \
    if ((file).empty()) GTEST_SKIP() << "RB_DATA_DIR does not name the folder of real files"

/// Each file, cut at 64 places, loads or is refused with a reason.
/// @param load  Takes the bytes of a file and its name; what it returns is true when they load.
template <class Files, class Load>
void expectBeginningsToBeReadOrRefused(const Files& files, const Load& load) {
    for (const auto& real : files) {
        SCOPED_TRACE(real.path);
        const std::string file = dataFile(real.path);
        RB_NEED_DATA(file);
        const std::string content = contentOf(file);
        for (std::size_t cut = 0; cut < 64; ++cut) {
            const std::string beginning = content.substr(0, content.size() * cut / 64);
            if (load(beginning, real.path)) continue;
            EXPECT_FALSE(KVRLastImageError().found.empty()) << beginning.size();
        }
    }
}

/// Each file is refused for its reason.
/// @param refusal  Takes the bytes of a file and returns the message.
template <class Refusal>
void expectRefusals(std::span<const RefusedFile> files, const Refusal& refusal) {
    for (const RefusedFile& refused : files) {
        const std::string file = dataFile(refused.path);
        RB_NEED_DATA(file);
        const std::string message = refusal(contentOf(file));
        EXPECT_NE(message.find(refused.reason), std::string::npos)
            << refused.path << ": " << message;
    }
}

}  // namespace rb::test
