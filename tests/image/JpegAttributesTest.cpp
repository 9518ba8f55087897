// What JPEG files say beside their pixels, and JPEG files of ours as others read them.

#include "tests/image/ImageFiles.h"
#include "tests/image/JpegBuilder.h"
#include "tests/image/WrittenImages.h"
#include "tests/support/ForeignPrograms.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using namespace std::string_literals;
using Profile = KVRVar<KVRMMColorProfile>;

std::string plain() { return encodeJpeg(8, 8, std::string(192, '\x40'), {}); }

/// @p file with another density in its JFIF segment.
std::string withDensity(std::string file, int unit, int x, int y) {
    const std::size_t at = file.find("JFIF") + 7;
    return file.replace(at, 5,
                        {static_cast<char>(unit), static_cast<char>(x >> 8), static_cast<char>(x),
                         static_cast<char>(y >> 8), static_cast<char>(y)});
}

/// Numbers in either byte order.
struct Order {
    bool little;
    std::string number(std::uint32_t value, int bytes) const {
        std::string text;
        for (int i = 0; i < bytes; ++i)
            text += static_cast<char>(value >> 8 * (little ? i : bytes - 1 - i));
        return text;
    }
    std::string field(std::uint32_t tag, std::uint32_t type, const std::string& value) const {
        return number(tag, 2) + number(type, 2) + number(1, 4) + value;
    }
    std::string shortField(std::uint32_t tag, std::uint32_t value) const {
        return field(tag, 3, number(value, 2) + "\0\0"s);
    }
    std::string tiff(std::uint32_t count, const std::string& directory) const {
        return (little ? "II" : "MM") + number(42, 2) + number(8, 4) + number(count, 2) + directory;
    }
};

struct Rational {
    std::uint32_t over = 0, under = 1;
};

std::string exifSegment(const std::string& tiff) { return segment(0xE1, "Exif\0\0"s + tiff); }

/// XResolution, YResolution and ResolutionUnit; without the last one when @p unit is 0.
std::string exif(bool little, Rational x, Rational y, std::uint32_t unit) {
    const Order order{little};
    const std::uint32_t count = unit ? 3 : 2, values = 8 + 2 + 12 * count + 4;
    std::string directory = order.field(0x011A, 5, order.number(values, 4)) +
                            order.field(0x011B, 5, order.number(values + 8, 4));
    if (unit) directory += order.shortField(0x0128, unit);
    directory += order.number(0, 4);
    for (const std::uint32_t value : {x.over, x.under, y.over, y.under})
        directory += order.number(value, 4);
    return exifSegment(order.tiff(count, directory));
}

struct Stated {
    double x, y;
    int unit;
    bool operator==(const Stated&) const = default;
};

void PrintTo(const Stated& stated, std::ostream* stream) {
    *stream << stated.x << " x " << stated.y << " unit " << stated.unit;
}

Stated statedBy(const std::string& file) {
    const Image image = loadBytes(file);
    if (!image) return {-1, -1, -1};
    return {image->GetXResolution(), image->GetYResolution(), image->GetResolutionUnit()};
}

constexpr Stated kNothing{0, 0, 1};

std::string dataOf(const Profile& profile) {
    if (!profile) return {};
    return {reinterpret_cast<const char*>(profile->GetData().data()), profile->GetData().size()};
}

Profile profileOf(const Image& image) {
    return image ? Profile::Adopt(image->GetColorProfile()) : Profile();
}

std::string wideGamut() {
    return dataOf(profileOf(loadFile(RB_SOURCE_DIR "/samples/images/wide-gamut.png")));
}

/// The same profile with so many zeros behind it that it takes several segments.
std::string longProfile() {
    std::string icc = wideGamut();
    icc.resize(150000);
    const auto size = static_cast<std::uint32_t>(icc.size());
    return icc.replace(0, 4, Order{false}.number(size, 4));
}

std::string piece(int number, int count, const std::string& content) {
    return segment(
        0xE2, "ICC_PROFILE\0"s + static_cast<char>(number) + static_cast<char>(count) + content);
}

Image filled(int width, int height, Format format) {
    Image image = Image::Adopt(new KVRPixelImage(width, height, format));
    const RawPicture picture = gradients(width, height, image->GetBytesPerPixel());
    std::memcpy(image->GetRawPixels().data(), picture.samples.data(), picture.samples.size());
    return image;
}

std::string identified(const std::string& path, const std::string& format) {
    return runProgram("identify -format " + shellWord(format) + " " + shellWord(path));
}

}  // namespace

TEST(JpegResolution, of_jfif) {
    EXPECT_EQ(statedBy(withDensity(plain(), 1, 300, 150)), (Stated{300, 150, 2}));
    EXPECT_EQ(statedBy(withDensity(plain(), 2, 118, 65535)), (Stated{118, 65535, 3}));
    for (const auto& [unit, x, y] :
         {std::tuple{0, 1, 1}, {0, 72, 72}, {1, 0, 72}, {1, 72, 0}, {3, 72, 72}})
        EXPECT_EQ(statedBy(withDensity(plain(), unit, x, y)), kNothing) << unit;
}

TEST(JpegResolution, of_another_encoder) {
    const TempFolder folder;
    const std::string in = writePortableMap(folder, "in.ppm", gradients(9, 9, 3)),
                      out = folder.file("a.jpg");
    const auto encode = [&](const std::string& options) {
        runProgram("convert " + options + " " + shellWord(in) + " " + shellWord(out));
        return statedBy(contentOf(out));
    };
    EXPECT_EQ(encode("-density 300x240 -units PixelsPerInch"), (Stated{300, 240, 2}));
    EXPECT_EQ(encode("-density 118 -units PixelsPerCentimeter"), (Stated{118, 118, 3}));
    EXPECT_EQ(encode("-density 72 -units Undefined"), kNothing);
}

TEST(JpegResolution, of_exif_when_jfif_has_none) {
    for (const bool little : {true, false}) {
        EXPECT_EQ(statedBy(withSegments(plain(), exif(little, {300, 1}, {721, 10}, 2))),
                  (Stated{300, 72.1, 2}));
        EXPECT_EQ(statedBy(withSegments(plain(), exif(little, {118, 1}, {59, 1}, 3))),
                  (Stated{118, 59, 3}));
        EXPECT_EQ(statedBy(withSegments(plain(), exif(little, {96, 1}, {96, 1}, 0))),
                  (Stated{96, 96, 2}));
        EXPECT_EQ(statedBy(withSegments(plain(), exif(little, {96, 1}, {96, 1}, 1))), kNothing);
    }
}

TEST(JpegResolution, of_exif_in_integers) {
    const Order order{false};
    const std::string directory = order.field(0x011A, 9, order.number(72, 4)) +
                                  order.shortField(0x011B, 71) +
                                  order.field(0x0128, 4, order.number(3, 4));
    EXPECT_EQ(statedBy(withSegments(plain(), exifSegment(order.tiff(3, directory)))),
              (Stated{72, 71, 3}));
}

TEST(JpegResolution, of_jfif_wins_over_exif) {
    const std::string file = withDensity(plain(), 1, 240, 240);
    EXPECT_EQ(statedBy(withSegments(file, exif(true, {300, 1}, {300, 1}, 3))),
              (Stated{240, 240, 2}));
}

TEST(JpegResolution, of_exif_without_jfif) {
    const std::string file = plain();
    const std::size_t end = placeOf(file, 0xDB);
    EXPECT_EQ(statedBy("\xff\xd8" + exif(true, {300, 1}, {300, 1}, 2) + file.substr(end)),
              (Stated{300, 300, 2}));
}

TEST(JpegResolution, of_damaged_exif_is_none) {
    const auto stated = [](const std::string& segments) {
        return statedBy(withSegments(plain(), segments));
    };
    EXPECT_EQ(stated(exif(true, {300, 0}, {300, 1}, 2)), kNothing);
    EXPECT_EQ(stated(exif(true, {0, 1}, {300, 1}, 2)), kNothing);
    EXPECT_EQ(stated(exifSegment("")), kNothing);
    EXPECT_EQ(stated(exifSegment("XX*\0\x08\0\0\0"s)), kNothing);
    EXPECT_EQ(stated(exifSegment("II*\0\xff\xff\xff\xff"s)), kNothing);
    const Order order{true};
    // More fields than there are bytes, and values that stand behind the end.
    EXPECT_EQ(stated(exifSegment(order.tiff(65535, order.shortField(0x0128, 2)))), kNothing);
    EXPECT_EQ(
        stated(exifSegment(order.tiff(2, order.field(0x011A, 5, order.number(0xFFFFFFFC, 4)) +
                                             order.field(0x011B, 5, order.number(0x7FFFFFFF, 4))))),
        kNothing);
    EXPECT_EQ(stated(exifSegment(order.tiff(2, order.field(0x011A, 9, order.number(0x80000000, 4)) +
                                                   order.shortField(0x011B, 9)))),
              kNothing);
    // A damaged one does not hide a sound one behind it.
    EXPECT_EQ(stated(exifSegment("XX") + exif(true, {300, 1}, {300, 1}, 2)), (Stated{300, 300, 2}));
}

TEST(JpegResolution, is_written_as_density) {
    const TempFolder folder;
    const Image image = filled(9, 9, Format::RGB);
    image->SetResolution(299.6, 72, 2);
    EXPECT_EQ(identified(written(folder, image, "JPG"), "%x %y %U"), "300 72 PixelsPerInch");
    image->SetResolution(118.11, 50, 3);
    EXPECT_EQ(identified(written(folder, image, "JPG"), "%x %y %U"), "118 50 PixelsPerCentimeter");
    for (const double none : {0.0, 0.2, 70000.0}) {
        image->SetResolution(none, none, 2);
        EXPECT_EQ(statedBy(contentOf(written(folder, image, "JPG"))), kNothing) << none;
    }
}

TEST(JpegProfile, of_another_encoder_arrives_byte_for_byte) {
    const TempFolder folder;
    for (const std::string& icc : {wideGamut(), longProfile()}) {
        const std::string out = folder.file("out.jpg");
        runProgram("convert " + shellWord(writePortableMap(folder, "in.ppm", gradients(9, 9, 3))) +
                   " -profile " + shellWord(folder.write("a.icc", icc)) + " " + shellWord(out));
        EXPECT_EQ(dataOf(profileOf(loadFile(out))), icc);
    }
}

TEST(JpegProfile, is_written_for_others_byte_for_byte) {
    const TempFolder folder;
    for (const std::string& icc : {wideGamut(), longProfile()}) {
        const Image image = filled(9, 9, Format::RGBA);
        const Profile profile = Profile::Adopt(KVRMMColorProfile::CreateFromMemory(
            {reinterpret_cast<const std::byte*>(icc.data()), icc.size()}));
        ASSERT_TRUE(profile);
        image->AssignColorProfile(profile.Get(), 0);
        const std::string path = written(folder, image, "JPG");
        EXPECT_EQ(runProgram("convert " + shellWord(path) + " icc:-"), icc);
        EXPECT_EQ(dataOf(profileOf(loadFile(path))), icc);
    }
}

TEST(JpegProfile, in_pieces_in_any_order) {
    const std::string icc = wideGamut(), a = icc.substr(0, 100), b = icc.substr(100, 1),
                      c = icc.substr(101);
    const std::string file =
        withSegments(plain(), piece(3, 3, c) + piece(1, 3, a) + piece(2, 3, b));
    EXPECT_EQ(dataOf(profileOf(loadBytes(file))), icc);
}

TEST(JpegProfile, in_pieces_that_do_not_fit_is_none) {
    const std::string icc = wideGamut(), a = icc.substr(0, 100), b = icc.substr(100);
    for (const std::string& segments :
         {piece(1, 3, a) + piece(2, 3, b), piece(1, 2, a) + piece(1, 2, a) + piece(2, 2, b),
          piece(1, 2, a) + piece(2, 3, b), piece(0, 2, a) + piece(1, 2, b), piece(0, 0, icc),
          piece(2, 1, icc), segment(0xE2, "ICC_PROFILE\0"s), segment(0xE2, "ICC_PROFILE\0\1"s),
          piece(1, 1, "no profile"), piece(1, 1, icc) + piece(1, 1, icc)}) {
        const Image image = loadBytes(withSegments(plain(), segments));
        ASSERT_TRUE(image);
        EXPECT_FALSE(profileOf(image)) << segments.size();
    }
}

TEST(JpegWriter, quality_orders_the_sizes) {
    const TempFolder folder;
    const Image image = filled(256, 256, Format::RGB);
    const auto size = [&](const char* format) {
        return contentOf(written(folder, image, format)).size();
    };
    EXPECT_LT(size("JPG_FAIR"), size("JPG"));
    EXPECT_LT(size("JPG"), size("JPG_HIGH"));
}

TEST(JpegWriter, quality_and_chroma_as_another_program_finds_them) {
    const TempFolder folder;
    const Image image = filled(64, 64, Format::RGB);
    const char* const format = "%Q %[jpeg:sampling-factor]";
    EXPECT_EQ(identified(written(folder, image, "JPG_FAIR"), format), "50 2x2,1x1,1x1");
    EXPECT_EQ(identified(written(folder, image, "JPG"), format), "75 2x2,1x1,1x1");
    EXPECT_EQ(identified(written(folder, image, "JPG_HIGH"), format), "95 1x1,1x1,1x1");
}

TEST(JpegWriter, every_channel_count_is_read_by_others) {
    const TempFolder folder;
    const std::pair<Format, std::vector<int>> cases[] = {{Format::L, {90}},
                                                         {Format::LA, {90, 7}},
                                                         {Format::RGB, {200, 40, 90}},
                                                         {Format::RGBA, {200, 40, 90, 7}}};
    for (const auto& [format, color] : cases) {
        const Image image = Image::Adopt(new KVRPixelImage(20, 12, format));
        auto pixels = image->GetRawPixels();
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = static_cast<std::byte>(color[i % color.size()]);
        const std::string path = written(folder, image, "JPG_HIGH");
        const bool grey = color.size() < 3;
        EXPECT_EQ(identified(path, "%[channels]"), grey ? "gray" : "srgb");
        const std::string seen = decodedByConvert(path, grey ? "gray" : "rgb");
        const std::size_t channels = grey ? 1 : 3;
        ASSERT_EQ(seen.size(), 20 * 12 * channels);
        for (std::size_t i = 0; i < seen.size(); ++i)
            ASSERT_NEAR(static_cast<unsigned char>(seen[i]), color[i % channels], 3) << i;
        runProgram("oiiotool " + shellWord(path) + " -o " + shellWord(folder.file("seen.ppm")));
    }
}

TEST(JpegWriter, sides_beyond_the_format_are_refused) {
    const TempFolder folder;
    const Image image = Image::Adopt(new KVRPixelImage(65501, 1, Format::L));
    EXPECT_EQ(image->WriteToFile(folder.file("a.jpg"), "JPG"), E_FAIL);
    EXPECT_NE(KVRLastImageError().found.find("65500"), std::string::npos)
        << KVRLastImageError().found;
    EXPECT_FALSE(std::filesystem::exists(folder.file("a.jpg")));
}
