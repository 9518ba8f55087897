#include "RenderingBase/public/KVRRbaSettings.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Profile.h"

#include <algorithm>
#include <iomanip>
#include <string_view>

namespace rb::cli {
namespace {

struct EnvArguments {};

int runEnv(Context& context, const EnvArguments&) {
    const auto settings = measured("KVRRbaSettings", "All", &KVRRbaSettings::All);
    if (context.json) {
        Json result = Json::object();
        for (const auto& setting : settings)
            result[setting.name] = setting.value ? Json(setting.value) : Json();
        printJson(*context.out, result);
        return kDone;
    }
    std::size_t width = 0;
    for (const auto& setting : settings)
        width = std::max(width, std::string_view(setting.name).size());
    for (const auto& [name, value] : settings)
        *context.out << std::left << std::setw(static_cast<int>(width)) << name << "  "
                     << (!value   ? "(not defined)"
                         : *value ? value
                                  : "(empty)")
                     << '\n';
    return kDone;
}

}  // namespace

void addEnvCommand(CLI::App& program, Context& context) {
    addCommand<EnvArguments>(
        program, context, runEnv,
        {"env",
         "Show every setting that comes from the environment. Path lists are separated by \";\"; "
         "a variable that is defined but empty counts as defined.",
         "rba env\nKVRStartupPath=/opt/materials rba --json env"});
}

}  // namespace rb::cli
