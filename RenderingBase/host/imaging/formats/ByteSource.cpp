#include "RenderingBase/host/imaging/formats/ByteSource.h"

#include "RenderingBase/host/files/RegularFile.h"

#include <algorithm>
#include <cerrno>
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
    std::uint64_t size = 0;
    const int descriptor = rb::files::openRegularFile(nativePath, size, reason);
    if (descriptor < 0) return nullptr;
    return std::unique_ptr<FileSource>(new FileSource(descriptor, size));
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
