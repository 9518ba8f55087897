#include "RenderingBase/host/files/KVRPath.h"

#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/files/KVRFileSystem.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kLongPathPrefix = R"(\\?\)";
constexpr std::string_view kSeparators = R"(\/)";

bool isAbsolute(const KVRUnicodeString& path) {
    const std::string native = NativePath(path);
    return !native.empty() && native.front() == '/';
}

bool exists(const KVRUnicodeString& path) { return KVRFileAccess(path, 0) == S_OK; }

// Empty when there is none.
KVRUnicodeString firstExisting(const KVRUnicodeString& relative, std::string_view folders) {
    if (isAbsolute(relative)) return exists(relative) ? relative : KVRUnicodeString();
    while (!folders.empty() && relative.GetLengthInByte() != 0) {
        const std::string_view folder = folders.substr(0, folders.find(';'));
        folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
        if (folder.empty()) continue;
        KVRUnicodeString candidate = KVRUnicodeString(folder) + "\\" + relative;
        if (exists(candidate)) return candidate;
    }
    return {};
}

// Follows the last name of a path as far as it is a link; unlike std::filesystem, also one to
// something that does not exist. Empty, with an error, for a loop.
fs::path resolved(const fs::path& absolute, std::error_code& error) {
    constexpr int kMostLinks = 40;  // as the kernel does
    fs::path real = fs::weakly_canonical(absolute, error);
    for (int links = 0; !error; ++links) {
        std::error_code noLink;
        const fs::path target = fs::read_symlink(real, noLink);
        if (noLink) break;
        if (links == kMostLinks)
            error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
        else
            real = fs::weakly_canonical(real.parent_path() / target, error);
    }
    return error ? fs::path() : real;
}

}  // namespace

std::string NativePath(const KVRUnicodeString& path) {
    std::string_view text = path.View();
    if (text.starts_with(kLongPathPrefix)) text.remove_prefix(kLongPathPrefix.size());
    std::string native(text);
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

KVRUnicodeString FrameworkPath(std::string_view nativePath) {
    std::string path(nativePath);
    std::replace(path.begin(), path.end(), '/', '\\');
    return KVRUnicodeString(path);
}

void KVRSplitPath(const KVRUnicodeString& path, KVRUnicodeString& directory,
                  KVRUnicodeString& fileName) {
    const std::string text(path.View());  // a copy, since an output may be the input
    const std::size_t separator = text.find_last_of(kSeparators);
    if (separator == std::string::npos) {
        directory = KVRUnicodeString();
        fileName = text;
        return;
    }
    directory = text.substr(0, std::max<std::size_t>(separator, 1));
    fileName = text.substr(separator + 1);
}

KVRUnicodeString KVRGetRealPath(const KVRUnicodeString& path) {
    const std::string native = NativePath(path);
    if (native.empty()) return {};
    std::error_code error;
    const fs::path absolute = fs::absolute(native, error);
    if (error) return {};
    fs::path real = resolved(absolute, error);
    if (error == std::errc::too_many_symbolic_link_levels) return {};
    if (error) real = absolute.lexically_normal();
    if (!real.has_filename() && real.has_relative_path()) real = real.parent_path();
    return FrameworkPath(real.native());
}

bool KVRFindPath(const KVRUnicodeString& relative, const char* pathList, KVRUnicodeString& found) {
    found = firstExisting(relative, pathList ? pathList : "");
    return found.GetLengthInByte() != 0;
}

char* KVRFindPath(const char* relative, const char* pathList) {
    KVRUnicodeString found;
    if (!relative || !KVRFindPath(KVRUnicodeString(relative), pathList, found)) return nullptr;
    const std::size_t size = found.View().size() + 1;
    char* text = new (std::nothrow) char[size];
    if (text) std::memcpy(text, found.CastToCharPtr(), size);
    return text;
}
