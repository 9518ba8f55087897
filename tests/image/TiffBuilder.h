#pragma once

/// @file  TIFF files made by hand, field by field.
///
/// Example: a grey picture of 2 x 1 pixels.
///     TiffBuilder tiff(2, 1);
///     tiff.block("\x10\x20"s).build();

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace rb::test {

/// Begins as an uncompressed 8-bit grey picture without resolution; fields are set or replaced.
class TiffBuilder {
public:
    enum Type : unsigned {
        kByte = 1,
        kText = 2,
        kShort = 3,
        kLong = 4,
        kRational = 5,
        kUndefined = 7
    };

    TiffBuilder(unsigned width, unsigned height, bool bigEndian = false) : m_big(bigEndian) {
        set(256, kLong, {width}).set(257, kLong, {height}).set(258, kShort, {8});
        set(259, kShort, {1}).set(262, kShort, {1}).set(277, kShort, {1}).set(278, kLong, {height});
    }

    TiffBuilder& set(unsigned tag, Type type, const std::vector<std::uint32_t>& values) {
        std::string bytes;
        for (std::uint32_t value : values)
            bytes += number(value, type == kShort                                         ? 2
                                   : type == kByte || type == kText || type == kUndefined ? 1
                                                                                          : 4);
        return raw(tag, type,
                   static_cast<unsigned>(type == kRational ? values.size() / 2 : values.size()),
                   bytes);
    }
    TiffBuilder& raw(unsigned tag, Type type, unsigned count, const std::string& bytes) {
        m_fields[tag] = {type, count, bytes};
        return *this;
    }
    /// A field whose value stands at byte @p offset, where something else stands already.
    TiffBuilder& elsewhere(unsigned tag, Type type, unsigned count, std::uint64_t offset) {
        return raw(tag, type, count, number(offset, wordBytes()));
    }
    TiffBuilder& erase(unsigned tag) {
        m_fields.erase(tag);
        return *this;
    }
    /// @p samples samples of @p bits bits; @p format 1 unsigned, 2 signed, 3 floating point.
    TiffBuilder& samples(unsigned count, unsigned bits, unsigned format = 1) {
        set(277, kShort, {count});
        set(258, kShort, std::vector<std::uint32_t>(count, bits));
        return set(339, kShort, std::vector<std::uint32_t>(count, format));
    }
    /// Adds the bytes of a strip, or of a tile after `tiles`.
    TiffBuilder& block(const std::string& bytes) {
        m_blocks.push_back(bytes);
        return *this;
    }
    TiffBuilder& tiles(unsigned width, unsigned height) {
        m_tiled = true;
        return erase(278).set(322, kLong, {width}).set(323, kLong, {height});
    }
    /// Makes a BigTIFF file. Call it before what depends on it: `elsewhere`.
    TiffBuilder& bigTiff() {
        m_bigTiff = true;
        return *this;
    }
    /// Bytes of offsets and of values that stand in the directory itself.
    int wordBytes() const { return m_bigTiff ? 8 : 4; }
    /// Where the first block stands.
    std::uint64_t headerBytes() const { return m_bigTiff ? 16 : 8; }
    /// A number of 1 to 8 bytes in the byte order of the file.
    std::string number(std::uint64_t value, int bytes) const {
        std::string text;
        for (int i = 0; i < bytes; ++i)
            text += static_cast<char>(value >> 8 * (m_big ? bytes - 1 - i : i));
        return text;
    }
    std::string numbers(const std::vector<std::uint64_t>& values, int bytes) const {
        std::string text;
        for (std::uint64_t value : values) text += number(value, bytes);
        return text;
    }

    /// Blocks follow the header, then come the directory and the values that do not fit into it.
    std::string build() {
        const int word = wordBytes();
        const auto inlineBytes = static_cast<std::size_t>(word);
        std::string file = m_big ? "MM" : "II";
        file += m_bigTiff ? number(43, 2) + number(8, 2) + number(0, 2) : number(42, 2);
        file += number(0, word);
        std::vector<std::uint32_t> offsets, counts;
        for (const std::string& block : m_blocks) {
            offsets.push_back(static_cast<std::uint32_t>(file.size()));
            counts.push_back(static_cast<std::uint32_t>(block.size()));
            file += block;
        }
        if (!m_blocks.empty()) {
            m_fields.emplace(m_tiled ? 324 : 273, field(offsets));
            m_fields.emplace(m_tiled ? 325 : 279, field(counts));
        }
        if (file.size() % 2) file += '\0';
        file.replace(headerBytes() - inlineBytes, inlineBytes, number(file.size(), word));
        std::string rest;
        const int countBytes = m_bigTiff ? 8 : 2;
        const std::size_t restBegins = file.size() + static_cast<std::size_t>(countBytes) +
                                       (4 + 2 * inlineBytes) * m_fields.size() + inlineBytes;
        file += number(m_fields.size(), countBytes);
        for (const auto& [tag, field] : m_fields) {
            file += number(tag, 2) + number(field.type, 2) + number(field.count, word);
            if (field.bytes.size() <= inlineBytes) {
                file += field.bytes + std::string(inlineBytes - field.bytes.size(), '\0');
            } else {
                file += number(restBegins + rest.size(), word);
                rest += field.bytes + std::string(field.bytes.size() % 2, '\0');
            }
        }
        return file + number(0, word) + rest;
    }

private:
    struct Field {
        Type type;
        unsigned count;
        std::string bytes;
    };
    Field field(const std::vector<std::uint32_t>& values) const {
        std::string bytes;
        for (std::uint32_t value : values) bytes += number(value, 4);
        return {kLong, static_cast<unsigned>(values.size()), bytes};
    }

    bool m_big;
    bool m_bigTiff = false;
    bool m_tiled = false;
    std::map<unsigned, Field> m_fields;
    std::vector<std::string> m_blocks;
};

}  // namespace rb::test
