#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Images.h"

namespace rb::cli {
namespace {

struct ConvertArguments {
    std::string in, out;
    std::vector<std::string> groups;
    int dpi = kDefaultDpi;
};

int runConvert(Context& context, const ConvertArguments& arguments) {
    const char* const writer = writerOf(arguments.out);
    if (arguments.dpi < 1)
        throw UsageError("--dpi: expected a number from 1 on, found " +
                         std::to_string(arguments.dpi));

    KVRListValKVRUnicodeString groups;
    for (const std::string& group : arguments.groups) groups.Append(KVRUnicodeString(group));
    const KVRVar<KVRPixelImage> image = loadImage(arguments.in, arguments.dpi, groups);
    const KVRVar<KVRPixelImage> shown = displayableImage(arguments.in, *image.Get());
    writeImage(*shown.Get(), arguments.out, writer);
    printImage(context, arguments.out, *shown.Get());
    return kDone;
}

}  // namespace

void addImageConvert(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<ConvertArguments>(
        group, context, runConvert,
        {"convert",
         "Write an image in another file format. The extension of OUT chooses it: png, tif, tiff, "
         "bmp, jpg or jpeg (quality 95, without transparency). An embedded colour profile is "
         "applied: the result is sRGB. Float and half pixels are made displayable: cut at 0 and 1 "
         "and brightened, the darker the more; the result is RGBA. OUT appears when it is complete "
         "and replaces an older file.",
         "rba image convert oak.tif oak.png"});
    addArgument(command, "IN", arguments.in, "Image file to read");
    addArgument(command, "OUT", arguments.out, "Image file to write");
    addOption(
        command, "--group", arguments.groups, "G",
        "For drawings: show this group only; may be given several times; pictures take no notice")
        ->allow_extra_args(false);
    addOption(
        command, "--dpi", arguments.dpi, "N",
        "For drawings: resolution in dots to the inch, 96 when not given; pictures take no notice");
}

}  // namespace rb::cli
