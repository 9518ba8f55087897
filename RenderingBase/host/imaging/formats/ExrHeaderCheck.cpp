// The headers of an OpenEXR file:
//
//   76 2F 31 01                 magic number
//   02 00 00 00                 version and flags; 0x1000: several parts
//   "channels" 00 "chlist" 00   an attribute: name, type,
//   37 00 00 00 ...             size of the value, value
//   00                          end of the header; with several parts, after the last one another
//   00
//
// Source: "OpenEXR File Layout" (openexr.com).

#include "RenderingBase/host/imaging/formats/ExrHeaderCheck.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace rb::imaging {
namespace {

class HeaderWalk {
public:
    explicit HeaderWalk(ByteSource& source) : m_source(source) {}
    ReadResult walk();

private:
    ReadResult end() const { return refuse("a header that ends", "the end of the file", where()); }
    std::string where() const { return "byte " + std::to_string(m_offset); }
    std::uint64_t left() const { return m_source.size() - std::min(m_source.size(), m_offset); }
    bool number(std::uint32_t& value) {
        std::array<unsigned char, 4> bytes{};
        if (m_source.read(m_offset, bytes.data(), bytes.size()) != bytes.size()) return false;
        m_offset += bytes.size();
        value = 0;
        for (std::size_t i = bytes.size(); i-- > 0;) value = value << 8 | bytes[i];
        return true;
    }
    bool text(std::string& value);
    ReadResult attribute(const std::string& type, std::uint32_t size);
    ReadResult texts(std::uint32_t size);
    ReadResult preview(std::uint32_t size);

    ByteSource& m_source;
    std::uint64_t m_offset = 0;
};

/// A name of up to 255 bytes with a zero behind it.
bool HeaderWalk::text(std::string& value) {
    std::array<char, 256> bytes{};
    const std::size_t got = m_source.read(m_offset, bytes.data(), bytes.size());
    const void* const zero = std::memchr(bytes.data(), 0, got);
    if (!zero) return false;
    value = bytes.data();
    m_offset += value.size() + 1;
    return true;
}

/// A list of texts, each with its length.
ReadResult HeaderWalk::texts(std::uint32_t size) {
    const std::uint64_t stop = m_offset + size;
    while (m_offset < stop) {
        std::uint32_t length = 0;
        const std::string start = where();
        if (!number(length)) return end();
        if (m_offset > stop || length > stop - m_offset)
            return refuse("a text within its attribute", std::to_string(length) + " bytes", start);
        m_offset += length;
    }
    return {};
}

/// A small picture: width, height, four bytes a pixel.
ReadResult HeaderWalk::preview(std::uint32_t size) {
    std::uint32_t width = 0, height = 0;
    const std::string start = where();
    if (size < 8 || !number(width) || !number(height)) return end();
    const std::uint64_t pixels = std::uint64_t{width} * height;
    if (pixels != (size - 8) / 4 || (size - 8) % 4)
        return refuse("a preview of " + std::to_string((size - 8) / 4) + " pixels",
                      std::to_string(pixels), start);
    m_offset += size - 8;
    return {};
}

ReadResult HeaderWalk::attribute(const std::string& type, std::uint32_t size) {
    if (size > left())
        return refuse("an attribute of " + std::to_string(size) + " bytes",
                      std::to_string(left()) + " bytes", where());
    if (type == "stringvector") return texts(size);
    if (type == "preview") return preview(size);
    m_offset += size;
    return {};
}

ReadResult HeaderWalk::walk() {
    constexpr std::uint32_t kSeveralParts = 0x1000;
    std::uint32_t magic = 0, version = 0, size = 0;
    if (!number(magic) || !number(version)) return end();
    std::string name, type;
    for (bool inPart = false;;) {
        if (!text(name)) return end();
        if (name.empty()) {
            if (!(version & kSeveralParts) || !inPart) return {};
            inPart = false;
            continue;
        }
        inPart = true;
        if (!text(type) || !number(size)) return end();
        if (ReadResult refusal = attribute(type, size)) return refusal;
    }
}

}  // namespace

ReadResult checkExrHeaders(ByteSource& source) { return HeaderWalk(source).walk(); }

}  // namespace rb::imaging
