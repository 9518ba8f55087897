#include "RenderingBase/host/base/KVREnvironment.h"

#include <cstdlib>
#include <glib.h>

const char* KVRGetEnv(const char* name) { return name ? std::getenv(name) : nullptr; }

KVRString KVRGetTempDirectory() {
    KVRString folder(g_get_tmp_dir());
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    return folder;
}
