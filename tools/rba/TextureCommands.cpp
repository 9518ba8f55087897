#include "RenderingBase/public/KVRRbaTextureLoader.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Images.h"
#include "tools/rba/Output.h"
#include "tools/rba/PathList.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"

namespace rb::cli {
namespace {

struct ImportArguments {
    std::vector<std::string> paths;
};

struct ImportFacts {
    long status = 0;
    int width = 0, height = 0;  // pixels
    int format = 0;
    const char* formatName = "";
    double xResolution = 0;  // dots to the inch
};

ImportFacts import(const std::string& path) {
    TextureResult result;
    ImportFacts facts;
    facts.status = measured("KVRRbaTextureLoader", "ImportTexture", [&] {
        return KVRRbaTextureLoader::GetInstance().ImportTexture(frameworkPath(path), result);
    });
    const auto image = KVRVar<KVRPixelImage>::Adopt(result.GetPixelImage());
    if (!image) throw Failure(path, imageErrorReason());
    image->GetSize(facts.width, facts.height);
    facts.format = static_cast<int>(image->GetFormat());
    facts.formatName = formatName(*image.Get());
    facts.xResolution = result.GetMetadata().xResolution;
    return facts;
}

Json toJson(const std::string& path, const ImportFacts& facts) {
    return {{"path", path},           {"status", facts.status}, {"width", facts.width},
            {"height", facts.height}, {"format", facts.format}, {"xResolution", facts.xResolution}};
}

void printText(std::ostream& out, const std::string& path, const ImportFacts& facts) {
    out << onOneLine(path) << "\n  size        " << facts.width << " x " << facts.height << " px"
        << "\n  format      " << facts.formatName << " (" << facts.format << ")\n  resolution  "
        << numberText(facts.xResolution, 4) << " dpi";
    if (facts.xResolution == KVRRbaTextureLoader::kDefaultResolution)
        out << " (assumed; the file states none)";
    out << '\n';
}

int runImport(Context& context, const ImportArguments& arguments) {
    return reportOnPaths<ImportFacts>(context, arguments.paths, {import, toJson, printText});
}

}  // namespace

void addTextureCommands(CLI::App& program, Context& context) {
    CLI::App& group = addGroup(program, context, "texture", "Import textures.");
    auto [command, arguments] = addCommand<ImportArguments>(
        group, context, runImport,
        {"import",
         "Import textures as a renderer does, and show the size, the pixel format and the "
         "horizontal resolution of each. Images and texture files (dds, ktx2) are read; of a "
         "texture file the full size of the first face is shown. Pixels stay in the format of the "
         "file; a colour profile other than sRGB is applied, unless KVR_TEXTURE_NO_COLOR_PROFILE "
         "is defined. A file that states no resolution gets 91.3669 dots to the inch.",
         "rba texture import oak.jpg\nrba --json texture import textures/*.dds"});
    addArgument(command, "PATH", arguments.paths, "Texture files");
}

}  // namespace rb::cli
