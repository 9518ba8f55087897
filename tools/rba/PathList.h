#pragma once

/// @file  Commands that do the same for each of several files.

#include "tools/rba/Context.h"
#include "tools/rba/Output.h"

#include <ostream>
#include <string>
#include <vector>

namespace rb::cli {

/// What a command finds out about a file, and how it prints that.
template <class Facts>
struct PathReport {
    Facts (*read)(const std::string& path);  ///< Throws Failure.
    Json (*toJson)(const std::string& path, const Facts& facts);
    void (*printText)(std::ostream& out, const std::string& path, const Facts& facts);
    const char* key = "path";  ///< Of the argument, in the JSON of a failure.
};

/// Reports on every path, in order; a failure is told and does not keep the others. JSON is an
/// array in which a failure is {path, error}.
/// @return  The exit status: kFailed when one failed.
template <class Facts>
int reportOnPaths(Context& context, const std::vector<std::string>& paths,
                  const PathReport<Facts>& report) {
    Progress progress(context.quiet, paths.size());
    Json results = Json::array();
    int status = kDone;
    for (const std::string& path : paths) {
        progress.step(path);
        try {
            const Facts facts = report.read(path);
            progress.clear();
            if (context.json)
                results.push_back(report.toJson(path, facts));
            else
                report.printText(*context.out, path, facts);
        } catch (const Failure& failure) {
            progress.clear();
            context.out->flush();  // what came before stays before
            printError(failure.what());
            results.push_back({{report.key, path}, {"error", failure.reason()}});
            status = kFailed;
        }
    }
    if (context.json) printJson(*context.out, results);
    return status;
}

}  // namespace rb::cli
