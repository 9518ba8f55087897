#pragma once

/// @file  The older of the two ways in which DDS files name their texel format.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TexelFormat.h"

#include <array>
#include <cstdint>

namespace rb::imaging {

/// The structure DDS_PIXELFORMAT.
struct DdsPixelFormat {
    std::uint32_t flags = 0;
    std::uint32_t fourCC = 0;
    std::uint32_t bits = 0;  ///< Of a texel.
    std::array<std::uint32_t, 4> masks{};

    /// Whether a second header follows, which names the format by its DXGI number.
    bool isDx10() const;
};

/// What a DDS_PIXELFORMAT stands for; a refusal for what is no picture of its own.
ReadResult ddsTexels(const DdsPixelFormat& format, TexelFormat& texels);

}  // namespace rb::imaging
