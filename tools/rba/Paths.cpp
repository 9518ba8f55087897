#include "tools/rba/Paths.h"

#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/Context.h"

namespace rb::cli {

KVRUnicodeString frameworkPath(const std::string& typed) {
    if (KVRUnicodeString(typed).View() != typed)
        throw Failure(typed, "expected a path in UTF-8, found other bytes");
    return FrameworkPath(typed);
}

std::string typedPath(const KVRUnicodeString& path) { return NativePath(path); }

std::string lowerExtension(const std::string& typed) {
    KVRUnicodeString extension = KVRRbaImageServices::ReadExtension(frameworkPath(typed));
    extension.ToLower();
    return std::string(extension.View());
}

}  // namespace rb::cli
