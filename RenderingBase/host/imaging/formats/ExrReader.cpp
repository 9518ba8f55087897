// Reading of OpenEXR files: the data window of the first part that has a picture, at full size.
// ExrHeaderCheck.cpp begins with the layout of a file. Sources: "Technical Introduction to
// OpenEXR", "OpenEXR File Layout" and "Standard Optional Attributes" (openexr.com).
//
// Alpha is delivered as it is stored, which in these files is multiplied into the colours.

#include "RenderingBase/host/imaging/formats/ExrChannels.h"
#include "RenderingBase/host/imaging/formats/ExrHeaderCheck.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/QuotedText.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfPartType.h>
#include <ImfRgbaFile.h>
#include <ImfStandardAttributes.h>
#include <ImfThreading.h>
#include <ImfTiledInputPart.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace rb::imaging {
namespace {

class SourceStream final : public Imf::IStream {
public:
    explicit SourceStream(ByteSource& source) : IStream("image"), m_source(source) {}
    bool read(char* to, int count) override {
        const auto wanted = static_cast<std::size_t>(std::max(count, 0));
        if (m_source.read(m_position, to, wanted) != wanted)
            throw std::runtime_error("the end of the file at byte " +
                                     std::to_string(m_source.size()));
        m_position += wanted;
        return m_position < m_source.size();
    }
    std::uint64_t tellg() override { return m_position; }
    void seekg(std::uint64_t position) override { m_position = position; }

private:
    ByteSource& m_source;
    std::uint64_t m_position = 0;
};

/// How a compression stores pixels: rows that make a chunk, and the most bytes that a stored byte
/// can stand for.
struct Coding {
    int rowsInChunk;
    std::uint64_t bestRatio;
};

Coding codingOf(Imf::Compression compression) {
    // ZIP is DEFLATE with its 1032:1; PXR24 drops a byte of a float before that; RLE stores 128
    // bytes in 2, B44A 32 bytes in 3; PIZ codes 255 equal halves in ten bits; DWA blocks of zeros
    // do still better.
    switch (compression) {
        case Imf::NO_COMPRESSION:
            return {1, 1};
        case Imf::RLE_COMPRESSION:
            return {1, 64};
        case Imf::ZIPS_COMPRESSION:
            return {1, 1032};
        case Imf::ZIP_COMPRESSION:
            return {16, 1032};
        case Imf::PXR24_COMPRESSION:
            return {16, 1376};
        case Imf::PIZ_COMPRESSION:
            return {32, 2048};
        case Imf::B44_COMPRESSION:
        case Imf::B44A_COMPRESSION:
            return {32, 11};
        case Imf::DWAA_COMPRESSION:
            return {32, 1 << 16};
        default:
            return {256, 1 << 16};
    }
}

/// The library decodes on threads of a pool that all files share; without threads in it, on the
/// calling one. An application that has set it up keeps its setting.
void startPool() {
    static std::once_flag once;
    std::call_once(once, [] {
        constexpr unsigned kMostThreads = 16;
        if (Imf::globalThreadCount() == 0)
            Imf::setGlobalThreadCount(
                static_cast<int>(std::min(kMostThreads, std::thread::hardware_concurrency())));
    });
}

std::uint64_t sampleBytes(Imf::PixelType type) { return type == Imf::HALF ? 2 : 4; }

class ExrReader final : public ImageReader {
public:
    explicit ExrReader(ByteSource& source) : m_source(source), m_stream(source) {}
    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    const Imf::Header& part() const { return m_file->header(m_part); }
    bool tiled() const { return part().type() == Imf::TILEDIMAGE; }
    bool hasChroma() const { return m_channels.kind == ExrChannels::Kind::LuminanceChroma; }
    bool isGrey() const { return m_channels.kind == ExrChannels::Kind::Grey; }
    ReadResult choosePart();
    ReadResult chooseChannels(const Imf::Header& part);
    ReadResult chooseFormat();
    Resolution resolution() const;
    std::uint64_t chunks() const;
    std::uint64_t leastFileBytes() const;
    ReadResult checkChunks(std::uint64_t delivered) const;
    Imf::FrameBuffer frameBuffer(std::byte* pixels) const;
    void readChroma(std::byte* pixels);
    template <typename Value>
    void repeatGrey(std::byte* pixels) const;

    ByteSource& m_source;
    SourceStream m_stream;
    std::optional<Imf::MultiPartInputFile> m_file;
    int m_part = 0;
    ExrChannels m_channels;
    Imath::Box2i m_window;
    std::uint64_t m_width = 0, m_height = 0;
    KVRPixelImageFormat m_format = KVRPixelImageFormat::None;
};

ReadResult ExrReader::choosePart() {
    bool deep = false;
    ReadResult refusal;
    for (m_part = 0; m_part < m_file->parts(); ++m_part) {
        const std::string& type = part().type();
        deep = deep || type == Imf::DEEPSCANLINE || type == Imf::DEEPTILE;
        if (type != Imf::SCANLINEIMAGE && type != Imf::TILEDIMAGE) continue;
        ReadResult otherwise = chooseChannels(part());
        if (!otherwise) return {};
        if (!refusal) refusal = std::move(otherwise);
    }
    if (refusal) return refusal;
    return refuse("a part with a flat image", deep ? "deep images only" : "none");
}

ReadResult ExrReader::chooseChannels(const Imf::Header& part) {
    std::vector<std::string> names;
    for (auto it = part.channels().begin(); it != part.channels().end(); ++it)
        names.emplace_back(it.name());
    m_channels = chooseExrChannels(names);
    if (m_channels.kind == ExrChannels::Kind::None) {
        constexpr std::size_t kShown = 8;
        std::string list;
        for (std::size_t i = 0; i < std::min(names.size(), kShown); ++i)
            list += (i ? ", " : "") + inQuotes(names[i]);
        return refuse("channels R, G and B, a channel Y, or one channel",
                      names.empty() ? "none" : list + (names.size() > kShown ? ", ..." : ""));
    }
    // The library converts luminance and chroma in the first part only, and to halves.
    if (hasChroma() && m_part > 0)
        return refuse("luminance and chroma in the first part", "another part");
    return {};
}

/// Half numbers when all channels that are delivered are half, else floats.
ReadResult ExrReader::chooseFormat() {
    using enum KVRPixelImageFormat;
    const bool alpha = !m_channels.alpha.empty();
    bool half = true;
    if (!hasChroma()) {
        std::vector<std::string> names(m_channels.color.begin(), m_channels.color.end());
        names.push_back(m_channels.alpha);
        for (const std::string& name : names) {
            if (name.empty()) continue;
            const Imf::Channel& channel = part().channels()[name];
            half = half && channel.type == Imf::HALF;
            if (channel.xSampling != 1 || channel.ySampling != 1)
                return refuse("a sample in every pixel",
                              "the subsampled channel " + inQuotes(name));
        }
    }
    if (half)
        m_format = alpha ? RGBA_f16 : isGrey() ? L_f16 : RGB_f16;
    else
        m_format = alpha ? RGBA_f : isGrey() ? L_f : RGB_f;
    return {};
}

Resolution ExrReader::resolution() const {
    if (!Imf::hasXDensity(part())) return {};
    const auto x = static_cast<double>(Imf::xDensity(part()));
    const double y = x * static_cast<double>(part().pixelAspectRatio());
    const bool usable = std::isfinite(x) && x > 0 && std::isfinite(y) && y > 0;
    return usable ? Resolution{x, y, kPerInch} : Resolution{};
}

std::uint64_t ExrReader::chunks() const {
    const auto parts = [](std::uint64_t length, std::uint64_t size) {
        return (length - 1) / size + 1;
    };
    if (tiled())
        return saturatedProduct(parts(m_width, part().tileDescription().xSize),
                                parts(m_height, part().tileDescription().ySize));
    return parts(m_height, static_cast<std::uint64_t>(codingOf(part().compression()).rowsInChunk));
}

/// Every chunk has a place in the table of offsets and its own head; the pixels of all channels are
/// in them.
std::uint64_t ExrReader::leastFileBytes() const {
    constexpr std::uint64_t kTableEntry = 8, kLeastHead = 8;
    std::uint64_t pixelBytes = 0;
    for (auto it = part().channels().begin(); it != part().channels().end(); ++it) {
        const auto across = static_cast<std::uint64_t>(std::max(1, it.channel().xSampling));
        const auto down = static_cast<std::uint64_t>(std::max(1, it.channel().ySampling));
        pixelBytes +=
            saturatedProduct(m_width / across, m_height / down, sampleBytes(it.channel().type));
    }
    return saturatedProduct(chunks(), kTableEntry + kLeastHead) +
           pixelBytes / codingOf(part().compression()).bestRatio;
}

/// The library keeps some chunks in memory, whole ones even of a smaller picture.
ReadResult ExrReader::checkChunks(std::uint64_t delivered) const {
    constexpr std::uint64_t kAlways = 16 << 20;
    std::uint64_t pixelBytes = 0;
    for (auto it = part().channels().begin(); it != part().channels().end(); ++it)
        pixelBytes += sampleBytes(it.channel().type);
    std::uint64_t pixels = saturatedProduct(
        m_width, static_cast<std::uint64_t>(codingOf(part().compression()).rowsInChunk));
    if (tiled())
        pixels = saturatedProduct(part().tileDescription().xSize, part().tileDescription().ySize);
    // The conversion of chroma keeps about 35 rows of 8 bytes a pixel.
    const std::uint64_t bytes = std::max(saturatedProduct(pixels, pixelBytes),
                                         hasChroma() ? saturatedProduct(m_width, 35 * 8) : 0);
    const std::uint64_t most = std::max(kAlways, saturatedProduct(4, delivered));
    return bytes <= most ? ReadResult{}
                         : refuse("chunks of at most " + std::to_string(most) + " bytes",
                                  std::to_string(bytes) + " bytes");
}

ReadResult ExrReader::readHeader(ImageHeader& header) {
    if (ReadResult refusal = checkExrHeaders(m_source)) return refusal;
    startPool();
    // Tables of incomplete files are not mended: such files are refused.
    constexpr bool kMendTables = false;
    m_file.emplace(m_stream, Imf::globalThreadCount(), kMendTables);
    if (ReadResult refusal = choosePart()) return refusal;
    if (ReadResult refusal = chooseFormat()) return refusal;
    m_window = part().dataWindow();
    m_width = static_cast<std::uint64_t>(std::int64_t{m_window.max.x} - m_window.min.x + 1);
    m_height = static_cast<std::uint64_t>(std::int64_t{m_window.max.y} - m_window.min.y + 1);
    header.width = static_cast<std::int64_t>(m_width);
    header.height = static_cast<std::int64_t>(m_height);
    header.format = m_format;
    const auto& channels = part().channels();
    for (auto it = channels.begin(); it != channels.end(); ++it) {
        ++header.storedChannels;
        header.storedBits =
            std::max(header.storedBits, static_cast<int>(8 * sampleBytes(it.channel().type)));
    }
    header.resolution = resolution();
    header.leastFileBytes = leastFileBytes();
    return {};
}

/// Channels go straight to their places; of grey with alpha, grey goes to the place of red.
Imf::FrameBuffer ExrReader::frameBuffer(std::byte* pixels) const {
    const PixelLayout& layout = layoutOf(m_format);
    const auto channelBytes = static_cast<std::size_t>(layout.bytesPerChannel());
    const auto pixelBytes = static_cast<std::size_t>(layout.bytesPerPixel());
    const Imf::PixelType type = layout.type == ChannelType::Half ? Imf::HALF : Imf::FLOAT;
    Imf::FrameBuffer buffer;
    const auto insert = [&](const std::string& name, int place) {
        buffer.insert(
            name,
            Imf::Slice::Make(type, pixels + static_cast<std::size_t>(place) * channelBytes,
                             m_window, pixelBytes, static_cast<std::size_t>(m_width) * pixelBytes));
    };
    for (int i = 0; i < (isGrey() ? 1 : 3); ++i) {
        const std::string& name = m_channels.color[static_cast<std::size_t>(i)];
        // A name that no channel has gets its slice filled with zeros.
        insert(name.empty() ? "no channel " + std::to_string(i) : name, i);
    }
    if (!m_channels.alpha.empty()) insert(m_channels.alpha, 3);
    return buffer;
}

void ExrReader::readChroma(std::byte* pixels) {
    m_file.reset();
    m_stream.seekg(0);
    Imf::RgbaInputFile file(m_stream, m_channels.layer);
    const auto width = static_cast<std::size_t>(m_width);
    std::vector<Imf::Rgba> row(width);
    const std::size_t pixelBytes = static_cast<std::size_t>(layoutOf(m_format).bytesPerPixel());
    // Every row goes into the same memory. The library adds x to what it is given, which is not a
    // pointer into anything until then.
    const std::uintptr_t origin =
        reinterpret_cast<std::uintptr_t>(row.data()) -
        static_cast<std::uintptr_t>(std::int64_t{m_window.min.x}) * sizeof(Imf::Rgba);
    file.setFrameBuffer(reinterpret_cast<Imf::Rgba*>(origin), 1, 0);
    for (int y = m_window.min.y; y <= m_window.max.y; ++y) {
        file.readPixels(y);
        for (const Imf::Rgba& pixel : row) {
            std::memcpy(pixels, &pixel, pixelBytes);
            pixels += pixelBytes;
        }
    }
}

template <typename Value>
void ExrReader::repeatGrey(std::byte* pixels) const {
    auto* pixel = reinterpret_cast<Value*>(pixels);
    for (Value* end = pixel + 4 * m_width * m_height; pixel != end; pixel += 4)
        pixel[1] = pixel[2] = pixel[0];
}

ReadResult ExrReader::readPixels(std::span<std::byte> pixels) {
    if (ReadResult refusal = checkChunks(pixels.size())) return refusal;
    if (hasChroma()) {
        readChroma(pixels.data());
        return {};
    }
    if (tiled()) {
        Imf::TiledInputPart input(*m_file, m_part);
        input.setFrameBuffer(frameBuffer(pixels.data()));
        input.readTiles(0, input.numXTiles(0) - 1, 0, input.numYTiles(0) - 1, 0, 0);
    } else {
        Imf::InputPart input(*m_file, m_part);
        input.setFrameBuffer(frameBuffer(pixels.data()));
        input.readPixels(m_window.min.y, m_window.max.y);
    }
    if (isGrey() && !m_channels.alpha.empty()) {
        if (layoutOf(m_format).type == ChannelType::Half)
            repeatGrey<std::uint16_t>(pixels.data());
        else
            repeatGrey<float>(pixels.data());
    }
    return {};
}

bool recognises(std::span<const std::byte> head) {
    static constexpr std::array<unsigned char, 4> kMagic{0x76, 0x2F, 0x31, 0x01};
    return head.size() >= kMagic.size() &&
           std::memcmp(head.data(), kMagic.data(), kMagic.size()) == 0;
}

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<ExrReader>(source);
}

}  // namespace

const ImageFormat kExrFormat{"exr", recognises, open};

}  // namespace rb::imaging
