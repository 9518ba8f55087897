#include "RenderingBase/host/visu/KVR3DViewpoint.h"
#include "RenderingBase/public/KVRRbaCameraServices.h"
#include "tools/rba/Profile.h"
#include "tools/rba/tour/Timing.h"
#include "tools/rba/tour/Tour.h"

#include <array>

namespace rb::cli::tour {
namespace {

using Camera = KVRRbaCameraServices;

std::string units(double value) { return numberText(value, 1); }

void writeText(Html& page, double x, double y, std::string_view text) {
    page << "<text x=\""_html << units(x) << "\" y=\""_html << units(y) << "\">"_html << text
         << "</text>"_html;
}

void writeLine(Html& page, std::string_view look, double x1, double y1, double x2, double y2) {
    page << "<line class=\""_html << look << "\" x1=\""_html << units(x1) << "\" y1=\""_html
         << units(y1) << "\" x2=\""_html << units(x2) << "\" y2=\""_html << units(y2)
         << "\"/>"_html;
}

void writeDot(Html& page, std::string_view look, double x, double y) {
    page << "<circle class=\""_html << look << "\" cx=\""_html << units(x) << "\" cy=\""_html
         << units(y) << "\" r=\"5\"/>"_html;
}

/// A point in a viewport, from its centre.
struct Ratio {
    double x, y;
};

void writeFocusPoints(Html& page) {
    constexpr double kWidth = 1920, kHeight = 1080, kMargin = 8;  // of the viewport, and around it
    constexpr double kScale = 0.27;                               // units of the drawing to a pixel
    constexpr std::array<Ratio, 5> kRatios{
        {{-0.7, 0.6}, {0.5, -0.25}, {0, 0.8}, {-0.4, -0.7}, {1.2, 0.4}}};
    page
        << R"(<figure><figcaption><b>Focus points</b> are kept as ratios, which survive another size of
the window, and placed in pixels, here of 1920 × 1080. A point outside gets the centre.</figcaption>
<svg viewBox="0 0 534 308" role="img" aria-label="Focus points in a viewport"><g class="grid">)"_html;
    for (const double part : {0.0, 0.5, 1.0}) {
        const double x = kMargin + part * kWidth * kScale, y = kMargin + part * kHeight * kScale;
        writeLine(page, "rule", x, kMargin, x, kMargin + kHeight * kScale);
        writeLine(page, "rule", kMargin, y, kMargin + kWidth * kScale, y);
    }
    page << "</g>"_html;
    for (const Ratio& ratio : kRatios) {
        double sx = 0, sy = 0;
        const HRESULT status =
            measured("KVRRbaCameraServices", "Convert2DFocusPointRatioToScreenCoordinates", [&] {
                return Camera::Convert2DFocusPointRatioToScreenCoordinates(ratio.x, ratio.y, kWidth,
                                                                           kHeight, sx, sy);
            });
        const double x = kMargin + sx * kScale, y = kMargin + sy * kScale;
        writeDot(page, Succeeded(status) ? "mark" : "mark warm", x, y);
        writeText(page, x + 10, y - 6,
                  "(" + numberText(ratio.x) + ", " + numberText(ratio.y) + ")");
        writeText(page, x + 10, y + 10,
                  Succeeded(status) ? numberText(sx, 0) + ", " + numberText(sy, 0) : "outside");
    }
    page << "</svg></figure>\n"_html;
}

float focusDistance(int projection, const KVRMathPointf& eye, const KVRMathPointf& target,
                    const KVRMathPointf& point) {
    const auto viewpoint =
        KVRVar<KVR3DViewpoint>::Adopt(new KVR3DViewpoint(projection, eye, target));
    return measured("KVRRbaCameraServices", "GetFocusDistance",
                    [&] { return Camera::GetFocusDistance(viewpoint.Get(), point); });
}

void writeFocusDistance(Html& page) {
    constexpr KVRMathPointf kEye(0, 0, 0), kTarget(8, 0, 0), kPoint(5, 2.5F, 0);
    constexpr double kMetre = 50, kLeft = 40, kLevel = 210;  // units of the drawing
    const auto x = [](float metres) { return kLeft + static_cast<double>(metres) * kMetre; };
    const auto y = [](float metres) { return kLevel - static_cast<double>(metres) * kMetre; };
    const float conic = focusDistance(KVR3DViewpoint::kConic, kEye, kTarget, kPoint);
    const float parallel = focusDistance(KVR3DViewpoint::kParallel, kEye, kTarget, kPoint);
    page
        << R"(<figure><figcaption><b>Focus distance</b> of a point 5 m ahead and 2.5 m aside. A conic
projection takes the way to it, a parallel one what of it lies along the line of sight.</figcaption>
<svg viewBox="0 0 534 308" role="img" aria-label="Focus distances of a point">)"_html;
    writeLine(page, "rule", x(0), kLevel, x(kTarget.GetX()), kLevel);
    writeLine(page, "rule", x(kPoint.GetX()), y(kPoint.GetY()), x(kPoint.GetX()), kLevel);
    writeLine(page, "curve", x(0), kLevel, x(kPoint.GetX()), y(kPoint.GetY()));
    writeLine(page, "curve warm", x(0), kLevel, x(parallel), kLevel);
    writeDot(page, "mark", x(0), kLevel);
    writeDot(page, "mark", x(kPoint.GetX()), y(kPoint.GetY()));
    writeDot(page, "mark dim", x(kTarget.GetX()), kLevel);
    writeText(page, x(0) - 12, kLevel + 24, "eye");
    writeText(page, x(kTarget.GetX()) - 18, kLevel + 24, "target");
    writeText(page, x(kPoint.GetX()) + 12, y(kPoint.GetY()) + 4, "point in focus");
    writeText(page, x(0) + 40, y(1.6F),
              "conic " + numberText(static_cast<double>(conic), 3) + " m");
    writeText(page, x(0) + 80, kLevel + 24,
              "parallel " + numberText(static_cast<double>(parallel), 3) + " m");
    page << "</svg></figure>\n"_html;
}

struct Setting {
    double iso, time, aperture;
    const char* timeText;
};

void writeExposures(Html& page) {
    constexpr std::array<Setting, 6> kSettings{
        {{100, Camera::kDefaultExposureTime, Camera::kDefaultAperture, "0.006 s"},
         {400, Camera::kDefaultExposureTime, Camera::kDefaultAperture, "0.006 s"},
         {100, 1.0 / 125, 8, "1/125 s"},
         {100, 1.0 / 125, 4, "1/125 s"},
         {100, 1.0 / 60, 2.8, "1/60 s"},
         {0, 1.0 / 60, 2.8, "1/60 s"}}};
    page << R"(<h3 class="sub">Exposure</h3>
<p>The exposure value of the services is one of a setting, not of a scene: one more for twice the
sensitivity, two more for half the f-number, and one less for twice the time.</p>
<div class="scroll"><table><thead><tr><th scope="col" class="number">ISO</th>
<th scope="col" class="number">Time</th><th scope="col" class="number">Aperture</th>
<th scope="col" class="number">EV</th><th scope="col" class="number">ISO of that EV</th></tr></thead><tbody>
)"_html;
    for (const Setting& setting : kSettings) {
        const double ev = measured("KVRRbaCameraServices", "ComputeEVValuefromISO", [&] {
            return Camera::ComputeEVValuefromISO(setting.iso, setting.time, setting.aperture);
        });
        const double back = measured("KVRRbaCameraServices", "ComputeISOfromEVValue", [&] {
            return Camera::ComputeISOfromEVValue(ev, setting.time, setting.aperture);
        });
        page << "<tr><td class=\"number\">"_html << numberText(setting.iso, 0)
             << "</td><td class=\"number\">"_html << setting.timeText
             << "</td><td class=\"number\">f/"_html
             << numberText(static_cast<float>(setting.aperture))
             << "</td><td class=\"number\">"_html << numberText(ev, 3)
             << "</td><td class=\"number\">"_html << numberText(back, 1) << "</td></tr>\n"_html;
    }
    page << R"(</tbody></table></div>
<p class="dim">A sensitivity of 0 has the value −1.4; what comes back is the one that has it, too.</p>
)"_html;
}

void writeColours(Html& page) {
    constexpr std::array<double, 5> kValues{-100, -50, 0, 50, 100};
    page << R"(<h3 class="sub">Colour correction</h3>
<div class="scroll"><table><thead><tr><th scope="col">Parameter</th>)"_html;
    for (const double value : kValues)
        page << "<th scope=\"col\" class=\"number\">"_html << numberText(value, 0) << "</th>"_html;
    page << "</tr></thead><tbody>\n"_html;
    for (int parameter = 0; parameter <= 5; ++parameter) {
        page << "<tr><th scope=\"row\">"_html << parameter << "</th>"_html;
        for (const double value : kValues) {
            const double result = measured("KVRRbaCameraServices", "convertToRenderingParam", [&] {
                return Camera::convertToRenderingParam(
                    value, static_cast<ColorCorrectionParameter>(parameter));
            });
            page << "<td class=\"number\">"_html << numberText(result, 4) << "</td>"_html;
        }
        page << "</tr>\n"_html;
    }
    page << "</tbody></table></div>\n"_html;
}

}  // namespace

void writeCameraSection(const TourInput&, Html& page) {
    page << R"(<p class="lead">From what a photographer sets to what a renderer takes:
<code>KVRRbaCameraServices</code>, on the command line <code>rba camera</code>.</p>
<div class="plots">
)"_html;
    writeFocusPoints(page);
    writeFocusDistance(page);
    page << "</div>\n"_html;
    writeExposures(page);
    writeColours(page);
}

}  // namespace rb::cli::tour
