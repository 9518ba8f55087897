#pragma once

/// @file  Finds the file or folder that a path of a resource means in this installation. For images
/// named by materials, which are looked for by their file name alone, use
/// `KVRRbaImageServices::FindImageInPaths`.
///
///     const ZWTSysPath found = KVRRbaPathResolver::Resolve(ZWTSysPath("graphics\\hdri\\sky.hdr"));
///     if (found.Exists()) ...

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/files/ZWTSysPath.h"

/// Free functions. Threads: any.
namespace KVRRbaPathResolver {

/// Returns the path itself when it exists, else the first match in the folders of the settings
/// `KVRGraphicPath`, `KVRStartupPath` and `KVRInstallPath`, in this order; the path as it was given
/// when none has it. Settings that are not defined are left out.
///
/// What is looked for is the text of the path without the long-path prefix `\\?\`, wherever it
/// stands; only a match drops the prefix from the result. The host trace "KVRRbaPathResolver" tells
/// of each step.
/// @param path  Usually a relative one. An absolute one is found only where it says.
/// Cost: one look at the disk for each folder, until the first match.
KVR_EXPORT ZWTSysPath Resolve(const ZWTSysPath& path);

}  // namespace KVRRbaPathResolver
