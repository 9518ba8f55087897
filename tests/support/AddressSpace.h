#pragma once

#include <fstream>
#include <string>

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

}  // namespace rb::test
