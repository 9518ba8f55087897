#include "RenderingBase/host/imaging/TextureLoader.h"

#include "RenderingBase/host/imaging/ReaderGuards.h"

#include <array>
#include <string>
#include <utility>

namespace rb::imaging {
namespace {

/// The first bytes of a file: as many as tell its format, or fewer.
class Head {
public:
    explicit Head(ByteSource& source) : m_count(source.read(0, m_bytes.data(), m_bytes.size())) {}

    std::span<const std::byte> bytes() const { return {m_bytes.data(), m_count}; }

    /// The one of @p formats that begins so; null when there is none.
    const TextureFormat* formatAmong(std::span<const TextureFormat> formats) const {
        for (const TextureFormat& format : formats)
            if (startsWith(bytes(), format.magic)) return &format;
        return nullptr;
    }

private:
    std::array<std::byte, kHeadBytes> m_bytes;
    std::size_t m_count;
};

std::string listOfNames(std::span<const TextureFormat> formats) {
    std::string names;
    for (const TextureFormat& format : formats)
        names += (names.empty() ? "" : " or ") + std::string(format.name);
    return names;
}

std::size_t pixelBytes(const TextureHeader& header, int level) {
    return static_cast<std::size_t>(sideOfLevel(header.width, level)) *
           static_cast<std::size_t>(sideOfLevel(header.height, level)) *
           static_cast<std::size_t>(layoutOf(header.texels.delivered).bytesPerPixel());
}

/// Holds what a header says against what can be delivered and what the file has.
ReadResult checkHeader(const TextureHeader& header, std::uint64_t fileBytes) {
    if (ReadResult refusal = checkSides(header.width, header.height)) return refusal;
    if (header.faces > 1 && header.width != header.height)
        return refuse("a cube of square faces",
                      std::to_string(header.width) + " x " + std::to_string(header.height));
    return checkSize(header.width, header.height, static_cast<std::uint64_t>(header.faces),
                     header.leastFileBytes, fileBytes);
}

/// Reads and decodes the surfaces one after the other, in the order that readers want.
class SurfaceDecoder {
public:
    SurfaceDecoder(TextureReader& reader, LoadedTexture& texture)
        : m_reader(reader), m_texture(texture), m_header(texture.header) {}

    ReadResult decodeAll() {
        m_texture.surfaces.resize(static_cast<std::size_t>(m_header.faces) *
                                  static_cast<std::size_t>(m_header.levels));
        for (int level = 0; level < m_header.levels; ++level)
            for (int face = 0; face < m_header.faces; ++face)
                if (ReadResult refusal = decode(face, level)) return refusal;
        return {};
    }

private:
    ReadResult decode(int face, int level) {
        PixelStorage& surface = m_texture.surface(face, level);
        surface = PixelStorage(pixelBytes(m_header, level), PixelStorage::Fill::None);
        if (m_header.texels.isDeliveredAsStored())
            return m_reader.readSurface(face, level, surface.bytes());
        const std::int64_t width = sideOfLevel(m_header.width, level);
        const std::int64_t height = sideOfLevel(m_header.height, level);
        const auto bytes = static_cast<std::size_t>(m_header.texels.storedBytes(width, height));
        if (m_stored.size() < bytes) m_stored = PixelStorage(bytes, PixelStorage::Fill::None);
        const auto stored = m_stored.bytes().first(bytes);
        if (ReadResult refusal = m_reader.readSurface(face, level, stored)) return refusal;
        decodeTexels(m_header.texels, stored, width, height, surface.bytes());
        return {};
    }

    TextureReader& m_reader;
    LoadedTexture& m_texture;
    const TextureHeader& m_header;
    PixelStorage m_stored;  // of the largest surface so far
};

}  // namespace

std::span<const TextureFormat> textureFormats() {
    static const std::array formats{kDdsFormat, kKtx2Format};
    return formats;
}

const TextureFormat* recogniseTexture(ByteSource& source, std::span<const TextureFormat> formats) {
    return Head(source).formatAmong(formats);
}

ReadResult loadTexture(ByteSource& source, std::span<const TextureFormat> formats,
                       LoadedTexture& texture) {
    const Head head(source);
    const TextureFormat* const format = head.formatAmong(formats);
    if (!format)
        return afterReading(
            source, refuse("a " + listOfNames(formats) + " file", firstBytes(head.bytes())));
    ReadResult refusal = guarded(format->name, [&]() -> ReadResult {
        const auto reader = format->open(source);
        TextureHeader& header = texture.header;
        if (ReadResult refused = reader->readHeader(header)) return refused;
        if (ReadResult refused = checkHeader(header, source.size())) return refused;
        return SurfaceDecoder(*reader, texture).decodeAll();
    });
    return afterReading(source, std::move(refusal));
}

}  // namespace rb::imaging
