// Reading of PSD files and their large form, PSB. Numbers are big endian.
//
//   "8BPS" 00 01                     version 1: PSD (2: PSB)
//   00 00 00 00 00 00  00 03         three channels
//   00 00 00 7E 00 00 01 01          126 rows of 257 pixels
//   00 08 00 03                      8 bits a sample, colour mode 3: RGB
//   ...                              palette, resources and layers, each behind its length
//   00 01 ...                        the merged picture: all of red, all of green, all of blue
//
// Source: Adobe Photoshop File Formats. The merged picture is what the layers look
// like together; layers are not read. Samples of 32 bits are floating-point numbers.
//
// Alpha: a merged picture may have channels behind those of its colour. The first of them is its
// opacity when the file says so: by a negative number of layers, or by a block that has only this
// to say. All others are selections and spot colours that somebody keeps in the file, and would
// make holes where nobody sees any. Other readers have the same rule. Where a picture is partly
// transparent, its colours are blended with white by some writers; they are delivered as they are
// stored.
//
// A file of layers can be saved without their merged picture. In its place there is a white
// rectangle or a notice in small print, which is refused rather than taken for the picture. The
// mark in a file without layers means nothing: the merged picture is all that there is.

#include "RenderingBase/host/imaging/ParallelRows.h"
#include "RenderingBase/host/imaging/formats/FirstRefusal.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/PsdHeader.h"
#include "RenderingBase/host/imaging/formats/PsdPixels.h"
#include "RenderingBase/host/imaging/formats/PsdPlanes.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace rb::imaging {
namespace {

/// Decodes rows @p first to @p end - 1.
void decodeRows(PsdPlanes& planes, const PsdPixels& pixels, std::span<std::byte> out,
                std::uint32_t first, std::uint32_t end, FirstRefusal& refusals) {
    const PsdHeader& header = planes.header();
    const std::size_t rowBytes = out.size() / header.height;
    PsdPixels::Scratch scratch;
    std::vector<PsdRows> rows;
    for (std::uint32_t c = 0; c < header.wantedChannels(); ++c) rows.emplace_back(planes, c, first);
    for (std::uint32_t row = first; row < end; ++row) {
        PsdChannels channels{};
        for (std::size_t c = 0; c < rows.size(); ++c)
            if (ReadResult refusal = rows[c].next(channels[c]))
                return refusals.note(row, std::move(refusal));
        pixels.convert(channels, out.data() + row * rowBytes, scratch);
    }
}

class PsdReader final : public ImageReader {
public:
    explicit PsdReader(ByteSource& source) : m_source(source) {}

    ReadResult readHeader(ImageHeader& header) override {
        if (ReadResult refusal = readPsdHeader(m_source, m_header)) return refusal;
        m_pixels.emplace(m_header);
        header.width = m_header.width;
        header.height = m_header.height;
        header.format = m_pixels->format();
        header.storedChannels = static_cast<int>(m_header.channels);
        header.storedBits = static_cast<int>(m_header.depth);
        header.resolution = m_header.resolution;
        header.profile = m_header.profile;
        header.deliversSRGB = m_pixels->deliversSRGB();
        header.leastFileBytes = leastPsdBytes(m_header);
        return {};
    }

    ReadResult readPixels(std::span<std::byte> pixels) override {
        if (m_header.hasLayers && !m_header.mergedPictureIsReal)
            return refuse("a file with a merged picture",
                          "only its layers (saved without maximised compatibility)");
        if (ReadResult refusal = m_pixels->prepare()) return refusal;
        PsdPlanes planes(m_source, m_header);
        if (ReadResult refusal = planes.open()) return refusal;
        FirstRefusal refusals;
        forRowSlices(m_header.width, m_header.height, [&](std::int64_t first, std::int64_t end) {
            decodeRows(planes, *m_pixels, pixels, static_cast<std::uint32_t>(first),
                       static_cast<std::uint32_t>(end), refusals);
        });
        return refusals.result();
    }

private:
    ByteSource& m_source;
    PsdHeader m_header;
    std::optional<PsdPixels> m_pixels;
};

bool recognises(std::span<const std::byte> head) { return startsWith(head, "8BPS"); }

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<PsdReader>(source);
}

}  // namespace

const ImageFormat kPsdFormat{"psd", recognises, open};

}  // namespace rb::imaging
