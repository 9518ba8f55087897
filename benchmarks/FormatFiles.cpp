#include "benchmarks/FormatFiles.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <span>
#include <zstd.h>

namespace rb::benchmarks {
namespace {

constexpr std::size_t kPixels = kSide * kSide;
constexpr std::size_t kBlockHeaderBytes = 148;  // of a DDS file with a DXGI format

void check(bool isGood, const std::string& path) {
    if (isGood) return;
    std::fprintf(stderr, "cannot make %s\n", path.c_str());
    std::exit(1);
}

void write(const std::string& path, const std::string& head, const void* data, std::size_t size) {
    std::ofstream stream(path, std::ios::binary);
    stream << head;
    stream.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    check(stream.good(), path);
}

std::string number(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i);
    return text;
}

std::string numbers(std::initializer_list<std::uint64_t> values, int bytes = 4) {
    std::string text;
    for (const std::uint64_t value : values) text += number(value, bytes);
    return text;
}

/// A colour as one number, to compare it.
std::uint32_t colorAt(std::size_t pixel) {
    const std::uint8_t* const in = &drawing()[3 * pixel];
    return static_cast<std::uint32_t>(in[0] << 16 | in[1] << 8 | in[2]);
}

/// Softimage: red, green and blue together, in mixed runs; see PicReader.cpp.
void writePic(const std::string& path) {
    std::string file("\x53\x80\xF6\x34\x40\x60\0\0", 8);
    file += std::string(80, ' ') + "PICT" + std::string("\x10\0\x10\0\x3F\x80\0\0\0\3\0\0", 12) +
            std::string("\0\x08\x02\xE0", 4);
    const auto sameFrom = [](std::size_t pixel, std::size_t end) {
        std::size_t next = pixel + 1;
        while (next < end && colorAt(next) == colorAt(pixel)) ++next;
        return next - pixel;
    };
    const auto append = [&](std::size_t pixel, std::size_t count) {
        file.append(reinterpret_cast<const char*>(&drawing()[3 * pixel]), 3 * count);
    };
    for (std::size_t begin = 0; begin < kPixels; begin += kSide) {
        const std::size_t end = begin + kSide;
        for (std::size_t at = begin; at < end;) {
            std::size_t count = sameFrom(at, end);
            if (count > 128) {
                file += '\x80' + number(count >> 8, 1) + number(count, 1);
                append(at, 1);
            } else if (count > 1) {
                file += static_cast<char>(127 + count);
                append(at, 1);
            } else {
                while (count < 128 && at + count < end && sameFrom(at + count, end) == 1) ++count;
                file += static_cast<char>(count - 1);
                append(at, count);
            }
            at += count;
        }
    }
    write(path, file, nullptr, 0);
}

/// RGBA bytes of one level, compressed at the program's usual level; see Ktx2Reader.cpp.
void writeKtx2(const std::string& path) {
    std::vector<std::uint8_t> pixels(4 * kPixels, 255);
    for (std::size_t i = 0; i < kPixels; ++i) std::copy_n(&drawing()[3 * i], 3, &pixels[4 * i]);
    std::vector<char> packed(ZSTD_compressBound(pixels.size()));
    const std::size_t size =
        ZSTD_compress(packed.data(), packed.size(), pixels.data(), pixels.size(), 3);
    check(!ZSTD_isError(size), path);
    constexpr std::uint64_t kRgba8 = 37, kZstd = 2;
    std::string head("\xABKTX 20\xBB\r\n\x1A\n", 12);
    head += numbers({kRgba8, 1, kSide, kSide, 0, 0, 1, 1, kZstd}) + std::string(32, '\0');
    head += numbers({head.size() + 24, size, pixels.size()}, 8);
    write(path, head, packed.data(), size);
}

/// Random blocks; of BC7 all modes.
void writeBlocks(const std::string& path, std::uint64_t dxgiFormat, std::size_t blockBytes) {
    constexpr std::uint64_t kBc7 = 98;
    std::mt19937 random(1);
    std::vector<std::uint8_t> blocks(kPixels / 16 * blockBytes);
    for (std::uint8_t& byte : blocks) byte = static_cast<std::uint8_t>(random());
    for (std::size_t i = 0; dxgiFormat == kBc7 && i < blocks.size(); i += blockBytes) {
        const unsigned mode = random() % 8;
        blocks[i] = static_cast<std::uint8_t>((blocks[i] & ~((2U << mode) - 1)) | 1U << mode);
    }
    std::string head = "DDS " + numbers({124, 0x1007, kSide, kSide, 0, 0, 1});
    head += std::string(44, '\0') + numbers({32, 4}) + "DX10" + std::string(20, '\0');
    head += numbers({0x1000, 0, 0, 0, 0}) + numbers({dxgiFormat, 3, 0, 1, 0});
    write(path, head, blocks.data(), blocks.size());
}

/// The command that makes @p name; empty when no program can.
std::string commandFor(const std::string& name) {
    static const std::map<std::string, std::string> commands{
        {"drawing.24.bmp", "oiiotool IN -o"},
        {"drawing.rle8.bmp", "convert IN -type Palette -compress RLE BMP3:"},
        {"drawing.raw.tga", "oiiotool IN --compression none -o"},
        {"drawing.rle.tga", "oiiotool IN --compression rle -o"},
        {"drawing.raw.psd", "convert IN -type TrueColor -compress None"},
        {"drawing.rle.psd", "convert IN -type TrueColor -compress RLE"},
        {"drawing.raw.sgi", "convert IN -type TrueColor -compress None"},
        {"drawing.rle.sgi", "convert IN -type TrueColor -compress RLE"},
        {"drawing.bgra.dds",
         "convert IN -type TrueColorAlpha -alpha on -define dds:compression=none "
         "-define dds:mipmaps=0"},
    };
    const auto found = commands.find(name);
    return found == commands.end() ? std::string() : found->second;
}

void runCommand(std::string command, const std::string& in, const std::string& out) {
    command.replace(command.find("IN"), 2, "'" + in + "'");
    command += (command.ends_with(':') ? "'" : " '") + out + "'";
    check(std::system(command.c_str()) == 0, out);
}

void make(const std::string& name, const std::string& folder, const std::string& path) {
    if (const std::string command = commandFor(name); !command.empty()) {
        const std::string in = folder + "/drawing.ppm";
        if (!std::filesystem::exists(in))
            write(in, "P6 4096 4096 255\n", drawing().data(), drawing().size());
        runCommand(command, in, path);
    } else if (name.ends_with(".pic")) {
        writePic(path);
    } else if (name.ends_with(".ktx2")) {
        writeKtx2(path);
    } else if (name == "blocks-bc1.dds") {
        writeBlocks(path, 71, 8);
    } else {
        writeBlocks(path, 98, 16);
    }
}

}  // namespace

const std::vector<std::uint8_t>& drawing() {
    static const std::vector<std::uint8_t> pixels = [] {
        constexpr std::size_t kTile = 64, kColors = 64;
        std::vector<std::uint8_t> made;
        made.reserve(3 * kPixels);
        std::minstd_rand random(7);
        for (std::size_t y = 0; y < kSide; ++y)
            for (std::size_t x = 0; x < kSide; ++x) {
                const double shape = std::sin(static_cast<double>(x) * 0.004) *
                                     std::cos(static_cast<double>(y) * 0.006);
                const bool isNoise = (x / kTile * 3 + y / kTile) % 8 == 0;
                const std::size_t color =
                    isNoise ? random() % kColors : static_cast<std::size_t>(32 + 31 * shape);
                for (const std::size_t value : {4 * color, 255 - 3 * color, 37 * color})
                    made.push_back(static_cast<std::uint8_t>(value));
            }
        return made;
    }();
    return pixels;
}

std::string formatFile(const std::string& name) {
    const auto folder = std::filesystem::temp_directory_path() / "rb-benchmark";
    std::filesystem::create_directories(folder);
    const std::string path = (folder / name).string();
    if (!std::filesystem::exists(path)) {
        // Under its name when it is complete.
        const std::string part = (folder / ("part-" + name)).string();
        make(name, folder.string(), part);
        std::filesystem::rename(part, path);
    }
    return path;
}

std::vector<std::byte> blocksOf(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::string file{std::istreambuf_iterator<char>(stream), {}};
    const auto all = std::as_bytes(std::span(file)).subspan(kBlockHeaderBytes);
    return {all.begin(), all.end()};
}

}  // namespace rb::benchmarks
