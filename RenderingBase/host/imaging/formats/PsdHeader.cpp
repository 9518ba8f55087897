// The five sections of PSD files:
//
//   "8BPS" 00 01 ...       header, 26 bytes
//   00 00 00 00            length of the palette, 0 without one
//   00 00 00 1C "8BIM" ... length of the resources, resources
//   00 00 00 EC ...        length of the layers (eight bytes in a PSB file), layers
//   00 01 ...              the merged picture: its compression, its bytes
//
// Source: Adobe Photoshop File Formats, "Photoshop File Structure".

#include "RenderingBase/host/imaging/formats/PsdHeader.h"

#include "RenderingBase/host/imaging/formats/PsdInput.h"
#include "RenderingBase/host/imaging/formats/PsdResources.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <string>

namespace rb::imaging {
namespace {

struct ModeFacts {
    PsdMode mode;
    const char* name;
    std::uint32_t colorChannels;
    bool opacity;  // Has a merged picture of this mode a channel of opacity?
    bool depth1, depth8, depth16, depth32;
};

constexpr std::array<ModeFacts, 8> kModes{{
    {PsdMode::Bitmap, "bitmap", 1, false, true, false, false, false},
    {PsdMode::Grey, "greyscale", 1, true, false, true, true, true},
    {PsdMode::Indexed, "indexed", 1, false, false, true, false, false},
    {PsdMode::Rgb, "RGB", 3, true, false, true, true, true},
    {PsdMode::Cmyk, "CMYK", 4, true, false, true, true, false},
    {PsdMode::Multichannel, "multichannel", 1, false, false, true, true, false},
    {PsdMode::Duotone, "duotone", 1, true, false, true, true, false},
    {PsdMode::Lab, "Lab", 3, true, false, true, true, false},
}};

const ModeFacts* factsOf(PsdMode mode) {
    for (const ModeFacts& facts : kModes)
        if (facts.mode == mode) return &facts;
    return nullptr;
}

bool allowsDepth(const ModeFacts& facts, std::uint32_t depth) {
    return (depth == 1 && facts.depth1) || (depth == 8 && facts.depth8) ||
           (depth == 16 && facts.depth16) || (depth == 32 && facts.depth32);
}

ReadResult checkSides(const PsdHeader& header) {
    const std::uint32_t most = header.big ? 300000 : 30000;
    if (header.width >= 1 && header.width <= most && header.height >= 1 && header.height <= most)
        return {};
    return refuse("sides of 1 to " + std::to_string(most) + " pixels",
                  std::to_string(header.width) + " x " + std::to_string(header.height) + " pixels",
                  "byte 14");
}

ReadResult checkMode(const PsdHeader& header) {
    const ModeFacts* const facts = factsOf(header.mode);
    if (!facts)
        return refuse("colour mode 0 to 4 or 7 to 9",
                      std::to_string(static_cast<unsigned>(header.mode)), "byte 24");
    if (!allowsDepth(*facts, header.depth))
        return refuse(std::string("a depth that ") + facts->name + " files have",
                      std::to_string(header.depth) + " bits", "byte 22");
    constexpr std::uint32_t kMostChannels = 56;
    if (header.channels < facts->colorChannels || header.channels > kMostChannels)
        return refuse(std::to_string(facts->colorChannels) + " to " +
                          std::to_string(kMostChannels) + " channels in a " + facts->name + " file",
                      std::to_string(header.channels), "byte 12");
    return {};
}

ReadResult readFixedPart(PsdInput& input, PsdHeader& header) {
    input.seek(4);
    const std::uint32_t version = input.number16();
    if (version != 1 && version != 2)
        return refuse("version 1 or 2", std::to_string(version), "byte 4");
    header.big = version == 2;
    input.number(6);  // reserved
    header.channels = input.number16();
    header.height = input.number32();
    header.width = input.number32();
    header.depth = input.number16();
    header.mode = static_cast<PsdMode>(input.number16());
    if (input.ended()) return refuse("a header of 26 bytes", "the end of the file");
    if (ReadResult refusal = checkSides(header)) return refusal;
    return checkMode(header);
}

/// Reads the length of a section and holds it against the bytes that are there.
ReadResult enterSection(PsdInput& input, const char* name, int bytes, std::uint64_t& end) {
    const std::uint64_t place = input.position();
    const std::uint64_t length = input.number(bytes);
    const std::string where = placeText(place);
    if (input.ended())
        return refuse(std::string("the length of the ") + name, "the end of the file", where);
    const std::uint64_t begin = input.position();
    const std::uint64_t there = input.size() - std::min(input.size(), begin);
    if (length > there)
        return refuse(bytesText(length) + " of " + name, bytesText(there) + " more", where);
    end = begin + length;
    return {};
}

ReadResult readPalette(PsdInput& input, std::uint64_t end, PsdHeader& header) {
    if (header.mode != PsdMode::Indexed) return {};
    const std::uint64_t place = input.position();
    if (end - place != header.palette.size())
        return refuse("a palette of 768 bytes", std::to_string(end - place), placeText(place));
    input.read(header.palette.data(), header.palette.size());
    return {};
}

ReadResult readCompression(PsdInput& input, PsdHeader& header) {
    const std::string where = placeText(input.position());
    const std::uint32_t compression = input.number16();
    if (input.ended()) return refuse("a merged picture", "the end of the file", where);
    header.compression = static_cast<PsdCompression>(compression);
    header.dataPlace = input.position();
    if (compression > 3) return refuse("compression 0 to 3", std::to_string(compression), where);
    if (compression == 3 && header.depth == 1)
        return refuse("compression 0 to 2 of single bits", "3", where);
    return {};
}

}  // namespace

std::uint32_t PsdHeader::colorChannels() const { return factsOf(mode)->colorChannels; }

bool PsdHeader::hasAlphaChannel() const {
    return hasTransparency && factsOf(mode)->opacity && channels > colorChannels();
}

ReadResult readPsdHeader(ByteSource& source, PsdHeader& header) {
    PsdInput input(source);
    if (ReadResult refusal = readFixedPart(input, header)) return refusal;
    std::uint64_t end = 0;
    if (ReadResult refusal = enterSection(input, "palette", 4, end)) return refusal;
    if (ReadResult refusal = readPalette(input, end, header)) return refusal;
    input.seek(end);
    if (ReadResult refusal = enterSection(input, "resources", 4, end)) return refusal;
    readPsdResources(input, end, header);
    input.seek(end);
    if (ReadResult refusal = enterSection(input, "layers", header.big ? 8 : 4, end)) return refusal;
    readPsdLayers(input, end, header);
    input.seek(end);
    return readCompression(input, header);
}

std::uint64_t leastPsdBytes(const PsdHeader& header) {
    const std::uint64_t rows = std::uint64_t{header.wantedChannels()} * header.height;
    std::uint64_t bytes = saturatedProduct(rows, header.rowBytes());
    if (header.compression == PsdCompression::RunLengths) {
        constexpr std::uint64_t kLongestRun = 128;
        const std::uint64_t runs = (header.rowBytes() + kLongestRun - 1) / kLongestRun;
        const auto countBytes = static_cast<std::uint64_t>(header.countBytes());
        bytes = saturatedProduct(rows, 2 * runs) +
                std::uint64_t{header.channels} * header.height * countBytes;
    } else if (header.compression != PsdCompression::Raw) {
        // Deflate makes at best 258 bytes out of two bits, one for the length and one for the
        // distance.
        constexpr std::uint64_t kBestRatio = 1032;
        bytes /= kBestRatio;
    }
    return header.dataPlace + bytes;
}

}  // namespace rb::imaging
