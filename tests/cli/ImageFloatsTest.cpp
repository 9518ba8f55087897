// Pictures of half and float pixels: made displayable, or refused.

#include "tests/cli/FloatFiles.h"
#include "tests/cli/RunRba.h"
#include "tests/cli/TextureFiles.h"

#include <filesystem>

namespace rb::test {
namespace {

using Pixel = PictureFile::Pixel;

/// The pixels that `rba image convert` makes of a row.
std::vector<Pixel> converted(unsigned channels, unsigned bits, const std::vector<float>& values) {
    const TempFolder folder;
    const std::string in = folder.write("in.tif", floatTiff(channels, bits, values));
    const std::string out = folder.file("out.png");
    const RbaResult result = runRba({"image", "convert", in, out});
    const std::size_t width = values.size() / channels;
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, out + ": " + std::to_string(width) + " x 1 px, RGBA\n");
    const PictureFile picture(out);
    std::vector<Pixel> pixels;
    for (int x = 0; x < picture.width(); ++x) pixels.push_back(picture.at(x, 0));
    return pixels;
}

TEST(ImageFloats, grey_is_brightened_the_darker_the_more) {
    // A sum s of the three colours brightens them by 0.85 s^2 - 0.1083333 s^3 - 2.2416666 s + 3:
    // 1.95 for a grey of 0.2, 1.184 for 0.5, 1 for white.
    const std::vector<Pixel> expected = {
        {0, 0, 0, 255}, {98, 98, 98, 255}, {151, 151, 151, 255}, {255, 255, 255, 255}};
    for (const unsigned bits : {16U, 32U})
        EXPECT_EQ(converted(1, bits, {0, 0.2F, 0.5F, 1}), expected) << bits;
}

TEST(ImageFloats, colors_are_cut_at_0_and_1) {
    // 1.751171875 for the first.
    const std::vector<Pixel> expected = {
        {223, 111, 0, 255}, {255, 0, 0, 255}, {255, 255, 255, 255}, {151, 151, 151, 255}};
    for (const unsigned bits : {16U, 32U})
        EXPECT_EQ(converted(3, bits, {0.5F, 0.25F, 0, 7, 0, -7, 2, 3, 60000, 0.5F, 0.5F, 0.5F}),
                  expected)
            << bits;
}

TEST(ImageFloats, alpha_of_halves_is_clamped_and_that_of_floats_wraps_round) {
    const std::vector<float> values = {1, 1, 1, 0, 1, 1, 1, 0.5F, 1, 1, 1, 1, 1, 1, 1, 2};
    const auto white = [](int alpha) { return Pixel{255, 255, 255, alpha}; };
    EXPECT_EQ(converted(4, 16, values),
              (std::vector<Pixel>{white(0), white(127), white(255), white(255)}));
    EXPECT_EQ(converted(4, 32, values),
              (std::vector<Pixel>{white(0), white(127), white(255), white(254)}));
}

TEST(ImageFloats, samples_are_converted_into_every_format) {
    const TempFolder folder;
    for (const char* name : {"sky.hdr", "sky-half.exr", "depth-float.exr"})
        for (const char* out : {"out.png", "out.tif", "out.bmp", "out.jpg"}) {
            const RbaResult result =
                runRba({"image", "convert", sampleImage(name), folder.file(out)});
            EXPECT_EQ(result.status, 0) << result.err;
            EXPECT_EQ(PictureFile(folder.file(out)).width(), name[0] == 's' ? 512 : 160) << out;
        }
}

TEST(ImageFloats, json_tells_the_format_that_was_written) {
    const TempFolder folder;
    const std::string out = folder.file("out.tif");
    const Json json =
        runRba({"--json", "image", "convert", folder.write("a.hdr", radianceFile(3, 2)), out})
            .json();
    EXPECT_EQ(json, (Json{{"path", out}, {"width", 3}, {"height", 2}, {"format", 3}}));
}

TEST(ImageFloats, resolution_is_kept) {
    const TempFolder folder;
    TiffBuilder tiff(1, 1);
    tiff.samples(1, 32, 3).block(std::string(4, '\0'));
    tiff.set(282, TiffBuilder::kRational, {200, 1}).set(283, TiffBuilder::kRational, {200, 1});
    tiff.set(296, TiffBuilder::kShort, {2});  // to the inch
    const std::string out = folder.file("out.tif");
    ASSERT_EQ(runRba({"image", "convert", folder.write("in.tif", tiff.build()), out}).status, 0);
    const auto image = KVRVar<KVRPixelImage>::Adopt(KVRPixelImage::CreateFromFile(out, 1, 0));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->GetXResolution(), 200);
    EXPECT_EQ(image->GetResolutionUnit(), 2);
}

TEST(ImageFloats, derivations_name_the_way_out_and_write_nothing) {
    const TempFolder folder;
    const std::string out = folder.file("out.png");
    const struct {
        std::string file;
        const char* format;
    } cases[] = {{folder.write("float.tif", floatTiff(3, 32, {1, 1, 1})), "RGB_f"},
                 {folder.write("half.tif", floatTiff(1, 16, {1})), "L_f16"}};
    for (const char* command : {"grey", "mono", "negative", "alpha-invert", "mask", "bump"})
        for (const auto& [file, format] : cases) {
            const RbaResult result = runRba({"image", command, file, out});
            EXPECT_EQ(result.status, 1) << command;
            EXPECT_EQ(result.err, "rba: " + file + ": expected an image with 8-bit pixels, found " +
                                      format +
                                      " pixels; convert it to 8 bits first with: rba image "
                                      "convert\n");
            EXPECT_FALSE(std::filesystem::exists(out)) << command;
        }
}

TEST(ImageFloats, what_was_converted_can_be_derived_from) {
    const TempFolder folder;
    const std::string shown = folder.file("shown.png"), out = folder.file("out.png");
    const std::string in = folder.write("in.tif", floatTiff(1, 32, {0.5F}));
    ASSERT_EQ(runRba({"image", "convert", in, shown}).status, 0);
    ASSERT_EQ(runRba({"image", "negative", shown, out}).status, 0);
    EXPECT_EQ(PictureFile(out).at(0, 0), (Pixel{104, 104, 104, 255}));
}

}  // namespace
}  // namespace rb::test
