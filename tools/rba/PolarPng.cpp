#include "tools/rba/PolarDiagram.h"
#include "tools/rba/StrokeCanvas.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rb::cli {
namespace {

constexpr double kScale = 2;  // pixels to a unit of the drawing

using Ink = StrokeCanvas::Ink;
constexpr Ink kPaper{{255, 255, 255}};

Ink inkOf(PolarInk ink) {
    switch (ink) {
        case PolarInk::Grid:
            return {{213, 217, 221}};
        case PolarInk::FirstPlane:
            return {{11, 110, 117}};
        case PolarInk::SecondPlane:
            return {{180, 83, 31}};
        case PolarInk::Label:
            return {{89, 97, 106}};
        case PolarInk::Title:
            break;
    }
    return {{29, 33, 37}};
}

StrokePoint pixelsOf(PolarPoint point) { return {point.x * kScale, point.y * kScale}; }

/// Pieces of a line with gaps between them.
std::vector<Stroke> dashed(const Stroke& stroke) {
    constexpr double kDash = 7 * kScale, kGap = 4 * kScale;
    std::vector<Stroke> pieces{{stroke.front()}};
    bool isDrawn = true;
    double left = kDash;
    for (std::size_t i = 0; i + 1 < stroke.size(); ++i) {
        StrokePoint at = stroke[i];
        const StrokePoint to = stroke[i + 1];
        for (double length = std::hypot(to.x - at.x, to.y - at.y); length > left;
             length = std::hypot(to.x - at.x, to.y - at.y)) {
            at = {at.x + (to.x - at.x) * left / length, at.y + (to.y - at.y) * left / length};
            if (isDrawn)
                pieces.back().push_back(at);
            else
                pieces.push_back({at});
            isDrawn = !isDrawn;
            left = isDrawn ? kDash : kGap;
        }
        left -= std::hypot(to.x - at.x, to.y - at.y);
        if (isDrawn) pieces.back().push_back(to);
    }
    return pieces;
}

class PngPainter final : public PolarPainter {
public:
    explicit PngPainter(const PolarDiagram& diagram)
        : m_canvas(static_cast<int>(std::lround(diagram.width() * kScale)),
                   static_cast<int>(std::lround(diagram.height() * kScale))) {}

    void line(PolarPoint from, PolarPoint to, PolarInk ink) override {
        curve({pixelsOf(from), pixelsOf(to)}, ink);
    }
    void ring(PolarPoint center, double radius, bool isWhole) override {
        constexpr int kSteps = 180;  // to half a circle
        Stroke stroke;
        for (int i = 0; i <= (isWhole ? 2 : 1) * kSteps; ++i) {
            const double angle = std::numbers::pi * i / kSteps;
            stroke.push_back(pixelsOf(
                {center.x + radius * std::cos(angle), center.y + radius * std::sin(angle)}));
        }
        curve(stroke, PolarInk::Grid);
    }
    void area(std::span<const PolarPoint> outline, PolarInk ink) override {
        Stroke stroke;
        for (const PolarPoint& point : outline) stroke.push_back(pixelsOf(point));
        Ink tint = inkOf(ink);
        tint.opacity = ink == PolarInk::FirstPlane ? 0.1 : 0.08;
        m_canvas.area(stroke, tint);
        stroke.push_back(stroke.front());
        curve(stroke, ink);
    }
    void text(PolarPoint at, PolarAnchor anchor, PolarInk ink, std::string_view text) override {
        const bool isTitle = ink == PolarInk::Title;
        const double size = (isTitle ? 15.2 : 9.4) * kScale;  // of capitals
        const double lineWidth = (isTitle ? 2.5 : 1.2) * kScale;
        StrokeText letters(text);
        const double part = anchor == PolarAnchor::Start    ? 0
                            : anchor == PolarAnchor::Middle ? 0.5
                                                            : 1;
        const StrokePoint origin = pixelsOf(at);
        for (Stroke& stroke : letters.strokes)
            for (StrokePoint& point : stroke)
                point = {origin.x + size * (point.x - part * letters.width),
                         origin.y + size * point.y};
        m_canvas.lines(letters.strokes, lineWidth + 3 * kScale, kPaper);
        m_canvas.lines(letters.strokes, lineWidth, inkOf(ink));
    }

    const KVRVar<KVRPixelImage>& image() const { return m_canvas.image(); }

private:
    void curve(const Stroke& stroke, PolarInk ink) {
        const double lineWidth = (ink == PolarInk::Grid ? 1 : 2.2) * kScale;
        if (ink == PolarInk::SecondPlane)
            m_canvas.lines(dashed(stroke), lineWidth, inkOf(ink));
        else
            m_canvas.lines(std::span(&stroke, 1), lineWidth, inkOf(ink));
    }

    StrokeCanvas m_canvas;
};

}  // namespace

KVRVar<KVRPixelImage> polarImage(const PolarDiagram& diagram) {
    PngPainter painter(diagram);
    draw(diagram, painter);
    return painter.image();
}

}  // namespace rb::cli
