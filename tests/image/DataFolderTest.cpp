// Real files of other programs: each loads as what other readers say of it, or is refused with a
// reason. They lie outside the project, in the folder that RB_DATA_DIR names.

#include "RenderingBase/host/imaging/KVRMMColorProfile.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/image/ImageFiles.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string_view>

namespace rb::test {
namespace {

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

constexpr Format L = Format::L, RGB = Format::RGB, RGBA = Format::RGBA;

// Sizes, channels and resolutions: from `oiiotool --info -v` and `identify`.
const RealFile kRealFiles[] = {
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

const RefusedFile kRefusedFiles[] = {
    {"images/exr/openexr-damaged/"
     "asan_heap-oob_4cb169_380_4572f174dd4e48b879ca6d516486f30e_exr",
     "8585616 x 300 pixels"},
    {"images/exr/openexr-damaged/"
     "asan_heap-oob_7f35311a1426_780_4871d40882e0fe7fae1427a82319e144_exr",
     "an attribute of 1073741840 bytes"},
    {"images/png/pngsuite/xd0n2c08.png", "IHDR"},  // a bit depth of 0
    {"images/png/pngsuite/xlfn0g04.png", "89 50 4e 47 0a 0a 1a 0a"},
    {"images/tiff/pillow/crash-0c7e0e8e11ce787078f00b5b0ca409a167f070e0.tif", "2529 bytes"},
};

/// The path of a file of the data folder; empty when there is no such folder.
std::string dataFile(const char* path) {
    const char* const folder = std::getenv("RB_DATA_DIR");
    return folder && *folder ? std::string(folder) + "/" + path : std::string();
}

#define RB_NEED_DATA(file) \
    if ((file).empty()) GTEST_SKIP() << "RB_DATA_DIR does not name the folder of real files"

TEST(DataFolder, files_load_as_other_readers_describe_them) {
    for (const RealFile& real : kRealFiles) {
        SCOPED_TRACE(real.path);
        const std::string file = dataFile(real.path);
        RB_NEED_DATA(file);
        const Image image = loadFile(file);
        if (!image) continue;
        EXPECT_EQ(image->GetFormat(), real.format);
        int width = 0, height = 0;
        float dpi = 0, widthMm = 0, heightMm = 0;
        KVRRbaImageServices::GiveImageInfos(image.Get(), width, height, dpi, widthMm, heightMm);
        EXPECT_EQ(width, real.width);
        EXPECT_EQ(height, real.height);
        EXPECT_FLOAT_EQ(dpi, real.dpi);
    }
}

TEST(DataFolder, beginnings_of_files_are_read_or_refused_with_a_reason) {
    for (const RealFile& real : kRealFiles) {
        SCOPED_TRACE(real.path);
        const std::string file = dataFile(real.path);
        RB_NEED_DATA(file);
        const std::string content = contentOf(file);
        for (std::size_t cut = 0; cut < 64; ++cut) {
            const std::string beginning = content.substr(0, content.size() * cut / 64);
            if (tryToLoad(beginning)) continue;
            EXPECT_FALSE(KVRLastImageError().found.empty()) << beginning.size();
        }
    }
}

TEST(DataFolder, unusable_files_are_refused_with_their_reason) {
    for (const RefusedFile& refused : kRefusedFiles) {
        const std::string file = dataFile(refused.path);
        RB_NEED_DATA(file);
        const std::string refusal = refusalOf(contentOf(file));
        EXPECT_NE(refusal.find(refused.reason), std::string::npos)
            << refused.path << ": " << refusal;
    }
}

TEST(DataFolder, png_samples_are_those_of_another_reader) {
    for (const auto& [path, width, height, format, dpi] : kRealFiles) {
        if (!std::string_view(path).ends_with(".png")) continue;
        SCOPED_TRACE(path);
        const std::string file = dataFile(path);
        RB_NEED_DATA(file);
        const char* const channels = format == L ? "gray" : format == RGB ? "rgb" : "rgba";
        const std::string theirs = decodedByConvert(file, channels);
        const std::vector<int> ours = bytesOf(loadFile(file), width, height, format);
        ASSERT_EQ(ours.size(), theirs.size());
        int widest = 0;
        for (std::size_t i = 0; i < ours.size(); ++i) {
            widest = std::max(widest, std::abs(ours[i] - static_cast<unsigned char>(theirs[i])));
        }
        EXPECT_LE(widest, 1);  // 16-bit samples may be rounded either way
    }
}

TEST(DataFolder, exr_samples_are_those_of_another_reader) {
    for (const RealFile& real : kRealFiles) {
        if (!std::string(real.path).ends_with(".exr")) continue;
        const std::string file = dataFile(real.path);
        RB_NEED_DATA(file);
        const TempFolder folder;
        const std::string tif = folder.file("float.tif");
        runProgram("oiiotool " + shellWord(file) + " --fullpixels -d float -o " + shellWord(tif));
        const Format floats = real.format == Format::L_f16 ? Format::L_f : Format::RGB_f;
        EXPECT_EQ(halvesOf(loadFile(file), real.width, real.height, real.format),
                  floatsOf(loadFile(tif), real.width, real.height, floats))
            << real.path;
    }
}

TEST(DataFolder, icc_profiles_are_taken_and_other_files_refused) {
    const char* const profiles[] = {
        "icc/compact/AdobeCompat-v2.icc",   "icc/compact/ColorMatchCompat-v2.icc",
        "icc/compact/DisplayP3-v4.icc",     "icc/compact/ProPhoto-v2-micro.icc",
        "icc/compact/Rec2020-v4.icc",       "icc/compact/Rec601NTSC-v2-micro.icc",
        "icc/compact/Rec709-v2-magic.icc",  "icc/compact/sGrey-v2-magic.icc",
        "icc/compact/sRGB-v2-micro.icc",    "icc/lcms/test4.icc",
        "icc/sharp/invalid-illuminant.icc",
    };
    using Profile = KVRVar<KVRMMColorProfile>;
    const auto load = [](const std::string& file) {
        return Profile::Adopt(KVRMMColorProfileFactory::CreateColorProfileFromFile(file));
    };
    for (const char* const path : profiles) {
        const std::string file = dataFile(path);
        RB_NEED_DATA(file);
        EXPECT_TRUE(load(file)) << path;
    }
    EXPECT_FALSE(load(dataFile("icc/lcms/bad.icc")));  // a makefile in disguise
}

TEST(DataFolder, srgb_is_recognised_by_its_colours_alone) {
    const std::string file = dataFile("icc/compact/sRGB-v2-micro.icc");
    RB_NEED_DATA(file);
    const auto model = [](const char* path) -> std::string {
        const auto profile = KVRVar<KVRMMColorProfile>::Adopt(
            KVRMMColorProfileFactory::CreateColorProfileFromFile(dataFile(path)));
        return profile ? profile->getProfileModel().CastToCharPtr() : "none";
    };
    EXPECT_NE(model("icc/compact/DisplayP3-v4.icc"), "sRGB");
    EXPECT_NE(model("icc/compact/AdobeCompat-v2.icc"), "sRGB");
    EXPECT_EQ(model("icc/compact/sRGB-v2-micro.icc"), "sRGB");
}

}  // namespace
}  // namespace rb::test
