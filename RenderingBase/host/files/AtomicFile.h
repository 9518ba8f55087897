#pragma once

/// @file  A file that appears under its name when it is complete, or not at all.

#include "RenderingBase/host/base/KVRExport.h"

#include <cstdio>
#include <string>

namespace rb::files {

/// Writes a file beside its final place and puts it there at the end, replacing an older one.
///
/// The content has no name until then (where the file system can do that), so that a program which
/// is interrupted leaves nothing behind; otherwise it stands beside the final place under a hidden
/// name that ends in ".part". Of an older file the mode stays, and links that lead to it.
/// Threads: one. Lifetime: without `commit` nothing stays.
class KVR_EXPORT AtomicFile {
public:
    /// @param nativePath  A path of the system: of a regular file, or of nothing yet.
    explicit AtomicFile(const std::string& nativePath);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Where to write; null when the file could not be made. Stays this object's.
    std::FILE* stream() { return m_stream; }
    /// Closes the stream and puts the file in its place. False when something could not be
    /// written; then nothing has changed. To be called once.
    bool commit();
    /// Why there is no stream, or why the commit failed: the system's own words.
    const std::string& reason() const { return m_reason; }

private:
    void fail(int error);
    bool flushed();
    bool nameContent();

    std::string m_path;
    std::string m_partPath;  // beside the final place
    bool m_hasPart = false;  // the content stands under m_partPath
    std::FILE* m_stream = nullptr;
    std::string m_reason;
};

}  // namespace rb::files
