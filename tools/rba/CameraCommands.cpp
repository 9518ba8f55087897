#include "RenderingBase/public/KVRRbaCameraServices.h"
#include "tools/rba/CameraValues.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

namespace rb::cli {
namespace {

using Camera = KVRRbaCameraServices;

struct ColourArguments {
    double value = 0;
    int parameter = 0;
};

int runColour(Context& context, const ColourArguments& arguments) {
    checkFinite("V", arguments.value);
    const auto parameter = static_cast<ColorCorrectionParameter>(arguments.parameter);
    const double value = measured("KVRRbaCameraServices", "convertToRenderingParam", [&] {
        return Camera::convertToRenderingParam(arguments.value, parameter);
    });
    return print(context, "value", "", value);
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

}  // namespace

void addCameraCommands(CLI::App& program, Context& context) {
    CLI::App& group = addGroup(program, context, "camera",
                               "Compute exposures, focus points and distances, colour settings.");
    addCameraExposure(group, context);
    addCameraFocus(group, context);
    addColour(group, context);
}

}  // namespace rb::cli
