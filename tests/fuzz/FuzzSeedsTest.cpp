// The seeds of the fuzzer hold what they are named after, and no format is without one; files with
// which it once found something stay harmless.

#include "tests/image/ImageFiles.h"
#include "tests/support/ForeignPrograms.h"

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

/// Texture containers have entries of their own: the image loader refuses them and says so.
const std::set<std::string> kTextureFormats{"dds", "ktx2"};

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

/// The names of all formats of the loader, out of its refusal "a png, jpg, ... or hdr file".
std::set<std::string> loaderFormats() {
    EXPECT_FALSE(tryToLoad(""));
    std::istringstream words(KVRLastImageError().expected);
    std::set<std::string> names;
    for (std::string word; words >> word;) {
        if (word.back() == ',') word.pop_back();
        if (word != "a" && word != "or" && word != "file") names.insert(word);
    }
    return names;
}

}  // namespace

TEST(FuzzSeeds, every_format_has_one) {
    const std::set<std::string> formats = loaderFormats();
    ASSERT_GE(formats.size(), 5U);
    std::set<std::string> expected = formats, found;
    expected.insert(kTextureFormats.begin(), kTextureFormats.end());
    for (const auto& seed : filesOf("seeds")) found.insert(formatOf(seed));
    EXPECT_EQ(found, expected);
}

TEST(FuzzSeeds, are_read_under_the_format_of_their_name) {
    for (const auto& seed : filesOf("seeds")) {
        if (kTextureFormats.count(formatOf(seed))) continue;
        EXPECT_TRUE(loadFile(seed.string())) << seed;
        KVRMMImageProp prop;
        KVRMMImageSize size;
        EXPECT_EQ(
            KVRMMRasterAdministrator::GetInstance()->GetImageInfo(seed.string(), prop, size, 0),
            S_OK);
        EXPECT_EQ(prop.fileFormat, KVRUnicodeString(formatOf(seed))) << seed;
    }
}

TEST(FuzzSeeds, of_textures_are_left_to_the_texture_functions) {
    for (const auto& seed : filesOf("seeds")) {
        if (!kTextureFormats.count(formatOf(seed))) continue;
        EXPECT_NE(refusalOf(contentOf(seed.string())).find("a texture container"),
                  std::string::npos)
            << seed;
    }
}

TEST(FuzzSeeds, are_small) {
    constexpr std::uintmax_t kMostBytes = 2048;
    for (const auto& seed : filesOf("seeds"))
        EXPECT_LE(std::filesystem::file_size(seed), kMostBytes) << seed;
}

TEST(FuzzRegressions, are_read_or_refused_with_a_reason) {
    for (const auto& file : filesOf("regressions")) {
        const std::string path = file.string();
        if (Image::Adopt(KVRPixelImage::CreateFromFile(path, 1, 0))) continue;
        EXPECT_FALSE(KVRLastImageError().expected.empty()) << path;
        EXPECT_FALSE(KVRLastImageError().found.empty()) << path;
    }
}
