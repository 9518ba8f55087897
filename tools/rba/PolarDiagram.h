#pragma once

/// @file  The polar diagram of a luminaire: intensity in two planes through its axis.

#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "tools/rba/Photometry.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace rb::cli {

struct PolarPoint {
    double x = 0, y = 0;  ///< Units of the drawing, from the upper left corner.
};

/// What a part of the drawing is, which decides how it looks.
enum class PolarInk {
    Grid,
    FirstPlane,
    SecondPlane,
    Label,
    Title
};
enum class PolarAnchor {
    Start,
    Middle,
    End
};

/// What a diagram is drawn with.
class PolarPainter {
public:
    PolarPainter() = default;
    virtual ~PolarPainter() = default;
    PolarPainter(const PolarPainter&) = delete;
    PolarPainter& operator=(const PolarPainter&) = delete;

    virtual void line(PolarPoint from, PolarPoint to, PolarInk ink) = 0;
    /// A circle, or its lower half.
    virtual void ring(PolarPoint center, double radius, bool isWhole) = 0;
    /// The outline of an area with a tint inside.
    virtual void area(std::span<const PolarPoint> outline, PolarInk ink) = 0;
    /// @param at  On the base line. Text is legible over what is drawn already.
    virtual void text(PolarPoint at, PolarAnchor anchor, PolarInk ink, std::string_view text) = 0;
};

/// One plane: right and left of the axis, which points downwards at 0 degrees.
struct PolarCurve {
    struct Value {
        double degrees = 0;  ///< Positive to the right.
        double candela = 0;
    };
    std::string name;
    std::vector<Value> values;
};

struct PolarDiagram {
    std::string title, subtitle, footer;
    std::vector<PolarCurve> curves;
    double ringStep = 1;  ///< Candelas.
    int ringCount = 1;
    bool hasUpperHalf = false;  ///< There is light above the horizon.

    double width() const;
    double height() const;
};

/// The planes that people know: C0/C180 and C90/C270 of type C, or the two through the axis of
/// types A and B. They show what is in the file: the border of a half circle is not black, and the
/// half that types A and B leave dark is as bright as the other.
/// Throws Failure when there is no light to draw.
PolarDiagram polarDiagramOf(const std::string& typedPath, const Photometry& photometry);

void draw(const PolarDiagram& diagram, PolarPainter& painter);

/// How SVG is used: as a file of its own with its colours, or in a page that has them.
enum class SvgUse {
    File,
    Page
};
std::string polarSvg(const PolarDiagram& diagram, SvgUse use);

/// RGB, two pixels to a unit of the drawing. Throws Failure without memory.
KVRVar<KVRPixelImage> polarImage(const PolarDiagram& diagram);

}  // namespace rb::cli
