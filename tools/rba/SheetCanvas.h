#pragma once

/// @file  What sheets of pictures are drawn on.

#include "RenderingBase/host/imaging/KVRPixelImage.h"

#include <cstdint>
#include <string_view>

namespace rb::cli {

struct SheetColor {
    std::uint8_t red, green, blue;
};

inline constexpr int kTextHeight = 16;  ///< Pixels of a line of text.
int textWidth(std::string_view text);   ///< Pixels.

/// An RGB picture with operations to draw on it. Nothing may reach beyond it.
class SheetCanvas {
public:
    SheetCanvas(int width, int height, SheetColor ground);

    void fill(int left, int top, int width, int height, SheetColor color);
    /// @p left and @p top are those of the first letter.
    void text(int left, int top, std::string_view text, SheetColor color);
    /// Draws @p picture, of 8-bit RGBA with alpha not multiplied in, over a checkerboard.
    void picture(int left, int top, const KVRPixelImage& picture);

    const KVRVar<KVRPixelImage>& image() const { return m_image; }

private:
    unsigned char* at(int column, int row);

    KVRVar<KVRPixelImage> m_image;
    int m_width;
};

}  // namespace rb::cli
