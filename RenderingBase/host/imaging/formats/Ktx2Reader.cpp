// Reading of KTX textures, version 2.
//
//   AB 4B 54 58 20 32 30 BB 0D 0A 1A 0A    "«KTX 20»" and line ends
//   2B 00 00 00  01 00 00 00               VkFormat R8G8B8A8_SRGB, bytes of a number
//   00 02 00 00  00 01 00 00  00 00 00 00  512 x 256, depth 0
//   00 00 00 00  01 00 00 00               layers 0 (no array), 1 face
//   0A 00 00 00  02 00 00 00               10 levels, compressed by zstd
//   ...                                    places of the texel description, metadata, global data
//   offset, length, length inflated        of each level, largest first, 64 bits each
//   ...                                    the levels, in each of them the layers, in these the
//   faces
//
// Source: Khronos, "KTX File Format, version 2.0".

#include "RenderingBase/host/imaging/PixelStorage.h"
#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/InflatedStream.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"
#include "RenderingBase/host/imaging/formats/TextureReader.h"
#include "RenderingBase/host/imaging/formats/VulkanFormats.h"

#include <array>
#include <cstring>
#include <string>
#include <vector>
#include <zstd.h>

namespace rb::imaging {
namespace {

constexpr std::string_view kMagic("\xABKTX 20\xBB\r\n\x1A\n", 12);
constexpr std::size_t kHeaderBytes = 80, kLevelBytes = 24;

enum class Compression : std::uint32_t {
    None = 0,
    Basis = 1,
    Zstd = 2,
    Zlib = 3
};

/// Where a level stands in the file.
struct Level {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    std::uint64_t inflated = 0;
};

class Ktx2Reader final : public TextureReader {
public:
    explicit Ktx2Reader(ByteSource& source) : m_source(source) {}
    ReadResult readHeader(TextureHeader& header) override;
    ReadResult readSurface(int face, int level, std::span<std::byte> stored) override;

private:
    ReadResult readFields();
    ReadResult readTexels(std::uint32_t vkFormat);
    ReadResult readLevels();
    ReadResult checkLevel(const Level& level, int number) const;
    ReadResult inflate(const Level& level, std::span<std::byte> content);
    ReadResult readInflated(int face, int level, std::span<std::byte> stored);
    std::uint64_t surfaceBytes(int level) const;

    ByteSource& m_source;
    TextureHeader m_header;
    std::uint64_t m_layers = 1;  // of an array; the first one is read
    Compression m_compression = Compression::None;
    std::vector<Level> m_levels;
    PixelStorage m_inflated;  // a level of a cube
    int m_inflatedLevel = -1;
};

std::uint64_t Ktx2Reader::surfaceBytes(int level) const {
    return m_header.texels.storedBytes(sideOfLevel(m_header.width, level),
                                       sideOfLevel(m_header.height, level));
}

ReadResult Ktx2Reader::readTexels(std::uint32_t vkFormat) {
    // Without a number the texels are described in another place; that is Basis Universal only.
    if (m_compression == Compression::Basis || vkFormat == 0)
        return refuse("texels that need no transcoding", "Basis Universal texels", "byte 12");
    if (m_compression > Compression::Zlib)
        return refuse("compression by zstd, zlib or none",
                      "scheme " + std::to_string(static_cast<std::uint32_t>(m_compression)),
                      "byte 44");
    return vulkanTexels(vkFormat, m_header.texels);
}

ReadResult Ktx2Reader::readFields() {
    std::array<unsigned char, kHeaderBytes> bytes;
    const std::size_t got = m_source.read(0, bytes.data(), bytes.size());
    if (got != bytes.size()) return refuse("a KTX header of 80 bytes", bytesText(got));
    const auto field = [&](std::size_t place) { return little32(bytes.data() + place); };
    m_compression = static_cast<Compression>(field(44));
    if (ReadResult refusal = readTexels(field(12))) return refusal;
    m_header.width = field(20);
    m_header.height = field(24);
    if (field(28) != 0) return refuse("a picture or a cube", "a volume texture", "byte 28");
    m_layers = std::max<std::uint64_t>(1, field(32));
    if (m_layers > 1 && m_compression != Compression::None)
        return refuse("an array without compression, or no array",
                      std::to_string(m_layers) + " compressed layers", "byte 32");
    if (field(36) != 1 && field(36) != 6)
        return refuse("1 or 6 faces", std::to_string(field(36)), "byte 36");
    m_header.faces = static_cast<int>(field(36));
    const int most = mostLevels(m_header.width, m_header.height);
    if (field(40) > static_cast<std::uint32_t>(most))
        return refuse("at most " + std::to_string(most) + " levels", std::to_string(field(40)),
                      "byte 40");
    m_header.levels = std::max(1, static_cast<int>(field(40)));  // 0: the others are to be made
    return {};
}

ReadResult Ktx2Reader::checkLevel(const Level& level, int number) const {
    const std::string which = "level " + std::to_string(number);
    const std::uint64_t wanted = saturatedProduct(
        surfaceBytes(number), static_cast<std::uint64_t>(m_header.faces), m_layers);
    const bool isCompressed = m_compression != Compression::None;
    const std::uint64_t stated = isCompressed ? level.inflated : level.length;
    if (stated != wanted) return refuse(bytesText(wanted) + " in " + which, bytesText(stated));
    // What compression adds at worst to data that it cannot compress is less than this.
    if (isCompressed && level.length > saturatedSum(wanted, wanted / 16 + 1024))
        return refuse("compressed data no longer than " + which + " itself",
                      bytesText(level.length));
    if (saturatedSum(level.offset, level.length) > m_source.size())
        return refuse(bytesText(level.length) + " of " + which,
                      "a file of " + bytesText(m_source.size()), placeText(level.offset));
    return {};
}

ReadResult Ktx2Reader::readLevels() {
    std::vector<unsigned char> index(kLevelBytes * static_cast<std::size_t>(m_header.levels));
    if (m_source.read(kHeaderBytes, index.data(), index.size()) != index.size())
        return refuse("an index of " + std::to_string(m_header.levels) + " levels",
                      "the end of the file", "byte 80");
    for (int i = 0; i < m_header.levels; ++i) {
        const unsigned char* const at = index.data() + kLevelBytes * static_cast<std::size_t>(i);
        const Level level{little64(at), little64(at + 8), little64(at + 16)};
        if (ReadResult refusal = checkLevel(level, i)) return refusal;
        m_levels.push_back(level);
    }
    return {};
}

ReadResult Ktx2Reader::readHeader(TextureHeader& header) {
    if (ReadResult refusal = readFields()) return refusal;
    if (m_header.width > 0 && m_header.height > 0)  // else the caller has a word for it
        if (ReadResult refusal = readLevels()) return refusal;
    header = m_header;
    return {};
}

/// @param content  As many bytes as the level says that it inflates to.
ReadResult Ktx2Reader::inflate(const Level& level, std::span<std::byte> content) {
    const std::string where = placeText(level.offset);
    PixelStorage stream(static_cast<std::size_t>(level.length), PixelStorage::Fill::None);
    if (m_source.read(level.offset, stream.data(), stream.size()) != stream.size())
        return refuse(bytesText(stream.size()), "the end of the file", where);
    const bool isSound = m_compression == Compression::Zstd
                             ? ZSTD_decompress(content.data(), content.size(), stream.data(),
                                               stream.size()) == content.size()
                             : inflateStream(stream.bytes(), content);
    if (isSound) return {};
    return refuse("data that inflate to " + bytesText(content.size()), "damaged data", where);
}

/// The faces of a level are one stream: it is inflated for the first of them.
ReadResult Ktx2Reader::readInflated(int face, int number, std::span<std::byte> stored) {
    const Level& level = m_levels[static_cast<std::size_t>(number)];
    if (m_header.faces == 1) return inflate(level, stored);
    if (m_inflatedLevel != number) {
        m_inflatedLevel = -1;
        m_inflated =
            PixelStorage(static_cast<std::size_t>(level.inflated), PixelStorage::Fill::None);
        if (ReadResult refusal = inflate(level, m_inflated.bytes())) return refusal;
        m_inflatedLevel = number;
    }
    std::memcpy(stored.data(), m_inflated.data() + static_cast<std::size_t>(face) * stored.size(),
                stored.size());
    return {};
}

ReadResult Ktx2Reader::readSurface(int face, int level, std::span<std::byte> stored) {
    if (m_compression != Compression::None) return readInflated(face, level, stored);
    const std::uint64_t offset = m_levels[static_cast<std::size_t>(level)].offset +
                                 static_cast<std::uint64_t>(face) * stored.size();
    if (m_source.read(offset, stored.data(), stored.size()) == stored.size()) return {};
    return refuse(bytesText(stored.size()), "the end of the file", placeText(offset));
}

std::unique_ptr<TextureReader> open(ByteSource& source) {
    return std::make_unique<Ktx2Reader>(source);
}

}  // namespace

const TextureFormat kKtx2Format{"ktx2", kMagic, open};

}  // namespace rb::imaging
