// PNG files that are not as they should be: which ones are refused, for which reason, and which
// ones load.

#include "tests/image/ImageFiles.h"
#include "tests/image/PngBuilder.h"
#include "tests/support/ForeignPrograms.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using Values = std::vector<int>;

/// Two rows of two grey pixels: 1 2, 3 4.
PngBuilder small() {
    PngBuilder png{.width = 2, .height = 2};
    png.rows = std::string("\0\1\2\0\3\4", 6);
    return png;
}

const Values kSmallPixels{1, 2, 3, 4};

Values pixelsOfSmall(const std::string& file) { return bytesOf(loadBytes(file), 2, 2, Format::L); }

/// @p file with one bit of the byte @p offset behind @p mark turned.
std::string flipped(std::string file, const std::string& mark, std::size_t offset) {
    const std::size_t at = file.find(mark) + offset;
    file.at(at) = static_cast<char>(file.at(at) ^ 0x10);
    return file;
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(PngDamage, cut_short_anywhere_is_refused) {
    const TempFolder folder;
    const std::string in = writePortableMap(folder, "in.ppm", gradients(19, 13, 3));
    for (const char* options : {"", "-interlace PNG", "-depth 16", "-colors 5"}) {
        const std::string out = folder.file("out.png");
        runProgram("convert " + shellWord(in) + " " + options + " " + shellWord(out));
        const std::string file = contentOf(out);
        ASSERT_TRUE(loadBytes(file));
        for (std::size_t length = 0; length < file.size(); ++length)
            EXPECT_FALSE(refusalOf(file.substr(0, length)).empty()) << options << ' ' << length;
    }
}

TEST(PngDamage, a_critical_chunk_with_a_wrong_check_sum_is_refused) {
    EXPECT_EQ(pixelsOfSmall(small().build()), kSmallPixels);
    EXPECT_PRED2(contains, refusalOf(flipped(small().build(), "IHDR", 7)), "CRC");
    EXPECT_PRED2(contains, refusalOf(flipped(small().build(), "IDAT", 21)), "CRC");
    EXPECT_PRED2(contains, refusalOf(flipped(small().build(), "IEND", 4)), "CRC");
    PngBuilder palette = small();
    palette.colorType = 3;
    palette.before = chunk("PLTE", std::string(15, '\5'));
    EXPECT_PRED2(contains, refusalOf(flipped(palette.build(), "PLTE", 5)), "CRC");
}

TEST(PngDamage, an_ancillary_chunk_with_a_wrong_check_sum_is_left_out) {
    PngBuilder png = small();
    png.before = chunk("tEXt", std::string("Title\0text", 10)) +
                 chunk("pHYs", bigEndian(3937, 4) + bigEndian(3937, 4) + '\1');
    png.after = chunk("tEXt", std::string("Author\0text", 11));
    EXPECT_EQ(pixelsOfSmall(flipped(png.build(), "Title", 6)), kSmallPixels);
    EXPECT_EQ(pixelsOfSmall(flipped(png.build(), "Author", 7)), kSmallPixels);
    const Image image = loadBytes(flipped(png.build(), "pHYs", 5));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->GetResolutionUnit(), 1);
}

TEST(PngDamage, headers_that_cannot_be) {
    const auto refused = [](PngBuilder png) { return refusalOf(png.build()); };
    PngBuilder png = small();
    png.width = 0;
    EXPECT_PRED2(contains, refused(png), "byte 33");
    png = small();
    png.bits = 3;
    EXPECT_PRED2(contains, refused(png), "IHDR");
    png = small();
    png.colorType = 5;
    EXPECT_PRED2(contains, refused(png), "IHDR");
    png = small();
    png.colorType = 3;  // without a palette
    EXPECT_PRED2(contains, refused(png), "PLTE");
}

TEST(PngDamage, a_size_that_the_bytes_cannot_fill_is_refused_before_anything_is_allocated) {
    PngBuilder png = small();
    png.width = png.height = 16000;
    // 16000 rows of 16001 bytes at 1032 to 1: 248077, and the frame of 63.
    EXPECT_PRED2(contains, refusalOf(png.build()), "at least 248140 bytes");
    png.width = png.height = 0x7FFFFFFF;
    png.bits = 16;
    png.colorType = 6;
    EXPECT_PRED2(contains, refusalOf(png.build()), "pixels");
}

TEST(PngDamage, unsound_data_is_refused_where_it_is) {
    PngBuilder png = small();
    png.rows[3] = '\5';  // a filter that does not exist
    EXPECT_PRED2(contains, refusalOf(png.build()), "row 1: ");
    png = small();
    png.rows = png.rows.substr(0, 3);  // one row of two
    EXPECT_PRED2(contains, refusalOf(png.build()), "row 1: ");
    png = small();
    png.data = zlibStream(png.rows);
    png.data.back() = static_cast<char>(png.data.back() + 1);  // the stream's own check sum
    EXPECT_FALSE(refusalOf(png.build()).empty());
    png = small();
    png.data = "not zlib";
    EXPECT_PRED2(contains, refusalOf(png.build()), "row 0: ");
}

TEST(PngDamage, harmless_oddities_load) {
    PngBuilder png = small();
    png.rows += "more than needed";
    EXPECT_EQ(pixelsOfSmall(png.build()), kSmallPixels);
    png = small();
    png.data = zlibStream(png.rows) + "padding";
    EXPECT_EQ(pixelsOfSmall(png.build()), kSmallPixels);
    EXPECT_EQ(pixelsOfSmall(small().build() + "behind the end"), kSmallPixels);
    png = small();
    png.before = chunk("abCd", "a private chunk");
    png.after = chunk("zTXt", "not a text") + chunk("tIME", std::string(7, '\1')) +
                chunk("IDAT", "data apart from the other");
    EXPECT_EQ(pixelsOfSmall(png.build()), kSmallPixels);
}

TEST(PngDamage, an_unknown_critical_chunk_is_refused_wherever_it_stands) {
    const std::string unknown = chunk("ABCD", "what nobody knows");
    // A transparent grey takes the ordinary way instead of the fast one.
    for (const std::string& before : {std::string(), chunk("tRNS", std::string("\0\7", 2))}) {
        PngBuilder png = small();
        png.before = before;
        EXPECT_EQ(refusalOf(png.build()), "");
        png.before = before + unknown;
        EXPECT_PRED2(contains, refusalOf(png.build()), "ABCD");
        png.before = before;
        png.after = unknown;
        EXPECT_PRED2(contains, refusalOf(png.build()), "ABCD");
    }
}

TEST(PngDamage, data_in_pieces_of_a_byte_loads) {
    PngBuilder png = small();
    const std::string stream = zlibStream(png.rows);
    std::string pieces;
    for (std::size_t i = 1; i + 1 < stream.size(); ++i)
        pieces += chunk("IDAT", stream.substr(i, 1));
    png.data = stream.substr(0, 1);
    png.after = pieces + chunk("IDAT", "") + chunk("IDAT", stream.substr(stream.size() - 1));
    EXPECT_EQ(pixelsOfSmall(png.build()), kSmallPixels);
}

TEST(PngDamage, raster_information_needs_only_a_sound_header) {
    const TempFolder folder;
    KVRMMImageProp prop;
    KVRMMImageSize size;
    auto* const administrator = KVRMMRasterAdministrator::GetInstance();
    const std::string broken = folder.write("a.png", flipped(small().build(), "IDAT", 13));
    EXPECT_FALSE(refusalOf(contentOf(broken)).empty());
    EXPECT_EQ(administrator->GetImageInfo(broken, prop, size, 0), S_OK);
    EXPECT_EQ(size.width, 2);
    const std::string headless = folder.write("b.png", flipped(small().build(), "IHDR", 7));
    EXPECT_EQ(administrator->GetImageInfo(headless, prop, size, 0), E_FAIL);
}
