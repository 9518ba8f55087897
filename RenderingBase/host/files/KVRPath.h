#pragma once

/// @file  Paths as texts. The operations that look at the disk for more than a path are in
/// KVRFileSystem.h.
///
/// Framework paths are joined with "\" and may come with "/" as well. They keep their text until a
/// system call is made: NativePath() is the one place that turns them into the form of the system,
/// and FrameworkPath() the one that brings paths of the system in.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <string>
#include <string_view>

/// Returns the form of a path that system calls take: "\" becomes the system's separator, and the
/// long-path prefix `\\?\` is left out.
KVR_EXPORT std::string NativePath(const KVRUnicodeString& path);

/// Returns the framework's form of a path of the system: every separator becomes "\". Bytes of a
/// file name that are no UTF-8 are replaced as in every KVRUnicodeString, so such a file cannot be
/// named.
KVR_EXPORT KVRUnicodeString FrameworkPath(std::string_view nativePath);

/// Splits a path at its last separator, of either kind.
/// @param directory  without that separator, unless it is the root; empty when there is none.
KVR_EXPORT void KVRSplitPath(const KVRUnicodeString& path, KVRUnicodeString& directory,
                             KVRUnicodeString& fileName);

/// Returns the absolute path of a file or folder, which need not exist, with links resolved and
/// without "." and "..". What cannot be looked at (a folder without permission, a name that is too
/// long) is resolved by its text. Empty for an empty path and for a loop of links.
KVR_EXPORT KVRUnicodeString KVRGetRealPath(const KVRUnicodeString& path);

/// Looks for a relative path in a list of folders.
///
/// An absolute path is found when it exists, whatever the list.
/// @param pathList  folders separated by ";", empty ones are skipped; null is an empty list.
/// @param found  cleared first; the first folder that has it, "\" and the relative path.
KVR_EXPORT bool KVRFindPath(const KVRUnicodeString& relative, const char* pathList,
                            KVRUnicodeString& found);

/// The same for narrow strings. @return null when not found; else the caller frees it with
/// `delete[]`.
[[nodiscard]] KVR_EXPORT char* KVRFindPath(const char* relative, const char* pathList);
