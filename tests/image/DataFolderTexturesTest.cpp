// Real textures of other programs: what their headers say, and pictures that others made of them.

#include "tests/image/DataFolder.h"
#include "tests/image/TextureBuilder.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace rb::test {
namespace {

int countFaces(const Texture& texture) {
    int faces = 0;
    while (faceOf(texture, faces)) ++faces;
    return std::max(1, faces);
}

int countLevels(const Texture& texture) {
    const Texture face = faceOf(texture, 0);
    int levels = 0;
    while (levelOf(face ? face : texture, levels)) ++levels;
    return std::max(1, levels);
}

TEST(DataFolderTextures, files_hold_what_their_headers_say) {
    for (const RealTexture& real : kRealTextures) {
        SCOPED_TRACE(real.path);
        const std::string file = dataFile(real.path);
        RB_NEED_DATA(file);
        const auto texture = Texture::Adopt(CreateTextureFromDDSFile(file, 1));
        ASSERT_TRUE(texture) << KVRLastImageError().Message();
        int width = 0, height = 0;
        texture->GetSize(width, height);
        EXPECT_EQ(width, real.width);
        EXPECT_EQ(height, real.height);
        EXPECT_EQ(texture->GetFormat(), real.format);
        EXPECT_EQ(countFaces(texture), real.faces);
        EXPECT_EQ(countLevels(texture), real.levels);
    }
}

TEST(DataFolderTextures, unusable_files_are_refused_with_their_reason) {
    expectRefusals(kRefusedTextures, textureRefusalOf);
}

TEST(DataFolderTextures, beginnings_of_files_are_read_or_refused_with_a_reason) {
    expectBeginningsToBeReadOrRefused(kRealTextures, [](const std::string& bytes, const char*) {
        return bool(tryToLoadTexture(bytes));
    });
}

/// Compares a picture with the part of a reference that begins at (@p left, @p top). Blocks may be
/// rounded otherwise, by 1; halves are compared as bytes.
void expectPart(const Image& picture, const Image& reference, int left, int top) {
    const auto ours = Image::Adopt(picture->Duplicate(Format::RGBA));
    int width = 0, height = 0, stride = 0, rows = 0;
    ours->GetSize(width, height);
    reference->GetSize(stride, rows);
    ASSERT_LE(left + width, stride);
    ASSERT_LE(top + height, rows);
    int widest = 0;
    for (int y = 0; y < height; ++y) {
        const unsigned char* const a = ours->GetPixelsToRead() + 4 * y * width;
        const unsigned char* const b =
            reference->GetPixelsToRead() + 4 * ((top + y) * stride + left);
        for (int i = 0; i < 4 * width; ++i) widest = std::max(widest, std::abs(a[i] - b[i]));
    }
    EXPECT_LE(widest, 1);
}

/// Where the faces +X -X +Y -Y +Z -Z stand in a cross of four columns and three rows.
constexpr int kCross[6][2] = {{2, 1}, {0, 1}, {1, 0}, {1, 2}, {1, 1}, {3, 1}};

TEST(DataFolderTextures, pixels_are_those_of_reference_pictures) {
    for (const char* const path : kReferencePictures) {
        SCOPED_TRACE(path);
        const std::string file = dataFile(path);
        RB_NEED_DATA(file);
        std::string original = path;
        original.erase(original.find("-ref"), 4).replace(original.size() - 3, 3, "dds");
        const auto texture =
            Texture::Adopt(CreateTextureFromDDSFile(dataFile(original.c_str()), 1));
        const Image stored = loadFile(file);
        ASSERT_TRUE(texture && stored);
        const auto reference = Image::Adopt(stored->Duplicate(Format::RGBA));
        if (countFaces(texture) == 1) {
            expectPart(asImage(texture), reference, 0, 0);
            continue;
        }
        int side = 0, height = 0;
        texture->GetSize(side, height);
        for (int face = 0; face < 6; ++face)
            expectPart(asImage(faceOf(texture, face)), reference, side * kCross[face][0],
                       side * kCross[face][1]);
    }
}

}  // namespace
}  // namespace rb::test
