#include "RenderingBase/host/app/SettingsFolder.h"

#include "RenderingBase/host/base/KVREnvironment.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/files/KVRFileSystem.h"
#include "RenderingBase/host/files/KVRPath.h"

#include <glib.h>

namespace rb::app {

// The environment is read at each call, where the same lookup of GLib remembers its first answer. A
// relative folder is not valid in this variable (XDG base directories, 0.8, "Basics").
std::string settingsFolder() {
    const char* configured = KVRGetEnv("XDG_CONFIG_HOME");
    if (configured && configured[0] == '/') return std::string(configured) + "/RenderingBase";
    const char* home = KVRGetEnv("HOME");
    return std::string(home && *home ? home : g_get_home_dir()) + "/.config/RenderingBase";
}

bool makeSettingsFolder() { return Succeeded(KVRCreateDirectory(FrameworkPath(settingsFolder()))); }

}  // namespace rb::app
