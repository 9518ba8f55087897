#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Images.h"
#include "tools/rba/Output.h"
#include "tools/rba/PathList.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"

#include <optional>

namespace rb::cli {
namespace {

struct InfoArguments {
    std::vector<std::string> paths;
};

struct ImageFacts {
    int width = 0, height = 0;  // pixels
    int format = 0;
    const char* formatName = "";
    float dpi = 0;                    // 0 when the file states no resolution
    float widthMm = 0, heightMm = 0;  // meaningful with a resolution only
    std::optional<std::string> profile;
};

ImageFacts readFacts(const std::string& path) {
    const KVRVar<KVRPixelImage> image = loadImage(path);
    ImageFacts facts;
    measured("KVRRbaImageServices", "GiveImageInfos", [&] {
        KVRRbaImageServices::GiveImageInfos(image.Get(), facts.width, facts.height, facts.dpi,
                                            facts.widthMm, facts.heightMm);
    });
    facts.format = static_cast<int>(image->GetFormat());
    facts.formatName = formatName(*image.Get());

    // The image itself is sRGB by now; only the file knows what it came with.
    KVRMMImageProp stored;
    KVRMMImageSize size;
    if (readHeader(path, stored, size) && stored.hasProfile)
        facts.profile = std::string(stored.profileName.View());
    return facts;
}

Json toJson(const std::string& path, const ImageFacts& facts) {
    const bool measured = facts.dpi > 0;
    return {{"path", path},
            {"width", facts.width},
            {"height", facts.height},
            {"format", facts.format},
            {"formatName", facts.formatName},
            {"dpi", jsonNumber(facts.dpi)},
            {"widthMm", measured ? jsonNumber(facts.widthMm) : Json()},
            {"heightMm", measured ? jsonNumber(facts.heightMm) : Json()},
            {"profile", facts.profile ? Json(*facts.profile) : Json()}};
}

void printText(std::ostream& out, const std::string& path, const ImageFacts& facts) {
    out << onOneLine(path) << "\n  size        " << facts.width << " x " << facts.height << " px"
        << "\n  format      " << facts.formatName << " (" << facts.format << ")";
    if (facts.dpi > 0)
        out << "\n  resolution  " << numberText(facts.dpi) << " dpi\n  print size  "
            << numberText(facts.widthMm, 2) << " x " << numberText(facts.heightMm, 2) << " mm";
    else
        out << "\n  resolution  not stated\n  print size  -";
    out << "\n  profile     "
        << (!facts.profile           ? "none"
            : facts.profile->empty() ? "without a name"
                                     : onOneLine(*facts.profile))
        << '\n';
}

int runInfo(Context& context, const InfoArguments& arguments) {
    return reportOnPaths<ImageFacts>(context, arguments.paths, {readFacts, toJson, printText});
}

}  // namespace

void addImageInfo(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<InfoArguments>(
        group, context, runInfo,
        {"info",
         "Show size, pixel format, resolution and colour profile of images. Each file is read "
         "whole, so a damaged one is told. Sizes are pixels and millimetres (of 25.4 to the inch). "
         "The profile is the one in the file.",
         "rba image info oak.jpg\nrba --json image info textures/*.png"});
    addArgument(command, "PATH", arguments.paths, "Image files");
}

}  // namespace rb::cli
