#include "RenderingBase/public/KVRRbaPathResolver.h"

#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"
#include "RenderingBase/host/base/ZWTSysTrace.h"
#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/public/KVRRbaSettings.h"

#include <memory>

namespace {

constexpr const char* kSource = RB_TRACE_SOURCE("KVRRbaPathResolver");
constexpr const char* kLongPathPrefix = R"(\\?\)";

struct SearchList {
    const char* name;     // in messages
    const char* folders;  // null when the setting is not defined
    int errorLine;        // in the trace, kept for compatibility
};

void tellNotFound(const ZWTSysTraceHandle& trace, const SearchList& list) {
    if (trace) trace->Info("Not found into %s path { path = %s }", list.name, list.folders);
}

// A match that is gone again, or that the two operations of the host judge differently, is an
// error.
void tellFound(const ZWTSysTraceHandle& trace, const SearchList& list, const char* found,
               const ZWTSysPath& result) {
    if (!trace) return;
    constexpr const char* kFormat = "Found into %s path : %s { path = %s }";
    if (result.Exists())
        trace->Info(kFormat, list.name, found, list.folders);
    else
        trace->Error(kSource, list.errorLine, kFormat, list.name, found, list.folders);
}

}  // namespace

ZWTSysPath KVRRbaPathResolver::Resolve(const ZWTSysPath& path) {
    ZWTSysPath result = path;
    const ZWTSysTraceHandle trace = ZWTSysTraceCreate("KVRRbaPathResolver");
    KVRUnicodeString search = path.ToString();
    search.Replace(kLongPathPrefix, "");
    if (trace) trace->Info("Resolving %s ...", path.ToString().CastToCharPtr());

    const SearchList lists[] = {{"graphic", KVRRbaSettings::KVRGraphicPath(), 37},
                                {"startup", KVRRbaSettings::KVRStartupPath(), 53},
                                {"install", KVRRbaSettings::KVRInstallPath(), 69}};
    for (const SearchList& list : lists) {
        if (result.Exists()) break;
        if (!list.folders) continue;
        const std::unique_ptr<char[]> found(KVRFindPath(search.CastToCharPtr(), list.folders));
        if (!found) {
            tellNotFound(trace, list);
            continue;
        }
        result.Set(found.get());
        tellFound(trace, list, found.get(), result);
    }
    return result;
}
