#pragma once

/// @file  The threads that decode OpenEXR files.

namespace rb::imaging {

/// Starts the library's pool of threads, which all files share, unless that was done before; an
/// application that has set it up keeps its setting. Where the system has no thread left, there is
/// no pool, decoding happens on the calling thread, and the next call tries again.
/// Threads: any.
/// @return  The number of threads; 0 when decoding happens on the calling one.
int startExrThreads();

}  // namespace rb::imaging
