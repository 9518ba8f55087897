#include "RenderingBase/host/visu/KVR3DViewpoint.h"
#include "RenderingBase/public/KVRRbaCameraServices.h"
#include "tools/rba/CameraValues.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

#include <cmath>

namespace rb::cli {
namespace {

using Camera = KVRRbaCameraServices;

struct PointArguments {
    double x = 0, y = 0, width = 0, height = 0;
};
struct FocusArguments {
    std::string eye, target, point;
    bool parallel = false;
};

void checkAboveZero(const char* name, double value) {
    if (!std::isfinite(value) || value <= 0) refuse(name, "a finite number above 0", value);
}

/// NaN is refused, not infinity: a point far outside is outside.
void checkPoint(const PointArguments& point, const char* xName, const char* yName) {
    if (std::isnan(point.x)) refuse(xName, "a number", point.x);
    if (std::isnan(point.y)) refuse(yName, "a number", point.y);
    checkAboveZero("W", point.width);
    checkAboveZero("H", point.height);
}

/// What the commands about a focus point print, and how they name it.
struct PointText {
    const char *x, *y, *unit;
    std::string expected;  ///< Of the point that was given.
};

int printPoint(Context& context, const PointArguments& given, const PointText& text, double x,
               double y, HRESULT status) {
    if (context.json)
        printJson(*context.out,
                  {{text.x, jsonNumber(x)}, {text.y, jsonNumber(y)}, {"status", status}});
    else
        *context.out << text.x << ' ' << numberText(x) << text.unit << ", " << text.y << ' '
                     << numberText(y) << text.unit << ", status " << status << '\n';
    if (Succeeded(status)) return kDone;
    throw Failure(numberText(given.x) + " " + numberText(given.y),
                  "expected a point in the viewport (" + text.expected +
                      "), found one outside, and took the centre");
}

int runToScreen(Context& context, const PointArguments& arguments) {
    checkPoint(arguments, "RX", "RY");
    double x = 0, y = 0;
    const HRESULT status =
        measured("KVRRbaCameraServices", "Convert2DFocusPointRatioToScreenCoordinates", [&] {
            return Camera::Convert2DFocusPointRatioToScreenCoordinates(
                arguments.x, arguments.y, arguments.width, arguments.height, x, y);
        });
    return printPoint(context, arguments, {"sx", "sy", " px", "RX and RY from -1 to 1"}, x, y,
                      status);
}

int runToRatio(Context& context, const PointArguments& arguments) {
    checkPoint(arguments, "SX", "SY");
    double x = 0, y = 0;
    const HRESULT status =
        measured("KVRRbaCameraServices", "Convert2DFocusPointScreenCoordinatesToRatio", [&] {
            return Camera::Convert2DFocusPointScreenCoordinatesToRatio(
                arguments.x, arguments.y, arguments.width, arguments.height, x, y);
        });
    return printPoint(context, arguments,
                      {"rx", "ry", "",
                       "SX from 0 to " + numberText(arguments.width) + ", SY from 0 to " +
                           numberText(arguments.height)},
                      x, y, status);
}

KVRMathPointf pointOf(const char* name, const std::string& text) {
    const auto [x, y, z] = readThreeNumbers<float>(name, text, "0,1.5,-2");
    return {x, y, z};
}

int runFocus(Context& context, const FocusArguments& arguments) {
    const auto viewpoint = KVRVar<KVR3DViewpoint>::Adopt(
        new KVR3DViewpoint(arguments.parallel ? KVR3DViewpoint::kParallel : KVR3DViewpoint::kConic,
                           pointOf("--eye", arguments.eye), pointOf("--target", arguments.target)));
    const KVRMathPointf point = pointOf("--point", arguments.point);
    const float distance = measured("KVRRbaCameraServices", "GetFocusDistance", [&] {
        return Camera::GetFocusDistance(viewpoint.Get(), point);
    });
    return print(context, "distance", "", distance);
}

void addSize(CLI::App& command, PointArguments& arguments) {
    addArgument(command, "W", arguments.width, "Width of the viewport in pixels");
    addArgument(command, "H", arguments.height, "Height of the viewport in pixels");
}

void addToScreen(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<PointArguments>(
        group, context, runToScreen,
        {"to-screen",
         "Place a focus point in a viewport. Prints pixels from the top left corner. For a point "
         "outside the viewport these are its centre, with a failing status, and the exit status is "
         "1.",
         "rba camera to-screen 0.5 -0.25 1920 1080"});
    addArgument(command, "RX", arguments.x, "-1 at the left edge, 0 in the centre, 1 at the right");
    addArgument(command, "RY", arguments.y, "-1 at the bottom edge, 0 in the centre, 1 at the top");
    addSize(command, arguments);
}

void addToRatio(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<PointArguments>(
        group, context, runToRatio,
        {"to-ratio",
         "Give a place in a viewport as ratios from its centre. -1 to 1, to the right and upwards. "
         "For a point outside the viewport these are 0, with a failing status, and the exit status "
         "is 1.",
         "rba camera to-ratio 1440 675 1920 1080"});
    addArgument(command, "SX", arguments.x, "Pixels from the left edge");
    addArgument(command, "SY", arguments.y, "Pixels from the top edge");
    addSize(command, arguments);
}

void addDistance(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<FocusArguments>(
        group, context, runFocus,
        {"focus",
         "Compute the distance from the eye at which a point is in focus. The length of the way, "
         "or with --parallel its part along the direction of sight. In the unit of the "
         "coordinates, in single precision.",
         "rba camera focus --eye 0,1.6,4 --target 0,1,0 --point 0.5,1,1\n"
         "rba camera focus --eye 0,0,0 --target 0,0,-1 --point -3,0,-4 --parallel"});
    addOption(command, "--eye", arguments.eye, "X,Y,Z", "Where the viewpoint stands")->required();
    addOption(command, "--target", arguments.target, "X,Y,Z", "Where it looks at")->required();
    addOption(command, "--point", arguments.point, "X,Y,Z", "What is in focus")->required();
    command.add_flag("--parallel", arguments.parallel, "Parallel projection, not a conic one");
}

}  // namespace

void addCameraFocus(CLI::App& group, Context& context) {
    addToScreen(group, context);
    addToRatio(group, context);
    addDistance(group, context);
}

}  // namespace rb::cli
