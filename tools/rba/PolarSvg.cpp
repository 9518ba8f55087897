#include "tools/rba/Output.h"
#include "tools/rba/PolarDiagram.h"
#include "tools/rba/tour/Html.h"

namespace rb::cli {
namespace {

constexpr std::string_view kStyle = R"(<style>
.polar-ground { fill: #ffffff; }
.polar-grid { fill: none; stroke: #d5d9dd; stroke-width: 1; }
.polar-first { fill: #0b6e75; fill-opacity: .1; stroke: #0b6e75; stroke-width: 2.2; stroke-linejoin: round; }
.polar-second { fill: #b4531f; fill-opacity: .08; stroke: #b4531f; stroke-width: 2.2; stroke-linejoin: round; stroke-dasharray: 7 4; }
.polar-label, .polar-title { font: 13px "DejaVu Sans", "Noto Sans", sans-serif; fill: #59616a; stroke: #ffffff; stroke-width: 3; stroke-linejoin: round; paint-order: stroke; }
.polar-title { font-size: 21px; font-weight: bold; fill: #1d2125; }
</style>
<rect class="polar-ground" width="100%" height="100%"/>
)";

const char* classOf(PolarInk ink) {
    switch (ink) {
        case PolarInk::Grid:
            return "polar-grid";
        case PolarInk::FirstPlane:
            return "polar-first";
        case PolarInk::SecondPlane:
            return "polar-second";
        case PolarInk::Label:
            return "polar-label";
        case PolarInk::Title:
            break;
    }
    return "polar-title";
}

std::string units(double value) { return numberText(value, 2); }

class SvgPainter final : public PolarPainter {
public:
    void line(PolarPoint from, PolarPoint to, PolarInk ink) override {
        m_text += "<line class=\"" + std::string(classOf(ink)) + "\" x1=\"" + units(from.x) +
                  "\" y1=\"" + units(from.y) + "\" x2=\"" + units(to.x) + "\" y2=\"" + units(to.y) +
                  "\"/>\n";
    }
    void ring(PolarPoint center, double radius, bool isWhole) override {
        const std::string r = units(radius);
        if (isWhole)
            m_text += "<circle class=\"polar-grid\" cx=\"" + units(center.x) + "\" cy=\"" +
                      units(center.y) + "\" r=\"" + r + "\"/>\n";
        else
            m_text += "<path class=\"polar-grid\" d=\"M" + units(center.x - radius) + " " +
                      units(center.y) + "A" + r + " " + r + " 0 0 0 " + units(center.x + radius) +
                      " " + units(center.y) + "\"/>\n";
    }
    void area(std::span<const PolarPoint> outline, PolarInk ink) override {
        m_text += "<polygon class=\"" + std::string(classOf(ink)) + "\" points=\"";
        const char* separator = "";
        for (const PolarPoint& point : outline) {
            m_text += separator + units(point.x) + "," + units(point.y);
            separator = " ";
        }
        m_text += "\"/>\n";
    }
    void text(PolarPoint at, PolarAnchor anchor, PolarInk ink, std::string_view text) override {
        constexpr const char* kAnchors[] = {"start", "middle", "end"};
        m_text += "<text class=\"" + std::string(classOf(ink)) + "\" x=\"" + units(at.x) +
                  "\" y=\"" + units(at.y) + "\" text-anchor=\"" +
                  kAnchors[static_cast<int>(anchor)] + "\">" + tour::escapeHtml(text) + "</text>\n";
    }

    const std::string& result() const { return m_text; }

private:
    std::string m_text;
};

}  // namespace

std::string polarSvg(const PolarDiagram& diagram, SvgUse use) {
    SvgPainter painter;
    draw(diagram, painter);
    const std::string width = numberText(diagram.width(), 0);
    const std::string height = numberText(diagram.height(), 0);
    const std::string label =
        " role=\"img\" aria-label=\"" + tour::escapeHtml("Polar diagram: " + diagram.title) + "\"";
    const std::string box = " viewBox=\"0 0 " + width + " " + height + "\"";
    if (use == SvgUse::Page) return "<svg" + box + label + ">\n" + painter.result() + "</svg>\n";
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" + height +
           "\"" + box + label + ">\n" + std::string(kStyle) + painter.result() + "</svg>\n";
}

}  // namespace rb::cli
