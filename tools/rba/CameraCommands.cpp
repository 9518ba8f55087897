#include "RenderingBase/host/visu/KVR3DViewpoint.h"
#include "RenderingBase/public/KVRRbaCameraServices.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

#include <cmath>

namespace rb::cli {
namespace {

using Camera = KVRRbaCameraServices;

struct ExposureArguments {
    double given = 0;  // sensitivity or exposure value
    std::string time;  // as typed; empty stands for the default
    double aperture = Camera::kDefaultAperture;
};
struct PointArguments {
    double x = 0, y = 0, width = 0, height = 0;
};
struct ColourArguments {
    double value = 0;
    int parameter = 0;
};
struct FocusArguments {
    std::string eye, target, point;
    bool parallel = false;
};

[[noreturn]] void refuse(const char* name, const char* expected, double found) {
    throw UsageError(std::string(name) + ": expected " + expected + ", found " + numberText(found));
}

void checkFinite(const char* name, double value) {
    if (!std::isfinite(value)) refuse(name, "a finite number", value);
}

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

/// Seconds of a number or of a fraction as photographers write it.
double secondsOf(const std::string& text) {
    const std::size_t slash = text.find('/');
    double time = 0, divisor = 1;
    const bool isRead =
        readNumber(std::string_view(text).substr(0, slash), time) == std::errc() &&
        (slash == std::string::npos ||
         readNumber(std::string_view(text).substr(slash + 1), divisor) == std::errc());
    const double seconds = time / divisor;
    if (isRead && std::isfinite(seconds) && seconds > 0) return seconds;
    throw UsageError("--time: expected seconds above 0, as in 0.004 or 1/250, found '" + text +
                     "'");
}

double timeOf(const ExposureArguments& arguments) {
    return arguments.time.empty() ? Camera::kDefaultExposureTime : secondsOf(arguments.time);
}

void checkExposure(const char* name, const ExposureArguments& arguments) {
    checkFinite(name, arguments.given);
    if (!std::isfinite(arguments.aperture) || arguments.aperture < 0)
        refuse("--aperture", "a finite number from 0 on", arguments.aperture);
}

/// Prints one number: as @p text with it behind, or as JSON under @p key.
template <class T>
int print(Context& context, const char* key, const char* text, T number) {
    if (context.json)
        printJson(*context.out, {{key, jsonNumber(number)}});
    else
        *context.out << text << numberText(number) << '\n';
    return kDone;
}

int runEv(Context& context, const ExposureArguments& arguments) {
    checkExposure("--iso", arguments);
    const double time = timeOf(arguments);
    const double ev = measured("KVRRbaCameraServices", "ComputeEVValuefromISO", [&] {
        return Camera::ComputeEVValuefromISO(arguments.given, time, arguments.aperture);
    });
    return print(context, "ev", "EV ", ev);
}

int runIso(Context& context, const ExposureArguments& arguments) {
    checkExposure("--ev", arguments);
    const double time = timeOf(arguments);
    const double iso = measured("KVRRbaCameraServices", "ComputeISOfromEVValue", [&] {
        return Camera::ComputeISOfromEVValue(arguments.given, time, arguments.aperture);
    });
    return print(context, "iso", "ISO ", iso);
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

int runColour(Context& context, const ColourArguments& arguments) {
    checkFinite("V", arguments.value);
    const auto parameter = static_cast<ColorCorrectionParameter>(arguments.parameter);
    const double value = measured("KVRRbaCameraServices", "convertToRenderingParam", [&] {
        return Camera::convertToRenderingParam(arguments.value, parameter);
    });
    return print(context, "value", "", value);
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

void addExposureOptions(CLI::App& command, ExposureArguments& arguments) {
    addOption(command, "--time", arguments.time, "T",
              "Exposure time in seconds, also as 1/60; default 0.006 (in single precision)");
    addOption(command, "--aperture", arguments.aperture, "N", "f-number; default 8");
}

void addEv(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<ExposureArguments>(
        group, context, runEv,
        {"ev",
         "Compute the exposure value of a film sensitivity. log2(K X / (T N^2)) with K = 2^-1.4 x "
         "18 / 1632.4; -1.4 for a sensitivity of 0 or less. An aperture of 0 stands for 8.",
         "rba camera ev --iso 100\n"
         "rba camera ev --iso 400 --time 1/60 --aperture 5.6"});
    addOption(command, "--iso", arguments.given, "X", "Film sensitivity, ISO")->required();
    addExposureOptions(command, arguments);
}

void addIso(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<ExposureArguments>(
        group, context, runIso,
        {"iso",
         "Compute the film sensitivity of an exposure value. The inverse of: rba camera ev. But an "
         "aperture of 0 gives 0.",
         "rba camera iso --ev 2\n"
         "rba --json camera iso --ev -1.5 --aperture 2.8"});
    addOption(command, "--ev", arguments.given, "X", "Exposure value")->required();
    addExposureOptions(command, arguments);
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

void addColour(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<ColourArguments>(
        group, context, runColour,
        {"colour",
         "Turn a colour correction value into a parameter of a renderer. P 0: V x 0.00333 + 1; 1: "
         "V x 0.02 + 1; 2: V x 0.0025; 3: V x 0.005; 4: V x 0.01 + 1; 5: V x 0.01; any other: 0.",
         "rba camera colour 50 0\n"
         "rba camera colour -20 5"});
    addArgument(command, "V", arguments.value, "The value that a user set");
    addArgument(command, "P", arguments.parameter, "Number of the parameter, 0 to 5");
}

void addFocus(CLI::App& group, Context& context) {
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

void addCameraCommands(CLI::App& program, Context& context) {
    CLI::App& group = addGroup(program, context, "camera",
                               "Compute exposures, focus points and distances, colour settings.");
    addEv(group, context);
    addIso(group, context);
    addToScreen(group, context);
    addToRatio(group, context);
    addColour(group, context);
    addFocus(group, context);
}

}  // namespace rb::cli
