#pragma once

/// @file  Files and folders on the disk. For paths as texts see KVRPath.h.
///
/// Paths come with "\" or "/". Everything follows links, except where said. Nothing throws: the
/// status is S_OK, or E_FAIL when the file is not there or the system refuses, or E_INVALIDARG for
/// a null argument.
/// Threads: all operations may be called at once.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRList.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <cstddef>
#include <cstdint>
#include <string>

struct KVRFileInfo {
    std::int64_t size = 0;              ///< Bytes.
    std::int64_t modificationTime = 0;  ///< Seconds since 1970-01-01 UTC.
    bool isDirectory = false;
};

struct KVRFileStatus {
    std::int64_t modificationTime = 0;  ///< Seconds since 1970-01-01 UTC.
    std::int32_t size = 0;              ///< Bytes; a larger file has the largest number.
};

/// Tells whether a file or folder exists, and what it is. @param info  untouched on failure.
KVR_EXPORT HRESULT KVRGetFileInfo(const KVRUnicodeString& path, KVRFileInfo* info);

/// Reads time and size. @param status  untouched on failure.
KVR_EXPORT HRESULT KVRFileStat(const KVRUnicodeString& path, KVRFileStatus& status);

/// Makes a folder and its missing parents; S_OK also when it is there already.
KVR_EXPORT HRESULT KVRCreateDirectory(const KVRUnicodeString& path);

/// Lists the names in a folder, subfolders included, "." and ".." left out, in the order of the
/// system.
/// @param names  replaced; empty on failure.
KVR_EXPORT HRESULT KVRListDirectory(const KVRUnicodeString& path,
                                    KVRListValKVRUnicodeString& names);

/// Deletes a plain file, or a link (not what it leads to); refuses anything else.
KVR_EXPORT HRESULT KVRDeleteFile(const KVRUnicodeString& path);

/// Tells whether this process may use a file or folder.
/// @param mode  0 exists, 2 may be written, 4 may be read, 6 both; anything else is E_INVALIDARG.
KVR_EXPORT HRESULT KVRFileAccess(const KVRUnicodeString& path, int mode);

/// Reads a regular file whole.
/// @param mostBytes  A larger file is refused before anything is read.
/// @param content    Replaced; empty on failure.
/// @param reason     Replaced; on failure what was found in place of a readable file, as in "a
///                   folder".
/// Errors: E_FAIL; E_OUTOFMEMORY.
KVR_EXPORT HRESULT KVRReadFile(const KVRUnicodeString& path, std::size_t mostBytes,
                               std::string& content, std::string& reason);
