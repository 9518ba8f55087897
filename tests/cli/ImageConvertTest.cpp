#include "tests/cli/RunRba.h"

namespace rb::test {
namespace {

KVRVar<KVRPixelImage> load(const std::string& path) {
    return KVRVar<KVRPixelImage>::Adopt(KVRPixelImage::CreateFromFile(path, 1, 0));
}

std::vector<std::byte> pixelsOf(const std::string& path) {
    const KVRVar<KVRPixelImage> image = load(path);
    if (!image) return {};
    const auto pixels = image->GetRawPixels();
    return {pixels.begin(), pixels.end()};
}

TEST(ImageConvert, lossless_formats_keep_every_pixel_and_the_resolution) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 33, 17, KVRPixelImageFormat::RGBA, 254);
    for (const char* name : {"out.png", "out.tif", "out.tiff", "OUT.TIF"}) {
        const std::string out = folder.file(name);
        const RbaResult result = runRba({"image", "convert", in, out});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, out + ": 33 x 17 px, RGBA\n");
        EXPECT_EQ(pixelsOf(out), pixelsOf(in)) << name;
        EXPECT_FLOAT_EQ(load(out)->GetXPixelSize(), 0.1F) << name;
    }
}

TEST(ImageConvert, format_follows_the_extension) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 33, 17);
    const std::vector<std::pair<std::string, std::string>> kinds = {
        {"out.png", "\x89PNG"}, {"out.tif", "II*"},          {"out.tiff", "II*"},
        {"out.bmp", "BM"},      {"out.jpg", "\xff\xd8\xff"}, {"out.JPEG", "\xff\xd8\xff"}};
    for (const auto& [name, magic] : kinds) {
        const std::string out = folder.file(name);
        EXPECT_EQ(runRba({"image", "convert", in, out}).status, 0);
        EXPECT_TRUE(readFile(out).starts_with(magic)) << name;
    }
}

TEST(ImageConvert, json_has_the_keys_of_the_table) {
    const TempFolder folder;
    const std::string out = folder.file("out.tif");
    const Json json =
        runRba({"--json", "image", "convert", writePicture(folder, "in.png", 5, 4), out}).json();
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"path", "width", "height", "format"}));
    EXPECT_EQ(json["path"], out);
    EXPECT_EQ(json["width"], 5);
    EXPECT_EQ(json["height"], 4);
    EXPECT_EQ(json["format"], 2);
}

TEST(ImageConvert, quiet_prints_nothing) {
    const TempFolder folder;
    const RbaResult result = runRba({"--quiet", "image", "convert",
                                     writePicture(folder, "in.png", 5, 4), folder.file("o.png")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST(ImageConvert, options_of_drawings_are_accepted_for_rasters) {
    const TempFolder folder;
    const RbaResult result =
        runRba({"image", "convert", "--group", "a", "--group", "b", "--dpi", "300",
                writePicture(folder, "in.png", 5, 4), folder.file("out.png")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(load(folder.file("out.png"))->GetXPixelSize(), 0);
}

TEST(ImageConvert, help_says_what_the_options_of_drawings_are_for) {
    const std::string help = runRba({"image", "convert", "--help"}).out;
    for (const char* option : {"--group G", "--dpi N"}) {
        const auto at = help.find(option);
        const std::string text = help.substr(at, help.find("\n  -", at) - at);
        EXPECT_NE(text.find("For drawings"), std::string::npos) << text;
        EXPECT_NE(text.find("pictures take no notice"), std::string::npos) << text;
    }
}

TEST(ImageConvert, group_takes_one_value_so_that_paths_may_follow) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 5, 4);
    EXPECT_EQ(runRba({"image", "convert", "--group", "a", in, folder.file("out.png")}).status, 0);
}

TEST(ImageConvert, unknown_extension_is_wrong_usage) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 5, 4);
    for (const char* name : {"out.gif", "out", "out.exr", "out.dds"}) {
        const RbaResult result = runRba({"image", "convert", in, folder.file(name)});
        EXPECT_EQ(result.status, 2) << name;
        EXPECT_TRUE(isErrorLine(result.err, folder.file(name)));
        EXPECT_FALSE(std::filesystem::exists(folder.file(name)));
    }
    EXPECT_EQ(runRba({"image", "convert", "--dpi", "0", in, folder.file("o.png")}).status, 2);
}

TEST(ImageConvert, failed_conversion_leaves_the_old_file) {
    const TempFolder folder;
    const std::string out = folder.write("out.png", "the old file");
    const RbaResult result =
        runRba({"image", "convert", folder.write("in.png", "no picture"), out});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(readFile(out), "the old file");
}

TEST(ImageConvert, place_that_cannot_be_written_to_is_named) {
    const TempFolder folder;
    const std::string in = writePicture(folder, "in.png", 5, 4);
    const std::string out = folder.file("no/such/folder/out.png");
    const RbaResult result = runRba({"image", "convert", in, out});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, out));
}

TEST(ImageConvert, file_may_be_converted_onto_itself) {
    const TempFolder folder;
    const std::string path = writePicture(folder, "same.png", 33, 17);
    const std::vector<std::byte> before = pixelsOf(path);
    EXPECT_EQ(runRba({"image", "convert", path, path}).status, 0);
    EXPECT_EQ(pixelsOf(path), before);
}

}  // namespace
}  // namespace rb::test
