#pragma once

/// @file  From rows of channels of a PSD file to delivered pixels.

#include "RenderingBase/host/imaging/ColorEngine.h"
#include "RenderingBase/host/imaging/formats/PsdHeader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace rb::imaging {

/// One row of each wanted channel, without compression: those of the colour, then alpha.
using PsdChannels = std::array<const unsigned char*, 5>;

/// Converts rows of one file. Threads: any number at once, each with a scratch of its own.
class PsdPixels {
public:
    /// Room for what lies between the stored and the delivered form of a row.
    struct Scratch {
        std::array<std::vector<unsigned char>, 5> narrowed;
        std::vector<unsigned char> bytes;
        std::vector<std::uint16_t> words;
        std::vector<float> floats;
    };

    /// @param header  Must outlive the object.
    explicit PsdPixels(const PsdHeader& header);

    /// In which pixels are delivered.
    KVRPixelImageFormat format() const { return m_format; }
    bool deliversSRGB() const {
        return m_header.mode == PsdMode::Cmyk || m_header.mode == PsdMode::Lab;
    }
    /// Prepares the conversion of colours. Call once, before `convert`.
    [[nodiscard]] ReadResult prepare();
    /// Writes a row of delivered pixels to @p out.
    void convert(const PsdChannels& channels, std::byte* out, Scratch& scratch) const;

private:
    PsdChannels narrow(const PsdChannels& channels, Scratch& scratch) const;
    void expandBits(const unsigned char* row, unsigned char* out) const;
    void expandPalette(const unsigned char* row, unsigned char* out) const;
    void toFloats(const PsdChannels& channels, float* out) const;
    void mixInks(const PsdChannels& bytes, Scratch& scratch) const;
    void transformInks(const PsdChannels& channels, Scratch& scratch) const;
    void transformLab(const PsdChannels& channels, Scratch& scratch) const;
    void copyRgbAndAlpha(const unsigned char* alpha, unsigned char* out, const Scratch&) const;

    const PsdHeader& m_header;
    const std::size_t m_width;
    KVRPixelImageFormat m_format;
    std::unique_ptr<const IccProfile> m_profile;
    std::unique_ptr<const ColorTransform> m_transform;
    std::array<std::array<unsigned char, 4>, 256> m_palette{};
};

}  // namespace rb::imaging
