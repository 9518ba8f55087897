#pragma once

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"

/// A path that keeps its text as it was given, the long-path prefix `\\?\` included.
class KVR_EXPORT ZWTSysPath {
public:
    ZWTSysPath() = default;
    explicit ZWTSysPath(const KVRUnicodeString& path) : m_path(path) {}

    KVRUnicodeString ToString() const { return m_path; }
    /// Replaces the path. @param path  UTF-8; null makes it empty.
    void Set(const char* path) { m_path = path; }
    /// Tells whether a file or folder is there now; false for an empty path and for a link to
    /// nothing.
    bool Exists() const;

private:
    KVRUnicodeString m_path;
};
