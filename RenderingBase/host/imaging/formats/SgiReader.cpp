// Reading of SGI images (.sgi, .rgb, .rgba, .bw).
//
//   01 DA 01 01 00 03                     magic, run lengths, 1 byte a sample, 3 dimensions
//   00 40 00 30 00 03                     64 x 48 pixels, 3 channels
//   00 00 00 00 00 00 00 FF               smallest and largest sample, then 84 bytes: a name
//   00 00 00 00                           colormap: the samples mean themselves; zeros up to byte
//   512 00 00 06 80 00 00 06 86 ...           with run lengths: where each row begins, channel by
//   channel 00 00 00 06 00 00 00 05 ...           and how many bytes it has 84 10 20 30 40 3C 07 00
//   a row: 4 samples as they are, 60 times the sample 7, end
//
// All numbers are big endian. Each channel is a plane of its own, bottom row first. Rows may share
// their bytes: a tiny file may honestly be a large picture. Source: P. Haeberli, "The SGI Image
// File Format", version 1.00. It gives channels beyond alpha no meaning, so such files are refused;
// two channels are what the usual programs take them for, grey and alpha.

#include "RenderingBase/host/imaging/ParallelRows.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

namespace rb::imaging {
namespace {

using Byte = unsigned char;

constexpr std::size_t kHeaderBytes = 512;
constexpr std::size_t kLongestRun = 127;

std::uint32_t bigEndian(const Byte* at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) value = value << 8 | at[i];
    return value;
}

struct SgiLayout {
    bool runLengths = false;
    std::size_t sampleBytes = 1;  ///< 1 or 2.
    std::size_t width = 0, height = 0, channels = 0;

    std::size_t planeRows() const { return height * channels; }
    /// Where the tables of run-length-coded rows end; without them, where the samples begin.
    std::uint64_t dataBegin() const {
        return kHeaderBytes + (runLengths ? std::uint64_t{8} * planeRows() : 0);
    }
    std::uint64_t leastFileBytes() const {
        if (!runLengths)
            return kHeaderBytes + saturatedProduct(width * sampleBytes, height, channels);
        // All rows may be the same one, of the longest runs: a count and a sample each.
        return dataBegin() + (width + kLongestRun - 1) / kLongestRun * 2 * sampleBytes;
    }
};

/// The bytes of one row of one plane in the file.
struct RowPlace {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
};

/// Samples as bytes. 16 bits become v * 255 / 65535 rounded; the formula is equal to that for
/// every v.
template <std::size_t kBytes>
void narrow(const Byte* in, Byte* out, std::size_t samples) {
    if constexpr (kBytes == 1) {
        std::memcpy(out, in, samples);
    } else {
        for (std::size_t i = 0; i < samples; ++i) {
            const unsigned value = unsigned{in[2 * i]} << 8 | in[2 * i + 1];
            out[i] = static_cast<Byte>((value * 255 + 32895) >> 16);
        }
    }
}

/// One row out of its runs. @p at tells how far it came.
template <std::size_t kBytes>
ReadResult expandRuns(std::span<const Byte> in, std::span<Byte> out, std::size_t& at) {
    for (at = 0; !out.empty();) {
        if (in.size() - at < kBytes) return refuse("a run", "the end of the row's bytes");
        // Of a count of two bytes only the second means something.
        const unsigned head = in[at + kBytes - 1];
        const bool plain = head & 128;
        const std::size_t count = head & 127;
        if (count == 0 || count > out.size())
            return refuse("a run of 1 to " + std::to_string(out.size()) + " samples",
                          count ? std::to_string(count) : "the end of the row");
        const std::size_t bytes = plain ? count * kBytes : kBytes;
        if (in.size() - at - kBytes < bytes)
            return refuse("a run of " + std::to_string(count) + " samples",
                          "the end of the row's bytes");
        at += kBytes;
        if (plain) {
            narrow<kBytes>(&in[at], out.data(), count);
        } else {
            Byte value = 0;
            narrow<kBytes>(&in[at], &value, 1);
            std::memset(out.data(), value, count);
        }
        at += bytes;
        out = out.subspan(count);
    }
    return {};
}

template <std::size_t kChannels>
void interleave(const Byte* planes, Byte* out, std::size_t width) {
    for (std::size_t x = 0; x < width; ++x)
        for (std::size_t c = 0; c < kChannels; ++c) out[kChannels * x + c] = planes[c * width + x];
}

/// What several threads read from, each in its turn.
class SharedSource {
public:
    explicit SharedSource(ByteSource& source) : m_source(source) {}
    std::uint64_t size() const { return m_source.size(); }
    std::size_t read(std::uint64_t offset, void* to, std::size_t count) {
        const std::lock_guard lock(m_mutex);
        return m_source.read(offset, to, count);
    }

private:
    ByteSource& m_source;
    std::mutex m_mutex;
};

/// Reads rows with buffers of its own.
class RowReader {
public:
    RowReader(SharedSource& source, const SgiLayout& layout, std::span<const RowPlace> places);
    /// @param row  Counted from the top.
    [[nodiscard]] ReadResult read(std::size_t row, Byte* out);

private:
    ReadResult readPlane(const RowPlace& place, std::span<Byte> out);

    SharedSource& m_source;
    const SgiLayout& m_layout;
    std::span<const RowPlace> m_places;
    std::vector<Byte> m_stored;
    std::vector<Byte> m_planes;
};

RowReader::RowReader(SharedSource& source, const SgiLayout& layout,
                     std::span<const RowPlace> places)
    : m_source(source),
      m_layout(layout),
      m_places(places),
      // The longest useful row has a count before each sample. What a table calls longer is read
      // up to there: many rows may claim the same large part of a file.
      m_stored(layout.width * layout.sampleBytes * (layout.runLengths ? 2 : 1)),
      m_planes(layout.width * layout.channels) {}

ReadResult RowReader::read(std::size_t row, Byte* out) {
    const std::size_t width = m_layout.width, stored = m_layout.height - 1 - row;
    for (std::size_t channel = 0; channel < m_layout.channels; ++channel) {
        std::size_t plane = channel * m_layout.height + stored;
        const std::uint64_t rowBytes = width * m_layout.sampleBytes;
        const RowPlace place = m_layout.runLengths
                                   ? m_places[plane]
                                   : RowPlace{kHeaderBytes + plane * rowBytes, rowBytes};
        Byte* const target = m_layout.channels == 1 ? out : m_planes.data() + channel * width;
        if (ReadResult refusal = readPlane(place, {target, width})) {
            refusal->where +=
                ", row " + std::to_string(row) + ", channel " + std::to_string(channel);
            return refusal;
        }
    }
    switch (m_layout.channels) {
        case 2:
            interleave<2>(m_planes.data(), out, width);
            break;
        case 3:
            interleave<3>(m_planes.data(), out, width);
            break;
        case 4:
            interleave<4>(m_planes.data(), out, width);
            break;
        default:
            break;
    }
    return {};
}

ReadResult RowReader::readPlane(const RowPlace& place, std::span<Byte> out) {
    const bool wide = m_layout.sampleBytes == 2;
    const auto where = [&](std::size_t at) { return "byte " + std::to_string(place.offset + at); };
    if (place.offset < m_layout.dataBegin() || place.offset + place.bytes > m_source.size())
        return refuse("bytes of a row between " + std::to_string(m_layout.dataBegin()) + " and " +
                          std::to_string(m_source.size()),
                      std::to_string(place.bytes) + " bytes", where(0));
    const std::size_t wanted = std::min<std::uint64_t>(place.bytes, m_stored.size());
    if (m_source.read(place.offset, m_stored.data(), wanted) != wanted)
        return refuse("a row of " + std::to_string(wanted) + " bytes", "the end of the file",
                      where(0));
    if (!m_layout.runLengths) {
        (wide ? narrow<2> : narrow<1>)(m_stored.data(), out.data(), out.size());
        return {};
    }
    std::size_t at = 0;
    ReadResult refusal = (wide ? expandRuns<2> : expandRuns<1>)({m_stored.data(), wanted}, out, at);
    if (refusal) refusal->where = where(at);
    return refusal;
}

class SgiReader final : public ImageReader {
public:
    explicit SgiReader(ByteSource& source) : m_source(source) {}
    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    ReadResult readPlaces(std::vector<RowPlace>& places);

    SharedSource m_source;
    SgiLayout m_layout;
};

ReadResult checkKind(const Byte* head) {
    static constexpr std::array kMeanings{"plain samples", "dithered pixels", "screen colours",
                                          "a table of colours"};
    const auto number = [head](std::size_t at, std::size_t bytes) {
        return std::to_string(bigEndian(head + at, bytes));
    };
    if (head[2] > 1) return refuse("storage 0 or 1", number(2, 1), "byte 2");
    if (head[3] < 1 || head[3] > 2) return refuse("1 or 2 bytes a sample", number(3, 1), "byte 3");
    const std::uint32_t dimensions = bigEndian(head + 4, 2);
    if (dimensions < 1 || dimensions > 3)
        return refuse("1 to 3 dimensions", number(4, 2), "byte 4");
    const std::uint32_t map = bigEndian(head + 104, 4);
    if (map != 0)
        return refuse("plain samples (colormap 0)",
                      (map < kMeanings.size() ? kMeanings[map] : "an unknown kind") +
                          std::string(" (colormap ") + number(104, 4) + ")",
                      "byte 104");
    const std::uint32_t channels = bigEndian(head + 10, 2);
    if (dimensions == 3 && (channels < 1 || channels > 4))
        return refuse("1 to 4 channels", number(10, 2), "byte 10");
    return {};
}

ReadResult SgiReader::readHeader(ImageHeader& header) {
    std::array<Byte, kHeaderBytes> head;
    const std::size_t got = m_source.read(0, head.data(), head.size());
    if (got != head.size()) return refuse("a header of 512 bytes", std::to_string(got) + " bytes");
    if (ReadResult refusal = checkKind(head.data())) return refusal;
    // Fewer dimensions mean one row, or one channel, whatever the fields for more of them hold.
    const std::uint32_t dimensions = bigEndian(&head[4], 2);
    m_layout.runLengths = head[2] == 1;
    m_layout.sampleBytes = head[3];
    m_layout.width = bigEndian(&head[6], 2);
    m_layout.height = dimensions > 1 ? bigEndian(&head[8], 2) : 1;
    m_layout.channels = dimensions > 2 ? bigEndian(&head[10], 2) : 1;

    static constexpr std::array kFormats{KVRPixelImageFormat::L, KVRPixelImageFormat::LA,
                                         KVRPixelImageFormat::RGB, KVRPixelImageFormat::RGBA};
    header.width = static_cast<std::int64_t>(m_layout.width);
    header.height = static_cast<std::int64_t>(m_layout.height);
    header.format = kFormats[m_layout.channels - 1];
    header.storedChannels = static_cast<int>(m_layout.channels);
    header.storedBits = static_cast<int>(8 * m_layout.sampleBytes);
    header.leastFileBytes = m_layout.leastFileBytes();
    return {};
}

ReadResult SgiReader::readPlaces(std::vector<RowPlace>& places) {
    const std::size_t rows = m_layout.planeRows();
    std::vector<Byte> tables(8 * rows);
    if (m_source.read(kHeaderBytes, tables.data(), tables.size()) != tables.size())
        return refuse("tables of " + std::to_string(rows) + " rows", "the end of the file",
                      "byte 512");
    places.resize(rows);
    for (std::size_t i = 0; i < rows; ++i)
        places[i] = {bigEndian(&tables[4 * i], 4), bigEndian(&tables[4 * (rows + i)], 4)};
    return {};
}

ReadResult SgiReader::readPixels(std::span<std::byte> pixels) {
    std::vector<RowPlace> places;
    if (m_layout.runLengths)
        if (ReadResult refusal = readPlaces(places)) return refusal;
    const std::size_t rowBytes = m_layout.width * m_layout.channels;
    auto* const out = reinterpret_cast<Byte*>(pixels.data());
    const auto height = static_cast<std::int64_t>(m_layout.height);
    std::mutex mutex;
    ReadResult refusal;
    std::int64_t refusedRow = height;
    forRowSlices(static_cast<std::int64_t>(rowBytes), height,
                 [&](std::int64_t first, std::int64_t end) {
                     RowReader reader(m_source, m_layout, places);
                     for (std::int64_t row = first; row < end; ++row) {
                         const auto y = static_cast<std::size_t>(row);
                         ReadResult found = reader.read(y, out + y * rowBytes);
                         if (!found) continue;
                         // The topmost row is named, whichever thread is the first to fail.
                         const std::lock_guard lock(mutex);
                         if (row < refusedRow) refusal = std::move(found);
                         refusedRow = std::min(row, refusedRow);
                         return;
                     }
                 });
    return refusal;
}

bool recognises(std::span<const std::byte> head) { return startsWith(head, "\x01\xDA"); }

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<SgiReader>(source);
}

}  // namespace

const ImageFormat kSgiFormat{"sgi", recognises, open};

}  // namespace rb::imaging
