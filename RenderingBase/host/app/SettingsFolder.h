#pragma once

#include <string>

namespace rb::app {

/// Returns the folder of the settings files, in the form of the system, whether it exists or not.
std::string settingsFolder();

/// Makes it, and returns false when it cannot be made.
bool makeSettingsFolder();

}  // namespace rb::app
