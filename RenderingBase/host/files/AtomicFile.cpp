#include "RenderingBase/host/files/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace rb::files {
namespace {

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// Takes nothing from the final name, which may be as long as the system allows.
std::string partPathIn(const std::string& folder) {
    static std::atomic<unsigned> count{0};
    return folder + "/." + std::to_string(getpid()) + "-" + std::to_string(++count) + ".part";
}

/// Where a chain of links leads, so that they stay when the file is replaced.
std::string behindLinks(const std::string& path) {
    char* const resolved = realpath(path.c_str(), nullptr);
    std::string real = resolved ? resolved : path;
    std::free(resolved);
    return real;
}

}  // namespace

AtomicFile::AtomicFile(const std::string& nativePath)
    : m_path(behindLinks(nativePath)), m_partPath(partPathIn(folderOf(m_path))) {
    struct stat status {};
    const bool replaces = stat(m_path.c_str(), &status) == 0;
    if (replaces && !S_ISREG(status.st_mode)) {
        m_reason = S_ISDIR(status.st_mode) ? "a folder of that name" : "a device of that name";
        return;
    }
    constexpr mode_t kMode = 0666;  // less what the user's mask takes away
    int descriptor = open(folderOf(m_path).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kMode);
    if (descriptor < 0) {  // not every file system has files without a name
        descriptor = open(m_partPath.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kMode);
        m_hasPart = descriptor >= 0;
    }
    if (descriptor < 0) {
        fail(errno);
        return;
    }
    // Where the mode cannot be kept, the file is still worth having.
    if (replaces) static_cast<void>(fchmod(descriptor, status.st_mode & 0777U) == 0);
    m_stream = fdopen(descriptor, "w+b");
    if (!m_stream) {
        fail(errno);
        close(descriptor);
    }
}

AtomicFile::~AtomicFile() {
    if (m_stream) std::fclose(m_stream);
    if (m_hasPart) unlink(m_partPath.c_str());
}

void AtomicFile::fail(int error) { m_reason = std::generic_category().message(error); }

bool AtomicFile::flushed() {
    errno = 0;
    if (std::fflush(m_stream) == 0 && !std::ferror(m_stream)) return true;
    fail(errno ? errno : EIO);
    return false;
}

/// Gives the nameless content its temporary name.
bool AtomicFile::nameContent() {
    if (m_hasPart) return true;
    const std::string content = "/proc/self/fd/" + std::to_string(fileno(m_stream));
    m_hasPart =
        linkat(AT_FDCWD, content.c_str(), AT_FDCWD, m_partPath.c_str(), AT_SYMLINK_FOLLOW) == 0;
    if (!m_hasPart) fail(errno);
    return m_hasPart;
}

bool AtomicFile::commit() {
    if (!m_stream || !flushed() || !nameContent()) return false;
    const bool closed = std::fclose(std::exchange(m_stream, nullptr)) == 0;
    if (!closed || rename(m_partPath.c_str(), m_path.c_str()) != 0) {
        fail(errno);
        return false;
    }
    m_hasPart = false;
    return true;
}

}  // namespace rb::files
