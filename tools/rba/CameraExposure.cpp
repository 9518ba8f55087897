#include "RenderingBase/public/KVRRbaCameraServices.h"
#include "tools/rba/CameraValues.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

#include <cmath>
#include <optional>

namespace rb::cli {
namespace {

using Camera = KVRRbaCameraServices;

struct ExposureArguments {
    double given = 0;                 // sensitivity or exposure value
    std::optional<std::string> time;  // as typed; without it the default
    double aperture = Camera::kDefaultAperture;
};

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
    return arguments.time ? secondsOf(*arguments.time) : Camera::kDefaultExposureTime;
}

void checkExposure(const char* name, const ExposureArguments& arguments) {
    checkFinite(name, arguments.given);
    if (!std::isfinite(arguments.aperture) || arguments.aperture < 0)
        refuse("--aperture", "a finite number from 0 on", arguments.aperture);
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

}  // namespace

void addCameraExposure(CLI::App& group, Context& context) {
    addEv(group, context);
    addIso(group, context);
}

}  // namespace rb::cli
