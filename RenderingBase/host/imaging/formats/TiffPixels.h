#pragma once

/// @file  From decoded rows of a TIFF file to delivered pixels.

#include "RenderingBase/host/imaging/ColorEngine.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TiffDirectory.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace rb::imaging {

/// Decoded rows of the samples that are wanted: one row a sample for a planar file, else one row.
using TiffRows = std::span<const std::byte* const>;

/// Converts rows of one file. Threads: any number at once, each with a scratch of its own.
class TiffPixels {
public:
    /// Room for what lies between the stored and the delivered form of a row.
    struct Scratch {
        std::vector<std::uint16_t> words;
        std::vector<std::uint8_t> bytes;
        std::vector<float> floats;
        std::vector<unsigned char> rgb;
    };

    /// @param directory  Must outlive the object.
    explicit TiffPixels(const TiffDirectory& directory);

    /// In which pixels are delivered.
    KVRPixelImageFormat format() const { return m_format; }
    bool deliversSRGB() const { return isLab() || m_directory.color == TiffColor::Cmyk; }
    /// Which samples are wanted, in the order of `TiffRows`: those of the colour, then alpha.
    std::span<const int> wanted() const { return m_wanted; }
    /// From which planes they come, in the same order; 0 for a file that is not planar.
    std::vector<std::uint32_t> planes() const;
    /// Whether decoded rows are delivered pixels already.
    bool keepsRows() const;
    /// Prepares the conversion of colours. Call once, before `convert`.
    [[nodiscard]] ReadResult prepare();
    /// Writes @p pixels delivered pixels to @p out.
    void convert(TiffRows rows, std::size_t pixels, std::byte* out, Scratch& scratch) const;

private:
    bool isLab() const {
        return m_directory.color == TiffColor::CieLab || m_directory.color == TiffColor::IccLab;
    }
    bool isGrey() const;
    bool interleavedAsDelivered() const;
    bool isColor(std::size_t value) const;
    std::size_t sampleOf(std::size_t channel) const;
    SampleRun run(TiffRows rows, std::size_t wantedIndex, std::size_t pixels) const;
    void toFloats(TiffRows rows, std::size_t pixels, float* out) const;
    void toHalves(TiffRows rows, std::size_t pixels, std::uint16_t* out) const;
    void toBytes(TiffRows rows, std::size_t pixels, unsigned char* out) const;
    void expandPalette(TiffRows rows, std::size_t pixels, unsigned char* out, Scratch&) const;
    void mixInks(TiffRows rows, std::size_t pixels, Scratch&) const;
    void transformInks(TiffRows rows, std::size_t pixels, Scratch&) const;
    void transformLab(TiffRows rows, std::size_t pixels, Scratch&) const;
    void copyRgbAndAlpha(TiffRows rows, std::size_t pixels, unsigned char* out,
                         const Scratch&) const;

    const TiffDirectory& m_directory;
    std::vector<int> m_wanted;
    KVRPixelImageFormat m_format = KVRPixelImageFormat::None;
    std::size_t m_channels = 0;  // of the delivered format
    std::unique_ptr<const IccProfile> m_profile;
    std::unique_ptr<const ColorTransform> m_transform;
};

}  // namespace rb::imaging
