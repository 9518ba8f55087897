#include "tools/rba/Sheet.h"

#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/SheetCanvas.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace rb::cli {
namespace {

using Image = KVRVar<KVRPixelImage>;

constexpr int kMargin = 16, kGap = 20;  // pixels around everything, and between two pictures
constexpr int kLineHeight = kTextHeight + 4;
constexpr int kFrame = 1;  // around a picture: one texel would be hard to find
constexpr SheetColor kGround{58, 60, 63}, kBright{232, 233, 235}, kDim{168, 171, 176},
    kFrameColor{104, 107, 112};

/// A level, and how large it is drawn.
struct Column {
    std::vector<std::string> labels;
    int shownWidth = 0, shownHeight = 0;
    int left = 0, width = 0;  // on the sheet
};

std::string sizeText(int width, int height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

Column columnOf(const Texture& texture, int level) {
    Column column;
    int width = 0, height = 0;
    texture.surface(0, level)->GetSize(width, height);
    const double scale =
        std::min(1.0, static_cast<double>(kLongestSheetSide) / std::max(width, height));
    const auto scaled = [scale](int side) {
        return std::max(1, static_cast<int>(std::lround(side * scale)));
    };
    column.shownWidth = scaled(width);
    column.shownHeight = scaled(height);
    column.labels = {"level " + std::to_string(level), sizeText(width, height)};
    if (scale < 1)
        column.labels.push_back("shown as " + sizeText(column.shownWidth, column.shownHeight));
    column.width = column.shownWidth + 2 * kFrame;
    for (const std::string& label : column.labels)
        column.width = std::max(column.width, textWidth(label));
    return column;
}

/// Where everything is.
struct Layout {
    std::string title;
    std::vector<Column> columns;
    int firstRow = 0;   // where the pictures of the first face begin
    int rowHeight = 0;  // without the gap
    int width = 0, height = 0;
};

std::string titleOf(const Texture& texture) {
    std::string title = std::string(texture.description()) + ", " + formatName(texture.image());
    if (!isDisplayable(texture.image())) title += ", clamped to 0..1";
    return title;
}

Layout layOut(const Texture& texture) {
    Layout layout;
    layout.title = titleOf(texture);
    int left = kMargin + (texture.isCube() ? textWidth(kFaceNames[0]) + kGap : 0);
    std::size_t lines = 0;
    for (int level = 0; level < texture.levels(); ++level) {
        Column column = columnOf(texture, level);
        column.left = left;
        left += column.width + kGap;
        lines = std::max(lines, column.labels.size());
        layout.rowHeight = std::max(layout.rowHeight, column.shownHeight + 2 * kFrame);
        layout.columns.push_back(std::move(column));
    }
    layout.firstRow = kMargin + kLineHeight + kGap + static_cast<int>(lines) * kLineHeight;
    layout.width = std::max(left - kGap, kMargin + textWidth(layout.title)) + kMargin;
    layout.height = layout.firstRow + texture.faces() * (layout.rowHeight + kGap) - kGap + kMargin;
    return layout;
}

/// The longest side that a filtered zoom takes.
constexpr int kLongestFiltered = 1 << 20;

/// The surface in the size in which it is shown, as 8-bit RGBA.
Image shown(Image surface, const Column& column) {
    int width = 0, height = 0;
    surface->GetSize(width, height);
    if (width != column.shownWidth || height != column.shownHeight) {
        const bool isFilterable = std::max(width, height) <= kLongestFiltered;
        surface = Image::Adopt(surface->CreateZoomedImage(
            column.shownWidth, column.shownHeight,
            static_cast<int>(isFilterable ? KVRPixelZoom::Filtered : KVRPixelZoom::Nearest)));
    }
    if (surface) surface = Image::Adopt(surface->Duplicate(KVRPixelImageFormat::RGBA));
    if (!surface) throw Failure("expected memory for a picture of the sheet, found none");
    return surface;
}

void drawLabels(SheetCanvas& canvas, const Layout& layout, const Texture& texture) {
    canvas.text(kMargin, kMargin, layout.title, kBright);
    for (const Column& column : layout.columns) {
        int top = kMargin + kLineHeight + kGap;
        for (const std::string& label : column.labels) {
            canvas.text(column.left, top, label, &label == &column.labels[0] ? kBright : kDim);
            top += kLineHeight;
        }
    }
    if (!texture.isCube()) return;
    const int middle = layout.firstRow + std::max(0, layout.rowHeight - kTextHeight) / 2;
    for (int face = 0; face < texture.faces(); ++face)
        canvas.text(kMargin, middle + face * (layout.rowHeight + kGap),
                    kFaceNames[static_cast<std::size_t>(face)], kBright);
}

}  // namespace

KVRVar<KVRPixelImage> makeSheet(const Texture& texture) {
    const Layout layout = layOut(texture);
    SheetCanvas canvas(layout.width, layout.height, kGround);
    drawLabels(canvas, layout, texture);
    for (int face = 0; face < texture.faces(); ++face) {
        const int top = layout.firstRow + face * (layout.rowHeight + kGap);
        for (int level = 0; level < texture.levels(); ++level) {
            const Column& column = layout.columns[static_cast<std::size_t>(level)];
            canvas.fill(column.left, top, column.shownWidth + 2 * kFrame,
                        column.shownHeight + 2 * kFrame, kFrameColor);
            canvas.picture(column.left + kFrame, top + kFrame,
                           *shown(texture.surface(face, level), column).Get());
        }
    }
    return canvas.image();
}

}  // namespace rb::cli
