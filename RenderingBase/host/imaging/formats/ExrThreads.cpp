#include "RenderingBase/host/imaging/formats/ExrThreads.h"

#include <ImfThreading.h>
#include <algorithm>
#include <mutex>
#include <system_error>
#include <thread>

namespace rb::imaging {
namespace {

/// One thread after the other: when one does not start, the library knows all that did.
void growTo(int threads) {
    for (int i = 1; i <= threads; ++i) Imf::setGlobalThreadCount(i);
}

/// Some versions of the library also wait for the thread that did not start, which throws, after
/// having ended the others.
void endAll() {
    try {
        Imf::setGlobalThreadCount(0);
    } catch (const std::system_error&) {
    }
}

}  // namespace

int startExrThreads() {
    constexpr unsigned kMostThreads = 16;
    static std::mutex mutex;
    static bool started = false;
    const std::lock_guard lock(mutex);
    if (started || Imf::globalThreadCount() != 0) return Imf::globalThreadCount();
    try {
        growTo(static_cast<int>(std::min(kMostThreads, std::thread::hardware_concurrency())));
        started = true;
    } catch (const std::system_error&) {
        endAll();
    }
    return Imf::globalThreadCount();
}

}  // namespace rb::imaging
