#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

#include <exception>
#include <iostream>

namespace rb::cli {
namespace {

int act(const Context& context) {
    try {
        return context.action();
    } catch (const UsageError& error) {
        printError(error.what());
        return kWrongUsage;
    } catch (const std::exception& error) {
        printError(error.what());
        return kFailed;
    }
}

int perform(const Context& context) {
    if (context.profile) startProfile();
    const int status = act(context);
    if (context.profile) printProfile(std::cerr, context.json);
    return status;
}

int runProgram(int count, const char* const* arguments) {
    ResultStream results;
    Context context;
    context.out = &results.stream();

    const auto program = makeProgram(context);
    addImageCommands(*program, context);
    addTextureCommands(*program, context);
    addIesCommands(*program, context);
    addCameraCommands(*program, context);
    addEnvCommand(*program, context);
    addFittingCommand(*program, context);
    addSettingsCommands(*program, context);
    addResolveCommand(*program, context);
    addDisplayCommands(*program, context);
    addTourCommand(*program, context);

    int status = parseCommandLine(*program, context, count, arguments);
    if (context.action) status = perform(context);
    // A full disk shows when the last bytes are handed over.
    if (!results.stream().flush() && status == kDone) {
        printError("standard output: expected room for the results, found none");
        status = kFailed;
    }
    return status;
}

}  // namespace
}  // namespace rb::cli

int main(int count, char** arguments) {
    try {
        return rb::cli::runProgram(count, arguments);
    } catch (const std::exception& error) {
        rb::cli::printError(error.what());
        return rb::cli::kFailed;
    }
}
