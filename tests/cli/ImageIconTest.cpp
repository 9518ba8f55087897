#include "tests/cli/FloatFiles.h"
#include "tests/cli/RunRba.h"
#include "tests/cli/TextureFiles.h"

#include <filesystem>

namespace rb::test {
namespace {

namespace fs = std::filesystem;

using Image = KVRVar<KVRPixelImage>;
using Pixel = PictureFile::Pixel;

constexpr Pixel kBackground{125, 125, 125, 255};

RbaResult makeIcon(const std::string& in, int size, const std::string& out) {
    return runRba({"image", "icon", "--size", std::to_string(size), in, out});
}

struct Placement {
    int width, height;  // of the picture
    int size;           // of the icon
    int x, y, w, h;     // where the picture stands in it
};

TEST(ImageIcon, picture_stands_in_the_middle) {
    const Placement placements[] = {
        {200, 100, 64, 0, 16, 64, 32},                                  // h = 32
        {100, 200, 64, 16, 0, 32, 64},  {100, 201, 64, 16, 0, 32, 64},  // w = 31.84
        {100, 201, 63, 16, 0, 31, 63},                                  // w = 31.34
        {201, 100, 63, 0, 16, 63, 31},  {3, 2, 7, 0, 1, 7, 5},          // h = 4.67
        {2, 1, 5, 0, 1, 5, 3},     // h = 2.5, a half is rounded up
        {10, 3, 10, 0, 3, 10, 3},  // 7 rows are left: 3 above, 4 below
        {3, 10, 10, 3, 0, 3, 10},       {7, 7, 5, 0, 0, 5, 5},         {4, 3, 1, 0, 0, 1, 1},
        {40, 30, 101, 0, 12, 101, 76},   // larger than the picture; h = 75.75, 25 rows are left
        {1000, 1, 500, 0, 249, 500, 1},  // half a pixel is just enough
    };
    const Pixel color{200, 100, 40, 30};
    for (const Placement& p : placements) {
        const TempFolder folder;
        const std::string out = folder.file("out.png");
        const RbaResult result =
            makeIcon(writeColor(folder, p.width, p.height, color), p.size, out);
        ASSERT_EQ(result.status, 0) << result.err;
        const PictureFile icon(out);
        ASSERT_EQ(icon.width(), p.size);
        ASSERT_EQ(icon.height(), p.size);
        for (int y = 0; y < p.size; ++y)
            for (int x = 0; x < p.size; ++x) {
                const bool inside = x >= p.x && x < p.x + p.w && y >= p.y && y < p.y + p.h;
                ASSERT_EQ(icon.at(x, y), inside ? color : kBackground)
                    << p.width << " x " << p.height << " at " << p.size << ": " << x << ", " << y;
            }
    }
}

TEST(ImageIcon, picture_of_the_size_of_the_icon_keeps_every_pixel) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 33, 17, KVRPixelImageFormat::RGBA, 254);
    const std::string out = folder.file("out.png");
    ASSERT_EQ(makeIcon(in, 33, out).status, 0);
    const PictureFile picture(in), icon(out);
    for (int y = 0; y < 33; ++y)
        for (int x = 0; x < 33; ++x)
            ASSERT_EQ(icon.at(x, y), y >= 8 && y < 25 ? picture.at(x, y - 8) : kBackground)
                << x << ", " << y;
}

TEST(ImageIcon, half_and_float_pixels_are_made_displayable) {
    for (const unsigned bits : {16U, 32U}) {
        const TempFolder folder;
        const std::string out = folder.file("out.png");
        const RbaResult result =
            makeIcon(folder.write("in.tif", floatTiff(1, bits, {0.5F, 0.5F})), 4, out);
        ASSERT_EQ(result.status, 0) << result.err;
        const PictureFile icon(out);
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(icon.at(x, 0), kBackground);
            EXPECT_EQ(icon.at(x, 1), (Pixel{151, 151, 151, 255}));
            EXPECT_EQ(icon.at(x, 2), (Pixel{151, 151, 151, 255}));
            EXPECT_EQ(icon.at(x, 3), kBackground);
        }
    }
}

TEST(ImageIcon, text_and_json_tell_what_was_written) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 5, 4), out = folder.file("out.png");
    EXPECT_EQ(makeIcon(in, 16, out).out, out + ": 16 x 16 px, RGBA\n");
    const Json json = runRba({"image", "icon", in, out, "--size=32", "--json"}).json();
    EXPECT_EQ(json, (Json{{"path", out}, {"width", 32}, {"height", 32}, {"status", 0}}));
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"path", "width", "height", "status"}));
    EXPECT_EQ(runRba({"--quiet", "image", "icon", "--size", "8", in, out}).out, "");
}

TEST(ImageIcon, wrong_usage_is_told_before_anything_is_read) {
    const TempFolder folder;
    const std::string missing = folder.file("missing.png"), out = folder.file("out.png");
    for (const char* size : {"0", "-1", "x", "1.5", "4294967360"})
        EXPECT_EQ(runRba({"image", "icon", std::string("--size=") + size, missing, out}).status, 2)
            << size;
    EXPECT_EQ(makeIcon(missing, 0, out).err, "rba: --size: expected a number from 1 on, found 0\n");
    EXPECT_EQ(runRba({"image", "icon", missing, out}).status, 2);
    EXPECT_EQ(makeIcon(missing, 8, folder.file("out.ico")).status, 2);
    EXPECT_FALSE(fs::exists(out));
}

TEST(ImageIcon, what_cannot_be_read_or_written_is_told) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 5, 4);
    const std::string missing = folder.file("missing.png"), out = folder.file("out.png");
    const std::string nowhere = folder.file("no/such/folder/out.png");
    const RbaResult read = makeIcon(missing, 8, out), written = makeIcon(in, 8, nowhere);
    EXPECT_EQ(read.status, 1);
    EXPECT_TRUE(isErrorLine(read.err, missing));
    EXPECT_FALSE(fs::exists(out));
    EXPECT_EQ(written.status, 1);
    EXPECT_TRUE(isErrorLine(written.err, nowhere));
}

TEST(ImageIcon, picture_that_is_too_narrow_is_told_and_nothing_is_written) {
    const TempFolder folder;
    const std::string out = folder.file("out.png");
    const std::string wide = writePicture(folder, "wide.png", 1001, 1);
    const std::string high = writePicture(folder, "high.png", 1, 17);
    EXPECT_EQ(makeIcon(wide, 500, out).err,
              "rba: " + wide +
                  ": expected a picture of which at least half a pixel is left in an icon of 500 x "
                  "500 px, found one of 1001 x 1 px\n");
    const RbaResult result = makeIcon(high, 8, out);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, high));
    EXPECT_FALSE(fs::exists(out));
}

TEST(ImageIcon, picture_that_is_too_long_to_be_zoomed_is_told) {
    const TempFolder folder;
    const std::string lengthy =
        writePicture(folder, "long.png", (1 << 20) + 1, 128, KVRPixelImageFormat::L);
    const std::string out = folder.file("out.png");
    EXPECT_EQ(makeIcon(lengthy, 4100, out).err,
              "rba: " + lengthy +
                  ": expected a picture and an icon with sides of at most 1048576 px, found "
                  "1048577 x 128 px and 4100 x 4100 px\n");
    EXPECT_FALSE(fs::exists(out));
}

TEST(ImageIcon, of_the_largest_size_is_told) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 5, 4), out = folder.file("out.png");
    RbaSettings settings;
    settings.environment = {"KVRImagePixelLimit=9223372036854775807"};
    const RbaResult result = runRba({"image", "icon", "--size", "2147483647", in, out}, settings);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("expected a picture and an icon with sides of at most 1048576 px"),
              std::string::npos)
        << result.err;
    EXPECT_FALSE(fs::exists(out));
}

TEST(ImageIcon, icon_of_more_pixels_than_allowed_is_told) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 5, 4), out = folder.file("out.png");
    RbaSettings settings;
    settings.environment = {"KVRImagePixelLimit=100"};
    EXPECT_EQ(runRba({"image", "icon", "--size", "10", in, out}, settings).status, 0);
    fs::remove(out);
    const RbaResult result = runRba({"image", "icon", "--size", "11", in, out}, settings);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "rba: " + in +
                  ": expected an icon of no more pixels than KVRImagePixelLimit allows, found a "
                  "size of 11 x 11 px\n");
    EXPECT_FALSE(fs::exists(out));
    EXPECT_EQ(makeIcon(in, 2147483647, out).status, 1);
}

}  // namespace
}  // namespace rb::test
