// KTX2 files put together by hand: formats, levels, faces, compression, damage.

#include "tests/image/FileParts.h"
#include "tests/image/TextureBuilder.h"
#include "tests/support/ForeignPrograms.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace rb::test {
namespace {

constexpr std::uint32_t kNone = 0, kBasis = 1, kZstd = 2, kZlib = 3;

struct StoredLevel {
    std::string data;
    std::size_t inflated;
};

/// The parts of a KTX2 file. A test changes what it is about.
struct Ktx2Builder {
    std::uint32_t vkFormat = 9;  // R8_UNORM
    std::uint32_t width = 1, height = 1, depth = 0, layers = 0, faces = 1;
    std::uint32_t compression = kNone;
    std::vector<StoredLevel> levels;
    std::uint32_t declaredLevels = 0xFFFFFFFF;  ///< As many as there are.

    std::string build() const {
        const auto count = static_cast<std::uint32_t>(levels.size());
        std::string file("\xABKTX 20\xBB\r\n\x1A\n", 12);
        for (const std::uint32_t value :
             {vkFormat, 1U, width, height, depth, layers, faces,
              declaredLevels == 0xFFFFFFFF ? count : declaredLevels, compression})
            file += littleEndian(value, 4);
        file += std::string(32, '\0');
        // The smallest level stands first in the file, as the format recommends.
        std::vector<std::size_t> offsets(levels.size());
        std::size_t offset = file.size() + 24 * levels.size();
        for (std::size_t i = levels.size(); i-- > 0;) {
            offsets[i] = offset;
            offset += levels[i].data.size();
        }
        for (std::size_t i = 0; i < levels.size(); ++i)
            file += littleEndian(offsets[i], 8) + littleEndian(levels[i].data.size(), 8) +
                    littleEndian(levels[i].inflated, 8);
        for (std::size_t i = levels.size(); i-- > 0;) file += levels[i].data;
        return file;
    }
};

Ktx2Builder ktx2(std::uint32_t vkFormat, std::uint32_t width, std::uint32_t height,
                 const std::vector<std::string>& levels) {
    Ktx2Builder file;
    file.vkFormat = vkFormat;
    file.width = width;
    file.height = height;
    for (const std::string& level : levels) file.levels.push_back({level, level.size()});
    return file;
}

/// What the program zstd makes of some bytes.
std::string compressedByZstd(const std::string& data) {
    const TempFolder folder;
    return runProgram("zstd -q -c " + shellWord(folder.write("data", data)));
}

std::vector<int> greys(const Image& image, int width, int height) {
    return bytesOf(image, width, height, Format::L);
}

TEST(Ktx2, a_picture_has_its_rows_from_the_top) {
    const Texture texture = loadTexture(
        ktx2(37, 2, 2, {bytes({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16})}).build());
    EXPECT_STREQ(texture->IsA(), "KVRTexturePixelImage");
    EXPECT_EQ(bytesOf(asImage(texture), 2, 2, Format::RGBA),
              (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}));
}

TEST(Ktx2, formats_are_delivered_as_their_kind) {
    const auto formatOf = [](std::uint32_t vkFormat, std::size_t texelBytes) {
        const Texture texture =
            loadTexture(ktx2(vkFormat, 1, 1, {std::string(texelBytes, '\0')}).build());
        return texture ? texture->GetFormat() : Format::None;
    };
    EXPECT_EQ(formatOf(9, 1), Format::L);
    EXPECT_EQ(formatOf(15, 1), Format::L);
    EXPECT_EQ(formatOf(16, 2), Format::RGB);
    EXPECT_EQ(formatOf(23, 3), Format::RGB);
    EXPECT_EQ(formatOf(30, 3), Format::BGR);
    EXPECT_EQ(formatOf(43, 4), Format::RGBA);
    EXPECT_EQ(formatOf(50, 4), Format::BGRA);
    EXPECT_EQ(formatOf(76, 2), Format::L_f16);
    EXPECT_EQ(formatOf(83, 4), Format::RGB_f16);
    EXPECT_EQ(formatOf(90, 6), Format::RGB_f16);
    EXPECT_EQ(formatOf(97, 8), Format::RGBA_f16);
    EXPECT_EQ(formatOf(100, 4), Format::L_f);
    EXPECT_EQ(formatOf(106, 12), Format::RGB_f);
    EXPECT_EQ(formatOf(109, 16), Format::RGBA_f);
    EXPECT_EQ(formatOf(122, 4), Format::RGB_f16);
    EXPECT_EQ(formatOf(123, 4), Format::RGB_f16);
    EXPECT_EQ(formatOf(131, 8), Format::RGB);
    EXPECT_EQ(formatOf(134, 8), Format::RGBA);
    EXPECT_EQ(formatOf(135, 16), Format::RGBA);
    EXPECT_EQ(formatOf(138, 16), Format::RGBA);
    EXPECT_EQ(formatOf(139, 8), Format::L);
    EXPECT_EQ(formatOf(142, 16), Format::RGB);
    EXPECT_EQ(formatOf(143, 16), Format::RGB_f16);
    EXPECT_EQ(formatOf(144, 16), Format::RGB_f16);
    EXPECT_EQ(formatOf(146, 16), Format::RGBA);
}

TEST(Ktx2, opaque_blocks_have_no_transparent_texels) {
    // Equal colours, so three of them; the fourth, transparent elsewhere, is black.
    const Texture texture = loadTexture(ktx2(131, 1, 1, {bytes({0, 0, 0, 0, 3, 0, 0, 0})}).build());
    EXPECT_EQ(bytesOf(asImage(texture), 1, 1, Format::RGB), (std::vector<int>{0, 0, 0}));
}

TEST(Ktx2, levels_are_found_through_their_index) {
    const Texture texture = loadTexture(ktx2(9, 4, 2, {"aaaaaaaa", "bb", "c"}).build());
    ASSERT_STREQ(texture->IsA(), "KVRVizTextureWithMipMap");
    EXPECT_EQ(greys(asImage(texture), 4, 2), std::vector<int>(8, 'a'));
    EXPECT_EQ(greys(levelOf(texture, 1), 2, 1), std::vector<int>(2, 'b'));
    EXPECT_EQ(greys(levelOf(texture, 2), 1, 1), std::vector<int>(1, 'c'));
}

TEST(Ktx2, no_level_means_one) {
    Ktx2Builder file = ktx2(9, 2, 1, {"ab"});
    file.declaredLevels = 0;
    EXPECT_STREQ(loadTexture(file.build())->IsA(), "KVRTexturePixelImage");
}

TEST(Ktx2, a_cube_has_all_faces_in_each_level) {
    Ktx2Builder file = ktx2(9, 2, 2, {"aaaabbbbccccddddeeeeffff", "ABCDEF"});
    file.faces = 6;
    const Texture texture = loadTexture(file.build());
    ASSERT_STREQ(texture->IsA(), "KVRVizCubicEnvMapWithMipMap");
    for (int face = 0; face < 6; ++face) {
        EXPECT_EQ(greys(asImage(faceOf(texture, face)), 2, 2), std::vector<int>(4, 'a' + face));
        EXPECT_EQ(greys(levelOf(faceOf(texture, face), 1), 1, 1), std::vector<int>(1, 'A' + face));
    }
    file.levels.pop_back();
    EXPECT_STREQ(loadTexture(file.build())->IsA(), "KVRVizCubicEnvMap");
}

TEST(Ktx2, of_an_array_the_first_layer_counts) {
    Ktx2Builder file = ktx2(9, 2, 1, {"abcdef"});
    file.layers = 3;
    EXPECT_EQ(greys(asImage(loadTexture(file.build())), 2, 1), (std::vector<int>{'a', 'b'}));
    file.compression = kZlib;
    EXPECT_NE(textureRefusalOf(file.build()).find("3 compressed layers"), std::string::npos);
}

TEST(Ktx2, zlib_and_zstd_levels_are_inflated) {
    const std::string large = std::string(32, 'a') + std::string(32, 'b'), small(16, 'c');
    Ktx2Builder file = ktx2(9, 8, 8, {});
    file.compression = kZlib;
    file.levels = {{zlibStream(large), 64}, {zlibStream(small), 16}};
    std::vector<int> expected(64, 'a');
    std::fill(expected.begin() + 32, expected.end(), 'b');
    EXPECT_EQ(greys(asImage(loadTexture(file.build())), 8, 8), expected);
    EXPECT_EQ(greys(levelOf(loadTexture(file.build()), 1), 4, 4), std::vector<int>(16, 'c'));
    file.compression = kZstd;
    file.levels = {{compressedByZstd(large), 64}, {compressedByZstd(small), 16}};
    EXPECT_EQ(greys(asImage(loadTexture(file.build())), 8, 8), expected);
    EXPECT_EQ(greys(levelOf(loadTexture(file.build()), 1), 4, 4), std::vector<int>(16, 'c'));
}

TEST(Ktx2, compressed_cubes_have_six_faces) {
    Ktx2Builder file = ktx2(9, 2, 2, {});
    file.faces = 6;
    file.compression = kZlib;
    file.levels = {{zlibStream("aaaabbbbccccddddeeeeffff"), 24}, {zlibStream("ABCDEF"), 6}};
    const Texture texture = loadTexture(file.build());
    for (int face = 0; face < 6; ++face) {
        EXPECT_EQ(greys(asImage(faceOf(texture, face)), 2, 2), std::vector<int>(4, 'a' + face));
        EXPECT_EQ(greys(levelOf(faceOf(texture, face), 1), 1, 1), std::vector<int>(1, 'A' + face));
    }
}

TEST(Ktx2, damaged_compressed_data_are_refused) {
    for (const std::uint32_t compression : {kZstd, kZlib}) {
        Ktx2Builder file = ktx2(9, 8, 8, {});
        file.compression = compression;
        const std::string data(64, 'a');
        const std::string sound = compression == kZstd ? compressedByZstd(data) : zlibStream(data);
        for (const std::string& damaged :
             {sound.substr(0, sound.size() - 9), std::string(20, '\xFF'), std::string(),
              compression == kZstd ? compressedByZstd(data + "a") : zlibStream(data + "a"),
              compression == kZstd ? compressedByZstd("a") : zlibStream("a")}) {
            file.levels = {{damaged, 64}};
            EXPECT_NE(textureRefusalOf(file.build()).find("found damaged data"), std::string::npos);
        }
        file.levels = {{sound, 63}};
        EXPECT_NE(textureRefusalOf(file.build()).find("64 bytes in level 0, found 63"),
                  std::string::npos);
        file.levels = {{sound + std::string(4096, 'x'), 64}};
        EXPECT_NE(textureRefusalOf(file.build()).find("no longer than level 0"), std::string::npos);
    }
}

TEST(Ktx2, what_needs_transcoding_is_refused) {
    Ktx2Builder file = ktx2(0, 4, 4, {std::string(16, '\0')});
    EXPECT_NE(textureRefusalOf(file.build()).find("Basis Universal"), std::string::npos);
    file.compression = kBasis;
    EXPECT_NE(textureRefusalOf(file.build()).find("Basis Universal"), std::string::npos);
    file.vkFormat = 37;
    file.compression = 4;
    EXPECT_NE(textureRefusalOf(file.build()).find("scheme 4"), std::string::npos);
    file.compression = kNone;
    file.vkFormat = 157;  // an ASTC format
    EXPECT_NE(textureRefusalOf(file.build()).find("VkFormat 157"), std::string::npos);
}

TEST(Ktx2, shapes_that_are_no_pictures_are_refused) {
    const Ktx2Builder sound = ktx2(9, 2, 2, {"abcd"});
    const auto refusal = [&](auto change) {
        Ktx2Builder file = sound;
        change(file);
        return textureRefusalOf(file.build());
    };
    EXPECT_NE(refusal([](auto& f) { f.depth = 2; }).find("volume"), std::string::npos);
    EXPECT_NE(refusal([](auto& f) { f.faces = 5; }).find("1 or 6 faces"), std::string::npos);
    EXPECT_NE(refusal([](auto& f) { f.height = 0; }).find("sides of 1"), std::string::npos);
    EXPECT_NE(refusal([](auto& f) { f.declaredLevels = 3; }).find("at most 2 levels"),
              std::string::npos);
    EXPECT_NE(refusal([](auto& f) { f.declaredLevels = 2; }).find("index of 2 levels"),
              std::string::npos);
    EXPECT_NE(refusal([](auto& f) { f.width = 3; }).find("6 bytes in level 0, found 4"),
              std::string::npos);
    EXPECT_NE(refusal([](auto& f) { f.layers = 0xFFFFFFFF; }).find("in level 0"),
              std::string::npos);
    EXPECT_NE(refusal([](auto& f) { f.width = f.height = 0xFFFFFFFF; }), "");
}

TEST(Ktx2, cut_short_is_refused) {
    const std::string file = ktx2(9, 4, 2, {"aaaaaaaa", "bb", "c"}).build();
    for (std::size_t size = 0; size < file.size(); ++size)
        EXPECT_NE(textureRefusalOf(file.substr(0, size)), "") << size;
}

TEST(Ktx2, each_entry_reads_its_own_files) {
    const TempFolder folder;
    const std::string path = folder.write("a.ktx2", ktx2(9, 2, 1, {"ab"}).build());
    EXPECT_TRUE(Texture::Adopt(CreateTextureFromKTX2File(path, 1)));
    EXPECT_FALSE(Texture::Adopt(CreateTextureFromDDSFile(path, 1)));
    EXPECT_EQ(KVRLastImageError().expected, "a dds file");
    EXPECT_FALSE(Texture::Adopt(CreateTextureFromKTX2File(folder.write("b.ktx2", "DDS "), 1)));
    EXPECT_EQ(KVRLastImageError().expected, "a ktx2 file");
}

}  // namespace
}  // namespace rb::test
