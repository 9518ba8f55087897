#include "tools/rba/SheetCanvas.h"

#include "tools/rba/SheetFont.h"

#include <cstddef>

namespace rb::cli {
namespace {

constexpr int kDot = 2;  // pixels to a side of a dot of a letter
constexpr int kAdvance = (kGlyphWidth + 1) * kDot;
constexpr int kSquare = 8;  // pixels to a side of a square of the checkerboard
constexpr int kDarkSquare = 102, kLightSquare = 153;

static_assert(kTextHeight == kGlyphHeight * kDot);

unsigned char over(int value, int alpha, int ground) {
    return static_cast<unsigned char>((value * alpha + ground * (255 - alpha) + 127) / 255);
}

}  // namespace

int textWidth(std::string_view text) {
    return text.empty() ? 0 : static_cast<int>(text.size()) * kAdvance - kDot;
}

SheetCanvas::SheetCanvas(int width, int height, SheetColor ground)
    : m_image(KVRVar<KVRPixelImage>::Adopt(
          KVRPixelImage::CreateUnfilled(width, height, KVRPixelImageFormat::RGB))),
      m_width(width) {
    fill(0, 0, width, height, ground);
}

unsigned char* SheetCanvas::at(int column, int row) {
    const auto pixel = static_cast<std::size_t>(row) * static_cast<std::size_t>(m_width) +
                       static_cast<std::size_t>(column);
    return m_image->GetPixelsToModify() + 3 * pixel;
}

void SheetCanvas::fill(int left, int top, int width, int height, SheetColor color) {
    for (int row = top; row < top + height; ++row) {
        unsigned char* pixel = at(left, row);
        for (int i = 0; i < width; ++i, pixel += 3) {
            pixel[0] = color.red;
            pixel[1] = color.green;
            pixel[2] = color.blue;
        }
    }
}

void SheetCanvas::text(int left, int top, std::string_view text, SheetColor color) {
    for (const char letter : text) {
        for (int row = 0; row < kGlyphHeight; ++row)
            for (int column = 0; column < kGlyphWidth; ++column)
                if (hasGlyphDot(letter, column, row))
                    fill(left + kDot * column, top + kDot * row, kDot, kDot, color);
        left += kAdvance;
    }
}

void SheetCanvas::picture(int left, int top, const KVRPixelImage& picture) {
    int width = 0, height = 0;
    picture.GetSize(width, height);
    const unsigned char* from = picture.GetPixelsToRead();
    for (int row = 0; row < height; ++row) {
        unsigned char* to = at(left, top + row);
        for (int column = 0; column < width; ++column, from += 4, to += 3) {
            const bool isLight = (column / kSquare + row / kSquare) % 2 == 0;
            const int ground = isLight ? kLightSquare : kDarkSquare;
            for (int channel = 0; channel < 3; ++channel)
                to[channel] = over(from[channel], from[3], ground);
        }
    }
}

}  // namespace rb::cli
