#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/IesFindings.h"
#include "tools/rba/Output.h"
#include "tools/rba/PathList.h"

namespace rb::cli {
namespace {

struct CheckArguments {
    std::vector<std::string> paths;
};

using Findings = std::vector<Finding>;

Findings check(const std::string& path) { return findingsOf(loadPhotometry(path)); }

Json toJson(const std::string& path, const Findings& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings)
        list.push_back({{"code", finding.code}, {"message", finding.message}});
    return {{"path", path}, {"findings", list}};
}

void printText(std::ostream& out, const std::string& path, const Findings& findings) {
    if (findings.empty()) out << onOneLine(path) << ": nothing unusual\n";
    for (const Finding& finding : findings)
        out << onOneLine(path) << ": " << finding.message << " [" << finding.code << "]\n";
}

int runCheck(Context& context, const CheckArguments& arguments) {
    return reportOnPaths<Findings>(context, arguments.paths, {check, toJson, printText});
}

}  // namespace

void addIesCheck(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<CheckArguments>(
        group, context, runCheck,
        {"check",
         "Tell what is unusual in photometric files, and what tables make of it. Each finding is a "
         "sentence and a code that scripts can rely on. The exit status is 0 when a file can be "
         "read, whatever is found in it, and 1 when it cannot.",
         "rba ies check street.ies\nrba --json ies check lamps/*.ies"});
    addArgument(command, "PATH", arguments.paths, "Photometric files");
}

}  // namespace rb::cli
