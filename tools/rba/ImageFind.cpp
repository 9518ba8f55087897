#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"

namespace rb::cli {
namespace {

constexpr int kFound = 0, kNotAccepted = -1;
constexpr int kFirstKind = 1, kLastKind = 4;

struct FindArguments {
    std::string path;
    int kind = 0;
};

constexpr const char* kKinds =
    "1 (images), 2 (effects), 3 (environment maps) or 4 (photometric tables)";

/// Why the answer was not "found", as in "expected ..., found ...".
std::string reasonOf(int status, const FindArguments& arguments) {
    // Links are followed before the extension is judged.
    const std::string realPath = typedPath(KVRGetRealPath(frameworkPath(arguments.path)));
    if (status == kNotAccepted)
        return "status -1, extension not accepted: expected one of kind " +
               std::to_string(arguments.kind) + ", found '" + lowerExtension(realPath) + "'";
    return "status -2, not found: expected the file itself or its name in one of the search "
           "folders, found neither";
}

int runFind(Context& context, const FindArguments& arguments) {
    if (arguments.kind < kFirstKind || arguments.kind > kLastKind)
        throw UsageError(std::string("--kind: expected ") + kKinds + ", found " +
                         std::to_string(arguments.kind));
    KVRUnicodeString found;
    const int status = measured("KVRRbaImageServices", "FindImageInPaths", [&] {
        return KVRRbaImageServices::FindImageInPaths(arguments.kind, frameworkPath(arguments.path),
                                                     found, nullptr);
    });
    const std::string place = typedPath(found);
    if (context.json)
        printJson(*context.out,
                  {{"status", status}, {"found", status == kFound ? Json(place) : Json()}});
    if (status == kFound) {
        if (!context.json) *context.out << "status 0, found: " << onOneLine(place) << '\n';
        return kDone;
    }
    printError(named(arguments.path) + ": " + reasonOf(status, arguments));
    return kFailed;
}

}  // namespace

void addImageFind(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<FindArguments>(
        group, context, runFind,
        {"find",
         "Find an image file from the path that was stored for it. First the path itself is tried, "
         "then its file name alone: in the folders of the setting CatalagPath of the repository "
         "MaterialOptionsSettings, then below each folder of KVRStartupPath in materials, "
         "materials/shaders, materials/shaders/textures, materials/shaders/metaSL/textures and "
         "stickers. Status 0: found; -1: the kind does not accept the extension; -2: not found.",
         "rba image find //server/old/oak.jpg --kind 1\n"
         "rba --json image find downlight.ies --kind 4"});
    addArgument(command, "PATH", arguments.path, "The path as it was stored");
    addOption(command, "--kind", arguments.kind, "N", std::string("What is looked for: ") + kKinds)
        ->required();
}

}  // namespace rb::cli
