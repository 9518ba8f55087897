#pragma once

/// @file  The rows of an SGI image, out of its planes.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"
#include "RenderingBase/host/imaging/formats/SharedSource.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace rb::imaging {

/// The bytes of one run-length-coded row of one plane in the file.
struct SgiRowPlace {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
};

/// What the header says about the planes.
struct SgiLayout {
    static constexpr std::size_t kHeaderBytes = 512;
    static constexpr std::size_t kLongestRun = 127;

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

/// Delivers rows, with buffers of its own: one object a thread.
class SgiRows {
public:
    /// @param places  Of all rows in the order of the file's tables; none without run lengths. They
    ///                outlive the object.
    SgiRows(SharedSource& source, const SgiLayout& layout, std::span<const SgiRowPlace> places);

    /// Reads the rows first to end - 1, counted from the top. @p out is where the picture's first
    /// row goes. After a refusal @p first is the row that it is about.
    [[nodiscard]] ReadResult read(std::size_t& first, std::size_t end, unsigned char* out);

private:
    ReadResult readPlainRows(std::size_t first, std::size_t end, unsigned char* out);
    ReadResult readCodedRow(std::size_t row, unsigned char* out);
    ReadResult expandRow(const SgiRowPlace& place, std::span<unsigned char> out);

    SharedSource& m_source;
    const SgiLayout m_layout;
    const std::span<const SgiRowPlace> m_places;
    const std::size_t m_bandRows;         // that are read at once
    std::vector<unsigned char> m_stored;  // bytes of the file
    std::vector<unsigned char> m_planes;  // one row of each plane, 8 bits a sample
};

}  // namespace rb::imaging
