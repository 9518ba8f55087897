// Reading of Softimage pictures (.pic).
//
//   53 80 F6 34 40 60 00 00               magic, version 3.5; then a comment of 80 bytes
//   "PICT" 00 40 00 30                    64 x 48 pixels
//   3F 80 00 00 00 03 00 00               pixels are square; every scanline is here; padding
//   01 08 02 E0                           red, green and blue: 8 bits, mixed runs; another one:
//   00 08 02 10                           alpha: 8 bits, mixed runs; the last one
//   BF 10 20 30                           a scanline: 64 times the same colour,
//   BF FF                                 64 times the same alpha
//
// All numbers are big endian; the scanline at the top comes first. Channels that stand together in
// a packet are stored pixel by pixel. Source: "PIC file format", the format's own description by
// its maker (Softimage wiki).
//
// A file may hold a field of a video frame, or say that it is none at all: the height counts the
// scanlines that are in the file in any case, and they are delivered as rows.

#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"
#include "RenderingBase/host/imaging/formats/SourceWindow.h"

#include <array>
#include <bit>
#include <cstring>
#include <string>
#include <vector>

namespace rb::imaging {
namespace {

using Byte = unsigned char;

constexpr std::size_t kHeaderBytes = 104, kPacketBytes = 4;
constexpr unsigned kColors = 0xE0, kAlpha = 0x10;

enum class Coding : Byte {
    Plain = 0,
    PureRuns = 1,
    MixedRuns = 2
};

/// Writes pixels of a packet into a row. @p step: from a pixel to the next in @p in; 0 repeats one.
using Scatter = void (*)(const Byte* in, std::size_t step, std::size_t count,
                         const std::array<std::size_t, 4>& places, Byte* out);

template <std::size_t kChannels, std::size_t kPixelBytes>
void scatter(const Byte* in, std::size_t step, std::size_t count,
             const std::array<std::size_t, 4>& places, Byte* out) {
    if constexpr (kChannels == kPixelBytes) {
        if (step) {
            std::memcpy(out, in, count * kPixelBytes);
            return;
        }
    }
    const std::array<std::size_t, 4> to = places;  // the stores below cannot change this one
    for (std::size_t i = 0; i < count; ++i, in += step, out += kPixelBytes)
        for (std::size_t c = 0; c < kChannels; ++c) out[to[c]] = in[c];
}

/// Channels that are stored together.
struct Packet {
    Coding coding = Coding::Plain;
    std::size_t channels = 0;             ///< Bytes of a stored pixel.
    std::array<std::size_t, 4> places{};  ///< Of each channel in a delivered pixel.
    Scatter scatter = nullptr;

    /// The fewest bytes that @p width pixels, up to 65535, can have.
    std::uint64_t leastBytes(std::uint64_t width) const {
        constexpr std::uint64_t kPureRun = 255, kShortRun = 128;
        switch (coding) {
            case Coding::Plain:
                return width * channels;
            case Coding::PureRuns:
                return (width + kPureRun - 1) / kPureRun * (1 + channels);
            case Coding::MixedRuns:
                break;
        }
        return (width > kShortRun ? 3 : 1) + channels;
    }
    /// The most bytes that they can have.
    std::size_t mostBytes(std::size_t width) const {
        const std::size_t count = coding == Coding::Plain ? 0 : coding == Coding::PureRuns ? 1 : 3;
        return width * (count + channels);
    }
};

/// The beginning of a run.
struct Run {
    std::size_t headBytes = 0;  ///< 0: there is less than that.
    std::size_t count = 0;
    bool repeats = true;
};

Run parseRun(Coding coding, const Byte* in, std::size_t left) {
    if (left == 0) return {};
    const std::size_t first = in[0];
    if (coding == Coding::PureRuns) return {1, first, true};
    if (first < 128) return {1, first + 1, false};
    if (first > 128) return {1, first - 127, true};
    return left < 3 ? Run{} : Run{3, big16(in + 1), true};
}

class PicReader final : public ImageReader {
public:
    explicit PicReader(ByteSource& source) : m_window(source) {}
    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    std::string place(std::size_t ahead = 0) const { return placeText(m_window.place() + ahead); }
    std::string remaining() const { return bytesText(m_window.size()) + " more"; }
    ReadResult readPackets();
    ReadResult readPlain(const Packet& packet, Byte* out);
    ReadResult readRuns(const Packet& packet, Byte* out);

    SourceWindow m_window;
    std::size_t m_width = 0, m_height = 0, m_pixelBytes = 0;
    std::vector<Packet> m_packets;  // at most one a channel
};

std::string maskText(unsigned mask) { return "0x" + hexText(mask, 2); }

Packet packetOf(Coding coding, unsigned mask, std::size_t pixelBytes) {
    static constexpr std::array<Scatter, 8> kScatters{scatter<1, 3>, scatter<2, 3>, scatter<3, 3>,
                                                      nullptr,       scatter<1, 4>, scatter<2, 4>,
                                                      scatter<3, 4>, scatter<4, 4>};
    Packet packet;
    packet.coding = coding;
    for (std::size_t channel = 0; channel < 4; ++channel)
        if (mask & (0x80U >> channel)) packet.places[packet.channels++] = channel;
    packet.scatter = kScatters[4 * (pixelBytes - 3) + packet.channels - 1];
    return packet;
}

ReadResult PicReader::readPackets() {
    std::vector<std::pair<Coding, unsigned>> found;
    unsigned all = 0;
    for (bool another = true; another;) {
        if (!m_window.has(kPacketBytes))
            return refuse("the description of a channel", remaining(), place());
        const Byte* const in = m_window.data();
        const unsigned bits = in[1], coding = in[2], mask = in[3];
        if (bits != 8)
            return refuse("channels of 8 bits", std::to_string(bits) + " bits", place(1));
        if (coding > 2) return refuse("coding 0, 1 or 2", maskText(coding), place(2));
        if (mask == 0 || (mask & ~(kColors | kAlpha)) || (mask & all))
            return refuse(
                "channels red (0x80), green (0x40), blue (0x20) or alpha (0x10), each once",
                maskText(mask), place(3));
        all |= mask;
        found.emplace_back(static_cast<Coding>(coding), mask);
        another = in[0] != 0;
        m_window.skip(kPacketBytes);
    }
    if ((all & kColors) != kColors)
        return refuse("red, green and blue channels (0xe0)", maskText(all), place());
    m_pixelBytes = all & kAlpha ? 4 : 3;
    for (const auto& [coding, mask] : found)
        m_packets.push_back(packetOf(coding, mask, m_pixelBytes));
    return {};
}

ReadResult PicReader::readHeader(ImageHeader& header) {
    if (!m_window.has(kHeaderBytes)) return refuse("a header of 104 bytes", remaining());
    const Byte* const head = m_window.data();
    const std::string_view kind(reinterpret_cast<const char*>(head) + 88, 4);
    if (kind != "PICT") return refuse("\"PICT\"", inQuotes(kind), "byte 88");
    m_width = big16(head + 92);
    m_height = big16(head + 94);
    m_window.skip(kHeaderBytes);
    if (ReadResult refusal = readPackets()) return refusal;
    header.width = static_cast<std::int64_t>(m_width);
    header.height = static_cast<std::int64_t>(m_height);
    header.format = m_pixelBytes == 4 ? KVRPixelImageFormat::RGBA : KVRPixelImageFormat::RGB;
    header.storedChannels = static_cast<int>(m_pixelBytes);
    header.storedBits = 8;
    std::uint64_t scanline = 0;
    for (const Packet& packet : m_packets) scanline += packet.leastBytes(m_width);
    header.leastFileBytes = m_window.place() + saturatedProduct(scanline, m_height);
    return {};
}

ReadResult PicReader::readPixels(std::span<std::byte> pixels) {
    auto* out = reinterpret_cast<Byte*>(pixels.data());
    for (std::size_t row = 0; row < m_height; ++row, out += m_width * m_pixelBytes)
        for (const Packet& packet : m_packets) {
            m_window.has(packet.mostBytes(m_width));
            ReadResult refusal =
                packet.coding == Coding::Plain ? readPlain(packet, out) : readRuns(packet, out);
            if (!refusal) continue;
            refusal->where += ", row " + std::to_string(row);
            return refusal;
        }
    return {};
}

ReadResult PicReader::readPlain(const Packet& packet, Byte* out) {
    const std::size_t bytes = packet.mostBytes(m_width);
    if (m_window.size() < bytes)
        return refuse("a scanline of " + bytesText(bytes), remaining(), place());
    packet.scatter(m_window.data(), packet.channels, m_width, packet.places, out);
    m_window.skip(bytes);
    return {};
}

ReadResult PicReader::readRuns(const Packet& packet, Byte* out) {
    const Byte* const in = m_window.data();
    const std::size_t size = m_window.size();
    std::size_t at = 0;
    for (std::size_t left = m_width; left > 0;) {
        const Run run = parseRun(packet.coding, in + at, size - at);
        if (run.headBytes == 0) return refuse("a run", "the end of the file", place(at));
        if (run.count == 0 || run.count > left)
            return refuse("a run of 1 to " + std::to_string(left) + " pixels",
                          std::to_string(run.count), place(at));
        const std::size_t bytes = (run.repeats ? 1 : run.count) * packet.channels;
        if (size - at - run.headBytes < bytes)
            return refuse("a run of " + std::to_string(run.count) + " pixels",
                          "the end of the file", place(at));
        packet.scatter(in + at + run.headBytes, run.repeats ? 0 : packet.channels, run.count,
                       packet.places, out);
        at += run.headBytes + bytes;
        out += run.count * m_pixelBytes;
        left -= run.count;
    }
    m_window.skip(at);
    return {};
}

bool recognises(std::span<const std::byte> head) { return startsWith(head, "\x53\x80\xF6\x34"); }

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<PicReader>(source);
}

}  // namespace

const ImageFormat kPicFormat{"pic", recognises, open};

}  // namespace rb::imaging
