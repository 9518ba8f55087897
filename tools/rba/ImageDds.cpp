#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Images.h"
#include "tools/rba/Output.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"
#include "tools/rba/Sheet.h"
#include "tools/rba/Textures.h"

namespace rb::cli {
namespace {

struct DdsArguments {
    std::string path;
    std::string sheet;  // empty for none
};

/// A size in texels.
struct Size {
    explicit Size(const KVRPixelImage& image) { image.GetSize(width, height); }
    int width = 0, height = 0;
};

std::ostream& operator<<(std::ostream& out, const Size& size) {
    return out << size.width << " x " << size.height << " px";
}

/// The kind with what it says about the file, which is nothing for most of those with kind 0.
std::string kindText(int kind, const Texture& texture) {
    std::string text = std::to_string(kind);
    if (kind == 0 && (texture.isCube() || texture.levels() > 1))
        text += " (CheckDDSFormat answers for names that end in \".dds\" only)";
    return text;
}

std::string containerText(const std::string& path, const Texture& texture) {
    const std::string extension = lowerExtension(path);
    std::string text = texture.container();
    if (extension != text)
        text += extension.empty() ? " (the name has no extension)"
                                  : " (although the name ends in \"." + extension + "\")";
    return text;
}

void printText(std::ostream& out, const std::string& path, int kind, const Texture& texture) {
    out << onOneLine(path) << "\n  texture     " << texture.description() << "\n  container   "
        << onOneLine(containerText(path, texture)) << "\n  class       " << texture.className()
        << "\n  kind        " << kindText(kind, texture) << "\n  size        "
        << Size(texture.image()) << "\n  format      " << formatName(texture.image()) << " ("
        << static_cast<int>(texture.image().GetFormat()) << ")\n  faces       " << texture.faces();
    if (texture.isCube())
        for (const char* const name : kFaceNames)
            out << (name == kFaceNames[0] ? ": " : " ") << name;
    out << "\n  levels      " << texture.levels() << '\n';
    for (int level = 0; level < texture.levels(); ++level)
        out << "    level " << level << (level < 10 ? "   " : "  ")
            << Size(*texture.surface(0, level).Get()) << '\n';
}

Json toJson(const std::string& path, int kind, const Texture& texture) {
    const Size size(texture.image());
    return {{"path", path},
            {"kind", kind},
            {"className", texture.className()},
            {"width", size.width},
            {"height", size.height},
            {"faces", texture.faces()},
            {"levels", texture.levels()}};
}

int runDds(Context& context, const DdsArguments& arguments) {
    const char* const writer = arguments.sheet.empty() ? nullptr : writerOf(arguments.sheet);
    // Before the texture is there: it is read once more for its kind.
    const int kind = measured("KVRRbaImageServices", "CheckDDSFormat", [&] {
        return KVRRbaImageServices::CheckDDSFormat(frameworkPath(arguments.path));
    });
    const Texture texture = Texture::load(arguments.path);
    KVRVar<KVRPixelImage> sheet;
    if (writer) {
        sheet = makeSheet(texture);
        writeImage(*sheet.Get(), arguments.sheet, writer);
    }
    if (context.json) {
        printJson(*context.out, toJson(arguments.path, kind, texture));
        return kDone;
    }
    printText(*context.out, arguments.path, kind, texture);
    if (sheet && !context.quiet)
        *context.out << "  sheet       " << onOneLine(arguments.sheet) << ", " << Size(*sheet.Get())
                     << '\n';
    return kDone;
}

}  // namespace

void addImageDds(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<DdsArguments>(
        group, context, runDds,
        {"dds",
         "Show what a texture file holds: dds or ktx2. Told are whether it is a single picture or "
         "a "
         "cube map, with or without mip-maps, the class of the texture, the number that "
         "CheckDDSFormat has for the kind (1 picture with mip-maps, 2 cube map, 3 cube map with "
         "mip-maps, 0 everything else), the pixel format, and the size of every level; level 0 is "
         "the full size. What is in the file decides, whatever its name ends in.",
         "rba image dds sky.dds\nrba image dds sky.dds --sheet sky.png"});
    addArgument(command, "PATH", arguments.path, "Texture file");
    addOption(command, "--sheet", arguments.sheet, "OUT",
              "Draw all faces (a row each) and all levels (a column each) into one labelled "
              "picture: png, tif, tiff, bmp, jpg or jpeg. Levels larger than 512 pixels are drawn "
              "smaller, a checkerboard shows where a texture is transparent, half and float texels "
              "are clamped to 0..1");
}

}  // namespace rb::cli
