#include "RenderingBase/host/files/RegularFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace rb::files {

int openRegularFile(const std::string& nativePath, std::uint64_t& size, std::string& reason) {
    // Without O_NONBLOCK, opening a named pipe would wait for a writer.
    const int descriptor = open(nativePath.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        reason = std::generic_category().message(errno);
        return -1;
    }
    struct stat status {};
    const bool known = fstat(descriptor, &status) == 0;
    if (known && S_ISREG(status.st_mode)) {
        size = static_cast<std::uint64_t>(status.st_size);
        return descriptor;
    }
    reason = !known                    ? std::generic_category().message(errno)
             : S_ISDIR(status.st_mode) ? "a folder"
                                       : "something else than a regular file";
    close(descriptor);
    return -1;
}

}  // namespace rb::files
