#pragma once

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/modeler/KVRBaseUnknown.h"

/// Makes a component whose library is loaded when it is first needed.
///
/// A component that is known already needs no library. Otherwise `lib<library>.so` is loaded from
/// the folder of this library, or where the system's loader finds it, and the name is looked up
/// again. A library once loaded stays until the process ends. The reasons for a failure go to the
/// host trace "KVRCreateExternalObject".
/// @param library  a name without folder and without "lib" and ".so".
/// @return with one reference for the caller; null when the library or the component is not there.
KVR_EXPORT KVRBaseUnknown* KVRCreateExternalObject(const char* name, const char* library);
