// Every format, cut short and with flipped bytes: refused or delivered, never a crash, a hang or an
// allocation that the size of the file does not justify. Meant for the sanitizers above all.

#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/ForeignPrograms.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using Image = KVRVar<KVRPixelImage>;

struct Recipe {
    const char* name;     ///< Of the file; its extension tells the program what to write.
    const char* command;  ///< IN and OUT stand for the files.
};

void PrintTo(const Recipe& recipe, std::ostream* stream) { *stream << recipe.name; }

constexpr Recipe kRecipes[] = {
    {"rgb.png", "convert IN OUT"},
    {"interlaced16.png", "convert IN -depth 16 -interlace PNG -define png:color-type=6 OUT"},
    {"palette.png", "convert IN -colors 13 PNG8:OUT"},
    {"bilevel.png", "convert IN -monochrome -depth 1 OUT"},
    {"baseline.jpg", "convert IN -quality 80 OUT"},
    {"progressive.jpg", "convert IN -interlace JPEG -quality 80 OUT"},
    {"cmyk.jpg", "convert IN -colorspace CMYK OUT"},
    {"plain.tif", "convert IN -compress None OUT"},
    {"deflate.tif", "convert IN -compress Zip OUT"},
    {"lzw16.tif", "convert IN -depth 16 -compress LZW OUT"},
    {"packbits.tif", "convert IN -compress RLE OUT"},
    {"planar.tif", "convert IN -interlace Plane -compress Zip OUT"},
    {"tiled.tif", "oiiotool IN --tile 16 16 --compression zip -o OUT"},
    {"half.tif", "oiiotool IN -d half --compression zip -o OUT"},
    {"jpeg.tif", "convert IN -compress JPEG OUT"},
    {"fax.tif", "convert IN -monochrome -compress Group4 OUT"},
    {"cmyk.tif", "convert IN -colorspace CMYK -compress None OUT"},
    {"lab.tif", "convert IN -colorspace Lab -compress LZW OUT"},
    {"zip.exr", "oiiotool IN -d half --compression zip -o OUT"},
    {"piz.exr", "oiiotool IN -d half --compression piz -o OUT"},
    {"rle.exr", "oiiotool IN -d float --compression rle -o OUT"},
    {"b44.exr", "oiiotool IN -d half --compression b44 -o OUT"},
    {"dwaa.exr", "oiiotool IN -d half --compression dwaa -o OUT"},
    {"tiled.exr", "oiiotool IN -d half --tile 16 16 -o OUT"},
    {"rle.hdr", "oiiotool IN -o OUT"},
    {"rle.psd", "convert IN -compress RLE OUT"},
    {"raw16.psd", "convert IN -depth 16 -compress None OUT"},
    {"alpha.psb", "convert IN -alpha set -compress RLE OUT"},
    {"cmyk.psd", "convert IN -colorspace CMYK OUT"},
    {"plain.sgi", "convert IN -compress None OUT"},
    {"rle.sgi", "convert IN -compress RLE OUT"},
    {"rle16.sgi", "convert IN -depth 16 -compress RLE OUT"},
    {"plain.bmp", "convert IN OUT"},
    {"palette.bmp", "convert IN -colors 13 BMP3:OUT"},
    {"rle.bmp", "convert IN -colors 64 -compress RLE BMP3:OUT"},
    {"plain.tga", "convert IN OUT"},
    {"palette.tga", "convert IN -colors 64 -type Palette OUT"},
    {"rle.tga", "convert IN -compress RLE OUT"},
};

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    const auto at = text.find(what);
    return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

class DamagedFiles : public testing::TestWithParam<Recipe> {
protected:
    // A bitmap in run lengths may end at once, whatever its sides: nothing but the limit of pixels
    // says how much memory it is worth.
    void SetUp() override {
        if (std::string(GetParam().name) == "rle.bmp") setenv("KVRImagePixelLimit", "16777216", 1);
    }
    void TearDown() override { unsetenv("KVRImagePixelLimit"); }

    static std::string make(const Recipe& recipe) {
        const rb::test::TempFolder folder;
        const std::string in = writePortableMap(folder, "in.ppm", rb::test::gradients(48, 32, 3));
        const std::string out = folder.file(recipe.name);
        rb::test::runProgram(replaced(replaced(recipe.command, "IN", rb::test::shellWord(in)),
                                      "OUT", rb::test::shellWord(out)));
        return rb::test::contentOf(out);
    }

    static Image load(const std::string& file) {
        return Image::Adopt(KVRPixelImage::CreateFromMemory(
            {reinterpret_cast<const std::byte*>(file.data()), file.size()}, GetParam().name));
    }
};

}  // namespace

TEST_P(DamagedFiles, whole_file_loads) {
    const Image image = load(make(GetParam()));
    ASSERT_TRUE(image) << KVRLastImageError().Message();
    int width = 0, height = 0;
    image->GetSize(width, height);
    EXPECT_EQ(width, 48);
    EXPECT_EQ(height, 32);
}

TEST_P(DamagedFiles, cut_short_is_refused_with_a_reason) {
    const std::string file = make(GetParam());
    // The last bytes of some formats only say that the file ends: nothing is lost with them.
    constexpr int kCuts = 64, kSurelyNeeded = 57;
    for (int i = 0; i < kCuts; ++i) {
        const Image image = load(file.substr(0, file.size() * static_cast<std::size_t>(i) / kCuts));
        if (i < kSurelyNeeded) {
            EXPECT_FALSE(image) << "cut at " << i << '/' << kCuts;
            EXPECT_FALSE(KVRLastImageError().expected.empty());
            EXPECT_FALSE(KVRLastImageError().found.empty());
        }
    }
}

TEST_P(DamagedFiles, flipped_bytes_never_hurt) {
    const std::string file = make(GetParam());
    // Deflate reaches 1032:1, and no other compression here more but fax, whose rows can be
    // one bit long; half pixels may be widened. The rest is what the codecs need at least.
    const bool fax = std::string(GetParam().name) == "fax.tif";
    const long long justified =
        (fax ? 65536LL : 2064LL) * static_cast<long long>(file.size()) + (192LL << 20);
    static_cast<void>(load(file));  // codecs keep some memory of their own
    const long long before = rb::test::peakAddressSpace();
    std::mt19937 random(20260101);
    constexpr int kVersions = 400;
    for (int version = 0; version < kVersions; ++version) {
        std::string damaged = file;
        const auto flips = 1 + random() % 6;
        for (unsigned i = 0; i < flips; ++i) {
            // Headers are where the harm is done.
            const std::size_t range =
                random() % 2 ? damaged.size() : std::min<std::size_t>(damaged.size(), 200);
            damaged[random() % range] = static_cast<char>(random());
        }
        const Image image = load(damaged);
        EXPECT_EQ(KVRLastImageError().found.empty(), static_cast<bool>(image));
    }
    EXPECT_LT(rb::test::peakAddressSpace() - before, justified);
}

INSTANTIATE_TEST_SUITE_P(Formats, DamagedFiles, testing::ValuesIn(kRecipes),
                         [](const auto& recipe) {
                             std::string name = recipe.param.name;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });
