// Reading of OpenEXR files: the data window of the first part that has a picture, at full size.
// ExrHeaderCheck.cpp begins with the layout of a file. Sources: "Technical Introduction to
// OpenEXR", "OpenEXR File Layout" and "Standard Optional Attributes" (openexr.com).
//
// Alpha is delivered as it is stored, which in these files is multiplied into the colours.

#include "RenderingBase/host/imaging/formats/ExrHeaderCheck.h"
#include "RenderingBase/host/imaging/formats/ExrPart.h"
#include "RenderingBase/host/imaging/formats/ExrSizes.h"
#include "RenderingBase/host/imaging/formats/ExrStream.h"
#include "RenderingBase/host/imaging/formats/ExrThreads.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfPartType.h>
#include <ImfRgbaFile.h>
#include <ImfStandardAttributes.h>
#include <ImfTiledInputPart.h>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb::imaging {
namespace {

Resolution resolutionOf(const Imf::Header& part) {
    if (!Imf::hasXDensity(part)) return {};
    const auto x = static_cast<double>(Imf::xDensity(part));
    const double y = x * static_cast<double>(part.pixelAspectRatio());
    const bool usable = std::isfinite(x) && x > 0 && std::isfinite(y) && y > 0;
    return usable ? Resolution{x, y, kPerInch} : Resolution{};
}

class ExrReader final : public ImageReader {
public:
    explicit ExrReader(ByteSource& source) : m_source(source), m_stream(source) {}
    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    const Imf::Header& partHeader() const { return m_file->header(m_part.index); }
    Imf::FrameBuffer frameBuffer(std::byte* pixels) const;
    void readChroma(std::byte* pixels);
    template <typename Value>
    void repeatGrey(std::byte* pixels) const;

    ByteSource& m_source;
    ExrStream m_stream;
    std::optional<Imf::MultiPartInputFile> m_file;
    ExrPart m_part;
    Imath::Box2i m_window;
    std::size_t m_width = 0, m_height = 0;
};

ReadResult ExrReader::readHeader(ImageHeader& header) {
    if (ReadResult refusal = checkExrHeaders(m_source)) return refusal;
    // Tables of incomplete files are not mended: such files are refused.
    constexpr bool kMendTables = false;
    m_file.emplace(m_stream, startExrThreads(), kMendTables);
    if (ReadResult refusal = chooseExrPart(*m_file, m_part)) return refusal;
    m_window = partHeader().dataWindow();
    header.width = std::int64_t{m_window.max.x} - m_window.min.x + 1;
    header.height = std::int64_t{m_window.max.y} - m_window.min.y + 1;
    header.format = m_part.format;
    m_width = static_cast<std::size_t>(header.width);
    m_height = static_cast<std::size_t>(header.height);
    const auto& channels = partHeader().channels();
    for (auto it = channels.begin(); it != channels.end(); ++it) {
        ++header.storedChannels;
        header.storedBits =
            std::max(header.storedBits, static_cast<int>(8 * exrSampleBytes(it.channel().type)));
    }
    header.resolution = resolutionOf(partHeader());
    header.leastFileBytes = leastExrBytes(partHeader());
    return {};
}

/// Channels go straight to their places; of grey with alpha, grey goes to the place of red.
Imf::FrameBuffer ExrReader::frameBuffer(std::byte* pixels) const {
    const PixelLayout& layout = layoutOf(m_part.format);
    const auto channelBytes = static_cast<std::size_t>(layout.bytesPerChannel());
    const auto pixelBytes = static_cast<std::size_t>(layout.bytesPerPixel());
    const Imf::PixelType type = layout.type == ChannelType::Half ? Imf::HALF : Imf::FLOAT;
    Imf::FrameBuffer buffer;
    const auto insert = [&](const std::string& name, int place) {
        buffer.insert(
            name, Imf::Slice::Make(type, pixels + static_cast<std::size_t>(place) * channelBytes,
                                   m_window, pixelBytes, m_width * pixelBytes));
    };
    for (int i = 0; i < (m_part.isGrey() ? 1 : 3); ++i) {
        const std::string& name = m_part.channels.color[static_cast<std::size_t>(i)];
        // A name that no channel has gets its slice filled with zeros.
        insert(name.empty() ? "no channel " + std::to_string(i) : name, i);
    }
    if (m_part.hasAlpha()) insert(m_part.channels.alpha, 3);
    return buffer;
}

void ExrReader::readChroma(std::byte* pixels) {
    m_file.reset();
    m_stream.seekg(0);
    Imf::RgbaInputFile file(m_stream, m_part.channels.layer);
    std::vector<Imf::Rgba> row(m_width);
    const std::size_t pixelBytes =
        static_cast<std::size_t>(layoutOf(m_part.format).bytesPerPixel());
    // Every row goes into the same memory. The library adds x to what it is given, which is not a
    // pointer into anything until then.
    const std::uintptr_t origin =
        reinterpret_cast<std::uintptr_t>(row.data()) -
        static_cast<std::uintptr_t>(std::int64_t{m_window.min.x}) * sizeof(Imf::Rgba);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): see above
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
    // The conversion of chroma keeps about 35 rows of 8 bytes a pixel.
    constexpr std::uint64_t kChromaBytesOfAPixel = 35 * 8;
    if (ReadResult refusal = checkExrChunks(partHeader(), pixels.size(),
                                            m_part.hasChroma() ? kChromaBytesOfAPixel : 0))
        return refusal;
    if (m_part.hasChroma()) {
        readChroma(pixels.data());
        return {};
    }
    if (partHeader().type() == Imf::TILEDIMAGE) {
        Imf::TiledInputPart input(*m_file, m_part.index);
        input.setFrameBuffer(frameBuffer(pixels.data()));
        input.readTiles(0, input.numXTiles(0) - 1, 0, input.numYTiles(0) - 1, 0, 0);
    } else {
        Imf::InputPart input(*m_file, m_part.index);
        input.setFrameBuffer(frameBuffer(pixels.data()));
        input.readPixels(m_window.min.y, m_window.max.y);
    }
    if (m_part.isGrey() && m_part.hasAlpha()) {
        if (layoutOf(m_part.format).type == ChannelType::Half)
            repeatGrey<std::uint16_t>(pixels.data());
        else
            repeatGrey<float>(pixels.data());
    }
    return {};
}

bool recognises(std::span<const std::byte> head) { return startsWith(head, "\x76\x2F\x31\x01"); }

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<ExrReader>(source);
}

}  // namespace

const ImageFormat kExrFormat{"exr", recognises, open};

}  // namespace rb::imaging
