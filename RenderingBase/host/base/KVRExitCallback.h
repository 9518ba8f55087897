#pragma once

/// @file  Work to be done when the process ends, in phases.

#include "RenderingBase/host/base/KVRExport.h"

/// Has a function called once, when the process ends by `exit` or by the end of `main`.
///
/// Phases run in ascending order; within a phase the function that was registered last runs first.
/// The function gets its phase as argument; its result is not used. A function registered while the
/// others run is called too. Each registration counts, also of a function registered before. The
/// functions run before any static object that existed at the first registration is destroyed, on
/// the thread that ends the process; they are not called when a signal ends it, nor by `_exit`.
/// Lifetime: the library that holds the function must stay loaded until then.
/// @param callback  null is ignored; must not throw.
/// Threads: may be called from any thread.
KVR_EXPORT void KVRRegisterExitCallback(int (*callback)(int), int phase);
