#include "tools/rba/tour/Plot.h"

#include "tools/rba/Output.h"

#include <algorithm>
#include <string>

namespace rb::cli::tour {
namespace {

// Units of the drawing.
constexpr double kWidth = 560, kHeight = 320;
constexpr double kLeft = 58, kRight = 14, kTop = 26, kBottom = 46;

/// From exponents to units of the drawing. What lies outside an axis is put on its end.
class Scale {
public:
    explicit Scale(const Plot& plot) : m_x(plot.x), m_y(plot.y) {}
    double x(double value) const { return kLeft + part(m_x, value) * (kWidth - kLeft - kRight); }
    double y(double value) const {
        return kHeight - kBottom - part(m_y, value) * (kHeight - kTop - kBottom);
    }

private:
    static double part(const Axis& axis, double value) {
        return std::clamp((value - axis.least) / (axis.most - axis.least), 0.0, 1.0);
    }
    Axis m_x, m_y;
};

std::string units(double value) { return numberText(value, 1); }

std::string powerOfTwo(int exponent) {
    static constexpr const char* kRaised[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    std::string text = exponent < 0 ? "2⁻" : "2";
    for (const char digit : std::to_string(std::abs(exponent))) text += kRaised[digit - '0'];
    return text;
}

std::vector<int> ticksOf(const Axis& axis) {
    std::vector<int> ticks;
    for (int tick = axis.least; tick <= axis.most; ++tick)
        if (tick % axis.step == 0) ticks.push_back(tick);
    return ticks;
}

void writeLine(Html& page, double x1, double y1, double x2, double y2) {
    page << "<line x1=\""_html << units(x1) << "\" y1=\""_html << units(y1) << "\" x2=\""_html
         << units(x2) << "\" y2=\""_html << units(y2) << "\"/>"_html;
}

void writeText(Html& page, double x, double y, std::string_view anchor, std::string_view text) {
    page << "<text x=\""_html << units(x) << "\" y=\""_html << units(y) << "\" text-anchor=\""_html
         << anchor << "\">"_html << text << "</text>"_html;
}

void writeBands(Html& page, const Plot& plot, const Scale& scale) {
    page << "<g class=\"bands\">"_html;
    for (const Band& band : plot.bands) {
        const double from = scale.x(band.from), to = scale.x(band.to);
        page << "<rect x=\""_html << units(from) << "\" y=\""_html << units(kTop)
             << "\" width=\""_html << units(to - from) << "\" height=\""_html
             << units(kHeight - kTop - kBottom) << "\"/>"_html;
        writeText(page, (from + to) / 2, kTop - 8, "middle", band.label);
    }
    page << "</g>"_html;
}

void writeAxes(Html& page, const Plot& plot, const Scale& scale) {
    page << "<g class=\"grid\">"_html;
    for (const int tick : ticksOf(plot.x))
        writeLine(page, scale.x(tick), kTop, scale.x(tick), kHeight - kBottom);
    for (const int tick : ticksOf(plot.y))
        writeLine(page, kLeft, scale.y(tick), kWidth - kRight, scale.y(tick));
    page << "</g><g class=\"ticks\">"_html;
    for (const int tick : ticksOf(plot.x))
        writeText(page, scale.x(tick), kHeight - kBottom + 18, "middle", powerOfTwo(tick));
    for (const int tick : ticksOf(plot.y))
        writeText(page, kLeft - 8, scale.y(tick) + 4, "end", powerOfTwo(tick));
    writeText(page, (kLeft + kWidth - kRight) / 2, kHeight - 8, "middle", plot.x.label);
    page << "</g>"_html;
}

void writeCurve(Html& page, const Curve& curve, const Scale& scale) {
    page << "<polyline class=\"curve\" points=\""_html;
    for (const PlotPoint& point : curve)
        page << units(scale.x(point.x)) << ","_html << units(scale.y(point.y)) << " "_html;
    page << "\"/>"_html;
}

}  // namespace

void writePlot(Html& page, const Plot& plot) {
    const Scale scale(plot);
    page << "<figure><figcaption><b>"_html << plot.title << "</b><br>"_html << plot.caption
         << "</figcaption><svg viewBox=\"0 0 "_html << units(kWidth) << " "_html << units(kHeight)
         << "\" role=\"img\" aria-label=\""_html << plot.title << ": "_html << plot.caption
         << "\">"_html;
    writeBands(page, plot, scale);
    writeAxes(page, plot, scale);
    writeCurve(page, plot.curve, scale);
    page << "</svg></figure>\n"_html;
}

}  // namespace rb::cli::tour
