#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace rb::imaging {

std::size_t MemorySource::read(std::uint64_t offset, void* to, std::size_t count) {
    if (count == 0 || offset >= m_bytes.size()) return 0;  // to may be null for nothing
    const auto taken = std::min<std::size_t>(count, m_bytes.size() - offset);
    std::memcpy(to, m_bytes.data() + offset, taken);
    return taken;
}

std::unique_ptr<FileSource> FileSource::open(const std::string& nativePath, std::string& reason) {
    // Without O_NONBLOCK, opening a named pipe would wait for a writer.
    const int descriptor = ::open(nativePath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        reason = std::generic_category().message(errno);
        return nullptr;
    }
    struct stat status {};
    const bool known = fstat(descriptor, &status) == 0;
    if (!known || !S_ISREG(status.st_mode)) {
        reason = !known                    ? std::generic_category().message(errno)
                 : S_ISDIR(status.st_mode) ? "a folder"
                                           : "something else than a regular file";
        close(descriptor);
        return nullptr;
    }
    return std::unique_ptr<FileSource>(
        new FileSource(descriptor, static_cast<std::uint64_t>(status.st_size)));
}

FileSource::~FileSource() { close(m_descriptor); }

std::size_t FileSource::read(std::uint64_t offset, void* to, std::size_t count) {
    if (offset >= m_size) return 0;
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = pread(m_descriptor, static_cast<std::byte*>(to) + done, count - done,
                                  static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) m_error = errno;
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

std::string FileSource::failure() const {
    const int error = m_error;
    return error ? std::generic_category().message(error) : std::string();
}

}  // namespace rb::imaging
