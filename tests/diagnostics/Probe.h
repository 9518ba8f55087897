#pragma once

#include "RenderingBase/public/KVRRbaSettings.h"
#include "tests/support/ForeignPrograms.h"

#include <map>
#include <string>

namespace rb::test {

/// What the probe prints when none of the library's variables is defined but these.
inline std::string probed(const std::string& mode,
                          const std::map<std::string, std::string>& environment) {
    std::string command = "env";
    for (const auto& setting : KVRRbaSettings::All()) command += std::string(" -u ") + setting.name;
    for (const auto& [name, value] : environment) command += ' ' + shellWord(name + '=' + value);
    return runProgram(command + ' ' + shellWord(RB_PROBE) + ' ' + mode);
}

}  // namespace rb::test
