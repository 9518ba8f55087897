// JPEG files that are not as they should be: which ones are refused, for which reason, and which
// ones load.

#include "tests/image/ImageFiles.h"
#include "tests/image/JpegBuilder.h"
#include "tests/support/ForeignPrograms.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace rb::test;
using namespace std::string_literals;

constexpr int kSide = 40;

std::string encoded(JpegRecipe recipe = {}) {
    const bool ink = recipe.samples == JCS_CMYK;
    recipe.quality = 60;
    return encodeJpeg(kSide, kSide, gradients(kSide, kSide, ink ? 4 : 3).samples, recipe);
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

constexpr int kBaselineFrame = 0xC0;

/// @p file with other bytes at @p offset of its frame segment, whose marker is at 0.
std::string withFrame(std::string file, std::size_t offset, const std::string& bytes) {
    return file.replace(placeOf(file, kBaselineFrame) + offset, bytes.size(), bytes);
}

/// A progressive picture of one block with @p scans scans: the first has the mean, the others
/// have nothing.
std::string manyScans(int scans) {
    const std::string oneCode(1, '\1'), rest(15, '\0');
    std::string file = "\xff\xd8" + segment(0xDB, "\0"s + std::string(64, '\1')) +
                       segment(0xC2, "\x08\0\x08\0\x08\1\1\x11\0"s) +
                       segment(0xC4, "\0"s + oneCode + rest + "\0"s) +   // the mean: no difference
                       segment(0xC4, "\x10"s + oneCode + rest + "\0"s);  // the others: end of block
    for (int i = 0; i < scans; ++i)
        file += segment(0xDA, i ? "\1\1\0\1\x3f\0"s : "\1\1\0\0\0\0"s) + "\x7f"s;
    return file + "\xff\xd9";
}

}  // namespace

TEST(JpegDamage, cut_short_anywhere_is_refused) {
    for (const JpegRecipe& recipe :
         {JpegRecipe{}, JpegRecipe{.chroma = 2}, JpegRecipe{.progressive = true},
          JpegRecipe{.progressive = true, .arithmetic = true}, JpegRecipe{.arithmetic = true},
          JpegRecipe{.samples = JCS_CMYK, .stored = JCS_YCCK, .components = 4}}) {
        const std::string file = encoded(recipe);
        ASSERT_TRUE(loadBytes(file));
        for (std::size_t length = 0; length < file.size(); ++length)
            EXPECT_FALSE(refusalOf(file.substr(0, length)).empty()) << length;
    }
}

TEST(JpegDamage, the_reason_says_where) {
    const std::string file = encoded();
    EXPECT_PRED2(contains, refusalOf(file.substr(0, 100)), "byte 100: ");
    EXPECT_PRED2(contains, refusalOf(file.substr(0, file.size() - 300)), "row ");
}

TEST(JpegDamage, a_scan_that_ends_early_is_refused) {
    for (const bool progressive : {false, true}) {
        const std::string file = encoded({.progressive = progressive});
        const std::size_t begin = placeOf(file, 0xDA);
        const std::string half = file.substr(0, begin + (file.size() - begin) / 2);
        EXPECT_FALSE(refusalOf(half + "\xff\xd9").empty());
    }
}

TEST(JpegDamage, a_missing_restart_is_refused) {
    const std::string file = encoded({.restartBlocks = 2});
    ASSERT_TRUE(loadBytes(file));
    std::string damaged = file;
    damaged[placeOf(file, 0xD1) + 1] = '\xd5';
    EXPECT_FALSE(refusalOf(damaged).empty());
}

TEST(JpegDamage, bytes_between_segments_and_behind_the_end_are_harmless) {
    const std::string file = encoded(), pixels = rawPixels(loadBytes(file));
    ASSERT_FALSE(pixels.empty());
    EXPECT_EQ(rawPixels(loadBytes(withSegments(file, "junk"))), pixels);
    EXPECT_EQ(rawPixels(loadBytes(file.substr(0, file.size() - 2) + "junk\xff\xd9")), pixels);
    EXPECT_EQ(rawPixels(loadBytes(file + "another file")), pixels);
    EXPECT_EQ(rawPixels(loadBytes(withSegments(file, "\xff\xff\xff" + segment(0xEF, "x")))),
              pixels);
    // What stands behind the junk still counts.
    const std::string exif =
        "Exif\0\0II*\0\x08\0\0\0\2\0"
        "\x1a\1\3\0\1\0\0\0\x48\0\0\0\x1b\1\3\0\1\0\0\0\x48\0\0\0"s;
    EXPECT_EQ(loadBytes(withSegments(file, "junk" + segment(0xE1, exif)))->GetXResolution(), 72);
}

TEST(JpegDamage, kinds_that_are_not_read_are_named) {
    const std::string file = encoded();
    EXPECT_PRED2(contains, refusalOf(withFrame(file, 4, "\x0c")), "precision 12");
    EXPECT_PRED2(contains, refusalOf(withFrame(file, 1, "\xc3")), "0xc3");  // lossless
    const std::string two =
        encodeJpeg(8, 8, std::string(128, '\7'),
                   {.samples = JCS_UNKNOWN, .stored = JCS_UNKNOWN, .components = 2});
    EXPECT_PRED2(contains, refusalOf(two), "1, 3 or 4 components, found 2");
}

TEST(JpegDamage, frames_that_cannot_be_are_refused) {
    const std::string file = encoded();
    EXPECT_FALSE(refusalOf(withFrame(file, 5, "\0\0"s)).empty());  // no rows
    EXPECT_FALSE(refusalOf(withFrame(file, 7, "\0\0"s)).empty());  // no columns
    EXPECT_FALSE(refusalOf(withFrame(file, 2, "\0\3"s)).empty());  // no content
    EXPECT_FALSE(refusalOf(withFrame(file, 9, "\4")).empty());     // four components of three
    EXPECT_FALSE(refusalOf(withFrame(file, 11, "\0"s)).empty());   // no samples
    EXPECT_FALSE(refusalOf(withFrame(file, 12, "\3")).empty());    // a table that is not there
}

TEST(JpegDamage, a_size_that_the_bytes_cannot_fill_is_refused_before_anything_is_allocated) {
    // 2000 x 2000 blocks of three components at two bits or one.
    const std::string size = "\x3e\x80\x3e\x80";  // 16000 x 16000
    EXPECT_PRED2(contains, refusalOf(withFrame(encoded(), 5, size)), "at least 3000000 bytes");
    std::string progressive = encoded({.progressive = true});
    progressive.replace(placeOf(progressive, 0xC2) + 5, 4, size);
    EXPECT_PRED2(contains, refusalOf(progressive), "at least 1500000 bytes");
}

TEST(JpegDamage, scans_without_end_are_refused) {
    EXPECT_TRUE(loadBytes(manyScans(12)));
    EXPECT_TRUE(loadBytes(manyScans(500)));
    EXPECT_PRED2(contains, refusalOf(manyScans(501)), "more than 500 scans");
    EXPECT_PRED2(contains, refusalOf(manyScans(100000)), "more than 500 scans");
}

TEST(JpegDamage, segments_without_number_cost_no_time) {
    std::string segments;
    for (int i = 0; i < 2'000'000; ++i) segments += "\xff\xe1\0\2"s;
    const std::string file = encoded();
    EXPECT_EQ(rawPixels(loadBytes(withSegments(file, segments))), rawPixels(loadBytes(file)));
}

TEST(JpegDamage, raster_information_needs_only_a_sound_header) {
    const TempFolder folder;
    const std::string file = encoded();
    KVRMMImageProp prop;
    KVRMMImageSize size;
    auto* const administrator = KVRMMRasterAdministrator::GetInstance();
    const std::string broken = folder.write("a.jpg", file.substr(0, file.size() - 300));
    EXPECT_FALSE(refusalOf(contentOf(broken)).empty());
    ASSERT_EQ(administrator->GetImageInfo(broken, prop, size, 0), S_OK);
    EXPECT_EQ(size.width, kSide);
    EXPECT_EQ(prop.channels, 3);
    EXPECT_EQ(prop.bitsPerChannel, 8);
    EXPECT_EQ(prop.fileFormat, KVRUnicodeString("jpg"));
    const std::string headless = folder.write("b.jpg", file.substr(0, 100));
    EXPECT_EQ(administrator->GetImageInfo(headless, prop, size, 0), E_FAIL);
}
