#include "RenderingBase/public/KVRRbaPathResolver.h"
#include "RenderingBase/public/KVRRbaSettings.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"

namespace rb::cli {
namespace {

struct ResolveArguments {
    std::vector<std::string> paths;
};

/// Why a path leads to nothing.
std::string nothingFound() {
    bool hasFolders = false;
    for (const char* list : {KVRRbaSettings::KVRGraphicPath(), KVRRbaSettings::KVRStartupPath(),
                             KVRRbaSettings::KVRInstallPath()})
        hasFolders |= list && *list;
    return std::string(
               "expected a file or folder, itself or in one of the search folders, found "
               "none") +
           (hasFolders ? ""
                       : "; there are no such folders: KVRGraphicPath, KVRStartupPath and "
                         "KVRInstallPath are not defined or empty");
}

/// Prints what a path means; what does not exist has a result, too, which says so.
int resolveOne(const Context& context, const std::string& path, Json& results) {
    const ZWTSysPath given(frameworkPath(path));
    const ZWTSysPath resolved = measured("KVRRbaPathResolver", "Resolve",
                                         [&] { return KVRRbaPathResolver::Resolve(given); });
    const std::string place = typedPath(resolved.ToString());
    const bool exists = resolved.Exists();
    if (context.json)
        results.push_back({{"path", path}, {"resolved", place}, {"exists", exists}});
    else if (exists)
        *context.out << onOneLine(path) << " -> " << onOneLine(place) << '\n';
    if (exists) return kDone;
    context.out->flush();  // what came before stays before
    printError(named(path) + ": " + nothingFound());
    return kFailed;
}

int runResolve(Context& context, const ResolveArguments& arguments) {
    Json results = Json::array();
    int status = kDone;
    for (const std::string& path : arguments.paths) {
        try {
            if (resolveOne(context, path, results) != kDone) status = kFailed;
        } catch (const Failure& failure) {
            context.out->flush();
            printError(failure.what());
            results.push_back({{"path", path}, {"error", failure.reason()}});
            status = kFailed;
        }
    }
    if (context.json) printJson(*context.out, results);
    return status;
}

}  // namespace

void addResolveCommand(CLI::App& program, Context& context) {
    auto [command, arguments] = addCommand<ResolveArguments>(
        program, context, runResolve,
        {"resolve",
         "Find the file or folder that a path of a resource means in this installation. A path "
         "that exists is taken as it is; any other one is looked for in the folders of "
         "KVRGraphicPath, KVRStartupPath and KVRInstallPath, in this order. The exit status is 1 "
         "when one of the paths leads to nothing. ZWTSysTraces=KVRRbaPathResolver in the "
         "environment shows the search.",
         "rba resolve graphics/hdri/sky.hdr\n"
         "rba --json resolve graphics/hdri/sky.hdr materials\n"
         "ZWTSysTraces=KVRRbaPathResolver rba resolve materials"});
    addArgument(command, "PATH", arguments.paths, "Paths as they were stored");
}

}  // namespace rb::cli
