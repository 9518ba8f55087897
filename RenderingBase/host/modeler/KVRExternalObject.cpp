#include "RenderingBase/host/modeler/KVRExternalObject.h"

#include "RenderingBase/host/base/ZWTSysTrace.h"
#include "RenderingBase/host/modeler/KVRModeler.h"

#include <dlfcn.h>
#include <string>

namespace {

// The folder of this library with a "/" at its end; empty when the loader does not know it.
std::string ownFolder() {
    Dl_info info{};
    const auto* address = reinterpret_cast<const void*>(&KVRCreateExternalObject);
    if (!dladdr(address, &info) || !info.dli_fname) return {};
    const std::string file = info.dli_fname;
    return file.substr(0, file.rfind('/') + 1);
}

bool load(const std::string& file, const ZWTSysTraceHandle& trace) {
    if (dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) return true;
    const char* reason = dlerror();
    if (trace) trace->Info("%s", reason ? reason : file.c_str());
    return false;
}

bool loadLibrary(const std::string& library, const ZWTSysTraceHandle& trace) {
    if (library.empty() || library.find('/') != std::string::npos) return false;
    const std::string file = "lib" + library + ".so";
    const std::string folder = ownFolder();
    return (!folder.empty() && load(folder + file, trace)) || load(file, trace);
}

}  // namespace

KVRBaseUnknown* KVRCreateExternalObject(const char* name, const char* library) {
    if (!name) return nullptr;
    try {
        if (KVRBaseUnknown* known = KVRModeler::Create(name)) return known;
        const auto trace = ZWTSysTraceCreate("KVRCreateExternalObject");
        if (!library || !loadLibrary(library, trace)) return nullptr;
        KVRBaseUnknown* made = KVRModeler::Create(name);
        if (!made && trace) trace->Info("library %s does not have component %s", library, name);
        return made;
    } catch (...) {
        return nullptr;
    }
}
