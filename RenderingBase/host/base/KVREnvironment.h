#pragma once

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRString.h"

/// Returns the value of an environment variable: null when it is not defined (or @p name is null),
/// the empty text when it is defined without a value. The text belongs to the environment and is
/// valid until the variable is changed; no thread may change the environment meanwhile.
KVR_EXPORT const char* KVRGetEnv(const char* name);

/// Returns the folder for temporary files, in the form of the system and without a separator at its
/// end (unless it is the root folder).
KVR_EXPORT KVRString KVRGetTempDirectory();
