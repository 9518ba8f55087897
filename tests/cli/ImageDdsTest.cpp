#include "tests/cli/RunRba.h"
#include "tests/cli/TextureFiles.h"

#include <cstring>
#include <sys/stat.h>

namespace rb::test {
namespace {

namespace fs = std::filesystem;

using Pixel = PictureFile::Pixel;

// Pixels of a sheet: margin 16, gap 20, a line of text 20, a letter 12 (2 less at the end), a frame
// of 1 around each picture.
constexpr int kFirstRow = 16 + 20 + 20 + 2 * 20;
constexpr int kFirstColumn = 16, kFirstColumnOfCube = 16 + 2 * 12 - 2 + 20;
constexpr int kBetweenFaces = 20 + 2;

int textWidth(const std::string& text) { return 12 * static_cast<int>(text.size()) - 2; }

/// The numbers of a float texel as they are stored.
std::string storedFloats(std::array<float, 4> values) {
    std::string stored(sizeof values, '\0');
    std::memcpy(stored.data(), values.data(), sizeof values);
    return stored;
}

struct Sample {
    const char* name;
    int kind;
    const char* className;
    int width, height, faces, levels;
};
constexpr Sample kSamples[] = {
    {"cube.dds", 2, "KVRVizCubicEnvMap", 64, 64, 6, 1},
    {"cube-mips.dds", 3, "KVRVizCubicEnvMapWithMipMap", 128, 128, 6, 8},
    {"cube-mips.ktx2", 0, "KVRVizCubicEnvMapWithMipMap", 64, 64, 6, 7},
    {"grating-mips.dds", 1, "KVRVizTextureWithMipMap", 128, 96, 1, 8},
};

TEST(ImageDds, json_has_the_keys_of_the_table) {
    for (const Sample& sample : kSamples) {
        const Json json = runRba({"--json", "image", "dds", sampleImage(sample.name)}).json();
        const Json expected = {{"path", sampleImage(sample.name)}, {"kind", sample.kind},
                               {"className", sample.className},    {"width", sample.width},
                               {"height", sample.height},          {"faces", sample.faces},
                               {"levels", sample.levels}};
        EXPECT_EQ(json, expected) << sample.name;
        EXPECT_EQ(keysOf(json), keysOf(expected));
    }
}

TEST(ImageDds, text_lists_every_level) {
    const std::string path = sampleImage("grating-mips.dds");
    const RbaResult result = runRba({"image", "dds", path});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, path +
                              "\n  texture     picture with mip-maps"
                              "\n  container   dds"
                              "\n  class       KVRVizTextureWithMipMap"
                              "\n  kind        1"
                              "\n  size        128 x 96 px"
                              "\n  format      BGRA (7)"
                              "\n  faces       1"
                              "\n  levels      8"
                              "\n    level 0   128 x 96 px"
                              "\n    level 1   64 x 48 px"
                              "\n    level 2   32 x 24 px"
                              "\n    level 3   16 x 12 px"
                              "\n    level 4   8 x 6 px"
                              "\n    level 5   4 x 3 px"
                              "\n    level 6   2 x 1 px"
                              "\n    level 7   1 x 1 px\n");
}

TEST(ImageDds, single_picture_has_kind_0_and_no_excuse) {
    const TempFolder folder;
    const std::string path =
        folder.write("grey.dds", ddsFile(2, 1, kGreyTexels, std::string(2, '\x40')));
    const RbaResult result = runRba({"image", "dds", path});
    EXPECT_NE(result.out.find("texture     single picture\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("class       KVRTexturePixelImage\n"), std::string::npos);
    EXPECT_NE(result.out.find("kind        0\n"), std::string::npos);
    EXPECT_NE(result.out.find("format      L (0)\n"), std::string::npos);
}

TEST(ImageDds, content_counts_when_the_name_lies) {
    const TempFolder folder;
    for (const auto& [sample, name, container] :
         {std::array{"cube.dds", "a.ktx2", "dds (although the name ends in \".ktx2\")"},
          std::array{"cube-mips.ktx2", "b.dds", "ktx2 (although the name ends in \".dds\")"},
          std::array{"cube.dds", "c", "dds (the name has no extension)"}}) {
        const std::string path = folder.write(name, readFile(sampleImage(sample)));
        const RbaResult result = runRba({"image", "dds", path});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_NE(result.out.find(std::string("container   ") + container + "\n"),
                  std::string::npos)
            << result.out;
        EXPECT_NE(result.out.find("kind        0 (CheckDDSFormat answers for names that end in "),
                  std::string::npos)
            << result.out;
    }
}

TEST(ImageDds, unreadable_files_are_told) {
    const TempFolder folder;
    const std::string cube = readFile(sampleImage("cube.dds"));
    const std::vector<std::string> paths = {
        folder.write("picture.png", readFile(sampleImage("alpha.png"))),
        folder.write("text.dds", "no texture"),
        folder.write("text.ktx2", "no texture"),
        folder.write("cut.dds", cube.substr(0, cube.size() / 2)),
        folder.write("empty.dds"),
        folder.path().string(),
        folder.file("missing.dds"),
        folder.file("pipe.dds"),  // nobody writes to it: waiting for that would be for ever
    };
    ASSERT_EQ(mkfifo(paths.back().c_str(), 0600), 0);
    for (const std::string& path : paths) {
        const RbaResult result = runRba({"image", "dds", path, "--sheet", folder.file("o.png")});
        EXPECT_EQ(result.status, 1) << path;
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(isErrorLine(result.err, path));
        EXPECT_FALSE(fs::exists(folder.file("o.png")));
    }
    EXPECT_NE(runRba({"image", "dds", paths[0]}).err.find("expected a dds or ktx2 file"),
              std::string::npos);
}

TEST(ImageDds, sheet_of_a_cube_has_every_texel_of_every_face) {
    const TempFolder folder;
    const std::string out = folder.file("sheet.png");
    const std::string cube = readFile(sampleImage("cube.dds"));
    const RbaResult result = runRba({"image", "dds", sampleImage("cube.dds"), "--sheet", out});
    ASSERT_EQ(result.status, 0) << result.err;
    const PictureFile sheet(out);
    EXPECT_EQ(sheet.width(), 16 + textWidth("cube map, BGRA") + 16);
    EXPECT_EQ(sheet.height(), kFirstRow + 6 * (64 + kBetweenFaces) - 20 + 16);
    EXPECT_TRUE(result.out.ends_with("  sheet       " + out + ", " + std::to_string(sheet.width()) +
                                     " x " + std::to_string(sheet.height()) + " px\n"));
    std::size_t at = 128;  // behind the header
    for (int face = 0; face < 6; ++face)
        for (int row = 0; row < 64; ++row)
            for (int column = 0; column < 64; ++column, at += 4) {
                const auto byte = [&](std::size_t i) {
                    return static_cast<int>(static_cast<unsigned char>(cube[at + i]));
                };
                ASSERT_EQ(sheet.at(kFirstColumnOfCube + 1 + column,
                                   kFirstRow + 1 + face * (64 + kBetweenFaces) + row),
                          (Pixel{byte(2), byte(1), byte(0), 255}))
                    << "face " << face << ", " << column << ", " << row;
            }
}

TEST(ImageDds, sheet_has_a_column_for_each_level) {
    const TempFolder folder;
    const std::string out = folder.file("sheet.png");
    ASSERT_EQ(runRba({"image", "dds", sampleImage("cube-mips.ktx2"), "--sheet", out}).status, 0);
    const PictureFile sheet(out);
    // Below level 0 the labels are wider than the pictures: "level N", and for 64 and 32 the size.
    const int label = textWidth("level 0");
    EXPECT_EQ(sheet.width(), kFirstColumnOfCube + 7 * label + 6 * 20 + 16);
    const Pixel ground = sheet.at(0, 0), frame = sheet.at(kFirstColumnOfCube, kFirstRow);
    EXPECT_NE(frame, ground);
    for (int level = 0; level < 7; ++level) {
        const int left = kFirstColumnOfCube + level * (label + 20), side = 64 >> level;
        for (int face = 0; face < 6; ++face) {
            const int top = kFirstRow + face * (64 + kBetweenFaces);
            EXPECT_EQ(sheet.at(left, top), frame);
            EXPECT_EQ(sheet.at(left + side + 1, top + side + 1), frame);
            EXPECT_EQ(sheet.at(left + side + 2, top), ground);
            EXPECT_NE(sheet.at(left + 1, top + 1), frame);
        }
    }
}

TEST(ImageDds, sheet_shows_a_checkerboard_through_holes) {
    const TempFolder folder;
    const std::string out = folder.file("sheet.png");
    ASSERT_EQ(runRba({"image", "dds", sampleImage("grating-mips.dds"), "--sheet", out}).status, 0);
    const PictureFile sheet(out);
    // The first hole is around (8, 8), where four squares of 8 pixels meet.
    const int left = kFirstColumn + 1, top = kFirstRow + 1;
    EXPECT_EQ(sheet.at(left + 8, top + 8), (Pixel{153, 153, 153, 255}));
    EXPECT_EQ(sheet.at(left + 7, top + 8), (Pixel{102, 102, 102, 255}));
}

TEST(ImageDds, sheet_makes_large_levels_smaller) {
    const TempFolder folder;
    const std::string out = folder.file("sheet.tif");
    const std::string path =
        folder.write("large.dds", ddsFile(1024, 512, kGreyTexels, std::string(1024 * 512, '\x60')));
    ASSERT_EQ(runRba({"image", "dds", path, "--sheet", out}).status, 0);
    const PictureFile sheet(out);
    const int labels = 3;  // the third one says the size in which it is shown
    const int top = kFirstRow + (labels - 2) * 20;
    EXPECT_EQ(sheet.width(), 16 + 512 + 2 + 16);
    EXPECT_EQ(sheet.height(), top + 256 + 2 + 16);
    EXPECT_EQ(sheet.at(kFirstColumn + 256, top + 128), (Pixel{0x60, 0x60, 0x60, 255}));
}

TEST(ImageDds, sheet_shows_textures_that_are_too_long_to_be_filtered) {
    const TempFolder folder;
    const std::string out = folder.file("sheet.tif");
    constexpr int kWidth = (1 << 20) + 4;
    const std::string path =
        folder.write("long.dds", ddsFile(kWidth, 1, kGreyTexels, std::string(kWidth, '\x60')));
    ASSERT_EQ(runRba({"image", "dds", path, "--sheet", out}).status, 0);
    EXPECT_EQ(PictureFile(out).width(), 16 + 512 + 2 + 16);
}

TEST(ImageDds, sheet_clamps_float_texels_and_says_so) {
    const TempFolder folder;
    const std::string out = folder.file("sheet.png");
    const std::string path =
        folder.write("light.dds", ddsFile(1, 1, kFloatTexels, storedFloats({2, -1, 0.5F, 1})));
    ASSERT_EQ(runRba({"image", "dds", path, "--sheet", out}).status, 0);
    const PictureFile sheet(out);
    EXPECT_EQ(sheet.width(), 16 + textWidth("single picture, RGBA_f, clamped to 0..1") + 16);
    EXPECT_EQ(sheet.at(kFirstColumn + 1, kFirstRow + 1), (Pixel{255, 0, 128, 255}));
}

/// Whether there is the box that stands for a letter without a picture of its own.
bool isBox(const PictureFile& sheet, int left, int top) {
    const Pixel ground = sheet.at(0, 0);
    for (const auto& [column, row] :
         {std::pair{0, 0}, {2, 0}, {4, 0}, {0, 3}, {4, 3}, {0, 6}, {2, 6}, {4, 6}})
        if (sheet.at(left + 2 * column, top + 2 * row) == ground) return false;
    return true;
}

TEST(ImageDds, every_letter_on_a_sheet_can_be_read) {
    const TempFolder folder;
    const std::string out = folder.file("sheet.png");
    const std::string large =
        folder.write("large.dds", ddsFile(1024, 512, kGreyTexels, std::string(1024 * 512, '\x60')));
    const std::string light =
        folder.write("light.dds", ddsFile(1, 1, kFloatTexels, storedFloats({2, -1, 0.5F, 1})));
    for (const std::string& path : {large, light, sampleImage("cube-mips.ktx2"),
                                    sampleImage("grating-mips.dds"), sampleImage("cube.dds")}) {
        ASSERT_EQ(runRba({"image", "dds", path, "--sheet", out}).status, 0);
        const PictureFile sheet(out);
        // The title, then the labels; the third of them says in which size a level is shown.
        for (const int line : {0, 2, 3, path == large ? 4 : 3})
            for (int left = 16; left + 10 <= sheet.width(); ++left)
                EXPECT_FALSE(isBox(sheet, left, 16 + 20 * line))
                    << path << ": line " << line << ", column " << left;
    }
}

TEST(ImageDds, sheet_needs_a_name_that_can_be_written) {
    const TempFolder folder;
    const std::string cube = sampleImage("cube.dds");
    for (const char* name : {"sheet.gif", "sheet", "sheet.dds"}) {
        const RbaResult result = runRba({"image", "dds", cube, "--sheet", folder.file(name)});
        EXPECT_EQ(result.status, 2) << name;
        EXPECT_TRUE(isErrorLine(result.err, folder.file(name)));
        EXPECT_EQ(result.out, "");
    }
    const std::string nowhere = folder.file("no/folder/sheet.png");
    const RbaResult result = runRba({"--json", "image", "dds", cube, "--sheet", nowhere});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, nowhere));
    EXPECT_EQ(result.out, "");
}

TEST(ImageDds, help_names_the_kinds_and_the_formats_of_sheets) {
    const std::string help = runRba({"image", "dds", "--help"}).out;
    for (const char* part : {"--sheet OUT", "2 cube map", "ktx2", "clamped", "checkerboard"})
        EXPECT_NE(help.find(part), std::string::npos) << part;
}

}  // namespace
}  // namespace rb::test
