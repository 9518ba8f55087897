// What a DDS file holds: pictures, levels, faces; headers that are wrong.

#include "tests/image/TextureBuilder.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace rb::test {
namespace {

constexpr std::uint32_t kCubeCaps = 0xFE00, kVolumeCaps = 0x200000, kDx10Cube = 4;
constexpr int kFaces = 6;

/// Grey texels: all of one surface have the value that its face and level give.
std::string surface(int side, int value) {
    return std::string(static_cast<std::size_t>(side * side), static_cast<char>(value));
}

/// A grey square, or a cube of such, whose surfaces have the value 10 * face + level.
DdsBuilder squares(std::uint32_t side, int faces, int levels, bool isDx10) {
    DdsBuilder dds =
        isDx10 ? dx10(61, side, {}) : masked(kMaskedGrey, 8, {0xFF, 0, 0, 0}, side, {});
    dds.height = side;
    dds.levels = static_cast<std::uint32_t>(levels);
    if (faces == kFaces) (isDx10 ? dds.misc : dds.caps2) = isDx10 ? kDx10Cube : kCubeCaps;
    for (int face = 0; face < faces; ++face)
        for (int level = 0; level < levels; ++level)
            dds.data += surface(std::max(1, static_cast<int>(side) >> level), 10 * face + level);
    return dds;
}

/// The value of all texels of an image; -1 when they differ or the size is another.
int valueOf(const Image& image, int width, int height) {
    if (!image) return -1;
    const auto texels = bytesOf(image, width, height, Format::L);
    for (const int texel : texels)
        if (texel != texels[0]) return -1;
    return texels.empty() ? -1 : texels[0];
}

TEST(Dds, a_picture_alone_is_a_plain_texture) {
    for (const bool isDx10 : {false, true}) {
        const Texture texture = loadTexture(squares(4, 1, 1, isDx10).build());
        EXPECT_STREQ(texture->IsA(), "KVRTexturePixelImage");
        EXPECT_EQ(valueOf(asImage(texture), 4, 4), 0);
    }
}

TEST(Dds, levels_halve_their_sides_down_to_1) {
    for (const bool isDx10 : {false, true}) {
        DdsBuilder dds = isDx10 ? dx10(61, 5, {}) : masked(kMaskedGrey, 8, {0xFF}, 5, {});
        dds.height = 2;
        dds.levels = 3;
        dds.data = std::string(10, 'a') + std::string(2, 'b') + std::string(1, 'c');
        const Texture texture = loadTexture(dds.build());
        ASSERT_STREQ(texture->IsA(), "KVRVizTextureWithMipMap");
        EXPECT_EQ(valueOf(asImage(texture), 5, 2), 'a');
        EXPECT_EQ(valueOf(levelOf(texture, 0), 5, 2), 'a');
        EXPECT_EQ(valueOf(levelOf(texture, 1), 2, 1), 'b');
        EXPECT_EQ(valueOf(levelOf(texture, 2), 1, 1), 'c');
        EXPECT_FALSE(levelOf(texture, 3));
        EXPECT_FALSE(levelOf(texture, -1));
        EXPECT_TRUE(dynamic_cast<KVRVizTextureWithMipMap&>(*texture.Get()).HasMipMap());
    }
}

TEST(Dds, a_cube_has_its_faces_in_the_order_of_the_file) {
    for (const bool isDx10 : {false, true}) {
        const Texture texture = loadTexture(squares(4, kFaces, 1, isDx10).build());
        ASSERT_STREQ(texture->IsA(), "KVRVizCubicEnvMap");
        EXPECT_EQ(valueOf(asImage(texture), 4, 4), 0);
        for (int face = 0; face < kFaces; ++face) {
            EXPECT_EQ(valueOf(asImage(faceOf(texture, face)), 4, 4), 10 * face);
            EXPECT_STREQ(faceOf(texture, face)->IsA(), "KVRTexturePixelImage");
        }
        EXPECT_FALSE(faceOf(texture, 6));
        EXPECT_FALSE(faceOf(texture, -1));
    }
}

TEST(Dds, every_face_of_a_cube_has_its_own_levels) {
    for (const bool isDx10 : {false, true}) {
        const Texture texture = loadTexture(squares(4, kFaces, 3, isDx10).build());
        ASSERT_STREQ(texture->IsA(), "KVRVizCubicEnvMapWithMipMap");
        EXPECT_EQ(valueOf(asImage(texture), 4, 4), 0);
        for (int face = 0; face < kFaces; ++face)
            for (int level = 0; level < 3; ++level)
                EXPECT_EQ(valueOf(levelOf(faceOf(texture, face), level), 4 >> level, 4 >> level),
                          10 * face + level);
        EXPECT_FALSE(faceOf(texture, 6));
    }
}

TEST(Dds, faces_and_levels_outlive_their_texture) {
    Texture texture = loadTexture(squares(4, kFaces, 3, true).build());
    const Texture face = faceOf(texture, 5);
    const Image level = levelOf(face, 2);
    texture.Reset();
    EXPECT_EQ(valueOf(asImage(face), 4, 4), 50);
    EXPECT_EQ(valueOf(level, 1, 1), 52);
}

TEST(Dds, a_face_that_changes_leaves_its_cube_as_it_was) {
    for (const int levels : {1, 3}) {
        const Texture texture = loadTexture(squares(4, kFaces, levels, true).build());
        const Texture face = faceOf(texture, 0);
        EXPECT_EQ(face->ChangeFormat(Format::RGBA), S_OK);
        EXPECT_EQ(valueOf(asImage(texture), 4, 4), 0);
        EXPECT_EQ(face->GetFormat(), Format::RGBA);
    }
}

TEST(Dds, blocks_of_small_levels_are_whole) {
    // 6 x 3 texels are 2 x 1 blocks, the levels 3 x 1 and 1 x 1 one block each.
    DdsBuilder dds = dx10(80, 6, std::string(4 * 8, '\0'));
    dds.height = 3;
    dds.levels = 3;
    dds.data[0] = dds.data[8] = 40;
    dds.data[16] = 50;
    dds.data[24] = 60;
    const Texture texture = loadTexture(dds.build());
    EXPECT_EQ(valueOf(asImage(texture), 6, 3), 40);
    EXPECT_EQ(valueOf(levelOf(texture, 1), 3, 1), 50);
    EXPECT_EQ(valueOf(levelOf(texture, 2), 1, 1), 60);
}

TEST(Dds, of_an_array_the_first_element_counts) {
    DdsBuilder dds = squares(2, 1, 2, true);
    dds.data += std::string(3 * 5, '\x7f');
    dds.arraySize = 4;
    const Texture texture = loadTexture(dds.build());
    ASSERT_STREQ(texture->IsA(), "KVRVizTextureWithMipMap");
    EXPECT_EQ(valueOf(asImage(texture), 2, 2), 0);
    EXPECT_EQ(valueOf(levelOf(texture, 1), 1, 1), 1);
}

TEST(Dds, wrong_sizes_of_structures_do_no_harm) {
    DdsBuilder dds = squares(4, 1, 1, true);
    dds.headerSize = 24;
    dds.formatSize = 24;
    dds.pitch = 4000000000;
    dds.arraySize = 0;
    dds.dimension = 0;
    EXPECT_EQ(valueOf(asImage(loadTexture(dds.build())), 4, 4), 0);
}

TEST(Dds, the_bytes_tell_the_number_of_levels_when_the_header_is_wrong) {
    DdsBuilder dds = squares(8, 1, 4, false);
    for (const std::uint32_t declared : {0U, 1U, 2U, 3U, 5U, 4000000000U}) {
        dds.levels = declared;
        const Texture texture = loadTexture(dds.build());
        EXPECT_EQ(valueOf(levelOf(texture, 3), 1, 1), 3) << declared;
        EXPECT_FALSE(levelOf(texture, 4)) << declared;
    }
    dds.levels = 3;
    dds.data = surface(8, 0);
    EXPECT_STREQ(loadTexture(dds.build())->IsA(), "KVRTexturePixelImage");
}

TEST(Dds, bytes_behind_the_last_level_are_ignored) {
    DdsBuilder dds = squares(8, 1, 2, false);
    dds.data += "123";
    const Texture texture = loadTexture(dds.build());
    EXPECT_EQ(valueOf(levelOf(texture, 1), 4, 4), 1);
    EXPECT_FALSE(levelOf(texture, 2));
}

TEST(Dds, cut_short_is_refused) {
    const std::string file = squares(8, kFaces, 2, true).build();
    const std::size_t withoutLevel1 = 148 + 6 * 64;  // as long as a whole file without it
    for (std::size_t size = 0; size < file.size(); ++size)
        EXPECT_EQ(textureRefusalOf(file.substr(0, size)).empty(), size == withoutLevel1) << size;
    EXPECT_NE(textureRefusalOf(file.substr(0, file.size() - 1)).find("at least 628 bytes"),
              std::string::npos);
}

TEST(Dds, volumes_and_incomplete_cubes_are_refused) {
    DdsBuilder dds = squares(4, 1, 1, false);
    dds.caps2 = kVolumeCaps;
    EXPECT_NE(textureRefusalOf(dds.build()).find("volume"), std::string::npos);
    dds.caps2 = 0x200 | 0x400 | 0x800;
    EXPECT_NE(textureRefusalOf(dds.build()).find("six faces, found 2"), std::string::npos);
    DdsBuilder newer = squares(4, 1, 1, true);
    newer.dimension = 4;
    EXPECT_NE(textureRefusalOf(newer.build()).find("volume"), std::string::npos);
}

TEST(Dds, cubes_of_faces_that_are_not_square_are_refused) {
    DdsBuilder dds = dx10(61, 4, std::string(6 * 8, '\0'));
    dds.height = 2;
    dds.misc = kDx10Cube;
    EXPECT_NE(textureRefusalOf(dds.build()).find("square faces, found 4 x 2"), std::string::npos);
}

TEST(Dds, absurd_sizes_are_refused_before_memory_is_taken) {
    DdsBuilder dds = squares(4, 1, 1, true);
    dds.width = 0xFFFFFFFF;
    EXPECT_NE(textureRefusalOf(dds.build()).find("sides of 1 to"), std::string::npos);
    dds.width = 0;
    EXPECT_NE(textureRefusalOf(dds.build()).find("sides of 1 to"), std::string::npos);
    dds.width = dds.height = 0x7FFFFFFF;
    EXPECT_NE(textureRefusalOf(dds.build()).find("KVRImagePixelLimit"), std::string::npos);
    dds.width = dds.height = 16384;
    EXPECT_NE(textureRefusalOf(dds.build()).find("at least 268435604 bytes"), std::string::npos);
    // The faces of a cube count together.
    DdsBuilder cube = squares(4, kFaces, 1, true);
    cube.width = cube.height = 16384;
    EXPECT_NE(textureRefusalOf(cube.build()).find("found 6 times 16384 x 16384 pixels"),
              std::string::npos);
}

TEST(Dds, a_texture_knows_its_file) {
    const TempFolder folder;
    const std::string path = folder.write("cube.dds", squares(4, kFaces, 1, true).build());
    const auto texture = Texture::Adopt(CreateTextureFromDDSFile(path, 1));
    ASSERT_TRUE(texture);
    EXPECT_STREQ(texture->GetPath().CastToCharPtr(), path.c_str());
}

TEST(Dds, other_files_are_no_textures) {
    const TempFolder folder;
    EXPECT_FALSE(CreateTextureFromDDSFile(folder.file("missing.dds"), 1));
    EXPECT_NE(KVRLastImageError().found, "");
    EXPECT_FALSE(CreateTextureFromDDSFile(folder.write("text.dds", "no texture"), 1));
    EXPECT_EQ(KVRLastImageError().expected, "a dds file");
    EXPECT_NE(textureRefusalOf("").find("an empty file"), std::string::npos);
    EXPECT_NE(textureRefusalOf("no texture").find("a dds or ktx2 file"), std::string::npos);
}

TEST(Dds, an_image_is_not_read_from_a_texture_file) {
    EXPECT_NE(refusalOf(squares(4, 1, 1, true).build()).find("texture container"),
              std::string::npos);
}

TEST(TextureImage, gives_any_surface_by_face_and_level) {
    DdsBuilder dds = masked(kMaskedRgba, 32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}, 2, {});
    dds.height = 2;
    for (const int faces : {1, 6})
        for (const int levels : {1, 2}) {
            dds.caps2 = faces == 6 ? 0xFE00 : 0;
            dds.levels = static_cast<std::uint32_t>(levels);
            dds.data.clear();
            for (char face = 0; face < faces; ++face) {
                dds.data += std::string(16, face);
                if (levels == 2) dds.data += std::string(4, static_cast<char>(face + 10));
            }
            const Texture texture = loadTexture(dds.build());
            ASSERT_TRUE(texture);
            EXPECT_EQ(texture->GetFaceCount(), faces);
            EXPECT_EQ(texture->GetLevelCount(), levels);
            for (char face = 0; face < faces; ++face) {
                const Image full = Image::Adopt(texture->GetSurface(face, 0));
                EXPECT_EQ(rawPixels(full), std::string(16, face));
                if (levels == 1) continue;
                const Image small = Image::Adopt(texture->GetSurface(face, 1));
                EXPECT_EQ(rawPixels(small), std::string(4, static_cast<char>(face + 10)));
            }
            EXPECT_EQ(texture->GetSurface(faces, 0), nullptr);
            EXPECT_EQ(texture->GetSurface(-1, 0), nullptr);
            EXPECT_EQ(texture->GetSurface(0, levels), nullptr);
            EXPECT_EQ(texture->GetSurface(0, -1), nullptr);
        }
}

TEST(TextureFiles, are_told_apart_by_their_first_bytes) {
    const TempFolder folder;
    const std::string ktx2 = "\xABKTX 20\xBB\r\n\x1A\n";
    EXPECT_EQ(KVRTextureContainerOf(folder.write("a.ktx2", "DDS and more")), "dds");
    EXPECT_EQ(KVRTextureContainerOf(folder.write("a.dds", ktx2)), "ktx2");
    EXPECT_EQ(KVRTextureContainerOf(folder.write("b.dds", "DD")), "");
    EXPECT_EQ(KVRTextureContainerOf(folder.write("c.dds", "")), "");
    EXPECT_EQ(KVRTextureContainerOf(folder.file("none.dds")), "");
    EXPECT_EQ(KVRTextureContainerOf(folder.path().string()), "");
}

TEST(TextureFiles, of_either_container_are_read_through_one_entry) {
    const auto load = [](const char* name) {
        return Texture::Adopt(
            CreateTextureFromFile(RB_SOURCE_DIR "/samples/images/" + KVRUnicodeString(name), 1));
    };
    ASSERT_TRUE(load("cube.dds"));
    EXPECT_EQ(load("cube.dds")->GetFaceCount(), 6);
    ASSERT_TRUE(load("cube-mips.ktx2"));
    EXPECT_EQ(load("cube-mips.ktx2")->GetLevelCount(), 7);
    EXPECT_FALSE(load("studio.bmp"));
    EXPECT_EQ(KVRLastImageError().expected, "a dds or ktx2 file");
}

}  // namespace
}  // namespace rb::test
