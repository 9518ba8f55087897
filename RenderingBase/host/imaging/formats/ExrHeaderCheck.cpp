// The headers of an OpenEXR file:
//
//   76 2F 31 01                 magic number
//   02 00 00 00                 version and flags; 0x1000: several parts
//   "channels" 00 "chlist" 00   an attribute: name, type,
//   37 00 00 00 ...             size of the value, value
//   00                          end of the header; with several parts, one more behind the last one
//
// Source: "OpenEXR File Layout" (openexr.com).

#include "RenderingBase/host/imaging/formats/ExrHeaderCheck.h"

#include "RenderingBase/host/imaging/formats/BufferedSource.h"
#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace rb::imaging {
namespace {

/// Types whose values the library reads by their type alone, whatever size is declared.
struct FixedType {
    std::string_view name;
    std::uint32_t bytes;
};

constexpr std::array<FixedType, 24> kFixedTypes{{
    {"box2f", 16},
    {"box2i", 16},
    {"chromaticities", 32},
    {"compression", 1},
    {"double", 8},
    {"envmap", 1},
    {"deepImageState", 1},
    {"float", 4},
    {"int", 4},
    {"keycode", 28},
    {"lineOrder", 1},
    {"m33f", 36},
    {"m33d", 72},
    {"m44f", 64},
    {"m44d", 128},
    {"rational", 8},
    {"tiledesc", 9},
    {"timecode", 8},
    {"v2f", 8},
    {"v2i", 8},
    {"v2d", 16},
    {"v3f", 12},
    {"v3i", 12},
    {"v3d", 24},
}};

class HeaderWalk {
public:
    explicit HeaderWalk(ByteSource& source) : m_input(source), m_size(source.size()) {}
    ReadResult walk();

private:
    ReadResult end() const {
        return refuse("a header that ends", "the end of the file", placeText(m_input.position()));
    }
    bool number(std::uint32_t& value) {
        std::array<unsigned char, 4> bytes{};
        if (m_input.read(bytes.data(), bytes.size()) != bytes.size()) return false;
        value = little32(bytes.data());
        return true;
    }
    ReadResult name(std::string& value);
    ReadResult attribute();
    ReadResult content(const std::string& type, std::uint32_t size);
    ReadResult texts(std::uint32_t size);
    ReadResult preview(std::uint32_t size);
    ReadResult channels(std::uint32_t size);

    BufferedSource m_input;
    std::uint64_t m_size;
};

/// Up to 255 bytes with a zero behind them.
ReadResult HeaderWalk::name(std::string& value) {
    constexpr std::size_t kLongest = 255;
    const std::uint64_t start = m_input.position();
    value.clear();
    for (int byte = m_input.get(); byte != 0; byte = m_input.get()) {
        if (byte < 0) return end();
        if (value.size() == kLongest)
            return refuse("a name of at most 255 bytes", "a longer one", placeText(start));
        value += static_cast<char>(byte);
    }
    return {};
}

/// A list of texts, each with its length.
ReadResult HeaderWalk::texts(std::uint32_t size) {
    const std::uint64_t stop = m_input.position() + size;
    while (m_input.position() < stop) {
        std::uint32_t length = 0;
        const std::uint64_t start = m_input.position();
        if (!number(length)) return end();
        if (m_input.position() > stop || length > stop - m_input.position())
            return refuse("a text within its attribute", bytesText(length), placeText(start));
        m_input.skip(length);
    }
    return {};
}

/// A small picture: width, height, four bytes a pixel.
ReadResult HeaderWalk::preview(std::uint32_t size) {
    std::uint32_t width = 0, height = 0;
    const std::uint64_t start = m_input.position();
    if (size < 8 || !number(width) || !number(height)) return end();
    const std::uint64_t pixels = std::uint64_t{width} * height;
    if (pixels != (size - 8) / 4 || (size - 8) % 4)
        return refuse("a preview of " + std::to_string((size - 8) / 4) + " pixels",
                      std::to_string(pixels), placeText(start));
    m_input.skip(size - 8);
    return {};
}

/// Channels up to an empty name: a name and 16 bytes each.
ReadResult HeaderWalk::channels(std::uint32_t size) {
    constexpr std::uint64_t kBehindName = 16;
    const std::uint64_t start = m_input.position(), stop = start + size;
    for (std::string channel;;) {
        if (ReadResult refusal = name(channel)) return refusal;
        if (channel.empty()) break;
        m_input.skip(kBehindName);
    }
    const std::uint64_t found = m_input.position() - start;
    if (m_input.position() == stop) return {};
    return refuse("a list of channels of " + bytesText(size), bytesText(found), placeText(start));
}

ReadResult HeaderWalk::content(const std::string& type, std::uint32_t size) {
    const std::uint64_t place = m_input.position(), left = m_size - std::min(m_size, place);
    if (size > left)
        return refuse("an attribute of " + bytesText(size), bytesText(left), placeText(place));
    if (type == "stringvector") return texts(size);
    if (type == "preview") return preview(size);
    if (type == "chlist") return channels(size);
    for (const FixedType& fixed : kFixedTypes)
        if (type == fixed.name && size != fixed.bytes)
            return refuse(type + " of " + bytesText(fixed.bytes), bytesText(size),
                          placeText(place));
    m_input.skip(size);
    return {};
}

/// What stands behind the name of an attribute.
ReadResult HeaderWalk::attribute() {
    std::string type;
    std::uint32_t size = 0;
    if (ReadResult refusal = name(type)) return refusal;
    return number(size) ? content(type, size) : end();
}

ReadResult HeaderWalk::walk() {
    constexpr std::uint32_t kSeveralParts = 0x1000;
    // The library keeps a few hundred bytes for an attribute, however small, and some KiB for a
    // part, which has at least one: at most about 100 MB. A part of a real file has tens of them.
    constexpr int kMostAttributes = 32768;
    std::uint32_t magic = 0, version = 0;
    if (!number(magic) || !number(version)) return end();
    std::string attributeName;
    bool inPart = false;
    for (int attributes = 0;;) {
        if (ReadResult refusal = name(attributeName)) return refusal;
        if (attributeName.empty()) {
            if (!(version & kSeveralParts) || !inPart) return {};
            inPart = false;
            continue;
        }
        inPart = true;
        if (++attributes > kMostAttributes)
            return refuse("at most " + std::to_string(kMostAttributes) + " attributes", "more",
                          placeText(m_input.position()));
        if (ReadResult refusal = attribute()) return refusal;
    }
}

}  // namespace

ReadResult checkExrHeaders(ByteSource& source) { return HeaderWalk(source).walk(); }

}  // namespace rb::imaging
