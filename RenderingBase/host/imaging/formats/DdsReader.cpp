// Reading of DDS textures.
//
//   44 44 53 20                       "DDS "
//   7C 00 00 00  07 10 02 00          size 124, flags
//   00 01 00 00  00 02 00 00          height 256, width 512
//   ...          0A 00 00 00          pitch, depth, 10 levels; 44 bytes reserved
//   20 00 00 00  04 00 00 00  DXT5 …  the texel format (DdsPixelFormat.h), 32 bytes
//   08 10 40 00  00 FE 00 00          what it is: here a cube with all faces; 12 bytes
//   62 00 00 00  03 00 00 00  ...     20 bytes more behind a texel format "DX10": a DXGI number,
//                                     dimension, flags, array size, meaning of alpha
//   ...                               face by face, of each all levels, the largest first
//
// Source: Microsoft, "Programming Guide for DDS", "DDS_HEADER structure", "DDS_HEADER_DXT10".
//
// Only width, height, format and kind are taken at their word: pitch, sizes of structures and most
// flags are wrong in many files that everybody reads. So is the number of levels; when the bytes
// fit another number exactly, that is the one.

#include "RenderingBase/host/imaging/formats/DdsPixelFormat.h"
#include "RenderingBase/host/imaging/formats/DxgiFormats.h"
#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"
#include "RenderingBase/host/imaging/formats/TextureReader.h"

#include <array>
#include <string>

namespace rb::imaging {
namespace {

constexpr std::size_t kHeaderBytes = 128, kDx10Bytes = 20;

constexpr std::uint32_t kCube = 0x200, kAllFaces = 0xFC00, kVolume = 0x200000;  // DDS_HEADER
constexpr std::uint32_t kDx10Volume = 4, kDx10Cube = 4;  // dimension, flag of DDS_HEADER_DXT10

class DdsReader final : public TextureReader {
public:
    explicit DdsReader(ByteSource& source) : m_source(source) {}
    ReadResult readHeader(TextureHeader& header) override;
    ReadResult readSurface(int face, int level, std::span<std::byte> stored) override;

private:
    /// What the flags of the headers tell.
    struct Kind {
        bool isVolume;
        bool isCube;
        std::uint32_t faces;
    };
    ReadResult readDx10Header(Kind& kind);
    ReadResult setFaces(const Kind& kind);
    std::uint64_t chainBytes(int levels) const;
    std::uint64_t fileBytes(int levels, std::uint64_t elements) const;
    int levelsThatFit(int declared) const;

    ByteSource& m_source;
    TextureHeader m_header;
    std::uint64_t m_dataBegin = kHeaderBytes;
    std::uint64_t m_elements = 1;  // of an array; the first one is read
};

/// The bytes of so many levels of one face.
std::uint64_t DdsReader::chainBytes(int levels) const {
    std::uint64_t sum = 0;
    for (int level = 0; level < levels; ++level)
        sum = saturatedSum(sum, m_header.texels.storedBytes(sideOfLevel(m_header.width, level),
                                                            sideOfLevel(m_header.height, level)));
    return sum;
}

std::uint64_t DdsReader::fileBytes(int levels, std::uint64_t elements) const {
    const auto faces = static_cast<std::uint64_t>(m_header.faces);
    return saturatedSum(m_dataBegin, saturatedProduct(chainBytes(levels), faces, elements));
}

int DdsReader::levelsThatFit(int declared) const {
    const int most = mostLevels(m_header.width, m_header.height);
    const int levels = std::clamp(declared, 1, most);
    if (fileBytes(levels, m_elements) == m_source.size()) return levels;
    for (int other = 1; other <= most; ++other)
        if (fileBytes(other, m_elements) == m_source.size()) return other;
    return levels;
}

ReadResult DdsReader::readDx10Header(Kind& kind) {
    std::array<unsigned char, kDx10Bytes> bytes;
    if (m_source.read(kHeaderBytes, bytes.data(), bytes.size()) != bytes.size())
        return refuse("a DX10 header of 20 bytes", "the end of the file", "byte 128");
    m_dataBegin += kDx10Bytes;
    if (little32(bytes.data() + 4) == kDx10Volume) kind.isVolume = true;
    if (little32(bytes.data() + 8) & kDx10Cube) kind = {kind.isVolume, true, kAllFaces};
    m_elements = std::max<std::uint64_t>(1, little32(bytes.data() + 12));
    return dxgiTexels(little32(bytes.data()), "byte 128", m_header.texels);
}

ReadResult DdsReader::setFaces(const Kind& kind) {
    if (kind.isVolume) return refuse("a picture or a cube", "a volume texture", "byte 112");
    if (!kind.isCube) return {};
    if (kind.faces != kAllFaces)
        return refuse("a cube with six faces", std::to_string(std::popcount(kind.faces)),
                      "byte 112");
    m_header.faces = 6;
    return {};
}

ReadResult DdsReader::readHeader(TextureHeader& header) {
    std::array<unsigned char, kHeaderBytes> bytes;
    const std::size_t got = m_source.read(0, bytes.data(), bytes.size());
    if (got != bytes.size()) return refuse("a DDS header of 128 bytes", bytesText(got));
    const auto field = [&](std::size_t place) { return little32(bytes.data() + place); };
    m_header.height = field(12);
    m_header.width = field(16);
    DdsPixelFormat format{field(80), field(84), field(88), {}};
    for (std::size_t i = 0; i < format.masks.size(); ++i) format.masks[i] = field(92 + 4 * i);
    const std::uint32_t caps = field(112);
    Kind kind{(caps & kVolume) != 0, (caps & kCube) != 0, caps & kAllFaces};
    if (ReadResult refusal =
            format.isDx10() ? readDx10Header(kind) : ddsTexels(format, m_header.texels))
        return refusal;
    if (ReadResult refusal = setFaces(kind)) return refusal;
    m_header.levels = levelsThatFit(static_cast<int>(std::min<std::uint32_t>(field(28), 32)));
    m_header.leastFileBytes = fileBytes(m_header.levels, 1);
    header = m_header;
    return {};
}

ReadResult DdsReader::readSurface(int face, int level, std::span<std::byte> stored) {
    const std::uint64_t place = m_dataBegin +
                                static_cast<std::uint64_t>(face) * chainBytes(m_header.levels) +
                                chainBytes(level);
    const std::size_t got = m_source.read(place, stored.data(), stored.size());
    if (got == stored.size()) return {};
    return refuse(bytesText(stored.size()) + " of face " + std::to_string(face) + ", level " +
                      std::to_string(level),
                  bytesText(got), placeText(place));
}

std::unique_ptr<TextureReader> open(ByteSource& source) {
    return std::make_unique<DdsReader>(source);
}

}  // namespace

const TextureFormat kDdsFormat{"dds", "DDS ", open};

}  // namespace rb::imaging
