#pragma once

/// @file  Other programs as witnesses: pictures with known samples go to `convert` (ImageMagick) or
/// `oiiotool` (OpenImageIO) to be encoded, and files of ours to be decoded.
///
/// Example:
///     const RawPicture picture = gradients(31, 17, 3, 16);
///     const std::string in = writePortableMap(folder, "in.ppm", picture);
///     const std::string out = folder.file("a.png");
///     runProgram("convert " + shellWord(in) + " -interlace PNG " + shellWord(out));
///     EXPECT_EQ(decodedByConvert(out, "rgb", 16), picture.samples);

#include "tests/support/TempFolder.h"

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <sys/wait.h>

namespace rb::test {

/// @p text as one word of a shell command.
inline std::string shellWord(const std::string& text) {
    std::string word = "'";
    for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

/// Runs a shell command and returns what it printed on standard output. Throws, with everything
/// that it printed, when its exit status is not 0: the test fails and says why.
inline std::string runProgram(const std::string& command) {
    const TempFolder folder;
    const std::string errors = folder.file("errors");
    std::FILE* const pipe = popen(("{ " + command + "\n} 2>" + shellWord(errors)).c_str(), "r");
    if (!pipe) throw std::runtime_error("cannot start: " + command);
    std::string output;
    char block[65536];
    for (std::size_t got; (got = std::fread(block, 1, sizeof block, pipe)) > 0;) {
        output.append(block, got);
    }
    const int status = pclose(pipe);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::ifstream stream(errors, std::ios::binary);
        const std::string said{std::istreambuf_iterator<char>(stream), {}};
        throw std::runtime_error("failed: " + command + "\n" + output + "\n" + said);
    }
    return output;
}

/// Samples that a test knows: rows top first, channels side by side; 16-bit samples big endian.
struct RawPicture {
    int width = 0;
    int height = 0;
    int channels = 0;  ///< 1 grey, 2 grey and alpha, 3 RGB, 4 RGBA.
    int bits = 8;      ///< 8 or 16.
    std::string samples;

    /// The value of one sample.
    int at(int x, int y, int channel) const {
        const auto pixel = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                           static_cast<std::size_t>(x);
        const auto index =
            pixel * static_cast<std::size_t>(channels) + static_cast<std::size_t>(channel);
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(samples[i]); };
        return bits == 8 ? byte(index) : byte(2 * index) << 8 | byte(2 * index + 1);
    }
    void append(int value) {
        if (bits == 16) samples += static_cast<char>(value >> 8);
        samples += static_cast<char>(value & 0xff);
    }
};

/// A picture in which every channel runs differently and all sample values occur in a large one.
inline RawPicture gradients(int width, int height, int channels, int bits = 8) {
    RawPicture picture{width, height, channels, bits, {}};
    const int most = (1 << bits) - 1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int steps[] = {x * 7 + y * 3, 11 * y + x * y, x * 5 + 90 * y + 40,
                                 200 - x + 13 * y};
            for (int c = 0; c < channels; ++c) {
                picture.append((bits == 8 ? steps[c] : steps[c] * 257 + x * 31 + c) & most);
            }
        }
    }
    return picture;
}

/// Writes a PGM (1 channel) or PPM (3), which both programs read, or else a PAM, which only
/// `convert` reads. Returns the path.
inline std::string writePortableMap(const TempFolder& folder, const std::string& name,
                                    const RawPicture& picture) {
    static const char* const kTypes[] = {"", "GRAYSCALE", "GRAYSCALE_ALPHA", "RGB", "RGB_ALPHA"};
    const std::string w = std::to_string(picture.width), h = std::to_string(picture.height);
    const std::string most = picture.bits == 8 ? "255" : "65535";
    const std::string head = picture.channels == 1 ? "P5\n" + w + " " + h + "\n" + most + "\n"
                             : picture.channels == 3
                                 ? "P6\n" + w + " " + h + "\n" + most + "\n"
                                 : "P7\nWIDTH " + w + "\nHEIGHT " + h + "\nDEPTH " +
                                       std::to_string(picture.channels) + "\nMAXVAL " + most +
                                       "\nTUPLTYPE " + kTypes[picture.channels] + "\nENDHDR\n";
    return folder.write(name, head + picture.samples);
}

/// The samples of an image file as `convert` decodes them, without any conversion of colours.
/// @param channels  In `convert`'s words: "gray", "rgb", "rgba", "cmyk"; @p bits 8 or 16 (big
/// endian).
inline std::string decodedByConvert(const std::string& path, const std::string& channels,
                                    int bits = 8) {
    // A file that names its gamma would otherwise be converted to the usual one.
    const std::string space = channels == "gray"   ? " -set colorspace Gray"
                              : channels == "cmyk" ? ""
                                                   : " -set colorspace sRGB";
    return runProgram("convert " + shellWord(path) + space + " -depth " + std::to_string(bits) +
                      " -endian MSB " + channels + ":-");
}

/// The whole content of a file. Throws when it cannot be read.
inline std::string contentOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace rb::test
