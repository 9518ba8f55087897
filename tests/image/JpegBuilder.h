#pragma once

/// @file  JPEG files of every kind that the bare codec library can write, and segments by hand.

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <string>

namespace rb::test {

/// How a picture is to be encoded. Quality 100 keeps areas of one colour exactly.
struct JpegRecipe {
    J_COLOR_SPACE samples = JCS_RGB;  ///< What the samples are.
    J_COLOR_SPACE stored = JCS_YCbCr;
    int components = 3;
    int quality = 100;
    int chroma = 1;  ///< 2: colours at half the resolution in both directions.
    bool progressive = false;
    bool arithmetic = false;
    bool adobe = true;  ///< Whether the Adobe segment is written where the colours call for it.
    unsigned restartBlocks = 0;
};

/// The codec ends the program when it cannot.
inline std::string encodeJpeg(int width, int height, const std::string& samples,
                              const JpegRecipe& recipe) {
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &memory, &size);
    codec.image_width = static_cast<JDIMENSION>(width);
    codec.image_height = static_cast<JDIMENSION>(height);
    codec.input_components = recipe.components;
    codec.in_color_space = recipe.samples;
    jpeg_set_defaults(&codec);
    jpeg_set_colorspace(&codec, recipe.stored);
    if (!recipe.adobe) codec.write_Adobe_marker = FALSE;
    jpeg_set_quality(&codec, recipe.quality, TRUE);
    for (int i = 0; i < recipe.components; ++i)
        codec.comp_info[i].h_samp_factor = codec.comp_info[i].v_samp_factor =
            i == 0 || i == 3 ? recipe.chroma : 1;
    if (recipe.progressive) jpeg_simple_progression(&codec);
    codec.arith_code = recipe.arithmetic ? TRUE : FALSE;
    codec.restart_interval = recipe.restartBlocks;
    jpeg_start_compress(&codec, TRUE);
    const auto* row = reinterpret_cast<const JSAMPLE*>(samples.data());
    for (int y = 0; y < height; ++y, row += width * recipe.components) {
        JSAMPROW rows[] = {const_cast<JSAMPLE*>(row)};
        jpeg_write_scanlines(&codec, rows, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    std::string file(reinterpret_cast<const char*>(memory), size);
    std::free(memory);
    return file;
}

/// A marker with its segment.
inline std::string segment(int marker, const std::string& content) {
    const std::size_t length = content.size() + 2;
    return std::string{'\xff', static_cast<char>(marker), static_cast<char>(length >> 8),
                       static_cast<char>(length & 0xFF)} +
           content;
}

/// @p file with @p segments behind its first segment (JFIF or Adobe).
inline std::string withSegments(std::string file, const std::string& segments) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(file.at(i)); };
    const std::size_t end = 4 + static_cast<std::size_t>(byte(4) << 8 | byte(5));
    return file.insert(end, segments);
}

/// Where the first segment with @p marker stands.
inline std::size_t placeOf(const std::string& file, int marker) {
    const std::size_t at = file.find(std::string{'\xff', static_cast<char>(marker)});
    EXPECT_NE(at, std::string::npos);
    return at;
}

}  // namespace rb::test
