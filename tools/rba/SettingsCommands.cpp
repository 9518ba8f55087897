#include "RenderingBase/host/app/KVRSettingRepository.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/Output.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"

namespace rb::cli {
namespace {

using Repository = KVRVar<KVRSettingRepository>;

struct ListArguments {};
struct GetArguments {
    std::string repository, name;
};
struct SetArguments {
    std::string repository, name, value;
};

std::string readSetting(const KVRSettingRepository& repository, const std::string& name) {
    KVRUnicodeString value;
    const HRESULT status = measured("KVRSettingRepository", "ReadSetting",
                                    [&] { return repository.ReadSetting(name.c_str(), value); });
    if (Failed(status))
        throw Failure(typedPath(repository.GetFilePath()),
                      "expected a setting '" + name + "', found none that can be read");
    return std::string(value.View());
}

Json toJson(std::string_view repository, const Json& name, const Json& value) {
    return {{"repository", repository}, {"name", name}, {"value", value}};
}

void listRepository(const std::string& name, const Context& context, Json& result) {
    const auto repository = Repository::Adopt(KVRSettingRepository::GetRepository(name.c_str()));
    std::vector<KVRSettingRepository::Setting> settings;
    if (!repository) return;  // removed since it was listed
    const HRESULT status = measured("KVRSettingRepository", "ListSettings",
                                    [&] { return repository->ListSettings(settings); });
    if (Failed(status))
        throw Failure(typedPath(repository->GetFilePath()),
                      "expected a settings file, found one that cannot be read");
    if (!context.json)
        *context.out << onOneLine(name) << (settings.empty() ? "\n  (no settings)\n" : "\n");
    else if (settings.empty())
        result.push_back(toJson(name, nullptr, nullptr));
    for (const auto& [setting, value] : settings) {
        if (context.json)
            result.push_back(toJson(name, setting.View(), value.View()));
        else
            *context.out << "  " << onOneLine(setting.View()) << " = " << onOneLine(value.View())
                         << '\n';
    }
}

int runList(Context& context, const ListArguments&) {
    Json result = Json::array();
    int status = kDone;
    for (const KVRUnicodeString& name : KVRSettingRepository::ListRepositories()) {
        try {
            listRepository(std::string(name.View()), context, result);
        } catch (const Failure& failure) {
            context.out->flush();
            printError(failure.what());
            status = kFailed;
        }
    }
    if (context.json) printJson(*context.out, result);
    return status;
}

int runGet(Context& context, const GetArguments& arguments) {
    const auto repository =
        Repository::Adopt(KVRSettingRepository::GetRepository(arguments.repository.c_str()));
    if (!repository)
        throw Failure(named(arguments.repository, "name"),
                      "expected a settings repository of that name, found none");
    const std::string value = readSetting(*repository.Get(), arguments.name);
    if (context.json)
        printJson(*context.out, toJson(arguments.repository, arguments.name, value));
    else
        *context.out << onOneLine(value) << '\n';
    return kDone;
}

int runSet(Context& context, const SetArguments& arguments) {
    const auto repository =
        Repository::Adopt(KVRSettingRepository::CreateRepository(arguments.repository.c_str()));
    if (!repository)
        throw Failure(named(arguments.repository, "name"),
                      "expected a settings repository that can be made, found a name or a folder "
                      "that does not allow it");
    const HRESULT status = measured("KVRSettingRepository", "WriteSetting", [&] {
        return repository->WriteSetting(arguments.name.c_str(), KVRUnicodeString(arguments.value));
    });
    const std::string file = typedPath(repository->GetFilePath());
    if (status == E_INVALIDARG)
        throw Failure(file, "expected a name of letters, digits, '_', '-' and '.', found '" +
                                arguments.name + "'");
    if (Failed(status))
        throw Failure(file, "expected a settings file that can be written, found one that cannot");
    if (context.json)
        printJson(*context.out, toJson(arguments.repository, arguments.name, arguments.value));
    else if (!context.quiet)
        *context.out << onOneLine(arguments.repository + ": " + arguments.name + " = " +
                                  arguments.value)
                     << '\n';
    return kDone;
}

constexpr const char* kRepositoryHelp = "Name of the repository";
constexpr const char* kNameHelp = "Name of the setting";

void addGet(CLI::App& group, Context& context) {
    auto [command, arguments] =
        addCommand<GetArguments>(group, context, runGet,
                                 {"get",
                                  "Show the value of one setting. Fails when it was never set. "
                                  "Control characters are shown as "
                                  "\\x0a; with --json the value is as it was set.",
                                  "rba settings get MaterialOptionsSettings CatalagPath"});
    addArgument(command, "REPOSITORY", arguments.repository, kRepositoryHelp);
    addArgument(command, "NAME", arguments.name, kNameHelp);
}

void addSet(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<SetArguments>(
        group, context, runSet,
        {"set",
         "Write the value of one setting. The repository is made when there is none of that name.",
         "rba settings set MaterialOptionsSettings CatalagPath \"/srv/wood;/srv/stone\""});
    addArgument(command, "REPOSITORY", arguments.repository, kRepositoryHelp);
    addArgument(command, "NAME", arguments.name, kNameHelp);
    addArgument(command, "VALUE", arguments.value, "The text to write");
}

}  // namespace

void addSettingsCommands(CLI::App& program, Context& context) {
    CLI::App& group =
        addGroup(program, context, "settings", "Show and change the settings of the user.");
    addCommand<ListArguments>(
        group, context, runList,
        {"list", "Show all settings of all repositories.", "rba settings list"});
    addGet(group, context);
    addSet(group, context);
}

}  // namespace rb::cli
