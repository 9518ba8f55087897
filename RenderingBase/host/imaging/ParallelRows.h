#pragma once

/// @file  Work on the rows of a picture, on several threads when it is large.

#include <algorithm>
#include <cstdint>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

namespace rb::imaging {

/// Calls work(first row, end row) for slices of 0..height that together are all rows, and returns
/// when all are done. Small pictures (below half a million pixels) stay on the calling thread.
/// An exception of a slice comes out when the others have ended.
template <typename Work>
void forRowSlices(std::int64_t width, std::int64_t height, const Work& work) {
    constexpr std::int64_t kPixelsForAThread = 256 * 1024;
    const auto processors = std::max<std::int64_t>(1, std::thread::hardware_concurrency());
    const auto slices =
        std::clamp<std::int64_t>(width * height / kPixelsForAThread, 1,
                                 std::min(processors, std::max<std::int64_t>(1, height)));
    const auto slice = [&work, slices, height](std::int64_t i) {
        work(height * i / slices, height * (i + 1) / slices);
    };
    std::vector<std::future<void>> others;
    others.reserve(static_cast<std::size_t>(slices));
    std::int64_t started = 1;
    try {
        for (; started < slices; ++started)
            others.push_back(std::async(std::launch::async, slice, started));
    } catch (const std::system_error&) {
        // The system has no thread left: the rest is done here.
    }
    slice(0);
    for (; started < slices; ++started) slice(started);
    for (auto& other : others) other.get();
}

}  // namespace rb::imaging
