#pragma once

/// @file  A picture on which lines and areas are drawn with smooth edges.

#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "tools/rba/StrokeFont.h"

#include <array>
#include <span>
#include <vector>

namespace rb::cli {

/// Places are pixels from the upper left corner; what is beyond the picture is cut off.
class StrokeCanvas {
public:
    struct Ink {
        std::array<int, 3> color{};  ///< Red, green, blue, 0 to 255.
        double opacity = 1;
    };

    /// White. Throws Failure without memory.
    StrokeCanvas(int width, int height);

    /// Lines with round ends. Where they cross they cover no more than once.
    void lines(std::span<const Stroke> strokes, double lineWidth, const Ink& ink);
    /// What the outline encloses; what it encloses twice is outside.
    void area(std::span<const StrokePoint> outline, const Ink& ink);

    const KVRVar<KVRPixelImage>& image() const { return m_image; }

private:
    struct Mask;
    void cover(const Mask& mask, const Ink& ink);

    KVRVar<KVRPixelImage> m_image;
    int m_width, m_height;
};

}  // namespace rb::cli
