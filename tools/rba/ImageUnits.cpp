#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

#include <cmath>
#include <limits>

namespace rb::cli {
namespace {

struct PxMm {
    int px = 0;
    float mm = 0;
};
struct PxDpi {
    int px = 0;
    float dpi = 0;
};
struct MmDpi {
    float mm = 0;
    int dpi = 0;
};
struct Dpi {
    float dpi = 0;
};

void checkMeasure(const char* name, float value) {
    if (!std::isfinite(value) || value < 0)
        throw UsageError(std::string(name) + ": expected a number from 0 on, found " +
                         numberText(value));
}

void checkCount(const char* name, int value) {
    if (value < 0)
        throw UsageError(std::string(name) + ": expected a whole number from 0 on, found " +
                         std::to_string(value));
}

int print(Context& context, const Json& value, const std::string& text, const std::string& unit) {
    if (context.json)
        printJson(*context.out, {{"value", value}});
    else
        *context.out << text << ' ' << unit << '\n';
    return kDone;
}

/// The library gives the greatest whole number for whatever lies beyond.
int print(Context& context, int value, const char* unit) {
    const bool beyond = value == std::numeric_limits<int>::max();
    return print(context, value, std::to_string(value),
                 unit + std::string(beyond ? " or more, beyond the range of a whole number" : ""));
}

int print(Context& context, float value, const char* unit) {
    return print(context, jsonNumber(value), numberText(value), unit);
}

int runInferDpi(Context& context, const PxMm& arguments) {
    checkCount("PX", arguments.px);
    checkMeasure("MM", arguments.mm);
    return print(
        context,
        measured("KVRRbaImageServices", "InferDpi",
                 [&] { return KVRRbaImageServices::InferDpi(arguments.px, arguments.mm); }),
        "dpi");
}

int runSizeMm(Context& context, const PxDpi& arguments) {
    checkCount("PX", arguments.px);
    checkMeasure("DPI", arguments.dpi);
    return print(
        context,
        measured("KVRRbaImageServices", "ComputeSizeMM",
                 [&] { return KVRRbaImageServices::ComputeSizeMM(arguments.px, arguments.dpi); }),
        "mm");
}

int runSizePx(Context& context, const MmDpi& arguments) {
    checkMeasure("MM", arguments.mm);
    checkCount("DPI", arguments.dpi);
    return print(
        context,
        measured("KVRRbaImageServices", "ComputeSizePx",
                 [&] { return KVRRbaImageServices::ComputeSizePx(arguments.mm, arguments.dpi); }),
        "px");
}

int runDotSize(Context& context, const Dpi& arguments) {
    checkMeasure("DPI", arguments.dpi);
    return print(
        context,
        measured("KVRRbaImageServices", "DotsPerInchToDotsPerMM",
                 [&] { return KVRRbaImageServices::DotsPerInchToDotsPerMM(arguments.dpi); }),
        "mm");
}

constexpr const char* kPxHelp = "Number of pixels";
constexpr const char* kMmHelp = "Length in millimetres";
constexpr const char* kDpiHelp = "Resolution in dots to the inch";

void addInferDpi(CLI::App& units, Context& context) {
    auto [command, arguments] = addCommand<PxMm>(
        units, context, runInferDpi,
        {"infer-dpi",
         "Compute the resolution of a number of pixels on a length. In whole dots to the inch; 0 "
         "when the length is 0.",
         "rba image units infer-dpi 1024 86.7"});
    addArgument(command, "PX", arguments.px, kPxHelp);
    addArgument(command, "MM", arguments.mm, kMmHelp);
}

void addSizeMm(CLI::App& units, Context& context) {
    auto [command, arguments] = addCommand<PxDpi>(
        units, context, runSizeMm,
        {"size-mm",
         "Compute the length of a number of pixels. In millimetres; 0 when the resolution is 0.",
         "rba image units size-mm 1024 300"});
    addArgument(command, "PX", arguments.px, kPxHelp);
    addArgument(command, "DPI", arguments.dpi, kDpiHelp);
}

void addSizePx(CLI::App& units, Context& context) {
    auto [command, arguments] = addCommand<MmDpi>(
        units, context, runSizePx,
        {"size-px", "Compute the number of pixels on a length. Rounded to whole pixels.",
         "rba image units size-px 210 300"});
    addArgument(command, "MM", arguments.mm, kMmHelp);
    addArgument(command, "DPI", arguments.dpi, "Resolution in whole dots to the inch");
}

void addDotSize(CLI::App& units, Context& context) {
    auto [command, arguments] = addCommand<Dpi>(
        units, context, runDotSize,
        {"dot-size", "Compute the size of one dot. In millimetres; 0 when the resolution is 0.",
         "rba image units dot-size 300"});
    addArgument(command, "DPI", arguments.dpi, kDpiHelp);
}

}  // namespace

void addImageUnits(CLI::App& group, Context& context) {
    CLI::App& units = addGroup(group, context, "units",
                               "Convert between pixels, millimetres and dots to the inch.");
    addInferDpi(units, context);
    addSizeMm(units, context);
    addSizePx(units, context);
    addDotSize(units, context);
}

}  // namespace rb::cli
