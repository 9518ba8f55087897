#pragma once

#include "RenderingBase/host/base/KVRExport.h"

/// Ends the process because of a programming error that nothing can be returned for.
///
/// Writes the message, the source file and the line to standard error, then aborts.
/// @param message, file  may be null.
[[noreturn]] KVR_EXPORT void KVRFatalErrorSimple(const char* message, const char* file, int line);
