// Reading of SGI images (.sgi, .rgb, .rgba, .bw).
//
//   01 DA 01 01 00 03                     magic, run lengths, 1 byte a sample, 3 dimensions
//   00 40 00 30 00 03                     64 x 48 pixels, 3 channels
//   00 00 00 00 00 00 00 FF               smallest and largest sample, then 84 bytes: a name
//   00 00 00 00                           no colormap; zeros up to byte 512
//   00 00 06 80 00 00 06 88 ...           with run lengths: where each row of each channel begins,
//   00 00 00 08 00 00 00 05 ...           and how many bytes it has
//   84 10 20 30 40 3C 07 00               a row: 4 samples as they are, 60 times the sample 7, end
//
// All numbers are big endian. Each channel is a plane of its own, bottom row first. Rows may share
// their bytes: a tiny file may honestly be a large picture. Source: P. Haeberli, "The SGI Image
// File Format", version 1.00. It gives channels beyond alpha no meaning, so such files are refused;
// two channels are what the usual programs take them for, grey and alpha.

#include "RenderingBase/host/imaging/ParallelRows.h"
#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/FirstRefusal.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SgiRows.h"

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace rb::imaging {
namespace {

using Byte = unsigned char;

class SgiReader final : public ImageReader {
public:
    explicit SgiReader(ByteSource& source) : m_source(source) {}
    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    ReadResult readPlaces(std::vector<SgiRowPlace>& places);

    SharedSource m_source;
    SgiLayout m_layout;
};

ReadResult checkKind(const Byte* head) {
    static constexpr std::array kMeanings{"plain samples", "dithered pixels", "screen colours",
                                          "a table of colours"};
    if (head[2] > 1) return refuse("storage 0 or 1", std::to_string(head[2]), "byte 2");
    if (head[3] < 1 || head[3] > 2)
        return refuse("1 or 2 bytes a sample", std::to_string(head[3]), "byte 3");
    const std::uint32_t dimensions = big16(head + 4);
    if (dimensions < 1 || dimensions > 3)
        return refuse("1 to 3 dimensions", std::to_string(dimensions), "byte 4");
    const std::uint32_t map = big32(head + 104);
    if (map != 0)
        return refuse("plain samples (colormap 0)",
                      (map < kMeanings.size() ? kMeanings[map] : "an unknown kind") +
                          std::string(" (colormap ") + std::to_string(map) + ")",
                      "byte 104");
    const std::uint32_t channels = big16(head + 10);
    if (dimensions == 3 && (channels < 1 || channels > 4))
        return refuse("1 to 4 channels", std::to_string(channels), "byte 10");
    return {};
}

ReadResult SgiReader::readHeader(ImageHeader& header) {
    std::array<Byte, SgiLayout::kHeaderBytes> head;
    const std::size_t got = m_source.read(0, head.data(), head.size());
    if (got != head.size()) return refuse("a header of 512 bytes", bytesText(got));
    if (ReadResult refusal = checkKind(head.data())) return refusal;
    // Fewer dimensions mean one row, or one channel, whatever the fields for more of them hold.
    const std::uint32_t dimensions = big16(&head[4]);
    m_layout.runLengths = head[2] == 1;
    m_layout.sampleBytes = head[3];
    m_layout.width = big16(&head[6]);
    m_layout.height = dimensions > 1 ? big16(&head[8]) : 1;
    m_layout.channels = dimensions > 2 ? big16(&head[10]) : 1;

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

ReadResult SgiReader::readPlaces(std::vector<SgiRowPlace>& places) {
    const std::size_t rows = m_layout.planeRows();
    std::vector<Byte> tables(8 * rows);
    if (m_source.read(SgiLayout::kHeaderBytes, tables.data(), tables.size()) != tables.size())
        return refuse("tables of " + std::to_string(rows) + " rows", "the end of the file",
                      "byte 512");
    places.resize(rows);
    for (std::size_t i = 0; i < rows; ++i)
        places[i] = {big32(&tables[4 * i]), big32(&tables[4 * (rows + i)])};
    return {};
}

ReadResult SgiReader::readPixels(std::span<std::byte> pixels) {
    std::vector<SgiRowPlace> places;
    if (m_layout.runLengths)
        if (ReadResult refusal = readPlaces(places)) return refusal;
    auto* const out = reinterpret_cast<Byte*>(pixels.data());
    FirstRefusal refusals;
    forRowSlices(static_cast<std::int64_t>(m_layout.width * m_layout.channels),
                 static_cast<std::int64_t>(m_layout.height),
                 [&](std::int64_t first, std::int64_t end) {
                     SgiRows rows(m_source, m_layout, places);
                     auto row = static_cast<std::size_t>(first);
                     if (ReadResult refusal = rows.read(row, static_cast<std::size_t>(end), out))
                         refusals.note(row, std::move(refusal));
                 });
    return refusals.result();
}

bool recognises(std::span<const std::byte> head) { return startsWith(head, "\x01\xDA"); }

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<SgiReader>(source);
}

}  // namespace

const ImageFormat kSgiFormat{"sgi", recognises, open};

}  // namespace rb::imaging
