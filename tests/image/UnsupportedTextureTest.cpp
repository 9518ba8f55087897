// Textures of formats that renderers do not read, and the files that replace them.

#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/host/ChildProcess.h"
#include "tests/image/ImageFiles.h"
#include "tests/image/PsdBuilder.h"
#include "tests/support/ForeignPrograms.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
namespace fs = std::filesystem;
using Services = KVRRbaImageServices;
using Texture = KVRVar<KVRTexturePixelImage>;

/// What the service makes of a path.
struct Converted {
    HRESULT status;
    std::string path;
};

Converted convert(const std::string& path, const std::vector<std::string>& groups = {},
                  int dpi = 96) {
    KVRListValKVRUnicodeString list;
    for (const std::string& group : groups) list.Append(group);
    KVRUnicodeString text(path);
    const HRESULT status = Services::ConvertUnsupportedTexture(text, list, dpi);
    return {status, std::string(text.View())};
}

/// The path of a TIFF file as it is handed back.
std::string tiffIn(const TempFolder& folder, const std::string& name) {
    return folder.path().string() + "\\" + name + ".tif";
}

PsdBuilder redAndBlue() {
    PsdBuilder psd(2, 1);
    psd.planes({{200, 10}, {20, 30}, {3, 250}});
    return psd;
}
const std::vector<int> kRedAndBlue = {200, 20, 3, 10, 30, 250};

/// A SGI image (version 1) without compression: one plane a channel, from the bottom.
std::string sgiFile(unsigned width, unsigned height, const std::vector<std::string>& planes) {
    const auto channels = static_cast<unsigned>(planes.size());
    std::string file = bigEndian(474, 2) + bytes({0, 1}) + bigEndian(channels > 1 ? 3 : 2, 2) +
                       bigEndian(width, 2) + bigEndian(height, 2) + bigEndian(channels, 2) +
                       bigEndian(0, 4) + bigEndian(255, 4);
    file.resize(512);
    for (const std::string& plane : planes) file += plane;
    return file;
}

KVRVar<KVRMMColorProfile> swappedProfile() {
    const Image image = loadFile(RB_SOURCE_DIR "/samples/images/swapped.png");
    return KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
}

std::string bytesOf(const KVRMMColorProfile& profile) {
    const auto data = profile.GetData();
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

std::string withAttributes(PsdBuilder psd) {
    psd.resource(1005, bytes({0, 72, 0, 0, 0, 1, 0, 1, 0, 36, 0, 0, 0, 1, 0, 1}));  // 72 x 36 dpi
    psd.resource(1039, bytesOf(*swappedProfile().Get()));
    return psd.build();
}

void expectAttributes(const Image& image) {
    ASSERT_TRUE(image);
    EXPECT_EQ(image->GetXResolution(), 72);
    EXPECT_EQ(image->GetYResolution(), 36);
    EXPECT_EQ(image->GetResolutionUnit(), 2);
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
    ASSERT_TRUE(profile);
    EXPECT_EQ(bytesOf(*profile.Get()), bytesOf(*swappedProfile().Get()));
}

}  // namespace

TEST(GetImage, gives_a_texture_with_the_picture_and_path_of_the_file) {
    const TempFolder folder;
    const std::string path = folder.write("a.psd", withAttributes(redAndBlue()));
    for (const int writable : {0, 1}) {
        const Texture texture = Texture::Adopt(KVRTexturePixelImage::GetImage(path, writable));
        ASSERT_TRUE(texture);
        EXPECT_STREQ(texture->IsA(), "KVRTexturePixelImage");
        EXPECT_EQ(texture->GetPath(), KVRUnicodeString(path));
        EXPECT_EQ(bytesOf(Image(texture), 2, 1, Format::RGB), kRedAndBlue);
        expectAttributes(Image(texture));
        ASSERT_NE(texture->GetPixelsToModify(), nullptr);
        texture->GetPixelsToModify()[0] = 1;
        EXPECT_EQ(texture->GetPixelsToRead()[0], 1);
    }
}

TEST(GetImage, reads_what_the_images_read) {
    for (const char* name :
         {"alpha.tga", "bilevel.png", "cmyk.tif", "depth-float.exr", "sky-half.exr", "sky.hdr"}) {
        const std::string path = std::string(RB_SOURCE_DIR "/samples/images/") + name;
        const Image image = loadFile(path);
        const Texture texture = Texture::Adopt(KVRTexturePixelImage::GetImage(path, 1));
        ASSERT_TRUE(texture) << name;
        int width = 0, height = 0, textureWidth = 0, textureHeight = 0;
        image->GetSize(width, height);
        texture->GetSize(textureWidth, textureHeight);
        EXPECT_EQ(textureWidth, width) << name;
        EXPECT_EQ(textureHeight, height) << name;
        EXPECT_EQ(texture->GetFormat(), image->GetFormat()) << name;
        EXPECT_TRUE(rawPixels(Image(texture)) == rawPixels(image)) << name;
    }
}

TEST(GetImage, half_pixels_have_their_buffer) {
    const Texture texture = Texture::Adopt(
        KVRTexturePixelImage::GetImage(RB_SOURCE_DIR "/samples/images/sky-half.exr", 1));
    ASSERT_TRUE(texture);
    ASSERT_NE(texture->GetPixelsBufferToModify(), nullptr);
    EXPECT_EQ(texture->GetPixelsBufferToModify()->GetNbElem(), 3U * 512 * 256);
    EXPECT_EQ(static_cast<const void*>(texture->GetPixelsBufferToModify()->GetBufferForModify()),
              static_cast<const void*>(texture->GetRawPixels().data()));
}

TEST(GetImage, gives_null_and_the_reason_for_what_is_no_image) {
    const TempFolder folder;
    for (const std::string& path : {std::string(), folder.file("missing.psd"),
                                    folder.path().string(), folder.write("text.psd", "no picture"),
                                    std::string(RB_SOURCE_DIR "/samples/images/cube.dds")}) {
        EXPECT_EQ(KVRTexturePixelImage::GetImage(path, 1), nullptr) << path;
        EXPECT_FALSE(KVRLastImageError().expected.empty()) << path;
    }
}

TEST(ConvertUnsupportedTexture, writes_a_tiff_beside_a_psd) {
    const TempFolder folder;
    const std::string path = folder.write("sub/oak.psd", withAttributes(redAndBlue()));
    const Converted converted = convert(path);
    EXPECT_EQ(converted.status, S_OK);
    EXPECT_EQ(converted.path, folder.file("sub") + "\\oak.tif");
    EXPECT_TRUE(contentOf(folder.file("sub/oak.tif")).starts_with("II*"));
    const Image tiff = loadFile(converted.path);
    EXPECT_EQ(bytesOf(tiff, 2, 1, Format::RGB), kRedAndBlue);
    expectAttributes(tiff);
    EXPECT_TRUE(fs::exists(path));
}

TEST(ConvertUnsupportedTexture, writes_every_format_of_8_bits) {
    const auto grey = PsdBuilder(2, 1, 1).planes({{7, 250}});
    auto greyAlpha = PsdBuilder(2, 1, 1).planes({{7, 250}, {0, 128}});
    greyAlpha.layerCount(-1);
    auto colorAlpha = PsdBuilder(2, 1).planes({{200, 10}, {20, 30}, {3, 250}, {0, 128}});
    colorAlpha.layerCount(-1);
    const struct {
        std::string file;
        Format format;
        std::vector<int> pixels;
    } cases[] = {
        {grey.build(), Format::L, {7, 250}},
        {greyAlpha.build(), Format::LA, {7, 0, 250, 128}},
        {redAndBlue().build(), Format::RGB, kRedAndBlue},
        {colorAlpha.build(), Format::RGBA, {200, 20, 3, 0, 10, 30, 250, 128}},
    };
    for (const auto& [file, format, pixels] : cases) {
        const TempFolder folder;
        const Converted converted = convert(folder.write("a.psd", file));
        EXPECT_EQ(converted.status, S_OK);
        ASSERT_EQ(converted.path, tiffIn(folder, "a"));
        EXPECT_EQ(bytesOf(loadFile(converted.path), 2, 1, format), pixels);
    }
}

TEST(ConvertUnsupportedTexture, turns_the_rows_of_an_rgb_file_over) {
    const TempFolder folder;
    const std::string path =
        folder.write("a.rgb", sgiFile(1, 2, {bytes({1, 2}), bytes({3, 4}), bytes({5, 6})}));
    ASSERT_EQ(convert(path).path, tiffIn(folder, "a"));
    EXPECT_EQ(bytesOf(loadFile(folder.file("a.tif")), 1, 2, Format::RGB),
              (std::vector<int>{2, 4, 6, 1, 3, 5}));
}

TEST(ConvertUnsupportedTexture, converts_files_of_other_programs) {
    const RawPicture picture = gradients(61, 43, 3);
    for (const char* extension : {"psd", "rgb"}) {
        const TempFolder folder;
        const std::string in = writePortableMap(folder, "in.ppm", picture);
        const std::string path = folder.file(std::string("made.") + extension);
        runProgram("convert " + shellWord(in) + " " +
                   shellWord((extension == std::string("rgb") ? "sgi:" : "psd:") + path));
        ASSERT_EQ(convert(path).path, tiffIn(folder, "made")) << extension;
        EXPECT_EQ(decodedByConvert(folder.file("made.tif"), "rgb"), picture.samples) << extension;
    }
}

TEST(ConvertUnsupportedTexture, takes_the_extension_behind_the_last_dot_in_any_case) {
    const std::string psd = redAndBlue().build(), sgi = sgiFile(1, 1, {"a"});
    const struct {
        const char* name;
        const char* base;
        const std::string& file;
    } cases[] = {
        {"A.PSD", "A", psd},         {"b.Psd", "b", psd},
        {"c.RGB", "c", sgi},         {"d.v2.psd", "d.v2", psd},
        {"e..psd", "e.", psd},       {".psd", "", psd},
        {"f.psd.psd", "f.psd", psd}, {"\xC3\xA9t\xC3\xA9.psd", "\xC3\xA9t\xC3\xA9", psd},
    };
    for (const auto& [name, base, file] : cases) {
        const TempFolder folder;
        const Converted converted = convert(folder.write(name, file));
        EXPECT_EQ(converted.status, S_OK) << name;
        EXPECT_EQ(converted.path, tiffIn(folder, base)) << name;
        EXPECT_TRUE(fs::is_regular_file(folder.file(std::string(base) + ".tif"))) << name;
    }
}

TEST(ConvertUnsupportedTexture, leaves_other_extensions_alone) {
    const TempFolder folder;
    const std::string psd = redAndBlue().build();
    fs::create_directory(folder.path() / "folder.psd");
    for (const char* name : {"a.png", "a.tif", "a.psd.3", "a.psdx", "a.", "psd", "rgb", "a.bw",
                             "folder.psd/name", "a.svg", "a.dds"}) {
        const std::string path = folder.write(name, psd);
        const Converted converted = convert(path);
        EXPECT_EQ(converted.status, S_OK) << name;
        EXPECT_EQ(converted.path, path) << name;
        EXPECT_EQ(contentOf(path), psd) << name;
    }
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(folder.path()), {}), 12);
    for (const char* nothing : {"", "missing.png", "\\", "."}) {
        EXPECT_EQ(convert(nothing).status, S_OK);
        EXPECT_EQ(convert(nothing).path, nothing);
    }
}

TEST(ConvertUnsupportedTexture, fails_for_what_cannot_be_read) {
    const TempFolder folder;
    const std::string psd = redAndBlue().build();
    fs::create_directory(folder.path() / "directory.psd");
    for (const std::string& path :
         {folder.file("missing.psd"), folder.file("missing.RGB"), folder.file("directory.psd"),
          folder.write("text.psd", "no picture"), folder.write("empty.rgb"),
          folder.write("cut.psd", psd.substr(0, psd.size() - 1))}) {
        const Converted converted = convert(path);
        EXPECT_EQ(converted.status, E_FAIL) << path;
        EXPECT_EQ(converted.path, path);
        EXPECT_FALSE(KVRLastImageError().expected.empty()) << path;
    }
    for (const auto& entry : fs::directory_iterator(folder.path()))
        EXPECT_NE(entry.path().extension(), ".tif") << entry.path();
}

TEST(ConvertUnsupportedTexture, keeps_the_path_when_the_target_is_a_folder) {
    const TempFolder folder;
    const std::string path = folder.write("a.psd", redAndBlue().build());
    folder.write("a.tif/inside");
    const Converted converted = convert(path);
    EXPECT_EQ(converted.status, S_OK);
    EXPECT_EQ(converted.path, path);
    EXPECT_EQ(KVRLastImageError().file, KVRUnicodeString(tiffIn(folder, "a")));
    EXPECT_TRUE(fs::is_directory(folder.file("a.tif")));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2);
}

TEST(ConvertUnsupportedTexture, keeps_the_path_in_a_folder_that_may_not_be_written_to) {
    const TempFolder folder;
    const std::string path = folder.write("a.psd", redAndBlue().build());
    fs::permissions(path, fs::perms::owner_read | fs::perms::others_read);
    fs::permissions(folder.path(), fs::perms::owner_read | fs::perms::owner_exec |
                                       fs::perms::others_read | fs::perms::others_exec);
    const int status = asOrdinaryUser([&] {
        const Converted converted = convert(path);
        return converted.status == S_OK && converted.path == path ? 0 : 1;
    });
    fs::permissions(folder.path(), fs::perms::owner_all);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(fs::exists(folder.file("a.tif")));
}

TEST(ConvertUnsupportedTexture, keeps_the_path_of_a_psd_with_float_pixels) {
    const TempFolder folder;
    PsdBuilder psd(1, 1, 3, 32);
    psd.planes({{0x3F, 0x80, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}});  // 1, 0, 0
    const std::string path = folder.write("a.psd", psd.build());
    ASSERT_EQ(floatsOf(loadFile(path), 1, 1, Format::RGB_f), (std::vector<float>{1, 0, 0}));
    const Converted converted = convert(path);
    EXPECT_EQ(converted.status, S_OK);
    EXPECT_EQ(converted.path, path);
    EXPECT_FALSE(fs::exists(folder.file("a.tif")));
}

TEST(ConvertUnsupportedTexture, writes_a_name_without_folder_into_the_working_directory) {
    const TempFolder folder;
    folder.write("alone.psd", redAndBlue().build());
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    const Converted converted = convert("alone.psd");
    fs::current_path(before);
    EXPECT_EQ(converted.status, S_OK);
    EXPECT_EQ(converted.path, "alone.tif");
    EXPECT_TRUE(fs::exists(folder.file("alone.tif")));
}

TEST(ConvertUnsupportedTexture, understands_either_separator) {
    const TempFolder folder;
    std::string path = folder.write("sub/a.psd", redAndBlue().build());
    std::replace(path.begin(), path.end(), '/', '\\');
    EXPECT_EQ(convert(path).path, path.substr(0, path.size() - 3) + "tif");
    EXPECT_TRUE(fs::exists(folder.file("sub/a.tif")));
}

TEST(ConvertUnsupportedTexture, takes_no_notice_of_groups_and_resolution) {
    const TempFolder folder;
    const std::string path = folder.write("a.psd", redAndBlue().build());
    convert(path);
    const std::string plain = contentOf(folder.file("a.tif"));
    for (const int dpi : {-5, 0, 300}) {
        fs::remove(folder.file("a.tif"));
        const Converted converted = convert(path, {"no such group", ""}, dpi);
        EXPECT_EQ(converted.status, S_OK);
        EXPECT_EQ(converted.path, tiffIn(folder, "a"));
        EXPECT_EQ(contentOf(folder.file("a.tif")), plain);
    }
}

TEST(ConvertUnsupportedTexture, replaces_an_older_file) {
    const TempFolder folder;
    const std::string old = folder.write("a.tif", "the old file");
    EXPECT_EQ(convert(folder.write("a.psd", redAndBlue().build())).path, tiffIn(folder, "a"));
    EXPECT_EQ(bytesOf(loadFile(old), 2, 1, Format::RGB), kRedAndBlue);
}

TEST(ConvertUnsupportedTexture, what_was_converted_is_not_converted_again) {
    const TempFolder folder;
    const Converted once = convert(folder.write("a.psd", redAndBlue().build()));
    const Converted twice = convert(once.path);
    EXPECT_EQ(twice.status, S_OK);
    EXPECT_EQ(twice.path, once.path);
}
