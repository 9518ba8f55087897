#include "tools/rba/StrokeCanvas.h"

#include "tools/rba/Context.h"

#include <algorithm>
#include <cmath>

namespace rb::cli {
namespace {

double distance(StrokePoint place, StrokePoint from, StrokePoint to) {
    const double dx = to.x - from.x, dy = to.y - from.y;
    const double square = dx * dx + dy * dy;
    double along = 0;
    if (square > 0)
        along = std::clamp(((place.x - from.x) * dx + (place.y - from.y) * dy) / square, 0.0, 1.0);
    return std::hypot(place.x - from.x - along * dx, place.y - from.y - along * dy);
}

}  // namespace

/// How much of each pixel of a part of the picture is covered, 0 to 1.
struct StrokeCanvas::Mask {
    int left, top, right, bottom;  // right and bottom are beyond it
    std::vector<float> coverage;

    /// The part around some places, within a picture.
    static Mask around(std::span<const StrokePoint> places, double margin, int width, int height) {
        double x1 = width, y1 = height, x2 = 0, y2 = 0;
        for (const auto& [x, y] : places) {
            x1 = std::min(x1, x);
            y1 = std::min(y1, y);
            x2 = std::max(x2, x);
            y2 = std::max(y2, y);
        }
        const auto cut = [](double value, int most) {
            return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(most)));
        };
        return Mask(cut(std::floor(x1 - margin), width), cut(std::floor(y1 - margin), height),
                    cut(std::ceil(x2 + margin), width), cut(std::ceil(y2 + margin), height));
    }
    Mask(int l, int t, int r, int b)
        : left(l), top(t), right(std::max(l, r)), bottom(std::max(t, b)) {
        coverage.resize(static_cast<std::size_t>(right - left) *
                        static_cast<std::size_t>(bottom - top));
    }
    float& at(int x, int y) {
        return coverage[static_cast<std::size_t>(y - top) * static_cast<std::size_t>(right - left) +
                        static_cast<std::size_t>(x - left)];
    }
    void addLine(StrokePoint from, StrokePoint to, double lineWidth);
    void addSpan(double from, double to, int y, float weight);
};

void StrokeCanvas::Mask::addLine(StrokePoint from, StrokePoint to, double lineWidth) {
    const StrokePoint ends[] = {from, to};
    const Mask box = around(ends, lineWidth / 2 + 1, right, bottom);
    for (int y = std::max(top, box.top); y < box.bottom; ++y)
        for (int x = std::max(left, box.left); x < box.right; ++x) {
            const double away = distance({x + 0.5, y + 0.5}, from, to);
            const double covered = std::clamp(lineWidth / 2 + 0.5 - away, 0.0, 1.0);
            at(x, y) = std::max(at(x, y), static_cast<float>(covered));
        }
}

/// A part of a row, with a share of the pixels at its ends.
void StrokeCanvas::Mask::addSpan(double from, double to, int y, float weight) {
    from = std::max(from, static_cast<double>(left));
    to = std::min(to, static_cast<double>(right));
    for (int x = static_cast<int>(from); x < to; ++x) {
        const double covered = std::min(to, x + 1.0) - std::max(from, static_cast<double>(x));
        at(x, y) += weight * static_cast<float>(covered);
    }
}

StrokeCanvas::StrokeCanvas(int width, int height)
    : m_image(KVRVar<KVRPixelImage>::Adopt(
          KVRPixelImage::CreateUnfilled(width, height, KVRPixelImageFormat::RGB))),
      m_width(width),
      m_height(height) {
    if (!m_image || m_image->GetRawPixels().empty())
        throw Failure("expected memory for a drawing, found none");
    std::ranges::fill(m_image->GetRawPixels(), std::byte{255});
}

void StrokeCanvas::cover(const Mask& mask, const Ink& ink) {
    const float* coverage = mask.coverage.data();
    for (int y = mask.top; y < mask.bottom; ++y) {
        unsigned char* pixel = m_image->GetPixelsToModify() +
                               3 * (static_cast<std::ptrdiff_t>(y) * m_width + mask.left);
        for (int x = mask.left; x < mask.right; ++x, pixel += 3) {
            const double share = ink.opacity * static_cast<double>(std::min(*coverage++, 1.0F));
            for (std::size_t i = 0; i < 3; ++i)
                pixel[i] = static_cast<unsigned char>(
                    std::lround(pixel[i] + share * (ink.color[i] - pixel[i])));
        }
    }
}

void StrokeCanvas::lines(std::span<const Stroke> strokes, double lineWidth, const Ink& ink) {
    std::vector<StrokePoint> places;
    for (const Stroke& stroke : strokes) places.insert(places.end(), stroke.begin(), stroke.end());
    Mask mask = Mask::around(places, lineWidth / 2 + 1, m_width, m_height);
    for (const Stroke& stroke : strokes)
        for (std::size_t i = 0; i + 1 < stroke.size(); ++i)
            mask.addLine(stroke[i], stroke[i + 1], lineWidth);
    cover(mask, ink);
}

void StrokeCanvas::area(std::span<const StrokePoint> outline, const Ink& ink) {
    constexpr int kRows = 4;  // to a pixel
    Mask mask = Mask::around(outline, 1, m_width, m_height);
    std::vector<double> crossings;
    for (int row = mask.top * kRows; row < mask.bottom * kRows; ++row) {
        const double y = (row + 0.5) / kRows;
        crossings.clear();
        for (std::size_t i = 0; i < outline.size(); ++i) {
            const StrokePoint &a = outline[i], &b = outline[(i + 1) % outline.size()];
            if ((a.y <= y) != (b.y <= y))
                crossings.push_back(a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x));
        }
        std::sort(crossings.begin(), crossings.end());
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2)
            mask.addSpan(crossings[i], crossings[i + 1], row / kRows, 1.0F / kRows);
    }
    cover(mask, ink);
}

}  // namespace rb::cli
