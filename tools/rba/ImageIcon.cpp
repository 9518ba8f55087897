#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Images.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

#include <algorithm>
#include <cstdint>

namespace rb::cli {
namespace {

using Image = KVRVar<KVRPixelImage>;

struct IconArguments {
    std::string in, out;
    int size = 0;
};

std::string sizeText(int width, int height) {
    return std::to_string(width) + " x " + std::to_string(height) + " px";
}

/// Why there is no icon; the documentation of the service lists the reasons.
std::string reasonOf(HRESULT status, const KVRPixelImage& source, int size) {
    if (status == E_NOTIMPL)
        return std::string("expected pixels of which an icon can be made, found ") +
               formatName(source) + " pixels";
    if (!KVRPixelImage::IsWithinPixelLimit(size, size))
        return "expected an icon of no more pixels than KVRImagePixelLimit allows, found a size "
               "of " +
               sizeText(size, size);
    int width = 0, height = 0;
    source.GetSize(width, height);
    const std::int64_t shorter = std::min(width, height), longer = std::max(width, height);
    if (2 * std::int64_t{size} * shorter <= longer)
        return "expected a picture of which at least half a pixel is left in an icon of " +
               sizeText(size, size) + ", found one of " + sizeText(width, height);
    if (std::max<std::int64_t>(longer, size) > KVRPixelImage::kLongestFilteredSide)
        return "expected a picture and an icon with sides of at most " +
               std::to_string(KVRPixelImage::kLongestFilteredSide) + " px, found " +
               sizeText(width, height) + " and " + sizeText(size, size);
    return "expected memory for the icon, found none";
}

int runIcon(Context& context, const IconArguments& arguments) {
    const char* const writer = writerOf(arguments.out);
    if (arguments.size < 1)
        throw UsageError("--size: expected a number from 1 on, found " +
                         std::to_string(arguments.size));
    const Image source = loadImage(arguments.in);
    KVRPixelImage* made = nullptr;
    const HRESULT status = measured("KVRRbaImageServices", "ComputeIconImage", [&] {
        return KVRRbaImageServices::ComputeIconImage(source.Get(), arguments.size, made);
    });
    const Image icon = Image::Adopt(made);
    if (Failed(status))
        throw Failure(arguments.in, reasonOf(status, *source.Get(), arguments.size));
    writeImage(*icon.Get(), arguments.out, writer);
    if (context.json)
        printJson(*context.out, {{"path", arguments.out},
                                 {"width", arguments.size},
                                 {"height", arguments.size},
                                 {"status", status}});
    else
        printImage(context, arguments.out, *icon.Get());
    return kDone;
}

}  // namespace

void addImageIcon(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<IconArguments>(
        group, context, runIcon,
        {"icon",
         "Fit a picture into a square, as large as it goes, over a middle grey of 125. "
         "Transparency is copied; float and half pixels are made displayable as in: rba image "
         "convert. The extension of OUT chooses the file format; jpg and jpeg drop transparency.",
         "rba image icon --size 64 oak.jpg icon.png"});
    addOption(command, "--size", arguments.size, "N", "Pixels of a side of the icon")->required();
    addArgument(command, "IN", arguments.in, "Image file to read");
    addArgument(command, "OUT", arguments.out, "Image file to write");
}

}  // namespace rb::cli
