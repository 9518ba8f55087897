#include "RenderingBase/host/base/Guarded.h"
#include "RenderingBase/host/files/KVRFileSystem.h"
#include "RenderingBase/host/files/KVRPath.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

std::string systemReason() { return std::generic_category().message(errno); }

/// A file that is open for reading; closed by the destructor.
class OpenFile {
public:
    // Without O_NONBLOCK, opening a named pipe would wait for a writer.
    explicit OpenFile(const std::string& nativePath)
        : m_descriptor(open(nativePath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~OpenFile() {
        if (m_descriptor >= 0) close(m_descriptor);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    /// What it is instead of a regular file of at most @p mostBytes; empty when it is one.
    std::string objection(std::size_t mostBytes, std::size_t& size) const {
        struct stat status {};
        if (m_descriptor < 0 || fstat(m_descriptor, &status) != 0) return systemReason();
        if (S_ISDIR(status.st_mode)) return "a folder";
        if (!S_ISREG(status.st_mode)) return "something else than a regular file";
        size = static_cast<std::size_t>(status.st_size);
        return size > mostBytes ? "one of " + std::to_string(size) + " bytes" : std::string();
    }

    /// As many bytes as there are, up to the size of @p content, which is cut to them.
    bool readInto(std::string& content) const {
        std::size_t done = 0;
        while (done < content.size()) {
            const ssize_t got = read(m_descriptor, content.data() + done, content.size() - done);
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) return false;
            if (got == 0) break;
            done += static_cast<std::size_t>(got);
        }
        content.resize(done);
        return true;
    }

private:
    int m_descriptor;
};

}  // namespace

HRESULT KVRReadFile(const KVRUnicodeString& path, std::size_t mostBytes, std::string& content,
                    std::string& reason) {
    content.clear();
    return rb::guarded([&] {
        const OpenFile file(NativePath(path));
        std::size_t size = 0;
        reason = file.objection(mostBytes, size);
        if (!reason.empty()) return E_FAIL;
        content.resize(size);
        if (file.readInto(content)) return S_OK;
        reason = systemReason();
        content.clear();
        return E_FAIL;
    });
}
