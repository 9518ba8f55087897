// The resolution that an import finds.

#include "RenderingBase/public/KVRRbaTextureLoader.h"
#include "tests/image/PngBuilder.h"
#include "tests/support/ForeignPrograms.h"
#include "tests/support/TempFolder.h"
#include "tests/texture/TextureFiles.h"

#include <gtest/gtest.h>

namespace rb::test {
namespace {

constexpr double kDefault = 91.3669;
/// 2.54 in single precision.
constexpr double kToInch = 2.5399999618530273;

double resolutionOf(const std::string& path) {
    TextureResult result;
    EXPECT_EQ(KVRRbaTextureLoader::GetInstance().ImportTexture(path, result), S_OK)
        << KVRLastImageError().Message();
    return result.GetMetadata().xResolution;
}

/// A small picture by another program.
std::string converted(const TempFolder& folder, const std::string& name,
                      const std::string& options) {
    const std::string path = folder.file(name);
    runProgram("convert -size 3x2 xc:teal " + options + " " + shellWord(path));
    return path;
}

TEST(TextureResolution, of_a_tif_per_inch_is_taken_as_it_is) {
    const TempFolder folder;
    EXPECT_EQ(resolutionOf(converted(folder, "a.tif", "-units PixelsPerInch -density 300")), 300);
}

TEST(TextureResolution, of_a_tif_per_centimetre_is_converted) {
    const TempFolder folder;
    const double found =
        resolutionOf(converted(folder, "a.tif", "-units PixelsPerCentimeter -density 100"));
    EXPECT_EQ(found, 100 * kToInch);
    EXPECT_NEAR(found, 254, 1e-5);
    EXPECT_EQ(resolutionOf(converted(folder, "a.tiff", "-units PixelsPerCentimeter -density 40")),
              40 * kToInch);
}

TEST(TextureResolution, of_a_tif_without_one_is_the_default) {
    const TempFolder folder;
    EXPECT_EQ(resolutionOf(converted(folder, "a.tif", "-units Undefined -density 1")), kDefault);
}

TEST(TextureResolution, of_a_png_is_that_of_its_metres) {
    const TempFolder folder;
    // 11811 to the metre are 118.11 to the centimetre.
    const std::string ihdrToData = chunk("pHYs", bigEndian(11811, 4) + bigEndian(1, 4) + "\x01");
    PngBuilder png;
    png.before = ihdrToData;
    png.rows = std::string(2, '\0');
    EXPECT_EQ(resolutionOf(folder.write("a.png", png.build())), 118.11 * kToInch);
    EXPECT_EQ(resolutionOf(folder.write("B.PNG", png.build())), 118.11 * kToInch);
    EXPECT_EQ(resolutionOf(sampleFile("studio.png")), 118.11 * kToInch);
}

TEST(TextureResolution, of_a_png_without_one_is_the_default) {
    const TempFolder folder;
    PngBuilder png;
    png.rows = std::string(2, '\0');
    EXPECT_EQ(resolutionOf(folder.write("a.png", png.build())), kDefault);
    // Without a unit it is an aspect ratio.
    png.before = chunk("pHYs", bigEndian(300, 4) + bigEndian(300, 4) + std::string(1, '\0'));
    EXPECT_EQ(resolutionOf(folder.write("a.png", png.build())), kDefault);
}

TEST(TextureResolution, of_a_jpg_in_both_units) {
    const TempFolder folder;
    const std::string inch = "-units PixelsPerInch -density 150";
    EXPECT_EQ(resolutionOf(converted(folder, "a.jpg", inch)), 150);
    EXPECT_EQ(resolutionOf(converted(folder, "a.jpg", "-units PixelsPerCentimeter -density 40")),
              40 * kToInch);
    EXPECT_EQ(resolutionOf(converted(folder, "a.JPEG", "-units PixelsPerCentimeter -density 40")),
              40 * kToInch);
    EXPECT_EQ(resolutionOf(converted(folder, "b.jpg", "-units Undefined -density 1")), kDefault);
}

TEST(TextureResolution, of_a_bmp_is_that_of_its_metres) {
    const TempFolder folder;
    // 2835 to the metre.
    EXPECT_EQ(resolutionOf(sampleFile("studio.bmp")), 28.35 * kToInch);
    const Image image = loadFile(sampleFile("studio.bmp"));
    image->SetResolution(0, 0, 1);
    ASSERT_EQ(image->WriteToFile(folder.file("a.bmp"), "BMP"), S_OK);
    EXPECT_EQ(resolutionOf(folder.file("a.bmp")), kDefault);
}

TEST(TextureResolution, of_a_tga_is_the_default) {
    EXPECT_EQ(resolutionOf(sampleFile("alpha.tga")), kDefault);
}

TEST(TextureResolution, of_other_files_is_that_of_the_image) {
    const TempFolder folder;
    // In single precision: 25.4 over the millimetres of a pixel, which is how the image tells it.
    const std::string psd = converted(folder, "a.psd", "-units PixelsPerInch -density 300.3");
    const float ofPsd = 25.4F / loadFile(psd)->GetXPixelSize();
    EXPECT_EQ(resolutionOf(psd), static_cast<double>(ofPsd));
    EXPECT_NEAR(static_cast<double>(ofPsd), 300.3, 0.001);
    EXPECT_NE(static_cast<double>(ofPsd), loadFile(psd)->GetXResolution()) << "not the header's";
    // The extension decides who is asked, not the content.
    const std::string path = converted(folder, "a.tif", "-units PixelsPerCentimeter -density 100");
    std::filesystem::rename(path, folder.file("a.scan"));
    const double found = resolutionOf(folder.file("a.scan"));
    EXPECT_NE(found, 100 * kToInch);
    EXPECT_NEAR(found, 254, 1e-4);
    std::filesystem::rename(folder.file("a.scan"), folder.file("tif"));
    EXPECT_NEAR(resolutionOf(folder.file("tif")), 254, 1e-4);
}

TEST(TextureResolution, of_an_exr_with_and_without_one) {
    const TempFolder folder;
    const std::string with = folder.file("with.exr"), without = folder.file("without.exr");
    runProgram(
        "oiiotool --create 3x2 3 --attrib XResolution 100.1 --attrib YResolution 100.1 "
        "--attrib ResolutionUnit in -o " +
        shellWord(with));
    runProgram("oiiotool --create 3x2 3 -o " + shellWord(without));
    const Image image = loadFile(with);
    EXPECT_EQ(resolutionOf(with), static_cast<double>(25.4F / image->GetXPixelSize()));
    EXPECT_NEAR(resolutionOf(with), 100.1, 1e-4);
    EXPECT_NE(resolutionOf(with), image->GetXResolution()) << "not the header's";
    EXPECT_EQ(resolutionOf(without), kDefault);
}

TEST(TextureResolution, of_textures_is_the_default) {
    EXPECT_EQ(resolutionOf(sampleFile("cube.dds")), kDefault);
    EXPECT_EQ(resolutionOf(sampleFile("cube-mips.ktx2")), kDefault);
}

TEST(TextureResolution, of_a_texture_with_the_name_of_an_image_is_the_default) {
    // The header that is asked for is that of an image.
    const TempFolder folder;
    const std::string path = folder.file("a.png");
    std::filesystem::copy_file(sampleFile("cube.dds"), path);
    EXPECT_EQ(resolutionOf(path), kDefault);
}

}  // namespace
}  // namespace rb::test
