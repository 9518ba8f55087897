#include "RenderingBase/host/imaging/formats/SgiRows.h"

#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SampleRows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace rb::imaging {
namespace {

using Byte = unsigned char;
using Planes = std::array<const Byte*, 4>;

/// Samples as bytes.
template <std::size_t kBytes>
void deliver(const Byte* in, Byte* out, std::size_t samples) {
    if constexpr (kBytes == 1)
        std::memcpy(out, in, samples);
    else
        narrowSamples(in, out, samples);
}

/// One row out of its runs. @p at tells how far it came.
template <std::size_t kBytes>
ReadResult expandRuns(std::span<const Byte> in, std::span<Byte> out, std::size_t& at) {
    for (at = 0; !out.empty();) {
        if (in.size() - at < kBytes) return refuse("a run", "the end of the row's bytes");
        // Of a count of two bytes only the second means something.
        const unsigned head = in[at + kBytes - 1];
        const bool plain = head & 128;
        const std::size_t count = head & SgiLayout::kLongestRun;
        if (count == 0 || count > out.size())
            return refuse("a run of 1 to " + std::to_string(out.size()) + " samples",
                          count ? std::to_string(count) : "the end of the row");
        const std::size_t bytes = plain ? count * kBytes : kBytes;
        if (in.size() - at - kBytes < bytes)
            return refuse("a run of " + std::to_string(count) + " samples",
                          "the end of the row's bytes");
        at += kBytes;
        if (plain) {
            deliver<kBytes>(&in[at], out.data(), count);
        } else {
            Byte value = 0;
            deliver<kBytes>(&in[at], &value, 1);
            std::memset(out.data(), value, count);
        }
        at += bytes;
        out = out.subspan(count);
    }
    return {};
}

std::size_t bandRowsOf(const SgiLayout& layout) {
    constexpr std::size_t kBandBytes = 64 * 1024;
    const std::size_t rowBytes = std::max<std::size_t>(1, layout.width * layout.sampleBytes);
    return layout.runLengths ? 1 : std::max<std::size_t>(1, kBandBytes / rowBytes);
}

}  // namespace

// The longest useful run-length-coded row has a count before each sample. What a table calls longer
// is read up to there: many rows may claim the same large part of a file.
SgiRows::SgiRows(SharedSource& source, const SgiLayout& layout, std::span<const SgiRowPlace> places)
    : m_source(source),
      m_layout(layout),
      m_places(places),
      m_bandRows(bandRowsOf(layout)),
      m_stored(layout.width * layout.sampleBytes *
               (layout.runLengths ? 2 : m_bandRows * layout.channels)),
      m_planes(layout.width * layout.channels) {}

ReadResult SgiRows::read(std::size_t& first, std::size_t end, Byte* out) {
    for (; first < end; first += std::min(m_bandRows, end - first)) {
        Byte* const to = out + first * m_layout.width * m_layout.channels;
        ReadResult refusal = m_layout.runLengths
                                 ? readCodedRow(first, to)
                                 : readPlainRows(first, std::min(first + m_bandRows, end), to);
        if (!refusal) continue;
        refusal->where += ", row " + std::to_string(first);
        return refusal;
    }
    return {};
}

ReadResult SgiRows::readPlainRows(std::size_t first, std::size_t end, Byte* out) {
    const std::size_t width = m_layout.width, channels = m_layout.channels;
    const std::size_t rowBytes = width * m_layout.sampleBytes, bandBytes = (end - first) * rowBytes;
    for (std::size_t c = 0; c < channels; ++c) {
        const std::uint64_t offset =
            m_layout.dataBegin() + (c * m_layout.height + m_layout.height - end) * rowBytes;
        if (m_source.read(offset, &m_stored[c * bandBytes], bandBytes) != bandBytes)
            return refuse(bytesText(bandBytes) + " of channel " + std::to_string(c),
                          "the end of the file", placeText(offset));
    }
    for (std::size_t row = end; row-- > first;) {
        Planes planes{};
        for (std::size_t c = 0; c < channels; ++c) {
            planes[c] = &m_stored[c * bandBytes + (end - 1 - row) * rowBytes];
            if (m_layout.sampleBytes == 1) continue;
            narrowSamples(planes[c], &m_planes[c * width], width);
            planes[c] = &m_planes[c * width];
        }
        interleaveRows(channels, planes.data(), out + (row - first) * width * channels, width);
    }
    return {};
}

ReadResult SgiRows::readCodedRow(std::size_t row, Byte* out) {
    const std::size_t width = m_layout.width, stored = m_layout.height - 1 - row;
    Planes planes{};
    for (std::size_t c = 0; c < m_layout.channels; ++c) {
        const std::span<Byte> plane(&m_planes[c * width], width);
        if (ReadResult refusal = expandRow(m_places[c * m_layout.height + stored], plane)) {
            refusal->where += ", channel " + std::to_string(c);
            return refusal;
        }
        planes[c] = plane.data();
    }
    interleaveRows(m_layout.channels, planes.data(), out, width);
    return {};
}

ReadResult SgiRows::expandRow(const SgiRowPlace& place, std::span<Byte> out) {
    if (place.offset < m_layout.dataBegin() || place.offset + place.bytes > m_source.size())
        return refuse("bytes of a row between " + std::to_string(m_layout.dataBegin()) + " and " +
                          std::to_string(m_source.size()),
                      bytesText(place.bytes), placeText(place.offset));
    const std::size_t wanted = std::min<std::uint64_t>(place.bytes, m_stored.size());
    if (m_source.read(place.offset, m_stored.data(), wanted) != wanted)
        return refuse("a row of " + bytesText(wanted), "the end of the file",
                      placeText(place.offset));
    const std::span<const Byte> in(m_stored.data(), wanted);
    std::size_t at = 0;
    ReadResult refusal =
        m_layout.sampleBytes == 2 ? expandRuns<2>(in, out, at) : expandRuns<1>(in, out, at);
    if (refusal) refusal->where = placeText(place.offset + at);
    return refusal;
}

}  // namespace rb::imaging
