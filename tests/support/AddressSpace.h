#pragma once

#include <cstddef>
#include <fstream>
#include <string>
#include <sys/resource.h>

namespace rb::test {

/// The largest size that the address space of this process ever had, in bytes (Linux). What a file
/// makes us allocate shows here even when the pages are never touched.
inline long long peakAddressSpace() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word != "VmPeak:") continue;
        long long kilobytes = 0;
        status >> kilobytes;
        return kilobytes * 1024;
    }
    return 0;
}

/// Whether memory can be made scarce: AddressSanitizer reserves more than there is.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kCanLimitMemory = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool kCanLimitMemory = false;
#else
inline constexpr bool kCanLimitMemory = true;
#endif
#else
inline constexpr bool kCanLimitMemory = true;
#endif

/// Lets the address space of this process grow by so many bytes and no more, for its life.
class AddressSpaceLimit {
public:
    explicit AddressSpaceLimit(std::size_t bytes) {
        getrlimit(RLIMIT_AS, &m_before);
        std::ifstream status("/proc/self/statm");
        std::size_t pages = 0;
        status >> pages;
        rlimit limit = m_before;
        limit.rlim_cur = pages * 4096 + bytes;
        setrlimit(RLIMIT_AS, &limit);
    }
    ~AddressSpaceLimit() { setrlimit(RLIMIT_AS, &m_before); }
    AddressSpaceLimit(const AddressSpaceLimit&) = delete;
    AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

private:
    rlimit m_before{};
};

}  // namespace rb::test
