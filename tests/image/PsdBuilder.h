#pragma once

/// @file  PSD and PSB files made by hand.
///
/// Example: two red pixels, with run lengths.
///     PsdBuilder psd(2, 1);
///     psd.planes({{255, 255}, {0, 0}, {0, 0}});
///     psd.compression = 1;
///     psd.build();

#include "tests/image/FileParts.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rb::test {

/// The parts of a file. A test changes what it is about.
struct PsdBuilder {
    /// One channel: the bytes of all its rows.
    using Plane = std::vector<int>;

    PsdBuilder(std::uint64_t w, std::uint64_t h, int colorMode = 3, std::uint64_t bits = 8)
        : width(w), height(h), mode(colorMode), depth(bits) {}

    std::uint64_t version = 1;
    std::uint64_t width, height;
    int mode;
    std::uint64_t depth;
    std::uint64_t channels = 0;
    int compression = 0;
    std::string palette{}, resources{}, layers{};
    std::string data{};  ///< Behind the two bytes of the compression.

    /// Bytes of those lengths that are longer in a PSB file.
    int longLength() const { return version == 2 ? 8 : 4; }

    PsdBuilder& resource(unsigned id, const std::string& content, const std::string& name = {}) {
        std::string pascal = static_cast<char>(name.size()) + name;
        if (pascal.size() % 2) pascal += '\0';
        resources += "8BIM" + bigEndian(id, 2) + pascal + bigEndian(content.size(), 4) + content;
        if (content.size() % 2) resources += '\0';
        return *this;
    }
    /// A section of layers that says how many there are, and more blocks behind it.
    PsdBuilder& layerCount(int count, const std::string& blocks = {}) {
        const std::string info =
            count ? bigEndian(static_cast<std::uint16_t>(count), 2) + std::string(6, '\0') : "";
        layers = bigEndian(info.size(), longLength()) + info + bigEndian(0, 4) + blocks;
        return *this;
    }
    /// A block behind the layers.
    static std::string block(const std::string& key, const std::string& content,
                             int lengthBytes = 4, const std::string& signature = "8BIM") {
        return signature + key + bigEndian(content.size(), lengthBytes) + content;
    }
    PsdBuilder& bytes(const std::string& content) {
        data = content;
        return *this;
    }

    /// Sets channels and data, compressed as `compression` says.
    PsdBuilder& planes(const std::vector<Plane>& planes) {
        channels = planes.size();
        std::string rows, counts;
        for (const Plane& plane : planes)
            for (std::size_t y = 0; y < height; ++y) {
                const std::size_t rowBytes = plane.size() / height;
                std::string row;
                for (std::size_t x = 0; x < rowBytes; ++x)
                    row += static_cast<char>(plane[y * rowBytes + x]);
                if (compression == 1) row = packed(row);
                if (compression == 3) row = differences(row);
                counts += bigEndian(row.size(), version == 2 ? 4 : 2);
                rows += row;
            }
        data = compression == 1 ? counts + rows : compression >= 2 ? zlibStream(rows) : rows;
        return *this;
    }

    std::string build() const {
        return "8BPS" + bigEndian(version, 2) + std::string(6, '\0') + bigEndian(channels, 2) +
               bigEndian(height, 4) + bigEndian(width, 4) + bigEndian(depth, 2) +
               bigEndian(static_cast<std::uint64_t>(mode), 2) + bigEndian(palette.size(), 4) +
               palette + bigEndian(resources.size(), 4) + resources +
               bigEndian(layers.size(), longLength()) + layers +
               bigEndian(static_cast<std::uint64_t>(compression), 2) + data;
    }

    /// Runs of one byte by turns as copies and as repetitions, with bytes 128 between: nobody
    /// writes that, everybody must read it.
    static std::string packed(const std::string& row) {
        std::string runs;
        for (std::size_t i = 0; i < row.size(); ++i) {
            std::size_t same = 1;
            while (same < 128 && i + same < row.size() && row[i + same] == row[i]) ++same;
            if (same > 1)
                runs += static_cast<char>(257 - same);
            else
                runs += i % 2 ? std::string(1, '\0') : std::string("\x80\0", 2);
            runs += row[i];
            i += same - 1;
        }
        return runs;
    }

    /// What compression 3 stores of a row.
    std::string differences(const std::string& row) const {
        const auto at = [](const std::string& text, std::size_t i) -> int {
            return static_cast<unsigned char>(text[i]);
        };
        std::string ordered = row, result;
        if (depth == 32) {
            const std::size_t samples = row.size() / 4;
            for (std::size_t i = 0; i < row.size(); ++i)
                ordered[i] = row[i % samples * 4 + i / samples];
        }
        if (depth == 16) {
            int last = 0;
            for (std::size_t i = 0; i < row.size(); i += 2) {
                const int value = at(row, i) << 8 | at(row, i + 1);
                result += bigEndian(static_cast<std::uint16_t>(value - last), 2);
                last = value;
            }
            return result;
        }
        for (std::size_t i = 0; i < ordered.size(); ++i)
            result += static_cast<char>(at(ordered, i) - (i ? at(ordered, i - 1) : 0));
        return result;
    }
};

}  // namespace rb::test
