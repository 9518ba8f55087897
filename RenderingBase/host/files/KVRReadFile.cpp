#include "RenderingBase/host/base/Guarded.h"
#include "RenderingBase/host/files/KVRFileSystem.h"
#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/host/files/RegularFile.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>

namespace {

/// A regular file that is open for reading; closed by the destructor.
class OpenFile {
public:
    /// @param reason  Set when it is not open.
    OpenFile(const std::string& nativePath, std::string& reason)
        : m_descriptor(rb::files::openRegularFile(nativePath, m_size, reason)) {}
    ~OpenFile() {
        if (isOpen()) close(m_descriptor);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool isOpen() const { return m_descriptor >= 0; }
    std::uint64_t size() const { return m_size; }  ///< Bytes.

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
    std::uint64_t m_size = 0;
    int m_descriptor;
};

}  // namespace

HRESULT KVRReadFile(const KVRUnicodeString& path, std::size_t mostBytes, std::string& content,
                    std::string& reason) {
    content.clear();
    return rb::guarded([&] {
        reason.clear();
        const OpenFile file(NativePath(path), reason);
        if (!file.isOpen()) return E_FAIL;
        if (file.size() > mostBytes) {
            reason = "one of " + std::to_string(file.size()) + " bytes, where " +
                     std::to_string(mostBytes) + " are the most";
            return E_FAIL;
        }
        content.resize(static_cast<std::size_t>(file.size()));
        if (file.readInto(content)) return S_OK;
        reason = std::generic_category().message(errno);
        content.clear();
        return E_FAIL;
    });
}
