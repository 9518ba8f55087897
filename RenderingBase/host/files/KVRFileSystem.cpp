#include "RenderingBase/host/files/KVRFileSystem.h"

#include "RenderingBase/host/base/Guarded.h"
#include "RenderingBase/host/files/KVRPath.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

HRESULT readStatus(const KVRUnicodeString& path, struct stat& status) {
    return stat(NativePath(path).c_str(), &status) == 0 ? S_OK : E_FAIL;
}

}  // namespace

HRESULT KVRGetFileInfo(const KVRUnicodeString& path, KVRFileInfo* info) {
    if (!info) return E_INVALIDARG;
    return rb::guarded([&] {
        struct stat status {};
        if (Failed(readStatus(path, status))) return E_FAIL;
        *info = {status.st_size, status.st_mtime, S_ISDIR(status.st_mode)};
        return S_OK;
    });
}

HRESULT KVRFileStat(const KVRUnicodeString& path, KVRFileStatus& status) {
    return rb::guarded([&] {
        struct stat found {};
        if (Failed(readStatus(path, found))) return E_FAIL;
        constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
        status.modificationTime = found.st_mtime;
        status.size = static_cast<std::int32_t>(std::min<std::int64_t>(found.st_size, kLargest));
        return S_OK;
    });
}

HRESULT KVRCreateDirectory(const KVRUnicodeString& path) {
    return rb::guarded([&] {
        const fs::path folder = NativePath(path);
        std::error_code error;
        fs::create_directories(folder, error);
        return fs::is_directory(folder, error) ? S_OK : E_FAIL;
    });
}

HRESULT KVRListDirectory(const KVRUnicodeString& path, KVRListValKVRUnicodeString& names) {
    return rb::guarded([&] {
        const fs::path folder = NativePath(path);
        names.RemoveAll();
        KVRListValKVRUnicodeString found;
        std::error_code error;
        fs::directory_iterator entry(folder, error);
        for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
            found.Append(entry->path().filename().native());
        }
        if (error) return E_FAIL;
        names = std::move(found);
        return S_OK;
    });
}

HRESULT KVRDeleteFile(const KVRUnicodeString& path) {
    return rb::guarded([&] {
        const std::string native = NativePath(path);
        struct stat status {};
        if (lstat(native.c_str(), &status) != 0) return E_FAIL;
        if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) return E_FAIL;
        return unlink(native.c_str()) == 0 ? S_OK : E_FAIL;
    });
}

HRESULT KVRFileAccess(const KVRUnicodeString& path, int mode) {
    static_assert(F_OK == 0 && W_OK == 2 && R_OK == 4);
    if ((mode & ~(W_OK | R_OK)) != 0) return E_INVALIDARG;
    return rb::guarded([&] {
        const std::string native = NativePath(path);
        return access(native.c_str(), mode) == 0 ? S_OK : E_FAIL;
    });
}
