#include "RenderingBase/host/imaging/KVRPixelImageFormat.h"
#include "tests/cli/RunRba.h"
#include "tests/cli/TextureFiles.h"

namespace rb::test {
namespace {

const std::vector<std::string> kKeys = {"path",   "status", "width",
                                        "height", "format", "xResolution"};

TEST(TextureImport, text_tells_size_format_and_resolution) {
    const TempFolder folder;
    writePicture(folder, "oak.tif", 40, 20, KVRPixelImageFormat::RGB, 254);
    RbaSettings inFolder;
    inFolder.folder = folder.path();
    const RbaResult result = runRba({"texture", "import", "oak.tif"}, inFolder);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "oak.tif\n"
              "  size        40 x 20 px\n"
              "  format      RGB (2)\n"
              "  resolution  254.0000 dpi\n");
}

TEST(TextureImport, text_tells_an_assumed_resolution) {
    const TempFolder folder;
    const RbaResult result = runRba({"texture", "import", writePicture(folder, "a.png", 3, 2)});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("91.3669 dpi (assumed; the file states none)\n"), std::string::npos)
        << result.out;
}

TEST(TextureImport, json_is_an_array_with_the_keys_of_the_table) {
    const RbaResult result =
        runRba({"--json", "texture", "import", sampleImage("studio.jpg"), sampleImage("cube.dds")});
    EXPECT_EQ(result.status, 0);
    const Json json = result.json();
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(keysOf(json[0]), kKeys);
    EXPECT_EQ(json[0]["path"], sampleImage("studio.jpg"));
    EXPECT_EQ(json[0]["status"], 0);
    EXPECT_EQ(json[0]["width"], 640);
    EXPECT_EQ(json[0]["height"], 480);
    EXPECT_EQ(json[0]["format"], 2);
    EXPECT_EQ(json[0]["xResolution"], 150);
    EXPECT_EQ(json[1]["width"], 64);
    EXPECT_EQ(json[1]["format"], 7);
    EXPECT_EQ(json[1]["xResolution"], 91.3669);
}

TEST(TextureImport, a_file_that_fails_does_not_keep_the_others) {
    const TempFolder folder;
    const std::string bad = folder.write("bad.png", "no picture"), good = sampleImage("studio.bmp");
    const RbaResult result = runRba({"--json", "texture", "import", bad, good});
    EXPECT_EQ(result.status, 1);
    const Json json = result.json();
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(keysOf(json[0]), (std::vector<std::string>{"path", "error"}));
    EXPECT_EQ(json[1]["status"], 0);
    EXPECT_NE(result.err.find("bad.png: expected "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(", found "), std::string::npos) << result.err;
}

TEST(TextureImport, tells_which_texels_cannot_become_an_image) {
    const TempFolder folder;
    DdsBuilder bc6h = dx10(95, 4, std::string(16, '\0'));
    bc6h.height = 4;
    const RbaResult result = runRba({"texture", "import", folder.write("hdr.dds", bc6h.build())});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("expected texels of 8 bits, 16 bits or float, found RGB_f16"),
              std::string::npos)
        << result.err;
}

TEST(TextureImport, of_no_path_has_its_own_reason) {
    const TempFolder folder;
    const RbaResult result = runRba({"texture", "import", folder.file("none.png"), ""});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("rba: an empty path: expected the path of a file, found an empty"),
              std::string::npos)
        << result.err;
}

TEST(TextureImport, of_something_else_names_all_that_is_read) {
    const TempFolder folder;
    const RbaResult result = runRba({"texture", "import", folder.write("a.txt", "text")});
    EXPECT_EQ(result.status, 1);
    for (const char* name : {"png, ", "tga, ", "dds or ktx2 file, found "})
        EXPECT_NE(result.err.find(name), std::string::npos) << result.err;
}

TEST(TextureImport, no_path_is_wrong_usage) { EXPECT_EQ(runRba({"texture", "import"}).status, 2); }

}  // namespace
}  // namespace rb::test
