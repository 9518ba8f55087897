#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"
#include "tests/cli/RunRba.h"
#include "tests/cli/TextureFiles.h"

#include <functional>

namespace rb::test {
namespace {

namespace fs = std::filesystem;

using Image = KVRVar<KVRPixelImage>;
using Pixel = PictureFile::Pixel;

/// Writes a picture of one colour.
std::string writeFace(const TempFolder& folder, const std::string& name, int width, int height,
                      Pixel color) {
    const auto image = Image::Adopt(new KVRPixelImage(width, height, KVRPixelImageFormat::RGBA));
    const auto bytes = image->GetRawPixels();
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::byte>(color[i % color.size()]);
    const std::string path = folder.file(name);
    EXPECT_EQ(image->WriteToFile(path, "PNG"), S_OK);
    return path;
}

/// Runs the command with six faces and returns the picture.
PictureFile ballOf(Arguments faces, const std::string& out) {
    faces.insert(faces.begin(), {"image", "mirror-ball"});
    faces.push_back(out);
    const RbaResult result = runRba(faces);
    EXPECT_EQ(result.status, 0) << result.err;
    return PictureFile(out);
}

TEST(ImageMirrorBall, six_faces_stand_where_the_help_says) {
    const TempFolder folder;
    Arguments faces;
    for (int i = 1; i <= 6; ++i)
        faces.push_back(writeFace(folder, std::to_string(i) + ".png", 65, 65, {i, 10 * i, 0, 255}));
    const PictureFile ball = ballOf(faces, folder.file("ball.png"));
    ASSERT_EQ(ball.width(), 65);
    ASSERT_EQ(ball.height(), 65);
    const auto faceAt = [&](int column, int row) { return ball.at(column, row)[0]; };
    // Where the normal is 45 degrees from the eye, 0.7 of the radius out, the ray goes to the side.
    EXPECT_EQ(faceAt(32, 32 + 23), 1) << "below";
    EXPECT_EQ(faceAt(32, 32 - 23), 2) << "above";
    EXPECT_EQ(faceAt(32 + 23, 32), 3) << "right";
    EXPECT_EQ(faceAt(32 - 23, 32), 4) << "left";
    EXPECT_EQ(faceAt(63, 32), 5) << "behind the ball, at its rim";
    EXPECT_EQ(faceAt(32, 32), 6) << "behind the eye";
    EXPECT_EQ(ball.at(0, 0), (Pixel{0, 0, 0, 1})) << "outside";
}

/// The ball of the file, and that of its faces in @p order.
void expectBallOf(const char* sample, const std::array<int, 6>& order,
                  const std::function<Image(KVRTexturePixelImage&, int)>& faceOf) {
    const TempFolder folder;
    const auto texture = KVRVar<KVRTexturePixelImage>::Adopt(
        CreateTextureFromDDSFile(KVRUnicodeString(sampleImage(sample)), 1));
    ASSERT_TRUE(texture);
    Arguments faces;
    for (const int face : order) {
        const Image picture = faceOf(*texture.Get(), face);
        ASSERT_TRUE(picture);
        faces.push_back(folder.file(std::to_string(face) + ".png"));
        ASSERT_EQ(picture->WriteToFile(faces.back(), "PNG"), S_OK);
    }
    const PictureFile expected = ballOf(faces, folder.file("faces.png"));
    const std::string out = folder.file("ball.png");
    const RbaResult result = runRba({"image", "mirror-ball", sampleImage(sample), out});
    EXPECT_EQ(result.out, out + ": 64 x 64 px\n") << result.err;
    const PictureFile ball(out);
    ASSERT_EQ(ball.width(), expected.width());
    ASSERT_EQ(ball.height(), expected.height());
    for (int row = 0; row < ball.height(); ++row)
        for (int column = 0; column < ball.width(); ++column)
            ASSERT_EQ(ball.at(column, row), expected.at(column, row)) << column << ", " << row;
}

TEST(ImageMirrorBall, cube_without_mip_maps_passes_faces_2_3_5_4_0_1) {
    expectBallOf("cube.dds", {2, 3, 5, 4, 0, 1}, [](KVRTexturePixelImage& texture, int face) {
        return Image::Adopt(dynamic_cast<KVRVizCubicEnvMap&>(texture).GetFace(face));
    });
}

TEST(ImageMirrorBall, cube_with_mip_maps_passes_level_1_of_faces_2_3_0_1_5_4) {
    expectBallOf("cube-mips.dds", {2, 3, 0, 1, 5, 4}, [](KVRTexturePixelImage& texture, int face) {
        const auto levels = KVRVar<KVRVizTextureWithMipMap>::Adopt(
            dynamic_cast<KVRVizCubicEnvMapWithMipMap&>(texture).GetFace(face));
        return Image::Adopt(levels->GetMipMap(1));
    });
}

TEST(ImageMirrorBall, json_has_the_keys_of_the_table) {
    const TempFolder folder;
    const std::string out = folder.file("ball.tif");
    const Json json =
        runRba({"--json", "image", "mirror-ball", sampleImage("cube.dds"), out}).json();
    EXPECT_EQ(json, (Json{{"path", out}, {"width", 64}, {"height", 64}}));
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"path", "width", "height"}));
    EXPECT_TRUE(readFile(out).starts_with("II*"));
}

TEST(ImageMirrorBall, quiet_prints_nothing) {
    const TempFolder folder;
    const RbaResult result = runRba(
        {"--quiet", "image", "mirror-ball", sampleImage("cube.dds"), folder.file("ball.png")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST(ImageMirrorBall, file_that_is_no_cube_in_a_dds_is_told) {
    const TempFolder folder;
    const std::string misnamed = folder.write("cube.tex", readFile(sampleImage("cube.dds")));
    for (const auto& [path, found] : std::vector<std::pair<std::string, std::string>>{
             {sampleImage("grating-mips.dds"), "found a picture with mip-maps"},
             {sampleImage("cube-mips.ktx2"), "found a ktx2 file"},
             {sampleImage("alpha.png"), "found the first bytes"},
             {misnamed, "found 'tex'"},
             {folder.file("missing.dds"), "found No such file"}}) {
        const RbaResult result = runRba({"image", "mirror-ball", path, folder.file("ball.png")});
        EXPECT_EQ(result.status, 1) << path;
        EXPECT_TRUE(isErrorLine(result.err, path));
        EXPECT_NE(result.err.find(found), std::string::npos) << result.err;
        EXPECT_FALSE(fs::exists(folder.file("ball.png")));
    }
}

TEST(ImageMirrorBall, face_of_another_size_is_named) {
    for (int odd = 0; odd < 6; ++odd) {
        const TempFolder folder;
        Arguments arguments = {"image", "mirror-ball"};
        for (int i = 0; i < 6; ++i)
            arguments.push_back(
                writeFace(folder, std::to_string(i) + ".png", 8, i == odd ? 4 : 8, {}));
        const std::string oddFace = arguments[2 + static_cast<std::size_t>(odd)];
        arguments.push_back(folder.file("ball.png"));
        const RbaResult result = runRba(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(isErrorLine(result.err, oddFace));
        EXPECT_NE(result.err.find("expected a face of 8 x 8 px"), std::string::npos) << result.err;
        EXPECT_NE(result.err.find("found 8 x 4 px"), std::string::npos) << result.err;
        EXPECT_FALSE(fs::exists(folder.file("ball.png")));
    }
}

TEST(ImageMirrorBall, face_that_cannot_be_read_is_named) {
    const TempFolder folder;
    Arguments arguments = {"image", "mirror-ball"};
    for (int i = 0; i < 5; ++i)
        arguments.push_back(writeFace(folder, std::to_string(i) + ".png", 8, 8, {}));
    arguments.push_back(folder.file("missing.png"));
    arguments.push_back(folder.file("ball.png"));
    const RbaResult result = runRba(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, folder.file("missing.png")));
}

TEST(ImageMirrorBall, other_numbers_of_paths_and_other_extensions_are_wrong_usage) {
    const TempFolder folder;
    for (const std::size_t count : {1U, 3U, 6U, 8U}) {
        Arguments arguments = {"image", "mirror-ball"};
        arguments.insert(arguments.end(), count, sampleImage("cube.dds"));
        const RbaResult result = runRba(arguments);
        EXPECT_EQ(result.status, 2) << count;
        EXPECT_NE(result.err.find("expected IN.dds and OUT, or six faces and OUT, found " +
                                  std::to_string(count)),
                  std::string::npos)
            << result.err;
    }
    EXPECT_EQ(runRba({"image", "mirror-ball"}).status, 2);
    const std::string out = folder.file("ball.exr");
    const RbaResult result = runRba({"image", "mirror-ball", sampleImage("cube.dds"), out});
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(isErrorLine(result.err, out));
}

TEST(ImageMirrorBall, help_says_which_face_is_which) {
    const std::string help = runRba({"image", "mirror-ball", "--help"}).out;
    for (const char* part : {"F1 F2 F3 F4 F5 F6 OUT", "IN.dds", "F1 is the face at +y", "alpha 1"})
        EXPECT_NE(help.find(part), std::string::npos) << part;
}

}  // namespace
}  // namespace rb::test
