// The seeds of the fuzzer hold what they are named after, and no format is without one; files with
// which it once found something stay harmless.

#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"
#include "tests/image/ImageFiles.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace rb::test;

constexpr const char* kFolder = RB_SOURCE_DIR "/tests/fuzz/";

using Texture = KVRVar<KVRTexturePixelImage>;

std::vector<std::filesystem::path> filesOf(const std::string& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(kFolder + folder))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// "sgi" of "sgi_rgb.sgi".
std::string formatOf(const std::filesystem::path& seed) {
    const std::string name = seed.filename().string();
    return name.substr(0, name.find('_'));
}

/// The names of formats out of the last refusal: "a png, jpg, ... or hdr file".
std::set<std::string> expectedFormats() {
    std::istringstream words(KVRLastImageError().expected);
    std::set<std::string> names;
    for (std::string word; words >> word;) {
        if (word.back() == ',') word.pop_back();
        if (word != "a" && word != "or" && word != "file") names.insert(word);
    }
    return names;
}

std::set<std::string> imageFormats() {
    EXPECT_FALSE(tryToLoad(""));
    return expectedFormats();
}

std::set<std::string> textureFormats() {
    EXPECT_FALSE(Texture::Adopt(CreateTextureFromMemory({}, "test")));
    return expectedFormats();
}

/// Reads a file of one of the texture formats.
Texture loadTexture(const std::filesystem::path& file, const std::string& format) {
    const KVRUnicodeString path(file.string());
    return Texture::Adopt(format == "dds"    ? CreateTextureFromDDSFile(path, 1)
                          : format == "ktx2" ? CreateTextureFromKTX2File(path, 1)
                                             : nullptr);
}

}  // namespace

TEST(FuzzSeeds, every_format_has_one) {
    std::set<std::string> expected = imageFormats(), found;
    ASSERT_GE(expected.size(), 5U);
    ASSERT_GE(textureFormats().size(), 2U);
    expected.merge(textureFormats());
    for (const auto& seed : filesOf("seeds")) found.insert(formatOf(seed));
    EXPECT_EQ(found, expected);
}

TEST(FuzzSeeds, are_read_under_the_format_of_their_name) {
    const std::set<std::string> ofTextures = textureFormats();
    for (const auto& seed : filesOf("seeds")) {
        const std::string format = formatOf(seed);
        if (ofTextures.count(format)) {
            EXPECT_TRUE(loadTexture(seed, format)) << KVRLastImageError().Message();
            continue;
        }
        EXPECT_TRUE(loadFile(seed.string()));
        KVRMMImageProp prop;
        KVRMMImageSize size;
        KVRMMRasterAdministrator::GetInstance()->GetImageInfo(seed.string(), prop, size, 0);
        EXPECT_EQ(prop.fileFormat, KVRUnicodeString(format)) << seed;
    }
}

TEST(FuzzSeeds, are_small) {
    constexpr std::uintmax_t kMostBytes = 2048;
    for (const auto& seed : filesOf("seeds"))
        EXPECT_LE(std::filesystem::file_size(seed), kMostBytes) << seed;
}

TEST(FuzzRegressions, are_read_or_refused_with_a_reason) {
    const std::set<std::string> ofTextures = textureFormats();
    const auto files = filesOf("regressions");
    ASSERT_FALSE(files.empty());
    for (const auto& file : files) {
        const std::string format = formatOf(file);
        if (ofTextures.count(format) ? static_cast<bool>(loadTexture(file, format))
                                     : static_cast<bool>(Image::Adopt(
                                           KVRPixelImage::CreateFromFile(file.string(), 1, 0))))
            continue;
        EXPECT_FALSE(KVRLastImageError().expected.empty()) << file;
        EXPECT_FALSE(KVRLastImageError().found.empty()) << file;
    }
}
