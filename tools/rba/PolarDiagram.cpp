#include "tools/rba/PolarDiagram.h"

#include "tools/rba/Context.h"
#include "tools/rba/FileText.h"
#include "tools/rba/Output.h"
#include "tools/rba/PolarPlanes.h"
#include "tools/rba/StrokeFont.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>

namespace rb::cli {
namespace {

using KVRRbaIESLoader::IESPhotometry;

// Units of the drawing.
constexpr double kWidth = 640, kRadius = 236, kMargin = 32;
constexpr double kHeader = 84, kFooter = 78, kLine = 20, kLabelGap = 26;

PolarPoint centerOf(const PolarDiagram& diagram) {
    const double above = diagram.hasUpperHalf ? kRadius + kLabelGap : kLabelGap;
    return {kWidth / 2, kHeader + above};
}

PolarPoint pointAt(PolarPoint center, double degrees, double radius) {
    const double angle = degrees * std::numbers::pi / 180;
    return {center.x + radius * std::sin(angle), center.y + radius * std::cos(angle)};
}

/// Rounding may put a value beyond a ring by as much.
constexpr double kTolerance = 1e-4;

/// 1, 2, 2.5 or 5 times a power of ten, so that there are 2 to 4 of them.
double ringStepFor(double most) {
    const double least = most / 4;
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double step : {1.0, 2.0, 2.5, 5.0})
        if (step * power >= least * (1 - kTolerance)) return step * power;
    return 10 * power;
}

constexpr double kRoom = kWidth - 2 * kMargin;

/// About as wide as the fonts that drawings ask for; the strokes of pictures are narrower.
double widthOf(const std::string& text, PolarInk ink) {
    constexpr double kTitle = 22, kLabel = 12;  // of a capital's height of strokes
    return StrokeText(text).width * (ink == PolarInk::Title ? kTitle : kLabel);
}

/// The text of a file, with an ellipsis where it would be wider than @p room.
std::string fitted(const std::string& text, PolarInk ink, double room) {
    constexpr std::size_t kMost = 100;  // of the narrowest letters
    const std::string whole = onOneLine(trimmed(text));
    std::string shown = shortened(whole, kMost);
    for (std::size_t most = kMost; most > 0 && widthOf(shown, ink) > room; --most)
        shown = shortened(whole, most - 1);
    return shown;
}

std::string titleOf(const std::string& path, const IESPhotometry& record) {
    for (const std::string* name : {&record.luminaire, &record.luminaireCatalogue})
        if (!trimmed(*name).empty()) return fitted(*name, PolarInk::Title, kRoom);
    return fitted(std::filesystem::path(path).filename().string(), PolarInk::Title, kRoom);
}

/// Maker and lamp; what the one does not need of its half is the other's.
std::string subtitleOf(const IESPhotometry& record) {
    const std::string lamp = fitted(record.lamp, PolarInk::Label, kRoom / 2);
    const std::string maker =
        fitted(record.manufacturer, PolarInk::Label, kRoom - widthOf(lamp, PolarInk::Label));
    if (maker.empty() || lamp.empty()) return maker + lamp;
    return maker + ", " +
           fitted(record.lamp, PolarInk::Label, kRoom - widthOf(maker + ", ", PolarInk::Label));
}

std::string footerOf(const IESPhotometry& record) {
    const Peak peak = peakOf(record);
    return "Peak " + shortText(peak.candela) + " cd at vertical " + shortText(peak.vertical) +
           "°, horizontal " + shortText(peak.horizontal) + "°";
}

void drawGrid(const PolarDiagram& diagram, PolarPainter& painter) {
    constexpr int kRay = 15, kLabel = 30;  // degrees
    const PolarPoint center = centerOf(diagram);
    for (int i = 1; i <= diagram.ringCount; ++i)
        painter.ring(center, kRadius * i / diagram.ringCount, diagram.hasUpperHalf);
    const int end = diagram.hasUpperHalf ? 180 : 90;
    for (int degrees = -end; degrees <= end; degrees += kRay) {
        // The one upwards is drawn once.
        if (degrees == -180) continue;
        const double inner = degrees % kLabel == 0 ? 0 : kRadius / diagram.ringCount;
        painter.line(pointAt(center, degrees, inner), pointAt(center, degrees, kRadius),
                     PolarInk::Grid);
        if (degrees % kLabel != 0) continue;
        const PolarPoint at = pointAt(center, degrees, kRadius + 17);
        const auto anchor = degrees % 180 == 0 ? PolarAnchor::Middle
                            : degrees > 0      ? PolarAnchor::Start
                                               : PolarAnchor::End;
        const double aside = degrees % 180 == 0 ? 0 : degrees > 0 ? -8 : 8;
        painter.text({at.x + aside, at.y + 4}, anchor, PolarInk::Label,
                     std::to_string(std::abs(degrees)) + "°");
    }
}

void drawCurves(const PolarDiagram& diagram, PolarPainter& painter) {
    const PolarPoint center = centerOf(diagram);
    const double perCandela = kRadius / (diagram.ringStep * diagram.ringCount);
    PolarInk ink = PolarInk::FirstPlane;
    for (const PolarCurve& curve : diagram.curves) {
        std::vector<PolarPoint> outline;
        for (const auto& [degrees, candela] : curve.values)
            outline.push_back(pointAt(center, degrees, candela * perCandela));
        painter.area(outline, ink);
        ink = PolarInk::SecondPlane;
    }
}

void drawRingLabels(const PolarDiagram& diagram, PolarPainter& painter) {
    const PolarPoint center = centerOf(diagram);
    for (int i = 1; i <= diagram.ringCount; ++i)
        painter.text({center.x + kRadius * i / diagram.ringCount - 4, center.y - 6},
                     PolarAnchor::End, PolarInk::Label,
                     shortText(static_cast<float>(diagram.ringStep * i)));
    painter.text({center.x - 6, center.y - 6}, PolarAnchor::End, PolarInk::Label, "cd");
}

void drawLegend(const PolarDiagram& diagram, PolarPainter& painter) {
    constexpr double kSwatch = 28, kEntry = 190;
    double x = kMargin;
    const double y = diagram.height() - kFooter + 34;
    PolarInk ink = PolarInk::FirstPlane;
    for (const PolarCurve& curve : diagram.curves) {
        painter.line({x, y - 4}, {x + kSwatch, y - 4}, ink);
        painter.text({x + kSwatch + 8, y}, PolarAnchor::Start, PolarInk::Label, curve.name);
        x += kEntry;
        ink = PolarInk::SecondPlane;
    }
    painter.text({kMargin, y + kLine + 4}, PolarAnchor::Start, PolarInk::Label, diagram.footer);
}

}  // namespace

double PolarDiagram::width() const { return kWidth; }

double PolarDiagram::height() const { return centerOf(*this).y + kRadius + kLabelGap + kFooter; }

PolarDiagram polarDiagramOf(const std::string& path, const Photometry& photometry) {
    const IESPhotometry& record = photometry.record;
    if (record.photometricType < kTypeC || record.photometricType > kTypeA)
        throw Failure(path, "expected a photometric type from 1 to 3, found " +
                                std::to_string(record.photometricType));
    if (!hasIntensities(record)) throw Failure(path, "expected intensities, found none");
    PolarDiagram diagram;
    diagram.title = titleOf(path, record);
    diagram.subtitle = subtitleOf(record);
    diagram.footer = footerOf(record);
    diagram.curves = planesOf(record);
    double most = 0;
    for (const PolarCurve& curve : diagram.curves)
        for (const auto& [degrees, candela] : curve.values) {
            most = std::max(most, candela);
            diagram.hasUpperHalf |= candela > 0 && std::abs(degrees) > 90.5;
        }
    if (most <= 0) throw Failure(path, "expected light in the planes to draw, found none");
    diagram.ringStep = ringStepFor(most);
    diagram.ringCount = static_cast<int>(std::ceil(most / diagram.ringStep * (1 - kTolerance)));
    return diagram;
}

void draw(const PolarDiagram& diagram, PolarPainter& painter) {
    painter.text({kMargin, 40}, PolarAnchor::Start, PolarInk::Title, diagram.title);
    painter.text({kMargin, 40 + kLine + 4}, PolarAnchor::Start, PolarInk::Label, diagram.subtitle);
    drawGrid(diagram, painter);
    drawCurves(diagram, painter);
    drawRingLabels(diagram, painter);
    drawLegend(diagram, painter);
}

}  // namespace rb::cli
